// What tools draw over the picture: lines and handles that are sharp, symmetric, visible on any ground, and
// leave everything else alone.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <numbers>
#include <vector>

#include "OverlayPicture.h"
#include "raster/fragments/OverlayStroke.h"

namespace orvanel {
namespace {

constexpr std::uint32_t ground = 0xFF336699U;
constexpr std::uint32_t white = 0xFFFFFFFFU;
constexpr int width = 200;
constexpr int height = 120;
constexpr std::array scales{1.0F, 1.25F, 2.0F};

int lineWidthOf(float scale) {
  return scale == 2.0F ? 2 : 1;
}

/// A canvas that fills the view.
CanvasViewUniforms viewOf(float scale, float zoom = 1.0F) {
  return overlayView(width, height, static_cast<int>(static_cast<float>(width) / (zoom * scale)),
                     static_cast<int>(static_cast<float>(height) / (zoom * scale)), zoom, scale);
}

DragPathUniforms rectangle(float scale, const std::array<float, 4>& shape) {
  return {.view = viewOf(scale), .shapeMode = DragPathUniforms::rect, .shape = shape};
}

DragPathUniforms ellipse(float scale, const std::array<float, 4>& shape) {
  return {.view = viewOf(scale), .shapeMode = DragPathUniforms::ellipse, .shape = shape};
}

MoveToolUniforms moveBox(float scale, std::array<float, 2> origin, std::array<float, 2> size,
                         float rotation) {
  return {.view = viewOf(scale), .rotation = rotation, .origin = origin, .size = size};
}

FreeTransformUniforms quad(float scale, const std::array<FragmentPoint, 4>& corners) {
  const auto middle = [](FragmentPoint a, FragmentPoint b) {
    return FragmentPoint{(a.x + b.x) * 0.5F, (a.y + b.y) * 0.5F};
  };
  const auto& [a, b, c, d] = corners;
  return {.view = viewOf(scale),
          .corners = corners,
          .handles = {a, middle(a, b), b, middle(a, d), middle(b, c), d, middle(c, d), c}};
}

/// One picture of each kind.
using Drawing = std::function<void(OverlayPicture&, int bandRows)>;
std::vector<Drawing> drawingsAt(float scale) {
  static const std::array<FragmentPoint, 5> points{{{10, 10}, {40, 50}, {80, 12}, {20, 30}, {90, 55}}};
  return {[=](OverlayPicture& picture, int rows) {
            picture.draw(fragments::dragPath, rectangle(scale, {10, 8, 70, 40}), nullptr, {}, rows);
          },
          [=](OverlayPicture& picture, int rows) {
            picture.draw(fragments::dragPath, ellipse(scale, {45, 28, 40, 20}), nullptr, {}, rows);
          },
          [=](OverlayPicture& picture, int rows) {
            const DragPathUniforms uniforms{
                .view = viewOf(scale), .shapeMode = DragPathUniforms::polyline, .pointCount = 5};
            picture.draw(fragments::dragPath, uniforms, nullptr, points, rows);
          },
          [=](OverlayPicture& picture, int rows) {
            picture.draw(fragments::moveTool, moveBox(scale, {20, 12}, {60, 30}, 0.0F), nullptr, {}, rows);
          },
          [=](OverlayPicture& picture, int rows) {
            picture.draw(fragments::moveTool, moveBox(scale, {20, 12}, {60, 30}, 0.4F), nullptr, {}, rows);
          },
          [=](OverlayPicture& picture, int rows) {
            picture.draw(fragments::freeTransform, quad(scale, {{{10, 12}, {80, 5}, {85, 50}, {15, 55}}}),
                         nullptr, {}, rows);
          }};
}

/// Equal up to the rounding of positions that were computed in different ways.
bool areAlike(std::uint32_t one, std::uint32_t other) {
  for (unsigned shift = 0; shift < 32; shift += 8) {
    const auto byte = [&](std::uint32_t pixel) { return static_cast<int>((pixel >> shift) & 0xFFU); };
    if (std::abs(byte(one) - byte(other)) > 1) return false;
  }
  return true;
}

TEST(Overlays, AreTheSameInBandsOfAnyHeight) {
  for (const float scale : scales) {
    for (const Drawing& draw : drawingsAt(scale)) {
      OverlayPicture expected(width, height, ground);
      draw(expected, height);
      for (const int rows : {1, 3, 32, 57}) {
        OverlayPicture picture(width, height, ground);
        draw(picture, rows);
        EXPECT_EQ(picture, expected) << rows;
      }
    }
  }
}

TEST(Overlays, ShowOnEveryGround) {
  const auto brightness = [](std::uint32_t pixel) { return static_cast<int>(pixel & 0xFFU); };
  for (const float scale : scales) {
    for (const std::uint32_t tone : {0U, 0x40U, 0x80U, 0xC0U, 0xFFU}) {
      for (const Drawing& draw : drawingsAt(scale)) {
        OverlayPicture picture(width, height, 0xFF000000U | tone * 0x010101U);
        draw(picture, 32);
        int contrast = 0;
        for (int y = 0; y < height; ++y) {
          for (int x = 0; x < width; ++x) {
            contrast = std::max(contrast, std::abs(brightness(picture.at(x, y)) - static_cast<int>(tone)));
          }
        }
        EXPECT_GE(contrast, 110) << tone;
      }
    }
  }
}

TEST(Overlays, LeavePixelsAwayFromTheirLinesAlone) {
  for (const float scale : scales) {
    OverlayPicture picture(width, height, ground);
    picture.draw(fragments::dragPath, rectangle(scale, {10, 8, 70, 40}));
    const auto at = [&](float point) { return static_cast<int>(point * scale); };
    const int reach = 2 * lineWidthOf(scale) + 1;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const bool isOutside =
            x < at(10) - reach || x > at(80) + reach || y < at(8) - reach || y > at(48) + reach;
        const bool isInside =
            x > at(10) + reach && x < at(80) - reach && y > at(8) + reach && y < at(48) - reach;
        if (isOutside || isInside) {
          ASSERT_EQ(picture.at(x, y), ground) << x << ", " << y;
        }
      }
    }
  }
}

