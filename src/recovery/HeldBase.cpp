#include "recovery/HeldBase.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "io/files/ByteBuffer.h"
#include "io/files/FileOperations.h"
#include "io/files/PassingFile.h"
#include "recovery/DiskReserve.h"
#include "recovery/JournalFiles.h"

namespace orvanel {
namespace {

constexpr mode_t forUserAlone = 0600;
/// A few hundredths of a second on a slow disk: other work of the journal goes between.
constexpr std::int64_t pieceBytes = std::int64_t{4} << 20U;

bool isSameVersion(const std::optional<FileIdentity>& found, const FileIdentity& known) {
  return found && found->isSameVersionAs(known);
}

}  // namespace

HeldBase::HeldBase(FileHandle source, const SavedFile& saved, std::string place)
    : source_(std::move(source)), path_(saved.path), identity_(saved.identity), place_(std::move(place)) {
  if (share() || takeOver(saved.copy)) {
    kind_ = Kind::copy;
  } else if (link()) {
    kind_ = Kind::link;
  }
  // Another program may have written it a moment ago, and the journal will be on the disk before it.
  if (kind_ != Kind::copy) static_cast<void>(FileOperations::current().sync(source_->descriptor()));
  if (kind_ != Kind::reference) source_.reset();
}

bool HeldBase::share() {
  copy_ = Descriptor(FileOperations::current().createFile(place_, forUserAlone));
  if (!copy_.isOpen()) return false;
  constexpr std::size_t toTheEnd = 0;
  const bool isShared =
      FileOperations::current().shareRange(source_->descriptor(), 0, copy_.number(), 0, toTheEnd) == 0;
  // Somebody may have written to the file in the meantime.
  const bool isWhole = isShared && isSourceAsItWas() && FileOperations::current().sync(copy_.number()) == 0;
  copy_ = {};
  if (!isWhole) ::unlink(place_.c_str());
  return isWhole;
}

/// The journal that the document was restored from goes soon, and its copy with it.
bool HeldBase::takeOver(const std::string& copy) const {
  struct stat status {};
  // One with another name outside the store would be no copy.
  const bool isWhole = !copy.empty() && ::stat(copy.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                       status.st_nlink == 1 && status.st_size == identity_.size;
  return isWhole && FileOperations::current().linkFile(copy, place_) == 0;
}

bool HeldBase::link() const {
  // The very file that is open, whatever has its name by now. Refused on another file system, by systems that
  // protect other users' files, and where such links are unknown.
  const std::string open = "/proc/self/fd/" + std::to_string(source_->descriptor());
  return FileOperations::current().linkFile(open, place_) == 0;
}

bool HeldBase::isSourceAsItWas() const {
  return isSameVersion(FileIdentity::of(source_->descriptor()), identity_);
}

bool HeldBase::isIntact() const {
  if (kind_ == Kind::copy) {
    const auto copy = FileIdentity::of(place_);
    return copy && copy->size == identity_.size;
  }
  return isSameVersion(FileIdentity::of(kind_ == Kind::link ? place_ : path_), identity_);
}

void HeldBase::copyPiece(std::int64_t maximumBytes) {
  if (!needsCopying()) return;
  const bool fits = identity_.size <= maximumBytes;
  bool goesOn = fits && (copy_.isOpen() || beginCopy()) && copySome();
  if (goesOn && copied_ == identity_.size) {
    goesOn = endCopy();
    if (goesOn) kind_ = Kind::copy;
  } else if (goesOn) {
    return;
  }
  copy_ = {};
  source_.reset();
  if (!goesOn) ::unlink(part().c_str());
}

bool HeldBase::beginCopy() {
  copy_ = Descriptor(FileOperations::current().createFile(part(), forUserAlone));
  return copy_.isOpen() && leavesReserve(copy_.number(), identity_.size);
}

bool HeldBase::copySome() {
  const std::int64_t count = std::min(pieceBytes, identity_.size - copied_);
  if (!leavesReserve(copy_.number(), count)) return false;
  const std::int64_t end = copied_ + count;
  FileOperations& disk = FileOperations::current();
  while (copied_ < end && canCopyInKernel_) {
    const auto left = static_cast<std::size_t>(end - copied_);
    const ssize_t done = disk.copyRange(source_->descriptor(), copied_, copy_.number(), copied_, left);
    if (done < 0 && errno == EINTR) continue;
    // Not every pair of file systems can do this.
    if (done <= 0) canCopyInKernel_ = false;
    copied_ += std::max<ssize_t>(done, 0);
  }
  ByteBuffer buffer(static_cast<std::size_t>(end - copied_));
  while (copied_ < end) {
    const auto piece = buffer.span().first(static_cast<std::size_t>(end - copied_));
    const ssize_t read = readPassing(source_->descriptor(), piece, copied_);
    if (read < 0 && errno == EINTR) continue;
    if (read <= 0) return false;
    const ssize_t written =
        disk.writeAt(copy_.number(), piece.data(), static_cast<std::size_t>(read), copied_);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    copied_ += written;
  }
  return true;
}

bool HeldBase::endCopy() {
  FileOperations& disk = FileOperations::current();
  const bool isDone =
      isSourceAsItWas() && disk.syncData(copy_.number()) == 0 && disk.renameFile(part(), place_) == 0;
  if (isDone) syncFolder(std::filesystem::path(place_).parent_path().string());
  return isDone;
}

void HeldBase::remove() {
  source_.reset();
  copy_ = {};
  ::unlink(part().c_str());
  ::unlink(place_.c_str());
}

}  // namespace orvanel
