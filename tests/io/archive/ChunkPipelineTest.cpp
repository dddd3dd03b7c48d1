#include "io/archive/ChunkPipeline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

namespace orvanel {
namespace {

Chunk numbered(int index) {
  Chunk chunk{ByteBuffer(sizeof index), 0, 0};
  std::memcpy(chunk.bytes.data(), &index, sizeof index);
  return chunk;
}

int numberOf(const Chunk& chunk) {
  int index = -1;
  std::memcpy(&index, chunk.bytes.data(), sizeof index);
  return index;
}

TEST(ChunkPipeline, deliversAllChunksInOrder) {
  for (const int window : {1, 2, 7, 1000}) {
    ChunkPipeline pipeline(300, window, numbered);
    for (int i = 0; i < 300; ++i) {
      EXPECT_EQ(numberOf(pipeline.take()), i);
    }
  }
}

TEST(ChunkPipeline, staysWithinItsWindow) {
  constexpr int window = 5;
  std::atomic<int> made{0};
  ChunkPipeline pipeline(200, window, [&](int index) {
    ++made;
    return numbered(index);
  });
  for (int i = 0; i < 200; ++i) {
    EXPECT_LE(made.load(), i + window);
    static_cast<void>(pipeline.take());
  }
  EXPECT_EQ(made.load(), 200);
}

TEST(ChunkPipeline, canBeAbandonedAtAnyPoint) {
  for (int takes = 0; takes < 30; ++takes) {
    std::atomic<int> alive{0};
    {
      ChunkPipeline pipeline(100, 8, [&](int index) {
        ++alive;
        std::this_thread::sleep_for(std::chrono::microseconds(50));
        --alive;
        return numbered(index);
      });
      for (int i = 0; i < takes; ++i) static_cast<void>(pipeline.take());
    }
    EXPECT_EQ(alive.load(), 0);
  }
}

TEST(ChunkPipeline, emptyPipelineDoesNothing) {
  std::atomic<int> made{0};
  {
    const ChunkPipeline pipeline(0, 4, [&](int index) {
      ++made;
      return numbered(index);
    });
  }
  EXPECT_EQ(made.load(), 0);
}

}  // namespace
}  // namespace orvanel
