// What the panels of the main window are connected with, tried by mouse and keys.
#include "app/SidePanels.h"

#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QTest>

#include "AppFixture.h"
#include "canvas/CanvasPaneView.h"
#include "model/ModelSupport.h"
#include "panels/color/HexField.h"
#include "panels/controls/ValueField.h"
#include "panels/inspector/DocumentInfoSection.h"
#include "panels/inspector/NodePropertiesSection.h"
#include "panels/layers/LayerNSOutlineView.h"

namespace orvanel {
namespace {

using test::idOf;
using test::treeText;

constexpr DisplayColor red{1.0F, 0.0F, 0.0F, 1.0F};
constexpr DisplayColor cyan{0.0F, 1.0F, 1.0F, 1.0F};

class SidePanelsTest : public AppFixture {
 protected:
  SidePanelsTest() {
    showWindow();
    QApplication::setActiveWindow(window.get());
    document = addDocument(QStringLiteral("Photo"));
    QApplication::processEvents();
  }

  SidePanels& panels() { return window->contentView().panels(); }
  ColorPickerWindow& picker() { return panels().colorPicker(); }
  LayerNSOutlineView& outline() { return panels().layers->outline(); }
  static void click(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton); }
  void clickSwatch(Swatch which) {
    ColorSwatches& swatches = panels().palette->swatches();
    // The background's swatch lies partly under the other.
    const QPoint corner = which == Swatch::foreground ? QPoint(3, 3) : QPoint(20, 20);
    QTest::mouseClick(&swatches.swatch(which), Qt::LeftButton, {}, corner);
  }
  void typeColor(const QString& digits) {
    QApplication::setActiveWindow(&picker());
    ValueField& field = picker().content().hex->field();
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, digits);
  }
  void pressInWindow(Qt::Key key) {
    QApplication::setActiveWindow(window.get());
    ScrollableMTKView& canvas = window->contentView().canvasPane().canvasView().container().mtkView();
    canvas.setFocus();
    QTest::keyClick(&canvas, key);
  }
  [[nodiscard]] QString pickedDigits() { return picker().content().hex->field().text(); }

  DocumentPtr document;
};

TEST_F(SidePanelsTest, AllPanelsShowTheActiveDocument) {
  const auto expectShown = [this](const DocumentPtr& shown) {
    EXPECT_EQ(panels().palette->document(), shown);
    EXPECT_EQ(panels().inspector->document(), shown);
    EXPECT_EQ(panels().layers->document(), shown);
    EXPECT_EQ(outline().treeModel().document(), shown);
    EXPECT_EQ(panels().inspector->noDocument().isVisible(), shown == nullptr);
    for (const ToolSlotButton* button : panels().palette->buttons()) {
      EXPECT_EQ(button->isEnabled(), shown != nullptr);
    }
  };
  expectShown(document);
  const DocumentPtr second = addDocument(QStringLiteral("Second"));
  QApplication::processEvents();
  expectShown(second);
  state.windowState.switchToDocument(document->id);
  QApplication::processEvents();
  expectShown(document);
  state.windowState.closeAllDocuments();
  QApplication::processEvents();
  expectShown(nullptr);
  EXPECT_EQ(panels().inspector->noDocument().text(), "No Document");
  EXPECT_EQ(outline().treeModel().rowCount(), 0);
}

TEST_F(SidePanelsTest, TheBarsButtonsWorkOnTheActiveDocument) {
  const DocumentPtr second = addDocument(QStringLiteral("Second"));
  QApplication::processEvents();
  click(*panels().layers->addLayerButton());
  click(*panels().layers->addFolderButton());
  EXPECT_EQ(treeText(*second), "Background, Layer, Folder[]");
  EXPECT_EQ(treeText(*document), "Background");
  click(*panels().layers->deleteButton());
  EXPECT_EQ(treeText(*second), "Background, Layer");
  click(*panels().layers->maskButton());
  EXPECT_EQ(second->undoStack.undoActionName(), "Add Layer Mask");
}

TEST_F(SidePanelsTest, DeletingFromARowsMenuCanBeUndoneAndSparesTheLastLayer) {
  document->addLayer(QStringLiteral("Sky"));
  const auto deleteByMenu = [this](const QString& name) {
    QMenu menu;
    outline().fillContextMenu(menu, outline().treeModel().indexOf(idOf(*document, name)), LayerRowPart::name);
    menu.actions().constLast()->trigger();
  };
  deleteByMenu(QStringLiteral("Background"));
  EXPECT_EQ(treeText(*document), "Sky");
  deleteByMenu(QStringLiteral("Sky"));
  EXPECT_EQ(treeText(*document), "Sky");
  document->undo();
  EXPECT_EQ(treeText(*document), "Background, Sky");
}

