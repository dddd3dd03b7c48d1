#include "panels/channels/ChannelListView.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>
#include <memory>
#include <optional>

#include "model/ModelSupport.h"
#include "model/ThumbnailManager.h"

namespace orvanel {
namespace {

using namespace test;

class ChannelListViewTest : public testing::Test {
 protected:
  enum Row { rgb, red, green, blue };

  void SetUp() override { showList(ColorMode::rgb8); }
  void showList(ColorMode mode) {
    document = makeDocument(40, 30, mode);
    list.setDocument(document);
    list.resize(200, 4 * 56);
    list.show();
    list.activateWindow();
    list.setFocus();
    QApplication::processEvents();
    document->setDirty(false);
  }
  [[nodiscard]] ChannelVisibility shown() const { return document->channelVisibility.value(); }
  [[nodiscard]] QPoint name(int row) const { return list.eyeOf(row).center() + QPoint(120, 0); }
  void click(const QPoint& point, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(list.viewport(), Qt::LeftButton, modifiers, point);
  }
  void clickEye(int row) { click(list.eyeOf(row).center()); }
  void pressEye(int row) { QTest::mousePress(list.viewport(), Qt::LeftButton, {}, list.eyeOf(row).center()); }
  void moveTo(int row, Qt::MouseButtons held = Qt::LeftButton) {
    const QPoint point = list.eyeOf(row).center();
    QMouseEvent move(QEvent::MouseMove, point, list.viewport()->mapToGlobal(QPointF(point)), Qt::NoButton,
                     held, Qt::NoModifier);
    QApplication::sendEvent(list.viewport(), &move);
  }
  void sweep(const std::vector<int>& rows) {
    pressEye(rows.front());
    for (const int row : rows) moveTo(row);
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, {}, list.eyeOf(rows.back()).center());
  }
  /// One color for all channels; none takes the pictures away.
  void givePictures(const std::optional<QColor>& color) {
    QImage image(48, 36, QImage::Format_ARGB32_Premultiplied);
    if (color) image.fill(*color);
    const Thumbnail picture = color ? std::make_shared<const QImage>(image) : Thumbnail();
    put(document->compositeThumbnailImage, picture);
    put(document->compositeChannelThumbnails, std::vector<Thumbnail>(3, picture));
  }
  [[nodiscard]] QImage shownAt(const QRect& place) {
    return list.viewport()->grab(place).toImage().convertToFormat(QImage::Format_RGB32);
  }
  /// How dark the eye is drawn.
  [[nodiscard]] int inkOfEye(int row) {
    const QImage image = shownAt(list.eyeOf(row));
    int darkest = 255;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) darkest = std::min(darkest, qGray(image.pixel(x, y)));
    }
    return qGray(image.pixel(0, 0)) - darkest;
  }
  [[nodiscard]] std::vector<std::string> names() {
    std::vector<std::string> found;
    for (int row = 0; row < list.model()->rowCount(); ++row) {
      found.push_back(list.model()->index(row, 0).data().toString().toStdString());
    }
    return found;
  }

  DocumentPtr document;
  ChannelListView list;
};

using Names = std::vector<std::string>;

TEST_F(ChannelListViewTest, ColoursHaveFourRowsAndGreyHasOne) {
  EXPECT_EQ(names(), (Names{"RGB", "Red", "Green", "Blue"}));
  document->changeColorMode(ColorMode::grayscale16);
  EXPECT_EQ(names(), Names{"White"});
  document->undo();
  EXPECT_EQ(names().size(), 4U);
  list.setDocument(nullptr);
  EXPECT_EQ(names(), Names{});
  EXPECT_EQ(list.visualRect(list.model()->index(0, 0)).height(), 0);
}

TEST_F(ChannelListViewTest, RowsMeasureAsTold) {
  EXPECT_EQ(list.visualRect(list.model()->index(0, 0)).size(), QSize(200, 56));
}

TEST_F(ChannelListViewTest, TurningRedOffTouchesNoPixel) {
  static_cast<void>(document->composite());
  ChangeRecorder changes(*document);
  clickEye(red);
  EXPECT_EQ(shown(), (ChannelVisibility{0, 1, 1}));
  EXPECT_TRUE(document->isCompositeCurrent());
  EXPECT_EQ(changes.count<change::PixelsChanged>(), 0U);
  EXPECT_EQ(document->undoStack.operations().size(), 0U);
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChannelListViewTest, WithRedOffTheImagesEyeTurnsAllOn) {
  clickEye(red);
  EXPECT_FALSE(list.channelModel().isVisible(rgb));
  EXPECT_TRUE(list.channelModel().isVisible(green));
  clickEye(rgb);
  EXPECT_EQ(shown(), ChannelVisibility{});
  clickEye(rgb);
  EXPECT_EQ(shown(), (ChannelVisibility{0, 0, 0}));
  clickEye(blue);
  EXPECT_EQ(shown(), (ChannelVisibility{0, 0, 1}));
}

