// The pointer's images: drawn, sharp, and pointing where they should.
#include "canvas/CursorImages.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPixmap>
#include <array>

namespace orvanel {
namespace {

constexpr std::array drawnShapes{CursorShape::crosshair, CursorShape::openHand, CursorShape::closedHand,
                                 CursorShape::move,      CursorShape::rotate,   CursorShape::zoomIn,
                                 CursorShape::zoomOut,   CursorShape::add,      CursorShape::subtract,
                                 CursorShape::intersect};

QImage imageOf(CursorShape shape, double scale) {
  return cursorImage(shape, scale).pixmap().toImage().convertToFormat(QImage::Format_ARGB32);
}

TEST(CursorImages, AreDrawnAtTheNearestWholeScale) {
  for (const CursorShape shape : drawnShapes) {
    for (const auto& [scale, side] : {std::pair{1.0, 24}, {1.25, 24}, {1.5, 48}, {2.0, 48}, {3.0, 72}}) {
      const QImage image = imageOf(shape, scale);
      EXPECT_EQ(image.size(), QSize(side, side));
      EXPECT_EQ(image.devicePixelRatio() * 24.0, side);
    }
  }
}

TEST(CursorImages, ShowOnDarkAndOnLight) {
  for (const CursorShape shape : drawnShapes) {
    const QImage image = imageOf(shape, 1.0);
    int dark = 0;
    int light = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const QRgb pixel = image.pixel(x, y);
        if (qAlpha(pixel) < 200) continue;
        dark += qGray(pixel) < 64 ? 1 : 0;
        light += qGray(pixel) > 192 ? 1 : 0;
      }
    }
    EXPECT_GE(dark, 20);
    EXPECT_GE(light, 20);
  }
}

TEST(CursorImages, DifferFromEachOther) {
  for (const CursorShape one : drawnShapes) {
    for (const CursorShape other : drawnShapes) {
      EXPECT_EQ(imageOf(one, 1.0) == imageOf(other, 1.0), one == other);
    }
  }
}

TEST(CursorImages, PointAtTheirMiddle) {
  EXPECT_EQ(cursorImage(CursorShape::move, 1.0).hotSpot(), QPoint(10, 10));
  EXPECT_EQ(cursorImage(CursorShape::rotate, 2.0).hotSpot(), QPoint(10, 10));
  EXPECT_EQ(cursorImage(CursorShape::crosshair, 1.25).hotSpot(), QPoint(10, 10));
}

TEST(CursorImages, LeaveThePixelUnderTheCrosshairOpen) {
  for (const CursorShape shape :
       {CursorShape::crosshair, CursorShape::add, CursorShape::subtract, CursorShape::intersect}) {
    EXPECT_EQ(qAlpha(imageOf(shape, 1.0).pixel(10, 10)), 0);
    EXPECT_EQ(qAlpha(imageOf(shape, 2.0).pixel(20, 20)), 0);
  }
}

TEST(CursorImages, AreMadeOnce) {
  EXPECT_EQ(cursorImage(CursorShape::move, 1.0), cursorImage(CursorShape::move, 1.25));
  EXPECT_NE(cursorImage(CursorShape::move, 1.0), cursorImage(CursorShape::move, 2.0));
}

TEST(CursorImages, TheArrowIsTheSystems) {
  EXPECT_EQ(cursorImage(CursorShape::arrow, 2.0).shape(), Qt::ArrowCursor);
}

}  // namespace
}  // namespace orvanel
