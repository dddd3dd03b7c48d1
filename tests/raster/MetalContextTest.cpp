#include "raster/MetalContext.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "raster/CompositeTwin.h"
#include "raster/InstructionSets.h"
#include "raster/RandomSurface.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

constexpr std::array<const char*, 35> kernelNames{"compositeLayer",
                                                  "clearTexture",
                                                  "brushStroke",
                                                  "drawCheckerboard",
                                                  "invertColors",
                                                  "fillMask",
                                                  "invertMask",
                                                  "fillRectMask",
                                                  "fillWithSelection",
                                                  "fillMaskWithSelection",
                                                  "fillEllipseMask",
                                                  "intersectMasks",
                                                  "addMasks",
                                                  "subtractMasks",
                                                  "unionMasks",
                                                  "magicWandNonContiguous",
                                                  "magicWandEligibility",
                                                  "magicWandAntialias",
                                                  "levelsAdjust",
                                                  "convertTexture",
                                                  "translateMask",
                                                  "selectionBoundingRect",
                                                  "fillPolygonMask",
                                                  "extractMaskedPixels",
                                                  "layerContentBoundingRect",
                                                  "translateLayerPixels",
                                                  "scaleLayerRegion",
                                                  "rotateLayerPixels",
                                                  "affineTransformLayerPixels",
                                                  "applyLayerMask",
                                                  "extractAlpha",
                                                  "extractChannel",
                                                  "resampleTexture",
                                                  "checkEdgeUniformity",
                                                  "trimBoundingRect"};

TEST(MetalContextDeathTest, AMissingKernelEndsTheProcessWithItsName) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const char* name : kernelNames) {
    ShaderLibrary library = ShaderLibrary::standard();
    ASSERT_NE(library.kernel(name), nullptr) << name;
    library.remove(name);
    ASSERT_EQ(library.kernel(name), nullptr);
  }
  ShaderLibrary library = ShaderLibrary::standard();
  library.remove("levelsAdjust");
  EXPECT_DEATH(MetalContext{library}, "Failed to find Metal function: levelsAdjust");
}

TEST(MetalContext, KeepsEveryPipelineUnderItsKernelsName) {
  const MetalContext context(ShaderLibrary::standard());
  EXPECT_EQ(context.compositingPipeline.name, "compositeLayer");
  EXPECT_EQ(context.trimBoundingRectPipeline.name, "trimBoundingRect");
  EXPECT_EQ(context.brushPipeline.name, "brushStroke");
}

TEST(MetalContextDeathTest, AMissingPassFunctionEndsTheProcessWithItsName) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ShaderLibrary library = ShaderLibrary::standard();
  library.remove("documentFragmentShader");
  const MetalContext withoutFragment(library);
  EXPECT_DEATH((void)withoutFragment.makeRenderPipeline("layerVertexShader", "documentFragmentShader", true),
               "Failed to find fragment function: documentFragmentShader");
  library.remove("layerVertexShader");
  const MetalContext withoutVertex(library);
  EXPECT_DEATH((void)withoutVertex.makeRenderPipeline("layerVertexShader", "backgroundFragmentShader", false),
               "Failed to find vertex function: layerVertexShader");
}

TEST(ColorMode, FormatsAndNamesFollowTheRawValue) {
  EXPECT_EQ(layerPixelFormat(ColorMode::grayscale8), PixelFormat::rg8Unorm);
  EXPECT_EQ(layerPixelFormat(ColorMode::grayscale16), PixelFormat::rg16Unorm);
  EXPECT_EQ(layerPixelFormat(ColorMode::rgb8), PixelFormat::rgba8Unorm);
  EXPECT_EQ(layerPixelFormat(ColorMode::rgb16), PixelFormat::rgba16Float);
  EXPECT_EQ(compositePixelFormat(ColorMode::grayscale8), PixelFormat::rgba8Unorm);
  EXPECT_EQ(compositePixelFormat(ColorMode::grayscale16), PixelFormat::rgba16Float);
  EXPECT_EQ(folderColorMode(ColorMode::grayscale8), ColorMode::rgb8);
  EXPECT_EQ(folderColorMode(ColorMode::grayscale16), ColorMode::rgb16);
  EXPECT_EQ(displayName(ColorMode::grayscale16), "Grayscale 16-bit");
  EXPECT_EQ(displayName(BlendMode::exclusion), "Exclusion");
  EXPECT_FALSE(colorModeFromRaw(4).has_value());
  EXPECT_FALSE(blendModeFromRaw(-1).has_value());
  EXPECT_EQ(blendModeFromRaw(7), BlendMode::exclusion);
}

