// Every item of the menu bar on the real window: what it does, and when it can.
#include <QTest>

#include "AppFixture.h"
#include "canvas/CanvasPaneView.h"
#include "model/LevelsAdjustment.h"
#include "panels/controls/DirectSlider.h"
#include "panels/levels/LevelsWindow.h"
#include "raster/MemoryBudget.h"
#include "tools/selection/SelectionGesture.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t white = 0xFFFFFFFFU;

class MenuBarTest : public AppFixture {
 protected:
  MenuBarTest() {
    showWindow();
    QApplication::setActiveWindow(window.get());
    document = addDocument(QStringLiteral("One"));
    QApplication::processEvents();
    focusCanvas();
  }

  void focusCanvas() { window->contentView().canvasPane().canvasView().container().mtkView().setFocus(); }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
    QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    QApplication::processEvents();
  }
  [[nodiscard]] bool isEnabled(const char* menuTitle, const char* title) const {
    return item(menuTitle, title)->isEnabled();
  }
  [[nodiscard]] std::uint64_t pixel(int x = 3, int y = 3) const {
    return document->activeLayer()->texture.value()->pixelAt(x, y);
  }

  DocumentPtr document;
};

TEST_F(MenuBarTest, WithoutADocumentOnlyWhatNeedsNoneIsEnabled) {
  state.windowState.closeAllDocuments();
  QApplication::processEvents();
  std::vector<std::string> enabled;
  for (const QAction* entry : window->menuBar()->actions()) {
    for (const QAction* action : entry->menu()->actions()) {
      const bool isItem = !action->isSeparator() && action->menu() == nullptr;
      if (isItem && action->isEnabled()) enabled.push_back(action->text().toStdString());
    }
  }
  EXPECT_THAT(enabled,
              ElementsAre("New...", "Open...", "Quit", "Full Screen", "Keyboard Shortcuts", "About Orvanel"));
  for (const char* title : {"RGB 8-bit", "Levels...", "Invert"}) EXPECT_FALSE(isEnabled("Image", title));
}

TEST_F(MenuBarTest, ALetterChoosesAnItemOfAnOpenMenu) {
  document->invertActive();
  ASSERT_NE(pixel(), white);
  menu("Edit")->popup(QPoint());
  EXPECT_EQ(menu("Edit")->actions().constFirst()->text(), "&Undo Invert");
  QTest::keyClick(menu("Edit"), Qt::Key_U);
  EXPECT_EQ(pixel(), white);
  EXPECT_FALSE(menu("Edit")->isVisible());
}

TEST_F(MenuBarTest, UndoAndRedoNameWhatTheyDo) {
  QAction* undo = item("Edit", "Undo");
  QAction* redo = item("Edit", "Redo");
  EXPECT_FALSE(undo->isEnabled());
  EXPECT_FALSE(redo->isEnabled());
  document->invertActive();
  EXPECT_EQ(undo->text(), "Undo Invert");
  EXPECT_TRUE(undo->isEnabled());
  document->clearActive();
  EXPECT_EQ(undo->text(), "Undo Clear");
  undo->trigger();
  EXPECT_EQ(undo->text(), "Undo Invert");
  EXPECT_EQ(redo->text(), "Redo Clear");
  EXPECT_TRUE(redo->isEnabled());
  undo->trigger();
  EXPECT_EQ(undo->text(), "Undo");
  EXPECT_FALSE(undo->isEnabled());
  EXPECT_EQ(pixel(), white);
  redo->trigger();
  EXPECT_NE(pixel(), white);
}

TEST_F(MenuBarTest, TheTitlesAreThoseOfTheActiveDocument) {
  document->invertActive();
  addDocument(QStringLiteral("Two"));
  QApplication::processEvents();
  EXPECT_NE(item("Edit", "Undo"), nullptr);
  EXPECT_FALSE(isEnabled("Edit", "Undo"));
  state.windowState.switchToDocument(document->id);
  QApplication::processEvents();
  EXPECT_TRUE(isEnabled("Edit", "Undo Invert"));
}

TEST_F(MenuBarTest, UndoingAnImageSizeIsCalledCanvasSize) {
  document->resizeImage(8, 6, ResampleMethod::bilinear);
  EXPECT_TRUE(isEnabled("Edit", "Undo Canvas Size"));
}

