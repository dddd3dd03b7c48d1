#include "tools/ToolState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/ModelSupport.h"
#include "tools/PostCounter.h"

namespace orvanel {
namespace {

using namespace test;
using testing::ElementsAre;

class ToolStateTest : public testing::Test {
 protected:
  const ToolSlot rectangles = toolSlots()[2];
  const ToolSlot lassos = toolSlots()[3];
  ToolState state;
  PostCounter posts{notification::toolChanged};
};

TEST_F(ToolStateTest, BeginsWithTheHandAndDefaultSettings) {
  EXPECT_THAT(state.toolStack.value(), ElementsAre(Tool::hand));
  EXPECT_EQ(state.currentTool(), Tool::hand);
  EXPECT_TRUE(state.selectedVariants.value().isEmpty());
  EXPECT_EQ(state.activeDocument(), nullptr);
  EXPECT_EQ(state.brushSettings.value(), (BrushSettings{20.0F, 0.8F, 1.0F, 0.1F}));
  EXPECT_EQ(state.eraserSettings.value(), (EraserSettings{20.0F, 0.8F, 1.0F}));
  EXPECT_EQ(state.selectionSettings.value(), (SelectionSettings{0.0F}));
  EXPECT_EQ(state.magicWandSettings.value(), (MagicWandSettings{32.0F, true, true, false}));
  EXPECT_EQ(state.zoomSettings.value(), (ZoomSettings{false}));
}

TEST_F(ToolStateTest, AnEmptyStackReadsAsTheHand) {
  state.setToolStack({});
  EXPECT_EQ(state.currentTool(), Tool::hand);
}

TEST_F(ToolStateTest, EverySelectionOfAToolIsPosted) {
  state.selectTool(Tool::move);
  state.selectTool(Tool::move);
  EXPECT_EQ(state.currentTool(), Tool::move);
  EXPECT_EQ(posts.count, 2);
  EXPECT_FALSE(posts.hadObject);
}

TEST_F(ToolStateTest, AnEqualStackNotifiesNobody) {
  int changes = 0;
  const auto notifier = state.toolStack.addNotifier([&] { ++changes; });
  state.selectTool(Tool::hand);
  state.setToolStack({Tool::hand});
  EXPECT_EQ(changes, 0);
  state.selectTool(Tool::zoom);
  EXPECT_EQ(changes, 1);
}

TEST_F(ToolStateTest, TemporaryToolsArePushedAndPopped) {
  state.selectTool(Tool::move);
  state.pushTool(Tool::hand);
  state.pushTool(Tool::hand);
  EXPECT_THAT(state.toolStack.value(), ElementsAre(Tool::move, Tool::hand, Tool::hand));
  state.popTool();
  state.popTool();
  EXPECT_EQ(state.currentTool(), Tool::move);
  EXPECT_EQ(posts.count, 5);
}

TEST_F(ToolStateTest, TheLastToolCannotBePopped) {
  state.popTool();
  EXPECT_THAT(state.toolStack.value(), ElementsAre(Tool::hand));
  EXPECT_EQ(posts.count, 0);
}

TEST_F(ToolStateTest, SelectingEndsTemporaryTools) {
  state.pushTool(Tool::zoom);
  state.selectTool(Tool::brush);
  EXPECT_THAT(state.toolStack.value(), ElementsAre(Tool::brush));
}

TEST_F(ToolStateTest, TheActiveDocumentRemembersTheSelectedTool) {
  const DocumentPtr document = makeDocument();
  state.setActiveDocument(document);
  state.activateSlot(rectangles);
  state.activateSlot(rectangles);
  EXPECT_EQ(document->selectedTool.value(), Tool::ellipseSelect);
  EXPECT_EQ(document->selectedVariants.value(), state.selectedVariants.value());
}

TEST_F(ToolStateTest, DocumentsDoNotRememberTemporaryTools) {
  const DocumentPtr document = makeDocument();
  state.setActiveDocument(document);
  state.selectTool(Tool::move);
  state.pushTool(Tool::hand);
  EXPECT_EQ(document->selectedTool.value(), Tool::move);
}

TEST_F(ToolStateTest, AGroupIsFirstActivatedWithItsFirstMember) {
  state.activateSlot(lassos);
  EXPECT_EQ(state.currentTool(), Tool::lassoSelect);
  EXPECT_TRUE(state.selectedVariants.value().isEmpty());
}

TEST_F(ToolStateTest, ActivatingTheCurrentGroupCyclesItsMembers) {
  state.activateSlot(lassos);
  state.activateSlot(lassos);
  EXPECT_EQ(state.currentTool(), Tool::polygonalLassoSelect);
  EXPECT_EQ(state.shownTool(lassos), Tool::polygonalLassoSelect);
  state.activateSlot(lassos);
  EXPECT_EQ(state.currentTool(), Tool::lassoSelect);
}

TEST_F(ToolStateTest, ReactivatingAGroupResumesItsLastMember) {
  state.selectVariant(lassos, Tool::polygonalLassoSelect);
  state.selectTool(Tool::move);
  state.activateSlot(lassos);
  EXPECT_EQ(state.currentTool(), Tool::polygonalLassoSelect);
  state.activateSlot(lassos);
  EXPECT_EQ(state.currentTool(), Tool::lassoSelect);
}

TEST_F(ToolStateTest, ASlotWithOneToolSelectsIt) {
  state.pushTool(Tool::zoom);
  state.activateSlot(toolSlots()[4]);
  EXPECT_THAT(state.toolStack.value(), ElementsAre(Tool::magicWand));
  state.activateSlot(toolSlots()[4]);
  EXPECT_EQ(state.currentTool(), Tool::magicWand);
  EXPECT_TRUE(state.selectedVariants.value().isEmpty());
}

TEST_F(ToolStateTest, AGroupShowsItsFirstMemberUntilAnotherIsChosen) {
  EXPECT_EQ(state.shownTool(rectangles), Tool::rectangleSelect);
  state.selectVariant(rectangles, Tool::ellipseSelect);
  EXPECT_EQ(state.shownTool(rectangles), Tool::ellipseSelect);
  EXPECT_EQ(state.currentTool(), Tool::ellipseSelect);
}

TEST_F(ToolStateTest, SwitchingDocumentsRestoresToolAndVariantsButNotSettings) {
  const DocumentPtr first = makeDocument();
  const DocumentPtr second = makeDocument();
  state.switchToDocument(first);
  state.selectVariant(lassos, Tool::polygonalLassoSelect);
  state.pushTool(Tool::zoom);
  state.brushSettings = BrushSettings{.size = 55.0F};

  state.switchToDocument(second);
  EXPECT_THAT(state.toolStack.value(), ElementsAre(Tool::hand));
  EXPECT_EQ(state.shownTool(lassos), Tool::lassoSelect);
  EXPECT_EQ(state.brushSettings.value().size, 55.0F);

  state.switchToDocument(first);
  EXPECT_THAT(state.toolStack.value(), ElementsAre(Tool::polygonalLassoSelect));
  EXPECT_EQ(state.shownTool(lassos), Tool::polygonalLassoSelect);
  EXPECT_EQ(second->selectedTool.value(), Tool::hand);
}

TEST_F(ToolStateTest, TheActiveDocumentIsHeldWeakly) {
  DocumentPtr document = makeDocument();
  state.switchToDocument(document);
  document.reset();
  EXPECT_EQ(state.activeDocument(), nullptr);
  state.selectTool(Tool::move);
  state.switchToDocument(nullptr);
  EXPECT_EQ(state.currentTool(), Tool::move);
}

}  // namespace
}  // namespace orvanel
