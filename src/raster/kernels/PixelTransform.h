// A scale, rotation or affine transform as its kernel carries it out: the way back from the destination into
// the source, and the pixels that take part. Plain values; any thread.
#pragma once

#include <array>
#include <cmath>

#include "raster/ColorMode.h"
#include "raster/KernelRecords.h"
#include "raster/Surface.h"

namespace orvanel::kernels {

/// From the destination into the source, row vectors: u = a x + c y + tx, v = b x + d y + ty.
struct Matrix {
  double a = 1.0;
  double b = 0.0;
  double c = 0.0;
  double d = 1.0;
  double tx = 0.0;
  double ty = 0.0;

  [[nodiscard]] double u(double x, double y) const { return a * x + c * y + tx; }
  [[nodiscard]] double v(double x, double y) const { return b * x + d * y + ty; }
  /// The way back from the source: the destination's point of (u, v). Infinite for a singular matrix.
  [[nodiscard]] std::array<double, 2> destinationOf(double sourceU, double sourceV) const {
    const double determinant = a * d - b * c;
    const double du = sourceU - tx;
    const double dv = sourceV - ty;
    return {(du * d - dv * c) / determinant, (dv * a - du * b) / determinant};
  }
  [[nodiscard]] bool isFinite() const { return std::isfinite(a + b + c + d + tx + ty); }
  [[nodiscard]] bool isWholeShift() const {
    return a == 1.0 && b == 0.0 && c == 0.0 && d == 1.0 && tx == std::round(tx) && ty == std::round(ty) &&
           std::abs(tx) <= maximumCanvasSide && std::abs(ty) <= maximumCanvasSide;
  }
};

struct PixelTransform {
  enum class Kind {
    nothing,   ///< the result is empty
    shift,     ///< by `shift`, in whole pixels
    resample,  ///< by `matrix`
  };

  Kind kind = Kind::nothing;
  OffsetParams shift;
  Matrix matrix;
  PixelRect sourceClip;       ///< what lies outside counts as transparent
  PixelRect destinationClip;  ///< what lies outside stays empty
};

/// What the kernels of these records do between surfaces of these bounds.
[[nodiscard]] PixelTransform resolved(const OffsetParams& params, const PixelRect& source,
                                      const PixelRect& destination);
[[nodiscard]] PixelTransform resolved(const ScaleParams& params, const PixelRect& source,
                                      const PixelRect& destination);
[[nodiscard]] PixelTransform resolved(const RotateParams& params, const PixelRect& source,
                                      const PixelRect& destination);
[[nodiscard]] PixelTransform resolved(const AffineParams& params, const PixelRect& source,
                                      const PixelRect& destination);

}  // namespace orvanel::kernels
