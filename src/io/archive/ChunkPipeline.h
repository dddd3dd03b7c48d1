// Produces chunks on all cores and delivers them in order, running ahead of the consumer by a bounded window.
// One thread consumes. The background arena produces, and so does the consumer when it would have to wait.
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
  /// Size and checksum of the uncompressed bytes; the file format decides which checksum.
  std::uint64_t rawSize = 0;
  std::uint32_t rawCheckSum = 0;
  /// Of `bytes`, where the format needs it.
  std::uint32_t checkSum = 0;
};

class ChunkPipeline {
 public:
  /// `make` is called once for each index from 0 to `count` - 1, by several threads at once.
  ChunkPipeline(int count, int window, std::function<Chunk(int)> make);
  /// Waits for chunks in progress and discards them.
  ~ChunkPipeline();
  ChunkPipeline(const ChunkPipeline&) = delete;
  ChunkPipeline& operator=(const ChunkPipeline&) = delete;

  /// The next chunk. Called at most `count` times.
  [[nodiscard]] Chunk take();

 private:
  struct State;
  void waitForNext();

  std::shared_ptr<State> state_;
};

}  // namespace orvanel
