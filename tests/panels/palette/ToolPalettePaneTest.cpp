#include "panels/palette/ToolPalettePane.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QTest>

#include "panels/palette/ActiveTooltip.h"
#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

using testing::ElementsAre;

class ToolPalettePaneTest : public testing::Test {
 protected:
  ToolPalettePaneTest() {
    tools.switchToDocument(document);
    pane.setDocument(document);
    pane.show();
    QApplication::setActiveWindow(&pane);
  }
  ~ToolPalettePaneTest() override {
    while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  }

  [[nodiscard]] ToolSlotButton& buttonOf(Tool tool) const {
    for (ToolSlotButton* button : pane.buttons()) {
      for (const Tool member : button->slot().tools()) {
        if (member == tool) return *button;
      }
    }
    throw std::out_of_range("no slot has this tool");
  }
  [[nodiscard]] std::vector<Tool> selectedTools() const {
    std::vector<Tool> selected;
    for (const ToolSlotButton* button : pane.buttons()) {
      if (button->isSelected()) selected.push_back(button->shownTool());
    }
    return selected;
  }
  static void press(ToolSlotButton& button, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mousePress(&button, Qt::LeftButton, modifiers);
  }
  static void release(ToolSlotButton& button) { QTest::mouseRelease(&button, Qt::LeftButton); }
  static void click(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton); }
  /// Holds the button until its menu opens, without waiting that long.
  static bool holdUntilMenu(ToolSlotButton& button) {
    button.holdTimer().setInterval(1);
    press(button);
    return QTest::qWaitFor([&button] { return button.menu()->isVisible(); });
  }
  static void choose(ToolSlotButton& button, int index) {
    const QRect item = button.menu()->actionGeometry(button.menu()->actions()[index]);
    QTest::mouseClick(button.menu(), Qt::LeftButton, {}, item.center());
  }

  ToolState tools;
  DocumentPtr document =
      Document::create(QStringLiteral("Test"), 8, 8, ColorMode::rgb8, MetalContext::shared());
  ToolPalettePane pane{tools};
  ToolSlotButton& marquees = buttonOf(Tool::rectangleSelect);
};

TEST_F(ToolPalettePaneTest, HasAButtonForEachSlotInOrder) {
  ASSERT_EQ(pane.buttons().size(), toolSlots().size());
  int bottom = 0;
  for (std::size_t index = 0; index < toolSlots().size(); ++index) {
    EXPECT_EQ(pane.buttons()[index]->slot(), toolSlots()[index]);
    EXPECT_GE(pane.buttons()[index]->y(), bottom);
    bottom = pane.buttons()[index]->geometry().bottom();
  }
}

TEST_F(ToolPalettePaneTest, APressSelectsASingleToolAtOnce) {
  ToolSlotButton& wand = buttonOf(Tool::magicWand);
  press(wand);
  EXPECT_EQ(tools.currentTool(), Tool::magicWand);
  EXPECT_EQ(document->selectedTool.value(), Tool::magicWand);
  EXPECT_THAT(selectedTools(), ElementsAre(Tool::magicWand));
  int toldAfterPress = 0;
  const auto subscription = NotificationCenter::standard().observe(
      notification::toolChanged, [&](const std::any&) { ++toldAfterPress; });
  release(wand);
  EXPECT_EQ(toldAfterPress, 0) << "the release selects nothing more";
}

TEST_F(ToolPalettePaneTest, HoldingAGroupOpensItsMenuAndTheReleaseSelectsNothing) {
  EXPECT_EQ(marquees.holdTimer().interval(), 300);
  ASSERT_TRUE(holdUntilMenu(marquees));
  EXPECT_EQ(marquees.menu()->geometry().topLeft(), marquees.mapToGlobal(QPoint(0, marquees.height())));
  release(marquees);
  EXPECT_EQ(tools.currentTool(), Tool::hand);
  EXPECT_TRUE(marquees.menu()->isVisible());
  marquees.menu()->close();
  EXPECT_FALSE(marquees.isDown());
  EXPECT_EQ(tools.currentTool(), Tool::hand);
}

