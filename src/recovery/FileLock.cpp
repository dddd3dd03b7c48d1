#include "recovery/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "io/files/FileOperations.h"

namespace orvanel {
namespace {

/// Whether the open file is the one that has this name.
bool isNamed(int descriptor, const std::string& path) {
  struct stat open {};
  struct stat named {};
  return ::fstat(descriptor, &open) == 0 && ::stat(path.c_str(), &named) == 0 &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

Descriptor openFor(int access, const std::string& path) {
  return Descriptor(FileOperations::current().openFile(path, access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

}  // namespace

bool lockFile(int descriptor, LockWait wait) {
  int result = 0;
  do {
    result = ::flock(descriptor, wait == LockWait::none ? LOCK_EX | LOCK_NB : LOCK_EX);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

tl::expected<Descriptor, NotLocked> openLocked(const std::string& path) {
  struct stat status {};
  // For writing as well: some network file systems lock nothing else exclusively.
  Descriptor file = openFor(O_RDWR, path);
  if (!file.isOpen() && (errno == EACCES || errno == EROFS)) file = openFor(O_RDONLY, path);
  if (!file.isOpen()) {
    const int error = errno;
    const bool isThere = ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    return tl::unexpected(NotLocked{isThere ? error : 0});
  }
  if (::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return tl::unexpected(NotLocked{});
  // Those file systems say so.
  if (!lockFile(file.number(), LockWait::none)) return tl::unexpected(NotLocked{errno == EBADF ? EACCES : 0});
  if (!isNamed(file.number(), path)) return tl::unexpected(NotLocked{});
  return file;
}

}  // namespace orvanel
