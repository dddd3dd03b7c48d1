#include "canvas/MarchingAnts.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace orvanel {
namespace {

/// The outline's place among the draws of a frame.
std::size_t indexOfOutline(const std::vector<RenderEncoder::Draw>& draws) {
  const auto isAnimated = [](const auto& draw) { return draw.stillBytes < draw.uniforms.size(); };
  return static_cast<std::size_t>(std::ranges::find_if(draws, isAnimated) - draws.begin());
}

SelectionOverlayUniforms uniformsOf(const RenderEncoder::Draw& draw) {
  return fragmentUniforms<SelectionOverlayUniforms>({draw.uniforms, {draw.texture}, draw.points});
}

/// A band of its own memory in the place of another.
class BandCopy {
 public:
  BandCopy(const FragmentBand& original, std::uint32_t ground)
      : pixels_(static_cast<std::size_t>(original.width) * static_cast<std::size_t>(original.rows), ground),
        band_{pixels_.data(), static_cast<std::size_t>(original.width), original.y, original.rows,
              original.width} {}

  [[nodiscard]] const FragmentBand& band() const { return band_; }
  [[nodiscard]] std::uint32_t at(const OutlinePixel& pixel) const {
    return bandRow(band_, pixel.row)[pixel.x];
  }
  void draw(std::span<const RenderEncoder::Draw> draws) const {
    for (const auto& draw : draws) draw.function({draw.uniforms, {draw.texture}, draw.points}, band_);
  }

 private:
  std::vector<std::uint32_t> pixels_;
  FragmentBand band_;
};

}  // namespace

void MarchingAnts::beginWholeFrame(const RenderEncoder& encoder) {
  const std::size_t index = indexOfOutline(encoder.draws());
  isFound_ = false;
  isShown_ = index < encoder.draws().size();
  if (isShown_) phase_ = uniformsOf(encoder.draws()[index]).selectionAnimationOffset;
}

std::vector<PixelRect> MarchingAnts::advance(const RenderEncoder& encoder, const Drawable& drawable) {
  if (!isShown_) return {};
  const Draws draws = encoder.draws();
  const std::size_t index = indexOfOutline(encoder.draws());
  const auto uniforms = uniformsOf(draws[index]);
  const float before = std::exchange(phase_, uniforms.selectionAnimationOffset);
  if (phase_ == before) return {};
  const Draws above = draws.subspan(index + 1);
  if (!std::exchange(isFound_, true)) find(draws[index], above, drawable);

  const OutlineColors colors(phase_, uniforms.view.scale);
  for (std::size_t i = 0; i < bands_.size(); ++i) {
    const FragmentBand band = RenderEncoder::band(drawable, static_cast<int>(i));
    colors.draw(bands_[i].pixels, band);
    if (bands_[i].covered.empty()) continue;
    const BandCopy beneath(band, 0);
    colors.draw(bands_[i].covered, beneath.band());
    beneath.draw(above);
    for (const OutlinePixel& pixel : bands_[i].covered) bandRow(band, pixel.row)[pixel.x] = beneath.at(pixel);
  }
  return damage_;
}

void MarchingAnts::find(const RenderEncoder::Draw& outline, Draws above, const Drawable& drawable) {
  const CanvasViewUniforms view = uniformsOf(outline).view;
  bands_.assign(static_cast<std::size_t>(RenderEncoder::bandCount(drawable)), {});
  tbb::parallel_for(std::size_t{0}, bands_.size(), [&](std::size_t i) {
    const FragmentBand band = RenderEncoder::band(drawable, static_cast<int>(i));
    Band& found = bands_[i];
    found.pixels = findOutline(view, *outline.texture, band);
    if (above.empty() || found.pixels.empty()) return;
    // A pixel that stays what it was on black and on white has nothing above it.
    constexpr std::uint32_t black = 0xFF000000U;
    constexpr std::uint32_t white = 0xFFFFFFFFU;
    const BandCopy onBlack(band, black);
    const BandCopy onWhite(band, white);
    onBlack.draw(above);
    onWhite.draw(above);
    const auto isFree = [&](const OutlinePixel& pixel) {
      return onBlack.at(pixel) == black && onWhite.at(pixel) == white;
    };
    const auto firstCovered = std::stable_partition(found.pixels.begin(), found.pixels.end(), isFree);
    found.covered.assign(firstCovered, found.pixels.end());
    found.pixels.erase(firstCovered, found.pixels.end());
  });
  findDamage(drawable);
  isShown_ = !damage_.empty();
}

void MarchingAnts::findDamage(const Drawable& drawable) {
  // Runs of cells along each band; a few dozen rectangles cost the window system less than many small ones.
  constexpr int cellWidth = 64;
  const auto cells = static_cast<std::size_t>((drawable.width + cellWidth - 1) / cellWidth);
  damage_.clear();
  for (std::size_t i = 0; i < bands_.size(); ++i) {
    std::vector<bool> isTouched(cells + 1);
    for (const auto* pixels : {&bands_[i].pixels, &bands_[i].covered}) {
      for (const OutlinePixel& pixel : *pixels) isTouched[pixel.x / cellWidth] = true;
    }
    const FragmentBand band = RenderEncoder::band(drawable, static_cast<int>(i));
    for (std::size_t cell = 0; cell < cells; ++cell) {
      if (!isTouched[cell]) continue;
      const std::size_t first = cell;
      while (isTouched[cell + 1]) ++cell;
      const int left = static_cast<int>(first) * cellWidth;
      const int right = std::min(static_cast<int>(cell + 1) * cellWidth, drawable.width);
      damage_.push_back({left, band.y, right - left, band.rows});
    }
  }
}

}  // namespace orvanel
