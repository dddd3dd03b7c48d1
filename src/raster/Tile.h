// A tile: 128 x 128 pixels, either uniform (one value, no memory) or data shared by reference and copied
// on first write. Owned by surfaces, snapshots and background work; data is immutable while shared.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <utility>

#include "raster/PixelFormat.h"

namespace orvanel {

inline constexpr int tileSide = 128;
inline constexpr int tilePixels = tileSide * tileSide;

/// Known properties of a data tile's contents. Any edit clears `opaque`; only bytes loaded from a file can be
/// `irregular` (NaN, infinity, or an alpha or mask value outside 0 to 1).
enum class TileTrait : std::uint8_t { none = 0, opaque = 1, irregular = 2 };

class TileBuffer;

/// Something outside the surface that tracks a tile's bytes (the compressed twin in the history). It is
/// notified when the bytes are freed or changed, on the thread that releases the last reference.
class TileCompanion {
 public:
  virtual ~TileCompanion() = default;
  /// `buffer` is about to be freed or overwritten.
  virtual void bufferDying(const TileBuffer& buffer) noexcept = 0;
};

/// The bytes of a data tile: row-major, row stride `tileSide` pixels, aligned to 64 bytes.
class TileBuffer {
 public:
  explicit TileBuffer(std::size_t byteCount);
  ~TileBuffer();
  TileBuffer(const TileBuffer&) = delete;
  TileBuffer& operator=(const TileBuffer&) = delete;

  [[nodiscard]] std::span<std::byte> bytes() { return {bytes_, byteCount_}; }
  [[nodiscard]] std::span<const std::byte> bytes() const { return {bytes_, byteCount_}; }

  void retain() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  /// Takes a reference unless the last one has already gone.
  [[nodiscard]] bool tryRetain() noexcept;
  [[nodiscard]] bool isShared() const noexcept { return references_.load(std::memory_order_acquire) != 1; }
  [[nodiscard]] std::uint32_t references() const noexcept {
    return references_.load(std::memory_order_relaxed);
  }

  /// How many of the references belong to snapshots. They account for the bytes only once no surface holds
  /// them any more.
  std::atomic<std::uint32_t> snapshotReferences{0};
  /// Created at most once for given bytes. Setting it requires a reference and mutual exclusion; editing the
  /// bytes requires the only reference and resets it.
  std::weak_ptr<TileCompanion> companion;
  TileTrait trait = TileTrait::none;

 private:
  std::atomic<std::uint32_t> references_{1};
  std::byte* bytes_;
  std::size_t byteCount_;
};

/// A number that no other data tile of this process has had.
[[nodiscard]] std::uint64_t nextTileVersion() noexcept;

/// One place of a surface's grid, 16 bytes: a uniform pixel value, or a reference to a buffer and the
/// version of its contents. Copying shares the buffer.
class Tile {
 public:
  Tile() = default;
  /// A uniform tile; `pixel` holds the pixel's bytes in memory order, unused bytes zero.
  static Tile uniform(std::uint64_t pixel) { return Tile(nullptr, pixel); }
  /// Takes over the caller's reference to `buffer`, under a new version.
  static Tile adopt(TileBuffer* buffer) { return Tile(buffer, nextTileVersion()); }
  /// Takes over a reference to a buffer whose contents carried `version` before.
  static Tile adopt(TileBuffer* buffer, std::uint64_t version) { return Tile(buffer, version); }

  Tile(const Tile& other) noexcept : buffer_(other.buffer_), value_(other.value_) {
    if (buffer_ != nullptr) buffer_->retain();
  }
  Tile(Tile&& other) noexcept : buffer_(std::exchange(other.buffer_, nullptr)), value_(other.value_) {}
  Tile& operator=(Tile other) noexcept {
    std::swap(buffer_, other.buffer_);
    std::swap(value_, other.value_);
    return *this;
  }
  ~Tile() {
    if (buffer_ != nullptr) buffer_->release();
  }

  [[nodiscard]] bool isUniform() const { return buffer_ == nullptr; }
  /// Of a uniform tile: its pixel.
  [[nodiscard]] std::uint64_t pixel() const { return value_; }
  /// Of a data tile: the version of its contents.
  [[nodiscard]] std::uint64_t version() const { return value_; }
  [[nodiscard]] const std::byte* data() const { return std::as_const(*buffer_).bytes().data(); }
  [[nodiscard]] TileBuffer* buffer() const { return buffer_; }
  [[nodiscard]] bool has(TileTrait trait) const { return buffer_ != nullptr && buffer_->trait == trait; }

  /// True when both are known to hold the same pixels without comparing bytes.
  friend bool operator==(const Tile& a, const Tile& b) {
    return a.isUniform() == b.isUniform() && a.value_ == b.value_;
  }

 private:
  friend class Surface;
  Tile(TileBuffer* buffer, std::uint64_t value) : buffer_(buffer), value_(value) {}

  TileBuffer* buffer_ = nullptr;
  std::uint64_t value_ = 0;
};

/// The first `bytesPerPixel` bytes at `pixel` as a uniform tile's value.
[[nodiscard]] inline std::uint64_t packPixel(const void* pixel, int pixelBytes) {
  std::uint64_t packed = 0;
  std::memcpy(&packed, pixel, static_cast<std::size_t>(pixelBytes));
  return packed;
}

}  // namespace orvanel
