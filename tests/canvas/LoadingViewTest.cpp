// The picture that stands in for a document while it is being read.
#include "canvas/LoadingView.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QUrl>

#include "CanvasSupport.h"
#include "canvas/CanvasPaneView.h"

namespace orvanel {
namespace {

constexpr QRgb surround = 0xFF94949CU;

class LoadingViewTest : public testing::Test {
 protected:
  LoadingViewTest() {
    pane.resize(500, 400);
    pane.setDocument(nullptr, CanvasPaneView::Instead::loadingView);
    pane.show();
    QApplication::setActiveWindow(&pane);
    QApplication::processEvents();
  }
  static QImage plain(const QSize& size, const QColor& color) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(color);
    return image;
  }
  QImage shown() {
    QApplication::processEvents();
    return pane.grab().toImage().convertToFormat(QImage::Format_RGB32);
  }

  ToolState tools;
  CanvasPaneView pane{MetalContext::shared(), tools};
  LoadingView& view = pane.loadingView();
};

TEST_F(LoadingViewTest, StandsAloneInThePane) {
  EXPECT_TRUE(view.isVisible());
  EXPECT_TRUE(view.hasFocus());
  EXPECT_FALSE(pane.noDocumentView().isVisible());
  EXPECT_FALSE(pane.canvasView().container().isVisible());
}

TEST_F(LoadingViewTest, TheDocumentComesExactlyWhereItsPictureStood) {
  // A row above the card, since the card goes.
  constexpr int cardTop = 320;
  for (const QSize canvas : {QSize(1600, 900), QSize(901, 1403), QSize(333, 251), QSize(4000, 30)}) {
    view.setPreview(canvas, plain(canvas.scaled(256, 256, Qt::KeepAspectRatio).expandedTo({1, 1}), Qt::red));
    pane.setDocument(nullptr, CanvasPaneView::Instead::loadingView);
    const QImage before = shown().copy(0, 0, 500, cardTop);
    const auto document = test::makeDocument(canvas.width(), canvas.height());
    document->fillSelection(DisplayColor{1.0F, 0.0F, 0.0F, 1.0F});
    pane.setDocument(document);
    EXPECT_TRUE(QTest::qWaitFor([&] { return shown().copy(0, 0, 500, cardTop) == before; }))
        << canvas.width() << " x " << canvas.height();
    pane.setDocument(nullptr, CanvasPaneView::Instead::loadingView);
  }
}

TEST_F(LoadingViewTest, BehindATransparentPictureIsTheDocumentsCheckerboard) {
  view.setPreview({300, 200}, plain({150, 100}, Qt::transparent));
  const QImage before = shown();
  const auto document = test::makeDocument(300, 200);
  test::put(document->rootNodes, LayerNodeList{});
  pane.setDocument(document);
  const QRect canvas = view.pictureRect();
  EXPECT_EQ(canvas, QRect(100, 100, 300, 200));
  EXPECT_TRUE(QTest::qWaitFor([&] { return shown().copy(canvas) == before.copy(canvas); }));
}

TEST_F(LoadingViewTest, WithoutAKnownCanvasThereIsOnlyTheSurround) {
  view.setPreview({}, {});
  EXPECT_TRUE(view.pictureRect().isEmpty());
  EXPECT_EQ(shown().pixel(250, 150), surround);
}

TEST_F(LoadingViewTest, TheCardTellsWhatIsOpenedAndHowFar) {
  view.setFile(QStringLiteral("sky.tessel"), 0);
  EXPECT_EQ(view.title(), QString::fromUtf8("Opening sky.tessel..."));
  view.setProgress(0.25);
  EXPECT_EQ(view.progressBar().value(), view.progressBar().maximum() / 4);
  EXPECT_EQ(view.progressBar().accessibleName(), "Progress");
  EXPECT_EQ(view.accessibleName(), view.title());
  EXPECT_TRUE(view.cancelButton().isVisible());
}

TEST_F(LoadingViewTest, CancelIsReachedByTheMouseAndByTab) {
  int cancelled = 0;
  view.onCancel = [&] { ++cancelled; };
  QTest::mouseClick(&view.cancelButton(), Qt::LeftButton);
  EXPECT_EQ(cancelled, 1);
  EXPECT_EQ(view.cancelButton().focusPolicy(), Qt::TabFocus);
}

TEST_F(LoadingViewTest, FilesCanBeDroppedOnIt) {
  QStringList opened;
  pane.openFiles = [&](const QStringList& files) { opened = files; };
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QStringLiteral("/a.png"))});
  QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&view, &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&view, &drop);
  EXPECT_EQ(opened, QStringList{QStringLiteral("/a.png")});
}

}  // namespace
}  // namespace orvanel