TEST(DragPath, ARectangleIsSharpAndLiesOnThePixelsThatItSelects) {
  for (const float scale : scales) {
    OverlayPicture picture(width, height, 0xFF000000U);
    picture.draw(fragments::dragPath, rectangle(scale, {8, 8, 64, 40}));
    const int left = static_cast<int>(8 * scale);
    const int right = static_cast<int>(72 * scale);
    const int y = static_cast<int>(28 * scale);
    for (int x = 0; x < width; ++x) {
      const bool isLine =
          (x >= left && x < left + lineWidthOf(scale)) || (x < right && x >= right - lineWidthOf(scale));
      ASSERT_EQ(picture.at(x, y), isLine ? white : 0xFF000000U) << x << " at " << scale;
    }
  }
}

TEST(DragPath, ShapesInTheMiddleAreSymmetric) {
  for (const float scale : {1.0F, 2.0F}) {
    const auto across = static_cast<float>(width) / scale;
    const auto down = static_cast<float>(height) / scale;
    const std::array shapes{rectangle(scale, {10, 10, across - 20, down - 20}),
                            ellipse(scale, {across / 2, down / 2, across / 3, down / 3})};
    for (const DragPathUniforms& shape : shapes) {
      OverlayPicture picture(width, height, ground);
      picture.draw(fragments::dragPath, shape);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          ASSERT_TRUE(areAlike(picture.at(x, y), picture.at(width - 1 - x, y))) << x << ", " << y;
          ASSERT_TRUE(areAlike(picture.at(x, y), picture.at(x, height - 1 - y))) << x << ", " << y;
        }
      }
    }
  }
}

TEST(DragPath, NoShapeAndTooFewPointsDrawNothing) {
  const OverlayPicture untouched(width, height, ground);
  const std::array<FragmentPoint, 1> point{{{20, 20}}};
  OverlayPicture picture(width, height, ground);
  picture.draw(fragments::dragPath, DragPathUniforms{.view = viewOf(1.0F), .shape = {1, 1, 50, 50}});
  picture.draw(
      fragments::dragPath,
      DragPathUniforms{.view = viewOf(1.0F), .shapeMode = DragPathUniforms::polyline, .pointCount = 1},
      nullptr, point);
  EXPECT_EQ(picture, untouched);
}

TEST(DragPath, ACountBeyondTheBoundPointsIsCutOff) {
  const std::array<FragmentPoint, 2> points{{{20, 20}, {60, 40}}};
  DragPathUniforms uniforms{.view = viewOf(1.0F), .shapeMode = DragPathUniforms::polyline, .pointCount = 2};
  OverlayPicture expected(width, height, ground);
  expected.draw(fragments::dragPath, uniforms, nullptr, points);
  uniforms.pointCount = 1000;
  OverlayPicture picture(width, height, ground);
  picture.draw(fragments::dragPath, uniforms, nullptr, points);
  EXPECT_EQ(picture, expected);
}

TEST(DragPath, ShapesFarBeyondTheViewAreDrawnWhereTheyAreSeen) {
  OverlayPicture picture(width, height, 0xFF000000U);
  DragPathUniforms uniforms = rectangle(1.0F, {-1e6F, 20, 2e6F, 1e6F});
  picture.draw(fragments::dragPath, uniforms);
  for (int x = 0; x < width; ++x) ASSERT_EQ(picture.at(x, 20), white);
  uniforms.shape = {1e7F, 1e7F, 10, 10};
  OverlayPicture nothing(width, height, ground);
  nothing.draw(fragments::dragPath, uniforms);
  EXPECT_EQ(nothing, OverlayPicture(width, height, ground));
}

