#include <gtest/gtest.h>

#include <algorithm>

#include "model/Document.h"
#include "model/ModelSupport.h"

namespace orvanel {
namespace {

using namespace test;

class DocumentViewTest : public testing::Test {
 protected:
  QString zoomText(double zoom) {
    put(document->customZoomLevel, zoom);
    return document->zoomDisplayString();
  }

  DocumentPtr document = makeDocument(100, 100);
};

TEST(ZoomTableTest, RisesFromOneHundredthToFourHundred) {
  EXPECT_EQ(zoomTable.front(), minimumZoom);
  EXPECT_EQ(zoomTable.back(), maximumZoom);
  EXPECT_TRUE(std::is_sorted(zoomTable.begin(), zoomTable.end()));
  EXPECT_EQ(zoomTable[14], 1.0);
  EXPECT_EQ(zoomTable[9], 1.0 / 6.0);
}

TEST_F(DocumentViewTest, CustomZoomOverridesTheTable) {
  EXPECT_EQ(document->zoom(), 1.0);
  put(document->zoomLevelIndex, 20);
  EXPECT_EQ(document->zoom(), 7.0);
  put(document->customZoomLevel, 0.3);
  EXPECT_EQ(document->zoom(), 0.3);
}

TEST_F(DocumentViewTest, ASetZoomStaysWithinTheLimits) {
  document->setZoom(0.7);
  EXPECT_EQ(document->customZoomLevel.value(), 0.7);
  document->setZoom(0.001);
  EXPECT_EQ(document->zoom(), minimumZoom);
  document->setZoom(1e9);
  EXPECT_EQ(document->zoom(), maximumZoom);
}

TEST_F(DocumentViewTest, SteppingStopsAtBothEndsOfTheTable) {
  const ChangeRecorder changes(*document);
  put(document->zoomLevelIndex, 28);
  document->zoomIn();
  EXPECT_EQ(document->zoomLevelIndex.value(), 28);
  put(document->zoomLevelIndex, 0);
  document->zoomOut();
  EXPECT_EQ(document->zoomLevelIndex.value(), 0);
  EXPECT_EQ(document->customZoomLevel.value(), std::nullopt);
  EXPECT_EQ(changes.batches, 0);
}

TEST_F(DocumentViewTest, SteppingGoesThroughTheWholeTable) {
  put(document->zoomLevelIndex, 0);
  for (int index = 1; index <= 28; ++index) {
    document->zoomIn();
    EXPECT_EQ(document->zoomLevelIndex.value(), index);
  }
  for (int index = 27; index >= 0; --index) {
    document->zoomOut();
    EXPECT_EQ(document->zoomLevelIndex.value(), index);
  }
}

TEST_F(DocumentViewTest, SteppingFromACustomZoomGoesToTheNextEntry) {
  put(document->customZoomLevel, 0.9);
  document->zoomIn();
  EXPECT_EQ(document->customZoomLevel.value(), std::nullopt);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  document->zoomOut();
  EXPECT_EQ(document->zoomLevelIndex.value(), 13);
  put(document->customZoomLevel, 0.9);
  document->zoomOut();
  EXPECT_EQ(document->zoomLevelIndex.value(), 13);
}

TEST_F(DocumentViewTest, SteppingMovesOffACustomZoomThatEqualsAnEntry) {
  put(document->customZoomLevel, 2.0);
  document->zoomIn();
  EXPECT_EQ(document->zoomLevelIndex.value(), 16);
  put(document->customZoomLevel, 2.0);
  document->zoomOut();
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
}

TEST_F(DocumentViewTest, SteppingFromBeyondTheTableStopsAtItsEnds) {
  put(document->customZoomLevel, 500.0);
  document->zoomIn();
  EXPECT_EQ(document->customZoomLevel.value(), std::nullopt);
  EXPECT_EQ(document->zoomLevelIndex.value(), 28);
  put(document->customZoomLevel, 0.001);
  document->zoomOut();
  EXPECT_EQ(document->zoomLevelIndex.value(), 0);
  put(document->customZoomLevel, 0.01);
  document->zoomOut();
  EXPECT_EQ(document->zoomLevelIndex.value(), 0);
}

TEST_F(DocumentViewTest, ActualSizeKeepsTheOffset) {
  put(document->customZoomLevel, 3.3);
  document->setViewportOffset(QPointF(5.0, 6.0));
  document->zoomActualSize();
  EXPECT_EQ(document->zoom(), 1.0);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(5.0, 6.0));
}

TEST_F(DocumentViewTest, FittingLeavesAnExactMargin) {
  put(document->zoomLevelIndex, 3);
  document->setViewportOffset(QPointF(5.0, 6.0));
  document->zoomFitOnScreen(90.0, 240.0);
  EXPECT_EQ(document->customZoomLevel.value(), 0.5);
  EXPECT_EQ(document->zoomLevelIndex.value(), 3);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0.0, 0.0));
}

