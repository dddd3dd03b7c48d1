#include "raster/kernels/DensePolygon.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvanel::kernels {
namespace {

/// Samples that a row may take, in edges times lines.
constexpr std::size_t samplesPerRow = std::size_t{1} << 17U;

/// Beyond this many edges times slabs, exact areas take longer than samples.
constexpr std::int64_t mostExactPieces = 8192;

}  // namespace

std::array<bool, tileSide> denseRows(std::span<const PolygonShape::Edge> edges, std::span<const int> band,
                                     int firstRow, int width) {
  // Edges that begin to cross at a row, less those that have ceased to; and ends within each row.
  std::array<std::int64_t, tileSide + 1> change{};
  std::array<std::int64_t, tileSide> ends{};
  for (const int index : band) {
    const PolygonShape::Edge& edge = edges[static_cast<std::size_t>(index)];
    const double top = edge.upper.y - firstRow;
    const double bottom = edge.lower.y - firstRow;
    const auto first = static_cast<std::size_t>(std::clamp(top, 0.0, tileSide - 1.0));
    const auto last = static_cast<std::size_t>(std::clamp(bottom, 0.0, tileSide - 1.0));
    ++change[first];
    --change[last + 1];
    if (top >= 0.0) ++ends[first];
    if (bottom < tileSide) ++ends[last];
  }
  std::array<bool, tileSide> dense{};
  std::int64_t crossing = 0;
  for (std::size_t row = 0; row < tileSide; ++row) {
    crossing += change[row];
    // Two edges meet at each end.
    dense[row] = crossing > width / 4 && crossing * (ends[row] / 2 + 1) > mostExactPieces;
  }
  return dense;
}

DensePolygon::DensePolygon(std::span<const PolygonShape::Edge> edges, std::span<const int> band, int width)
    : edges_(edges),
      band_(band),
      lastPlace_(width * placesPerPixel),
      toggles_((static_cast<std::size_t>(width) + tileSide) / pixelsPerWord + 1),
      counts_(toggles_.size()) {}

void DensePolygon::cover(MaskBand& band, int y) {
  gatherEdges(y);
  const std::size_t edgeCount = std::max<std::size_t>(enter_.size() + partial_.size(), 1);
  const auto lines =
      static_cast<int>(std::clamp<std::size_t>(samplesPerRow / edgeCount, fewestLines, mostLines));
  float shift = 0.5F;
  for (int line = 0; line < lines; ++line) {
    const double share = (line + 0.5) / lines;
    sampleLine(y + share, static_cast<float>(share), shift);
    addLine();
    // Multiples of the golden section spread evenly over a place, whatever their number.
    shift += 0.618034F;
    if (shift >= 1.0F) shift -= 1.0F;
  }
  const float scale = 1.0F / static_cast<float>(lines * placesPerPixel);
  alignas(64) std::array<float, tileSide> values;
  for (int tileX = 0; tileX < band.tilesAcross(); ++tileX) {
    std::uint64_t* counts = &counts_[static_cast<std::size_t>(tileX) * tileSide / pixelsPerWord];
    for (std::size_t pixel = 0; pixel < tileSide; ++pixel) {
      const std::uint64_t hits = counts[pixel / pixelsPerWord] >> (pixel % pixelsPerWord * 16) & 0xFFFFU;
      values[pixel] = static_cast<float>(hits) * scale;
    }
    std::fill_n(counts, tileSide / pixelsPerWord, 0);
    band.write(tileX, y, values.data());
  }
}

void DensePolygon::gatherEdges(int y) {
  enter_.clear();
  way_.clear();
  partial_.clear();
  for (const int index : band_) {
    const PolygonShape::Edge& edge = edges_[static_cast<std::size_t>(index)];
    if (edge.upper.y >= y + 1.0) break;
    if (edge.lower.y <= y) continue;
    if (edge.upper.y > y || edge.lower.y < y + 1.0) {
      partial_.push_back(&edge);
    } else {
      enter_.push_back(static_cast<float>(edge.xAt(y) * placesPerPixel));
      way_.push_back(static_cast<float>(edge.slope * placesPerPixel));
    }
  }
  places_.resize(enter_.size());
}

void DensePolygon::sampleLine(double y, float share, float shift) {
  // A place is inside from the crossing on: what lies at `shift` of a place and to the right of it.
  placesOnLine(enter_, way_, share, shift, lastPlace_, places_.data());
  for (const std::int32_t place : places_) toggle(place);
  for (const PolygonShape::Edge* edge : partial_) {
    if (edge->upper.y > y || edge->lower.y <= y) continue;
    const double place = std::floor(edge->xAt(y) * placesPerPixel + static_cast<double>(shift));
    toggle(static_cast<std::int32_t>(std::clamp(place, 0.0, 1.0 * lastPlace_)));
  }
}

void DensePolygon::addLine() {
  std::uint64_t inside = 0;  // all ones after a word that ends inside
  for (std::size_t word = 0; word < toggles_.size(); ++word) {
    std::uint64_t bits = std::exchange(toggles_[word], 0);
    for (unsigned distance = 1; distance < 64; distance *= 2) bits ^= bits << distance;
    bits ^= inside;
    inside = std::uint64_t{0} - (bits >> 63U);
    bits -= bits >> 1U & 0x5555555555555555U;
    bits = (bits & 0x3333333333333333U) + (bits >> 2U & 0x3333333333333333U);
    bits = (bits + (bits >> 4U)) & 0x0F0F0F0F0F0F0F0FU;
    counts_[word] += (bits + (bits >> 8U)) & 0x00FF00FF00FF00FFU;
  }
}

}  // namespace orvanel::kernels
