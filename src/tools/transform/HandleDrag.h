// What dragging a handle does to a box: the new box of the move tool, and the matrix of the free transform.
// Pure arithmetic in document coordinates; any thread.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QTransform>
#include <cstdint>
#include <optional>

#include "tools/transform/BoxHandle.h"

namespace orvanel::handleDrag {

/// Whether both axes are scaled alike. Shift frees them.
enum class Proportions { kept, free };
[[nodiscard]] Proportions proportionsUnder(std::uint32_t modifiers);

/// The box with the handle, a corner or a side, dragged to `pointer`. Beyond the anchor it continues on the
/// pointer's side. Its sides are at least 1. None for a box too small to be scaled.
[[nodiscard]] std::optional<QRectF> scaledBox(const QRectF& box, BoxHandle handle, QPointF pointer,
                                              Proportions proportions);

/// The matrix to apply after `base`, so that the handle of the transformed box follows `pointer`. The box is
/// scaled along its own axes, however `base` turns it; beyond the anchor it is mirrored. No factor is nearer
/// to 0 than 0.001. `base` is invertible.
[[nodiscard]] QTransform scaling(const QRectF& box, const QTransform& base, BoxHandle handle, QPointF pointer,
                                 Proportions proportions);

[[nodiscard]] QTransform rotation(QPointF centre, double radians);

/// The direction from `centre` to `pointer` in radians; positive is clockwise on the screen.
[[nodiscard]] double angleOf(QPointF centre, QPointF pointer);

/// The nearest multiple of 15 degrees, with halves away from zero. In radians.
[[nodiscard]] double snappedAngle(double radians);
[[nodiscard]] float snappedAngle(float radians);

}  // namespace orvanel::handleDrag
