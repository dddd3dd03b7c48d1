#include "raster/kernels/PixelTransform.h"

#include <algorithm>

namespace orvanel::kernels {
namespace {

/// The pixels whose centres lie in a rectangle of any position.
PixelRect pixelsWithin(const std::array<float, 4>& rect, const PixelRect& bounds) {
  const auto bound = [](double edge, int limit) {
    return static_cast<int>(std::clamp(std::ceil(edge - 0.5), 0.0, static_cast<double>(limit)));
  };
  const auto x = static_cast<double>(rect[0]);
  const auto y = static_cast<double>(rect[1]);
  const int left = bound(x, bounds.width);
  const int top = bound(y, bounds.height);
  return {left, top, bound(x + static_cast<double>(rect[2]), bounds.width) - left,
          bound(y + static_cast<double>(rect[3]), bounds.height) - top};
}

/// Sines of quarter turns come out a little off; such a rotation should move pixels exactly.
double snapped(double value) {
  const double whole = std::round(value);
  return std::abs(value - whole) < 1e-6 ? whole : value;
}

PixelTransform ofWhole(const Matrix& matrix, const PixelRect& source, const PixelRect& destination) {
  PixelTransform transform;
  transform.matrix = matrix;
  transform.sourceClip = source;
  transform.destinationClip = destination;
  if (!matrix.isFinite()) return transform;
  if (!matrix.isWholeShift()) {
    transform.kind = PixelTransform::Kind::resample;
    return transform;
  }
  transform.kind = PixelTransform::Kind::shift;
  transform.shift = {static_cast<int>(-matrix.tx), static_cast<int>(-matrix.ty)};
  return transform;
}

}  // namespace

PixelTransform resolved(const OffsetParams& params, const PixelRect& source, const PixelRect& destination) {
  PixelTransform transform;
  transform.kind = PixelTransform::Kind::shift;
  transform.shift = params;
  transform.sourceClip = source;
  transform.destinationClip = destination;
  return transform;
}

PixelTransform resolved(const ScaleParams& params, const PixelRect& source, const PixelRect& destination) {
  std::array<double, 4> from{};
  std::array<double, 4> to{};
  for (std::size_t i = 0; i < 4; ++i) {
    from[i] = static_cast<double>(params.source[i]);
    to[i] = static_cast<double>(params.destination[i]);
    if (!std::isfinite(from[i]) || !std::isfinite(to[i])) return {};
  }
  if (from[2] <= 0.0 || from[3] <= 0.0 || to[2] <= 0.0 || to[3] <= 0.0) return {};
  PixelTransform transform;
  transform.matrix.a = from[2] / to[2];
  transform.matrix.d = from[3] / to[3];
  transform.matrix.tx = from[0] - to[0] * transform.matrix.a;
  transform.matrix.ty = from[1] - to[1] * transform.matrix.d;
  if (!transform.matrix.isFinite()) return {};
  transform.kind = PixelTransform::Kind::resample;
  transform.sourceClip = pixelsWithin(params.source, source);
  transform.destinationClip = pixelsWithin(params.destination, destination);
  return transform;
}

PixelTransform resolved(const RotateParams& params, const PixelRect& source, const PixelRect& destination) {
  const auto angle = static_cast<double>(params.angle);
  const auto centerX = static_cast<double>(params.centerX);
  const auto centerY = static_cast<double>(params.centerY);
  const double cosine = snapped(std::cos(angle));
  const double sine = snapped(std::sin(angle));
  // The way back from the turned picture: by the opposite angle about the same centre.
  Matrix matrix{cosine, -sine, sine, cosine, 0.0, 0.0};
  matrix.tx = centerX - matrix.u(centerX, centerY);
  matrix.ty = centerY - matrix.v(centerX, centerY);
  return ofWhole(matrix, source, destination);
}

PixelTransform resolved(const AffineParams& params, const PixelRect& source, const PixelRect& destination) {
  const auto& m = params.matrix;
  return ofWhole({static_cast<double>(m[0]), static_cast<double>(m[1]), static_cast<double>(m[2]),
                  static_cast<double>(m[3]), static_cast<double>(m[4]), static_cast<double>(m[5])},
                 source, destination);
}

}  // namespace orvanel::kernels
