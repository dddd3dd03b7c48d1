// Random walks through gestures, commands, views and tabs. Whatever led to a frame, it shows what one drawn
// from nothing shows and what flattening everything gives; and what changes nothing in the document changes
// nothing on the screen.
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "CanvasSupport.h"
#include "canvas/CanvasRenderer.h"
#include "model/LevelsAdjustment.h"
#include "model/OpenOpacityEdit.h"
#include "model/RandomDocument.h"
#include "model/VisibilitySweep.h"
#include "tools/FakeCanvas.h"
#include "tools/RandomCommands.h"
#include "tools/transform/LayerTransform.h"
#include "tools/transform/MoveToolHandler.h"

namespace orvanel {
namespace {

using Frame = std::vector<std::uint32_t>;
constexpr int viewWidth = 180;
constexpr int viewHeight = 120;
constexpr int stepsPerWalk = 150;

DocumentPtr documentFor(ColorMode mode, unsigned seed) {
  std::mt19937 random(seed);
  return test::randomDocument(mode, test::FolderKinds::all, random);
}

/// A frame that nothing was drawn before.
Frame frameFromNothing(const DocumentPtr& document, double scale) {
  CanvasRenderer renderer(MetalContext::shared(), [] { return 1.0; });
  renderer.document = document;
  renderer.tilesFlattenedAtOnce = -1;
  test::PlainView view(viewWidth, viewHeight);
  view.scale = scale;
  renderer.drawInMTKView(view);
  return view.pixels;
}

/// A user with a document, another one in a second tab, and every kind of gesture in the hand.
class Walk {
 public:
  /// Whether a step may change what is seen.
  enum class Effect { seen, unseen };
  struct Step {
    std::string_view name;
    int weight;
    Effect effect;
    void (Walk::*perform)();
  };

  Walk(ColorMode mode, unsigned seed)
      : document_(documentFor(mode, seed)),
        other_(documentFor(ColorMode::rgb8, seed + 1)),
        commands_(document_, seed) {
    renderer_.document = document_;
    renderer_.tilesFlattenedAtOnce = -1;
    renderer_.workPerTurn = std::chrono::milliseconds(0);
    view_.scale = 1.0;
    document_->selectNode(document_->allLayers().back()->id);
  }

  const Step& takeOne() {
    int total = 0;
    for (const Step& step : steps) total += step.weight;
    int drawn = commands_.below(total);
    const Step* chosen = steps.data();
    while (drawn >= chosen->weight) drawn -= (chosen++)->weight;
    (this->*chosen->perform)();
    return *chosen;
  }

  [[nodiscard]] const Frame& draw() {
    renderer_.drawInMTKView(view_);
    return view_.pixels;
  }
  [[nodiscard]] const DocumentPtr& document() const { return document_; }
  [[nodiscard]] double scale() const { return *view_.scale; }
  [[nodiscard]] bool isTimeToFlatten() { return commands_.below(12) == 0; }

 private:
  [[nodiscard]] double share() { return double{commands_.fraction()}; }
  void command() { commands_.runOne(); }
  void activate();
  void undo() { document_->undo(); }
  void redo() { document_->redo(); }
  void transform();
  void adjustLevels();
  void nudge();
  void slideOpacity();
  void sweep();
  void keep();
  void takeBack();
  void zoomAndPan();
  void scroll();
  void showOtherTab();
  void settle() { document_->settle(); }
  void flattenSome() { renderer_.catchUp(); }
  void flatten() { static_cast<void>(document_->composite()); }

  static const std::array<Step, 17> steps;

