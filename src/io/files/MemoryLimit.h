// How much memory pixels may take before a file is refused: what a file asks for must never bring down the
// program with everything that is open in it. Any thread.
#pragma once

#include <cstdint>

namespace orvanel {

/// Whether pixels of this many bytes may be added to those in use: three quarters of the machine's memory
/// are for pixels.
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
