// Samples the rows of a polygon in which most pixels are crossed by several edges. The cost grows with the
// number of edges, not with the number of their intersections. One object per band of rows and thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "raster/kernels/Coverage.h"
#include "raster/kernels/Shapes.h"

namespace orvanel::kernels {

/// Which rows of a band are dense: more than one edge per four pixels, and so many vertices that computing
/// exact areas would take much longer than sampling.
[[nodiscard]] std::array<bool, tileSide> denseRows(std::span<const PolygonShape::Edge> edges,
                                                   std::span<const int> band, int firstRow, int width);

/// Samples each row along `fewestLines` to `mostLines` scan lines, fewer the more edges there are, with 16
/// samples per pixel and line, shifted from line to line. A pixel that lies wholly inside or outside is
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
  std::vector<std::uint64_t> toggles_;  ///< one bit per sample: set where the parity changes
  std::vector<std::uint64_t> counts_;   ///< sample counts, four pixels of 16 bits per word
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
