#include <gtest/gtest.h>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"
#include "raster/Regularity.h"
#include "raster/kernels/DispatchBuilder.h"

namespace orvanel {
namespace {

using reference::Color;
using reference::context;
using reference::Image;

enum class Selected { nothing, some };

/// One random layer with its image and, if wanted, a selection.
struct Case {
  PixelFormat format;
  ColorMode mode;
  Surface layer;
  Surface selection;
  Image image;
  Image weights;
};

/// Calls `check` for every format, size, selection or none and instruction set.
void forEveryCase(unsigned seed, const std::function<void(Case&, const Surface*)>& check) {
  forEveryInstructionSet([&] {
    std::mt19937 random(seed);
    for (const PixelFormat format : reference::layerFormats) {
      for (const auto& [width, height] : reference::sizes) {
        for (const Selected selected : {Selected::nothing, Selected::some}) {
          SCOPED_TRACE(testing::Message() << "format " << static_cast<int>(format) << ", " << width << " x "
                                          << height << (selected == Selected::some ? ", selection" : ""));
          Surface layer = randomSurface(format, width, height, random);
          Surface selection = reference::randomMask(width, height, random);
          if (selected == Selected::nothing) selection.fill(0x3C00);
          Case one{format,    reference::modeOf(format), layer,
                   selection, reference::imageOf(layer), reference::imageOf(selection)};
          check(one, selected == Selected::some ? &one.selection : nullptr);
        }
      }
    }
  });
}

/// Mixes colour channels by the selection, alpha left alone.
void mapColors(Case& one, const std::function<double(double)>& change) {
  for (std::size_t i = 0; i < one.image.pixels.size(); ++i) {
    for (std::size_t c = 0; c < 3; ++c) {
      double& value = one.image.pixels[i][c];
      value += (change(value) - value) * one.weights.pixels[i][0];
    }
  }
}

TEST(InvertColors, MixesInTheComplementAndLeavesAlphaAlone) {
  forEveryCase(21, [](Case& one, const Surface* selection) {
    mapColors(one, [](double c) { return 1.0 - c; });
    context().invertColors(one.layer, one.mode, selection);
    reference::expectImage(one.layer, one.image);
  });
}

TEST(InvertColors, TwiceIsExactlyTheSameInIntegerFormats) {
  std::mt19937 random(22);
  for (const PixelFormat format : {PixelFormat::rg8Unorm, PixelFormat::rg16Unorm, PixelFormat::rgba8Unorm}) {
    Surface layer = randomSurface(format, 300, 257, random);
    const Surface before = layer;
    context().invertColors(layer, reference::modeOf(format), nullptr);
    EXPECT_FALSE(layer.equals(before));
    context().invertColors(layer, reference::modeOf(format), nullptr);
    EXPECT_TRUE(layer.equals(before));
  }
}

TEST(InvertColors, TouchesNoTileOutsideTheSelection) {
  std::mt19937 random(23);
  Surface layer(PixelFormat::rgba16Float, 400, 400);
  for (int index = 0; index < layer.tileCount(); ++index) fillRandomTile(layer, index, random);
  const Surface before = layer;
  Surface selection(PixelFormat::r16Float, 400, 400);
  context().fillRectMask(selection, {130, 140, 20, 20}, 0.0F);
  context().invertColors(layer, ColorMode::rgb16, &selection);
  for (int index = 0; index < layer.tileCount(); ++index) {
    EXPECT_EQ(layer.tile(index) == before.tile(index), index != layer.tileIndex(1, 1));
  }
}

TEST(InvertColors, AUniformLayerStaysUniform) {
  Surface layer(PixelFormat::rgba8Unorm, 300, 300);
  layer.fill(0x80102030U);
  context().invertColors(layer, ColorMode::rgb8, nullptr);
  for (int index = 0; index < layer.tileCount(); ++index)
    EXPECT_EQ(layer.tile(index), Tile::uniform(0x80EFDFCFU));
}

TEST(InvertColors, AnOpaqueTileKeepsItsTrait) {
  std::mt19937 random(24);
  Surface layer(PixelFormat::rgba8Unorm, 128, 128);
  fillRandomTile(layer, 0, random);
  layer.setTrait(0, TileTrait::opaque);
  context().invertColors(layer, ColorMode::rgb8, nullptr);
  EXPECT_TRUE(layer.tile(0).has(TileTrait::opaque));
}

struct Levels {
  float black;
  float white;
  float gamma;
};

TEST(LevelsAdjust, FollowsTheCurveWithinOneUnit) {
  for (const Levels levels : {Levels{0.0F, 1.0F, 1.0F}, Levels{0.2F, 0.7F, 1.0F}, Levels{0.1F, 0.9F, 2.2F},
                              Levels{0.0F, 1.0F, 0.1F}, Levels{0.05F, 1.0F, 9.99F}}) {
    SCOPED_TRACE(testing::Message() << levels.black << ", " << levels.white << ", " << levels.gamma);
    forEveryCase(25, [&](Case& one, const Surface* selection) {
      mapColors(one, [&](double c) {
        const double black = static_cast<double>(levels.black);
        const double t = std::clamp((c - black) / (static_cast<double>(levels.white) - black), 0.0, 1.0);
        return std::pow(t, 1.0 / static_cast<double>(levels.gamma));
      });
      context().levelsAdjust(one.layer, one.mode, selection, levels.black, levels.white, levels.gamma);
      // Near black a high gamma magnifies what single precision holds of c - black.
      reference::expectImage(one.layer, one.image, levels.gamma > 5.0F && levels.black > 0.0F ? 0.2 : 4e-6);
    });
  }
}

/// One tile of a surface as a separate surface.
Surface tileAlone(const Surface& surface, int index) {
  const PixelRect rect = surface.tileRect(index);
  Surface alone(surface.format(), rect.width, rect.height);
  alone.setTile(0, surface.tile(index));
  return alone;
}

TEST(LevelsAdjust, ALargeLayerGetsExactlyWhatASmallOneGets) {
  forEveryInstructionSet([] {
    std::mt19937 random(33);
    for (const PixelFormat format : reference::layerFormats) {
      SCOPED_TRACE(static_cast<int>(format));
      const ColorMode mode = reference::modeOf(format);
      const Surface before = randomSurface(format, 700, 600, random);
      const Surface selection = reference::randomMask(700, 600, random);
      for (const Selected selected : {Selected::nothing, Selected::some}) {
        const auto adjust = [&](Surface& layer, const Surface& mask) {
          context().levelsAdjust(layer, mode, selected == Selected::some ? &mask : nullptr, 0.1F, 0.8F, 2.2F);
        };
        Surface adjusted = before;
        adjust(adjusted, selection);
        for (int index = 0; index < before.tileCount(); ++index) {
          Surface one = tileAlone(before, index);
          adjust(one, tileAlone(selection, index));
          ASSERT_TRUE(tileAlone(adjusted, index).equals(one))
              << "tile " << index << (selected == Selected::some ? ", selection" : "");
        }
      }
    }
  });
}

TEST(LevelsAdjust, ValuesBeyondTheRangeOfALargeLayerAreClamped) {
  Surface layer(PixelFormat::rgba16Float, 700, 600);
  // Red of minus infinity, green far above 1, blue below 0, half transparent.
  const std::uint64_t wild = 0x3800'B800'5000'FC00ULL;
  for (int index = 0; index < layer.tileCount(); ++index) {
    layer.setUniform(index, wild);
    (void)layer.editTile(index);
  }
  markIrregularTiles(layer);
  context().levelsAdjust(layer, ColorMode::rgb16, nullptr, 0.1F, 0.8F, 2.2F);
  for (int index = 0; index < layer.tileCount(); ++index) {
    const PixelRect rect = layer.tileRect(index);
    ASSERT_EQ(layer.pixelAt(rect.x, rect.y), 0x3800'0000'3C00'0000ULL);
  }
}

TEST(LevelsAdjust, WhiteAtOrBelowBlackIsAStepAtBlack) {
  for (const float white : {100.0F / 255.0F, 20.0F / 255.0F}) {
    Surface layer(PixelFormat::rgba8Unorm, 256, 1);
    std::vector<std::uint32_t> row;
    for (std::uint32_t v = 0; v < 256; ++v) row.push_back(v * 0x010101U | 0x7F000000U);
    layer.writeRect({0, 0, 256, 1}, reinterpret_cast<const std::byte*>(row.data()), 1024);
    context().levelsAdjust(layer, ColorMode::rgb8, nullptr, 100.0F / 255.0F, white, 1.0F);
    for (int x = 0; x < 256; ++x) EXPECT_EQ(layer.pixelAt(x, 0), x <= 100 ? 0x7F000000U : 0x7FFFFFFFU) << x;
  }
}

TEST(FillWithSelection, MixesInPremultipliedForm) {
  for (const Color4 color : {Color4{0.8F, 0.1F, 0.4F, 1.0F}, Color4{0.2F, 0.9F, 0.5F, 0.25F}, Color4{}}) {
    forEveryCase(26, [&](Case& one, const Surface* selection) {
      if (selection == nullptr) return;
      for (std::size_t i = 0; i < one.image.pixels.size(); ++i) {
        const double s = one.weights.pixels[i][0];
        Color& d = one.image.pixels[i];
        if (s == 0.0) continue;
        Color filled{};
        filled[3] = d[3] + (static_cast<double>(color[3]) - d[3]) * s;
        for (std::size_t c = 0; c < 3; ++c) {
          const std::size_t from = reference::isGrey(one.format) ? 0 : c;
          const double mixed =
              d[c] * d[3] * (1.0 - s) + static_cast<double>(color[from]) * static_cast<double>(color[3]) * s;
          filled[c] = filled[3] > 0.0 ? mixed / filled[3] : 0.0;
        }
        d = reference::settled(filled, one.format);
      }
      context().fillWithSelection(one.layer, *selection, one.mode, color);
      reference::expectImage(one.layer, one.image);
    });
  }
}

TEST(FillWithSelection, UnselectedPixelsKeepTheirBytes) {
  std::mt19937 random(27);
  Surface layer = randomSurface(PixelFormat::rgba16Float, 300, 257, random);
  const Surface before = layer;
  const Surface selection =
      reference::maskOf(300, 257, [](int x, int y) { return x % 3 == 0 && y % 2 == 0 ? 0.5F : 0.0F; });
  context().fillWithSelection(layer, selection, ColorMode::rgb16, {1.0F, 0.5F, 0.0F, 1.0F});
  for (int y = 0; y < 257; ++y) {
    for (int x = 0; x < 300; ++x) {
      if (x % 3 == 0 && y % 2 == 0) continue;
      ASSERT_EQ(layer.pixelAt(x, y), before.pixelAt(x, y)) << x << ", " << y;
    }
  }
}

TEST(FillWithSelection, AWhollySelectedTileBecomesUniform) {
  std::mt19937 random(28);
  Surface layer = randomSurface(PixelFormat::rgba8Unorm, 300, 257, random);
  Surface selection(PixelFormat::r16Float, 300, 257);
  context().fillMask(selection, 1.0F);
  context().fillWithSelection(layer, selection, ColorMode::rgb8, {1.0F, 0.0F, 0.2F, 1.0F});
  for (int index = 0; index < layer.tileCount(); ++index)
    EXPECT_EQ(layer.tile(index), Tile::uniform(0xFF3300FFU));
}

TEST(ApplyLayerMask, MultipliesAlphaByTheMask) {
  forEveryCase(29, [](Case& one, const Surface* selection) {
    if (selection == nullptr) return;
    for (std::size_t i = 0; i < one.image.pixels.size(); ++i) {
      const double m = one.weights.pixels[i][0];
      if (m == 1.0) continue;
      one.image.pixels[i][3] *= m;
      one.image.pixels[i] = reference::settled(one.image.pixels[i], one.format);
    }
    context().applyLayerMask(one.layer, *selection, one.mode);
    reference::expectImage(one.layer, one.image);
  });
}

TEST(ExtractMaskedPixels, CopiesTheRectangleWeightedByTheMask) {
  forEveryInstructionSet([&] {
    std::mt19937 random(30);
    for (const PixelFormat format : reference::layerFormats) {
      const Surface layer = randomSurface(format, 300, 257, random);
      const Surface selection = reference::randomMask(300, 257, random);
      const Image image = reference::imageOf(layer);
      const Image weights = reference::imageOf(selection);
      for (const PixelRect rect :
           {PixelRect{0, 0, 300, 257}, {5, 9, 200, 130}, {128, 128, 128, 129}, {-3, 250, 20, 20}}) {
        Surface destination(format, rect.width, rect.height);
        context().extractMaskedPixels(layer, destination, selection, rect.x, rect.y,
                                      reference::modeOf(format));
        Image expected(rect.width, rect.height);
        for (int y = 0; y < rect.height; ++y) {
          for (int x = 0; x < rect.width; ++x) {
            Color pixel = image.outsideEmpty(rect.x + x, rect.y + y);
            const double m = weights.outsideEmpty(rect.x + x, rect.y + y)[0];
            pixel[3] *= m;
            expected.at(x, y) = m == 1.0 ? pixel : reference::settled(pixel, format);
          }
        }
        reference::expectImage(destination, expected);
      }
    }
  });
}

TEST(TranslateLayerPixels, ShiftsExactlyAndFillsWithTransparency) {
  std::mt19937 random(31);
  for (const PixelFormat format : reference::layerFormats) {
    for (const auto& [width, height] : reference::sizes) {
      const Surface source = randomSurface(format, width, height, random);
      for (const auto& [dx, dy] : {std::pair{3, 5}, {-130, 4}, {128, 128}, {0, -1}}) {
        Surface destination = randomSurface(format, width, height, random);
        context().translateLayerPixels(source, destination, dx, dy, reference::modeOf(format));
        for (int y = 0; y < height; ++y) {
          for (int x = 0; x < width; ++x) {
            ASSERT_EQ(destination.pixelAt(x, y), source.pixelAt(x - dx, y - dy)) << x << ", " << y;
          }
        }
      }
    }
  }
}

TEST(TranslateLayerPixels, WholeTilesAreSharedAndEmptyOnesTakeNoMemory) {
  std::mt19937 random(32);
  Surface source(PixelFormat::rgba16Float, 600, 600);
  fillRandomTile(source, source.tileIndex(1, 1), random);
  Surface destination(PixelFormat::rgba16Float, 600, 600);
  context().translateLayerPixels(source, destination, 128, 256, ColorMode::rgb16);
  EXPECT_EQ(destination.tile(destination.tileIndex(2, 3)).buffer(),
            source.tile(source.tileIndex(1, 1)).buffer());
  context().translateLayerPixels(source, destination, 3, 5, ColorMode::rgb16);
  int withData = 0;
  for (int index = 0; index < destination.tileCount(); ++index)
    withData += !destination.tile(index).isUniform();
  EXPECT_EQ(withData, 4);
}

TEST(BrushStroke, BlendsOneDabIntoTheTilesUnderIt) {
  Surface layer(PixelFormat::rgba8Unorm, 300, 300);
  BrushParams params;
  params.centerX = 64.0F;
  params.centerY = 64.0F;
  params.radius = 20.0F;
  params.hardness = 0.5F;
  params.flow = 1.0F;
  params.colorMode = rawValue(ColorMode::rgb8);
  params.color = {1.0F, 0.0F, 0.0F, 1.0F};
  context().brushPipeline.function(DispatchBuilder().write(0, layer).bytes(0, params).dispatch());
  EXPECT_EQ(layer.pixelAt(64, 64), 0xFF0000FFU);
  EXPECT_EQ(layer.pixelAt(64, 85), 0U);
  const auto alphaAt = [&](int x) { return layer.pixelAt(x, 64) >> 24U; };
  EXPECT_EQ(alphaAt(72), 255U);
  EXPECT_LT(alphaAt(79), 255U);
  EXPECT_LT(alphaAt(82), alphaAt(79));
  EXPECT_EQ(layer.tile(layer.tileIndex(1, 1)), Tile::uniform(0));
}

}  // namespace
}  // namespace orvanel
