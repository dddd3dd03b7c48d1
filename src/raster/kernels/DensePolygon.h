// Rows of a polygon that so many edges cross that most pixels hold several: coverage by samples, at a cost
// that grows with the edges and not with their crossings. One per band of rows, used by one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "raster/kernels/Coverage.h"
#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {

/// Tells which rows of a band are dense: more than one edge for every four pixels, with so many ends that
/// exact areas would take much longer than samples.
[[nodiscard]] std::array<bool, tileSide> denseRows(std::span<const PolygonShape::Edge> edges,
                                                   std::span<const int> band, int firstRow, int width);

/// Each row is sampled on `fewestLines` to `mostLines` lines, fewer the more edges there are, and on each
/// line at 16 places to a pixel, shifted from line to line. A pixel that lies wholly inside or outside is
/// exact. The error of one edge in a pixel is at most half a line, 1/16, where the edge is almost level, and
/// about 1/100 where it is steep.
class DensePolygon {
 public:
  static constexpr int fewestLines = 8;
  static constexpr int mostLines = 32;

  DensePolygon(std::span<const PolygonShape::Edge> edges, std::span<const int> band, int width);

  void cover(MaskBand& band, int y);

 private:
  static constexpr int placesPerPixel = 16;
  static constexpr std::size_t pixelsPerWord = 64 / placesPerPixel;

  void gatherEdges(int y);
  void toggle(std::int32_t place) {
    toggles_[static_cast<std::size_t>(place) / 64] ^= std::uint64_t{1} << (static_cast<unsigned>(place) % 64);
  }
  void sampleLine(double y, float share, float shift);
  void addLine();

  std::span<const PolygonShape::Edge> edges_;
  std::span<const int> band_;
  int lastPlace_;
  std::vector<std::uint64_t> toggles_;  ///< one bit a place: whether inside and outside change there
  std::vector<std::uint64_t> counts_;   ///< hits of four pixels a word, 16 bits each
  // The edges that cross the whole row: where they enter it, and how far they go within it, in places.
  std::vector<float> enter_;
  std::vector<float> way_;
  std::vector<std::int32_t> places_;
  std::vector<const PolygonShape::Edge*> partial_;  ///< those that begin or end in the row
};

/// places[i] = enter[i] + way[i] * share + shift, rounded down, from 0 to `last`.
void placesOnLine(std::span<const float> enter, std::span<const float> way, float share, float shift,
                  std::int32_t last, std::int32_t* places);

}  // namespace orvanel::kernels
