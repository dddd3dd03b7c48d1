// Open edits against everything that changes what they depend on: the document ends them first, as a change
// of tool does, and its history stays exact.
#include "model/OpenEdit.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/LevelsAdjustment.h"
#include "model/OpenOpacityEdit.h"
#include "model/PixelSupport.h"
#include "tools/selection/MagicWand.h"
#include "tools/selection/SelectionGesture.h"
#include "tools/selection/SelectionMove.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {
namespace {

using namespace test;

/// A common interface to every kind of open edit.
struct Opened {
  std::function<bool()> isOpen;
  std::function<void()> show;
  std::function<void()> keep;
};

/// What an edit changes; edits of different grounds don't end each other.
enum class Ground { surfaces, selection, properties };

struct Opening {
  std::string name;
  Ground ground;
  std::function<Opened(const DocumentPtr&)> begin;
};

Opened beginLevels(const DocumentPtr& document) {
  const auto levels = std::make_shared<LevelsAdjustment>(LevelsAdjustment::begin(document).value());
  return {.isOpen = [=] { return levels->isOpen(); },
          .show = [=] { levels->apply({.blackPoint = 40.0F, .whitePoint = 200.0F, .gamma = 1.5F}); },
          .keep = [=] { levels->commit(); }};
}

Opened beginMove(const DocumentPtr& document) {
  const std::shared_ptr<LayerTransform> move = LayerTransform::begin(document, QStringLiteral("Move"));
  return {.isOpen = [=] { return move->isOpen(); },
          .show = [=] { move->translate(5, -7); },
          .keep = [=] { move->commit(); }};
}

Opened beginMoveOfMask(const DocumentPtr& document) {
  document->setMaskSelected(document->activeLayer()->id, true);
  return beginMove(document);
}

Opened beginWand(const DocumentPtr& document) {
  const std::shared_ptr<MagicWand> wand =
      MagicWand::press(document, 20, 20, SelectionMode::replace, MagicWandSettings{.tolerance = 60.0F});
  return {.isOpen = [=] { return wand->isOpen(); },
          .show = [=] { wand->select(MagicWandSettings{.tolerance = 90.0F}); },
          .keep = [=] { wand->release(); }};
}

Opened beginShape(const DocumentPtr& document) {
  const auto gesture = std::make_shared<SelectionGesture>(document, QStringLiteral("Rectangle Select"));
  return {.isOpen = [=] { return gesture->isOpen(); },
          .show =
              [=] {
                gesture->selectShape(SelectionMode::replace, [&](Selection& shape) {
                  shape.setRect({2, 3, 20, 30}, 0.0F, MetalContext::shared());
                });
              },
          .keep = [=] { gesture->close(); }};
}

Opened beginMoveOfSelection(const DocumentPtr& document) {
  document->selectAll();
  const auto move = std::make_shared<SelectionMove>(document);
  return {.isOpen = [=] { return move->isOpen(); },
          .show = [=] { move->moveTo(30, 20); },
          .keep = [=] { move->close(); }};
}

Opened beginOpacity(const DocumentPtr& document) {
  const std::shared_ptr<OpenOpacityEdit> edit =
      OpenOpacityEdit::begin(document, *document->selectedNodeID.value());
  return {.isOpen = [=] { return edit->isOpen(); },
          .show = [=] { edit->show(0.25F); },
          .keep = [=] { edit->keep(); }};
}

struct Pull {
  std::string name;
  std::function<void(Document&)> command;
};

const std::vector<Opening> openings{{"levels", Ground::surfaces, beginLevels},
                                    {"move", Ground::surfaces, beginMove},
                                    {"moveOfMask", Ground::surfaces, beginMoveOfMask},
                                    {"wand", Ground::selection, beginWand},
                                    {"shape", Ground::selection, beginShape},
                                    {"moveOfSelection", Ground::selection, beginMoveOfSelection},
                                    {"opacity", Ground::properties, beginOpacity}};

const std::vector<Pull> pulls{
    {"undo", [](Document& d) { d.undo(); }},
    {"redo", [](Document& d) { d.redo(); }},
    {"imageSize", [](Document& d) { d.resizeImage(90, 80, ResampleMethod::bilinear); }},
    {"canvasSize", [](Document& d) { d.resizeCanvas(180, 170, 0, 0); }},
    {"crop",
     [](Document& d) {
       d.crop({10, 10, 60, 50}, QStringLiteral("Crop"));
     }},
    {"colorMode", [](Document& d) { d.changeColorMode(ColorMode::grayscale16); }},
    {"fill", [](Document& d) { d.fillSelection(DisplayColor::black()); }},
    {"clear", [](Document& d) { d.clearActive(); }},
    {"invert", [](Document& d) { d.invertActive(); }},
    {"removeLayer", [](Document& d) { d.removeNode(*d.selectedNodeID.value()); }},
    {"applyMask", [](Document& d) { d.applyLayerMask(d.activeLayer()); }},
    {"removeMask", [](Document& d) { d.removeLayerMask(d.activeLayer()); }},
};

using Pair = std::tuple<std::size_t, std::size_t>;

class OpenEditTest : public testing::TestWithParam<Pair> {
 protected:
  void SetUp() override {
    document->addLayer(QStringLiteral("edited"));
    const std::shared_ptr<Layer> layer = document->activeLayer();
    writable(layer->texture.value()) = randomPixels(ColorMode::rgb16, random);
    addRandomMask(*layer, random);
    document->setOpacity(layer->id, 0.5F);
    document->setOpacity(layer->id, 1.0F);
  }

