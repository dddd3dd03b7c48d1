// A kernel that is given surfaces that don't fit together is a mistake of its caller: fatal here and in debug
// builds, and without effect in the program that users run.
#include <gtest/gtest.h>

#include <functional>

#include "raster/KernelReference.h"

namespace orvanel {
namespace {

using reference::context;

class FittingSurfacesDeathTest : public testing::Test {
 protected:
  FittingSurfacesDeathTest() { mask.fill(0x3800); }

  void expectMistake(const std::function<void()>& work, const char* message) {
    EXPECT_DEATH(work(), message);
    const Surface layerBefore = layer;
    const Surface maskBefore = mask;
    setMistakesFatal(false);
    work();
    setMistakesFatal(true);
    EXPECT_TRUE(layer.equals(layerBefore));
    EXPECT_TRUE(mask.equals(maskBefore));
  }

  Surface layer{PixelFormat::rgba8Unorm, 60, 40};
  Surface mask{PixelFormat::r16Float, 60, 40};
  const Surface narrowLayer{PixelFormat::rgba8Unorm, 59, 40};
  const Surface narrowMask{PixelFormat::r16Float, 59, 40};
  const Surface deepLayer{PixelFormat::rgba16Float, 60, 40};
};

TEST_F(FittingSurfacesDeathTest, SizesMustAgree) {
  const Color4 color{1.0F, 1.0F, 1.0F, 1.0F};
  const ColorMode mode = ColorMode::rgb8;
  const std::vector<std::function<void()>> mistakes{
      [&] { context().invertColors(layer, mode, &narrowMask); },
      [&] { context().levelsAdjust(layer, mode, &narrowMask, 0.1F, 0.9F, 1.0F); },
      [&] { context().fillWithSelection(layer, narrowMask, mode, color); },
      [&] { context().applyLayerMask(layer, narrowMask, mode); },
      [&] { context().extractMaskedPixels(narrowLayer, layer, mask, 0, 0, mode); },
      [&] { context().convertTexture(narrowLayer, layer, mode, mode); },
      [&] { context().addMasks(mask, narrowMask); },
      [&] { context().subtractMasks(mask, narrowMask); },
      [&] { context().intersectMasks(mask, narrowMask); },
      [&] { context().fillMaskWithSelection(mask, narrowMask, 1.0F); },
      [&] { context().extractAlpha(narrowLayer, mask, mode); },
      [&] { context().extractChannel(narrowLayer, mask, 0); },
      [&] { context().magicWandNonContiguous(narrowLayer, mask, color, 0.1F); },
      [&] { context().magicWandContiguous(narrowLayer, mask, 1, 1, color, 0.1F); }};
  for (const auto& mistake : mistakes) expectMistake(mistake, "different sizes");
}

TEST_F(FittingSurfacesDeathTest, FormatsMustAgree) {
  const ColorMode mode = ColorMode::rgb8;
  const std::array<float, 4> rect{0.0F, 0.0F, 9.0F, 9.0F};
  const std::vector<std::function<void()>> mistakes{
      [&] { context().translateLayerPixels(deepLayer, layer, 1, 2, mode); },
      [&] { context().scaleLayerRegion(deepLayer, layer, rect, rect, mode); },
      [&] { context().rotateLayerPixels(deepLayer, layer, 5.0F, 5.0F, 0.3F, mode); },
      [&] { context().resampleTexture(deepLayer, layer, ResampleMethod::bilinear); },
      [&] { context().extractMaskedPixels(deepLayer, layer, mask, 0, 0, mode); }};
  for (const auto& mistake : mistakes) expectMistake(mistake, "different formats");
}

}  // namespace
}  // namespace orvanel
