#include "io/files/PassingFile.h"

#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

namespace orvanel {
namespace {

/// The kernel's RWF_DONTCACHE, which is younger than the C library's headers.
constexpr int dontCache = 0x80;

/// Older kernels, and file systems that can't do without their cache, say so before they do anything.
bool isRefused(ssize_t result) {
  return result < 0 && (errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL);
}

}  // namespace

ssize_t readPassing(int file, std::span<std::byte> out, std::int64_t offset) {
  const iovec place{out.data(), out.size()};
  const ssize_t count = ::preadv2(file, &place, 1, offset, dontCache);
  return isRefused(count) ? ::pread(file, out.data(), out.size(), offset) : count;
}

ssize_t writePassing(int file, std::span<const std::byte> bytes, std::int64_t offset) {
  // The call takes its input as writable, but only reads it.
  const iovec place{const_cast<std::byte*>(bytes.data()), bytes.size()};
  const ssize_t count = ::pwritev2(file, &place, 1, offset, dontCache);
  return isRefused(count) ? ::pwrite(file, bytes.data(), bytes.size(), offset) : count;
}

}  // namespace orvanel
