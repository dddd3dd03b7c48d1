#include "panels/levels/LevelsWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QThreadPool>
#include <cmath>
#include <memory>
#include <numeric>

#include "model/PixelSupport.h"
#include "panels/controls/DirectSlider.h"
#include "raster/HalfFloat.h"

namespace orvanel {
namespace {

class LevelsWindowTest : public testing::Test {
 protected:
  ~LevelsWindowTest() override { QThreadPool::globalInstance()->waitForDone(); }

  static bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
      if (timer.elapsed() > 30000) return false;
      QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
  }
  [[nodiscard]] Surface pixels() const {
    document->settle();
    return *layer->texture.value();
  }
  [[nodiscard]] std::size_t records() const { return document->undoStack.operations().size(); }
  LevelsContentView& content() { return window.content(); }
  void openOnGrey() {
    document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
    document->setDirty(false);
    window.openFor(document);
    ASSERT_TRUE(window.isOpen());
  }

  DocumentPtr document =
      Document::create(QStringLiteral("Test"), 40, 30, ColorMode::rgb8, MetalContext::shared());
  std::shared_ptr<Layer> layer = document->activeLayer();
  LevelsWindow window{nullptr};
};

TEST_F(LevelsWindowTest, OpensWithTheDefaultLevels) {
  EXPECT_EQ(window.windowTitle(), "Levels");
  openOnGrey();
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(window.layerID(), layer->id);
  EXPECT_EQ(window.model().levels(), Levels{});
  EXPECT_EQ(content().black.slider->minimum(), 0);
  EXPECT_EQ(content().black.field->maximum(), 254.0);
  EXPECT_EQ(content().white.field->minimum(), 1.0);
  EXPECT_EQ(content().white.field->value(), 255.0);
  EXPECT_EQ(content().gamma.field->value(), 1.0);
  EXPECT_EQ(records(), 1U) << "opening records nothing";
}

TEST_F(LevelsWindowTest, OpensOnlyOnALayer) {
  document->addFolder(QStringLiteral("Folder"));
  window.openFor(document);
  EXPECT_FALSE(window.isOpen());
  EXPECT_FALSE(window.isVisible());
  document->selectNode(std::nullopt);
  window.openFor(document);
  EXPECT_FALSE(window.isOpen());
}

TEST_F(LevelsWindowTest, CountsTheBrightnessOfTheLayerInTheBackground) {
  openOnGrey();
  ASSERT_TRUE(waitUntil([this] { return window.model().histogram.value()[128] != 0; }));
  const LevelsHistogram& histogram = window.model().histogram.value();
  EXPECT_EQ(histogram[128], 40 * 30);
  EXPECT_EQ(std::accumulate(histogram.begin(), histogram.end(), std::int64_t{0}), 40 * 30);
}

TEST_F(LevelsWindowTest, AHistogramThatArrivesAfterTheClosingIsDropped) {
  openOnGrey();
  window.reject();
  QThreadPool::globalInstance()->waitForDone();
  QApplication::processEvents();
  EXPECT_EQ(window.model().histogram.value()[128], 0);
}

TEST_F(LevelsWindowTest, SlidersPreviewFromTheOriginalPixels) {
  openOnGrey();
  content().white.slider->setValue(content().white.slider->minimum());
  EXPECT_EQ(window.model().whitePoint.value(), 1.0F);
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFFFFFFFFU);
  content().white.slider->setValue(content().white.slider->maximum());
  EXPECT_EQ(window.model().whitePoint.value(), 255.0F);
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF808080U);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(document->needsCompositing.value());
}

TEST_F(LevelsWindowTest, FieldsAndSlidersShowTheSameValue) {
  openOnGrey();
  content().black.field->setValue(100.0);
  EXPECT_EQ(window.model().blackPoint.value(), 100.0F);
  EXPECT_EQ(content().black.slider->value(), 100);
  content().black.slider->setValue(20);
  EXPECT_EQ(content().black.field->value(), 20.0);
  content().gamma.slider->setValue(content().gamma.slider->maximum());
  EXPECT_EQ(content().gamma.field->value(), 9.99);
  content().gamma.slider->setValue(content().gamma.slider->minimum());
  EXPECT_EQ(content().gamma.field->value(), 0.1);
  content().gamma.slider->setValue(content().gamma.slider->maximum() / 2);
  EXPECT_EQ(content().gamma.field->value(), 1.0) << "1 lies in the middle";
}

