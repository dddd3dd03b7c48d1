// The pointer's shapes over the canvas. Tools name a shape; the view draws it at its scale.
#pragma once

namespace orvanel {

enum class CursorShape {
  arrow,
  crosshair,
  openHand,
  closedHand,
  move,
  rotate,
  zoomIn,
  zoomOut,
  add,
  subtract,
  intersect,
};

}  // namespace orvanel
