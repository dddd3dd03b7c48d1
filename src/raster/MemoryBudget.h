// Tells how much memory may still be allocated, so that a large file or command is refused instead of
// bringing down the program with all open documents. Any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

namespace orvanel {

/// Where memory figures are read from, and the limits of this process. Tests substitute their own.
struct MemorySources {
  static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

  std::string processFolder = "/proc";
  std::string controlGroupFolder = "/sys/fs/cgroup";
  std::uint64_t addressSpaceLimit = unlimited;
  std::uint64_t dataLimit = unlimited;

  [[nodiscard]] static MemorySources ofThisProcess();
};

/// Bytes that this process can still allocate: the least of what the machine has available and what control
/// groups and resource limits leave to the process.
[[nodiscard]] std::uint64_t availableMemory(const MemorySources& sources = MemorySources::ofThisProcess());

/// Whether pixels of this many bytes may be added to those in use, with memory left for everything else.
/// Cheap enough to be called for every band of an image.
[[nodiscard]] bool pixelsFitInMemory(std::uint64_t additionalBytes);

/// While alive, something is kept that saves time but can be done without. Main thread only.
class SpareMemory {
 public:
  /// `letGo` is called when an edit would be refused otherwise. What it frees may come back when it is
  /// needed.
  explicit SpareMemory(std::function<void()> letGo);
  ~SpareMemory();
  SpareMemory(const SpareMemory&) = delete;
  SpareMemory& operator=(const SpareMemory&) = delete;

 private:
  friend bool pixelsFitWithoutSpares(std::uint64_t additionalBytes);
  std::function<void()> letGo_;
};

/// As `pixelsFitInMemory`, but before it says no, everything spare is let go of. Main thread only.
[[nodiscard]] bool pixelsFitWithoutSpares(std::uint64_t additionalBytes);

/// While alive, at most this many bytes of pixels may be added to those in use now. For tests.
class ScopedMemoryLimit {
 public:
  explicit ScopedMemoryLimit(std::uint64_t additionalBytes);
  ~ScopedMemoryLimit();
  ScopedMemoryLimit(const ScopedMemoryLimit&) = delete;
  ScopedMemoryLimit& operator=(const ScopedMemoryLimit&) = delete;
};

}  // namespace orvanel
