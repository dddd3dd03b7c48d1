// When each pass draws, and the uniforms it binds.
#include "canvas/CanvasLayers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "CanvasSupport.h"

namespace orvanel {
namespace {

using test::makeDocument;

constexpr CanvasViewContext viewContext{1920, 1080, 640, 480, 12.5, -3, 2, 1.25};

/// The one draw that a pass records.
RenderEncoder::Draw recordedDraw(const CanvasViewLayer& pass, const Document* document) {
  RenderEncoder encoder({nullptr, 0, 0, 0});
  pass.render(encoder, viewContext, document);
  EXPECT_EQ(encoder.draws().size(), 1U);
  return encoder.draws().front();
}

std::vector<float> uniformsOf(const RenderEncoder::Draw& draw) {
  std::vector<float> floats(draw.uniforms.size() / sizeof(float));
  std::memcpy(floats.data(), draw.uniforms.data(), draw.uniforms.size());
  return floats;
}

MetalContext& context() {
  return MetalContext::shared();
}

TEST(BackgroundPass, AlwaysDrawsGrey) {
  const BackgroundLayer pass(context());
  EXPECT_EQ(pass.name(), "Background");
  EXPECT_TRUE(pass.shouldRender(viewContext, nullptr));
  EXPECT_EQ(uniformsOf(recordedDraw(pass, nullptr)),
            (std::vector<float>{1920, 1080, 640, 480, 12.5F, -3, 2, 1.25F, 0.5803922F, 0.5803922F, 0.6117647F,
                                0.0F}));
}

TEST(CheckerboardPass, DrawsWithADocument) {
  const CheckerboardLayer pass(context());
  const auto document = makeDocument(4, 4);
  EXPECT_EQ(pass.name(), "Checkerboard");
  EXPECT_FALSE(pass.shouldRender(viewContext, nullptr));
  EXPECT_TRUE(pass.shouldRender(viewContext, document.get()));
  const auto draw = recordedDraw(pass, document.get());
  EXPECT_EQ(uniformsOf(draw), (std::vector<float>{1920, 1080, 640, 480, 12.5F, -3, 2, 1.25F}));
  EXPECT_EQ(draw.texture, nullptr);
}

TEST(DocumentPass, DrawsWithACompositeThroughItsChannelSwitches) {
  const DocumentLayer pass(context());
  const auto document = makeDocument(4, 4);
  EXPECT_EQ(pass.name(), "Document");
  EXPECT_FALSE(pass.shouldRender(viewContext, nullptr));
  EXPECT_TRUE(pass.shouldRender(viewContext, document.get()));
  document->setChannelVisibility(ChannelVisibility{1, 0, 1});
  const auto draw = recordedDraw(pass, document.get());
  EXPECT_EQ(uniformsOf(draw),
            (std::vector<float>{1920, 1080, 640, 480, 12.5F, -3, 2, 1.25F, 1.0F, 0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(draw.texture, document->compositedTexture.value().get());
  test::put(document->compositedTexture, nullptr);
  EXPECT_FALSE(pass.shouldRender(viewContext, document.get()));
}

TEST(DocumentPass, DrawsGreyWithOneSwitchForAllLanes) {
  const DocumentLayer pass(context());
  const auto document = makeDocument(4, 4);
  const auto lanes = [&] {
    const std::vector<float> uniforms = uniformsOf(recordedDraw(pass, document.get()));
    return std::vector(uniforms.begin() + 8, uniforms.begin() + 11);
  };
  document->setChannelVisibility(ChannelVisibility{1, 0, 1});
  document->changeColorMode(ColorMode::grayscale8);
  EXPECT_EQ(lanes(), (std::vector{1.0F, 1.0F, 1.0F}));
  document->undo();
  EXPECT_EQ(lanes(), (std::vector{1.0F, 0.0F, 1.0F})) << "the switches of the colours are kept";
  document->setChannelVisibility(ChannelVisibility{0, 1, 1});
  document->changeColorMode(ColorMode::grayscale16);
  EXPECT_EQ(lanes(), (std::vector{0.0F, 0.0F, 0.0F}));
}

TEST(PixelGridPass, AppearsExactlyAtFortyDevicePixels) {
  const PixelGridLayer pass(context());
  const auto document = makeDocument(4, 4);
  const auto drawsAt = [&](double zoom, double scale) {
    CanvasViewContext view = viewContext;
    view.zoom = zoom;
    view.scaleFactor = scale;
    return pass.shouldRender(view, document.get());
  };
  EXPECT_EQ(pass.name(), "Pixel Grid");
  EXPECT_TRUE(drawsAt(40.0, 1.0));
  EXPECT_FALSE(drawsAt(39.999, 1.0));
  EXPECT_TRUE(drawsAt(20.0, 2.0));
  EXPECT_FALSE(drawsAt(19.999, 2.0));
  EXPECT_TRUE(drawsAt(32.0, 1.25));
  EXPECT_EQ(uniformsOf(recordedDraw(pass, document.get())),
            (std::vector<float>{1920, 1080, 640, 480, 12.5F, -3, 2, 1.25F}));
}

TEST(SelectionOverlayPass, DrawsWhileSomethingIsSelected) {
  SelectionOverlayLayer pass(context());
  const auto document = makeDocument(40, 30);
  EXPECT_EQ(pass.name(), "Selection Overlay");
  EXPECT_FALSE(pass.shouldRender(viewContext, nullptr));
  EXPECT_FALSE(pass.shouldRender(viewContext, document.get()));
  document->selectAll();
  EXPECT_TRUE(pass.shouldRender(viewContext, document.get()));
  pass.selectionAnimationOffset = 5.5F;
  const auto draw = recordedDraw(pass, document.get());
  EXPECT_EQ(uniformsOf(draw), (std::vector<float>{1920, 1080, 640, 480, 12.5F, -3, 2, 1.25F, 5.5F, 0, 0, 0}));
  EXPECT_EQ(draw.texture, document->selection.value()->maskTexture->texture.get());
}

TEST(SelectionOverlayPass, AnEmptySelectionDrawsNoOutline) {
  const SelectionOverlayLayer pass(context());
  const auto document = makeDocument(40, 30);
  document->ensureSelection();
  ASSERT_NE(document->selection.value(), nullptr);
  EXPECT_FALSE(document->selection.value()->hasSelection.value());
  EXPECT_FALSE(pass.shouldRender(viewContext, document.get()));
}

TEST(Passes, WithoutADocumentOnlyTheBackgroundDraws) {
  CanvasViewContext view = viewContext;
  view.zoom = 400.0;
  EXPECT_TRUE(BackgroundLayer(context()).shouldRender(view, nullptr));
  EXPECT_FALSE(CheckerboardLayer(context()).shouldRender(view, nullptr));
  EXPECT_FALSE(DocumentLayer(context()).shouldRender(view, nullptr));
  EXPECT_FALSE(PixelGridLayer(context()).shouldRender(view, nullptr));
  EXPECT_FALSE(SelectionOverlayLayer(context()).shouldRender(view, nullptr));
}

TEST(PassesDeathTest, AMissingFunctionIsFatalWithItsName) {
  ShaderLibrary withoutFragment = ShaderLibrary::standard();
  withoutFragment.remove("checkerboardFragmentShader");
  MetalContext noFragment(withoutFragment);
  EXPECT_DEATH(CheckerboardLayer{noFragment}, "Failed to find fragment function: checkerboardFragmentShader");
  ShaderLibrary withoutVertex = ShaderLibrary::standard();
  withoutVertex.remove("layerVertexShader");
  MetalContext noVertex(withoutVertex);
  EXPECT_DEATH(BackgroundLayer{noVertex}, "Failed to find vertex function: layerVertexShader");
}

}  // namespace
}  // namespace orvanel
