#include "model/Selection.h"

#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

constexpr int width = 30;
constexpr int height = 20;
constexpr Selection::Flags none{.hasSelection = false, .isFullSelection = false};
constexpr Selection::Flags partial{.hasSelection = true, .isFullSelection = false};
constexpr Selection::Flags all{.hasSelection = true, .isFullSelection = true};

class SelectionTest : public testing::Test {
 protected:
  [[nodiscard]] const Surface& mask() const { return *selection->maskTexture->texture; }
  [[nodiscard]] float at(int x, int y) const { return reference::maskAt(mask(), x, y); }
  [[nodiscard]] bool isFilledWith(float value) const {
    return mask().equals(filledMask(width, height, value));
  }

  const MetalContext& context = MetalContext::shared();
  std::shared_ptr<Selection> selection = Selection::create(width, height, context);
};

TEST_F(SelectionTest, IsInitiallyEmpty) {
  ASSERT_NE(selection, nullptr);
  EXPECT_EQ(selection->maskTexture->width, width);
  EXPECT_EQ(selection->maskTexture->height, height);
  EXPECT_EQ(mask().format(), maskPixelFormat);
  EXPECT_TRUE(isFilledWith(0.0F));
  EXPECT_EQ(selection->flags(), none);
}

TEST_F(SelectionTest, CannotBeMadeWithoutASurface) {
  const tileMemory::ScopedSurfaceFailure failure(0);
  EXPECT_EQ(Selection::create(width, height, context), nullptr);
}

TEST_F(SelectionTest, RestoresBothFlags) {
  for (const Selection::Flags& flags : {all, partial, none, partial, all, none}) {
    selection->restoreFlags(flags);
    EXPECT_EQ(selection->flags(), flags);
  }
}

TEST_F(SelectionTest, SelectsAllAndClears) {
  selection->selectAll(context);
  EXPECT_TRUE(isFilledWith(1.0F));
  EXPECT_EQ(selection->flags(), all);
  selection->clear(context);
  EXPECT_TRUE(isFilledWith(0.0F));
  EXPECT_EQ(selection->flags(), none);
}

TEST_F(SelectionTest, InvertSwapsNoneAndAll) {
  selection->invert(context);
  EXPECT_TRUE(isFilledWith(1.0F));
  EXPECT_EQ(selection->flags(), all);
  selection->invert(context);
  EXPECT_TRUE(isFilledWith(0.0F));
  EXPECT_EQ(selection->flags(), none);
}

TEST_F(SelectionTest, APartialSelectionStaysPartialWhenInverted) {
  selection->setRect({2, 3, 10, 5}, 0.0F, context);
  selection->invert(context);
  EXPECT_EQ(selection->flags(), partial);
  EXPECT_EQ(at(2, 3), 0.0F);
  EXPECT_EQ(at(11, 7), 0.0F);
  EXPECT_EQ(at(1, 3), 1.0F);
  EXPECT_EQ(at(12, 7), 1.0F);
}

TEST_F(SelectionTest, SoftEdgesInvertToTheirComplement) {
  writable(selection->maskTexture->texture) = filledMask(width, height, 0.25F);
  selection->restoreFlags(partial);
  selection->invert(context);
  EXPECT_TRUE(isFilledWith(0.75F));
}

TEST_F(SelectionTest, RectangleReplacesTheMask) {
  selection->selectAll(context);
  selection->setRect({2, 3, 10, 5}, 0.0F, context);
  EXPECT_EQ(selection->flags(), partial);
  EXPECT_TRUE(mask().equals(reference::maskOf(
      width, height, [](int x, int y) { return x >= 2 && x < 12 && y >= 3 && y < 8 ? 1.0F : 0.0F; })));
}

TEST_F(SelectionTest, ARectangleOfExactlyTheCanvasIsAFullSelection) {
  selection->setRect({0, 0, width, height}, 0.0F, context);
  EXPECT_EQ(selection->flags(), all);
  EXPECT_TRUE(isFilledWith(1.0F));
}

TEST_F(SelectionTest, OnePixelLessThanTheCanvasIsPartial) {
  for (const PixelRect& rect : {PixelRect{0, 0, width - 1, height}, PixelRect{0, 0, width, height - 1},
                                PixelRect{1, 0, width, height}, PixelRect{0, 1, width, height}}) {
    selection->setRect(rect, 0.0F, context);
    EXPECT_EQ(selection->flags(), partial);
  }
}

