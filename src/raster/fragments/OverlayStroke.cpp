#include "raster/fragments/OverlayStroke.h"

#include <algorithm>
#include <cmath>

#include "raster/fragments/DisplayRows.h"

namespace orvanel {
namespace {

/// How much of the ground a border hides.
constexpr double borderOpacity = 0.6;
constexpr double handleSideInViewPoints = 7.0;
constexpr std::uint32_t handleFill = 0xFFFFFFFFU;
constexpr std::uint32_t handleOutline = 0xFF1E1E1EU;

double coverage(double halfWidth, double distance) {
  return std::clamp(halfWidth + 0.5 - distance, 0.0, 1.0);
}

double squaredDistance(DevicePoint point, DevicePoint from, DevicePoint to) {
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  const double length = dx * dx + dy * dy;
  const double along = (point.x - from.x) * dx + (point.y - from.y) * dy;
  const double t = length > 0.0 ? std::clamp(along / length, 0.0, 1.0) : 0.0;
  const double x = point.x - from.x - t * dx;
  const double y = point.y - from.y - t * dy;
  return x * x + y * y;
}

/// White of one coverage over black of another, premultiplied.
std::uint32_t whiteOverBlack(double white, double black) {
  const auto light = static_cast<std::uint32_t>(std::lround(white * 255.0));
  const auto alpha = static_cast<std::uint32_t>(std::lround((white + black * (1.0 - white)) * 255.0));
  return alpha << 24U | light << 16U | light << 8U | light;
}

int boundedColumn(double x, int width) {
  return static_cast<int>(std::clamp(x, 0.0, static_cast<double>(width)));
}

void drawHandle(const FragmentBand& band, const OverlayMapping& mapping, DevicePoint center) {
  const int outline = mapping.lineWidth();
  // Odd or even as the line is, so that the handle can lie exactly in the middle of it.
  int side = static_cast<int>(std::lround(handleSideInViewPoints * mapping.scale()));
  side += (side - outline) % 2;
  const auto left = static_cast<int>(std::lround(std::clamp(center.x - side * 0.5, -1e6, 1e6)));
  const auto top = static_cast<int>(std::lround(std::clamp(center.y - side * 0.5, -1e6, 1e6)));
  const int begin = std::max(left, 0);
  const int end = std::min(left + side, band.width);
  if (begin >= end) return;
  for (int y = std::max(top, band.y); y < std::min(top + side, band.y + band.rows); ++y) {
    std::uint32_t* row = bandRow(band, y - band.y);
    std::fill(row + begin, row + end, handleOutline);
    if (y < top + outline || y >= top + side - outline) continue;
    const int innerBegin = std::max(left + outline, 0);
    const int innerEnd = std::min(left + side - outline, band.width);
    if (innerBegin < innerEnd) std::fill(row + innerBegin, row + innerEnd, handleFill);
  }
}

double distanceBetween(DevicePoint a, DevicePoint b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

}  // namespace

OverlayMapping::OverlayMapping(const CanvasViewUniforms& view)
    : horizontal_(AxisMapping::horizontal(view)),
      vertical_(AxisMapping::vertical(view)),
      scale_(static_cast<double>(view.scale)),
      lineWidth_(std::max(1, static_cast<int>(std::lround(view.scale)))) {}

double firstPixelOf(double edge) {
  return std::ceil(edge - 0.5);
}

void OverlayStroke::addClosed(const std::vector<DevicePoint>& points) {
  for (std::size_t i = 0; i < points.size(); ++i) addLine(points[i], points[(i + 1) % points.size()]);
}

PixelSpan OverlayStroke::columnsNear(const Line& line, double y, int width) const {
  const bool isDownward = line.from.y <= line.to.y;
  const DevicePoint upper = isDownward ? line.from : line.to;
  const DevicePoint lower = isDownward ? line.to : line.from;
  if (upper.y > y + reach() || lower.y < y - reach()) return {};
  const double height = lower.y - upper.y;
  const auto columnAt = [&](double lineY) {
    const double t = height > 0.0 ? std::clamp((lineY - upper.y) / height, 0.0, 1.0) : 0.0;
    return upper.x + t * (lower.x - upper.x);
  };
  double left = columnAt(y - reach());
  double right = height > 0.0 ? columnAt(y + reach()) : lower.x;
  if (left > right) std::swap(left, right);
  return {boundedColumn(std::floor(left - reach()), width), boundedColumn(std::ceil(right + reach()), width)};
}

void OverlayStroke::draw(const FragmentBand& band) const {
  std::vector<const Line*> near;
  for (const Line& line : lines_) {
    const auto [upper, lower] = std::minmax(line.from.y, line.to.y);
    if (upper - reach() <= band.y + band.rows && lower + reach() >= band.y) near.push_back(&line);
  }
  if (near.empty()) return;
  std::vector<Piece> pieces;
  for (int row = 0; row < band.rows; ++row) {
    const double y = band.y + row + 0.5;
    pieces.clear();
    for (const Line* line : near) {
      const PixelSpan columns = columnsNear(*line, y, band.width);
      if (!columns.isEmpty()) pieces.push_back({line, columns});
    }
    std::ranges::sort(pieces, {}, [](const Piece& piece) { return piece.columns.begin; });
    drawPieces(pieces, y, bandRow(band, row));
  }
}

void OverlayStroke::drawPieces(const std::vector<Piece>& pieces, double y, std::uint32_t* row) const {
  const double halfWidth = lineWidth_ * 0.5;
  const double farAway = reach() * reach();
  std::vector<double> distances;
  std::vector<std::uint32_t> pixels;
  for (std::size_t first = 0; first < pieces.size();) {
    // Pieces that overlap are drawn at once, so that the border of one never darkens the line of another.
    PixelSpan columns = pieces[first].columns;
    std::size_t last = first;
    while (last < pieces.size() && pieces[last].columns.begin <= columns.end) {
      columns.end = std::max(columns.end, pieces[last++].columns.end);
    }
    distances.assign(static_cast<std::size_t>(columns.length()), farAway);
    for (; first < last; ++first) {
      const auto& [line, span] = pieces[first];
      for (int x = span.begin; x < span.end; ++x) {
        double& nearest = distances[static_cast<std::size_t>(x - columns.begin)];
        nearest = std::min(nearest, squaredDistance({x + 0.5, y}, line->from, line->to));
      }
    }
    pixels.resize(distances.size());
    std::ranges::transform(distances, pixels.begin(), [&](double squared) {
      const double distance = std::sqrt(squared);
      return whiteOverBlack(coverage(halfWidth, distance),
                            coverage(halfWidth + lineWidth_, distance) * borderOpacity);
    });
    displayRows::blendOver(row + columns.begin, pixels.data(), pixels.size());
  }
}

OverlayBox uprightBox(const OverlayMapping& mapping, DevicePoint topLeft, DevicePoint bottomRight) {
  const double half = mapping.lineWidth() * 0.5;
  const double left = firstPixelOf(topLeft.x) - half;
  const double top = firstPixelOf(topLeft.y) - half;
  const double right = firstPixelOf(bottomRight.x) + half;
  const double bottom = firstPixelOf(bottomRight.y) + half;
  const double x = (left + right) * 0.5;
  const double y = (top + bottom) * 0.5;
  return {{{{left, top}, {right, top}, {right, bottom}, {left, bottom}}},
          {{{left, top},
            {x, top},
            {right, top},
            {left, y},
            {right, y},
            {left, bottom},
            {x, bottom},
            {right, bottom}}}};
}

void drawBox(const FragmentBand& band, const OverlayMapping& mapping, const OverlayBox& box) {
  OverlayStroke outline(mapping.lineWidth());
  outline.addClosed({box.corners.begin(), box.corners.end()});
  outline.draw(band);

  // A corner's handle, a gap of the same size, and the handle in the middle.
  const double leastDistance = 2.0 * handleSideInViewPoints * mapping.scale();
  const auto& handles = box.handles;
  for (const std::size_t corner : {0U, 2U, 5U, 7U}) drawHandle(band, mapping, handles[corner]);
  // Opposite sides are judged by the shorter one, so that their handles come and go together.
  const double across =
      std::min(distanceBetween(handles[0], handles[2]), distanceBetween(handles[5], handles[7]));
  const double down =
      std::min(distanceBetween(handles[0], handles[5]), distanceBetween(handles[2], handles[7]));
  if (across >= 2.0 * leastDistance) {
    drawHandle(band, mapping, handles[1]);
    drawHandle(band, mapping, handles[6]);
  }
  if (down >= 2.0 * leastDistance) {
    drawHandle(band, mapping, handles[3]);
    drawHandle(band, mapping, handles[4]);
  }
}

}  // namespace orvanel
