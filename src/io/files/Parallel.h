// A parallel loop whose iterations can fail. It runs in the background arena, and on the calling thread.
#pragma once

#include <cstddef>
#include <functional>

#include "io/files/FileError.h"

namespace orvanel {

/// Calls `body` for each index below `count`, concurrently. The first failure stops the loop and is returned.
[[nodiscard]] Described<void> forEachInBackground(std::size_t count,
                                                  const std::function<Described<void>(std::size_t)>& body);

}  // namespace orvanel
