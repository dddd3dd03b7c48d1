// How file work tells how far it has come. Plain values, any thread.
#pragma once

#include <functional>

namespace orvanel {

/// Told of work done, from 0 to 1, on the thread that works.
using Progress = std::function<void(double)>;

/// Tells whoever wants to know.
inline void tell(const Progress& progress, double done) {
  if (progress) progress(done);
}

/// For a part of the work that knows only itself: its 0 to 1 are `from` to `to` of the whole.
[[nodiscard]] inline Progress partOf(const Progress& whole, double from, double to) {
  if (!whole) return {};
  return [whole, from, to](double done) { whole(from + (to - from) * done); };
}

}  // namespace orvanel
