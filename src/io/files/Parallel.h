// A loop over independent pieces of file work that can fail. The calling thread works too; the others come
// from the background arena.
#pragma once

#include <cstddef>
#include <functional>

#include "io/files/FileError.h"

namespace orvanel {

/// Calls `body` for each index below `count`, several at once. The first failure stops the loop and is its
/// result.
[[nodiscard]] Described<void> forEachInBackground(std::size_t count,
                                                  const std::function<Described<void>(std::size_t)>& body);

}  // namespace orvanel
