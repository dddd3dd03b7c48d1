#include "panels/layers/LayerNSOutlineView.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QToolTip>

#include "model/PixelSupport.h"
#include "panels/layers/LayerPanelSupport.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using namespace test;

class LayerNSOutlineViewTest : public LayerPanelTest {
 protected:
  void SetUp() override {
    for (const char* name : {"a", "b", "c", "d"}) document->addLayer(name);
    showPanel();
  }
  [[nodiscard]] bool isVisible(const QString& name) const { return node(name).isVisible().value(); }

  [[nodiscard]] QLineEdit* editor() const { return outline.findChild<QLineEdit*>(); }
  void typeName(const QString& text) {
    ASSERT_NE(editor(), nullptr);
    QTest::keyClicks(editor(), text);
    QTest::keyClick(editor(), Qt::Key_Return);
    QApplication::processEvents();
  }
  [[nodiscard]] std::vector<std::string> menuTitles(const QString& name, Part part) const {
    QMenu menu;
    outline.fillContextMenu(menu, at(name), part);
    std::vector<std::string> titles;
    for (const QAction* action : menu.actions()) {
      titles.push_back(action->isSeparator() ? "-" : action->text().toStdString());
    }
    return titles;
  }
  /// The item of the menu that a right click opens.
  QAction* menuItem(const QPoint& point, const QString& title) {
    for (QMenu* menu : outline.findChildren<QMenu*>()) menu->close();
    QContextMenuEvent event(QContextMenuEvent::Mouse, point, outline.viewport()->mapToGlobal(point));
    QApplication::sendEvent(outline.viewport(), &event);
    for (QMenu* menu : outline.findChildren<QMenu*>()) {
      for (QAction* action : menu->actions()) {
        if (menu->isVisible() && action->text() == title) return action;
      }
    }
    return nullptr;
  }
};

// Selection.

TEST_F(LayerNSOutlineViewTest, TheSelectionFollowsTheActiveNode) {
  EXPECT_EQ(selectedName(), "d");
  activate(*document, "a");
  EXPECT_EQ(selectedName(), "a");
  document->addLayer("new");
  EXPECT_EQ(selectedName(), "new");
  document->removeNode(idOf(*document, "new"));
  EXPECT_EQ(selectedName(), activeName(*document));
  document->undo();
  EXPECT_EQ(selectedName(), "new");
  document->selectNode(std::nullopt);
  EXPECT_EQ(selectedName(), "");
}

TEST_F(LayerNSOutlineViewTest, AClickOnARowMakesItActive) {
  click("b", Part::name);
  EXPECT_EQ(activeName(*document), "b");
  click("b", Part::name, Qt::ControlModifier);
  EXPECT_EQ(activeName(*document), "b") << "there is no way to deselect";
  QTest::mouseClick(outline.viewport(), Qt::LeftButton, {}, QPoint(100, outline.viewport()->height() - 3));
  EXPECT_EQ(activeName(*document), "b");
}

TEST_F(LayerNSOutlineViewTest, TheOtherButtonsChooseNoRow) {
  document->addLayerMask(layer("b"));
  const std::size_t before = records();
  for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
    for (const Part part : {Part::name, Part::visibility, Part::thumbnail, Part::maskThumbnail, Part::lock}) {
      QTest::mouseClick(outline.viewport(), button, {}, center("b", part));
    }
  }
  EXPECT_EQ(activeName(*document), "d");
  EXPECT_EQ(selectedName(), "d");
  EXPECT_FALSE(layer("b")->isMaskSelected.value());
  EXPECT_EQ(records(), before);
}

TEST_F(LayerNSOutlineViewTest, RemovingTheActiveNodeLeavesTheChoiceToTheDocument) {
  activate(*document, "b");
  document->removeNode(idOf(*document, "b"));
  EXPECT_EQ(activeName(*document), "c") << "the node that took its place";
  EXPECT_EQ(selectedName(), "c");
}