TEST_F(SelectionTest, ARectangleBeyondTheCanvasIsPartialAlthoughItCoversEverything) {
  selection->setRect({0, 0, width + 1, height}, 0.0F, context);
  EXPECT_EQ(selection->flags(), partial);
  EXPECT_TRUE(isFilledWith(1.0F));
}

TEST_F(SelectionTest, ARectangleWithoutAreaSelectsNothing) {
  for (const PixelRect& rect : {PixelRect{3, 3, 0, 5}, PixelRect{3, 3, 5, 0}, PixelRect{0, 0, 0, 0}}) {
    selection->selectAll(context);
    selection->setRect(rect, 2.0F, context);
    EXPECT_EQ(selection->flags(), none);
    EXPECT_TRUE(isFilledWith(0.0F));
  }
}

TEST_F(SelectionTest, FeatherBlursTheEdgeWithASigmaOfHalfItsRadius) {
  selection->setRect({0, 0, 15, height}, 4.0F, context);
  EXPECT_EQ(selection->flags(), partial);
  // Edges at the canvas border don't fade, so each row is the Gaussian's integral across the edge at 15.
  for (int x = 0; x < width; ++x) {
    const double distance = 15.0 - (x + 0.5);
    const double expected = 0.5 * (1.0 + std::erf(distance / (2.0 * std::sqrt(2.0))));
    EXPECT_NEAR(static_cast<double>(at(x, 0)), expected, 0.01) << "x " << x;
    EXPECT_NEAR(static_cast<double>(at(x, 10)), static_cast<double>(at(x, 0)), 0.002);
  }
}

TEST_F(SelectionTest, FeatheringTheWholeCanvasLeavesItFull) {
  selection->setRect({0, 0, width, height}, 5.0F, context);
  EXPECT_EQ(selection->flags(), all);
  EXPECT_TRUE(isFilledWith(1.0F));
}

TEST_F(SelectionTest, EllipseIsSolidInsideEmptyOutsideAndHasTheRightArea) {
  selection->selectAll(context);
  selection->setEllipse(15.0F, 10.0F, 9.0F, 6.0F, 0.0F, context);
  EXPECT_EQ(selection->flags(), partial);
  double area = 0.0;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      area += static_cast<double>(at(x, y));
      const auto norm = [](double px, double py) { return std::hypot((px - 15.0) / 9.0, (py - 10.0) / 6.0); };
      const double farthest = std::max({norm(x, y), norm(x + 1, y), norm(x, y + 1), norm(x + 1, y + 1)});
      const double nearest = norm(std::clamp(15.0, x + 0.0, x + 1.0), std::clamp(10.0, y + 0.0, y + 1.0));
      if (farthest <= 1.0) {
        EXPECT_EQ(at(x, y), 1.0F) << x << ", " << y;
      }
      if (nearest >= 1.0) {
        EXPECT_EQ(at(x, y), 0.0F) << x << ", " << y;
      }
    }
  }
  EXPECT_NEAR(area, 3.14159265 * 9.0 * 6.0, 0.5);
}

TEST_F(SelectionTest, AnEllipseIsNeverAFullSelection) {
  selection->setEllipse(15.0F, 10.0F, 200.0F, 200.0F, 0.0F, context);
  EXPECT_EQ(selection->flags(), partial);
  EXPECT_TRUE(isFilledWith(1.0F));
}

TEST_F(SelectionTest, AnEllipseWithoutAPositiveRadiusSelectsNothing) {
  for (const auto& [radiusX, radiusY] :
       {std::pair{0.0F, 5.0F}, std::pair{5.0F, 0.0F}, std::pair{-1.0F, 5.0F}, std::pair{5.0F, -1.0F}}) {
    selection->selectAll(context);
    selection->setEllipse(15.0F, 10.0F, radiusX, radiusY, 0.0F, context);
    EXPECT_EQ(selection->flags(), none);
    EXPECT_TRUE(isFilledWith(0.0F)) << radiusX << ", " << radiusY;
  }
}

TEST_F(SelectionTest, PolygonReplacesTheMask) {
  selection->selectAll(context);
  const std::array<PolygonPoint, 4> square{{{2.0F, 3.0F}, {12.5F, 3.0F}, {12.5F, 8.0F}, {2.0F, 8.0F}}};
  selection->setPolygon(square, context);
  EXPECT_EQ(selection->flags(), partial);
  EXPECT_EQ(at(2, 3), 1.0F);
  EXPECT_EQ(at(11, 7), 1.0F);
  EXPECT_EQ(at(12, 5), 0.5F) << "half of the pixel is covered";
  EXPECT_EQ(at(1, 3), 0.0F);
  EXPECT_EQ(at(13, 3), 0.0F);
}

