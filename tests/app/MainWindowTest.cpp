#include "app/MainWindow.h"

#include <QAbstractButton>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QTest>

#include "AppFixture.h"
#include "canvas/CanvasPaneView.h"
#include "canvas/RecentFilesView.h"
#include "model/OpenOpacityEdit.h"
#include "panels/bars/StatusBarPane.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class MainWindowTest : public AppFixture {
 protected:
  MainWindowTest() {
    state.recentDocuments.clear();
    showWindow();
  }

  void open(const QStringList& paths) {
    files.open(paths);
    EXPECT_TRUE(waitForFiles());
    QApplication::processEvents();
  }

  [[nodiscard]] std::string activeName() const {
    const DocumentPtr active = state.windowState.activeDocument();
    return active ? active->name.value().toStdString() : "none";
  }

  ScrollableMTKView& canvas() {
    return window->contentView().canvasPane().canvasView().container().mtkView();
  }

  static void pressAndRelease(QWidget& widget, int key, Qt::KeyboardModifiers modifiers) {
    QKeyEvent press(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(&widget, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers);
    QApplication::sendEvent(&widget, &release);
  }
};

TEST_F(MainWindowTest, TheEmptyWindowShowsThatNothingIsOpen) {
  EXPECT_EQ(window->windowTitle(), "Orvanel");
  EXPECT_FALSE(window->isWindowModified());
  EXPECT_TRUE(window->contentView().tabBar().isHidden());
  EXPECT_TRUE(window->contentView().canvasPane().noDocumentView().isVisible());
  for (const auto& [menuTitle, title] : {std::pair("File", "Save"),
                                         {"File", "Save As..."},
                                         {"File", "Export Image..."},
                                         {"View", "Zoom In"}}) {
    EXPECT_FALSE(item(menuTitle, title)->isEnabled()) << title;
  }
  EXPECT_TRUE(item("File", "New...")->isEnabled());
  EXPECT_TRUE(item("File", "Open...")->isEnabled());
}

/// The whole menu bar as text: a line for each item, with its shortcuts, indented under its menu.
std::string outline(const QWidget& menu, const std::string& indent = {}) {
  std::string lines;
  for (const QAction* action : menu.actions()) {
    lines += indent + (action->isSeparator() ? "-" : action->text().toStdString());
    for (const QKeySequence& key : action->shortcuts()) {
      lines += " | " + key.toString(QKeySequence::PortableText).toStdString();
    }
    lines += "\n";
    if (action->menu() != nullptr) lines += outline(*action->menu(), indent + "  ");
  }
  return lines;
}

TEST_F(MainWindowTest, TheMenuBarHoldsTheseItems) {
  EXPECT_EQ(outline(*window->menuBar()), R"(&File
  New... | Ctrl+N
  Open... | Ctrl+O
  Open Recent
    Clear Menu
  Save | Ctrl+S
  Save As... | Ctrl+Shift+S
  Export Image... | Ctrl+Shift+E
  -
  Close | Ctrl+W
  Quit | Ctrl+Q
&Edit
  Undo | Ctrl+Z
  Redo | Ctrl+Shift+Z
  Cut | Ctrl+X
  Copy | Ctrl+C
  Paste | Ctrl+V
  -
  Clear | Del
  Free Transform | Ctrl+T
&Image
  Mode
    RGB 8-bit
    RGB 16-bit
    Grayscale 8-bit
    Grayscale 16-bit
  -
  Adjustments
    Levels... | Ctrl+L
    -
    Invert | Ctrl+I
  -
  Canvas Size...
  Image Size...
  Crop
  Trim | Ctrl+.
&Layer
  Duplicate | Ctrl+J
&Select
  All | Ctrl+A
  Deselect | Ctrl+D
  -
  Inverse | Ctrl+Shift+I
&View
  Zoom In | Ctrl++ | Ctrl+= | Ctrl+Shift++
  Zoom Out | Ctrl+-
  100% | Ctrl+1
  Fit on Screen | Ctrl+0
  -
  Full Screen | F11
&Window
  Next Tab | Tab
  Previous Tab | Shift+Tab
&Help
  Keyboard Shortcuts | F1
  About Orvanel
)");
}

