// The handles of a box of content: their positions, and which of them a pointer hits. Pure arithmetic; any
// thread.
#pragma once

#include <QPointF>
#include <QRectF>
#include <array>
#include <optional>

#include "tools/CursorShape.h"

namespace orvanel {

/// The first eight are points on the box, row by row.
enum class BoxHandle {
  topLeft,
  topCenter,
  topRight,
  middleLeft,
  middleRight,
  bottomLeft,
  bottomCenter,
  bottomRight,
  inside,
  rotate,
};
using MoveToolHandle = BoxHandle;
using FreeTransformHandle = BoxHandle;

namespace boxHandle {

/// The positions of the first eight handles, in their order.
using Points = std::array<QPointF, 8>;
/// Four corners in order around the outline.
using Quad = std::array<QPointF, 4>;

/// Both in view points.
inline constexpr double hitRadius = 6.0;
inline constexpr double rotateRadius = 15.0;

[[nodiscard]] bool isCorner(BoxHandle handle);
/// Whether the handle is in the middle of the left or the right side.
[[nodiscard]] bool isOnVerticalSide(BoxHandle handle);

[[nodiscard]] Points pointsOf(const QRectF& box);
/// The corners clockwise from the top left.
[[nodiscard]] Quad quadOf(const QRectF& box);
/// The position of one of the first eight handles.
[[nodiscard]] QPointF pointOf(const QRectF& box, BoxHandle handle);
/// The position of the handle on the other side of the box, which stays where it is while this one is
/// dragged.
[[nodiscard]] QPointF anchorOf(const QRectF& box, BoxHandle handle);

/// The first handle within `hitRadius` of the pointer; failing that, `rotate` in the ring of `rotateRadius`
/// around any of them. All points are in view points.
[[nodiscard]] std::optional<BoxHandle> hitHandle(const Points& handles, QPointF pointer);
/// The pointer's shape over what it hits. Handles on the box keep the arrow, which covers the least of them.
[[nodiscard]] CursorShape cursorOver(std::optional<BoxHandle> hit);

/// The left and top edges belong to the box, the right and bottom ones don't.
[[nodiscard]] bool contains(const QRectF& box, QPointF point);
[[nodiscard]] bool contains(const Quad& quad, QPointF point);

}  // namespace boxHandle
}  // namespace orvanel
