// The snapshots that wait for compression, oldest first. Background work takes a few tiles at a time; the
// main thread can lend a hand when memory is short. One per process, thread-safe.
#pragma once

#include <chrono>
#include <memory>

#include "undo/SnapshotContents.h"

namespace orvanel::compressionQueue {

/// Has the contents compressed in the background; work on contents that are gone ends quietly.
void add(const std::shared_ptr<SnapshotContents>& contents);

/// Compresses what is waiting on all cores and returns when it is done, or soon after `limit`.
void helpFor(std::chrono::milliseconds limit);

}  // namespace orvanel::compressionQueue