TEST_F(MainWindowTest, OpenedFilesBecomeTabsAndTheLastOneIsShown) {
  open({writeImage("one.png", 20, 10), writeImage("two.png", 30, 40)});
  const auto& tabs = window->contentView().tabBar().tabs();
  ASSERT_THAT(tabs, SizeIs(2));
  EXPECT_TRUE(tabs[1]->isSelected());
  EXPECT_TRUE(window->contentView().tabBar().isVisible());
  EXPECT_EQ(canvas().document(), state.windowState.activeDocument());
  EXPECT_EQ(window->contentView().statusBar().canvasText(), QStringLiteral("30 × 40"));
  EXPECT_EQ(window->windowTitle(), QStringLiteral("two[*] — Orvanel"));
}

TEST_F(MainWindowTest, AnOpenedFileIsNotRenamedIfItsNameIsTaken) {
  addDocument(QStringLiteral("Untitled"));
  open({writeImage("Untitled.png")});
  EXPECT_THAT(openNames(), ElementsAre("Untitled", "Untitled"));
}

TEST_F(MainWindowTest, SaveIsEnabledWhileThereIsSomethingToSave) {
  open({writeImage("one.png")});
  const QAction* save = item("File", "Save");
  EXPECT_FALSE(save->isEnabled());
  EXPECT_TRUE(item("File", "Save As...")->isEnabled());
  EXPECT_TRUE(item("File", "Export Image...")->isEnabled());
  const DocumentPtr photo = state.windowState.activeDocument();
  photo->addLayer(QStringLiteral("Second"));
  EXPECT_TRUE(save->isEnabled());
  photo->setDirty(false);
  EXPECT_FALSE(save->isEnabled());

  addDocument(QStringLiteral("Untitled"));
  QApplication::processEvents();
  EXPECT_TRUE(save->isEnabled());
  state.windowState.switchToDocument(photo->id);
  QApplication::processEvents();
  EXPECT_FALSE(save->isEnabled());
}

TEST_F(MainWindowTest, AClickOnATabShowsItsDocument) {
  open({writeImage("one.png"), writeImage("two.png")});
  window->contentView().tabBar().tabs()[0]->click();
  QApplication::processEvents();
  EXPECT_EQ(activeName(), "one");
  EXPECT_EQ(canvas().document()->name.value(), "one");
  EXPECT_TRUE(window->contentView().tabBar().tabs()[0]->isSelected());
  EXPECT_EQ(window->windowTitle(), QStringLiteral("one[*] — Orvanel"));
}

TEST_F(MainWindowTest, TheNewTabButtonMakesAnotherDocumentLikeTheActiveOne) {
  state.windowState.addDocument(
      Document::create(QStringLiteral("Scan"), 640, 480, ColorMode::grayscale8, state.metalContext));
  QApplication::processEvents();
  QTest::mouseClick(window->contentView().tabBar().newTabButton(), Qt::LeftButton);
  const DocumentPtr made = state.windowState.activeDocument();
  EXPECT_EQ(made->name.value(), "Untitled");
  EXPECT_EQ(made->canvasWidth.value(), 640);
  EXPECT_EQ(made->canvasHeight.value(), 480);
  EXPECT_EQ(made->colorMode.value(), ColorMode::grayscale8);
}

TEST_F(MainWindowTest, TheStatusTellsThePointersPlaceAndTheSizeOfADrag) {
  addDocument(QStringLiteral("Photo"), 200, 200);
  QApplication::processEvents();
  state.toolState.selectTool(Tool::rectangleSelect);
  const StatusBarPane& status = window->contentView().statusBar();
  EXPECT_EQ(status.positionText(), "X: --  Y: --");
  state.windowState.activeDocument()->zoomIn();
  QApplication::processEvents();
  // In the middle of a pixel, so that its place on the screen is in it as well. A drag takes both its ends.
  const auto at = [this](int x, int y) { return canvas().documentToView({x + 0.5, y + 0.5})->toPoint(); };
  QTest::mouseMove(&canvas(), at(50, 60));
  EXPECT_EQ(status.positionText(), "X: 50  Y: 60");
  QTest::mousePress(&canvas(), Qt::LeftButton, {}, at(50, 60));
  QTest::mouseMove(&canvas(), at(90, 85));
  EXPECT_TRUE(waitUntil([&] { return status.positionText().contains(QStringLiteral("  W: ")); }));
  EXPECT_EQ(status.positionText(), "X: 90  Y: 85  W: 41  H: 26");
  QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, at(90, 85));
  EXPECT_FALSE(status.positionText().contains(QStringLiteral("W: ")));
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&canvas(), &leave);
  EXPECT_EQ(status.positionText(), "X: --  Y: --");
}