TEST_F(LayerNSOutlineViewTest, ArrowKeysWalkTheRows) {
  key(Qt::Key_Down);
  EXPECT_EQ(activeName(*document), "c");
  key(Qt::Key_Up);
  EXPECT_EQ(activeName(*document), "d");
  key(Qt::Key_End);
  EXPECT_EQ(activeName(*document), "Background");
}

// Thumbnails.

TEST_F(LayerNSOutlineViewTest, ClicksOnThumbnailsChooseWhatIsEdited) {
  document->addLayerMask(layer("b"));
  click("b", Part::maskThumbnail);
  EXPECT_TRUE(layer("b")->isMaskSelected.value());
  EXPECT_EQ(activeName(*document), "b");
  click("b", Part::thumbnail);
  EXPECT_FALSE(layer("b")->isMaskSelected.value());
  put(layer("a")->isMaskSelected, true);
  click("a", Part::thumbnail);
  EXPECT_TRUE(layer("a")->isMaskSelected.value()) << "without a mask there is nothing to choose";
  EXPECT_EQ(activeName(*document), "a");
}

TEST_F(LayerNSOutlineViewTest, ControlClicksOnThumbnailsLoadTheSelection) {
  document->addLayerMask(layer("b"));
  click("b", Part::maskThumbnail, Qt::ControlModifier);
  EXPECT_EQ(document->undoStack.undoActionName(), "Select Mask");
  EXPECT_FALSE(layer("b")->isMaskSelected.value());
  EXPECT_EQ(activeName(*document), "b");
  click("a", Part::thumbnail, Qt::ControlModifier);
  EXPECT_EQ(document->undoStack.undoActionName(), "Select Layer Transparency");
  EXPECT_EQ(activeName(*document), "a");
}

TEST_F(LayerNSOutlineViewTest, LoadingTheTransparencyLeavesTheMaskAsWhatIsEdited) {
  document->addLayerMask(layer("b"));
  document->setMaskSelected(idOf(*document, "b"), true);
  click("b", Part::thumbnail, Qt::ControlModifier);
  EXPECT_EQ(document->undoStack.undoActionName(), "Select Layer Transparency");
  EXPECT_TRUE(layer("b")->isMaskSelected.value());
  EXPECT_EQ(activeName(*document), "b");
}

TEST_F(LayerNSOutlineViewTest, RowsWithoutAMaskHaveNeitherItsThumbnailNorTheChain) {
  EXPECT_TRUE(outline.rectOf(at("a"), Part::maskThumbnail).isEmpty());
  EXPECT_TRUE(outline.rectOf(at("a"), Part::chain).isEmpty());
  document->addLayerMask(layer("a"));
  EXPECT_FALSE(outline.rectOf(at("a"), Part::maskThumbnail).isEmpty());
  EXPECT_FALSE(outline.rectOf(at("a"), Part::chain).isEmpty());
  document->addFolder("F");
  EXPECT_TRUE(outline.rectOf(at("F"), Part::thumbnail).isEmpty());
  EXPECT_FALSE(outline.rectOf(at("F"), Part::disclosure).isEmpty());
}

// Buttons.

TEST_F(LayerNSOutlineViewTest, ASweepOverEyesIsOneStep) {
  document->setVisible(idOf(*document, "b"), false);
  const std::size_t before = records();
  press(center("d", Part::visibility));
  EXPECT_FALSE(isVisible("d")) << "at once";
  for (const char* name : {"c", "b", "a", "Background", "a", "b"}) moveTo(center(name, Part::visibility));
  EXPECT_FALSE(isVisible("Background"));
  EXPECT_EQ(records(), before) << "not before the end";
  release(center("b", Part::visibility));
  EXPECT_EQ(records(), before + 1);
  EXPECT_EQ(document->undoStack.operations().back()->memoryCost(), 64 + 24 * 5);
  document->undo();
  for (const char* name : {"a", "c", "d", "Background"}) EXPECT_TRUE(isVisible(name)) << name;
  EXPECT_FALSE(isVisible("b")) << "its own old value";
}

