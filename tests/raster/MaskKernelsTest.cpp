#include <gtest/gtest.h>

#include <limits>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"
#include "raster/kernels/DispatchBuilder.h"

namespace orvanel {
namespace {

using reference::Color;
using reference::context;
using reference::Image;

using Combine = void (MetalContext::*)(Surface&, const Surface&) const;

/// Runs a combination over random masks of every size and instruction set, against `expected(d, s)`.
void checkCombination(Combine combine, const std::function<double(double, double)>& expected) {
  forEveryInstructionSet([&] {
    std::mt19937 random(11);
    for (const auto& [width, height] : reference::sizes) {
      SCOPED_TRACE(testing::Message() << width << " x " << height);
      Surface mask = reference::randomMask(width, height, random);
      const Surface operand = reference::randomMask(width, height, random);
      Image image = reference::imageOf(mask);
      const Image other = reference::imageOf(operand);
      for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        image.pixels[i].fill(expected(image.pixels[i][0], other.pixels[i][0]));
      }
      (context().*combine)(mask, operand);
      reference::expectImage(mask, image);
    }
  });
}

TEST(AddMasks, TakesTheLargerOfTheTwo) {
  checkCombination(&MetalContext::addMasks, [](double d, double s) { return std::max(d, s); });
}

TEST(SubtractMasks, IsLimitedByTheComplementOfTheOperand) {
  checkCombination(&MetalContext::subtractMasks, [](double d, double s) { return std::min(d, 1.0 - s); });
}

TEST(IntersectMasks, TakesTheSmallerOfTheTwo) {
  checkCombination(&MetalContext::intersectMasks, [](double d, double s) { return std::min(d, s); });
}

TEST(UnionMasks, TakesTheLargerOfTheTwo) {
  Surface mask = reference::maskOf(3, 1, [](int x, int) { return 0.25F * static_cast<float>(x); });
  const Surface operand = reference::maskOf(3, 1, [](int, int) { return 0.25F; });
  context().unionMasksPipeline.function(DispatchBuilder().write(0, mask).read(1, operand).dispatch());
  EXPECT_EQ(reference::maskAt(mask, 0, 0), 0.25F);
  EXPECT_EQ(reference::maskAt(mask, 2, 0), 0.5F);
}

TEST(CombiningMasks, EmptyAndFullTilesCostNoPixels) {
  std::mt19937 random(12);
  Surface mask(PixelFormat::r16Float, 400, 130);
  for (int index = 0; index < mask.tileCount(); ++index) fillRandomTile(mask, index, random);
  const Surface before = mask;
  Surface operand(PixelFormat::r16Float, 400, 130);
  context().addMasks(mask, operand);
  context().subtractMasks(mask, operand);
  operand.fill(0x3C00);
  context().intersectMasks(mask, operand);
  for (int index = 0; index < mask.tileCount(); ++index) EXPECT_EQ(mask.tile(index), before.tile(index));
  Surface full = mask;
  context().addMasks(full, operand);
  Surface empty = mask;
  context().subtractMasks(empty, operand);
  for (int index = 0; index < mask.tileCount(); ++index) {
    EXPECT_EQ(full.tile(index), Tile::uniform(0x3C00));
    EXPECT_EQ(empty.tile(index), Tile::uniform(0));
  }
  Surface taken(PixelFormat::r16Float, 400, 130);
  context().addMasks(taken, mask);
  for (int index = 0; index < mask.tileCount(); ++index) {
    EXPECT_EQ(taken.tile(index).buffer(), mask.tile(index).buffer());
  }
}

TEST(CombiningMasks, TheOperandAndItsCopiesAreUnchanged) {
  std::mt19937 random(13);
  Surface mask = reference::randomMask(300, 257, random);
  const Surface operand = reference::randomMask(300, 257, random);
  const Surface maskCopy = mask;
  const Image maskImage = reference::imageOf(mask);
  const Image operandImage = reference::imageOf(operand);
  context().addMasks(mask, operand);
  context().invertMask(mask);
  EXPECT_EQ(reference::imageOf(operand).pixels, operandImage.pixels);
  EXPECT_EQ(reference::imageOf(maskCopy).pixels, maskImage.pixels);
}

TEST(CombiningMasks, IrregularValuesAreSanitisedOnReading) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  Surface mask = reference::maskOf(130, 2, [](int x, int) { return 0.001F * static_cast<float>(x); });
  Surface operand = reference::maskOf(130, 2, [&](int x, int) {
    return x == 0 ? nan : x == 1 ? infinity : -1.0F;
  });
  operand.setTrait(0, TileTrait::irregular);
  context().addMasks(mask, operand);
  EXPECT_EQ(reference::maskAt(mask, 0, 0), 0.0F);
  EXPECT_EQ(reference::maskAt(mask, 1, 0), 1.0F);
  EXPECT_NEAR(reference::maskAt(mask, 100, 1), 0.1F, 1e-4F);
}

