#include "raster/RenderEncoder.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstring>

#include "raster/Hash.h"

namespace orvanel {
namespace {

/// A band of a wide view with all its passes stays in a core's own cache.
constexpr int bandRows = 32;

void foldBytes(Hasher& hasher, std::span<const std::byte> bytes) {
  hasher.fold(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); i += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + i, std::min(sizeof(word), bytes.size() - i));
    hasher.fold(word);
  }
}

void foldTexture(Hasher& hasher, const Surface* texture) {
  if (texture == nullptr) return hasher.fold(0);
  hasher.fold(static_cast<std::uint64_t>(texture->format()) << 48U |
              static_cast<std::uint64_t>(texture->width()) << 24U |
              static_cast<std::uint64_t>(texture->height()));
  for (int index = 0; index < texture->tileCount(); ++index) {
    const Tile& tile = texture->tile(index);
    hasher.fold(tile.isUniform() ? 1 : 2);
    hasher.fold(tile.isUniform() ? tile.pixel() : tile.version());
  }
}

}  // namespace

void RenderEncoder::draw(const RenderPipeline& pipeline, std::span<const std::byte> uniforms,
                         const Surface* texture, std::span<const std::byte> points) {
  draws_.push_back(
      {pipeline.function, {uniforms.begin(), uniforms.end()}, texture, {points.begin(), points.end()}});
}

std::uint64_t RenderEncoder::fingerprint() const {
  Hasher hasher;
  hasher.fold(reinterpret_cast<std::uintptr_t>(drawable_.pixels));
  hasher.fold(static_cast<std::uint64_t>(drawable_.width) << 32U |
              static_cast<std::uint64_t>(drawable_.height));
  for (const Draw& draw : draws_) {
    hasher.fold(reinterpret_cast<std::uintptr_t>(draw.function));
    foldBytes(hasher, draw.uniforms);
    foldTexture(hasher, draw.texture);
    foldBytes(hasher, draw.points);
  }
  return hasher.value();
}

void RenderEncoder::endEncoding() {
  const int bands = (drawable_.height + bandRows - 1) / bandRows;
  tbb::parallel_for(0, bands, [&](int index) {
    const int y = index * bandRows;
    const FragmentBand band{drawable_.pixels + static_cast<std::size_t>(y) * drawable_.pixelsPerRow,
                            drawable_.pixelsPerRow, y, std::min(bandRows, drawable_.height - y),
                            drawable_.width};
    for (const Draw& draw : draws_) draw.function({draw.uniforms, {draw.texture}, draw.points}, band);
  });
  draws_.clear();
}

}  // namespace orvanel