TEST_F(LayerNSOutlineViewTest, AFastSweepSkipsNoRow) {
  press(center("d", Part::visibility));
  moveTo(center("Background", Part::visibility) + QPoint(60, 0));
  release(center("Background", Part::visibility));
  for (const char* name : {"a", "b", "c", "d", "Background"}) EXPECT_FALSE(isVisible(name)) << name;
}

TEST_F(LayerNSOutlineViewTest, ASweepWhoseReleaseWasLostEndsWithTheNextMove) {
  const std::size_t before = records();
  press(center("d", Part::visibility));
  moveTo(center("c", Part::visibility));
  moveTo(center("a", Part::visibility), Qt::NoButton);
  EXPECT_EQ(records(), before + 1);
  EXPECT_TRUE(isVisible("a"));
  moveTo(center("Background", Part::visibility));
  EXPECT_TRUE(isVisible("Background"));
  document->undo();
  EXPECT_TRUE(isVisible("c"));
  EXPECT_TRUE(isVisible("d"));
}

TEST_F(LayerNSOutlineViewTest, APressOnALockWhoseReleaseWasLostDoesNothing) {
  press(center("d", Part::lock));
  moveTo(center("d", Part::lock), Qt::NoButton);
  release(center("d", Part::lock));
  EXPECT_FALSE(node("d").isLocked().value());
}

TEST_F(LayerNSOutlineViewTest, ARefusedSweepIsToldOnce) {
  std::mt19937 random{5};
  document = makeRandomDocument(ColorMode::rgb8, random);
  for (const char* name : {"a", "b"}) document->addLayer(name);
  panel.setDocument(document);
  const ChangeRecorder changes(*document);
  {
    const ScopedMemoryLimit limit(0);
    press(center("b", Part::visibility));
    for (const char* name : {"a", "Background"}) moveTo(center(name, Part::visibility));
    release(center("Background", Part::visibility));
  }
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  for (const char* name : {"b", "a", "Background"}) EXPECT_TRUE(isVisible(name)) << name;
}

TEST_F(LayerNSOutlineViewTest, ANodeThatVanishesUnderASweepEndsNothingElse) {
  press(center("d", Part::visibility));
  document->removeNode(idOf(*document, "d"));
  moveTo(center("b", Part::visibility));
  release(center("b", Part::visibility));
  EXPECT_EQ(treeText(*document), "Background, a, b, c");
  click("a", Part::visibility);
  EXPECT_FALSE(isVisible("a")) << "the next click works";
}

TEST_F(LayerNSOutlineViewTest, AClickOnAnEyeIsAChangeOfThatNode) {
  const std::size_t before = records();
  click("c", Part::visibility);
  EXPECT_FALSE(isVisible("c"));
  EXPECT_EQ(records(), before + 1);
  EXPECT_EQ(document->undoStack.operations().back()->memoryCost(), 64);
  EXPECT_EQ(activeName(*document), "d") << "the active node stays";
}