TEST(FillMask, SetsEveryPixelWithoutMemory) {
  Surface mask(PixelFormat::r16Float, 300, 257);
  context().fillMask(mask, 0.25F);
  for (int index = 0; index < mask.tileCount(); ++index) EXPECT_EQ(mask.tile(index), Tile::uniform(0x3400));
  context().fillMask(mask, 7.0F);
  EXPECT_EQ(reference::maskAt(mask, 299, 256), 1.0F);
  context().fillMask(mask, std::numeric_limits<float>::quiet_NaN());
  EXPECT_EQ(reference::maskAt(mask, 0, 0), 0.0F);
}

TEST(InvertMask, IsOneMinusThePixel) {
  forEveryInstructionSet([&] {
    std::mt19937 random(14);
    for (const auto& [width, height] : reference::sizes) {
      Surface mask = reference::randomMask(width, height, random);
      Image image = reference::imageOf(mask);
      for (Color& pixel : image.pixels) pixel.fill(1.0 - pixel[0]);
      context().invertMask(mask);
      reference::expectImage(mask, image);
    }
  });
}

TEST(InvertMask, AFullMaskBecomesAnEmptyOneWithoutMemory) {
  Surface mask(PixelFormat::r16Float, 300, 300);
  context().invertMask(mask);
  EXPECT_EQ(mask.tile(4), Tile::uniform(0x3C00));
  context().invertMask(mask);
  EXPECT_EQ(mask.tile(4), Tile::uniform(0));
}

TEST(FillMaskWithSelection, MixesTheValueInByTheSelection) {
  forEveryInstructionSet([&] {
    std::mt19937 random(15);
    for (const float value : {0.0F, 0.3F, 1.0F}) {
      for (const auto& [width, height] : reference::sizes) {
        Surface mask = reference::randomMask(width, height, random);
        const Surface selection = reference::randomMask(width, height, random);
        Image image = reference::imageOf(mask);
        const Image selected = reference::imageOf(selection);
        for (std::size_t i = 0; i < image.pixels.size(); ++i) {
          const double d = image.pixels[i][0];
          image.pixels[i].fill(d + (static_cast<double>(value) - d) * selected.pixels[i][0]);
        }
        context().fillMaskWithSelection(mask, selection, value);
        reference::expectImage(mask, image);
      }
    }
  });
}

TEST(TranslateMask, ShiftsAndFillsWithZero) {
  std::mt19937 random(16);
  for (const auto& [width, height] : reference::sizes) {
    const Surface source = reference::randomMask(width, height, random);
    const Image image = reference::imageOf(source);
    for (const auto& [dx, dy] : {std::pair{0, 0},
                                 {3, 5},
                                 {-7, 2},
                                 {128, -128},
                                 {-1, 129},
                                 {5000, 0},
                                 {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}}) {
      Surface destination(PixelFormat::r16Float, width, height);
      context().fillMask(destination, 0.5F);
      context().translateMask(source, destination, dx, dy);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          const std::int64_t fromX = std::int64_t{x} - dx;
          const std::int64_t fromY = std::int64_t{y} - dy;
          const bool inside = fromX >= 0 && fromY >= 0 && fromX < width && fromY < height;
          const double expected =
              inside ? image.at(static_cast<int>(fromX), static_cast<int>(fromY))[0] : 0.0;
          ASSERT_EQ(static_cast<double>(reference::maskAt(destination, x, y)), expected)
              << x << ", " << y << " by " << dx << ", " << dy;
        }
      }
    }
  }
}

TEST(ExtractAlpha, ReadsTheLastChannelOfEveryFormat) {
  forEveryInstructionSet([&] {
    std::mt19937 random(17);
    for (const PixelFormat format : reference::layerFormats) {
      for (const auto& [width, height] : reference::sizes) {
        const Surface layer = randomSurface(format, width, height, random);
        Surface mask(PixelFormat::r16Float, width, height);
        context().extractAlpha(layer, mask, reference::modeOf(format));
        Image expected = reference::imageOf(layer);
        for (Color& pixel : expected.pixels) pixel.fill(pixel[3]);
        reference::expectImage(mask, expected);
      }
    }
  });
}

TEST(ExtractChannel, ReadsTheChannelOfTheIndex) {
  forEveryInstructionSet([&] {
    std::mt19937 random(18);
    for (const PixelFormat format : {PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
      for (const auto& [width, height] : reference::sizes) {
        const Surface composited = randomSurface(format, width, height, random);
        for (int channel = 0; channel < 4; ++channel) {
          Surface mask = reference::randomMask(width, height, random);
          context().extractChannel(composited, mask, channel);
          Image expected = reference::imageOf(composited);
          for (Color& pixel : expected.pixels) pixel.fill(pixel[static_cast<std::size_t>(channel)]);
          reference::expectImage(mask, expected);
        }
      }
    }
  });
}

}  // namespace
}  // namespace orvanel