TEST_F(MainWindowTest, TheTitleShortensAnEndlessName) {
  addDocument(QString(1000000, u'a'));
  EXPECT_LT(window->windowTitle().size(), 100);
}

TEST_F(MainWindowTest, TitleAndTabShowUnsavedChanges) {
  open({writeImage("one.png")});
  state.windowState.activeDocument()->addLayer(QStringLiteral("Second"));
  EXPECT_TRUE(window->isWindowModified());
  EXPECT_TRUE(window->contentView().tabBar().tabs()[0]->showsDirtyDot());
  state.windowState.activeDocument()->setDirty(false);
  EXPECT_FALSE(window->isWindowModified());
  const DocumentPtr document = state.windowState.activeDocument();
  const auto edit = OpenOpacityEdit::begin(document, document->rootNodes.value()[0].id());
  edit->show(0.5F);
  EXPECT_TRUE(window->isWindowModified()) << "a gesture has begun";
  edit->takeBack();
  EXPECT_FALSE(window->isWindowModified());
}

TEST_F(MainWindowTest, SavingThroughTheMenuRenamesTabAndTitle) {
  dialogs.newDocument = NewDocumentEntry{QStringLiteral("40"), QStringLiteral("30"), 3};
  item("File", "New...")->trigger();
  QApplication::processEvents();
  EXPECT_EQ(activeName(), "Untitled");
  dialogs.savePaths.push(path("Evening.tessel"));
  item("File", "Save")->trigger();
  ASSERT_TRUE(waitForFiles());
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Evening[*] — Orvanel"));
  EXPECT_EQ(window->contentView().tabBar().tabs()[0]->accessibleName(), "Evening");
  EXPECT_TRUE(QFile::exists(path("Evening.tessel")));
}

TEST_F(MainWindowTest, ExportingThroughTheMenuWritesTheImage) {
  open({writeImage("one.png")});
  dialogs.exportTargets.push({path("copy.bmp"), 4});
  item("File", "Export Image...")->trigger();
  ASSERT_TRUE(waitForFiles());
  EXPECT_EQ(QImage(path("copy.bmp")).size(), QSize(20, 10));
}

TEST_F(MainWindowTest, TheViewMenuZoomsTheCanvas) {
  open({writeImage("one.png")});
  const DocumentPtr document = state.windowState.activeDocument();
  const int before = document->zoomLevelIndex.value();
  item("View", "Zoom In")->trigger();
  EXPECT_EQ(document->zoomLevelIndex.value(), before + 1);
  item("View", "Zoom Out")->trigger();
  EXPECT_EQ(document->zoomLevelIndex.value(), before);
  item("View", "Fit on Screen")->trigger();
  EXPECT_TRUE(document->customZoomLevel.value().has_value());
  item("View", "100%")->trigger();
  EXPECT_EQ(document->zoom(), 1.0);
  EXPECT_EQ(window->contentView().statusBar().zoomText(), "100%");
}

TEST_F(MainWindowTest, TheWindowMenuStepsThroughTheTabs) {
  open({writeImage("one.png")});
  EXPECT_FALSE(item("Window", "Next Tab")->isEnabled());
  open({writeImage("two.png"), writeImage("three.png")});
  item("Window", "Next Tab")->trigger();
  EXPECT_EQ(activeName(), "one");
  item("Window", "Previous Tab")->trigger();
  EXPECT_EQ(activeName(), "three");
}

