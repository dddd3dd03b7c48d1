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

void foldDraw(Hasher& hasher, const RenderEncoder::Draw& draw) {
  hasher.fold(reinterpret_cast<std::uintptr_t>(draw.function));
  foldBytes(hasher, std::span(draw.uniforms).first(draw.stillBytes));
  foldTexture(hasher, draw.texture);
  foldBytes(hasher, draw.points);
}

}  // namespace

void RenderEncoder::draw(const RenderPipeline& pipeline, std::span<const std::byte> uniforms,
                         const Surface* texture, std::span<const std::byte> points) {
  draws_.push_back({pipeline.function,
                    {uniforms.begin(), uniforms.end()},
                    texture,
                    {points.begin(), points.end()},
                    uniforms.size()});
}

void RenderEncoder::drawAnimated(const RenderPipeline& pipeline, std::span<const std::byte> uniforms,
                                 std::size_t stillBytes, const Surface* texture) {
  draw(pipeline, uniforms, texture);
  draws_.back().stillBytes = stillBytes;
}

void RenderEncoder::endBackdrop() {
  backdropFingerprint_ = fingerprint();
  backdropDraws_ = draws_.size();
}

std::uint64_t RenderEncoder::fingerprint() const {
  Hasher hasher;
  hasher.fold(backdropFingerprint_);
  hasher.fold(reinterpret_cast<std::uintptr_t>(drawable_.pixels));
  hasher.fold(static_cast<std::uint64_t>(drawable_.width) << 32U |
              static_cast<std::uint64_t>(drawable_.height));
  for (const Draw& draw : std::span(draws_).subspan(backdropDraws_)) foldDraw(hasher, draw);
  return hasher.value();
}

int RenderEncoder::bandCount(const Drawable& drawable) {
  return (drawable.height + bandRows - 1) / bandRows;
}

FragmentBand RenderEncoder::band(const Drawable& drawable, int index) {
  const int y = index * bandRows;
  return {drawable.pixels + static_cast<std::size_t>(y) * drawable.pixelsPerRow, drawable.pixelsPerRow, y,
          std::min(bandRows, drawable.height - y), drawable.width};
}

void RenderEncoder::endEncoding() {
  backdropDraws_ = 0;
  Backdrop none;
  endEncoding(none);
}

void RenderEncoder::endEncoding(Backdrop& backdrop) {
  const std::span<const Draw> below = std::span(draws_).first(backdropDraws_);
  const std::span<const Draw> above = std::span(draws_).subspan(backdropDraws_);
  const Backdrop::Use use = below.empty()
                                ? Backdrop::Use::pass
                                : backdrop.begin(backdropFingerprint_, drawable_.width, drawable_.height);
  tbb::parallel_for(0, bandCount(drawable_), [&](int index) {
    const FragmentBand rows = band(drawable_, index);
    const auto drawAll = [&](std::span<const Draw> draws) {
      for (const Draw& draw : draws) draw.function({draw.uniforms, {draw.texture}, draw.points}, rows);
    };
    if (use == Backdrop::Use::restore) {
      backdrop.restore(rows);
    } else {
      drawAll(below);
    }
    if (use == Backdrop::Use::keep) backdrop.keep(rows);
    drawAll(above);
  });
  draws_.clear();
  backdropDraws_ = 0;
}

}  // namespace orvanel
