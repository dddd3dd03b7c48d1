// Where the keyboard is in the main window, and where it goes.
#include <QAbstractButton>
#include <QLineEdit>
#include <QTest>
#include <set>

#include "AppFixture.h"
#include "canvas/CanvasPaneView.h"
#include "panels/controls/SliderDropdown.h"
#include "panels/controls/SymbolButton.h"
#include "panels/inspector/NodePropertiesSection.h"
#include "panels/layers/LayerNSOutlineView.h"

namespace orvanel {
namespace {

class FocusTest : public AppFixture {
 protected:
  FocusTest() {
    showWindow();
    QApplication::setActiveWindow(window.get());
    document = addDocument(QStringLiteral("Photo"));
    QApplication::processEvents();
  }

  ScrollableMTKView& canvas() {
    return window->contentView().canvasPane().canvasView().container().mtkView();
  }
  SliderDropdown& opacity() { return *panel<NodePropertiesSection>()->findChild<SliderDropdown*>(); }
  LayerNSOutlineView& layers() { return *panel<LayerNSOutlineView>(); }
  template <typename Panel>
  Panel* panel() {
    return window->findChild<Panel*>();
  }

  void clickOnOpacity() {
    const QRect button(opacity().button().mapTo(&opacity(), QPoint()), opacity().button().size());
    QTest::mouseClick(&opacity(), Qt::LeftButton, {}, {button.left() - 12, button.center().y()});
    ASSERT_EQ(focus(), &opacity().field());
  }
  /// By a double click on the name of the only layer; its field.
  QLineEdit* renameByMouse() {
    const QModelIndex row = layers().treeModel().index(0, 0);
    const QPoint name = layers().rectOf(row, LayerRowPart::name).center();
    QTest::mouseClick(layers().viewport(), Qt::LeftButton, {}, name);
    QTest::mouseDClick(layers().viewport(), Qt::LeftButton, {}, name);
    return qobject_cast<QLineEdit*>(layers().indexWidget(row));
  }
  [[nodiscard]] static QWidget* focus() { return QApplication::focusWidget(); }
  static void press(int key) { QTest::keyClick(focus(), static_cast<Qt::Key>(key)); }
  [[nodiscard]] std::string nameOfArea() const {
    for (const QWidget* area = focus(); area != nullptr; area = area->parentWidget()) {
      if (!area->accessibleName().isEmpty() && area->focusPolicy() == Qt::NoFocus) {
        return area->accessibleName().toStdString();
      }
    }
    return "";
  }

