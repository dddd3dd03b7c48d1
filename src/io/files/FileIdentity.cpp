#include "io/files/FileIdentity.h"

#include <sys/stat.h>

namespace orvanel {
namespace {

std::int64_t nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::optional<FileIdentity> identityOf(int result, const struct stat& file) {
  if (result != 0 || !S_ISREG(file.st_mode)) return std::nullopt;
  return FileIdentity{file.st_dev, file.st_ino, file.st_size, nanoseconds(file.st_mtim),
                      nanoseconds(file.st_ctim)};
}

}  // namespace

std::optional<FileIdentity> FileIdentity::of(const std::string& path) {
  struct stat file {};
  const int result = ::stat(path.c_str(), &file);
  return identityOf(result, file);
}

std::optional<FileIdentity> FileIdentity::of(int descriptor) {
  struct stat file {};
  const int result = ::fstat(descriptor, &file);
  return identityOf(result, file);
}

}  // namespace orvanel
