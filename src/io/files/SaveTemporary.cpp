#include "io/files/SaveTemporary.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QUuid>
#include <cerrno>
#include <string_view>

#include "io/files/FileLock.h"
#include "io/files/FileOperations.h"

namespace orvanel {
namespace {

constexpr std::string_view prefix = "dunmarrow_save_";
constexpr std::string_view suffix = ".tmp";
constexpr int mostAttempts = 10;

std::string newName() {
  const QString unique = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
  return std::string(prefix) + unique.toStdString() + std::string(suffix);
}

bool isOurName(const std::string& name) {
  if (!name.starts_with(prefix) || !name.ends_with(suffix)) return false;
  const std::string unique = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
  const QString text = QString::fromStdString(unique);
  return QUuid::fromString(text).toString(QUuid::WithoutBraces).toUpper() == text;
}

bool isOwn(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 && status.st_uid == ::geteuid();
}

}  // namespace

std::optional<SaveTemporary> SaveTemporary::create(const std::filesystem::path& folder, mode_t mode) {
  for (int attempt = 0; attempt < mostAttempts; ++attempt) {
    std::string path = folder / newName();
    const int file = FileOperations::current().createFile(path, mode);
    if (file < 0) return std::nullopt;
    const bool isLocked = lockFile(file, LockWait::none);
    const bool canLock = isLocked || errno != EWOULDBLOCK;
    if (canLock && isNamed(file, path)) {
      Descriptor lock(isLocked ? ::fcntl(file, F_DUPFD_CLOEXEC, 0) : -1);
      return SaveTemporary{std::move(path), file, std::move(lock)};
    }
    // Another save took it for an abandoned one before it was locked.
    ::close(file);
    ::unlink(path.c_str());
  }
  errno = EBUSY;
  return std::nullopt;
}

void removeAbandonedTemporaries(const std::filesystem::path& folder) {
  std::error_code failure;
  std::filesystem::directory_iterator entry(folder, failure);
  for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
    if (!isOurName(entry->path().filename())) continue;
    const std::string path = entry->path();
    const Descriptor file = openLocked(path);
    if (file.isOpen() && isOwn(file.number())) ::unlink(path.c_str());
  }
}

}  // namespace orvanel
