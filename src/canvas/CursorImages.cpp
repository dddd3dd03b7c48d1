#include "canvas/CursorImages.h"

namespace orvanel {

QCursor cursorImage(CursorShape shape, double scale) {
  (void)scale;
  switch (shape) {
    case CursorShape::openHand:
      return Qt::OpenHandCursor;
    case CursorShape::closedHand:
      return Qt::ClosedHandCursor;
    case CursorShape::move:
      return Qt::SizeAllCursor;
    case CursorShape::arrow:
      return Qt::ArrowCursor;
    default:
      return Qt::CrossCursor;
  }
}

}  // namespace orvanel
