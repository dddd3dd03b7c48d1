// The look shared by everything that tools draw over the picture: white lines between dark borders, which
// show on any ground, and handles. Plain values in device pixels, made for each band of a frame; any thread.
#pragma once

#include <array>
#include <vector>

#include "raster/fragments/FragmentUniforms.h"
#include "raster/fragments/ScreenMapping.h"

namespace orvanel {

/// A position in device pixels, counted from the corner of the view's first pixel.
struct DevicePoint {
  double x = 0.0;
  double y = 0.0;
};

/// Where document coordinates lie in the view, and how wide one view point is there.
class OverlayMapping {
 public:
  explicit OverlayMapping(const CanvasViewUniforms& view);

  [[nodiscard]] DevicePoint devicePoint(double documentX, double documentY) const {
    return {horizontal_.deviceAt(documentX), vertical_.deviceAt(documentY)};
  }
  /// Device pixels in a view point.
  [[nodiscard]] double scale() const { return scale_; }
  /// The width of lines: one view point in whole device pixels, so that upright lines are sharp at every
  /// scale.
  [[nodiscard]] int lineWidth() const { return lineWidth_; }

 private:
  AxisMapping horizontal_;
  AxisMapping vertical_;
  double scale_;
  int lineWidth_;
};

/// The first whole device pixel of an edge: the one whose centre is the first beyond it, as for sampled
/// pictures.
[[nodiscard]] double firstPixelOf(double edge);

/// Lines of one width with a border on both sides. Lines that cross or join make one shape.
class OverlayStroke {
 public:
  explicit OverlayStroke(int lineWidth) : lineWidth_(lineWidth) {}

  void addLine(DevicePoint from, DevicePoint to) { lines_.push_back({from, to}); }
  void addClosed(const std::vector<DevicePoint>& points);
  /// Draws the rows of the band, touching only pixels near the lines.
  void draw(const FragmentBand& band) const;

 private:
  struct Line {
    DevicePoint from;
    DevicePoint to;
  };
  struct Piece {
    const Line* line;
    PixelSpan columns;
  };

  [[nodiscard]] double reach() const { return lineWidth_ * 1.5 + 0.5; }
  [[nodiscard]] PixelSpan columnsNear(const Line& line, double y, int width) const;
  void drawPieces(const std::vector<Piece>& pieces, double y, std::uint32_t* row) const;

  int lineWidth_;
  std::vector<Line> lines_;
};

/// A quadrilateral's corners, in order around it, and its eight handles, row by row.
struct OverlayBox {
  std::array<DevicePoint, 4> corners;
  std::array<DevicePoint, 8> handles;
};

/// An upright box whose lines lie on whole pixels just outside the edges of its content.
[[nodiscard]] OverlayBox uprightBox(const OverlayMapping& mapping, DevicePoint topLeft,
                                    DevicePoint bottomRight);
/// Draws the outline and the handles; those in the middle of a side are left out where they would crowd it.
void drawBox(const FragmentBand& band, const OverlayMapping& mapping, const OverlayBox& box);

}  // namespace orvanel
