#include "panels/bars/StatusBarPane.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "model/edit/DocumentEdit.h"
#include "panels/bars/StatusText.h"
#include "undo/UndoableOperation.h"

namespace orvanel {
namespace {

DocumentPtr makeDocument(int width = 100, int height = 80, ColorMode mode = ColorMode::rgb8) {
  return Document::create(QStringLiteral("Picture"), width, height, mode, MetalContext::shared());
}

/// A record whose memory cost can shrink, as that of compressed snapshots does.
class WeightedOperation : public UndoableOperation {
 public:
  explicit WeightedOperation(std::int64_t bytes) : bytes_(bytes) {}
  [[nodiscard]] QString actionName() const override { return QStringLiteral("Weight"); }
  void redo() override {}
  void undo() override {}
  [[nodiscard]] std::int64_t memoryCost() const override { return bytes_; }

 private:
  std::int64_t bytes_;
};

TEST(ByteCountTextTest, UsesDecimalUnits) {
  EXPECT_EQ(byteCountText(0), "0 B");
  EXPECT_EQ(byteCountText(999), "999 B");
  EXPECT_EQ(byteCountText(1000), "1 KB");
  EXPECT_EQ(byteCountText(1400), "1 KB");
  EXPECT_EQ(byteCountText(1600), "2 KB");
  EXPECT_EQ(byteCountText(999999), "1000 KB");
  EXPECT_EQ(byteCountText(1000000), "1.0 MB");
  EXPECT_EQ(byteCountText(1500000), "1.5 MB");
  EXPECT_EQ(byteCountText(2000000000), "2.0 GB");
  EXPECT_EQ(byteCountText(12345678901), "12.3 GB");
}

TEST(CursorPositionTextTest, ShowsDashesOutsideTheCanvas) {
  EXPECT_EQ(cursorPositionText(std::nullopt, std::nullopt), "X: --  Y: --");
  EXPECT_EQ(cursorPositionText(std::nullopt, Document::DragSize{3, 4}), "X: --  Y: --");
}

TEST(CursorPositionTextTest, ShowsTheSizeOfADragInProgress) {
  EXPECT_EQ(cursorPositionText(QPointF(12, 7), std::nullopt), "X: 12  Y: 7");
  EXPECT_EQ(cursorPositionText(QPointF(12, 7), Document::DragSize{30, 40}), "X: 12  Y: 7  W: 30  H: 40");
}

TEST(StatusBarPaneTest, IsEmptyWithoutADocument) {
  StatusBarPane pane;
  EXPECT_EQ(pane.zoomText(), "");
  EXPECT_EQ(pane.canvasText(), "");
  EXPECT_EQ(pane.memoryText(), "");
}

TEST(StatusBarPaneTest, ShowsTheDocument) {
  const DocumentPtr document = makeDocument();
  StatusBarPane pane;
  pane.setDocument(document);
  EXPECT_EQ(pane.zoomText(), "100%");
  EXPECT_EQ(pane.positionText(), "X: --  Y: --");
  EXPECT_EQ(pane.canvasText(), QStringLiteral("100 × 80"));
  EXPECT_EQ(pane.memoryText(), "Memory: Layers 32 KB, Undo 0 B");
}

TEST(StatusBarPaneTest, FollowsTheDocument) {
  const DocumentPtr document = makeDocument();
  StatusBarPane pane;
  pane.setDocument(document);

  document->zoomIn();
  EXPECT_EQ(pane.zoomText(), "200%");
  // Forty points stay free around a fitted canvas.
  document->zoomFitOnScreen(40.0 + 100.0 / 3.0, 400.0);
  EXPECT_EQ(pane.zoomText(), "33.33%");

  document->setCursorDocumentPosition(QPointF(5, 6));
  document->setDragSize(Document::DragSize{20, 10});
  EXPECT_EQ(pane.positionText(), "X: 5  Y: 6  W: 20  H: 10");
  document->setCursorDocumentPosition(std::nullopt);
  EXPECT_EQ(pane.positionText(), "X: --  Y: --");

  document->addLayer(QStringLiteral("Second"));
  QCoreApplication::sendPostedEvents();
  EXPECT_TRUE(pane.memoryText().startsWith("Memory: Layers 64 KB, Undo ")) << pane.memoryText().toStdString();
}

TEST(StatusBarPaneTest, CountsLayersAddedInsideAFolder) {
  const DocumentPtr document = makeDocument();
  StatusBarPane pane;
  pane.setDocument(document);
  document->addFolder(QStringLiteral("Group"));
  document->addLayer(QStringLiteral("Inside"));
  QCoreApplication::sendPostedEvents();
  EXPECT_TRUE(pane.memoryText().startsWith("Memory: Layers 64 KB")) << pane.memoryText().toStdString();
  document->undo();
  QCoreApplication::sendPostedEvents();
  EXPECT_TRUE(pane.memoryText().startsWith("Memory: Layers 32 KB")) << pane.memoryText().toStdString();
}

TEST(StatusBarPaneTest, ShowsTheMemoryOfTheHistory) {
  const DocumentPtr document = makeDocument();
  StatusBarPane pane;
  pane.setDocument(document);
  DocumentEdit(*document, editKind::state).record(std::make_shared<WeightedOperation>(1500000));
  QCoreApplication::sendPostedEvents();
  EXPECT_EQ(pane.memoryText(), "Memory: Layers 32 KB, Undo 1.5 MB");
}

// The places of the texts.

class StatusBarPlacesTest : public testing::Test {
 protected:
  StatusBarPlacesTest() {
    pane.setDocument(document);
    resize(1000);
    pane.show();
  }
  void resize(int width) { pane.resize(width, 24); }
  [[nodiscard]] static int left(const StatusText& text) { return text.x(); }

