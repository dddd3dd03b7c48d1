// The snapshots that wait for compression, oldest first. Background work takes a few tiles at a time; the
// main thread can lend a hand when memory is short. One per process, thread-safe.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "undo/SnapshotContents.h"

namespace orvanel::compressionQueue {

/// Queues the contents for compression in the background, which stops when they are destroyed.
void add(const std::shared_ptr<SnapshotContents>& contents);

/// Compresses what is waiting on all cores; returns when it is done, when `isEnough`, or soon after `limit`.
void help(std::chrono::milliseconds limit, const std::function<bool()>& isEnough);

}  // namespace orvanel::compressionQueue
