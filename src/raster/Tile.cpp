#include "raster/Tile.h"

#include "raster/TileMemory.h"

namespace orvanel {

TileBuffer::TileBuffer(std::size_t byteCount)
    : bytes_(tileMemory::allocate(byteCount)), byteCount_(byteCount) {}

TileBuffer::~TileBuffer() {
  if (const auto follower = companion.lock()) follower->bufferDying(*this);
  tileMemory::release(bytes_, byteCount_);
}

bool TileBuffer::tryRetain() noexcept {
  std::uint32_t count = references_.load(std::memory_order_relaxed);
  while (count != 0) {
    if (references_.compare_exchange_weak(count, count + 1, std::memory_order_acquire)) return true;
  }
  return false;
}

std::uint64_t nextTileVersion() noexcept {
  static std::atomic<std::uint64_t> next{1};
  return next.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace orvanel