TEST_F(SelectionTest, OverlapsWithinAPolygonAreOutside) {
  const std::array<PolygonPoint, 10> twice{{{0.0F, 0.0F},
                                            {20.0F, 0.0F},
                                            {20.0F, 20.0F},
                                            {0.0F, 20.0F},
                                            {0.0F, 0.0F},
                                            {5.0F, 5.0F},
                                            {15.0F, 5.0F},
                                            {15.0F, 15.0F},
                                            {5.0F, 15.0F},
                                            {5.0F, 5.0F}}};
  selection->setPolygon(twice, context);
  EXPECT_EQ(at(2, 2), 1.0F);
  EXPECT_EQ(at(10, 10), 0.0F);
}

TEST_F(SelectionTest, APolygonOverTheWholeCanvasIsStillPartial) {
  const std::array<PolygonPoint, 4> around{{{-5.0F, -5.0F}, {50.0F, -5.0F}, {50.0F, 50.0F}, {-5.0F, 50.0F}}};
  selection->setPolygon(around, context);
  EXPECT_EQ(selection->flags(), partial);
  EXPECT_TRUE(isFilledWith(1.0F));
}

TEST_F(SelectionTest, ThreePointsAreEnough) {
  const std::array<PolygonPoint, 3> triangle{{{0.0F, 0.0F}, {20.0F, 0.0F}, {0.0F, 20.0F}}};
  selection->setPolygon(triangle, context);
  EXPECT_EQ(selection->flags(), partial);
  EXPECT_EQ(at(1, 1), 1.0F);
  EXPECT_EQ(at(10, 9), 0.5F) << "the edge cuts the pixel from corner to corner";
  EXPECT_EQ(at(19, 19), 0.0F);
}

TEST_F(SelectionTest, TwoPointsOrFewerChangeNothing) {
  selection->selectAll(context);
  const std::array<PolygonPoint, 2> line{{{1.0F, 1.0F}, {9.0F, 9.0F}}};
  for (std::size_t count = 0; count <= line.size(); ++count) {
    selection->setPolygon(std::span(line).first(count), context);
    EXPECT_EQ(selection->flags(), all);
    EXPECT_TRUE(isFilledWith(1.0F));
  }
}

TEST_F(SelectionTest, APointIsSelectedWhereTheMaskIsAboveZero) {
  writable(selection->maskTexture->texture) = reference::maskOf(width, height, [](int x, int y) {
    return x == 4 && y == 5 ? 1.0F / 1024.0F : x == 6 ? 1.0F : 0.0F;
  });
  EXPECT_TRUE(selection->isPointSelected(4, 5));
  EXPECT_TRUE(selection->isPointSelected(6, 0));
  EXPECT_FALSE(selection->isPointSelected(5, 5));
}

TEST_F(SelectionTest, NoPointOutsideTheCanvasIsSelected) {
  selection->selectAll(context);
  EXPECT_TRUE(selection->isPointSelected(width - 1, height - 1));
  EXPECT_FALSE(selection->isPointSelected(width, 0));
  EXPECT_FALSE(selection->isPointSelected(0, height));
  EXPECT_FALSE(selection->isPointSelected(-1, 0));
  EXPECT_FALSE(selection->isPointSelected(0, -1));
}

TEST_F(SelectionTest, FlagsAreDerivedFromTheMaskAfterAKernelWroteIt) {
  Surface& contents = writable(selection->maskTexture->texture);
  const auto flagsOf = [&](const Surface& now) {
    contents = now;
    selection->refreshFlags(context);
    return selection->flags();
  };
  EXPECT_EQ(flagsOf(filledMask(width, height, 1.0F)), all);
  EXPECT_EQ(flagsOf(filledMask(width, height, 0.5F)), partial);
  EXPECT_EQ(flagsOf(filledMask(width, height, 0.0F)), none);
  EXPECT_EQ(flagsOf(reference::maskOf(width, height, [](int, int) { return 1.0F; })), all);
  EXPECT_EQ(
      flagsOf(reference::maskOf(width, height, [](int x, int y) { return x == 3 && y == 3 ? 0.0F : 1.0F; })),
      partial);
}

}  // namespace
}  // namespace orvanel