TEST_F(ChannelListViewTest, AClickOnARowShowsItAlone) {
  click(name(green));
  EXPECT_EQ(shown(), (ChannelVisibility{0, 1, 0}));
  ChangeRecorder changes(*document);
  click(name(green));
  EXPECT_EQ(shown(), (ChannelVisibility{0, 1, 0}));
  EXPECT_EQ(changes.batches, 0);
  click(list.thumbnailOf(blue).center());
  EXPECT_EQ(shown(), (ChannelVisibility{0, 0, 1}));
  click(name(rgb));
  EXPECT_EQ(shown(), ChannelVisibility{});
}

TEST_F(ChannelListViewTest, ASweepSetsItsRowsToOneValue) {
  clickEye(green);
  sweep({red, green, blue, green});
  EXPECT_EQ(shown(), (ChannelVisibility{0, 0, 0}));
  sweep({blue, red});
  EXPECT_EQ(shown(), ChannelVisibility{}) << "rows between aren't skipped";
  sweep({rgb, red});
  EXPECT_EQ(shown(), (ChannelVisibility{0, 0, 0})) << "the first row stands for all lanes";
}

TEST_F(ChannelListViewTest, ASweepOverThreeRowsInOneDragSetsThemToOneValue) {
  sweep({red, green, blue});
  EXPECT_EQ(shown(), (ChannelVisibility{0, 0, 0}));
  EXPECT_EQ(document->undoStack.operations().size(), 0U);
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChannelListViewTest, ASweepWhoseReleaseWasLostEndsWithTheNextMove) {
  pressEye(red);
  moveTo(green, Qt::NoButton);
  moveTo(blue);
  EXPECT_EQ(shown(), (ChannelVisibility{0, 1, 1}));
}

TEST_F(ChannelListViewTest, ASweepEndsWithTheRowsThatItBeganOn) {
  pressEye(blue);
  document->changeColorMode(ColorMode::grayscale8);
  moveTo(0);
  EXPECT_EQ(shown(), (ChannelVisibility{1, 1, 0})) << "as the press left it";
  document->undo();
  moveTo(red);
  EXPECT_EQ(shown(), (ChannelVisibility{1, 1, 0}));
}

TEST_F(ChannelListViewTest, ASweepGoesOnInAnotherDepthOfTheSameRows) {
  pressEye(blue);
  document->changeColorMode(ColorMode::rgb16);
  moveTo(green);
  EXPECT_EQ(shown(), (ChannelVisibility{1, 0, 0}));
}

TEST_F(ChannelListViewTest, AnotherDocumentEndsASweep) {
  pressEye(blue);
  const DocumentPtr other = makeDocument();
  list.setDocument(other);
  moveTo(red);
  EXPECT_EQ(other->channelVisibility.value(), ChannelVisibility{});
}

TEST_F(ChannelListViewTest, ControlClicksOnThumbnailsLoadTheChannel) {
  document->fillSelection({1.0F, 0.0F, 0.5F, 1.0F});
  givePictures(Qt::green);
  const auto loadedValue = [&](int row) {
    click(list.thumbnailOf(row).center(), Qt::ControlModifier);
    EXPECT_EQ(document->undoStack.undoActionName(), "Select Channel");
    std::uint16_t half = 0;
    document->selection.value()->maskTexture->texture->readRect({0, 0, 1, 1},
                                                                reinterpret_cast<std::byte*>(&half), 2);
    return half;
  };
  constexpr std::uint16_t one = 0x3C00;
  EXPECT_EQ(loadedValue(red), one);
  EXPECT_EQ(loadedValue(green), 0);
  EXPECT_NEAR(loadedValue(blue), 0x3800, 8);
  EXPECT_EQ(loadedValue(rgb), one) << "how opaque the image is";
  EXPECT_EQ(shown(), ChannelVisibility{});
}

TEST_F(ChannelListViewTest, TheGreyRowSwitchesAllLanes) {
  showList(ColorMode::grayscale8);
  clickEye(0);
  EXPECT_EQ(shown(), (ChannelVisibility{0, 0, 0}));
  clickEye(0);
  EXPECT_EQ(shown(), ChannelVisibility{});
  givePictures(Qt::green);
  click(list.thumbnailOf(0).center(), Qt::ControlModifier);
  EXPECT_EQ(document->undoStack.undoActionName(), "Select Channel");
}

TEST_F(ChannelListViewTest, TheGreyEyeTurnsWhatItShows) {
  document->setChannelVisibility({1, 0, 1});
  document->changeColorMode(ColorMode::grayscale8);
  EXPECT_TRUE(list.channelModel().isVisible(0)) << "lane 0 is on";
  clickEye(0);
  EXPECT_FALSE(list.channelModel().isVisible(0));
  clickEye(0);
  EXPECT_TRUE(list.channelModel().isVisible(0));
}