  DocumentPtr document_;
  DocumentPtr other_;
  test::RandomCommands commands_;
  CanvasRenderer renderer_{MetalContext::shared(), [] { return 1.0; }};
  test::PlainView view_{viewWidth, viewHeight};
  test::FakeCanvas canvas_{document_};
  MoveToolHandler moveTool_{MetalContext::shared()};
  std::unique_ptr<LayerTransform> transform_;
  std::optional<LevelsAdjustment> levels_;
  std::unique_ptr<OpenOpacityEdit> opacity_;
  std::unique_ptr<VisibilitySweep> sweep_;
};

const std::array<Walk::Step, 17> Walk::steps{{
    {"command", 3, Effect::seen, &Walk::command},
    {"activate", 3, Effect::unseen, &Walk::activate},
    {"undo", 2, Effect::seen, &Walk::undo},
    {"redo", 1, Effect::seen, &Walk::redo},
    {"transform", 20, Effect::seen, &Walk::transform},
    {"levels", 10, Effect::seen, &Walk::adjustLevels},
    {"nudge", 4, Effect::seen, &Walk::nudge},
    {"opacity", 12, Effect::seen, &Walk::slideOpacity},
    {"eye sweep", 8, Effect::seen, &Walk::sweep},
    {"keep", 3, Effect::unseen, &Walk::keep},
    {"take back", 2, Effect::seen, &Walk::takeBack},
    {"zoom and pan", 4, Effect::seen, &Walk::zoomAndPan},
    {"scroll", 4, Effect::seen, &Walk::scroll},
    {"other tab", 2, Effect::unseen, &Walk::showOtherTab},
    {"settle", 1, Effect::unseen, &Walk::settle},
    {"flatten some", 2, Effect::unseen, &Walk::flattenSome},
    {"flatten", 1, Effect::unseen, &Walk::flatten},
}};

void Walk::activate() {
  if (const std::optional<LayerNode> node = commands_.anyNode()) document_->selectNode(node->id());
}

void Walk::transform() {
  if (transform_ == nullptr || !transform_->isOpen()) {
    transform_ = LayerTransform::begin(document_, QStringLiteral("Transform"));
  }
  if (transform_ == nullptr) return;
  switch (commands_.below(4)) {
    case 0:
      transform_->translate(commands_.below(161) - 80, commands_.below(101) - 50);
      break;
    case 1:
      transform_->scaleTo({commands_.below(200) - 60.5, commands_.below(90) - 30.25,
                           1.0 + commands_.below(300), 1.5 + commands_.below(150)});
      break;
    case 2:
      transform_->rotate(6.0F * commands_.fraction());
      break;
    default:
      transform_->transform(
          QTransform(0.1 + share(), share() - 0.5, 0.3, 0.2 + share(), commands_.below(90), -10.0));
      break;
  }
}

void Walk::adjustLevels() {
  if (!levels_ || !levels_->isOpen()) levels_ = LevelsAdjustment::begin(document_);
  if (!levels_) return;
  levels_->apply({.blackPoint = 100.0F * commands_.fraction(),
                  .whitePoint = 140.0F + 100.0F * commands_.fraction(),
                  .gamma = 0.3F + 2.0F * commands_.fraction()});
}

void Walk::nudge() {
  constexpr std::array keys{keyCode::leftArrow, keyCode::rightArrow, keyCode::upArrow, keyCode::downArrow};
  test::ToolInHand hand(moveTool_, canvas_);
  canvas_.modifiers = commands_.below(3) == 0 ? modifier::shift : 0;
  hand.keyDown(keys[static_cast<std::size_t>(commands_.below(4))]);
}

void Walk::slideOpacity() {
  if (opacity_ == nullptr || !opacity_->isOpen()) {
    const std::optional<LayerNode> node = commands_.anyNode();
    if (node) opacity_ = OpenOpacityEdit::begin(document_, node->id());
  }
  if (opacity_ != nullptr) opacity_->show(commands_.fraction());
}

void Walk::sweep() {
  if (sweep_ == nullptr || !sweep_->isOpen()) {
    sweep_ = std::make_unique<VisibilitySweep>(document_, commands_.below(3) != 0);
  }
  if (const std::optional<LayerNode> node = commands_.anyNode()) sweep_->add(node->id());
}

void Walk::keep() {
  if (transform_ != nullptr) transform_->commit();
  if (levels_) levels_->commit();
  if (opacity_ != nullptr) opacity_->keep();
  if (sweep_ != nullptr) sweep_->end();
}

void Walk::takeBack() {
  if (transform_ != nullptr) transform_->cancel();
  if (levels_) levels_->cancel();
  if (opacity_ != nullptr) opacity_->takeBack();
}

void Walk::zoomAndPan() {
  constexpr std::array scales{1.0, 1.25, 2.0};
  view_.scale = scales[static_cast<std::size_t>(commands_.below(3))];
  const double zoom =
      zoomTable[static_cast<std::size_t>(commands_.below(static_cast<int>(zoomTable.size())))];
  test::zoomTo(*document_, commands_.below(2) == 0 ? zoom : zoom * (0.5 + share()));
  document_->setViewportOffset({commands_.below(340) - 40.0, commands_.below(700) / 4.0 - 30.0});
}

void Walk::scroll() {
  const double distance = commands_.below(61) - 30.0;
  const QPointF direction = commands_.below(2) == 0 ? QPointF(1.0, 0.0) : QPointF(0.0, 1.0);
  document_->setViewportOffset(document_->viewportOffset.value() + distance * direction);
}

void Walk::showOtherTab() {
  renderer_.document = other_;
  renderer_.drawInMTKView(view_);
  renderer_.document = document_;
}

struct Plan {
  ColorMode mode;
  unsigned seed;
};
void PrintTo(const Plan& plan, std::ostream* stream) {  // NOLINT(readability-identifier-naming)
  *stream << displayName(plan.mode) << ", seed " << plan.seed;
}

class GestureWalk : public testing::TestWithParam<Plan> {};

TEST_P(GestureWalk, ShowsTheDocumentWhateverLedToTheFrame) {
  Walk walk(GetParam().mode, GetParam().seed);
  Frame before = walk.draw();
  for (int i = 0; i < stepsPerWalk; ++i) {
    const Walk::Step& step = walk.takeOne();
    SCOPED_TRACE("step " + std::to_string(i) + ", " + std::string(step.name));
    const Frame frame = walk.draw();
    ASSERT_TRUE(step.effect == Walk::Effect::seen || frame == before) << "it jumped";
    ASSERT_TRUE(frame == frameFromNothing(walk.document(), walk.scale())) << "something stale was kept";
    if (walk.isTimeToFlatten()) {
      static_cast<void>(walk.document()->composite());
      ASSERT_TRUE(frame == frameFromNothing(walk.document(), walk.scale())) << "flattening shows another";
    }
    before = frame;
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, GestureWalk,
                         testing::Values(Plan{ColorMode::rgb8, 1}, Plan{ColorMode::rgb16, 2},
                                         Plan{ColorMode::grayscale8, 3}, Plan{ColorMode::grayscale16, 4},
                                         Plan{ColorMode::rgb8, 5}, Plan{ColorMode::rgb16, 6}));

}  // namespace
}  // namespace orvanel