TEST_F(LevelsWindowTest, OKKeepsOneRecord) {
  openOnGrey();
  for (int position = 0; position < 120; ++position) content().black.slider->setValue(position);
  content().okButton->click();
  EXPECT_FALSE(window.isVisible());
  EXPECT_FALSE(window.isOpen());
  EXPECT_EQ(records(), 2U);
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_TRUE(layer->thumbnailDirty.value());
  document->undo();
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF808080U);
}

TEST_F(LevelsWindowTest, OKWithTheDefaultLevelsKeepsARecordToo) {
  openOnGrey();
  content().okButton->click();
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels");
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF808080U);
}

TEST_F(LevelsWindowTest, CancelRestoresTheExactPixelsWithoutARecord) {
  openOnGrey();
  const Surface before = pixels();
  for (int position = 0; position < 200; position += 7) {
    content().black.slider->setValue(position);
    content().gamma.slider->setValue(position);
  }
  content().cancelButton->click();
  EXPECT_TRUE(pixels().equals(before));
  EXPECT_EQ(records(), 1U);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(document->needsCompositing.value());
  EXPECT_FALSE(window.isVisible());
}

TEST_F(LevelsWindowTest, ClosingThePanelByItsFrameCancels) {
  openOnGrey();
  content().black.slider->setValue(200);
  window.close();
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF808080U);
  EXPECT_FALSE(window.isOpen());
}

TEST_F(LevelsWindowTest, ASelectionLimitsPreviewAndResult) {
  openOnGrey();
  window.reject();
  test::selectRect(*document, {0, 0, 10, 10});
  const auto expectLimited = [this] {
    EXPECT_EQ(pixels().pixelAt(9, 9), 0xFF000000U);
    EXPECT_EQ(pixels().pixelAt(10, 9), 0xFF808080U);
    EXPECT_EQ(pixels().pixelAt(9, 10), 0xFF808080U);
  };
  window.openFor(document);
  content().black.slider->setValue(200);
  expectLimited();
  content().okButton->click();
  expectLimited();
}

TEST_F(LevelsWindowTest, AnEmptySelectionLimitsNothing) {
  openOnGrey();
  window.reject();
  document->selectAll();
  document->invertSelection();
  document->ensureSelection();
  window.openFor(document);
  content().black.slider->setValue(200);
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF000000U);
}

TEST_F(LevelsWindowTest, ADragIsContinuousEditingAndMarksTheThumbnailsAtItsEnd) {
  openOnGrey();
  content().onEditingChanged(true);
  EXPECT_EQ(document->thumbnailManager->continuousEditingCount(), 1);
  content().black.slider->setValue(10);
  content().onEditingChanged(false);
  EXPECT_EQ(document->thumbnailManager->continuousEditingCount(), 0);
  EXPECT_TRUE(document->thumbnailManager->dirtyLayerIDs().contains(layer->id));
  content().onEditingChanged(true);
  window.reject();
  EXPECT_EQ(document->thumbnailManager->continuousEditingCount(), 0) << "a drag that never ended";
}

TEST_F(LevelsWindowTest, SlidersReportTheirDrags) {
  openOnGrey();
  DirectSlider& slider = *content().gamma.slider;
  const QPoint centre = slider.rect().center();
  QTest::mousePress(&slider, Qt::LeftButton, {}, centre);
  EXPECT_EQ(document->thumbnailManager->continuousEditingCount(), 1);
  QTest::mouseMove(&slider, centre + QPoint(40, 0));
  EXPECT_GT(window.model().gamma.value(), 1.0F);
  QTest::mouseRelease(&slider, Qt::LeftButton, {}, centre + QPoint(40, 0));
  EXPECT_EQ(document->thumbnailManager->continuousEditingCount(), 0);
}