TEST_F(ToolPalettePaneTest, ReleasingAGroupInTimeSelectsItsShownToolWithoutAMenu) {
  press(marquees);
  EXPECT_TRUE(marquees.holdTimer().isActive());
  EXPECT_EQ(tools.currentTool(), Tool::hand) << "a group waits for the release";
  release(marquees);
  EXPECT_FALSE(marquees.holdTimer().isActive());
  EXPECT_FALSE(marquees.menu()->isVisible());
  EXPECT_EQ(tools.currentTool(), Tool::rectangleSelect);
}

TEST_F(ToolPalettePaneTest, APressOpensNothingBeforeItsTimeAndNothingAfterItsRelease) {
  constexpr int aWhile = 20;
  marquees.holdTimer().setInterval(100000);
  press(marquees);
  QTest::qWait(aWhile);
  release(marquees);
  EXPECT_EQ(tools.currentTool(), Tool::rectangleSelect);
  tools.selectTool(Tool::hand);
  marquees.holdTimer().setInterval(1);
  press(marquees);
  release(marquees);
  QTest::qWait(aWhile);
  EXPECT_EQ(tools.currentTool(), Tool::rectangleSelect);
  EXPECT_FALSE(marquees.menu()->isVisible());
}

TEST_F(ToolPalettePaneTest, AQuickClickDoesNotCycle) {
  tools.selectVariant(marquees.slot(), Tool::ellipseSelect);
  click(marquees);
  click(marquees);
  EXPECT_EQ(tools.currentTool(), Tool::ellipseSelect);
}

TEST_F(ToolPalettePaneTest, AQuickClickBringsBackTheRememberedVariant) {
  tools.selectVariant(marquees.slot(), Tool::ellipseSelect);
  tools.selectTool(Tool::move);
  click(marquees);
  EXPECT_EQ(tools.currentTool(), Tool::ellipseSelect);
}

TEST_F(ToolPalettePaneTest, AQuickClickAfterTheMenuSelectsAgain) {
  ASSERT_TRUE(holdUntilMenu(marquees));
  release(marquees);
  marquees.menu()->close();
  marquees.holdTimer().setInterval(100000);
  click(marquees);
  EXPECT_EQ(tools.currentTool(), Tool::rectangleSelect);
}

TEST_F(ToolPalettePaneTest, TheMenuListsTheGroupsToolsWithPicturesAndKeys) {
  const QList<QAction*> items = marquees.menu()->actions();
  ASSERT_EQ(items.size(), 2);
  EXPECT_EQ(items[0]->text(), "Rectangle Select");
  EXPECT_EQ(items[1]->text(), "Ellipse Select");
  for (const QAction* item : items) {
    const QImage picture = item->icon().pixmap(16).toImage();
    EXPECT_FALSE(picture.isNull());
    EXPECT_NE(item->icon().pixmap(16, QIcon::Active).toImage(), picture) << "light when highlighted";
    EXPECT_EQ(item->shortcut(), QKeySequence(Qt::Key_M));
    EXPECT_EQ(item->shortcutContext(), Qt::WidgetShortcut) << "the key acts elsewhere";
  }
}

TEST_F(ToolPalettePaneTest, ChoosingFromTheMenuStoresTheVariantAndSelectsIt) {
  ASSERT_TRUE(holdUntilMenu(marquees));
  release(marquees);
  choose(marquees, 1);
  EXPECT_EQ(tools.currentTool(), Tool::ellipseSelect);
  EXPECT_EQ(document->selectedVariants.value().value(marquees.slot().identity()), Tool::ellipseSelect);
  EXPECT_EQ(marquees.shownTool(), Tool::ellipseSelect);
  EXPECT_EQ(marquees.accessibleName(), "Ellipse Select");
}

