#include "raster/KeptSamples.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <utility>

#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using kernels::PlaneSet;
using kernels::StripAccumulator;

constexpr std::size_t planesOfStrip = 4;
/// A single step costs hardly more than reading what it made.
constexpr std::size_t fewestSteps = 2;

/// Calls `copy(plane of the accumulator, its number)` for the planes in use.
template <typename Accumulator, typename Copy>
void forPlanes(Accumulator& accumulator, PlaneSet planes, const Copy& copy) {
  copy(accumulator.red, 0);
  copy(accumulator.alpha, 1);
  if (planes == PlaneSet::grey) return;
  copy(accumulator.green, 2);
  copy(accumulator.blue, 3);
}

}  // namespace

void KeptPixels::take(const Surface& surface, const SampleLayout& layout, std::size_t block) {
  const SampleLayout::Block& taken = layout.blocks[block];
  const auto pixelBytes = static_cast<std::size_t>(surface.pixelBytes());
  for (const SampleLayout::Strip& strip : taken.strips) {
    kernels::gatherSamples(surface, layout.samplesOf(taken, strip), {},
                           pixels.get() + strip.first * pixelBytes);
  }
  versions[block] = surface.tile(surface.tileIndex(taken.tileX, taken.tileY)).version();
}

void KeptBelow::begin(const SampleLayout& layout, std::vector<std::uint64_t> steps) {
  const auto same = std::mismatch(steps.begin(), steps.end(), lastSteps_.begin(), lastSteps_.end());
  const auto first = static_cast<std::size_t>(same.first - steps.begin());
  const bool isNew = lastSteps_.empty();
  const bool isSame = same.first == steps.end() && same.second == lastSteps_.end();
  lastSteps_ = std::move(steps);
  if (isNew || isSame) return;
  if (std::exchange(candidate_, first) != first || first == kept_) return;
  kept_ = first >= fewestSteps ? first : 0;
  recipes_.assign(layout.blocks.size(), 0);
  if (kept_ > 0 && planes_ == nullptr) allocate(layout);
}

std::size_t KeptBelow::bytesFor(const SampleLayout& layout) {
  return layout.samples * planesOfStrip * sizeof(float);
}

bool KeptBelow::makeRoom(const SampleLayout& layout, std::size_t steps) {
  if (steps <= fewestSteps || planes_ != nullptr || !pixelsFitInMemory(bytesFor(layout))) return false;
  allocate(layout);
  if (planes_ == nullptr) return false;
  const std::size_t count = samples_ * planesOfStrip;
  constexpr std::size_t piece = std::size_t{1} << 18U;
  tbb::parallel_for(std::size_t{0}, (count + piece - 1) / piece, [&](std::size_t i) {
    std::fill_n(planes_.get() + i * piece, std::min(piece, count - i * piece), 0.0F);
  });
  return true;
}

void KeptBelow::allocate(const SampleLayout& layout) {
  planes_ = hwy::AllocateAligned<float>(layout.samples * planesOfStrip);
  samples_ = layout.samples;
}

void KeptBelow::save(const SampleLayout::Strip& strip, const StripAccumulator& accumulator, PlaneSet planes) {
  float* kept = planes_.get() + strip.first * planesOfStrip;
  forPlanes(accumulator, planes, [&](const float* plane, std::size_t number) {
    std::copy_n(plane, strip.room, kept + number * strip.room);
  });
}

void KeptBelow::load(const SampleLayout::Strip& strip, StripAccumulator& accumulator, PlaneSet planes) const {
  const float* kept = planes_.get() + strip.first * planesOfStrip;
  forPlanes(accumulator, planes, [&](float* plane, std::size_t number) {
    std::copy_n(kept + number * strip.room, strip.room, plane);
  });
}

std::size_t KeptBelow::bytes() const {
  return planes_ == nullptr ? 0 : samples_ * planesOfStrip * sizeof(float);
}

void KeptBelow::forget() {
  *this = KeptBelow();
}

}  // namespace orvanel