TEST_F(MainWindowTest, ControlTabAlternatesBetweenTheTwoMostRecentDocuments) {
  open({writeImage("one.png"), writeImage("two.png"), writeImage("three.png")});
  pressAndRelease(canvas(), Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(activeName(), "two");
  pressAndRelease(canvas(), Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(activeName(), "three");
  pressAndRelease(canvas(), Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(activeName(), "one");
}

TEST_F(MainWindowTest, AnOpenedDocumentHasTheFocusWithoutAClick) {
  QApplication::setActiveWindow(window.get());
  open({writeImage("one.png"), writeImage("two.png")});
  ASSERT_EQ(window->focusWidget(), &canvas());
  pressAndRelease(*window->focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
  EXPECT_EQ(activeName(), "one");
}

TEST_F(MainWindowTest, FilesDroppedOnTheCanvasOpen) {
  open({writeImage("one.png")});
  QMimeData data;
  data.setUrls(
      {QUrl::fromLocalFile(writeImage("dropped.png")), QUrl::fromLocalFile(writeText("bad.png", "x"))});
  QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&canvas(), &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&canvas(), &drop);
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("one", "dropped"));
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Open Image");
}

TEST_F(MainWindowTest, TheCloseButtonClosesTabsAndThenTheWindow) {
  open({writeImage("one.png"), writeImage("two.png")});
  state.windowState.activeDocument()->setDirty(true);
  EXPECT_FALSE(window->close());
  EXPECT_THAT(openNames(), ElementsAre("one", "two"));
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  EXPECT_FALSE(window->close());
  EXPECT_FALSE(window->close());
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_TRUE(window->isVisible());
  QApplication::processEvents();
  EXPECT_EQ(quitRequests, 0);
  EXPECT_TRUE(window->close());
  QApplication::processEvents();
  EXPECT_EQ(quitRequests, 1);
}

TEST_F(MainWindowTest, TheTabsCloseButtonAndMenuClose) {
  open({writeImage("one.png"), writeImage("two.png"), writeImage("three.png")});
  window->contentView().tabBar().tabs()[1]->closeButton()->click();
  QApplication::processEvents();
  EXPECT_THAT(openNames(), ElementsAre("one", "three"));
  window->contentView().tabBar().tabs()[0]->contextItems()[1].action();
  QApplication::processEvents();
  EXPECT_THAT(openNames(), ElementsAre("one"));
  window->contentView().tabBar().newTabButton()->click();
  QApplication::processEvents();
  EXPECT_THAT(openNames(), ElementsAre("one", "Untitled"));
  window->contentView().tabBar().tabs()[0]->contextItems()[2].action();
  QApplication::processEvents();
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_TRUE(window->contentView().tabBar().isHidden());
}

TEST_F(MainWindowTest, TheRecentMenuOpensAndClears) {
  QMenu& recent = window->openRecent().menu();
  EXPECT_THAT(titles(recent), ElementsAre("Clear Menu"));
  open({writeImage("one.png"), writeImage("a & b.png")});
  EXPECT_THAT(titles(recent), ElementsAre("a && b.png", "one.png", "-", "Clear Menu"));

  recent.actions().at(1)->trigger();
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("one", "a & b", "one"));
  EXPECT_THAT(titles(recent), ElementsAre("one.png", "a && b.png", "-", "Clear Menu"));

  recent.actions().constLast()->trigger();
  QApplication::processEvents();
  EXPECT_THAT(titles(recent), ElementsAre("Clear Menu"));
  EXPECT_TRUE(state.recentDocuments.paths().isEmpty());
}

TEST_F(MainWindowTest, CommittingACycleWithNothingOpenDoesNothing) {
  NotificationCenter::standard().post(notification::commitMRUCycle);
  NotificationCenter::standard().post(notification::saveAsDocument);
  NotificationCenter::standard().post(notification::cycleNextTab);
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_THAT(dialogs.proposals, IsEmpty());
}

TEST_F(MainWindowTest, ARecreatedWindowKeepsItsSizeWithinTheRun) {
  window->resize(777, 555);
  QApplication::processEvents();
  window = nullptr;
  showWindow();
  EXPECT_EQ(window->size(), QSize(777, 555));
}

TEST_F(MainWindowTest, ANameThatContainsTheModifiedMarkerIsShownLiterally) {
  addDocument(QStringLiteral("a[*]b"));
  QApplication::processEvents();
  EXPECT_EQ(window->windowTitle(), QStringLiteral("a[*][*]b[*] — Orvanel"));
}

TEST_F(MainWindowTest, TheListOfShortcutsIsThatOfTheMenusKeysAndTools) {
  addDocument(QStringLiteral("One"))->invertActive();
  item("Help", "Keyboard Shortcuts")->trigger();
  const auto keysFor = [this](const char* group, const char* meaning) {
    for (const ShortcutGroup& listed : dialogs.shortcuts) {
      if (listed.title != QLatin1String(group)) continue;
      for (const ShortcutGroup::Row& row : listed.rows) {
        if (row.meaning == QLatin1String(meaning)) return row.keys.toStdString();
      }
    }
    return std::string("not listed");
  };
  EXPECT_EQ(keysFor("File", "New"), "Ctrl+N");
  EXPECT_EQ(keysFor("Edit", "Undo"), "Ctrl+Z") << "not what would be undone";
  EXPECT_EQ(keysFor("Image", "Levels"), "Ctrl+L");
  EXPECT_EQ(keysFor("Tools and single keys", "Hand"), "H");
  EXPECT_EQ(keysFor("Tools and single keys", "Clear"), "Backspace or Del");
  EXPECT_EQ(keysFor("Tools and single keys", "Fill with the foreground color"), "Alt+Backspace");
  EXPECT_EQ(keysFor("Selection tools", "Add to the selection"), "Shift");
  EXPECT_EQ(keysFor("Keyboard focus", "Next control"), "Ctrl+F6");
}

TEST_F(MainWindowTest, TheFirstWindowLeavesPlaceForItsTitleBar) {
  const QSize small(1366, 768);
  const QSize size = MainWindow::firstSizeOn(small);
  EXPECT_LE(size.width(), small.width());
  EXPECT_LE(size.height(), small.height() - 20);
  EXPECT_EQ(MainWindow::firstSizeOn({2560, 1440}), QSize(1280, 800));
}

TEST_F(MainWindowTest, ShowsEverythingWhenItIsAsSmallAsItGets) {
  addDocument(QStringLiteral("One"));
  state.toolState.selectTool(Tool::magicWand);
  QApplication::processEvents();
  window->resize(1, 1);
  QApplication::processEvents();
  EXPECT_LE(window->width(), 800);
  EXPECT_LE(window->height(), 560);
  for (const char* name : {"toolOptions", "toolPalette", "inspector", "tabBar"}) {
    const auto* part = window->findChild<QWidget*>(QLatin1String(name));
    ASSERT_NE(part, nullptr) << name;
    EXPECT_GE(part->width(), part->minimumSizeHint().width()) << name;
    EXPECT_GE(part->height(), part->minimumSizeHint().height()) << name;
  }
}

TEST_F(MainWindowTest, TheEmptyWindowListsRecentFilesThatAreThere) {
  const QString kept = writeImage("kept.png");
  const QString gone = writeImage("gone.png");
  open({kept, gone});
  QFile::remove(gone);
  state.windowState.closeAllDocuments();
  QApplication::processEvents();
  const RecentFilesView& recent = window->contentView().canvasPane().noDocumentView().recentFiles();
  ASSERT_TRUE(waitUntil([&] { return recent.cards().size() == 1; }));
  recent.cards().front()->click();
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("kept"));
}

