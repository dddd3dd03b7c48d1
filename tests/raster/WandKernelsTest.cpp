#include <gtest/gtest.h>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"
#include "raster/TileMemory.h"
#include "raster/WandReference.h"
#include "raster/kernels/DispatchBuilder.h"

namespace orvanel {
namespace {

using reference::colorAt;
using reference::context;
using reference::flooded;
using reference::Image;
using reference::isWithin;
using reference::speckled;

void expectSelected(const Surface& mask, const std::vector<bool>& expected) {
  for (int y = 0; y < mask.height(); ++y) {
    for (int x = 0; x < mask.width(); ++x) {
      const bool wanted = expected[static_cast<std::size_t>(y * mask.width() + x)];
      ASSERT_EQ(mask.pixelAt(x, y), wanted ? 0x3C00U : 0U) << x << ", " << y;
    }
  }
}

TEST(MagicWandContiguous, FloodsAsABreadthFirstQueueWould) {
  forEveryInstructionSet([] {
    std::mt19937 random(51);
    for (const PixelFormat format : reference::layerFormats) {
      for (const unsigned percent : {30U, 55U, 62U, 80U, 97U}) {
        for (const auto& [width, height] : reference::sizes) {
          const Surface sample = speckled(format, width, height, percent, random);
          const int x = static_cast<int>(random() % static_cast<unsigned>(width));
          const int y = static_cast<int>(random() % static_cast<unsigned>(height));
          const Color4 seed = colorAt(sample, x, y);
          Surface mask(PixelFormat::r16Float, width, height);
          context().fillMask(mask, 0.5F);
          context().magicWandContiguous(sample, mask, x, y, seed, 0.01F);
          expectSelected(mask, flooded(reference::imageOf(sample), x, y, seed, 0.01F));
        }
      }
    }
  });
}

TEST(MagicWandContiguous, TheSeedIsSelectedWhateverItsColour) {
  Surface sample(PixelFormat::rgba8Unorm, 5, 5);
  sample.fill(0xFFFFFFFFU);
  const std::uint64_t black = 0xFF000000U;
  sample.writeRect({2, 2, 1, 1}, reinterpret_cast<const std::byte*>(&black), 8);
  Surface mask(PixelFormat::r16Float, 5, 5);
  // Nothing is of this colour: only the seed.
  context().magicWandContiguous(sample, mask, 2, 2, {0.5F, 0.5F, 0.5F, 1.0F}, 0.0F);
  EXPECT_EQ(context().selectionBounds(mask), (PixelRect{2, 2, 1, 1}));
  // All but the seed are of this colour: the flood passes through the seed into them.
  context().magicWandContiguous(sample, mask, 2, 2, {1.0F, 1.0F, 1.0F, 1.0F}, 0.0F);
  for (int i = 0; i < 25; ++i) EXPECT_EQ(mask.pixelAt(i % 5, i / 5), 0x3C00U);
}

TEST(MagicWandContiguous, NeverWrapsToTheOtherSideOfARow) {
  // Two columns at opposite sides, a wall between.
  Surface sample(PixelFormat::rgba8Unorm, 130, 4);
  sample.fill(0xFFFFFFFFU);
  const std::uint64_t black = 0xFF000000U;
  for (int y = 0; y < 4; ++y) {
    for (int x = 1; x < 129; ++x)
      sample.writeRect({x, y, 1, 1}, reinterpret_cast<const std::byte*>(&black), 8);
  }
  Surface mask(PixelFormat::r16Float, 130, 4);
  context().magicWandContiguous(sample, mask, 0, 3, {1.0F, 1.0F, 1.0F, 1.0F}, 0.0F);
  EXPECT_EQ(context().selectionBounds(mask), (PixelRect{0, 0, 1, 4}));
  context().magicWandContiguous(sample, mask, 129, 0, {1.0F, 1.0F, 1.0F, 1.0F}, 0.0F);
  EXPECT_EQ(context().selectionBounds(mask), (PixelRect{129, 0, 1, 4}));
}

TEST(MagicWandContiguous, ASeedOutsideOrARefusedSurfaceLeavesTheMask) {
  const Surface sample(PixelFormat::rgba8Unorm, 20, 20);
  Surface mask(PixelFormat::r16Float, 20, 20);
  context().fillMask(mask, 0.25F);
  context().magicWandContiguous(sample, mask, 20, 0, {}, 1.0F);
  context().magicWandContiguous(sample, mask, 0, -1, {}, 1.0F);
  {
    const tileMemory::ScopedSurfaceFailure failure(0);
    context().magicWandContiguous(sample, mask, 5, 5, {}, 1.0F);
    context().magicWandAntialias(mask);
  }
  EXPECT_EQ(mask.tile(0), Tile::uniform(0x3400));
}

TEST(MagicWandContiguous, AUniformCanvasIsSelectedWithoutMemory) {
  const Surface sample(PixelFormat::rgba16Float, 600, 400);
  Surface mask(PixelFormat::r16Float, 600, 400);
  context().magicWandContiguous(sample, mask, 300, 200, {}, 0.0F);
  for (int index = 0; index < mask.tileCount(); ++index) EXPECT_EQ(mask.tile(index), Tile::uniform(0x3C00));
}

TEST(MagicWandNonContiguous, SelectsEveryPixelWithinTolerance) {
  forEveryInstructionSet([&] {
    std::mt19937 random(52);
    for (const PixelFormat format : reference::layerFormats) {
      for (const auto& [width, height] : reference::sizes) {
        const Surface sample = randomSurface(format, width, height, random);
        const Color4 seed = colorAt(sample, width / 2, height / 2);
        for (const float tolerance : {0.0F, 10.0F / 255.0F, 0.4F, 1.0F}) {
          Surface mask(PixelFormat::r16Float, width, height);
          context().magicWandNonContiguous(sample, mask, seed, tolerance);
          const Image image = reference::imageOf(sample);
          std::vector<bool> expected;
          for (const reference::Color& pixel : image.pixels)
            expected.push_back(isWithin(pixel, seed, tolerance));
          expectSelected(mask, expected);
        }
      }
    }
  });
}

TEST(MagicWandEligibility, GivesOneByteForEachPixelRowAfterRow) {
  forEveryInstructionSet([] {
    std::mt19937 random(53);
    for (const PixelFormat format : reference::layerFormats) {
      for (const auto& [width, height] : reference::sizes) {
        const Surface sample = randomSurface(format, width, height, random);
        const Image image = reference::imageOf(sample);
        for (const float tolerance : {0.0F, 0.3F, 1.0F}) {
          WandParams params;
          params.seed = colorAt(sample, width - 1, height / 2);
          params.tolerance = tolerance;
          std::vector<std::byte> flags(image.pixels.size(), std::byte{9});
          context().magicWandEligibilityPipeline.function(
              DispatchBuilder().read(0, sample).bytes(0, params).buffer(1, flags).dispatch());
          for (std::size_t i = 0; i < flags.size(); ++i) {
            ASSERT_EQ(flags[i], std::byte{isWithin(image.pixels[i], params.seed, tolerance)}) << i;
          }
        }
      }
    }
  });
}

TEST(MagicWandAntialias, SmoothsStaircasesAndLeavesStraightEdges) {
  std::mt19937 random(54);
  for (const auto& [width, height] : reference::sizes) {
    for (const bool isSolid : {false, true}) {
      const bool solid = isSolid;
      Surface mask = reference::maskOf(width, height, [&](int x, int y) {
        return (solid ? x / 40 + y / 40 : static_cast<int>(random())) % 2 == 0 ? 1.0F : 0.0F;
      });
      const Image before = reference::imageOf(mask);
      Image expected = before;
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          if (before.at(x, y)[0] > 0.0) continue;
          int n = 0;
          for (const auto& [nx, ny] : {std::pair{x + 1, y}, {x - 1, y}, {x, y + 1}, {x, y - 1}}) {
            n += before.outsideEmpty(nx, ny)[0] > 0.0;
          }
          if (n >= 2) expected.at(x, y).fill(std::min(n / 4.0, 0.75));
        }
      }
      context().magicWandAntialias(mask);
      reference::expectImage(mask, expected, 0.0);
    }
  }
}

TEST(MagicWandAntialias, SeesAcrossTilesThatAreUniform) {
  Surface mask(PixelFormat::r16Float, 256, 256);
  mask.setUniform(1, 0x3C00);
  mask.setUniform(2, 0x3C00);
  context().magicWandAntialias(mask);
  EXPECT_EQ(mask.pixelAt(127, 127), 0x3800U);
  EXPECT_EQ(mask.pixelAt(128, 128), 0x3800U);
  EXPECT_EQ(mask.pixelAt(126, 127), 0U);
}

}  // namespace
}  // namespace orvanel
