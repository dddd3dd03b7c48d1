// Where the outline around a selection lies and how its dashes move, compared with its definition pixel by
// pixel.
#include "raster/fragments/SelectionOutline.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "OverlayPicture.h"
#include "ScreenReference.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

constexpr std::uint32_t ground = 0xFF336699U;
constexpr std::uint32_t black = 0xFF000000U;
constexpr std::uint32_t white = 0xFFFFFFFFU;
constexpr int width = 150;
constexpr int height = 90;

/// Blobs, thin lines and single pixels of all values, with empty and full tiles among them.
Surface randomMask(int maskWidth, int maskHeight) {
  Surface mask(PixelFormat::r16Float, maskWidth, maskHeight);
  std::mt19937 random(9);
  std::vector<std::uint16_t> pixels(static_cast<std::size_t>(maskWidth) *
                                    static_cast<std::size_t>(maskHeight));
  float value = 0.0F;
  for (std::uint16_t& pixel : pixels) {
    if (random() % 6 == 0) value = std::uniform_real_distribution<float>(0.0F, 1.0F)(random);
    pixel = floatToHalf(value);
  }
  mask.writeRect(mask.bounds(), reinterpret_cast<const std::byte*>(pixels.data()),
                 static_cast<std::size_t>(maskWidth) * 2);
  mask.setUniform(0, 0);
  if (mask.tileCount() > 1) mask.setUniform(1, halfOne);
  return mask;
}

Surface rectangleMask(int maskWidth, int maskHeight, const PixelRect& rect) {
  Surface mask(PixelFormat::r16Float, maskWidth, maskHeight);
  const std::vector<std::uint16_t> ones(
      static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height), halfOne);
  mask.writeRect(rect, reinterpret_cast<const std::byte*>(ones.data()),
                 static_cast<std::size_t>(rect.width) * 2);
  return mask;
}

OverlayPicture drawOutline(const CanvasViewUniforms& view, const Surface& mask, float phase = 0.0F,
                           int bandRows = 32) {
  OverlayPicture picture(width, height, ground);
  picture.draw(fragments::selectionOverlay, SelectionOverlayUniforms{view, phase}, &mask, {}, bandRows);
  return picture;
}

bool isSelected(const ScreenReference& reference, int x, int y) {
  if (!reference.isInside(x, y)) return false;
  const std::uint64_t bits =
      reference.texture->pixelAt(reference.horizontal().index(x), reference.vertical().index(y));
  return halfToFloat(static_cast<std::uint16_t>(bits)) >= 0.5F;
}

/// True if, after taking the edge away `times` times, something of the selection is left at the pixel.
bool isWithin(const ScreenReference& reference, int x, int y, int times) {
  if (times == 0) return isSelected(reference, x, y);
  const bool takesCorners = times % 2 == 0;
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      const bool isCorner = dx != 0 && dy != 0;
      if (isCorner && !takesCorners) continue;
      if (!isWithin(reference, x + dx, y + dy, times - 1)) return false;
    }
  }
  return true;
}

TEST(SelectionOutline, IsTheInnerEdgeOfWhatIsSelectedAtEveryZoomAndScale) {
  const Surface mask = randomMask(300, 200);
  for (const float zoom : {0.1F, 0.37F, 0.5F, 1.0F, 1.37F, 4.0F, 40.0F}) {
    for (const auto& [scale, lineWidth] : {std::pair{1.0F, 1}, {1.25F, 1}, {2.0F, 2}}) {
      SCOPED_TRACE(testing::Message() << "zoom " << zoom << " scale " << scale);
      CanvasViewUniforms view = overlayView(width, height, 300, 200, zoom, scale);
      if (zoom >= 1.0F) view.offsetX = 120.3F;
      if (zoom >= 1.0F) view.offsetY = 110.0F;
      const ScreenReference reference{view, &mask};
      const OverlayPicture drawn = drawOutline(view, mask);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          const bool isEdge = isSelected(reference, x, y) && !isWithin(reference, x, y, lineWidth);
          ASSERT_EQ(drawn.at(x, y) != ground, isEdge) << x << ", " << y;
        }
      }
    }
  }
}