TEST(MetalContext, BytesPerPixelFollowTheFormatAndDifferBetweenLayerAndCompositeInGrey16) {
  const MetalContext context(ShaderLibrary::standard());
  const Texture layer = context.makeTexture(layerPixelFormat(ColorMode::grayscale16), 10, 3);
  const Texture composite = context.makeTexture(compositePixelFormat(ColorMode::grayscale16), 10, 3);
  EXPECT_EQ(MetalContext::bytesPerPixel(*layer), 4);
  EXPECT_EQ(MetalContext::bytesPerPixel(*composite), 8);
  EXPECT_EQ(MetalContext::byteSize(*composite), 240);
  EXPECT_EQ(bytesPerPixel(PixelFormat::rgba32Float), 16);
  EXPECT_EQ(bytesPerPixel(PixelFormat::bgra8Unorm), 4);
  EXPECT_EQ(bytesPerPixel(PixelFormat::r16Float), 2);
}

TEST(MetalContext, TexturesOutOfRangeOrRefusedAreNotMade) {
  const MetalContext context(ShaderLibrary::standard());
  EXPECT_EQ(context.makeTexture(PixelFormat::rgba8Unorm, 0, 5), nullptr);
  EXPECT_EQ(context.makeTexture(PixelFormat::rgba8Unorm, 5, 16385), nullptr);
  EXPECT_EQ(context.makeTexture(PixelFormat::bgra8Unorm, 5, 5), nullptr);
  EXPECT_NE(context.makeTexture(PixelFormat::rgba8Unorm, 1, 16384), nullptr);
  {
    const tileMemory::ScopedSurfaceFailure refusal(1);
    EXPECT_NE(context.makeTexture(PixelFormat::rgba8Unorm, 5, 5), nullptr);
    EXPECT_EQ(context.makeTexture(PixelFormat::rgba8Unorm, 5, 5), nullptr);
  }
  EXPECT_NE(context.makeTexture(PixelFormat::rgba8Unorm, 5, 5), nullptr);
}

TEST(ClearTexture, FillsEveryFormatWithoutTakingMemory) {
  const MetalContext context(ShaderLibrary::standard());
  const std::size_t before = tileMemory::bytesInUse();
  for (const ColorMode mode : allColorModes) {
    const Texture layer = context.makeTexture(layerPixelFormat(mode), 300, 200);
    context.clearTexture(*layer, mode, {1.0F, 1.0F, 1.0F, 1.0F});
    const twin::Pixel white = twin::decode(layer->pixelAt(299, 199), layer->format());
    EXPECT_EQ(white.color[0], 1.0);
    EXPECT_EQ(white.alpha, 1.0);
    context.clearTexture(*layer, mode, {});
    EXPECT_EQ(layer->pixelAt(0, 0), 0U);
  }
  EXPECT_EQ(tileMemory::bytesInUse(), before);
}

TEST(ClearTexture, InAGreyModeTheFirstComponentIsGreyAndTheLastAlpha) {
  const MetalContext context(ShaderLibrary::standard());
  const Texture layer = context.makeTexture(PixelFormat::rg8Unorm, 3, 3);
  context.clearTexture(*layer, ColorMode::grayscale8, {0.2F, 0.9F, 0.9F, 0.6F});
  EXPECT_EQ(layer->pixelAt(1, 1), 51U | 153U << 8U);
  const Texture composite = context.makeTexture(PixelFormat::rgba8Unorm, 3, 3);
  context.clearTexture(*composite, ColorMode::grayscale8, {0.2F, 0.9F, 0.9F, 0.6F});
  EXPECT_EQ(composite->pixelAt(1, 1), 0x99333333U);
}