TEST_F(DocumentViewTest, FittingMayZoomInUpToTheLimit) {
  document->zoomFitOnScreen(340.0, 640.0);
  EXPECT_EQ(document->customZoomLevel.value(), 3.0);
  const DocumentPtr dot = makeDocument(1, 1);
  dot->zoomFitOnScreen(2000.0, 2000.0);
  EXPECT_EQ(dot->customZoomLevel.value(), 400.0);
  const DocumentPtr large = makeDocument(16384, 1);
  large->zoomFitOnScreen(41.0, 500.0);
  EXPECT_EQ(large->customZoomLevel.value(), 0.01);
}

TEST_F(DocumentViewTest, FittingNeedsMoreRoomThanTheMargin) {
  document->setViewportOffset(QPointF(5.0, 6.0));
  document->zoomFitOnScreen(40.0, 500.0);
  document->zoomFitOnScreen(500.0, 12.0);
  EXPECT_EQ(document->customZoomLevel.value(), std::nullopt);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(5.0, 6.0));
}

TEST_F(DocumentViewTest, TheInitialZoomNeverMagnifies) {
  put(document->customZoomLevel, 3.0);
  document->setViewportOffset(QPointF(5.0, 6.0));
  document->applyInitialZoom(2000.0, 2000.0);
  EXPECT_EQ(document->customZoomLevel.value(), std::nullopt);
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0.0, 0.0));
  EXPECT_FALSE(document->needsInitialZoom.value());
}

TEST_F(DocumentViewTest, TheInitialZoomIsATableLevelThatFits) {
  const DocumentPtr large = makeDocument(4000, 4000);
  large->applyInitialZoom(1000.0, 1000.0);
  EXPECT_EQ(large->zoomLevelIndex.value(), 10);
  large->applyInitialZoom(999.0, 3000.0);
  EXPECT_EQ(large->zoomLevelIndex.value(), 9);
  large->applyInitialZoom(10.0, 10.0);
  EXPECT_EQ(large->zoomLevelIndex.value(), 0);
}

TEST_F(DocumentViewTest, ShowsPercentagesUpToEightHundred) {
  EXPECT_EQ(zoomText(1.0), "100%");
  EXPECT_EQ(zoomText(1.0 / 3.0), "33.33%");
  EXPECT_EQ(zoomText(2.0 / 3.0), "66.66%");
  EXPECT_EQ(zoomText(0.0625), "6.25%");
  EXPECT_EQ(zoomText(0.015), "1.5%");
  EXPECT_EQ(zoomText(1.0 / 12.0), "8.33%");
  EXPECT_EQ(zoomText(8.0), "800%");
}

TEST_F(DocumentViewTest, ShowsFactorsBeyondEightHundredPercent) {
  EXPECT_EQ(zoomText(12.0), "12x");
  EXPECT_EQ(zoomText(400.0), "400x");
  EXPECT_EQ(zoomText(8.5), "8.5x");
}

TEST_F(DocumentViewTest, SwappingExchangesTheColorsInOneStepWithoutARecord) {
  const DisplayColor red{1.0F, 0.0F, 0.0F, 1.0F};
  document->setForegroundColor(red);
  document->setDirty(false);
  const ChangeRecorder recorder(*document);
  document->swapColors();
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::white());
  EXPECT_EQ(document->backgroundColor.value(), red);
  EXPECT_EQ(recorder.batches, 1);
  EXPECT_GT(recorder.count<change::ViewChanged>(ViewProperty::colors), 0U);
  EXPECT_TRUE(document->undoStack.operations().empty());
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(DocumentViewTest, ResettingTheColorsGivesBlackOnWhite) {
  document->setForegroundColor({1.0F, 0.0F, 0.0F, 1.0F});
  document->setBackgroundColor({0.0F, 0.0F, 1.0F, 1.0F});
  const ChangeRecorder recorder(*document);
  document->resetColors();
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::black());
  EXPECT_EQ(document->backgroundColor.value(), DisplayColor::white());
  EXPECT_EQ(recorder.batches, 1);
  document->resetColors();
  EXPECT_EQ(recorder.batches, 1) << "nothing was left to change";
}

TEST(DocumentViewDeathTest, AZoomIndexOutsideTheTableIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const DocumentPtr document = makeDocument();
  put(document->zoomLevelIndex, 29);
  EXPECT_DEATH((void)document->zoom(), "Zoom level");
}

}  // namespace
}  // namespace orvanel
