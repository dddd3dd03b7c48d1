// The allocator of all pixel memory, in tile-sized blocks.
// Blocks are carved from 2 MiB slabs backed by huge pages where possible. Emptied slabs form a bounded
// reserve for the next edit; after half a minute without use it is given back to the system. Thread-safe.
// Tests can inject failures.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace orvanel::tileMemory {

/// A block of `bytes` (a power of two from 16 KiB to 256 KiB), aligned to 64 bytes, contents undefined.
/// Ends the process with a message when memory runs out: a half-written layer would be worse.
[[nodiscard]] std::byte* allocate(std::size_t bytes);

/// Frees a block; `bytes` is the size it was allocated with.
void release(std::byte* block, std::size_t bytes) noexcept;

/// Called in the background after an edit. Gives the memory of free blocks outside the reserve back to the
/// system, and enlarges the reserve if edits have found it empty. The reserve is limited to the bytes in use
/// and to 1/16 of the available memory, but never to less than 8 MiB.
void trim();

/// Gives the whole reserve back to the system now.
void giveBackReserve();

/// Gives back the reserve and the memory of all free blocks.
void giveBackAll();

/// Bytes in the reserve.
[[nodiscard]] std::size_t spareBytes();

/// Bytes in the blocks handed out.
[[nodiscard]] std::size_t bytesInUse() noexcept;

/// While alive, the creation of surfaces fails after `surfacesAllowed` more of them, `surfacesRefused` times
/// (all of them by default). For tests.
class ScopedSurfaceFailure {
 public:
  explicit ScopedSurfaceFailure(int surfacesAllowed, int surfacesRefused = std::numeric_limits<int>::max());
  ~ScopedSurfaceFailure();
  ScopedSurfaceFailure(const ScopedSurfaceFailure&) = delete;
  ScopedSurfaceFailure& operator=(const ScopedSurfaceFailure&) = delete;
};

/// While alive, the reserve goes back after this time without use. For tests.
class ScopedIdleTime {
 public:
  explicit ScopedIdleTime(std::chrono::milliseconds time);
  ~ScopedIdleTime();
  ScopedIdleTime(const ScopedIdleTime&) = delete;
  ScopedIdleTime& operator=(const ScopedIdleTime&) = delete;
};

/// Counts a new surface; false if its creation shall fail.
[[nodiscard]] bool admitSurface() noexcept;

}  // namespace orvanel::tileMemory