  const DocumentPtr document = makeDocument();
  StatusBarPane pane;
};

TEST_F(StatusBarPlacesTest, NothingMovesWithThePointerOrADrag) {
  const int canvasBefore = left(pane.canvasSize());
  document->setCursorDocumentPosition(QPointF(9, 9));
  document->setDragSize(Document::DragSize{20, 10});
  const QImage small = pane.position().grab().toImage();
  EXPECT_EQ(left(pane.canvasSize()), canvasBefore);
  EXPECT_TRUE(pane.position().isWhole());
  // The height stands where it stood, whatever is before it.
  document->setCursorDocumentPosition(QPointF(9999, 9999));
  document->setDragSize(Document::DragSize{2000, 10});
  const QImage large = pane.position().grab().toImage();
  const QRect height(pane.position().widthOfParts(3), 0, pane.position().widthOfParts(1), small.height());
  EXPECT_EQ(small.copy(height), large.copy(height));
  EXPECT_NE(small, large);
}

TEST_F(StatusBarPlacesTest, TheMemoryStandsAtTheEndAndIsCutFirst) {
  EXPECT_TRUE(pane.memory().isWhole());
  EXPECT_EQ(pane.memory().geometry().right(), 1000 - 1 - 12);
  EXPECT_EQ(pane.toolTip(), QString());
  resize(460);
  EXPECT_TRUE(pane.zoom().isWhole());
  EXPECT_TRUE(pane.position().isWhole());
  EXPECT_TRUE(pane.canvasSize().isWhole());
  EXPECT_FALSE(pane.memory().isWhole());
  EXPECT_TRUE(pane.toolTip().contains(pane.memoryText())) << "the whole text can still be read";
  resize(240);
  EXPECT_TRUE(pane.position().isWhole());
  EXPECT_FALSE(pane.memory().isVisible());
  EXPECT_FALSE(pane.canvasSize().isVisible());
  EXPECT_TRUE(pane.toolTip().contains(pane.canvasText()));
}

TEST_F(StatusBarPlacesTest, NoTextIsCutInAWideBarWhateverItsWidth) {
  for (const StatusText* text : {&pane.zoom(), &pane.position(), &pane.canvasSize(), &pane.memory()}) {
    const double needed =
        QFontMetricsF(text->font(), text).horizontalAdvance(text->text().split("  ").last());
    EXPECT_GE(text->neededWidth(), needed) << text->text().toStdString();
  }
}

TEST_F(StatusBarPlacesTest, ADragIsShownWholeInANarrowBar) {
  resize(480);
  document->setCursorDocumentPosition(QPointF(12, 7));
  document->setDragSize(Document::DragSize{30, 40});
  EXPECT_TRUE(pane.position().isWhole());
}

TEST_F(StatusBarPlacesTest, ANoteTakesThePlaceOfTheMemoryForAWhile) {
  pane.showNote(QStringLiteral("Saved"), std::chrono::milliseconds(1));
  EXPECT_TRUE(pane.note().isWhole());
  EXPECT_FALSE(pane.memory().isVisible());
  EXPECT_TRUE(pane.canvasSize().isVisible());
  while (pane.note().isVisible()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  EXPECT_TRUE(pane.memory().isWhole());
}

TEST_F(StatusBarPlacesTest, AStandingNoteStaysUntilItEndsAndShortNotesCoverIt) {
  pane.setStandingNote(QStringLiteral("Not kept"));
  EXPECT_EQ(pane.note().text(), "Not kept");
  EXPECT_FALSE(pane.memory().isVisible());
  pane.showNote(QStringLiteral("Copied"), std::chrono::milliseconds(1));
  EXPECT_EQ(pane.note().text(), "Copied");
  while (pane.note().text() == QStringLiteral("Copied"))
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  EXPECT_EQ(pane.note().text(), "Not kept");
  pane.showNote(QStringLiteral("Copied"), std::chrono::milliseconds(1));
  pane.setStandingNote({});
  EXPECT_EQ(pane.note().text(), "Copied") << "it has its time";
  while (pane.note().isVisible()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  EXPECT_TRUE(pane.memory().isVisible());
  pane.setStandingNote(QStringLiteral("Not kept"));
  pane.setStandingNote({});
  EXPECT_FALSE(pane.note().isVisible());
}

TEST_F(StatusBarPlacesTest, ANoteComesBeforeTheCanvasSizeInANarrowBar) {
  resize(460);
  pane.showNote(QStringLiteral("The selection is empty, so nothing was copied"));
  EXPECT_FALSE(pane.canvasSize().isVisible());
  EXPECT_TRUE(pane.note().isVisible());
}

TEST_F(StatusBarPlacesTest, ScreenReadersHearWhatTheTextsTell) {
  EXPECT_EQ(pane.zoom().accessibleName(), "Zoom: 100%");
  EXPECT_EQ(pane.position().accessibleName(), "Pointer position: X: --  Y: --");
}

TEST(StatusBarPaneTest, StopsObservingThePreviousDocument) {
  const DocumentPtr before = makeDocument();
  const DocumentPtr after = makeDocument(10, 20);
  StatusBarPane pane;
  pane.setDocument(before);
  pane.setDocument(after);
  before->zoomIn();
  EXPECT_EQ(pane.zoomText(), "100%");
  EXPECT_EQ(pane.canvasText(), QStringLiteral("10 × 20"));
}

TEST(StatusBarPaneTest, DoesNotKeepAClosedDocumentAlive) {
  DocumentPtr document = makeDocument();
  const std::weak_ptr<Document> watched = document;
  StatusBarPane pane;
  pane.setDocument(document);
  document.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(pane.document(), nullptr);
}

TEST(StatusBarPaneTest, IsEmptyAfterADocumentThatIsGone) {
  DocumentPtr document = makeDocument();
  StatusBarPane pane;
  pane.setDocument(document);
  document.reset();
  pane.setDocument(nullptr);
  EXPECT_EQ(pane.zoomText(), "");
  EXPECT_EQ(pane.canvasText(), "");
  EXPECT_EQ(pane.memoryText(), "");
}

}  // namespace
}  // namespace orvanel