/// A handle's middle is white in a dark frame.
bool hasHandle(const OverlayPicture& picture, int x, int y) {
  return picture.at(x, y) == white && picture.at(x, y - 3) == 0xFF1E1E1EU &&
         picture.at(x, y + 3) == 0xFF1E1E1EU && picture.at(x - 3, y) == 0xFF1E1E1EU &&
         picture.at(x + 3, y) == 0xFF1E1E1EU;
}

TEST(MoveBox, HasEightHandlesOnItsOutline) {
  OverlayPicture picture(width, height, ground);
  picture.draw(fragments::moveTool, moveBox(1.0F, {20, 20}, {101, 61}, 0.0F));
  // The outline lies on the pixels just outside the content.
  for (const int y : {19, 50, 81}) {
    for (const int x : {19, 70, 121}) {
      EXPECT_EQ(hasHandle(picture, x, y), x != 70 || y != 50) << x << ", " << y;
    }
  }
  EXPECT_EQ(picture.at(40, 19), white);
  EXPECT_EQ(picture.at(19, 40), white);
}

TEST(MoveBox, HasHandlesExactlyInTheMiddleOfItsLines) {
  for (const float scale : {1.0F, 1.25F, 1.5F, 2.0F, 3.0F}) {
    OverlayPicture picture(width, height, 0xFF000000U);
    picture.draw(fragments::moveTool,
                 moveBox(scale, {20 / scale, 20 / scale}, {160 / scale, 80 / scale}, 0.0F));
    // Handle and line are symmetric about the line's middle, which lies half its width above the content.
    const int lineWidth = OverlayMapping(viewOf(scale)).lineWidth();
    for (int y = 0; y < 20; ++y) {
      ASSERT_EQ(picture.at(100, y), picture.at(100, 39 - lineWidth - y)) << y << " at " << scale;
    }
  }
}

TEST(MoveBox, LeavesOutTheMiddleHandlesOfShortSides) {
  OverlayPicture picture(width, height, ground);
  picture.draw(fragments::moveTool, moveBox(1.0F, {20, 20}, {101, 13}, 0.0F));
  EXPECT_TRUE(hasHandle(picture, 70, 19));
  EXPECT_FALSE(hasHandle(picture, 19, 26));
}

TEST(MoveBox, TurnsAboutItsCentre) {
  // A square turned by a right angle is the same square.
  OverlayPicture upright(width, height, ground);
  upright.draw(fragments::moveTool, moveBox(1.0F, {40, 20}, {81, 81}, 0.0F));
  OverlayPicture turned(width, height, ground);
  turned.draw(fragments::moveTool, moveBox(1.0F, {40, 20}, {81, 81}, std::numbers::pi_v<float> / 2.0F));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      ASSERT_TRUE(areAlike(upright.at(x, y), turned.at(x, y))) << x << ", " << y;
    }
  }
}

TEST(FreeTransform, AnUprightOutlineLooksLikeTheMoveBox) {
  for (const float scale : scales) {
    OverlayPicture box(width, height, ground);
    box.draw(fragments::moveTool, moveBox(scale, {20, 16}, {50, 30}, 0.0F));
    OverlayPicture upright(width, height, ground);
    upright.draw(fragments::freeTransform, quad(scale, {{{20, 16}, {70, 16}, {70, 46}, {20, 46}}}));
    EXPECT_EQ(upright, box);
    OverlayPicture mirrored(width, height, ground);
    mirrored.draw(fragments::freeTransform, quad(scale, {{{70, 16}, {20, 16}, {20, 46}, {70, 46}}}));
    EXPECT_EQ(mirrored, box);
    OverlayPicture quarterTurned(width, height, ground);
    quarterTurned.draw(fragments::freeTransform, quad(scale, {{{70, 16}, {70, 46}, {20, 46}, {20, 16}}}));
    EXPECT_EQ(quarterTurned, box);
  }
}

TEST(OverlayMapping, HasLinesOfOneViewPointInWholeDevicePixels) {
  EXPECT_EQ(OverlayMapping(viewOf(0.5F)).lineWidth(), 1);
  EXPECT_EQ(OverlayMapping(viewOf(1.0F)).lineWidth(), 1);
  EXPECT_EQ(OverlayMapping(viewOf(1.25F)).lineWidth(), 1);
  EXPECT_EQ(OverlayMapping(viewOf(2.0F)).lineWidth(), 2);
  EXPECT_EQ(OverlayMapping(viewOf(3.0F)).lineWidth(), 3);
}

}  // namespace
}  // namespace orvanel