TEST_F(ToolPalettePaneTest, TheMenuOpensAtOnceByTheRightButtonOrAlt) {
  QContextMenuEvent rightClick(QContextMenuEvent::Mouse, QPoint(5, 5), marquees.mapToGlobal(QPoint(5, 5)));
  QApplication::sendEvent(&marquees, &rightClick);
  EXPECT_TRUE(marquees.menu()->isVisible());
  marquees.menu()->close();

  press(marquees, Qt::AltModifier);
  EXPECT_TRUE(marquees.menu()->isVisible());
  release(marquees);
  EXPECT_EQ(tools.currentTool(), Tool::hand);
}

TEST_F(ToolPalettePaneTest, TheRightButtonSelectsNothing) {
  QTest::mouseClick(&buttonOf(Tool::magicWand), Qt::RightButton);
  QTest::mouseClick(&marquees, Qt::RightButton);
  EXPECT_EQ(tools.currentTool(), Tool::hand);
}

TEST_F(ToolPalettePaneTest, FreeTransformAndBrushHaveNoButton) {
  tools.selectTool(Tool::freeTransform);
  EXPECT_THAT(selectedTools(), ElementsAre());
  tools.selectTool(Tool::brush);
  EXPECT_THAT(selectedTools(), ElementsAre());
}

TEST_F(ToolPalettePaneTest, ATemporaryToolIsShownForItsTime) {
  tools.selectTool(Tool::move);
  tools.pushTool(Tool::hand);
  EXPECT_THAT(selectedTools(), ElementsAre(Tool::hand));
  tools.popTool();
  EXPECT_THAT(selectedTools(), ElementsAre(Tool::move));
}

TEST_F(ToolPalettePaneTest, AnotherDocumentBringsItsToolAndVariants) {
  tools.selectVariant(marquees.slot(), Tool::ellipseSelect);
  const DocumentPtr other =
      Document::create(QStringLiteral("Other"), 8, 8, ColorMode::rgb8, MetalContext::shared());
  tools.switchToDocument(other);
  EXPECT_THAT(selectedTools(), ElementsAre(Tool::hand));
  EXPECT_EQ(marquees.shownTool(), Tool::rectangleSelect);
  EXPECT_EQ(marquees.toolTip(), "Rectangle Select (M)");
  tools.switchToDocument(document);
  EXPECT_THAT(selectedTools(), ElementsAre(Tool::ellipseSelect));
}

TEST_F(ToolPalettePaneTest, WithoutADocumentTheButtonsAreDisabled) {
  pane.setDocument(nullptr);
  for (ToolSlotButton* button : pane.buttons()) {
    EXPECT_FALSE(button->isEnabled());
    click(*button);
  }
  EXPECT_EQ(tools.currentTool(), Tool::hand);
  pane.setDocument(document);
  for (const ToolSlotButton* button : pane.buttons()) EXPECT_TRUE(button->isEnabled());
}

TEST_F(ToolPalettePaneTest, AHoldEndsWithTheDocument) {
  press(marquees);
  pane.setDocument(nullptr);
  EXPECT_FALSE(marquees.holdTimer().isActive());
  pane.setDocument(document);
  release(marquees);
  EXPECT_EQ(tools.currentTool(), Tool::hand);
}

TEST_F(ToolPalettePaneTest, APressedOrSelectedButtonLooksDifferent) {
  ToolSlotButton& wand = buttonOf(Tool::magicWand);
  const QImage plain = wand.grab().toImage();
  press(wand);
  const QImage pressed = wand.grab().toImage();
  EXPECT_NE(pressed, plain);
  release(wand);
  EXPECT_EQ(wand.grab().toImage(), pressed) << "selected looks as pressed";
  tools.selectTool(Tool::hand);
  EXPECT_EQ(wand.grab().toImage(), plain);
  pane.setDocument(nullptr);
  EXPECT_NE(wand.grab().toImage(), plain);
}

TEST_F(ToolPalettePaneTest, OnlyAGroupHasTheMarkInItsCorner) {
  const auto hasMark = [](ToolSlotButton& button) {
    const QImage picture = button.grab().toImage();
    return picture.pixelColor(26, 26).lightness() < 128;
  };
  EXPECT_TRUE(hasMark(marquees));
  EXPECT_TRUE(hasMark(buttonOf(Tool::lassoSelect)));
  EXPECT_FALSE(hasMark(buttonOf(Tool::zoom)));
}

