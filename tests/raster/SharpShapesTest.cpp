// Rectangles and ellipses without a feather, at every size of canvas and on every instruction set.
#include <gtest/gtest.h>

#include <limits>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"

namespace orvanel {
namespace {

using reference::context;
using reference::Image;

struct Ellipse {
  float centerX, centerY, radiusX, radiusY;
};

/// An ellipse's coverage of each pixel, from many scan lines per pixel row, each exact horizontally.
Image covered(const Ellipse& e, int width, int height) {
  constexpr int linesPerRow = 200;
  const auto centerX = static_cast<double>(e.centerX);
  Image image(width, height);
  for (int line = 0; line < height * linesPerRow; ++line) {
    const double y =
        ((line + 0.5) / linesPerRow - static_cast<double>(e.centerY)) / static_cast<double>(e.radiusY);
    if (std::abs(y) >= 1.0) continue;
    const double reach = std::sqrt(1.0 - y * y) * static_cast<double>(e.radiusX);
    for (int x = 0; x < width; ++x) {
      const double share = std::min(centerX + reach, x + 1.0) - std::max(centerX - reach, 1.0 * x);
      for (double& value : image.at(x, line / linesPerRow)) value += std::max(share, 0.0) / linesPerRow;
    }
  }
  return image;
}

TEST(SharpRectangle, IsOneInsideAndZeroOutsideWhereverItLies) {
  forEveryInstructionSet([] {
    std::mt19937 random(63);
    for (const auto& [width, height] : reference::sizes) {
      for (int round = 0; round < 12; ++round) {
        const auto place = [&](int side) {
          return static_cast<int>(random() % static_cast<unsigned>(2 * side)) - side / 2;
        };
        const PixelRect rect{place(width), place(height), static_cast<int>(random() % 200),
                             static_cast<int>(random() % 200)};
        Surface mask = reference::randomMask(width, height, random);
        context().fillRectMask(mask, rect, 0.0F);
        for (int y = 0; y < height; ++y) {
          for (int x = 0; x < width; ++x) {
            const bool isInside =
                x >= rect.x && y >= rect.y && x < rect.x + rect.width && y < rect.y + rect.height;
            ASSERT_EQ(mask.pixelAt(x, y), isInside ? 0x3C00U : 0U) << x << ", " << y;
          }
        }
      }
    }
  });
}

TEST(SharpEllipse, CoversEachPixelByItsAreaAtEverySize) {
  std::mt19937 random(64);
  for (const auto& [width, height] : reference::sizes) {
    const auto right = static_cast<float>(width);
    const auto bottom = static_cast<float>(height);
    std::uniform_real_distribution<float> share(0.0F, 1.0F);
    std::vector<Ellipse> ellipses{{right / 2.0F, bottom / 2.0F, right / 2.0F, bottom / 2.0F},
                                  {right, 0.0F, right * 0.7F, bottom * 1.3F},
                                  {right * 0.4F, bottom * 0.6F, right * 3.0F, 0.45F}};
    for (int i = 0; i < 4; ++i) {
      ellipses.push_back({share(random) * right, share(random) * bottom, 0.2F + share(random) * right,
                          0.2F + share(random) * bottom});
    }
    for (const Ellipse& e : ellipses) {
      SCOPED_TRACE(testing::Message() << e.centerX << ", " << e.centerY << ", " << e.radiusX << ", "
                                      << e.radiusY << " on " << width << " x " << height);
      const Image expected = covered(e, width, height);
      forEveryInstructionSet([&] {
        Surface mask = reference::randomMask(expected.width, expected.height, random);
        context().fillEllipseMask(mask, e.centerX, e.centerY, e.radiusX, e.radiusY, 0.0F);
        reference::expectImage(mask, expected, 0.005);
      });
    }
  }
}

TEST(SharpEllipse, LargeOnesLeaveWholeTilesUniform) {
  forEveryInstructionSet([] {
    Surface mask(PixelFormat::r16Float, 1000, 900);
    context().fillEllipseMask(mask, 500.0F, 450.0F, 480.0F, 430.0F, 0.0F);
    EXPECT_EQ(mask.tile(mask.tileIndex(3, 3)), Tile::uniform(0x3C00));
    EXPECT_EQ(mask.tile(mask.tileIndex(0, 0)), Tile::uniform(0));
  });
}

}  // namespace
}  // namespace orvanel
