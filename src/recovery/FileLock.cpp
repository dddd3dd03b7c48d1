#include "recovery/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace orvanel {
namespace {

/// Whether the open file is the one that has this name.
bool isNamed(int descriptor, const std::string& path) {
  struct stat open {};
  struct stat named {};
  return ::fstat(descriptor, &open) == 0 && ::stat(path.c_str(), &named) == 0 &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

}  // namespace

bool lockFile(int descriptor, LockWait wait) {
  int result = 0;
  do {
    result = ::flock(descriptor, wait == LockWait::none ? LOCK_EX | LOCK_NB : LOCK_EX);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

Descriptor openLocked(const std::string& path) {
  // For writing as well: some network file systems lock nothing else exclusively.
  Descriptor file(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  if (!lockFile(file.number(), LockWait::none) || !isNamed(file.number(), path)) return {};
  return file;
}

}  // namespace orvanel
