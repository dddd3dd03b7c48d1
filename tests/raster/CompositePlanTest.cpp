#include "raster/CompositePlan.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <random>
#include <vector>

#include "raster/CompositeTwin.h"
#include "raster/InstructionSets.h"
#include "raster/MetalContext.h"
#include "raster/RandomSurface.h"
#include "raster/Regularity.h"

namespace orvanel {
namespace {

struct Size {
  int width;
  int height;
};
constexpr std::array oddSizes{Size{1, 1}, Size{17, 1}, Size{127, 3}, Size{129, 131}, Size{300, 257}};

std::vector<std::pair<bool, Size>> everyMaskAndSize() {
  std::vector<std::pair<bool, Size>> cases;
  for (const bool masked : {false, true}) {
    for (const Size size : oddSizes) cases.emplace_back(masked, size);
  }
  return cases;
}

CompositeParams paramsOf(BlendMode mode, float opacity, ColorMode colorMode, bool masked) {
  CompositeParams params;
  params.blendMode = rawValue(mode);
  params.opacity = opacity;
  params.colorMode = rawValue(colorMode);
  params.hasMask = masked ? 1 : 0;
  return params;
}

void expectPixel(const Surface& canvas, int x, int y, const twin::Pixel& expected) {
  const twin::Pixel got = twin::decode(canvas.pixelAt(x, y), canvas.format());
  ASSERT_NEAR(got.alpha, expected.alpha, twin::tolerance(canvas.format(), expected.alpha)) << x << ", " << y;
  if (got.alpha == 0.0) {
    // Nothing is left of the colour where alpha was rounded away.
    for (const double channel : got.color) ASSERT_EQ(channel, 0.0);
    return;
  }
  for (std::size_t c = 0; c < 3; ++c) {
    // Dividing by a small alpha magnifies the 32-bit rounding of the accumulator.
    const double slack =
        twin::tolerance(canvas.format(), expected.color[c]) + 2e-6 / std::max(got.alpha, 1e-3);
    ASSERT_NEAR(got.color[c], expected.color[c], slack) << x << ", " << y << " channel " << c;
  }
}

TEST(CompositePlan, EveryBlendModeInEveryColorModeAgreesWithTheScalarTwinOnEveryInstructionSet) {
  forEveryInstructionSet([] {
    std::mt19937 random(11);
    for (const ColorMode colorMode : allColorModes) {
      for (const BlendMode blendMode : allBlendModes) {
        for (const auto& [masked, size] : everyMaskAndSize()) {
          SCOPED_TRACE(testing::Message() << displayName(colorMode) << " " << displayName(blendMode)
                                          << (masked ? " masked " : " ") << size.width << "x" << size.height);
          const PixelFormat format = layerPixelFormat(colorMode);
          const Surface bottom = randomSurface(format, size.width, size.height, random);
          const Surface top = randomSurface(format, size.width, size.height, random);
          const Surface mask = randomSurface(maskPixelFormat, size.width, size.height, random);
          Surface canvas(compositePixelFormat(colorMode), size.width, size.height);
          CompositePlan plan(canvas);
          plan.compositeLayer(0, paramsOf(BlendMode::normal, 1.0F, colorMode, false), bottom, nullptr);
          plan.compositeLayer(0, paramsOf(blendMode, 0.7F, colorMode, masked), top, masked ? &mask : nullptr);
          plan.run(CompositeScope::changedTiles);
          for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) {
              const double coverage = masked ? 0.7 * twin::half(mask.pixelAt(x, y)) : 0.7;
              const twin::Pixel backdrop =
                  twin::over(twin::decode(bottom.pixelAt(x, y), format), {}, BlendMode::normal, 1.0);
              expectPixel(canvas, x, y,
                          twin::over(twin::decode(top.pixelAt(x, y), format), backdrop, blendMode, coverage));
              if (testing::Test::HasFatalFailure()) return;
            }
          }
        }
      }
    }
  });
}