TEST(SelectionOutline, CountsPixelsFromOneHalfOn) {
  Surface mask(PixelFormat::r16Float, 4, 1);
  const std::array<std::uint16_t, 4> values{0x37FF, 0x3800, 0xBC00, 0x7E00};
  mask.writeRect(mask.bounds(), reinterpret_cast<const std::byte*>(values.data()), 8);
  const CanvasViewUniforms view = overlayView(4, 1, 4, 1, 1.0F, 1.0F);
  OverlayPicture picture(4, 1, ground);
  const std::vector<OutlinePixel> outline = findOutline(view, mask, picture.band(0, 1));
  ASSERT_EQ(outline.size(), 1U);
  EXPECT_EQ(outline.front().x, 1);
}

TEST(SelectionOutline, IsTheSameInBandsOfAnyHeight) {
  const Surface mask = randomMask(300, 200);
  for (const float scale : {1.0F, 2.0F}) {
    const CanvasViewUniforms view = overlayView(width, height, 300, 200, 0.7F, scale);
    const OverlayPicture expected = drawOutline(view, mask, 3.3F, height);
    for (const int rows : {1, 2, 7, 31, 64}) EXPECT_EQ(drawOutline(view, mask, 3.3F, rows), expected) << rows;
  }
}

TEST(SelectionOutline, RunsAlongTheEdgeOfACanvasThatIsSelectedAsAWhole) {
  Surface mask(PixelFormat::r16Float, 40, 30);
  mask.fill(halfOne);
  const OverlayPicture picture = drawOutline(overlayView(width, height, 40, 30, 1.0F, 1.0F), mask);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool isInside = x >= 55 && x < 95 && y >= 30 && y < 60;
      const bool isEdge = isInside && (x == 55 || x == 94 || y == 30 || y == 59);
      ASSERT_EQ(picture.at(x, y) != ground, isEdge) << x << ", " << y;
    }
  }
}

TEST(SelectionOutline, TheEdgeOfTheViewIsNoEdgeOfTheSelection) {
  Surface mask(PixelFormat::r16Float, 1000, 1000);
  mask.fill(halfOne);
  CanvasViewUniforms view = overlayView(width, height, 1000, 1000, 1.0F, 1.0F);
  view.offsetX = 300.0F;
  view.offsetY = 300.0F;
  EXPECT_EQ(drawOutline(view, mask), OverlayPicture(width, height, ground));
}

TEST(SelectionOutline, RepeatsEveryEightUnits) {
  const Surface mask = randomMask(300, 200);
  for (const float scale : {1.0F, 1.25F, 2.0F}) {
    const CanvasViewUniforms view = overlayView(width, height, 300, 200, 0.5F, scale);
    for (const float phase : {0.0F, 0.75F, 3.5F, 7.0F}) {
      EXPECT_EQ(drawOutline(view, mask, phase), drawOutline(view, mask, phase + 8.0F));
      EXPECT_EQ(drawOutline(view, mask, phase), drawOutline(view, mask, phase + 800.0F));
      EXPECT_FALSE(drawOutline(view, mask, phase) == drawOutline(view, mask, phase + 4.0F));
    }
  }
}