TEST_F(MenuBarTest, AnOpenTransformCanBeSavedAndUndone) {
  document->setDirty(false);
  document->setSource(path("one.tessel"), std::nullopt);
  document->invertActive();
  document->undo();
  document->setDirty(false);
  EXPECT_TRUE(isEnabled("Edit", "Redo Invert"));

  const auto transform = LayerTransform::begin(document, QStringLiteral("Move"));
  ASSERT_NE(transform, nullptr);
  EXPECT_FALSE(isEnabled("File", "Save")) << "nothing has moved yet";
  EXPECT_TRUE(isEnabled("Edit", "Redo Invert"));
  transform->translate(5, 3);
  EXPECT_TRUE(isEnabled("File", "Save"));
  EXPECT_TRUE(isEnabled("Edit", "Undo Move"));
  EXPECT_FALSE(isEnabled("Edit", "Redo"));
  transform->cancel();
  EXPECT_FALSE(isEnabled("File", "Save"));
  EXPECT_FALSE(isEnabled("Edit", "Undo"));
  EXPECT_TRUE(isEnabled("Edit", "Redo Invert"));
}

TEST_F(MenuBarTest, UndoTakesBackAnOpenTransform) {
  const auto transform = LayerTransform::begin(document, QStringLiteral("Move"));
  ASSERT_NE(transform, nullptr);
  transform->translate(5, 3);
  item("Edit", "Undo Move")->trigger();
  EXPECT_FALSE(transform->isOpen());
  EXPECT_EQ(pixel(), white);
  EXPECT_TRUE(isEnabled("Edit", "Redo Move"));
}

TEST_F(MenuBarTest, OpenLevelsCanBeSavedAndUndone) {
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  document->setSource(path("one.tessel"), std::nullopt);
  document->setDirty(false);
  press(Qt::Key_L);
  EXPECT_FALSE(isEnabled("File", "Save"));
  window->levels().content().black.slider->setValue(100);
  EXPECT_TRUE(isEnabled("File", "Save"));
  EXPECT_TRUE(isEnabled("Edit", "Undo Levels"));
  press(Qt::Key_Z);
  EXPECT_FALSE(window->levels().isVisible());
  EXPECT_TRUE(isEnabled("Edit", "Redo Levels"));
  EXPECT_TRUE(isEnabled("Edit", "Undo Fill"));
}

TEST_F(MenuBarTest, ASelectionBeingDrawnCanBeUndoneButNotSaved) {
  document->setSource(path("one.tessel"), std::nullopt);
  document->setDirty(false);
  SelectionGesture gesture(document, QStringLiteral("Rectangle Select"));
  gesture.selectShape(SelectionMode::replace, [this](Selection& selection) {
    selection.setRect({2, 2, 4, 4}, 0.0F, document->context());
  });
  EXPECT_TRUE(isEnabled("Edit", "Undo Rectangle Select"));
  EXPECT_FALSE(isEnabled("File", "Save"));
  gesture.close();
  EXPECT_TRUE(isEnabled("Edit", "Undo Rectangle Select"));
}

TEST_F(MenuBarTest, TheLevelsPanelLeavesTheKeyboardToTheCanvas) {
  press(Qt::Key_L);
  EXPECT_TRUE(window->levels().testAttribute(Qt::WA_ShowWithoutActivating));
  // The platform of the tests activates whatever is shown.
  QApplication::setActiveWindow(window.get());
  focusCanvas();
  press(Qt::Key_L);
  EXPECT_EQ(QApplication::activeWindow(), window.get());
  press(Qt::Key_V, Qt::NoModifier);
  EXPECT_EQ(state.toolState.currentTool(), Tool::move);
}

TEST_F(MenuBarTest, TheMenusKeysActFromTheLevelsPanelToo) {
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  const auto turnToLevels = [this] {
    window->levels().openFor(document);
    window->levels().content().black.slider->setValue(100);
    QApplication::setActiveWindow(&window->levels());
    window->levels().content().black.slider->setFocus();
  };
  turnToLevels();
  press(Qt::Key_Z);
  EXPECT_EQ(document->undoStack.redoActionName(), "Levels");
  EXPECT_FALSE(window->levels().isVisible());
  turnToLevels();
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  press(Qt::Key_W);
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_FALSE(window->levels().isVisible());
}

TEST_F(MenuBarTest, TheHistoryHasItsKeys) {
  document->invertActive();
  press(Qt::Key_Z);
  EXPECT_EQ(pixel(), white);
  press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_NE(pixel(), white);
}

