// When the tools' overlays draw, and the records they bind.
#include <gtest/gtest.h>

#include <cstring>

#include "model/ModelSupport.h"
#include "raster/fragments/FragmentUniforms.h"
#include "tools/overlays/DragPathOverlayLayer.h"
#include "tools/overlays/FreeTransformOverlayLayer.h"
#include "tools/overlays/MoveToolOverlayLayer.h"

namespace orvanel {
namespace {

constexpr CanvasViewContext viewContext{1920, 1080, 640, 480, 12.5, -3, 2, 1.25};

RenderEncoder::Draw recordedDraw(const CanvasViewLayer& pass, const Document& document,
                                 const CanvasViewContext& view = viewContext) {
  RenderEncoder encoder({nullptr, 0, 0, 0});
  pass.render(encoder, view, &document);
  EXPECT_EQ(encoder.draws().size(), 1U);
  return encoder.draws().front();
}

template <typename Uniforms>
Uniforms uniformsOf(const RenderEncoder::Draw& draw) {
  EXPECT_EQ(draw.uniforms.size(), sizeof(Uniforms));
  return fragmentUniforms<Uniforms>({draw.uniforms, {}, draw.points});
}

class DragPathOverlay : public testing::Test {
 protected:
  [[nodiscard]] bool isShown() const { return pass.shouldRender(viewContext, document.get()); }
  [[nodiscard]] DragPathUniforms drawn() const {
    return uniformsOf<DragPathUniforms>(recordedDraw(pass, *document));
  }

