// What the window shows of a file while it is being read.
#include "app/LoadingPlace.h"

#include <QCloseEvent>
#include <QPushButton>
#include <QTest>

#include "AppFixture.h"
#include "BackgroundBlock.h"
#include "canvas/CanvasPaneView.h"
#include "io/document/SavedFile.h"
#include "panels/bars/DocumentTabBar.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class LoadingPlaceTest : public AppFixture {
 protected:
  LoadingPlaceTest() { showWindow(); }
  ~LoadingPlaceTest() override {
    files.cancelAll();
    QThreadPool::globalInstance()->waitForDone();
    QApplication::processEvents();
  }

  /// A green document, closed again.
  QString writeDocument(const char* name, int width = 1600, int height = 1000) {
    const DocumentPtr document =
        Document::create(QString::fromUtf8(name), width, height, ColorMode::rgb8, state.metalContext);
    document->fillSelection({0.0F, 1.0F, 0.0F, 1.0F});
    const QString file = path(name) + QStringLiteral(".tessel");
    EXPECT_TRUE(DocumentIO::saveSynchronously(document, file, state.metalContext));
    return file;
  }
  LoadingPlace& place() { return window->contentView().loadingPlace(); }
  LoadingView& view() { return window->contentView().canvasPane().loadingView(); }
  DocumentTabBar& tabBar() { return window->contentView().tabBar(); }
  [[nodiscard]] std::string activeName() const {
    const DocumentPtr active = state.windowState.activeDocument();
    return active ? active->name.value().toStdString() : "none";
  }
  bool waitForPicture() {
    return waitUntil([this] { return view().isVisible() && view().showsPicture(); });
  }
  /// Opens the file and lets it get as far as its picture.
  void openUpToPicture(BackgroundBlock& block, const QStringList& paths) {
    files.open(paths);
    block.letPass();
    ASSERT_TRUE(waitForPicture());
  }
};

TEST_F(LoadingPlaceTest, ThePreviewStandsWhereTheDocumentWill) {
  const QString file = writeDocument("Sky");
  QImage before;
  QRect canvas;
  {
    BackgroundBlock block;
    openUpToPicture(block, {file});
    EXPECT_THAT(openNames(), IsEmpty()) << "it is no document yet";
    EXPECT_EQ(view().title(), QString::fromUtf8("Opening Sky.tessel..."));
    EXPECT_EQ(window->windowTitle(), QString::fromUtf8("Opening Sky.tessel — Orvanel"));
    EXPECT_TRUE(tabBar().loadingTab()->isVisible());
    EXPECT_THAT(tabBar().tabs(), IsEmpty());
    canvas = view().pictureRect();
    before = window->contentView().canvasPane().grab(QRect(0, 0, view().width(), 200)).toImage();
  }
  ASSERT_TRUE(waitUntil([this] { return activeName() == "Sky" && !view().isVisible(); }));
  EXPECT_FALSE(tabBar().loadingTab()->isVisible());
  const QImage after = window->contentView().canvasPane().grab(QRect(0, 0, view().width(), 200)).toImage();
  EXPECT_EQ(after, before);
  EXPECT_EQ(after.pixelColor(canvas.center().x(), canvas.top()), QColor(Qt::green));
}

TEST_F(LoadingPlaceTest, NothingActsOnADocumentThatIsNotSeen) {
  addDocument(QStringLiteral("Sea"));
  BackgroundBlock block;
  openUpToPicture(block, {writeDocument("Sky")});
  EXPECT_EQ(activeName(), "none");
  EXPECT_EQ(state.toolState.activeDocument(), nullptr);
  EXPECT_THAT(openNames(), ElementsAre("Sea"));
  EXPECT_FALSE(tabBar().tabs()[0]->isSelected());
  EXPECT_FALSE(item("Edit", "Undo")->isEnabled());
}

TEST_F(LoadingPlaceTest, EscapeTheButtonTheTabAndTheWindowCancel) {
  addDocument(QStringLiteral("Sea"));
  const QString file = writeDocument("Sky");
  window->activateWindow();
  const std::vector<std::function<void()>> ways{
      [this] { QTest::keyClick(&view(), Qt::Key_Escape); },
      [this] { QTest::keyClick(&view(), Qt::Key_W, Qt::ControlModifier); },
      [this] { QTest::mouseClick(&view().cancelButton(), Qt::LeftButton); },
      [this] { QTest::mouseClick(tabBar().loadingTab()->closeButton(), Qt::LeftButton); },
      [this] {
        QCloseEvent close;
        QApplication::sendEvent(window.get(), &close);
        EXPECT_FALSE(close.isAccepted());
      }};
  for (const auto& cancel : ways) {
    {
      BackgroundBlock block;
      openUpToPicture(block, {file});
      cancel();
      EXPECT_EQ(activeName(), "Sea");
      EXPECT_EQ(place().file(), nullptr);
    }
    QThreadPool::globalInstance()->waitForDone();
    QApplication::processEvents();
    EXPECT_THAT(openNames(), ElementsAre("Sea"));
    EXPECT_FALSE(view().isVisible());
  }
  EXPECT_THAT(dialogs.warnings, IsEmpty());
  EXPECT_EQ(quitRequests, 0);
}