TEST_F(MenuBarTest, CutAndCopyNeedASelectionOnALayer) {
  for (const char* title : {"Cut", "Copy"}) {
    EXPECT_FALSE(isEnabled("Edit", title));
    document->selectAll();
    EXPECT_TRUE(isEnabled("Edit", title));
    document->addFolder(QStringLiteral("Folder"));
    EXPECT_FALSE(isEnabled("Edit", title));
    document->undo();
    EXPECT_TRUE(isEnabled("Edit", title));
    document->deselect();
  }
}

TEST_F(MenuBarTest, ABlankSelectionHasNothingToCopy) {
  const std::shared_ptr<Layer> full = document->activeLayer();
  document->addLayer(QStringLiteral("Empty"));
  document->selectLayerTransparency(*document->activeLayer());
  ASSERT_NE(document->activeSelection(), nullptr);
  EXPECT_FALSE(isEnabled("Edit", "Cut"));
  EXPECT_FALSE(isEnabled("Edit", "Copy"));
  EXPECT_TRUE(isEnabled("Select", "Deselect"));
  document->selectLayerTransparency(*full);
  EXPECT_TRUE(isEnabled("Edit", "Copy"));
}

TEST_F(MenuBarTest, ClearClearsTheActiveLayer) {
  item("Edit", "Clear")->trigger();
  EXPECT_EQ(pixel(), 0U);
  document->addFolder(QStringLiteral("Folder"));
  for (const auto& [menuTitle, title] : {std::pair("Edit", "Clear"),
                                         {"Edit", "Free Transform"},
                                         {"Image", "Levels..."},
                                         {"Image", "Invert"}}) {
    EXPECT_FALSE(isEnabled(menuTitle, title)) << title;
  }
  EXPECT_TRUE(isEnabled("Layer", "Duplicate"));
}

TEST_F(MenuBarTest, FreeTransformPushesItsToolOnce) {
  press(Qt::Key_T);
  EXPECT_THAT(state.toolState.toolStack.value(), ElementsAre(Tool::hand, Tool::freeTransform));
  EXPECT_FALSE(isEnabled("Edit", "Free Transform"));
  NotificationCenter::standard().post(notification::freeTransform);
  EXPECT_THAT(state.toolState.toolStack.value(), ElementsAre(Tool::hand, Tool::freeTransform));
  state.toolState.popTool();
  EXPECT_TRUE(isEnabled("Edit", "Free Transform"));
  document->setLocked(*document->selectedNodeID.value(), true);
  EXPECT_FALSE(isEnabled("Edit", "Free Transform"));
}

TEST_F(MenuBarTest, ModeChangesTheColourModeAndMarksTheCurrentOne) {
  EXPECT_TRUE(item("Image", "RGB 8-bit")->isChecked());
  for (const auto& [title, mode] : {std::pair("RGB 16-bit", ColorMode::rgb16),
                                    {"Grayscale 8-bit", ColorMode::grayscale8},
                                    {"Grayscale 16-bit", ColorMode::grayscale16},
                                    {"RGB 8-bit", ColorMode::rgb8}}) {
    item("Image", title)->trigger();
    EXPECT_EQ(document->colorMode.value(), mode);
    EXPECT_TRUE(item("Image", title)->isChecked());
  }
  const auto records = document->undoStack.operations().size();
  item("Image", "RGB 8-bit")->trigger();
  EXPECT_EQ(document->undoStack.operations().size(), records) << "the current mode";
  document->undo();
  EXPECT_TRUE(item("Image", "Grayscale 16-bit")->isChecked());
}

TEST_F(MenuBarTest, InvertInverts) {
  press(Qt::Key_I);
  EXPECT_EQ(pixel(), 0xFF000000U);
}

TEST_F(MenuBarTest, LevelsOpensThePanel) {
  press(Qt::Key_L);
  EXPECT_TRUE(window->levels().isOpen());
  EXPECT_TRUE(window->levels().isVisible());
  EXPECT_EQ(window->levels().layerID(), document->selectedNodeID.value());
}

TEST_F(MenuBarTest, TheLevelsPanelGoesWithTheWindow) {
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  press(Qt::Key_L);
  window->levels().content().black.slider->setValue(100);
  window = nullptr;
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels");
}