  DocumentPtr document = test::makeDocument();
  DragPathOverlayLayer pass{MetalContext::shared()};
};

TEST_F(DragPathOverlay, IsShownWithAPathOrWithMoreThanOnePoint) {
  EXPECT_EQ(pass.name(), "Drag Path");
  EXPECT_FALSE(isShown());
  pass.lassoScreenPoints = std::vector<QPointF>{};
  EXPECT_FALSE(isShown());
  pass.lassoScreenPoints->emplace_back(1.0, 2.0);
  EXPECT_FALSE(isShown());
  pass.lassoScreenPoints->emplace_back(3.0, 4.0);
  EXPECT_TRUE(isShown());
  EXPECT_FALSE(pass.shouldRender(viewContext, nullptr));
  pass.lassoScreenPoints.reset();
  pass.dragPath = SelectionPath::rect(1, 2, 3, 4);
  EXPECT_TRUE(isShown());
}

TEST_F(DragPathOverlay, BindsTheShapeOfItsPath) {
  pass.dragPath = SelectionPath::rect(1, 2, 3, 4);
  EXPECT_EQ(drawn().shapeMode, 1U);
  EXPECT_EQ(drawn().shape, (std::array{1.0F, 2.0F, 3.0F, 4.0F}));
  EXPECT_EQ(drawn().pointCount, 0U);
  pass.dragPath = SelectionPath::ellipse(50, 60, 20, 10);
  EXPECT_EQ(drawn().shapeMode, 2U);
  EXPECT_EQ(drawn().shape, (std::array{50.0F, 60.0F, 20.0F, 10.0F}));
  pass.dragPath = SelectionPath{};
  EXPECT_EQ(drawn().shapeMode, 0U);
  EXPECT_EQ(drawn().shape, (std::array<float, 4>{}));
}

TEST_F(DragPathOverlay, PointsTakePrecedenceAndAreBoundAsABuffer) {
  pass.dragPath = SelectionPath::rect(1, 2, 3, 4);
  pass.lassoScreenPoints = std::vector<QPointF>{{1.5, 2.5}, {3.0, 4.0}, {5.0, 6.0}};
  EXPECT_EQ(drawn().shapeMode, 3U);
  EXPECT_EQ(drawn().pointCount, 3U);
  EXPECT_EQ(drawn().shape, (std::array<float, 4>{}));
  const RenderEncoder::Draw draw = recordedDraw(pass, *document);
  ASSERT_EQ(draw.points.size(), 24U);
  std::array<float, 6> points{};
  std::memcpy(points.data(), draw.points.data(), sizeof(points));
  EXPECT_EQ(points, (std::array{1.5F, 2.5F, 3.0F, 4.0F, 5.0F, 6.0F}));
}

TEST_F(DragPathOverlay, PointsOfTheDocumentFollowTheViewAndPointsOfTheViewStay) {
  pass.lassoPoints = {{10.0, 20.0}};
  EXPECT_FALSE(isShown());
  pass.lassoScreenPoints = {{7.0, 8.0}};
  EXPECT_TRUE(isShown());
  const auto pointsIn = [this](const CanvasViewContext& view) {
    const RenderEncoder::Draw draw = recordedDraw(pass, *document, view);
    std::array<float, 4> points{};
    EXPECT_EQ(draw.points.size(), sizeof(points));
    std::memcpy(points.data(), draw.points.data(), sizeof(points));
    return points;
  };
  // The canvas is smaller than the view and stays in its middle.
  EXPECT_EQ(pointsIn({400, 300, 100, 100, 0, 0, 1, 1}), (std::array{160.0F, 120.0F, 7.0F, 8.0F}));
  EXPECT_EQ(pointsIn({300, 300, 100, 100, 0, 0, 1, 1}), (std::array{110.0F, 120.0F, 7.0F, 8.0F}));
  EXPECT_EQ(pointsIn({400, 400, 100, 100, 0, 0, 1, 2}), (std::array{60.0F, 70.0F, 7.0F, 8.0F}));
  EXPECT_EQ(pointsIn({200, 200, 100, 100, 5, 6, 4, 1}), (std::array{20.0F, 56.0F, 7.0F, 8.0F}));
}

TEST(MoveToolOverlay, IsShownWithABoxAndBindsItsRotation) {
  const DocumentPtr document = test::makeDocument();
  MoveToolOverlayLayer pass(MetalContext::shared());
  EXPECT_EQ(pass.name(), "Move Tool Overlay");
  EXPECT_FALSE(pass.shouldRender(viewContext, document.get()));
  pass.moveToolRect = {1, 2, 3, 4};
  pass.moveToolRotation = 0.5F;
  EXPECT_TRUE(pass.shouldRender(viewContext, document.get()));
  const auto uniforms = uniformsOf<MoveToolUniforms>(recordedDraw(pass, *document));
  EXPECT_EQ(uniforms.rotation, 0.5F);
  EXPECT_EQ(uniforms.origin, (std::array{1.0F, 2.0F}));
  EXPECT_EQ(uniforms.size, (std::array{3.0F, 4.0F}));
}

TEST(FreeTransformOverlay, IsShownWithFourCornersAndEightHandles) {
  const DocumentPtr document = test::makeDocument();
  FreeTransformOverlayLayer pass(MetalContext::shared());
  EXPECT_EQ(pass.name(), "Free Transform Overlay");
  EXPECT_FALSE(pass.shouldRender(viewContext, document.get()));
  pass.corners = std::vector<QPointF>(4, QPointF(1, 2));
  pass.handles = std::vector<QPointF>(7, QPointF(3, 4));
  EXPECT_FALSE(pass.shouldRender(viewContext, document.get()));
  pass.handles->emplace_back(5, 6);
  EXPECT_TRUE(pass.shouldRender(viewContext, document.get()));
  const auto uniforms = uniformsOf<FreeTransformUniforms>(recordedDraw(pass, *document));
  EXPECT_EQ(uniforms.corners[3].x, 1.0F);
  EXPECT_EQ(uniforms.handles[7].y, 6.0F);
  pass.corners->pop_back();
  EXPECT_FALSE(pass.shouldRender(viewContext, document.get()));
}

}  // namespace
}  // namespace orvanel
