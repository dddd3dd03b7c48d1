// The pane as a whole: the initial fit, switching documents, painting and dropped files.
#include "canvas/CanvasPaneView.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QMimeData>
#include <QUrl>

#include "CanvasSupport.h"

namespace orvanel {
namespace {

class CanvasPaneTest : public testing::Test {
 protected:
  CanvasPaneTest() { pane.resize(400, 300); }
  CanvasContainerView& container() { return pane.canvasView().container(); }
  QRgb shownAt(int x, int y) { return pane.grab().toImage().pixel(x, y); }

  ToolState tools;
  CanvasPaneView pane{MetalContext::shared(), tools};
};

constexpr QRgb surround = 0xFF94949CU;

TEST_F(CanvasPaneTest, SaysThatNoDocumentIsOpen) {
  pane.show();
  EXPECT_TRUE(pane.noDocumentView().isVisible());
  EXPECT_FALSE(container().isVisible());
  QStringList texts;
  for (const QLabel* label : pane.noDocumentView().findChildren<QLabel*>()) texts.append(label->text());
  EXPECT_TRUE(texts.contains("No Document Open"));
}

TEST_F(CanvasPaneTest, FitsADocumentOnceWhenItIsFirstShown) {
  const auto document = test::makeDocument(1600, 800);
  pane.setDocument(document);
  EXPECT_TRUE(document->needsInitialZoom.value());
  pane.show();
  EXPECT_FALSE(document->needsInitialZoom.value());
  EXPECT_EQ(document->zoomLevelIndex.value(), 10);
  test::zoomToIndex(*document, 14);
  pane.resize(800, 600);
  pane.setDocument(nullptr);
  pane.setDocument(document);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
}

TEST_F(CanvasPaneTest, FitsADocumentThatOpensInAVisibleWindow) {
  pane.show();
  const auto document = test::makeDocument(1600, 800);
  pane.setDocument(document);
  EXPECT_EQ(document->zoomLevelIndex.value(), 10);
  EXPECT_TRUE(container().isVisible());
  EXPECT_FALSE(pane.noDocumentView().isVisible());
}

TEST_F(CanvasPaneTest, PaintsTheFirstDocumentAtOnce) {
  pane.show();
  const auto document = test::makeDocument(200, 100);
  pane.setDocument(document);
  EXPECT_EQ(shownAt(100, 100), 0xFFFFFFFFU);
  EXPECT_EQ(shownAt(299, 199), 0xFFFFFFFFU);
  EXPECT_EQ(shownAt(99, 150), surround);
  EXPECT_EQ(shownAt(300, 150), surround);
}

TEST_F(CanvasPaneTest, ShowsAnEdit) {
  pane.show();
  const auto document = test::makeDocument(200, 100);
  pane.setDocument(document);
  ASSERT_EQ(shownAt(200, 150), 0xFFFFFFFFU);
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  EXPECT_TRUE(test::runUntil([&] { return shownAt(200, 150) == 0xFFFF0000U; }));
}

TEST_F(CanvasPaneTest, ShowsAChangedPropertyOfANode) {
  pane.show();
  const auto document = test::makeDocument(200, 100);
  pane.setDocument(document);
  ASSERT_EQ(shownAt(200, 150), 0xFFFFFFFFU);
  document->setVisible(document->rootNodes.value().front().id(), false);
  EXPECT_TRUE(test::runUntil([&] { return shownAt(200, 150) != 0xFFFFFFFFU; }));
}

TEST_F(CanvasPaneTest, CentresACanvasThatFitsAfterAResize) {
  pane.show();
  const auto document = test::makeDocument(500, 400);
  test::keepInitialZoom(*document);
  pane.setDocument(document);
  document->setViewportOffset(QPointF(80, 90));
  pane.resize(600, 500);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0, 0));
}

TEST_F(CanvasPaneTest, KeepsNoClosedDocumentAlive) {
  pane.show();
  auto document = test::makeDocument(20, 20);
  const std::weak_ptr<Document> watched = document;
  pane.setDocument(document);
  document.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(shownAt(200, 150), surround);
}

TEST_F(CanvasPaneTest, OpensDroppedFiles) {
  pane.show();
  QStringList opened;
  pane.openFiles = [&](const QStringList& files) { opened = files; };
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile("/pictures/a b.png"), QUrl("https://example.org/c.png"),
                QUrl::fromLocalFile("/pictures/d.tessel")});
  const auto drop = [&](QWidget& target) {
    QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&target, &enter);
    EXPECT_TRUE(enter.isAccepted());
    // A source that proposes a move deletes its files after a drop that accepts it.
    QDropEvent event({10, 10}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::ShiftModifier);
    ASSERT_EQ(event.proposedAction(), Qt::MoveAction);
    QApplication::sendEvent(&target, &event);
    EXPECT_EQ(event.dropAction(), Qt::CopyAction);
    EXPECT_EQ(opened, (QStringList{"/pictures/a b.png", "/pictures/d.tessel"}));
    opened.clear();
  };
  drop(pane.noDocumentView());
  pane.setDocument(test::makeDocument(20, 20));
  drop(container().mtkView());
}

TEST_F(CanvasPaneTest, RefusesDragsWithoutFiles) {
  QMimeData data;
  data.setText("words");
  QDragEnterEvent enter({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  enter.ignore();
  QApplication::sendEvent(&container().mtkView(), &enter);
  EXPECT_FALSE(enter.isAccepted());
}

}  // namespace
}  // namespace orvanel