  /// Undoing to the beginning and redoing to the end must pass through the same states.
  void expectExactHistory() const {
    const auto walk = [this](void (Document::*step)(), std::int64_t end) {
      std::vector<PixelState> states{pixelState(*document)};
      while (document->undoStack.currentIndex.value() != end) {
        ((*document).*step)();
        states.push_back(pixelState(*document));
      }
      return states;
    };
    const auto last = std::ssize(document->undoStack.operations()) - 1;
    while (document->undoStack.currentIndex.value() < last) document->redo();
    // Stop at the first record: it adds the layer, whose initial pixels aren't recorded.
    const std::vector<PixelState> back = walk(&Document::undo, 0);
    const std::vector<PixelState> forth = walk(&Document::redo, last);
    ASSERT_EQ(back.size(), forth.size());
    for (std::size_t i = 0; i < back.size(); ++i) {
      EXPECT_EQ(difference(back[i], forth[forth.size() - 1 - i]), "") << "step " << i;
    }
  }

  std::mt19937 random{5};
  DocumentPtr document = makeRandomDocument(ColorMode::rgb16, random);
};

TEST_P(OpenEditTest, EndsBeforeWhatItDependsOnChanges) {
  const auto& [opening, pull] = GetParam();
  const Opened edit = openings[opening].begin(document);
  edit.show();
  ASSERT_TRUE(edit.isOpen());
  const std::int64_t records = recordCount(*document);
  pulls[pull].command(*document);
  EXPECT_FALSE(edit.isOpen());
  EXPECT_GE(std::ssize(document->undoStack.operations()), records) << "its result is kept under a record";

  const PixelState settled = pixelState(*document);
  const std::int64_t settledRecords = recordCount(*document);
  edit.show();
  edit.keep();
  EXPECT_EQ(difference(pixelState(*document), settled), "") << "a closed edit has no further effect";
  EXPECT_EQ(recordCount(*document), settledRecords);
  expectExactHistory();
}

INSTANTIATE_TEST_SUITE_P(Pairs, OpenEditTest,
                         testing::Combine(testing::Range<std::size_t>(0, openings.size()),
                                          testing::Range<std::size_t>(0, pulls.size())),
                         [](const testing::TestParamInfo<Pair>& tested) {
                           return openings[std::get<0>(tested.param)].name + "And" +
                                  pulls[std::get<1>(tested.param)].name;
                         });

/// Two edits, the second begun while the first is open.
class OverlappingEdits : public OpenEditTest {};

TEST_P(OverlappingEdits, TheSecondEndsTheFirstOnTheSameGround) {
  const auto& [first, second] = GetParam();
  const Opened before = openings[first].begin(document);
  before.show();
  const Opened after = openings[second].begin(document);
  EXPECT_EQ(before.isOpen(), openings[first].ground != openings[second].ground);
  EXPECT_TRUE(after.isOpen());
  after.show();
  before.keep();
  after.keep();
  expectExactHistory();
}

INSTANTIATE_TEST_SUITE_P(Pairs, OverlappingEdits,
                         testing::Combine(testing::Range<std::size_t>(0, openings.size()),
                                          testing::Range<std::size_t>(0, openings.size())),
                         [](const testing::TestParamInfo<Pair>& tested) {
                           return openings[std::get<0>(tested.param)].name + "Then" +
                                  openings[std::get<1>(tested.param)].name;
                         });

class OpenEdits : public OpenEditTest {};

TEST_F(OpenEdits, ADroppedEditKeepsWhatItShows) {
  for (const Opening& opening : openings) {
    std::int64_t records = 0;
    {
      const Opened dropped = opening.begin(document);
      dropped.show();
      records = recordCount(*document);
    }
    EXPECT_EQ(recordCount(*document), records + 1) << opening.name;
  }
  expectExactHistory();
}

TEST_F(OpenEdits, TheDocumentEndsThemOnRequest) {
  LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  levels.apply({.blackPoint = 30.0F});
  SelectionGesture gesture(document, QStringLiteral("Rectangle Select"));
  const std::int64_t records = recordCount(*document);
  document->endOpenEdits();
  EXPECT_FALSE(levels.isOpen());
  EXPECT_FALSE(gesture.isOpen());
  EXPECT_EQ(recordCount(*document), records + 1) << "the gesture showed nothing";
}

TEST_F(OpenEdits, AnObserverMayDestroyAnEditThatTheDocumentEnds) {
  std::optional<LevelsAdjustment> levels = LevelsAdjustment::begin(document);
  levels->apply({.blackPoint = 30.0F});
  const auto dropping = document->changes().observe([&](const DocumentChanges&) { levels.reset(); });
  document->endOpenEdits();
  EXPECT_FALSE(levels.has_value());
  EXPECT_EQ(document->undoStack.undoActionName(), QStringLiteral("Levels"));
}

TEST_F(OpenEdits, AnEditUnaffectedByOtherCommandsStaysOpen) {
  LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  levels.apply({.blackPoint = 30.0F});
  const QUuid layer = *document->selectedNodeID.value();
  document->rename(layer, QStringLiteral("renamed"));
  document->setOpacity(layer, 0.25F);
  document->selectAll();
  document->addLayer(QStringLiteral("above"));
  document->moveNode(layer, std::nullopt, 0);
  EXPECT_TRUE(levels.isOpen());
  levels.apply({.blackPoint = 60.0F});
  levels.commit();
  EXPECT_EQ(document->undoStack.undoActionName(), QStringLiteral("Levels"));
}

TEST_F(OpenEdits, ACommandOnTheSelectionEndsASelectionGesture) {
  SelectionGesture gesture(document, QStringLiteral("Ellipse Select"));
  gesture.selectShape(SelectionMode::replace, [&](Selection& shape) {
    shape.setEllipse(40.0F, 40.0F, 20.0F, 20.0F, 0.0F, document->context());
  });
  document->selectAll();
  EXPECT_FALSE(gesture.isOpen());
  document->undo();
  EXPECT_TRUE(document->selection.value()->hasSelection.value());
  EXPECT_FALSE(document->selection.value()->isFullSelection.value()) << "the ellipse is restored";
  document->undo();
  EXPECT_FALSE(document->selection.value()->hasSelection.value());
}

TEST_F(OpenEdits, AnEditThatShowedNothingLeavesNoRecord) {
  const std::int64_t records = recordCount(*document);
  const PixelState before = pixelState(*document);
  const LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  const auto move = LayerTransform::begin(document, QStringLiteral("Move"));
  const SelectionGesture gesture(document, QStringLiteral("Rectangle Select"));
  document->undo();
  document->redo();
  EXPECT_FALSE(levels.isOpen());
  EXPECT_FALSE(move->isOpen());
  EXPECT_FALSE(gesture.isOpen());
  EXPECT_EQ(recordCount(*document), records);
  EXPECT_EQ(difference(pixelState(*document), before), "");
}

/// Counts the batches with a change of this kind.
template <typename Kind>
struct Counted {
  explicit Counted(const Document& document)
      : subscription(document.changes().observe(
            [this](const DocumentChanges& changes) { batches += contains<Kind>(changes) ? 1 : 0; })) {}

