// How much memory may still be taken: what a file or a command asks for must never bring down the program
// with everything that is open in it. Any thread.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

namespace orvanel {

/// Where the system tells of memory, and the limits of this process. Tests bring their own.
struct MemorySources {
  static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

  std::string processFolder = "/proc";
  std::string controlGroupFolder = "/sys/fs/cgroup";
  std::uint64_t addressSpaceLimit = unlimited;
  std::uint64_t dataLimit = unlimited;

  [[nodiscard]] static MemorySources ofThisProcess();
};

/// Bytes that this process can still take: the least of what the machine has available, what the control
/// groups it is in allow beyond their use, and what the process's own limits leave.
[[nodiscard]] std::uint64_t availableMemory(const MemorySources& sources = MemorySources::ofThisProcess());

/// Whether pixels of this many bytes may be added to those in use, with a reserve left for everything else.
/// Cheap enough to be asked for every band of an image.
[[nodiscard]] bool pixelsFitInMemory(std::uint64_t additionalBytes);

/// While alive, pixels may take this many bytes more than they do now. For tests.
class ScopedMemoryLimit {
 public:
  explicit ScopedMemoryLimit(std::uint64_t additionalBytes);
  ~ScopedMemoryLimit();
  ScopedMemoryLimit(const ScopedMemoryLimit&) = delete;
  ScopedMemoryLimit& operator=(const ScopedMemoryLimit&) = delete;
};

}  // namespace orvanel