TEST_F(MainWindowTest, TheEmptyWindowsLinksAskForADocument) {
  const NoDocumentView& placeholder = window->contentView().canvasPane().noDocumentView();
  dialogs.newDocument = NewDocumentEntry{QStringLiteral("40"), QStringLiteral("30"), 3};
  placeholder.newLink().click();
  EXPECT_THAT(openNames(), ElementsAre("Untitled"));
  dialogs.filesToOpen = QStringList{writeImage("photo.png")};
  placeholder.openLink().click();
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("Untitled", "photo"));
}

TEST_F(MainWindowTest, TheAboutItemShowsTheAboutWindow) {
  item("Help", "About Orvanel")->trigger();
  EXPECT_EQ(dialogs.aboutShown, 1);
}

TEST_F(MainWindowTest, AltAloneLeavesTheFocusOnTheCanvas) {
  open({writeImage("photo.png")});
  window->activateWindow();
  canvas().setFocus();
  for (const auto type : {QEvent::ShortcutOverride, QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, Qt::Key_Alt, type == QEvent::KeyRelease ? Qt::NoModifier : Qt::AltModifier);
    QApplication::sendEvent(&canvas(), &event);
  }
  EXPECT_EQ(window->menuBar()->activeAction(), nullptr);
  EXPECT_EQ(QApplication::focusWidget(), &canvas());
}

}  // namespace
}  // namespace orvanel