TEST_F(SidePanelsTest, ThumbnailsAreAsLargeAsTheUsersDefault) {
  const QModelIndex row = outline().treeModel().index(0, 0);
  EXPECT_EQ(outline().rectOf(row, LayerRowPart::thumbnail).width(), state.userDefaults.layerThumbnailSize());
}

TEST_F(SidePanelsTest, TheColumnIsAsWideAsTheUserLeftIt) {
  QWidget& handle = *window->contentView().findChild<QSplitter*>()->handle(1);
  const auto widthOfColumn = [this] { return panels().inspector->width(); };
  const int before = widthOfColumn();
  QTest::mousePress(&handle, Qt::LeftButton);
  QTest::mouseMove(&handle, QPoint(-60, 0));
  QTest::mouseRelease(&handle, Qt::LeftButton);
  const int chosen = widthOfColumn();
  EXPECT_GT(chosen, before);
  showWindow();
  EXPECT_EQ(widthOfColumn(), chosen);
}

TEST_F(SidePanelsTest, ASwatchOpensThePickerForItsOwnColor) {
  document->setForegroundColor(red);
  document->setBackgroundColor(cyan);
  clickSwatch(Swatch::background);
  ASSERT_TRUE(picker().isVisible());
  EXPECT_EQ(picker().content().name->text(), "Background Color");
  EXPECT_EQ(pickedDigits(), "00FFFF");
  typeColor(QStringLiteral("00FF00"));
  EXPECT_EQ(document->backgroundColor.value(), (DisplayColor{0.0F, 1.0F, 0.0F, 1.0F})) << "at once";
  EXPECT_EQ(document->foregroundColor.value(), red);
  clickSwatch(Swatch::foreground);
  EXPECT_EQ(picker().content().name->text(), "Foreground Color");
  EXPECT_EQ(pickedDigits(), "FF0000");
  typeColor(QStringLiteral("0000FF"));
  click(*picker().content().cancelButton);
  EXPECT_EQ(document->foregroundColor.value(), red);
  EXPECT_EQ(document->backgroundColor.value(), (DisplayColor{0.0F, 1.0F, 0.0F, 1.0F})) << "was kept";
}

TEST_F(SidePanelsTest, ThePickerFollowsTheKeysThatChangeItsColor) {
  document->setForegroundColor(red);
  document->setBackgroundColor(cyan);
  clickSwatch(Swatch::foreground);
  pressInWindow(Qt::Key_X);
  EXPECT_EQ(document->foregroundColor.value(), cyan);
  EXPECT_EQ(pickedDigits(), "00FFFF");
  document->setBackgroundColor(DisplayColor::white());
  EXPECT_EQ(pickedDigits(), "00FFFF") << "the other colour isn't its own";
  pressInWindow(Qt::Key_D);
  EXPECT_EQ(pickedDigits(), "000000");
  click(*picker().content().okButton);
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::black());
}

TEST_F(SidePanelsTest, AnotherDocumentKeepsTheColorThatWasBeingChosen) {
  document->setForegroundColor(red);
  clickSwatch(Swatch::foreground);
  typeColor(QStringLiteral("00FFFF"));
  const DocumentPtr second = addDocument(QStringLiteral("Second"));
  QApplication::processEvents();
  EXPECT_FALSE(picker().isVisible());
  EXPECT_EQ(document->foregroundColor.value(), cyan);
  EXPECT_EQ(second->foregroundColor.value(), DisplayColor::black());
}

TEST_F(SidePanelsTest, WithNothingOpenSwatchesAskForNothing) {
  state.windowState.closeAllDocuments();
  QApplication::processEvents();
  clickSwatch(Swatch::foreground);
  EXPECT_FALSE(picker().isVisible());
}

TEST_F(SidePanelsTest, OpacityAndBlendModeAreThoseOfTheActiveNode) {
  document->addFolder(QStringLiteral("Group"));
  QApplication::processEvents();
  EXPECT_EQ(panels().inspector->nodeProperties().title(), "Folder");
  document->selectNode(idOf(*document, QStringLiteral("Background")));
  EXPECT_EQ(panels().inspector->nodeProperties().title(), "Layer");
}

}  // namespace
}  // namespace orvanel