TEST_F(ToolPalettePaneTest, KeysOperateTheButtons) {
  marquees.setFocus(Qt::TabFocusReason);
  QTest::keyClick(&marquees, Qt::Key_Space);
  EXPECT_EQ(tools.currentTool(), Tool::rectangleSelect);
  QTest::keyClick(&marquees, Qt::Key_Right);
  ASSERT_TRUE(marquees.menu()->isVisible());
  EXPECT_EQ(marquees.menu()->activeAction(), marquees.menu()->actions()[0]);
  QTest::keyClick(marquees.menu(), Qt::Key_Down);
  QTest::keyClick(marquees.menu(), Qt::Key_Return);
  EXPECT_EQ(tools.currentTool(), Tool::ellipseSelect);
  QTest::keyClick(&marquees, Qt::Key_Down, Qt::AltModifier);
  EXPECT_TRUE(marquees.menu()->isVisible());
}

TEST_F(ToolPalettePaneTest, AClickLeavesTheKeyboardWhereItWas) {
  QLineEdit elsewhere(&pane);
  elsewhere.show();
  elsewhere.setFocus();
  click(buttonOf(Tool::magicWand));
  click(pane.swatches().swapButton());
  EXPECT_EQ(QApplication::focusWidget(), &elsewhere);
}

TEST_F(ToolPalettePaneTest, AssistiveToolsSeeNamesAndWhatIsSelected) {
  tools.selectTool(Tool::zoom);
  const QAccessibleInterface* zoom = QAccessible::queryAccessibleInterface(&buttonOf(Tool::zoom));
  EXPECT_EQ(zoom->text(QAccessible::Name), "Zoom");
  EXPECT_TRUE(zoom->state().checked);
  const QAccessibleInterface* hand = QAccessible::queryAccessibleInterface(&buttonOf(Tool::hand));
  EXPECT_FALSE(hand->state().checked);
}

TEST_F(ToolPalettePaneTest, AssistiveToolsChooseAToolAndAskForAGroupsTools) {
  const auto doAction = [](QWidget& button, const QString& action) {
    QAccessible::queryAccessibleInterface(&button)->actionInterface()->doAction(action);
  };
  doAction(buttonOf(Tool::zoom), QAccessibleActionInterface::pressAction());
  EXPECT_THAT(selectedTools(), ElementsAre(Tool::zoom));
  EXPECT_EQ(tools.currentTool(), Tool::zoom);
  doAction(marquees, QAccessibleActionInterface::showMenuAction());
  EXPECT_TRUE(marquees.menu()->isVisible());
}

TEST_F(ToolPalettePaneTest, TheTooltipShowsAtOnceWithNameAndKey) {
  const ActiveTooltipView& tip = pane.tooltip().view();
  EXPECT_FALSE(tip.isVisible());
  ToolSlotButton& zoom = buttonOf(Tool::zoom);
  QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
  QApplication::sendEvent(&zoom, &enter);
  ASSERT_TRUE(tip.isVisible());
  EXPECT_EQ(tip.tooltipText(), "Zoom (Z)");
  EXPECT_GT(tip.geometry().left(), zoom.mapToGlobal(zoom.rect().topRight()).x());
  EXPECT_TRUE(tip.windowFlags().testFlag(Qt::WindowTransparentForInput));
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&zoom, &leave);
  EXPECT_FALSE(tip.isVisible());
}

TEST_F(ToolPalettePaneTest, APressHidesTheTooltip) {
  QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
  QApplication::sendEvent(&marquees, &enter);
  press(marquees);
  EXPECT_FALSE(pane.tooltip().view().isVisible());
}

TEST_F(ToolPalettePaneTest, FitsASmallScreen) {
  EXPECT_LE(pane.minimumSizeHint().height(), 480);
}

}  // namespace
}  // namespace orvanel
