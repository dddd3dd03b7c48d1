// Brackets at the four corners of a thumbnail: they mark what edits go to, the layer or its mask. A pure
// drawing; main thread only.
#pragma once

#include <QRectF>

class QPainter;

namespace orvanel {

/// The picture stays free: the brackets lie just outside of `picture`.
void paintCornerBrackets(QPainter& painter, const QRectF& picture);

}  // namespace orvanel