TEST_F(LevelsWindowTest, KeysStepTheSlidersAndTheFields) {
  openOnGrey();
  QTest::keyClick(content().black.slider, Qt::Key_Right);
  EXPECT_EQ(window.model().blackPoint.value(), 1.0F);
  QTest::keyClick(content().black.slider, Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(window.model().blackPoint.value(), 11.0F);
  QTest::keyClick(content().white.field, Qt::Key_Down);
  EXPECT_EQ(window.model().whitePoint.value(), 254.0F);
  QTest::keyClick(content().gamma.field, Qt::Key_Up);
  EXPECT_FLOAT_EQ(window.model().gamma.value(), 1.1F);
}

TEST_F(LevelsWindowTest, EscapeCancels) {
  openOnGrey();
  content().black.slider->setValue(200);
  QTest::keyClick(content().black.slider, Qt::Key_Escape);
  EXPECT_FALSE(window.isOpen());
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF808080U);
}

TEST_F(LevelsWindowTest, OpeningAgainOnTheSameLayerKeepsTheLevels) {
  openOnGrey();
  content().black.slider->setValue(10);
  window.openFor(document);
  EXPECT_EQ(window.model().blackPoint.value(), 10.0F);
  EXPECT_EQ(records(), 1U);
}

TEST_F(LevelsWindowTest, ACopyOfTheFileIsAnotherDocumentAlthoughItsLayersHaveTheSameIDs) {
  openOnGrey();
  content().black.slider->setValue(200);
  const auto twinLayer =
      std::make_shared<Layer>(NodeValues{.id = layer->id, .name = "Twin"}, document->makeLayerTexture());
  const DocumentPtr twin = Document::create(
      {.width = 40, .height = 30, .rootNodes = {LayerNode(twinLayer)}, .selectedNodeID = layer->id},
      MetalContext::shared());
  window.openFor(twin);
  EXPECT_EQ(window.model().levels(), Levels{}) << "an adjustment of its own";
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels") << "the other's is kept";
  content().black.slider->setValue(100);
  content().okButton->click();
  EXPECT_EQ(twin->undoStack.operations().size(), 1U);
  EXPECT_EQ(records(), 2U);
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF000000U);
}

TEST_F(LevelsWindowTest, OpeningOnAnotherLayerKeepsWhatWasShown) {
  openOnGrey();
  content().black.slider->setValue(10);
  document->duplicateNode(layer->id);
  window.openFor(document);
  EXPECT_EQ(window.layerID(), document->activeLayer()->id);
  EXPECT_EQ(window.model().levels(), Levels{});
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels");
  QApplication::processEvents();
  EXPECT_TRUE(window.isVisible()) << "the first adjustment's end doesn't close the second";
}

TEST_F(LevelsWindowTest, ThePanelClosesWithAnEditThatEndsItsAdjustment) {
  openOnGrey();
  content().black.slider->setValue(10);
  document->changeColorMode(ColorMode::rgb16);
  QApplication::processEvents();
  EXPECT_FALSE(window.isVisible());
  EXPECT_FALSE(window.isOpen());
  EXPECT_EQ(records(), 3U) << "fill, levels, mode";
}

TEST_F(LevelsWindowTest, ThePanelClosesEvenIfItsAdjustmentHasShownNothing) {
  openOnGrey();
  document->endOpenEdits();
  QApplication::processEvents();
  EXPECT_FALSE(window.isVisible());
  EXPECT_EQ(records(), 1U);
}

TEST_F(LevelsWindowTest, WithoutItsDocumentThePanelSimplyCloses) {
  for (const bool isOK : {true, false}) {
    document = Document::create(QStringLiteral("Gone"), 8, 8, ColorMode::rgb8, MetalContext::shared());
    window.openFor(document);
    document.reset();
    content().black.slider->setValue(isOK ? 10 : 20);
    (isOK ? content().okButton : content().cancelButton)->click();
    EXPECT_FALSE(window.isVisible());
  }
}

TEST_F(LevelsWindowTest, WithoutItsLayerThePanelCloses) {
  openOnGrey();
  document->addLayer(QStringLiteral("Other"));
  content().black.slider->setValue(10);
  document->removeNode(layer->id);
  QApplication::processEvents();
  EXPECT_FALSE(window.isVisible());
}

