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
#include "model/NodeWalk.h"
#include "model/OpenOpacityEdit.h"
#include "model/PixelSupport.h"
#include "model/RandomDocument.h"
#include "model/VisibilitySweep.h"
#include "tools/FakeCanvas.h"
#include "tools/transform/LayerTransform.h"
#include "tools/transform/MoveToolHandler.h"

namespace orvanel {
namespace {

/// Where a gesture is performed.
struct Stage {
  DocumentPtr document;
  /// Draws a frame, as happens between the events of a gesture.
  std::function<void()> frame;
};

/// One gesture; what it returns keeps it open.
using Step = std::function<std::shared_ptr<void>(const Stage&)>;

struct NamedStep {
  std::string name;
  Step perform;
};

Step command(const std::function<void(Document&, const QUuid&)>& change) {
  return [change](const Stage& stage) -> std::shared_ptr<void> {
    change(*stage.document, *stage.document->selectedNodeID.value());
    return nullptr;
  };
}

Step transform(const std::function<void(LayerTransform&)>& change) {
  return [change](const Stage& stage) -> std::shared_ptr<void> {
    std::shared_ptr<LayerTransform> open = LayerTransform::begin(stage.document, QStringLiteral("Transform"));
    open->translate(-5, 3);
    stage.frame();
    change(*open);
    return open;
  };
}

Step onMask(const Step& step) {
  return [step](const Stage& stage) {
    stage.document->setMaskSelected(*stage.document->selectedNodeID.value(), true);
    return step(stage);
  };
}

/// The layer's pixels alone, under a mask that stays.
Step unlinked(const Step& step) {
  return [step](const Stage& stage) {
    stage.document->setMaskLinked(*stage.document->selectedNodeID.value(), false);
    return step(stage);
  };
}

Step onFolder(const std::function<void(Document&, const QUuid&)>& change) {
  return [change](const Stage& stage) -> std::shared_ptr<void> {
    change(*stage.document, test::idOf(*stage.document, "Group"));
    return nullptr;
  };
}

enum class SliderEnd { held, released, givenUp };

/// A slider that is pressed, dragged and let go of, or not yet.
Step opacitySlider(const QString& node, SliderEnd end) {
  return [=](const Stage& stage) -> std::shared_ptr<void> {
    const QUuid id = test::idOf(*stage.document, node);
    std::shared_ptr<OpenOpacityEdit> open = OpenOpacityEdit::begin(stage.document, id);
    for (const float opacity : {0.7F, 0.1F, 0.35F}) {
      open->show(opacity);
      stage.frame();
    }
    // Nothing of the slider is to be seen any more; the frames need a reason to be unfinished.
    if (end == SliderEnd::givenUp) {
      open->takeBack();
      stage.document->setOpacity(stage.document->rootNodes.value().front().id(), 0.5F);
    }
    if (end == SliderEnd::released) open->keep();
    return open;
  };
}

/// The pointer is swept over the eyes of the list, with a frame after each.
Step eyeSweep(bool isVisible) {
  return [isVisible](const Stage& stage) -> std::shared_ptr<void> {
    const auto open = std::make_shared<VisibilitySweep>(stage.document, isVisible);
    const auto below = test::nodeNamed(*stage.document, "Below");
    open->add(below.id());
    stage.frame();
    forEachNode(stage.document->rootNodes.value(), [&](const LayerNode& node) {
      if (node.name().value() == "Group") return;
      open->add(node.id());
      stage.frame();
    });
    return open;
  };
}

/// A run of arrow presses, each followed by a frame.
std::shared_ptr<void> nudges(const Stage& stage) {
  struct Hand {
    explicit Hand(const DocumentPtr& document) : canvas(document) {}
    MoveToolHandler tool{MetalContext::shared()};
    test::FakeCanvas canvas;
  };
  const auto hand = std::make_shared<Hand>(stage.document);
  test::ToolInHand keys(hand->tool, hand->canvas);
  for (const std::uint32_t modifiers : {0U, modifier::shift}) {
    hand->canvas.modifiers = modifiers;
    for (const int key : {keyCode::rightArrow, keyCode::rightArrow, keyCode::upArrow}) {
      EXPECT_TRUE(keys.keyDown(key));
      stage.frame();
    }
  }
  return hand;
}

std::shared_ptr<void> levels(const Stage& stage) {
  const auto open = std::make_shared<LevelsAdjustment>(LevelsAdjustment::begin(stage.document).value());
  open->apply({.blackPoint = 80.0F, .whitePoint = 90.0F, .gamma = 0.5F});
  stage.frame();
  open->apply({.blackPoint = 30.0F, .whitePoint = 210.0F, .gamma = 1.6F});
  return open;
}

std::shared_ptr<void> levelsUnderASelection(const Stage& stage) {
  Document& document = *stage.document;
  document.selectAll();
  test::writableSelection(document).setEllipse(150.0F, 70.0F, 90.0F, 60.0F, 12.0F, document.context());
  return levels(stage);
}

const Step move = transform([](LayerTransform& t) { t.translate(13, -7); });
const Step scale = transform([](LayerTransform& t) { t.scaleTo({20.0, 11.5, 190.0, 160.25}); });
const Step rotation = transform([](LayerTransform& t) { t.rotate(0.3F); });
const Step freeTransform =
    transform([](LayerTransform& t) { t.transform(QTransform(0.6, 0.2, -0.3, 0.9, 40.0, 10.0)); });

const std::vector<NamedStep> steps{
    {"opacity", command([](Document& d, const QUuid& id) { d.setOpacity(id, 0.35F); })},
    {"blend mode", command([](Document& d, const QUuid& id) { d.setBlendMode(id, BlendMode::difference); })},
    {"visibility", command([](Document& d, const QUuid& id) { d.setVisible(id, false); })},
    {"disabled mask", command([](Document& d, const QUuid& id) { d.setMaskEnabled(id, false); })},
    {"opacity of a folder", onFolder([](Document& d, const QUuid& id) { d.setOpacity(id, 0.35F); })},
    {"blend mode of a folder",
     onFolder([](Document& d, const QUuid& id) { d.setBlendMode(id, BlendMode::overlay); })},
    {"visibility of a folder", onFolder([](Document& d, const QUuid& id) { d.setVisible(id, false); })},
    {"opacity slider", opacitySlider("Changing", SliderEnd::held)},
    {"opacity slider, released", opacitySlider("Changing", SliderEnd::released)},
    {"opacity slider, given up", opacitySlider("Changing", SliderEnd::givenUp)},
    {"opacity slider of a folder", opacitySlider("Group", SliderEnd::held)},
    {"opacity slider of a folder, released", opacitySlider("Group", SliderEnd::released)},
    {"opacity slider of a folder, given up", opacitySlider("Group", SliderEnd::givenUp)},
    {"eye sweep that hides", eyeSweep(false)},
    {"eye sweep that shows", eyeSweep(true)},
    {"move", move},
    {"scale", scale},
    {"rotation", rotation},
    {"free transform", freeTransform},
    {"strong reduction",
     transform([](LayerTransform& t) { t.transform(QTransform(0.1, 0.02, -0.03, 0.2, 100.0, 50.0)); })},
    {"move of a layer without its mask", unlinked(move)},
    {"scale of a layer without its mask", unlinked(scale)},
    {"rotation of a layer without its mask", unlinked(rotation)},
    {"free transform of a layer without its mask", unlinked(freeTransform)},
    {"move of a mask", onMask(transform([](LayerTransform& t) { t.translate(-40, 20); }))},
    {"scale of a mask", onMask(scale)},
    {"rotation of a mask", onMask(rotation)},
    {"free transform of a mask", onMask(freeTransform)},
    {"nudges", nudges},
    {"nudges of a mask", onMask(nudges)},
    {"levels", levels},
    {"levels under a selection", levelsUnderASelection},
};

struct View {
  double zoom;
  double scale;
  QPointF offset;
};
const std::vector<View> views{
    {0.01, 1.0, {0.0, 0.0}},
    {0.13, 1.0, {0.0, 0.0}},
    {0.5, 1.25, {10.0, 3.0}},
    {2.0 / 3.0, 1.0, {0.0, 0.0}},
    {1.0, 1.0, {101.0, 37.0}},
    {1.0, 2.0, {60.5, 20.0}},
    {1.37, 1.25, {140.0, 60.0}},
    {3.0, 1.25, {120.0, 60.25}},
    {8.0, 1.0, {126.5, 120.0}},
    {16.0, 2.0, {127.0, 60.0}},
    {32.0, 1.25, {127.3, 127.1}},
    {maximumZoom, 1.0, {127.9, 70.0}},
    {maximumZoom, 2.0, {60.2, 5.6}},
    // Partly outside the canvas, at each of its sides.
    {1.5, 1.0, {-60.0, -40.0}},
    {1.5, 1.25, {230.0, 101.5}},
    {9.0, 2.0, {285.0, -3.0}},
};

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
    const auto frame = [&] { sampling.drawInMTKView(sampled); };
    // The samples of what stays are kept from this frame on.
    frame();
    const std::shared_ptr<void> open = step.perform({document, frame});
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

/// Several turns of flattening large, with a masked layer over the background.
DocumentPtr largeDocument(ColorMode mode) {
  constexpr int width = 1500;
  constexpr int height = 1100;
  std::mt19937 random(12);
  DocumentPtr document = test::makeDocument(width, height, mode);
  document->addLayer(QStringLiteral("Changing"));
  const std::shared_ptr<Layer> layer = document->activeLayer();
  test::writable(layer->texture.value()) = randomSurface(layerPixelFormat(mode), width, height, random);
  test::addRandomMask(*layer, random);
  document->setOpacity(layer->id, 0.7F);
  return document;
}

TEST_P(GestureFrames, DontJumpWhileTheWholeImageFollows) {
  const std::vector<View> looks{{0.11, 1.0, {0.0, 0.0}}, {1.0, 1.25, {700.0, 500.0}}, {6.0, 2.0, {3.5, 8.0}}};
  const DocumentPtr document = largeDocument(GetParam());
  const DocumentPtr inOtherTab = documentFor(GetParam(), 13);
  CanvasRenderer renderer(MetalContext::shared(), [] { return 1.0; });
  renderer.tilesFlattenedAtOnce = -1;
  renderer.workPerTurn = std::chrono::milliseconds(0);
  test::PlainView shown(180, 120);
  const auto frame = [&](const View& view) {
    renderer.document = document;
    test::zoomTo(*document, view.zoom);
    document->setViewportOffset(view.offset);
    shown.scale = view.scale;
    renderer.drawInMTKView(shown);
    return shown.pixels;
  };
  static_cast<void>(document->composite());
  const auto open = LayerTransform::begin(document, QStringLiteral("Rotate"));
  const std::vector<std::pair<std::string, std::function<void()>>> changes{
      {"kept", [&] { open->commit(); }},
      {"undone", [&] { document->undo(); }},
      {"done again", [&] { document->redo(); }},
      {"slid", [&] { OpenOpacityEdit::begin(document, document->activeLayer()->id)->show(0.3F); }},
  };
  open->rotate(0.4F);
  for (const auto& [name, change] : changes) {
    change();
    std::vector<std::vector<std::uint32_t>> first;
    for (const View& look : looks) first.push_back(frame(look));
    EXPECT_FALSE(document->isCompositeCurrent()) << name;
    int turns = 0;
    for (; !document->isCompositeCurrent(); ++turns) {
      static_cast<void>(renderer.catchUp());
      for (std::size_t i = 0; i < looks.size(); ++i) {
        EXPECT_EQ(frame(looks[i]), first[i]) << name << ", turn " << turns << ", zoom " << looks[i].zoom;
      }
      renderer.document = inOtherTab;
      renderer.drawInMTKView(shown);
      renderer.document = document;
    }
    EXPECT_GT(turns, 5) << name;
  }
}

TEST_P(GestureFrames, ShowWhatUndoLeavesOfAnOpenGesture) {
  const DocumentPtr document = documentFor(GetParam(), 14);
  CanvasRenderer renderer(MetalContext::shared(), [] { return 1.0; });
  renderer.document = document;
  renderer.tilesFlattenedAtOnce = -1;
  test::PlainView view(180, 120);
  const auto frame = [&] {
    renderer.drawInMTKView(view);
    return view.pixels;
  };
  const std::vector<std::uint32_t> before = frame();
  const auto open = LayerTransform::begin(document, QStringLiteral("Rotate"));
  open->rotate(0.4F);
  const std::vector<std::uint32_t> turned = frame();
  EXPECT_NE(turned, before);
  document->undo();
  EXPECT_FALSE(open->isOpen());
  EXPECT_EQ(frame(), before);
  document->redo();
  EXPECT_EQ(frame(), turned);
  static_cast<void>(document->composite());
  EXPECT_EQ(frame(), turned);
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