TEST_F(LoadingPlaceTest, CancellingLeavesSavesAlone) {
  const DocumentPtr sea = addDocument(QStringLiteral("Sea"));
  BackgroundBlock block;
  openUpToPicture(block, {writeDocument("Sky")});
  dialogs.savePaths.push(path("Sea.tessel"));
  files.saveAs(sea);
  place().cancel();
  block.letPass();
  files.settleWrites();
  EXPECT_FALSE(sea->isDirty.value());
  EXPECT_TRUE(QFile::exists(path("Sea.tessel")));
}

TEST_F(LoadingPlaceTest, OtherDocumentsCanBeUsedMeanwhile) {
  addDocument(QStringLiteral("Sea"));
  {
    BackgroundBlock block;
    openUpToPicture(block, {writeDocument("Sky")});
    QTest::mouseClick(tabBar().tabs()[0], Qt::LeftButton, {}, QPoint(10, 10));
    ASSERT_TRUE(waitUntil([this] { return !view().isVisible(); }));
    EXPECT_EQ(activeName(), "Sea");
    EXPECT_TRUE(tabBar().loadingTab()->isVisible());
    QTest::mouseClick(tabBar().loadingTab(), Qt::LeftButton, {}, QPoint(10, 10));
    ASSERT_TRUE(waitUntil([this] { return view().isVisible(); }));
    EXPECT_EQ(activeName(), "none");
    QTest::mouseClick(tabBar().tabs()[0], Qt::LeftButton, {}, QPoint(10, 10));
  }
  ASSERT_TRUE(waitUntil([this] { return activeName() == "Sky"; }));
}

TEST_F(LoadingPlaceTest, KeysReachTheButtonAndTheOtherDocuments) {
  addDocument(QStringLiteral("Sea"));
  BackgroundBlock block;
  openUpToPicture(block, {writeDocument("Sky")});
  window->activateWindow();
  const auto press = [this](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QWidget* focus = QApplication::focusWidget();
    QTest::keyClick(focus != nullptr ? focus : window.get(), key, modifiers);
  };
  for (int area = 0; area < 5 && QApplication::focusWidget() != &view().cancelButton(); ++area) {
    press(Qt::Key_F6);
  }
  EXPECT_EQ(QApplication::focusWidget(), &view().cancelButton());
  for (const Qt::KeyboardModifiers modifiers :
       {Qt::KeyboardModifiers(), Qt::KeyboardModifiers(Qt::ShiftModifier)}) {
    place().bringForward();
    ASSERT_TRUE(waitUntil([this] { return view().isVisible(); }));
    press(Qt::Key_Tab, modifiers);
    EXPECT_EQ(activeName(), "Sea");
  }
}

TEST_F(LoadingPlaceTest, OfSeveralFilesTheOneThatWillBeActiveIsShown) {
  const QString sea = writeDocument("Sea", 400, 300);
  const QString sky = writeDocument("Sky");
  {
    BackgroundBlock block;
    openUpToPicture(block, {sea, sky});
    EXPECT_EQ(place().file()->path, sky);
    EXPECT_EQ(place().file()->others, 1);
    // Reading and filling a document are two steps.
    block.letPass();
    ASSERT_TRUE(waitUntil([this] { return openNames().size() == 1; }));
    EXPECT_THAT(openNames(), ElementsAre("Sea"));
    EXPECT_EQ(activeName(), "none");
    QApplication::processEvents();
    EXPECT_TRUE(view().isVisible());
  }
  ASSERT_TRUE(waitUntil([this] { return activeName() == "Sky"; }));
  EXPECT_THAT(openNames(), ElementsAre("Sea", "Sky"));
}

TEST_F(LoadingPlaceTest, AfterAFailureTheDocumentBeforeIsShownAgain) {
  addDocument(QStringLiteral("Sea"));
  const QString file = writeDocument("Sky");
  // The pixels are damaged, so that its picture still comes up.
  const auto sky = DocumentIO::loadSynchronously(file, state.metalContext);
  ASSERT_TRUE(sky);
  const auto saved = std::dynamic_pointer_cast<const SavedFile>((*sky)->fileMemory());
  ASSERT_TRUE(saved != nullptr && !saved->surfaces.empty());
  const StoredChunk chunk = saved->surfaces.begin()->second.chunks.front();
  QFile archive(file);
  ASSERT_TRUE(archive.open(QIODevice::ReadWrite) && archive.seek(static_cast<qint64>(chunk.offset)));
  archive.write(QByteArray(static_cast<qsizetype>(chunk.storedSize), '\xFF'));
  archive.close();
  dialogs.duringWarning = [this] { EXPECT_EQ(activeName(), "Sea"); };
  {
    BackgroundBlock block;
    openUpToPicture(block, {file});
  }
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(activeName(), "Sea");
  EXPECT_THAT(openNames(), ElementsAre("Sea"));
}

}  // namespace
}  // namespace orvanel