TEST_F(LevelsWindowTest, ANumberThatIsBeingTypedGoesWithTheWindow) {
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  auto closing = std::make_unique<LevelsWindow>(nullptr);
  closing->openFor(document);
  closing->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(closing.get()));
  QDoubleSpinBox& field = *closing->content().black.field;
  field.setFocus();
  field.selectAll();
  QTest::keyClicks(&field, QStringLiteral("100"));
  ASSERT_TRUE(field.hasFocus());
  int finished = 0;
  QObject::connect(&field, &QDoubleSpinBox::editingFinished, [&] { ++finished; });
  closing.reset();
  EXPECT_EQ(finished, 0) << "there is no model any more";
  EXPECT_EQ(pixels().pixelAt(0, 0), 0xFF808080U);
}

/// A view whose points stand on whole pixels: its area is 255 points wide.
class HistogramViewTest : public testing::Test {
 protected:
  HistogramViewTest() { view.resize(258, 100); }

  [[nodiscard]] QImage shown() { return view.grab().toImage().convertToFormat(QImage::Format_RGB32); }
  /// The columns that are nothing but this color.
  [[nodiscard]] std::vector<int> linesOf(const QColor& color) {
    const QImage image = shown();
    std::vector<int> found;
    for (int x = 0; x < image.width(); ++x) {
      bool isWhole = true;
      for (int y = 1; y < image.height() - 1; ++y) isWhole = isWhole && image.pixelColor(x, y) == color;
      if (isWhole) found.push_back(x);
    }
    return found;
  }

  LevelsModel model;
  HistogramView view{model, nullptr};
};

TEST_F(HistogramViewTest, ThePointsAreBlueAndRedLinesAtTheirPartsOfTheWidth) {
  ASSERT_EQ(view.area().width(), 255.0);
  const auto place = [this](float point) {
    return static_cast<int>(view.area().left() + static_cast<double>(point));
  };
  for (const float black : {0.0F, 1.0F, 100.0F, 254.0F}) {
    model.blackPoint = black;
    EXPECT_EQ(linesOf(QColor(0, 0, 255)), std::vector{place(black)}) << black;
  }
  for (const float white : {255.0F, 253.0F, 180.0F, 1.0F}) {
    model.whitePoint = white;
    EXPECT_EQ(linesOf(QColor(255, 0, 0)), std::vector{place(white)}) << white;
  }
}

TEST_F(HistogramViewTest, TheEndsAreToldFromTheirNeighbors) {
  const QImage atZero = shown();
  model.blackPoint = 1.0F;
  EXPECT_NE(shown(), atZero);
  model.blackPoint = 0.0F;
  model.whitePoint = 254.0F;
  EXPECT_NE(shown(), atZero);
}

TEST_F(HistogramViewTest, TheBarsAreBlackAtSevenTenthsAndReachTheTop) {
  LevelsHistogram histogram{};
  for (std::size_t bin = 100; bin < 160; ++bin) histogram[bin] = 1000;
  for (std::size_t bin = 160; bin < 200; ++bin) histogram[bin] = 1;
  model.histogram = histogram;
  const QImage image = shown();
  for (const int y : {1, 50, 98}) EXPECT_NEAR(image.pixelColor(130, y).red(), 0.3 * 255, 1) << y;
  for (const int x : {50, 180, 230}) EXPECT_EQ(image.pixelColor(x, 98), QColor(255, 255, 255)) << x;
}

TEST_F(HistogramViewTest, BarsAreLogarithms) {
  LevelsHistogram histogram{};
  EXPECT_EQ(HistogramView::barHeights(histogram), std::vector<double>(256, 0.0));
  histogram[3] = 1000;
  histogram[4] = 10;
  histogram[5] = 1;
  const std::vector<double> heights = HistogramView::barHeights(histogram);
  EXPECT_EQ(heights[3], 1.0);
  EXPECT_NEAR(heights[4], 1.0 / 3.0, 1e-9);
  EXPECT_EQ(heights[5], 0.0);
  EXPECT_EQ(heights[6], 0.0);
}

}  // namespace
}  // namespace orvanel