TEST(SelectionOutline, HasDashesOfFourViewPointsOnEverySide) {
  for (const int scale : {1, 2}) {
    const Surface mask = rectangleMask(100, 60, {10, 10, 40, 20});
    const CanvasViewUniforms view = overlayView(width, height, 100, 60, 1.0F, static_cast<float>(scale));
    const OverlayPicture picture = drawOutline(view, mask, 0.0F);
    const int left = (width - 100 * scale) / 2 < 0 ? 0 : (width - 100 * scale) / 2;
    const int top = (height - 60 * scale) / 2 < 0 ? 0 : (height - 60 * scale) / 2;
    int lit = 0;
    int dark = 0;
    // Ten points into the side, so that corners don't matter; four periods long.
    for (int x = 0; x < 24 * scale; ++x) {
      const std::uint32_t pixel = picture.at(left + (10 + 8) * scale + x, top + 10 * scale);
      lit += static_cast<int>(pixel & 0xFFU);
      dark += 255 - static_cast<int>(pixel & 0xFFU);
    }
    EXPECT_NEAR(lit, dark, 255);
  }
}

TEST(SelectionOutline, MovesClockwise) {
  const Surface mask = rectangleMask(100, 60, {10, 10, 60, 40});
  const CanvasViewUniforms view = overlayView(width, height, 100, 60, 1.0F, 1.0F);
  const OverlayPicture before = drawOutline(view, mask, 0.0F);
  const OverlayPicture after = drawOutline(view, mask, 1.0F);
  const int left = 25 + 10;
  const int top = 15 + 10;
  for (int i = 10; i < 30; ++i) {
    EXPECT_EQ(after.at(left + i, top), before.at(left + i - 1, top));
    EXPECT_EQ(after.at(left + 59, top + i), before.at(left + 59, top + i - 1));
    EXPECT_EQ(after.at(left + i, top + 39), before.at(left + i + 1, top + 39));
    EXPECT_EQ(after.at(left, top + i), before.at(left, top + i + 1));
  }
}

TEST(SelectionOutline, HasDashesAlongBothDiagonals) {
  for (const int direction : {1, -1}) {
    Surface mask(PixelFormat::r16Float, 80, 80);
    std::vector<std::uint16_t> pixels(80 * 80);
    for (int y = 0; y < 80; ++y) {
      for (int x = 0; x < 80; ++x) {
        const int across = direction > 0 ? x - y : x + y - 79;
        if (across < 0) pixels[static_cast<std::size_t>(y * 80 + x)] = halfOne;
      }
    }
    mask.writeRect(mask.bounds(), reinterpret_cast<const std::byte*>(pixels.data()), 160);
    const OverlayPicture picture = drawOutline(overlayView(width, height, 80, 80, 1.0F, 1.0F), mask);
    int ofWhite = 0;
    int ofBlack = 0;
    for (int y = 20; y < 60; ++y) {
      const int x = direction > 0 ? y - 1 : 78 - y;
      const std::uint32_t pixel = picture.at(35 + x, 5 + y);
      ofWhite += pixel == white ? 1 : 0;
      ofBlack += pixel == black ? 1 : 0;
    }
    EXPECT_GE(ofWhite, 10) << direction;
    EXPECT_GE(ofBlack, 10) << direction;
  }
}

TEST(SelectionOutline, StaysOnTheImageWhileTheViewScrolls) {
  const Surface mask = rectangleMask(400, 300, {30, 30, 60, 40});
  CanvasViewUniforms view = overlayView(width, height, 400, 300, 1.0F, 1.0F);
  const OverlayPicture before = drawOutline(view, mask);
  view.offsetX = 13.0F;
  view.offsetY = 5.0F;
  const OverlayPicture after = drawOutline(view, mask);
  for (int y = 25; y < 80; ++y) {
    for (int x = 25; x < 100; ++x) ASSERT_EQ(after.at(x - 13, y - 5), before.at(x, y)) << x << ", " << y;
  }
}

TEST(SelectionOutline, AMaskOfAnotherSizeThanTheCanvasHasNone) {
  const Surface mask = rectangleMask(40, 30, {5, 5, 20, 10});
  EXPECT_EQ(drawOutline(overlayView(width, height, 41, 30, 1.0F, 1.0F), mask),
            OverlayPicture(width, height, ground));
}

}  // namespace
}  // namespace orvanel