TEST(ClearTexture, AnAlphaThatRoundsToZeroLeavesNoColour) {
  const MetalContext context(ShaderLibrary::standard());
  for (const ColorMode mode : allColorModes) {
    const Texture layer = context.makeTexture(layerPixelFormat(mode), 3, 3);
    const bool isFloat = layer->format() == PixelFormat::rgba16Float;
    const bool hasBytes =
        layer->format() == PixelFormat::rg8Unorm || layer->format() == PixelFormat::rgba8Unorm;
    const float unit = isFloat ? 0x1p-24F : hasBytes ? 1.0F / 255.0F : 1.0F / 65535.0F;
    for (const float alpha :
         {0.0F, unit * 0.01F, unit * 0.49F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
      context.clearTexture(*layer, mode, {1.0F, 0.5F, 0.25F, alpha});
      EXPECT_EQ(layer->pixelAt(1, 1), 0U) << static_cast<int>(mode) << ", " << alpha;
    }
    context.clearTexture(*layer, mode, {1.0F, 0.5F, 0.25F, unit * 0.51F});
    const twin::Pixel faint = twin::decode(layer->pixelAt(1, 1), layer->format());
    EXPECT_EQ(faint.color[0], 1.0) << static_cast<int>(mode);
    EXPECT_EQ(static_cast<float>(faint.alpha), unit) << static_cast<int>(mode);
  }
}

TEST(ClearTexture, GivesTheBytesOfAFillUnderAFullSelection) {
  const MetalContext context(ShaderLibrary::standard());
  std::mt19937 random(91);
  std::uniform_real_distribution<float> any(0.0F, 1.0F);
  Surface selection(PixelFormat::r16Float, 40, 30);
  context.fillMask(selection, 1.0F);
  forEveryInstructionSet([&] {
    for (const ColorMode mode : allColorModes) {
      for (int round = 0; round < 400; ++round) {
        Color4 color{any(random), any(random), any(random), any(random)};
        // Tenths often lie half way between two bytes.
        if (round % 2 == 0) {
          for (float& channel : color) channel = std::round(channel * 10.0F) / 10.0F;
        }
        if (round % 4 == 3) color[3] = std::pow(color[3], 12.0F);
        Surface cleared(layerPixelFormat(mode), 40, 30);
        context.clearTexture(cleared, mode, color);
        Surface filled(layerPixelFormat(mode), 40, 30);
        fillRandomTile(filled, 0, random);
        context.fillWithSelection(filled, selection, mode, color);
        ASSERT_TRUE(filled.equals(cleared)) << static_cast<int>(mode) << ", round " << round;
      }
    }
  });
}

TEST(DrawCheckerboard, AlternatesSquaresFromTheCornerAndSharesOneTile) {
  const MetalContext context(ShaderLibrary::standard());
  const Texture board = context.makeTexture(PixelFormat::rgba8Unorm, 600, 600);
  context.drawCheckerboard(*board, 8.0F);
  const std::uint64_t light = board->pixelAt(0, 0);
  const std::uint64_t dark = board->pixelAt(8, 0);
  EXPECT_NE(light, dark);
  for (int y = 0; y < 600; y += 3) {
    for (int x = 0; x < 600; x += 3) {
      ASSERT_EQ(board->pixelAt(x, y), (x / 8 + y / 8) % 2 == 0 ? light : dark) << x << ", " << y;
    }
  }
  EXPECT_EQ(board->tile(0).buffer(), board->tile(7).buffer());
  context.drawCheckerboard(*board, 10.0F);
  EXPECT_EQ(board->pixelAt(130, 0), dark);
  EXPECT_EQ(board->pixelAt(140, 0), light);
}

TEST(ConvertTexture, EveryPairOfModesConvertsByValueAndNeverChangesAlpha) {
  const MetalContext context(ShaderLibrary::standard());
  forEveryInstructionSet([&] {
    std::mt19937 random(5);
    for (const ColorMode from : allColorModes) {
      for (const ColorMode to : allColorModes) {
        SCOPED_TRACE(testing::Message() << displayName(from) << " to " << displayName(to));
        const Surface source = randomSurface(layerPixelFormat(from), 300, 129, random);
        Surface destination(layerPixelFormat(to), 300, 129);
        context.convertTexture(source, destination, from, to);
        const double unit = bitsPerChannel(to) == 8  ? 0.502 / 255.0
                            : to == ColorMode::rgb16 ? 0x1p-12 + 1e-7
                                                     : 0.51 / 65535.0;
        for (int y = 0; y < 129; ++y) {
          for (int x = 0; x < 300; ++x) {
            const twin::Pixel in = twin::decode(source.pixelAt(x, y), source.format());
            const twin::Pixel out = twin::decode(destination.pixelAt(x, y), destination.format());
            ASSERT_NEAR(out.alpha, in.alpha, unit);
            const double grey = 0.299 * in.color[0] + 0.587 * in.color[1] + 0.114 * in.color[2];
            for (std::size_t c = 0; c < 3; ++c) {
              ASSERT_NEAR(out.color[c], isGrayscale(to) ? grey : in.color[c], unit + 1e-6);
            }
          }
        }
      }
    }
  });
}

TEST(ConvertTexture, GreyToRgbAndBackIsExact) {
  const MetalContext context(ShaderLibrary::standard());
  std::mt19937 random(6);
  const Surface grey = randomSurface(PixelFormat::rg8Unorm, 200, 100, random);
  Surface deep(PixelFormat::rgba16Float, 200, 100);
  Surface back(PixelFormat::rg8Unorm, 200, 100);
  context.convertTexture(grey, deep, ColorMode::grayscale8, ColorMode::rgb16);
  context.convertTexture(deep, back, ColorMode::rgb16, ColorMode::grayscale8);
  EXPECT_TRUE(back.equals(grey));
}

TEST(ConvertTexture, UniformTilesStayUniform) {
  const MetalContext context(ShaderLibrary::standard());
  Surface source(PixelFormat::rgba8Unorm, 500, 500);
  source.fill(0x80402010U);
  Surface destination(PixelFormat::rgba16Float, 500, 500);
  context.convertTexture(source, destination, ColorMode::rgb8, ColorMode::rgb16);
  for (int index = 0; index < destination.tileCount(); ++index)
    EXPECT_TRUE(destination.tile(index).isUniform());
}

}  // namespace
}  // namespace orvanel