TEST(CompositePlan, ALayerOverADestinationThatHoldsPixelsAgreesWithTheScalarTwin) {
  MetalContext context(ShaderLibrary::standard());
  forEveryInstructionSet([&] {
    std::mt19937 random(12);
    for (const ColorMode colorMode : allColorModes) {
      SCOPED_TRACE(displayName(colorMode));
      const PixelFormat format = layerPixelFormat(colorMode);
      Surface layer = randomSurface(format, 129, 65, random);
      Surface mask = randomSurface(maskPixelFormat, 129, 65, random);
      Surface canvas = randomSurface(compositePixelFormat(colorMode), 129, 65, random);
      const Surface before = canvas;
      const CompositeParams params = paramsOf(BlendMode::multiply, 0.5F, colorMode, true);
      Dispatch dispatch;
      dispatch.textures = {&layer, &canvas, &mask};
      dispatch.bytes[0] = std::as_bytes(std::span(&params, 1));
      context.compositingPipeline.function(dispatch);
      for (int y = 0; y < 65; ++y) {
        for (int x = 0; x < 129; ++x) {
          const twin::Pixel backdrop = twin::decode(before.pixelAt(x, y), before.format());
          const double coverage = 0.5 * twin::half(mask.pixelAt(x, y));
          expectPixel(
              canvas, x, y,
              twin::over(twin::decode(layer.pixelAt(x, y), format), backdrop, BlendMode::multiply, coverage));
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    }
  });
}

class FlattenedStack : public testing::Test {
 protected:
  static constexpr int width = 400;
  static constexpr int height = 300;

  FlattenedStack() {
    for (int i = 0; i < 5; ++i)
      layers.push_back(randomSurface(PixelFormat::rgba16Float, width, height, random));
    mask = randomSurface(maskPixelFormat, width, height, random);
  }

  CompositeReport flatten(Surface& target, CompositeScope scope) {
    CompositePlan plan(target);
    const CompositePlan::Target folder = plan.addTarget(temporary);
    plan.compositeLayer(0, paramsOf(BlendMode::normal, 1.0F, ColorMode::rgb16, false), layers[0], nullptr);
    plan.compositeLayer(folder, paramsOf(BlendMode::normal, 0.9F, ColorMode::rgb16, true), layers[1], &mask);
    plan.compositeLayer(folder, paramsOf(BlendMode::screen, opacity, ColorMode::rgb16, false), layers[2],
                        nullptr);
    plan.compositeTarget(0, paramsOf(BlendMode::multiply, 0.8F, ColorMode::rgb16, false), folder);
    plan.compositeLayer(0, paramsOf(BlendMode::overlay, 0.4F, ColorMode::rgb16, false), layers[3], nullptr);
    return plan.run(scope);
  }

  void expectEqualsFlatteningEverything() {
    Surface everything(PixelFormat::rgba16Float, width, height);
    const Surface keptTemporary = temporary;
    flatten(everything, CompositeScope::allTiles);
    EXPECT_TRUE(canvas.equals(everything));
    temporary = keptTemporary;
  }

  std::mt19937 random{21};
  std::vector<Surface> layers;
  Surface mask{maskPixelFormat, width, height};
  Surface temporary{PixelFormat::rgba16Float, width, height};
  Surface canvas{PixelFormat::rgba16Float, width, height};
  float opacity = 0.5F;
};

TEST_F(FlattenedStack, FlatteningAgainWithoutAChangeRecomputesNoTile) {
  EXPECT_GT(flatten(canvas, CompositeScope::changedTiles).tilesMade, 0);
  EXPECT_EQ(flatten(canvas, CompositeScope::changedTiles).tilesMade, 0);
}

TEST_F(FlattenedStack, ChangingOneTileRecomputesOnlyThatTileAndItsFoldersTile) {
  flatten(canvas, CompositeScope::changedTiles);
  fillRandomTile(layers[0], 5, random);
  EXPECT_EQ(flatten(canvas, CompositeScope::changedTiles).tilesMade, 1);
  fillRandomTile(layers[1], 5, random);
  EXPECT_EQ(flatten(canvas, CompositeScope::changedTiles).tilesMade, 2);
  expectEqualsFlatteningEverything();
}

TEST_F(FlattenedStack, PuttingTheOldTileBackGivesTheOldComposite) {
  flatten(canvas, CompositeScope::changedTiles);
  const Surface before = canvas;
  const Tile old = layers[3].tile(2);
  fillRandomTile(layers[3], 2, random);
  flatten(canvas, CompositeScope::changedTiles);
  EXPECT_FALSE(canvas.equals(before));
  layers[3].setTile(2, old);
  flatten(canvas, CompositeScope::changedTiles);
  EXPECT_TRUE(canvas.equals(before));
}

TEST_F(FlattenedStack, RandomEditsLeaveTheCompositeEqualToFlatteningEverything) {
  for (int step = 0; step < 60; ++step) {
    switch (random() % 4) {
      case 0:
        fillRandomTile(layers[random() % layers.size()], static_cast<int>(random() % 12), random);
        break;
      case 1:
        fillRandomTile(mask, static_cast<int>(random() % 12), random);
        break;
      case 2:
        opacity = static_cast<float>(random() % 101) / 100.0F;
        break;
      default:
        layers[random() % layers.size()].setUniform(static_cast<int>(random() % 12),
                                                    randomPixel(PixelFormat::rgba16Float, random));
        break;
    }
    flatten(canvas, CompositeScope::changedTiles);
    expectEqualsFlatteningEverything();
    ASSERT_FALSE(HasFailure()) << "step " << step;
  }
}

TEST_F(FlattenedStack, TheNextRunRepairsAnOverwrittenTileOfTheComposite) {
  flatten(canvas, CompositeScope::changedTiles);
  const Surface before = canvas;
  canvas.setUniform(3, 0);
  EXPECT_EQ(flatten(canvas, CompositeScope::changedTiles).tilesMade, 1);
  EXPECT_TRUE(canvas.equals(before));
}

TEST(CompositePlan, AnEmptyPlanClearsTheCanvasAndTakesNoMemory) {
  std::mt19937 random(31);
  Surface canvas = randomSurface(PixelFormat::rgba8Unorm, 300, 300, random);
  CompositePlan(canvas).run(CompositeScope::changedTiles);
  for (int index = 0; index < canvas.tileCount(); ++index) {
    ASSERT_TRUE(canvas.tile(index).isUniform());
    ASSERT_EQ(canvas.tile(index).pixel(), 0U);
  }
}

TEST(CompositePlan, UniformInputsGiveUniformTilesWithTheSamePixelsAsDataTiles) {
  std::mt19937 random(32);
  for (const ColorMode mode : allColorModes) {
    Surface uniform(layerPixelFormat(mode), 256, 128);
    Surface spread(layerPixelFormat(mode), 256, 128);
    for (int index = 0; index < 2; ++index) {
      const std::uint64_t pixel = randomPixel(uniform.format(), random);
      uniform.setUniform(index, pixel);
      spread.setUniform(index, pixel);
      (void)spread.editTile(index);
    }
    Surface fromUniform(compositePixelFormat(mode), 256, 128);
    Surface fromSpread(compositePixelFormat(mode), 256, 128);
    for (auto [source, canvas] : {std::pair{&uniform, &fromUniform}, std::pair{&spread, &fromSpread}}) {
      CompositePlan plan(*canvas);
      plan.compositeLayer(0, paramsOf(BlendMode::normal, 0.6F, mode, false), *source, nullptr);
      plan.run(CompositeScope::allTiles);
    }
    EXPECT_TRUE(fromUniform.tile(0).isUniform());
    EXPECT_TRUE(fromUniform.equals(fromSpread)) << displayName(mode);
  }
}

TEST(CompositePlan, AnOpaqueTileIsSharedWithTheCompositeInsteadOfCopied) {
  std::mt19937 random(33);
  Surface hidden = randomSurface(PixelFormat::rgba8Unorm, 128, 128, random);
  Surface photo(PixelFormat::rgba8Unorm, 128, 128);
  std::byte* bytes = photo.overwriteTile(0);
  for (int i = 0; i < tilePixels; ++i) {
    const auto pixel = static_cast<std::uint32_t>(random() | 0xFF000000U);
    std::memcpy(bytes + static_cast<std::size_t>(i) * 4, &pixel, 4);
  }
  photo.setTrait(0, TileTrait::opaque);
  Surface canvas(PixelFormat::rgba8Unorm, 128, 128);
  CompositePlan plan(canvas);
  plan.compositeLayer(0, paramsOf(BlendMode::normal, 1.0F, ColorMode::rgb8, false), hidden, nullptr);
  plan.compositeLayer(0, paramsOf(BlendMode::normal, 1.0F, ColorMode::rgb8, false), photo, nullptr);
  plan.run(CompositeScope::changedTiles);
  EXPECT_EQ(canvas.tile(0).buffer(), photo.tile(0).buffer());
  EXPECT_TRUE(canvas.equals(photo));
}

TEST(CompositePlan, NaNAndInfinityFromAFileNeverReachTheComposite) {
  Surface layer(PixelFormat::rgba16Float, 128, 128);
  std::byte* bytes = layer.overwriteTile(0);
  const std::array<std::uint16_t, 4> wild{0x7E00, 0x7C00, 0xFC00, 0x4500};  // NaN, inf, -inf, alpha 5
  for (int i = 0; i < tilePixels; ++i) std::memcpy(bytes + static_cast<std::size_t>(i) * 8, wild.data(), 8);
  Surface uniform(PixelFormat::rgba16Float, 128, 128);
  uniform.setUniform(0, packPixel(wild.data(), 8));
  markIrregularTiles(layer);
  for (const Surface* source : {&layer, &uniform}) {
    Surface canvas(PixelFormat::rgba16Float, 128, 128);
    CompositePlan plan(canvas);
    plan.compositeLayer(0, paramsOf(BlendMode::normal, 1.0F, ColorMode::rgb16, false), *source, nullptr);
    plan.run(CompositeScope::changedTiles);
    const twin::Pixel got = twin::decode(canvas.pixelAt(64, 64), canvas.format());
    EXPECT_EQ(got.color[0], 0.0);
    EXPECT_EQ(got.color[1], 65504.0);
    EXPECT_EQ(got.color[2], -65504.0);
    EXPECT_EQ(got.alpha, 1.0);
  }
}

TEST(CompositePlan, ManyHugeValuesStayFiniteAndAnOpaqueLayerHidesThem) {
  const std::uint64_t huge = 0x3C007BFF7BFF7BFFULL;  // 65504 in every colour, opaque
  Surface bright(PixelFormat::rgba16Float, 128, 128);
  bright.setUniform(0, huge);
  (void)bright.editTile(0);
  Surface plain(PixelFormat::rgba16Float, 128, 128);
  plain.setUniform(0, 0x3C00380038003800ULL);
  (void)plain.editTile(0);
  for (const BlendMode mode : allBlendModes) {
    Surface canvas(PixelFormat::rgba16Float, 128, 128);
    CompositePlan plan(canvas);
    for (int i = 0; i < 40; ++i) {
      plan.compositeLayer(0, paramsOf(mode, 1.0F, ColorMode::rgb16, false), bright, nullptr);
    }
    plan.compositeLayer(0, paramsOf(BlendMode::normal, 1.0F, ColorMode::rgb16, false), plain, nullptr);
    plan.run(CompositeScope::changedTiles);
    EXPECT_EQ(canvas.pixelAt(7, 7), 0x3C00380038003800ULL) << displayName(mode);
  }
}

TEST(CompositePlan, SourcesOfAnotherSizeAreLeftOut) {
  Surface canvas(PixelFormat::rgba8Unorm, 200, 200);
  Surface stray(PixelFormat::rgba8Unorm, 100, 100);
  stray.fill(0xFFFFFFFFU);
  CompositePlan plan(canvas);
  plan.compositeLayer(0, paramsOf(BlendMode::normal, 1.0F, ColorMode::rgb8, false), stray, nullptr);
  plan.run(CompositeScope::changedTiles);
  EXPECT_EQ(canvas.pixelAt(10, 10), 0U);
}

TEST(CompositePlanDeathTest, ARecordNamesTheColorModeOfItsPixels) {
  Surface canvas(PixelFormat::rgba16Float, 200, 200);
  Surface temporary(PixelFormat::rgba16Float, 200, 200);
  const Surface layer(PixelFormat::rg16Unorm, 200, 200);
  CompositePlan plan(canvas);
  const CompositePlan::Target folder = plan.addTarget(temporary);
  const auto named = [](ColorMode mode) { return paramsOf(BlendMode::normal, 1.0F, mode, false); };
  // In a grey document the layers are grey and what a folder makes of them is colour.
  plan.compositeLayer(folder, named(ColorMode::grayscale16), layer, nullptr);
  plan.compositeTarget(0, named(ColorMode::rgb16), folder);
  EXPECT_DEBUG_DEATH(plan.compositeLayer(0, named(ColorMode::rgb16), layer, nullptr), "namesFormat");
  EXPECT_DEBUG_DEATH(plan.compositeTarget(0, named(ColorMode::rgb8), folder), "namesFormat");
  EXPECT_DEBUG_DEATH(plan.compositeTarget(0, named(ColorMode::grayscale16), folder), "namesFormat");
}

}  // namespace
}  // namespace orvanel