TEST_F(ChannelListViewTest, TheImagesEyeIsFaintUnlessAllChannelsAreShown) {
  QApplication::sendEvent(list.viewport(), std::make_unique<QEvent>(QEvent::Leave).get());
  const int whole = inkOfEye(rgb);
  ASSERT_GT(whole, 100);
  document->setChannelVisibility({0, 1, 1});
  EXPECT_NEAR(inkOfEye(rgb), 0.3 * whole, 3);
  EXPECT_NEAR(inkOfEye(red), 0.3 * whole, 3);
  EXPECT_EQ(inkOfEye(green), whole);
}

TEST_F(ChannelListViewTest, WhereAPictureIsMissingIsPlainRow) {
  givePictures(Qt::green);
  EXPECT_EQ(shownAt(list.thumbnailOf(red)).pixelColor(24, 24), QColor(Qt::green));
  givePictures(std::nullopt);
  const QImage place = shownAt(list.thumbnailOf(red));
  for (int y = 0; y < place.height(); ++y) {
    for (int x = 0; x < place.width(); ++x) ASSERT_EQ(place.pixel(x, y), place.pixel(0, 0)) << x << ", " << y;
  }
  click(list.thumbnailOf(red).center(), Qt::ControlModifier);
  EXPECT_EQ(document->undoStack.operations().size(), 0U) << "there is nothing to load it from";
  EXPECT_EQ(shown(), (ChannelVisibility{1, 0, 0})) << "as by a click elsewhere on the row";
}

TEST_F(ChannelListViewTest, KeysDoWhatThePointerDoes) {
  QTest::keyClick(&list, Qt::Key_Down);
  QTest::keyClick(&list, Qt::Key_Down);
  const int row = list.currentIndex().row();
  ASSERT_GT(row, 0);
  QTest::keyClick(&list, Qt::Key_Space);
  EXPECT_FALSE(list.channelModel().isVisible(row));
  QTest::keyClick(&list, Qt::Key_Return);
  EXPECT_TRUE(list.channelModel().isVisible(row));
  EXPECT_FALSE(list.channelModel().isVisible(rgb));
  QTest::keyClick(&list, Qt::Key_Return, Qt::ControlModifier);
  EXPECT_EQ(document->undoStack.undoActionName(), "Select Channel");
}

TEST_F(ChannelListViewTest, ShowsThePicturesOfTheComposite) {
  EXPECT_EQ(list.channelModel().thumbnailOf(rgb), nullptr);
  const auto viewing = ThumbnailManager::viewing(document);
  static_cast<void>(document->composite());
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  static_cast<void>(document->composite());
  ASSERT_TRUE(QTest::qWaitFor([this] { return list.channelModel().thumbnailOf(rgb) != nullptr; }, 30000));
  EXPECT_EQ(list.channelModel().thumbnailOf(rgb), document->compositeThumbnailImage.value());
  for (const int row : {red, green, blue}) {
    EXPECT_EQ(list.channelModel().thumbnailOf(row),
              document->compositeChannelThumbnails.value()[static_cast<std::size_t>(row - 1)]);
  }
}

TEST_F(ChannelListViewTest, OnlyRowsWithANewEyeChange) {
  QSignalSpy changed(list.model(), &QAbstractItemModel::dataChanged);
  QSignalSpy resets(list.model(), &QAbstractItemModel::modelReset);
  document->setChannelVisibility({0, 1, 1});
  ASSERT_EQ(changed.count(), 2) << "the image's row and red";
  EXPECT_EQ(changed.at(0).at(0).toModelIndex().row(), rgb);
  EXPECT_EQ(changed.at(1).at(0).toModelIndex().row(), red);
  document->addLayer("a");
  document->zoomIn();
  EXPECT_EQ(changed.count(), 2);
  EXPECT_EQ(resets.count(), 0);
}

TEST_F(ChannelListViewTest, ScreenReadersReadAndSwitchTheEyes) {
  QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&list);
  ASSERT_NE(accessible->tableInterface(), nullptr);
  const auto cell = [&](int row) { return accessible->tableInterface()->cellAt(row, 0); };
  EXPECT_EQ(cell(red)->text(QAccessible::Name), "Red, visible");
  EXPECT_TRUE(cell(red)->state().checkable);
  EXPECT_TRUE(list.model()->setData(list.model()->index(red, 0), Qt::Unchecked, Qt::CheckStateRole));
  EXPECT_EQ(cell(red)->text(QAccessible::Name), "Red, hidden");
  EXPECT_EQ(shown(), (ChannelVisibility{0, 1, 1}));
}

}  // namespace
}  // namespace orvanel