  int batches = 0;
  ChangeStream::Subscription subscription;
};

TEST_F(OpenEdits, AnEditThatShowedNothingClosesUnnoticed) {
  const Counted<change::OpenEditChanged> heard(*document);
  LevelsAdjustment::begin(document)->cancel();
  LayerTransform::begin(document, QStringLiteral("Move"))->commit();
  SelectionGesture(document, QStringLiteral("Rectangle Select")).close();
  EXPECT_EQ(heard.batches, 0);
  LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  levels.apply({.blackPoint = 100.0F});
  EXPECT_EQ(heard.batches, 1);
  levels.cancel();
  EXPECT_EQ(heard.batches, 2);
}

TEST_F(OpenEdits, TheOwnerHearsThatTheDocumentHasEndedAnEdit) {
  const auto move = LayerTransform::begin(document, QStringLiteral("Move"));
  const Counted<change::OpenEditChanged> heard(*document);
  document->endOpenEdits();
  EXPECT_FALSE(move->isOpen());
  EXPECT_EQ(heard.batches, 1);
}

TEST_F(OpenEdits, TakingBackWhatIsOnlyShownIsReported) {
  const Counted<change::PreviewChanged> heard(*document);
  LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  levels.apply({.blackPoint = 100.0F});
  EXPECT_EQ(heard.batches, 1);
  levels.cancel();
  EXPECT_EQ(heard.batches, 2) << "no pixel was written, so nothing else tells of it";
}

TEST_F(OpenEdits, UndoRevertsWhatAnOpenEditShows) {
  const PixelState before = pixelState(*document);
  LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  levels.apply({.blackPoint = 100.0F});
  document->undo();
  EXPECT_EQ(difference(pixelState(*document), before), "");
  EXPECT_EQ(document->undoStack.redoActionName(), QStringLiteral("Levels"));
}

}  // namespace
}  // namespace orvanel