TEST_F(MenuBarTest, ClosingADocumentClosesItsLevels) {
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  press(Qt::Key_L);
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  window->levels().content().black.slider->setValue(100);
  state.windowState.closeDocument(document->id);
  QApplication::processEvents();
  EXPECT_FALSE(window->levels().isOpen());
  EXPECT_FALSE(window->levels().isVisible());
}

TEST_F(MenuBarTest, CanvasSizeAddsRelativeNumbersToTheSize) {
  document->resizeCanvas(100, 100, 0, 0);
  dialogs.canvasSize = CanvasSizeEntry{QStringLiteral("-10"), QStringLiteral("20"), true, -1, 1};
  item("Image", "Canvas Size...")->trigger();
  EXPECT_EQ(document->canvasWidth.value(), 90);
  EXPECT_EQ(document->canvasHeight.value(), 120);
  EXPECT_EQ(document->undoStack.undoActionName(), "Canvas Size");
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(MenuBarTest, CanvasSizeKeepsTheOldCanvasAtItsAnchor) {
  dialogs.canvasSize = CanvasSizeEntry{QStringLiteral("20"), QStringLiteral("20"), false, 1, 1};
  item("Image", "Canvas Size...")->trigger();
  EXPECT_EQ(pixel(0, 0), 0U);
  EXPECT_EQ(pixel(19, 19), white);
}

TEST_F(MenuBarTest, ImageSizeResamplesAsChosen) {
  document->selectAll();
  dialogs.imageSize = ImageSizeEntry{QStringLiteral("32"), QStringLiteral("24"), 2};
  item("Image", "Image Size...")->trigger();
  EXPECT_EQ(document->canvasWidth.value(), 32);
  EXPECT_EQ(document->canvasHeight.value(), 24);
  EXPECT_EQ(document->activeSelection(), nullptr);
  EXPECT_TRUE(isEnabled("Edit", "Undo Canvas Size"));
}

TEST_F(MenuBarTest, ImpossibleSizesAreRefused) {
  const auto records = document->undoStack.operations().size();
  const std::pair<std::string, std::string> refusal{"Invalid Dimensions",
                                                    "Width and height must be between 1 and 16384 pixels."};
  for (const char* width : {"-16", "-17", "16369", "", "abc"}) {
    dialogs.warnings.clear();
    dialogs.canvasSize = CanvasSizeEntry{QString::fromLatin1(width), QStringLiteral("0"), true, 0, 0};
    item("Image", "Canvas Size...")->trigger();
    EXPECT_THAT(dialogs.warnings, ElementsAre(refusal)) << width;
  }
  for (const char* height : {"0", "16385", "", "abc"}) {
    dialogs.warnings.clear();
    dialogs.imageSize = ImageSizeEntry{QStringLiteral("10"), QString::fromLatin1(height), 0};
    item("Image", "Image Size...")->trigger();
    EXPECT_THAT(dialogs.warnings, ElementsAre(refusal)) << height;
  }
  EXPECT_EQ(document->undoStack.operations().size(), records);
}

TEST_F(MenuBarTest, ACancelledSizeChangesNothing) {
  const auto records = document->undoStack.operations().size();
  item("Image", "Canvas Size...")->trigger();
  item("Image", "Image Size...")->trigger();
  EXPECT_EQ(document->undoStack.operations().size(), records);
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(MenuBarTest, ASizeWithoutTheMemoryForItIsReported) {
  dialogs.canvasSize = CanvasSizeEntry{QStringLiteral("4000"), QStringLiteral("4000"), false, 0, 0};
  {
    const ScopedMemoryLimit limit(0);
    item("Image", "Canvas Size...")->trigger();
  }
  QApplication::processEvents();
  EXPECT_EQ(document->canvasWidth.value(), 16);
  ASSERT_EQ(dialogs.warnings.size(), 1U);
  EXPECT_EQ(dialogs.warnings[0].first, "Not Enough Memory");
}

TEST_F(MenuBarTest, CropNeedsASelection) {
  EXPECT_FALSE(isEnabled("Image", "Crop"));
  document->selectAll();
  EXPECT_TRUE(isEnabled("Image", "Crop"));
  item("Image", "Crop")->trigger();
  EXPECT_EQ(document->undoStack.undoActionName(), "Crop");
  EXPECT_FALSE(isEnabled("Image", "Crop")) << "cropping drops the selection";
}

TEST_F(MenuBarTest, TrimBeepsWhenThereIsNothingToTrim) {
  const auto records = document->undoStack.operations().size();
  press(Qt::Key_Period);
  EXPECT_EQ(dialogs.beeps, 1);
  EXPECT_EQ(document->undoStack.operations().size(), records);
  document->resizeCanvas(32, 24, -1, -1);
  press(Qt::Key_Period);
  EXPECT_EQ(dialogs.beeps, 1);
  EXPECT_EQ(document->canvasWidth.value(), 16);
  EXPECT_EQ(document->undoStack.undoActionName(), "Trim");
}

TEST_F(MenuBarTest, DuplicateDuplicatesTheActiveNode) {
  press(Qt::Key_J);
  EXPECT_EQ(document->activeNode()->name().value(), "Background Copy");
  document->addFolder(QStringLiteral("Folder"));
  press(Qt::Key_J);
  EXPECT_EQ(document->activeNode()->name().value(), "Folder Copy");
  document->selectNode(std::nullopt);
  EXPECT_FALSE(isEnabled("Layer", "Duplicate"));
}

TEST_F(MenuBarTest, TheSelectMenuChangesTheSelection) {
  EXPECT_TRUE(isEnabled("Select", "All"));
  EXPECT_FALSE(isEnabled("Select", "Deselect"));
  EXPECT_FALSE(isEnabled("Select", "Inverse")) << "nothing has ever been selected";
  press(Qt::Key_A);
  EXPECT_NE(document->activeSelection(), nullptr);
  EXPECT_TRUE(isEnabled("Select", "Deselect"));
  press(Qt::Key_D);
  EXPECT_EQ(document->activeSelection(), nullptr);
  EXPECT_FALSE(isEnabled("Select", "Deselect"));
  press(Qt::Key_I, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_NE(document->activeSelection(), nullptr) << "the inverse of nothing is everything";
}

TEST_F(MenuBarTest, CloseClosesTheActiveTab) {
  addDocument(QStringLiteral("Two"));
  QApplication::processEvents();
  press(Qt::Key_W);
  EXPECT_THAT(openNames(), ElementsAre("One"));
  document->invertActive();
  press(Qt::Key_W);
  EXPECT_THAT(openNames(), ElementsAre("One")) << "the question was cancelled";
  document->setDirty(false);
  press(Qt::Key_W);
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_TRUE(window->isVisible());
}

TEST_F(MenuBarTest, AMiddleClickClosesATab) {
  addDocument(QStringLiteral("Two"));
  QApplication::processEvents();
  DocumentTab* tab = window->contentView().tabBar().tabs().front();
  QTest::mousePress(tab, Qt::MiddleButton);
  QTest::mouseRelease(tab, Qt::MiddleButton, Qt::NoModifier, QPoint(-5, 5));
  EXPECT_THAT(openNames(), ElementsAre("One", "Two")) << "released elsewhere";
  QTest::mouseClick(tab, Qt::MiddleButton);
  EXPECT_THAT(openNames(), ElementsAre("Two"));
}

TEST_F(MenuBarTest, F11FillsTheScreenAndComesBack) {
  press(Qt::Key_F11, Qt::NoModifier);
  EXPECT_TRUE(window->isFullScreen());
  EXPECT_TRUE(item("View", "Full Screen")->isChecked());
  press(Qt::Key_F11, Qt::NoModifier);
  EXPECT_FALSE(window->isFullScreen());
  EXPECT_FALSE(item("View", "Full Screen")->isChecked());
}

TEST_F(MenuBarTest, ASelectionOfTheHistoryUpdatesTheItems) {
  document->selectAll();
  document->undo();
  EXPECT_FALSE(isEnabled("Edit", "Copy"));
  document->redo();
  EXPECT_TRUE(isEnabled("Edit", "Copy"));
}

TEST_F(MenuBarTest, ChangesOfPixelsAndTheViewDoNotConcernTheMenus) {
  EXPECT_FALSE(
      MenuFacts::areConcerned({change::PixelsChanged{}, change::Composited{},
                               change::ViewChanged{ViewProperty::zoom}, change::ThumbnailsChanged{}}));
  EXPECT_FALSE(MenuFacts::areConcerned({change::PreviewChanged{}})) << "each step of a drag";
  EXPECT_TRUE(MenuFacts::areConcerned({change::PreviewChanged{}, change::OpenEditChanged{}}));
  EXPECT_TRUE(MenuFacts::areConcerned({change::PixelsChanged{}, change::HistoryChanged{}}));
}

}  // namespace
}  // namespace orvanel
