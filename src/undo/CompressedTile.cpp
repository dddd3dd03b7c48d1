#include "undo/CompressedTile.h"

#include <lz4.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <span>

#include "undo/BytePlanes.h"

namespace orvanel {
namespace {

/// Guards the creation of a buffer's twin, so that snapshots of one tile share it.
std::mutex& makingMutex(const TileBuffer& buffer) {
  static std::array<std::mutex, 64> mutexes;
  return mutexes[reinterpret_cast<std::uintptr_t>(&buffer) / alignof(TileBuffer) / 8 % mutexes.size()];
}

std::atomic<std::uint64_t>& generation() {
  static std::atomic<std::uint64_t> count{0};
  return count;
}

std::span<std::byte> scratch(std::vector<std::byte>& memory, std::size_t bytes) {
  if (memory.size() < bytes) memory.resize(bytes);
  return {memory.data(), bytes};
}

}  // namespace

std::shared_ptr<CompressedTile> CompressedTile::of(const Tile& tile, int pixelBytes) {
  TileBuffer& buffer = *tile.buffer();
  const std::lock_guard guard(makingMutex(buffer));
  if (auto standing = std::static_pointer_cast<CompressedTile>(buffer.companion.lock())) return standing;
  std::shared_ptr<CompressedTile> twin(new CompressedTile(tile, pixelBytes));
  buffer.companion = twin;
  return twin;
}

CompressedTile::CompressedTile(const Tile& tile, int pixelBytes)
    : version_(tile.version()),
      pixelBytes_(pixelBytes),
      rawBytes_(tile.buffer()->bytes().size()),
      trait_(tile.buffer()->trait),
      living_(tile.buffer()) {
  thread_local std::vector<std::byte> planesMemory;
  thread_local std::vector<std::byte> outputMemory;
  const std::span<std::byte> planes = scratch(planesMemory, rawBytes_);
  splitBytePlanes(std::as_const(*tile.buffer()).bytes(), planes, pixelBytes);
  const int bound = LZ4_compressBound(static_cast<int>(rawBytes_));
  const std::span<std::byte> output = scratch(outputMemory, static_cast<std::size_t>(bound));
  const int size =
      LZ4_compress_default(reinterpret_cast<const char*>(planes.data()),
                           reinterpret_cast<char*>(output.data()), static_cast<int>(rawBytes_), bound);
  assert(size > 0);  // the bound leaves room for anything
  compressed_.assign(output.begin(), output.begin() + size);
}

bool CompressedTile::decompress(std::span<const std::byte> compressed, std::span<std::byte> pixels,
                                int pixelBytes) {
  thread_local std::vector<std::byte> planesMemory;
  const std::span<std::byte> planes = scratch(planesMemory, pixels.size());
  const int size = LZ4_decompress_safe(reinterpret_cast<const char*>(compressed.data()),
                                       reinterpret_cast<char*>(planes.data()),
                                       static_cast<int>(compressed.size()), static_cast<int>(pixels.size()));
  if (size != static_cast<int>(pixels.size())) return false;
  joinBytePlanes(planes, pixels, pixelBytes);
  return true;
}

Tile CompressedTile::restored() {
  {
    const std::lock_guard guard(livingMutex_);
    if (living_ != nullptr && living_->tryRetain()) return Tile::adopt(living_, version_);
  }
  auto* buffer = new TileBuffer(rawBytes_);
  [[maybe_unused]] const bool isWhole = decompress(compressed_, buffer->bytes(), pixelBytes_);
  assert(isWhole);
  buffer->trait = trait_;
  buffer->companion = weak_from_this();
  const std::lock_guard guard(livingMutex_);
  if (living_ == nullptr) living_ = buffer;
  return Tile::adopt(buffer, version_);
}

void CompressedTile::changeHolders(int change) noexcept {
  {
    const std::lock_guard guard(holdersMutex_);
    holders_ += change;
    share_.store(static_cast<std::int64_t>(compressed_.size()) / std::max(1, holders_),
                 std::memory_order_relaxed);
  }
  generation().fetch_add(1, std::memory_order_release);
}

std::uint64_t CompressedTile::shareGeneration() noexcept {
  return generation().load(std::memory_order_acquire);
}

void CompressedTile::bufferDying(const TileBuffer& buffer) noexcept {
  const std::lock_guard guard(livingMutex_);
  if (living_ == &buffer) living_ = nullptr;
}

}  // namespace orvanel
