#include "tools/selection/ShapeCost.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "raster/kernels/Translate.h"

namespace orvanel::shapeCost {
namespace {

/// In document pixels.
struct Area {
  double left;
  double top;
  double right;
  double bottom;
};

std::uint64_t bytesOf(std::uint64_t tiles) {
  return tiles * tilePixels * static_cast<std::uint64_t>(bytesPerPixel(maskPixelFormat));
}

/// The tiles where `isDivided` holds of all that a feathered tile takes from. A blur sees no further than
/// five sigma, of which a feather is two, and nothing beyond the canvas.
template <typename IsDivided>
std::uint64_t bytesWhere(const Document& document, float feather, const IsDivided& isDivided) {
  const Surface& canvas = *document.compositedTexture.value();
  const double reach = feather > 0.0F ? 2.5 * static_cast<double>(feather) + tileSide : 0.0;
  std::uint64_t tiles = 0;
  for (int index = 0; index < canvas.tileCount(); ++index) {
    const PixelRect rect = canvas.tileRect(index);
    const Area seen{.left = std::max(rect.x - reach, 0.0),
                    .top = std::max(rect.y - reach, 0.0),
                    .right = std::min(rect.x + rect.width + reach, 1.0 * canvas.width()),
                    .bottom = std::min(rect.y + rect.height + reach, 1.0 * canvas.height())};
    if (isDivided(seen)) ++tiles;
  }
  return bytesOf(tiles);
}

/// The tiles that the sides of a polygon pass through.
class SideWalk {
 public:
  explicit SideWalk(const Surface& canvas)
      : across_(canvas.tilesAcross()),
        down_(canvas.tilesDown()),
        isCrossed_(static_cast<std::size_t>(canvas.tileCount())) {}

  void walk(const PolygonPoint& from, const PolygonPoint& to) {
    const bool isDownwards = from.y <= to.y;
    const Corner upper(isDownwards ? from : to);
    const Corner lower(isDownwards ? to : from);
    const double height = lower.y - upper.y;
    const auto xAt = [&](double y) {
      return upper.x + (lower.x - upper.x) * std::clamp((y - upper.y) / height, 0.0, 1.0);
    };
    const int last = tileOf(lower.y + margin, down_);
    for (int row = tileOf(upper.y - margin, down_); row <= last; ++row) {
      const double first = height > 0.0 ? xAt(row * tileSide - margin) : upper.x;
      const double second = height > 0.0 ? xAt((row + 1) * tileSide + margin) : lower.x;
      mark(row, std::min(first, second), std::max(first, second));
    }
  }

  [[nodiscard]] std::uint64_t tiles() const {
    return static_cast<std::uint64_t>(std::ranges::count(isCrossed_, true));
  }

 private:
  struct Corner {
    explicit Corner(const PolygonPoint& point)
        : x(static_cast<double>(point.x)), y(static_cast<double>(point.y)) {}
    double x;
    double y;
  };
  /// A softened edge reaches into the pixel beside it.
  static constexpr double margin = 1.0;

  static int tileOf(double coordinate, int count) {
    return static_cast<int>(std::clamp(std::floor(coordinate / tileSide), 0.0, count - 1.0));
  }

  void mark(int row, double left, double right) {
    const int last = tileOf(right + margin, across_);
    for (int column = tileOf(left - margin, across_); column <= last; ++column) {
      isCrossed_[static_cast<std::size_t>(row * across_ + column)] = true;
    }
  }

  int across_;
  int down_;
  std::vector<bool> isCrossed_;
};

}  // namespace

std::uint64_t ofRect(const Document& document, const PixelRect& rect, float feather) {
  return bytesWhere(document, feather, [&](const Area& seen) {
    const double right = 1.0 * rect.x + rect.width;
    const double bottom = 1.0 * rect.y + rect.height;
    const bool isOutside =
        seen.left >= right || seen.right <= rect.x || seen.top >= bottom || seen.bottom <= rect.y;
    const bool isInside =
        seen.left >= rect.x && seen.right <= right && seen.top >= rect.y && seen.bottom <= bottom;
    return !isOutside && !isInside;
  });
}

std::uint64_t ofEllipse(const Document& document, float centerX, float centerY, float radiusX, float radiusY,
                        float feather) {
  const auto x = static_cast<double>(centerX);
  const auto y = static_cast<double>(centerY);
  const auto across = static_cast<double>(radiusX);
  const auto down = static_cast<double>(radiusY);
  if (across <= 0.0 || down <= 0.0) return 0;
  return bytesWhere(document, feather, [&](const Area& seen) {
    constexpr double margin = 1.0;
    const double nearX = std::clamp(x, seen.left - margin, seen.right + margin) - x;
    const double nearY = std::clamp(y, seen.top - margin, seen.bottom + margin) - y;
    const double farX = std::max(std::abs(seen.left - margin - x), std::abs(seen.right + margin - x));
    const double farY = std::max(std::abs(seen.top - margin - y), std::abs(seen.bottom + margin - y));
    const bool isOutside = std::hypot(nearX / across, nearY / down) > 1.0;
    const bool isInside = std::hypot(farX / across, farY / down) < 1.0;
    return !isOutside && !isInside;
  });
}

std::uint64_t ofPolygon(const Document& document, std::span<const PolygonPoint> points) {
  SideWalk sides(*document.compositedTexture.value());
  for (std::size_t i = 0; i < points.size(); ++i) sides.walk(points[i], points[(i + 1) % points.size()]);
  return bytesOf(sides.tiles());
}

std::uint64_t ofMove(const Surface& mask, int dx, int dy) {
  std::uint64_t tiles = 0;
  for (int index = 0; index < mask.tileCount(); ++index) {
    if (!kernels::uniformPixelMoved(mask, mask.tileRect(index), {dx, dy})) ++tiles;
  }
  return bytesOf(tiles);
}

}  // namespace orvanel::shapeCost
