// The allocator of all pixel memory, in tile-sized blocks.
// Blocks are carved from 2 MiB slabs that ask for huge pages. Emptied slabs form a bounded reserve for the
// next edit, which goes back to the system after half a minute without use. Thread-safe. Tests make it refuse
// on purpose.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace orvanel::tileMemory {

/// A block of `bytes` (a power of two from 16 KiB to 256 KiB), aligned to 64 bytes, contents undefined.
/// Running out of memory for pixels ends the process with a message: a half-written layer is worse.
[[nodiscard]] std::byte* allocate(std::size_t bytes);

/// Takes back a block of that size.
void release(std::byte* block, std::size_t bytes) noexcept;

/// For background work after an edit. Gives memory behind free blocks back to the system, all but the
/// reserve, and adds memory to the reserve when edits found too little. The reserve holds at most as many
/// bytes as are in use and 1/16 of the memory that the system has available, but 8 MiB in any case.
void trim();

/// Gives the whole reserve back now.
void giveBackReserve();

/// Bytes in blocks now handed out.
[[nodiscard]] std::size_t bytesInUse() noexcept;

/// While alive, the creation of surfaces fails after `surfacesAllowed` more of them. For tests.
class ScopedSurfaceFailure {
 public:
  explicit ScopedSurfaceFailure(int surfacesAllowed);
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

/// Asks whether one more surface may be made, and counts it.
[[nodiscard]] bool admitSurface() noexcept;

}  // namespace orvanel::tileMemory
