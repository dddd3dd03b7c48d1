// Where all pixel memory comes from: one accountable allocator of tile-sized blocks.
// Blocks are carved from 2 MiB slabs that ask for huge pages. Emptied slabs make a bounded reserve for the
// next edit; beyond it they go back to the system. Thread-safe. Tests make it refuse on purpose.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

namespace orvanel::tileMemory {

/// A block of `bytes` (a power of two from 16 KiB to 256 KiB), aligned to 64 bytes, contents undefined.
/// Running out of memory for pixels ends the process with a message: a half-written layer is worse.
[[nodiscard]] std::byte* allocate(std::size_t bytes);

/// Takes back a block of that size.
void release(std::byte* block, std::size_t bytes) noexcept;

/// Gives memory behind free blocks back to the system, all but the reserve: as many bytes as are in use, at
/// least 8 MiB and at most 256 MiB. For background work that has released many.
void trim();

/// Bytes in blocks now handed out.
[[nodiscard]] std::size_t bytesInUse() noexcept;

/// While alive, the creation of surfaces fails after `surfacesAllowed` more of them, `surfacesRefused` times
/// (all of them by default). For tests.
class ScopedSurfaceFailure {
 public:
  explicit ScopedSurfaceFailure(int surfacesAllowed,
                                int surfacesRefused = std::numeric_limits<int>::max());
  ~ScopedSurfaceFailure();
  ScopedSurfaceFailure(const ScopedSurfaceFailure&) = delete;
  ScopedSurfaceFailure& operator=(const ScopedSurfaceFailure&) = delete;
};

/// Asks whether one more surface may be made, and counts it.
[[nodiscard]] bool admitSurface() noexcept;

}  // namespace orvanel::tileMemory
