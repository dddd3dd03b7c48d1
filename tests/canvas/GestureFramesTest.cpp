// The frames of a gesture: each shows, bit for bit, what doing its step on whole surfaces and flattening
// everything would show, although only the pixels that the view samples are made.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "CanvasSupport.h"
#include "canvas/CanvasRenderer.h"
#include "model/LevelsAdjustment.h"
#include "model/PixelSupport.h"
#include "model/RandomDocument.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {
namespace {

/// One step; what it returns keeps a gesture open.
using Step = std::function<std::shared_ptr<void>(const DocumentPtr&)>;

struct NamedStep {
  std::string name;
  Step perform;
};

Step command(const std::function<void(Document&, const QUuid&)>& change) {
  return [change](const DocumentPtr& document) -> std::shared_ptr<void> {
    change(*document, *document->selectedNodeID.value());
    return nullptr;
  };
}

Step transform(const std::function<void(LayerTransform&)>& change) {
  return [change](const DocumentPtr& document) -> std::shared_ptr<void> {
    std::shared_ptr<LayerTransform> open = LayerTransform::begin(document, QStringLiteral("Transform"));
    change(*open);
    return open;
  };
}

Step onMask(const Step& step) {
  return [step](const DocumentPtr& document) {
    document->setMaskSelected(*document->selectedNodeID.value(), true);
    return step(document);
  };
}

Step onFolder(const std::function<void(Document&, const QUuid&)>& change) {
  return [change](const DocumentPtr& document) -> std::shared_ptr<void> {
    change(*document, test::idOf(*document, "Group"));
    return nullptr;
  };
}

std::shared_ptr<void> levels(const DocumentPtr& document) {
  const auto open = std::make_shared<LevelsAdjustment>(LevelsAdjustment::begin(document).value());
  open->apply({.blackPoint = 30.0F, .whitePoint = 210.0F, .gamma = 1.6F});
  return open;
}

std::shared_ptr<void> levelsUnderASelection(const DocumentPtr& document) {
  document->selectAll();
  test::writableSelection(*document).setEllipse(150.0F, 70.0F, 90.0F, 60.0F, 12.0F, document->context());
  return levels(document);
}

const std::vector<NamedStep> steps{
    {"opacity", command([](Document& d, const QUuid& id) { d.setOpacity(id, 0.35F); })},
    {"blend mode", command([](Document& d, const QUuid& id) { d.setBlendMode(id, BlendMode::difference); })},
    {"visibility", command([](Document& d, const QUuid& id) { d.setVisible(id, false); })},
    {"disabled mask", command([](Document& d, const QUuid& id) { d.setMaskEnabled(id, false); })},
    {"opacity of a folder", onFolder([](Document& d, const QUuid& id) { d.setOpacity(id, 0.35F); })},
    {"blend mode of a folder",
     onFolder([](Document& d, const QUuid& id) { d.setBlendMode(id, BlendMode::overlay); })},
    {"visibility of a folder", onFolder([](Document& d, const QUuid& id) { d.setVisible(id, false); })},
    {"move", transform([](LayerTransform& t) { t.translate(13, -7); })},
    {"scale", transform([](LayerTransform& t) {
       t.scaleTo({20.0, 11.5, 190.0, 160.25});
     })},
    {"rotation", transform([](LayerTransform& t) { t.rotate(0.3F); })},
    {"free transform",
     transform([](LayerTransform& t) { t.transform(QTransform(0.6, 0.2, -0.3, 0.9, 40.0, 10.0)); })},
    {"strong reduction",
     transform([](LayerTransform& t) { t.transform(QTransform(0.1, 0.02, -0.03, 0.2, 100.0, 50.0)); })},
    {"move of a mask", onMask(transform([](LayerTransform& t) { t.translate(-40, 20); }))},
    {"rotation of a mask", onMask(transform([](LayerTransform& t) { t.rotate(-0.2F); }))},
    {"levels", levels},
    {"levels under a selection", levelsUnderASelection},
};

struct View {
  double zoom;
  double scale;
  QPointF offset;
};
const std::vector<View> views{{0.13, 1.0, {0.0, 0.0}},      {0.5, 1.25, {10.0, 3.0}},
                              {2.0 / 3.0, 1.0, {0.0, 0.0}}, {1.0, 1.0, {101.0, 37.0}},
                              {1.0, 2.0, {60.5, 20.0}},     {3.0, 1.25, {120.0, 60.25}},
                              {8.0, 1.0, {126.5, 120.0}}};

/// A random document whose active layer, masked and in a folder, changes.
DocumentPtr documentFor(ColorMode mode, unsigned seed) {
  std::mt19937 random(seed);
  DocumentPtr document = test::randomDocument(mode, test::FolderKinds::all, random);
  document->addFolder(QStringLiteral("Group"));
  document->addLayer(QStringLiteral("Below"));
  document->moveNode(*document->selectedNodeID.value(), test::idOf(*document, "Group"));
  document->addLayer(QStringLiteral("Changing"));
  const std::shared_ptr<Layer> layer = document->activeLayer();
  document->moveNode(layer->id, test::idOf(*document, "Group"));
  for (const std::shared_ptr<Layer>& filled : document->allLayers()) {
    const QString name = filled->name.value();
    if (name != QStringLiteral("Below") && name != QStringLiteral("Changing")) continue;
    test::writable(filled->texture.value()) = randomSurface(layerPixelFormat(mode), 290, 141, random);
  }
  test::addRandomMask(*layer, random);
  document->setOpacity(layer->id, 0.8F);
  document->moveNode(test::idOf(*document, "Group"), std::nullopt, 1);
  document->selectNode(layer->id);
  return document;
}

class GestureFrames : public testing::TestWithParam<ColorMode> {};

TEST_P(GestureFrames, ShowWhatFlatteningEverythingShows) {
  for (const NamedStep& step : steps) {
    const DocumentPtr document = documentFor(GetParam(), 9);
    CanvasRenderer sampling(MetalContext::shared(), [] { return 1.0; });
    CanvasRenderer flattening(MetalContext::shared(), [] { return 1.0; });
    sampling.document = document;
    flattening.document = document;
    sampling.tilesFlattenedAtOnce = -1;
    test::PlainView sampled(180, 120);
    test::PlainView flattened(180, 120);
    // The samples of what stays are kept from this frame on.
    sampling.drawInMTKView(sampled);
    const std::shared_ptr<void> open = step.perform(document);
    std::vector<std::vector<std::uint32_t>> frames;
    const auto show = [&](const View& view) {
      test::zoomTo(*document, view.zoom);
      document->setViewportOffset(view.offset);
      sampled.scale = view.scale;
      flattened.scale = view.scale;
    };
    for (const View& view : views) {
      show(view);
      EXPECT_EQ(sampling.drawInMTKView(sampled), FrameResult::unfinished);
      frames.push_back(sampled.pixels);
    }
    EXPECT_FALSE(document->isCompositeCurrent());
    static_cast<void>(document->composite());
    for (std::size_t i = 0; i < views.size(); ++i) {
      show(views[i]);
      flattening.drawInMTKView(flattened);
      EXPECT_EQ(frames[i], flattened.pixels)
          << step.name << ", zoom " << views[i].zoom << ", scale " << views[i].scale;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, GestureFrames, testing::ValuesIn(allColorModes));

TEST_P(GestureFrames, StayRightWhenSurfacesAreWrittenInMidGesture) {
  const DocumentPtr document = documentFor(GetParam(), 11);
  CanvasRenderer renderer(MetalContext::shared(), [] { return 1.0; });
  renderer.document = document;
  renderer.tilesFlattenedAtOnce = -1;
  test::zoomTo(*document, 0.41);
  test::PlainView view(180, 120);
  const auto open = LayerTransform::begin(document, QStringLiteral("Rotate"));
  for (int step = 1; step < 6; ++step) {
    open->rotate(0.1F * static_cast<float>(step));
    EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unfinished);
    const std::vector<std::uint32_t> sampled = view.pixels;
    if (step % 2 == 0) document->settle();
    EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unfinished);
    EXPECT_EQ(view.pixels, sampled) << "step " << step;
    if (step % 3 == 0) static_cast<void>(document->composite());
    renderer.drawInMTKView(view);
    EXPECT_EQ(view.pixels, sampled) << "step " << step;
  }
  open->cancel();
  renderer.drawInMTKView(view);
  const std::vector<std::uint32_t> sampled = view.pixels;
  static_cast<void>(document->composite());
  renderer.drawInMTKView(view);
  EXPECT_EQ(view.pixels, sampled);
}

TEST(GestureFrame, TheLayerIsWrittenOnce) {
  const DocumentPtr document = documentFor(ColorMode::rgb16, 10);
  CanvasRenderer renderer(MetalContext::shared(), [] { return 1.0; });
  renderer.document = document;
  test::PlainView view(180, 120);
  const ConstTexture pixels = document->activeLayer()->texture.value();
  const Surface before = *pixels;
  const auto open = LayerTransform::begin(document, QStringLiteral("Move"));
  for (int step = 1; step < 5; ++step) {
    open->translate(step, 0);
    EXPECT_EQ(renderer.drawInMTKView(view), FrameResult::unfinished);
    EXPECT_TRUE(pixels->equals(before));
  }
  open->commit();
  EXPECT_FALSE(pixels->equals(before));
}

}  // namespace
}  // namespace orvanel