  DocumentPtr document;
};

TEST_F(FocusTest, AnOpenedDocumentsCanvasHasTheKeyboard) {
  EXPECT_EQ(focus(), &canvas());
}

TEST_F(FocusTest, ReturnInAFieldThatWasClickedTakesTheNumberAndGivesTheKeyboardBackToTheCanvas) {
  clickOnOpacity();
  QTest::keyClicks(focus(), QStringLiteral("40"));
  press(Qt::Key_Return);
  EXPECT_EQ(document->activeLayer()->opacity.value(), 0.4F);
  EXPECT_EQ(focus(), &canvas());
  press(Qt::Key_W);
  EXPECT_EQ(state.toolState.currentTool(), Tool::magicWand);
}

TEST_F(FocusTest, EscapeInAFieldThatWasClickedGivesTheKeyboardBackToTheCanvas) {
  clickOnOpacity();
  QTest::keyClicks(focus(), QStringLiteral("40"));
  press(Qt::Key_Escape);
  EXPECT_EQ(document->activeLayer()->opacity.value(), 1.0F);
  EXPECT_EQ(focus(), &canvas());
}

TEST_F(FocusTest, AFieldGivesTheKeyboardToTheCanvasEvenIfAListHadItBefore) {
  layers().setFocus();
  clickOnOpacity();
  press(Qt::Key_Return);
  EXPECT_EQ(focus(), &canvas());
}

TEST_F(FocusTest, AFieldThatIsOpenedByKeysGivesTheKeyboardBackToItsControl) {
  opacity().setFocus(Qt::TabFocusReason);
  press(Qt::Key_Return);
  QTest::keyClicks(focus(), QStringLiteral("40"));
  press(Qt::Key_Return);
  EXPECT_EQ(document->activeLayer()->opacity.value(), 0.4F);
  EXPECT_EQ(focus(), &opacity());
}

TEST_F(FocusTest, ANameThatIsEditedByADoubleClickGivesTheKeyboardBackToTheCanvas) {
  for (const int key : {Qt::Key_Return, Qt::Key_Escape}) {
    QLineEdit* field = renameByMouse();
    ASSERT_NE(field, nullptr);
    QTest::keyClicks(field, QStringLiteral("Sky"));
    press(key);
    EXPECT_TRUE(waitUntil([this] { return !layers().isEditing(); }));
    EXPECT_EQ(focus(), &canvas());
    EXPECT_EQ(document->activeLayer()->name.value(), "Sky") << "Escape leaves the name that was typed first";
  }
}

TEST_F(FocusTest, ANameThatIsEditedByKeysGivesTheKeyboardBackToTheList) {
  layers().setFocus(Qt::TabFocusReason);
  press(Qt::Key_F2);
  QTest::keyClicks(focus(), QStringLiteral("Sky"));
  press(Qt::Key_Return);
  EXPECT_TRUE(waitUntil([this] { return !layers().isEditing(); }));
  EXPECT_EQ(document->activeLayer()->name.value(), "Sky");
  EXPECT_EQ(focus(), &layers());
}

TEST_F(FocusTest, F6GoesThroughTheAreasAndBackToTheCanvas) {
  state.toolState.selectTool(Tool::magicWand);
  std::vector<std::string> areas;
  for (int step = 0; step < 4; ++step) {
    press(Qt::Key_F6);
    areas.push_back(nameOfArea());
  }
  EXPECT_THAT(areas, testing::ElementsAre("Tool options", "Tools", "Document", "canvas"));
  EXPECT_EQ(focus(), &canvas());
}

TEST_F(FocusTest, ControlF6ReachesEveryControlOfTheSideColumns) {
  std::set<const QWidget*> reached;
  const auto step = [](Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(focus(), Qt::Key_F6, Qt::ControlModifier | modifiers);
  };
  do {
    step(Qt::NoModifier);
  } while (reached.insert(focus()).second);
  for (const char* area : {"toolPalette", "inspector"}) {
    for (const QWidget* control :
         window->findChild<QWidget*>(QLatin1String(area))->findChildren<QWidget*>()) {
      const bool isStop = (control->focusPolicy() & Qt::TabFocus) != 0 && control->focusProxy() == nullptr;
      if (!isStop || !control->isVisible() || !control->isEnabled()) continue;
      EXPECT_TRUE(reached.contains(control)) << control->accessibleName().toStdString();
    }
  }
  const QWidget* before = focus();
  step(Qt::NoModifier);
  step(Qt::ShiftModifier);
  EXPECT_EQ(focus(), before);
}

TEST_F(FocusTest, TabStaysWithTheDocumentsWhileAControlOfAPanelHasTheKeyboard) {
  addDocument(QStringLiteral("Second"));
  QApplication::processEvents();
  ASSERT_NE(state.windowState.activeDocument(), document);
  layers().setFocus();
  press(Qt::Key_Tab);
  EXPECT_EQ(state.windowState.activeDocument(), document);
}

TEST_F(FocusTest, TabGoesThroughTheLinksOfTheEmptyWindow) {
  state.recentDocuments.clear();
  state.windowState.closeAllDocuments();
  QApplication::processEvents();
  NoDocumentView& placeholder = window->contentView().canvasPane().noDocumentView();
  ASSERT_EQ(focus(), &placeholder.newLink());
  press(Qt::Key_Tab);
  EXPECT_EQ(focus(), &placeholder.openLink());
  QTest::keyClick(focus(), Qt::Key_Tab, Qt::ShiftModifier);
  EXPECT_EQ(focus(), &placeholder.newLink());
  for (int step = 0; step < 20; ++step) {
    press(Qt::Key_Tab);
    ASSERT_NE(focus(), nullptr);
    EXPECT_TRUE(focus()->isVisible() && focus()->isEnabled());
  }
}

}  // namespace
}  // namespace orvanel
