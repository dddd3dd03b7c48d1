// Makes chunks on all cores and hands them out in order, at most a window of them ahead of the taker.
// One thread takes; chunks are made in the background arena and, while it would have to wait, by the taker.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "io/files/ByteBuffer.h"

namespace orvanel {

struct Chunk {
  ByteBuffer bytes;
  /// Size and check sum, as the format wants it, of the bytes the chunk was made from.
  std::uint64_t rawSize = 0;
  std::uint32_t rawCheckSum = 0;
};

class ChunkPipeline {
 public:
  /// `make` is called once for each index from 0 to `count` - 1, by several threads at once.
  ChunkPipeline(int count, int window, std::function<Chunk(int)> make);
  /// Waits for chunks under way and drops them.
  ~ChunkPipeline();
  ChunkPipeline(const ChunkPipeline&) = delete;
  ChunkPipeline& operator=(const ChunkPipeline&) = delete;

  /// The chunk that `take` gives next; valid until then.
  [[nodiscard]] const Chunk& peek();
  /// The next chunk. Called at most `count` times.
  [[nodiscard]] Chunk take();

 private:
  struct State;
  void waitForNext();

  std::shared_ptr<State> state_;
};

}  // namespace orvanel