TEST_F(LayerNSOutlineViewTest, TwoQuickClicksOnAnEyeAreTwoClicks) {
  const QPoint eye = center("c", Part::visibility);
  click("c", Part::visibility);
  EXPECT_FALSE(isVisible("c"));
  QMouseEvent second(QEvent::MouseButtonDblClick, eye, outline.viewport()->mapToGlobal(QPointF(eye)),
                     Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(outline.viewport(), &second);
  release(eye);
  EXPECT_TRUE(isVisible("c"));
  EXPECT_EQ(editor(), nullptr);
}

TEST_F(LayerNSOutlineViewTest, TheLockIsRecordedAndTheChainIsNot) {
  document->addLayerMask(layer("b"));
  const std::size_t before = records();
  click("b", Part::lock);
  EXPECT_TRUE(node("b").isLocked().value());
  EXPECT_EQ(document->undoStack.undoActionName(), "Lock");
  click("b", Part::chain);
  EXPECT_FALSE(layer("b")->isMaskLinked.value());
  EXPECT_EQ(records(), before + 1);
}

TEST_F(LayerNSOutlineViewTest, AButtonThatThePointerLeavesDoesNothing) {
  press(center("b", Part::lock));
  release(center("a", Part::lock));
  EXPECT_FALSE(node("b").isLocked().value());
  EXPECT_FALSE(node("a").isLocked().value());
}

TEST_F(LayerNSOutlineViewTest, LockAndChainHaveKeysToo) {
  document->addLayerMask(layer("d"));
  QTest::keyClick(&outline, Qt::Key_Space, Qt::ShiftModifier);
  EXPECT_TRUE(node("d").isLocked().value());
  QTest::keyClick(&outline, Qt::Key_Space, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_FALSE(layer("d")->isMaskLinked.value());
  EXPECT_TRUE(isVisible("d"));
}

TEST_F(LayerNSOutlineViewTest, SpaceTurnsTheEye) {
  activate(*document, "b");
  key(Qt::Key_Space);
  EXPECT_FALSE(isVisible("b"));
  EXPECT_EQ(document->undoStack.undoActionName(), "Visibility");
}

// Folders.

TEST_F(LayerNSOutlineViewTest, ExpansionLivesOnTheFolder) {
  document->addFolder("F");
  document->addLayer("inner");
  EXPECT_TRUE(outline.isExpanded(at("F")));
  click("F", Part::disclosure);
  EXPECT_FALSE(node("F").folder()->isExpanded.value());
  EXPECT_FALSE(outline.isExpanded(at("F")));
  document->setExpanded(idOf(*document, "F"), true);
  EXPECT_TRUE(outline.isExpanded(at("F")));
  document->setExpanded(idOf(*document, "F"), false);
  panel.setDocument(nullptr);
  panel.setDocument(document);
  EXPECT_FALSE(outline.isExpanded(at("F")));
}

TEST_F(LayerNSOutlineViewTest, ANewLayerInAClosedFolderLeavesItClosed) {
  document->addFolder("F");
  document->setExpanded(idOf(*document, "F"), false);
  document->addLayer("inner");
  QApplication::processEvents();
  EXPECT_EQ(activeName(*document), "inner");
  EXPECT_FALSE(outline.isExpanded(at("F")));
  EXPECT_FALSE(node("F").folder()->isExpanded.value());
}

TEST_F(LayerNSOutlineViewTest, AFolderStaysOpenWhereverItGoes) {
  document->addFolder("F");
  document->addLayer("inner");
  document->placeNode(idOf(*document, "F"), std::nullopt, 0);
  EXPECT_TRUE(outline.isExpanded(at("F")));
  document->removeNode(idOf(*document, "F"));
  document->undo();
  EXPECT_TRUE(outline.isExpanded(at("F")));
  EXPECT_TRUE(node("F").folder()->isExpanded.value());
}

TEST_F(LayerNSOutlineViewTest, LeftAndRightWalkTheLevels) {
  document->addFolder("F");
  document->addLayer("inner");
  key(Qt::Key_Left);
  EXPECT_EQ(activeName(*document), "F");
  key(Qt::Key_Left);
  EXPECT_FALSE(node("F").folder()->isExpanded.value());
  key(Qt::Key_Right);
  EXPECT_TRUE(node("F").folder()->isExpanded.value());
  key(Qt::Key_Right);
  EXPECT_EQ(activeName(*document), "inner");
}

TEST_F(LayerNSOutlineViewTest, ThousandsOfNestedFoldersAreShown) {
  LayerNode innermost(std::make_shared<Layer>(NodeValues{.name = "deep"}, document->makeLayerTexture()));
  for (int depth = 0; depth < 3000; ++depth) {
    innermost = LayerNode(std::make_shared<LayerFolder>(NodeValues{.name = "F"}, LayerNodeList{innermost}));
  }
  const QUuid id = innermost.id();
  document = Document::create({.width = 40, .height = 30, .rootNodes = {innermost}, .selectedNodeID = id},
                              MetalContext::shared());
  panel.setDocument(document);
  QApplication::processEvents();
  EXPECT_EQ(selectedName(), "F");
  key(Qt::Key_End);
  EXPECT_EQ(activeName(*document), "deep");
  EXPECT_GT(outline.rectOf(outline.currentIndex(), Part::name).width(), 30) << "names keep room";
}

// Renaming.

TEST_F(LayerNSOutlineViewTest, ADoubleClickRenames) {
  QTest::mouseDClick(outline.viewport(), Qt::LeftButton, {}, center("b", Part::name));
  EXPECT_TRUE(outline.isEditing());
  EXPECT_EQ(activeName(*document), "b");
  ASSERT_NE(editor(), nullptr);
  EXPECT_EQ(editor()->selectedText(), "b");
  const std::size_t before = records();
  typeName("Sky");
  EXPECT_FALSE(outline.isEditing());
  EXPECT_EQ(at("Sky").data().toString(), "Sky");
  EXPECT_EQ(records(), before + 1);
  EXPECT_EQ(document->undoStack.undoActionName(), "Rename");
  document->undo();
  EXPECT_EQ(at("b").data().toString(), "b");
}

TEST_F(LayerNSOutlineViewTest, ReturnEnterAndF2Rename) {
  for (const Qt::Key which : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_F2}) {
    key(which);
    ASSERT_NE(editor(), nullptr);
    EXPECT_TRUE(outline.isEditing());
    QTest::keyClick(editor(), Qt::Key_Escape);
    EXPECT_FALSE(outline.isEditing());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

TEST_F(LayerNSOutlineViewTest, TheSameNameOrNoneRecordsNothing) {
  const std::size_t before = records();
  key(Qt::Key_Return);
  typeName("d");
  EXPECT_EQ(node("d").name().value(), "d");
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  key(Qt::Key_Return);
  ASSERT_NE(editor(), nullptr);
  QTest::keyClick(editor(), Qt::Key_Delete);
  QTest::keyClick(editor(), Qt::Key_Return);
  QApplication::processEvents();
  EXPECT_EQ(node("d").name().value(), "d");
  EXPECT_EQ(records(), before);
}

TEST_F(LayerNSOutlineViewTest, TabGoesOnToTheNextName) {
  key(Qt::Key_Return);
  ASSERT_NE(editor(), nullptr);
  QTest::keyClicks(editor(), "Sky");
  QTest::keyClick(editor(), Qt::Key_Tab);
  QApplication::processEvents();
  EXPECT_EQ(treeText(*document), "Background, a, b, c, Sky");
  EXPECT_TRUE(outline.isEditing());
  EXPECT_EQ(activeName(*document), "c");
}

TEST_F(LayerNSOutlineViewTest, WhatIsTypedOutlivesANewThumbnail) {
  key(Qt::Key_Return);
  ASSERT_NE(editor(), nullptr);
  QTest::keyClicks(editor(), "Sk");
  put(layer("d")->thumbnailDirty, false);
  document->thumbnailManager->markDirty(idOf(*document, "d"));
  QTest::keyClicks(editor(), "y");
  QTest::keyClick(editor(), Qt::Key_Return);
  QApplication::processEvents();
  EXPECT_EQ(activeName(*document), "Sky");
}

TEST_F(LayerNSOutlineViewTest, ANewThumbnailLeavesTheNameSelected) {
  key(Qt::Key_Return);
  ASSERT_NE(editor(), nullptr);
  put(layer("d")->thumbnailDirty, false);
  document->thumbnailManager->markDirty(idOf(*document, "d"));
  EXPECT_EQ(editor()->selectedText(), "d");
  typeName("Sky");
  EXPECT_EQ(activeName(*document), "Sky");
}

TEST_F(LayerNSOutlineViewTest, AnotherDocumentKeepsWhatWasTypedForTheLast) {
  key(Qt::Key_Return);
  ASSERT_NE(editor(), nullptr);
  QTest::keyClicks(editor(), "Sky");
  outline.setDocument(makeDocument());
  EXPECT_EQ(activeName(*document), "Sky");
}

TEST_F(LayerNSOutlineViewTest, ARowInAClosedFolderIsNotRenamedUnseen) {
  document->addFolder("F");
  document->setExpanded(idOf(*document, "F"), false);
  document->addLayer("inner");
  QApplication::processEvents();
  key(Qt::Key_F2);
  EXPECT_EQ(editor(), nullptr);
}

TEST_F(LayerNSOutlineViewTest, AMenuThatOutlivesItsDocumentDeletesNothing) {
  QMenu menu;
  outline.fillContextMenu(menu, at("b"), Part::name);
  std::vector<QUuid> deleted;
  outline.onDeleteNode = [&](const QUuid& id) { deleted.push_back(id); };
  outline.setDocument(makeDocument());
  menu.actions().constLast()->trigger();
  EXPECT_TRUE(deleted.empty());
}

TEST_F(LayerNSOutlineViewTest, ANameTooLongForAFieldIsKeptAsItIs) {
  const QString name = QString(100000, u'x') + "\nend";
  document->rename(idOf(*document, "d"), name);
  const std::size_t before = records();
  key(Qt::Key_Return);
  ASSERT_NE(editor(), nullptr);
  QTest::keyClick(editor(), Qt::Key_Return);
  QApplication::processEvents();
  EXPECT_EQ(document->activeNode()->name().value(), name);
  EXPECT_EQ(records(), before);
  EXPECT_LT(outline.currentIndex().data().toString().size(), 100);
}

TEST_F(LayerNSOutlineViewTest, ANodeThatVanishesTakesItsFieldAlong) {
  key(Qt::Key_Return);
  ASSERT_TRUE(outline.isEditing());
  document->removeNode(idOf(*document, "d"));
  QApplication::processEvents();
  EXPECT_FALSE(outline.isEditing());
}

// The context menu.

TEST_F(LayerNSOutlineViewTest, TheMenuOfARow) {
  using Titles = std::vector<std::string>;
  EXPECT_EQ(menuTitles("b", Part::name), (Titles{"Rename", "Duplicate", "-", "Delete"}));
  document->addLayerMask(layer("b"));
  EXPECT_EQ(menuTitles("b", Part::thumbnail), (Titles{"Rename", "Duplicate", "-", "Delete"}));
  EXPECT_EQ(menuTitles("b", Part::maskThumbnail), (Titles{"Delete Layer Mask", "Apply Layer Mask"}));
  QMenu nowhere;
  outline.fillContextMenu(nowhere, {}, Part::none);
  EXPECT_TRUE(nowhere.isEmpty());
}

TEST_F(LayerNSOutlineViewTest, TheMenusItemsCarryAndActOnTheNode) {
  QAction* duplicate = menuItem(center("b", Part::name), "Duplicate");
  ASSERT_NE(duplicate, nullptr);
  EXPECT_EQ(duplicate->data().toUuid(), idOf(*document, "b"));
  duplicate->trigger();
  EXPECT_EQ(treeText(*document), "Background, a, b, b Copy, c, d");
  QAction* remove = menuItem(center("c", Part::name), "Delete");
  ASSERT_NE(remove, nullptr);
  remove->trigger();
  EXPECT_EQ(treeText(*document), "Background, a, b, b Copy, d");
  QAction* rename = menuItem(center("a", Part::name), "Rename");
  ASSERT_NE(rename, nullptr);
  rename->trigger();
  EXPECT_TRUE(outline.isEditing());
  EXPECT_EQ(activeName(*document), "a");
}

TEST_F(LayerNSOutlineViewTest, TheMasksMenuActsOnTheMask) {
  document->addLayerMask(layer("b"));
  menuItem(center("b", Part::maskThumbnail), "Apply Layer Mask")->trigger();
  EXPECT_EQ(document->undoStack.undoActionName(), "Apply Layer Mask");
  document->undo();
  menuItem(center("b", Part::maskThumbnail), "Delete Layer Mask")->trigger();
  EXPECT_EQ(layer("b")->mask.value(), nullptr);
  EXPECT_EQ(document->undoStack.undoActionName(), "Remove Layer Mask");
}

TEST_F(LayerNSOutlineViewTest, TheOnlyLayerCannotBeDeletedButAFolderCan) {
  for (const char* name : {"a", "b", "c", "d"}) document->removeNode(idOf(*document, name));
  document->addFolder("F");
  QMenu ofLayer;
  outline.fillContextMenu(ofLayer, at("Background"), Part::name);
  EXPECT_FALSE(ofLayer.actions().back()->isEnabled());
  QMenu ofFolder;
  outline.fillContextMenu(ofFolder, at("F"), Part::name);
  EXPECT_TRUE(ofFolder.actions().back()->isEnabled());
}

// Screen readers, and what is painted.

TEST_F(LayerNSOutlineViewTest, ScreenReadersReachEyeLockAndChain) {
  document->addLayerMask(layer("d"));
  QApplication::processEvents();
  QAccessibleInterface* tree = QAccessible::queryAccessibleInterface(&outline);
  ASSERT_NE(tree, nullptr);
  ASSERT_NE(tree->tableInterface(), nullptr);
  EXPECT_EQ(tree->tableInterface()->rowCount(), 5);
  const auto cell = [&](int column) { return tree->tableInterface()->cellAt(0, column); };
  EXPECT_EQ(cell(LayerTreeModel::nodeColumn)->text(QAccessible::Name), "d, layer");
  EXPECT_EQ(cell(LayerTreeModel::visibilityColumn)->text(QAccessible::Name), "Visible");
  EXPECT_EQ(cell(LayerTreeModel::linkColumn)->text(QAccessible::Name), "Linked");
  EXPECT_EQ(cell(LayerTreeModel::lockColumn)->text(QAccessible::Name), "Unlocked");
  EXPECT_TRUE(cell(LayerTreeModel::visibilityColumn)->state().checkable);
  EXPECT_TRUE(cell(LayerTreeModel::visibilityColumn)->state().checked);
  EXPECT_EQ(cell(LayerTreeModel::lockColumn)->rect().center(),
            outline.viewport()->mapToGlobal(center("d", Part::lock)));
}

TEST_F(LayerNSOutlineViewTest, TheScrollBarHasTheListsName) {
  EXPECT_EQ(outline.verticalScrollBar()->accessibleName(), outline.accessibleName());
  EXPECT_EQ(outline.accessibleName(), "Layers");
}

TEST_F(LayerNSOutlineViewTest, TooltipsTellWhatPartsDoAndWholeNames) {
  const auto helpAt = [&](const QPoint& point) {
    QHelpEvent event(QEvent::ToolTip, point, outline.viewport()->mapToGlobal(point));
    QApplication::sendEvent(outline.viewport(), &event);
    return QToolTip::text();
  };
  EXPECT_TRUE(helpAt(center("b", Part::visibility)).contains("Hide (Space)"));
  const QString name = "<b>a name that is much too long for the room in its row</b>";
  document->rename(idOf(*document, "b"), name);
  EXPECT_TRUE(helpAt(center(name, Part::name)).contains("&lt;b&gt;a name"));
}

}  // namespace
}  // namespace orvanel
