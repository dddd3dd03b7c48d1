// Asking for memory ahead of reading it. Any thread.
#pragma once

namespace orvanel {

/// Has the cache line at `place` fetched into the second-level cache, which waits for several times as many
/// lines at once as the first. Any address is allowed.
inline void prefetch(const void* place) {
  __builtin_prefetch(place, 0, 2);
  // GCC takes a function that does nothing but prefetch for one without effect and drops the calls to it; it
  // keeps what holds a volatile statement.
  asm volatile("");
}

}  // namespace orvanel
