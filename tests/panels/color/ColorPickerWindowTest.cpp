#include "panels/color/ColorPickerWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <memory>
#include <vector>

#include "panels/color/ColorPreview.h"
#include "panels/color/HexField.h"
#include "panels/color/HueStrip.h"
#include "panels/color/LabeledIntField.h"
#include "panels/color/SVPicker.h"
#include "panels/controls/ValueField.h"

namespace orvanel {
namespace {

constexpr DisplayColor red{1.0F, 0.0F, 0.0F, 1.0F};
constexpr DisplayColor cyan{0.0F, 1.0F, 1.0F, 1.0F};

class ColorPickerWindowTest : public testing::Test {
 protected:
  void open(const DisplayColor& color) {
    window.open(QStringLiteral("Foreground Color"), color,
                [this](const DisplayColor& chosen) { told.push_back(chosen); });
    window.activateWindow();
    static_cast<void>(QTest::qWaitForWindowActive(&window));
  }
  ColorPickerContentView& content() { return window.content(); }
  ColorPickerModel& model() { return window.model(); }
  /// A place in the square.
  QPoint at(double saturation, double brightness) {
    const QRectF square = content().square->square();
    return (square.topLeft() + QPointF(saturation, 1.0 - brightness) * square.width()).toPoint();
  }
  QPoint atHue(double hue) {
    const QRectF track = content().strip->track();
    return QPointF(track.center().x(), track.top() + (1.0 - hue) * track.height()).toPoint();
  }
  void type(ValueField& field, const QString& text) {
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, text);
    QTest::keyClick(&field, Qt::Key_Return);
  }
  void paste(const QString& text) {
    QApplication::clipboard()->setText(text);
    ValueField& field = content().hex->field();
    field.setFocus();
    field.selectAll();
    QTest::keySequence(&field, QKeySequence::Paste);
  }

  std::vector<DisplayColor> told;
  ColorPickerWindow window{nullptr};
};

TEST_F(ColorPickerWindowTest, OpensWithTheColorAndTellsNobody) {
  open(cyan);
  EXPECT_TRUE(window.isVisible());
  EXPECT_EQ(window.windowTitle(), "Color Picker");
  EXPECT_EQ(window.windowType(), Qt::Tool);
  EXPECT_TRUE(window.testAttribute(Qt::WA_ShowWithoutActivating));
  EXPECT_EQ(window.size(), QSize(420, 310));
  EXPECT_EQ(content().name->text(), "Foreground Color");
  EXPECT_EQ(content().hue->value(), 180);
  EXPECT_EQ(content().saturation->value(), 100);
  EXPECT_EQ(content().brightness->value(), 100);
  EXPECT_EQ(content().red->value(), 0);
  EXPECT_EQ(content().green->value(), 255);
  EXPECT_EQ(content().blue->value(), 255);
  EXPECT_EQ(content().hex->field().text(), "00FFFF");
  EXPECT_EQ(content().hue->field().text(), QStringLiteral("180°"));
  EXPECT_EQ(content().saturation->field().text(), "100%");
  EXPECT_TRUE(told.empty());
}

TEST_F(ColorPickerWindowTest, AColorBetweenTheStepsOfEightBitsIsNotChangedByOpening) {
  open({0.3F, 0.6F, 0.9F, 1.0F});
  window.reject();
  EXPECT_TRUE(told.empty());
}

TEST_F(ColorPickerWindowTest, AColorChangedElsewhereIsShownAndNotToldBack) {
  open(cyan);
  window.follow(red);
  EXPECT_EQ(content().hex->field().text(), "FF0000");
  EXPECT_EQ(model().originalColor.value(), cyan) << "the colour at the opening";
  EXPECT_TRUE(told.empty());
  type(content().green->field(), QStringLiteral("255"));
  EXPECT_EQ(told.back(), (DisplayColor{1.0F, 1.0F, 0.0F, 1.0F})) << "further changes start from it";
}

TEST_F(ColorPickerWindowTest, CancelGivesBackTheFirstColorEvenIfItWasChangedElsewhere) {
  open(cyan);
  window.follow(red);
  window.reject();
  EXPECT_EQ(told, std::vector{cyan});
  window.follow(red);
  EXPECT_EQ(told.size(), 1U) << "a closed picker follows nothing";
}

TEST_F(ColorPickerWindowTest, DraggingInTheSquarePicksSaturationAndBrightness) {
  open(cyan);
  QTest::mousePress(content().square, Qt::LeftButton, {}, at(0.5, 0.5));
  EXPECT_NEAR(model().saturation.value(), 0.5, 0.01);
  EXPECT_NEAR(model().brightness.value(), 0.5, 0.01);
  EXPECT_EQ(told.size(), 1U) << "one change, told once";
  QTest::mouseMove(content().square, QPoint(-50, 5000));
  EXPECT_EQ(model().saturation.value(), 0.0) << "kept within the square";
  EXPECT_EQ(model().brightness.value(), 0.0);
  EXPECT_EQ(told.back(), DisplayColor::black());
}

TEST_F(ColorPickerWindowTest, DraggingTheBrightnessToNothingAndBackKeepsTheHue) {
  open(cyan);
  ASSERT_EQ(model().hue.value(), 0.5);
  QTest::mousePress(content().square, Qt::LeftButton, {}, at(1.0, 1.0));
  QTest::mouseMove(content().square, at(1.0, 0.0));
  EXPECT_EQ(content().hex->field().text(), "000000");
  QTest::mouseMove(content().square, at(1.0, 1.0));
  QTest::mouseRelease(content().square, Qt::LeftButton, {}, at(1.0, 1.0));
  EXPECT_EQ(model().hue.value(), 0.5);
  EXPECT_EQ(told.back(), cyan);
}

TEST_F(ColorPickerWindowTest, DraggingOnTheStripPicksTheHue) {
  open(red);
  QTest::mousePress(content().strip, Qt::LeftButton, {}, atHue(0.5));
  EXPECT_NEAR(model().hue.value(), 0.5, 0.005);
  QTest::mouseMove(content().strip, QPoint(10, -100));
  EXPECT_EQ(model().hue.value(), 1.0);
  EXPECT_EQ(told.back(), red) << "both ends are red";
}

TEST_F(ColorPickerWindowTest, ArrowKeysMoveTheMarkers) {
  open(cyan);
  content().square->setFocus();
  QTest::keyClick(content().square, Qt::Key_Left);
  EXPECT_DOUBLE_EQ(model().saturation.value(), 0.99);
  QTest::keyClick(content().square, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_DOUBLE_EQ(model().brightness.value(), 0.9);
  QTest::keyClick(content().square, Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_EQ(model().saturation.value(), 1.0);
  QTest::keyClick(content().square, Qt::Key_Up);
  EXPECT_DOUBLE_EQ(model().brightness.value(), 0.91);
  QTest::keyClick(content().strip, Qt::Key_Up);
  EXPECT_EQ(content().hue->value(), 181);
  QTest::keyClick(content().strip, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(content().hue->value(), 171);
}

TEST_F(ColorPickerWindowTest, PastingTheDigitsOfPureRed) {
  for (const char* text : {"FF0000", "ff0000", " #FF0000 "}) {
    open(cyan);
    paste(QString::fromLatin1(text));
    EXPECT_EQ(model().hue.value(), 0.0) << text;
    EXPECT_EQ(model().saturation.value(), 1.0);
    EXPECT_EQ(model().brightness.value(), 1.0);
    EXPECT_EQ(told.back(), red);
  }
}

TEST_F(ColorPickerWindowTest, OtherTextThanSixDigitsChangesNothing) {
  open(cyan);
  for (const char* text : {"FF000", "FF00000", "GG0000", "+FF000", "-12345", "0xFF00", ""}) {
    paste(QString::fromLatin1(text));
    EXPECT_TRUE(told.empty()) << text;
    QTest::keyClick(&content().hex->field(), Qt::Key_Return);
    EXPECT_EQ(content().hex->field().text(), "00FFFF") << text;
    EXPECT_TRUE(window.isVisible()) << text;
  }
}

TEST_F(ColorPickerWindowTest, TheSixthDigitCountsAtOnceAndTheTextStaysAsTyped) {
  open(cyan);
  ValueField& field = content().hex->field();
  field.setFocus();
  field.selectAll();
  QTest::keyClicks(&field, QStringLiteral("00ff0"));
  EXPECT_TRUE(told.empty());
  QTest::keyClicks(&field, QStringLiteral("0"));
  EXPECT_EQ(told.back(), (DisplayColor{0.0F, 1.0F, 0.0F, 1.0F}));
  EXPECT_EQ(field.text(), "00ff00");
  content().square->setFocus();
  EXPECT_EQ(field.text(), "00FF00");
}

TEST_F(ColorPickerWindowTest, FieldsOfHueSaturationAndBrightness) {
  open(red);
  type(content().hue->field(), QStringLiteral("120"));
  EXPECT_EQ(content().hex->field().text(), "00FF00");
  type(content().saturation->field(), QStringLiteral("50%"));
  EXPECT_EQ(content().hex->field().text(), "80FF80");
  type(content().brightness->field(), QStringLiteral("200"));
  EXPECT_EQ(content().brightness->value(), 100);
  type(content().hue->field(), QStringLiteral("999"));
  EXPECT_EQ(content().hue->field().text(), QStringLiteral("360°"));
}

TEST_F(ColorPickerWindowTest, FieldsOfRedGreenAndBlue) {
  open(DisplayColor::black());
  type(content().red->field(), QStringLiteral("255"));
  type(content().green->field(), QStringLiteral("128"));
  type(content().blue->field(), QStringLiteral("999"));
  EXPECT_EQ(content().hex->field().text(), "FF80FF");
  type(content().blue->field(), QStringLiteral("none"));
  EXPECT_EQ(content().blue->field().text(), "255");
  QTest::keyClick(&content().green->field(), Qt::Key_Up);
  QTest::keyClick(&content().green->field(), Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(content().green->value(), 139);
}

TEST_F(ColorPickerWindowTest, TheOtherFieldsFollowWhileOneIsTypedInto) {
  open(cyan);
  ValueField& field = content().red->field();
  field.setFocus();
  field.selectAll();
  QTest::keyClicks(&field, QStringLiteral("12"));
  model().setRGB(1, 2, 3);
  EXPECT_EQ(field.text(), "12");
  EXPECT_EQ(content().green->field().text(), "2");
  QTest::keyClick(&field, Qt::Key_Escape);
  EXPECT_EQ(field.text(), "1");
  EXPECT_TRUE(window.isVisible()) << "the first Escape is the field's";
}

TEST_F(ColorPickerWindowTest, TheSquareIsDrawnAnewOnlyForAnotherHue) {
  open(cyan);
  QTest::qWait(0);
  content().square->grab();
  const qint64 drawn = content().square->cachedImage().cacheKey();
  model().setSaturationAndBrightness(0.2, 0.3);
  content().square->grab();
  EXPECT_EQ(content().square->cachedImage().cacheKey(), drawn);
  model().setHue(0.1);
  content().square->grab();
  EXPECT_NE(content().square->cachedImage().cacheKey(), drawn);
}

TEST_F(ColorPickerWindowTest, TheSquareShowsSaturationAcrossAndBrightnessUpward) {
  open(cyan);
  content().square->grab();
  const QImage& colors = content().square->cachedImage();
  const int last = colors.width() - 1;
  EXPECT_EQ(colors.pixelColor(0, 0), QColor(Qt::white));
  EXPECT_EQ(colors.pixelColor(last, 0), QColor(Qt::cyan));
  EXPECT_EQ(colors.pixelColor(0, last), QColor(Qt::black));
  EXPECT_EQ(colors.pixelColor(last, last), QColor(Qt::black));
}

TEST_F(ColorPickerWindowTest, TheNewColorStandsBesideTheCurrentOne) {
  open(cyan);
  model().setRGB(255, 0, 0);
  const QImage shown = content().preview->grab().toImage();
  const int middle = shown.height() / 2;
  EXPECT_EQ(shown.pixelColor(shown.width() / 4, middle), QColor(Qt::red));
  EXPECT_EQ(shown.pixelColor(shown.width() * 3 / 4, middle), QColor(Qt::cyan));
}

TEST_F(ColorPickerWindowTest, OKLeavesTheLastColor) {
  open(cyan);
  model().setRGB(255, 0, 0);
  content().okButton->click();
  EXPECT_FALSE(window.isVisible());
  EXPECT_EQ(told, std::vector<DisplayColor>{red});
}

TEST_F(ColorPickerWindowTest, CancelGivesBackTheExactFirstColor) {
  const DisplayColor between{0.3F, 0.6F, 0.9F, 1.0F};
  open(between);
  model().setRGB(255, 0, 0);
  content().cancelButton->click();
  EXPECT_FALSE(window.isVisible());
  EXPECT_EQ(told, (std::vector<DisplayColor>{red, between}));
}

TEST_F(ColorPickerWindowTest, TheFramesButtonAndEscapeCancel) {
  open(cyan);
  model().setRGB(255, 0, 0);
  window.close();
  EXPECT_EQ(told.back(), cyan);
  open(cyan);
  model().setRGB(255, 0, 0);
  content().square->setFocus();
  QTest::keyClick(content().square, Qt::Key_Escape);
  EXPECT_FALSE(window.isVisible());
  EXPECT_EQ(told.back(), cyan);
}

TEST_F(ColorPickerWindowTest, AClosedPickerTellsNobody) {
  open(cyan);
  window.accept();
  model().setRGB(255, 0, 0);
  EXPECT_TRUE(told.empty());
}

TEST_F(ColorPickerWindowTest, OpeningForAnotherColorLeavesTheOneBefore) {
  open(cyan);
  model().setRGB(255, 0, 0);
  std::vector<DisplayColor> background;
  window.open(QStringLiteral("Background Color"), DisplayColor::white(),
              [&](const DisplayColor& chosen) { background.push_back(chosen); });
  model().setRGB(0, 0, 255);
  window.reject();
  EXPECT_EQ(told, std::vector<DisplayColor>{red});
  EXPECT_EQ(background.back(), DisplayColor::white());
  EXPECT_EQ(content().name->text(), "Background Color");
}

TEST_F(ColorPickerWindowTest, WhatWasTypedBelongsToTheColorItWasTypedFor) {
  open(cyan);
  content().red->field().setFocus();
  content().red->field().selectAll();
  QTest::keyClicks(&content().red->field(), QStringLiteral("255"));
  std::vector<DisplayColor> toldOther;
  window.open(QStringLiteral("Background Color"), red,
              [&](const DisplayColor& chosen) { toldOther.push_back(chosen); });
  EXPECT_EQ(told, std::vector{DisplayColor::white()});
  EXPECT_EQ(content().red->field().text(), "255");
  EXPECT_EQ(content().green->field().text(), "0");
  window.accept();
  EXPECT_TRUE(toldOther.empty());
}

TEST_F(ColorPickerWindowTest, LabelsHaveTheirRoomAndTheFieldsOfAColumnLineUp) {
  open(cyan);
  const auto left = [&](ValueField& field) { return field.mapTo(&window, QPoint()).x(); };
  EXPECT_EQ(left(content().hue->field()), left(content().saturation->field()));
  EXPECT_EQ(left(content().hue->field()), left(content().brightness->field()));
  EXPECT_EQ(left(content().hue->field()), left(content().hex->field()));
  EXPECT_EQ(left(content().red->field()), left(content().blue->field()));
  for (const QLabel* label : content().findChildren<QLabel*>()) {
    EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
  }
}

TEST_F(ColorPickerWindowTest, EveryControlHasAName) {
  open(cyan);
  for (const QWidget* widget : content().findChildren<QWidget*>()) {
    if (widget->focusPolicy() == Qt::NoFocus) continue;
    const auto* button = qobject_cast<const QPushButton*>(widget);
    EXPECT_TRUE(button != nullptr || !widget->accessibleName().isEmpty())
        << widget->metaObject()->className();
  }
}

TEST(ColorPickerWindowEndTest, ANumberThatIsBeingTypedGoesWithTheWindow) {
  int told = 0;
  auto window = std::make_unique<ColorPickerWindow>(nullptr);
  window->open(QStringLiteral("Foreground Color"), cyan, [&](const DisplayColor& /*chosen*/) { ++told; });
  window->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
  ValueField& field = window->content().red->field();
  field.setFocus();
  QTest::keyClicks(&field, QStringLiteral("12"));
  ASSERT_TRUE(field.hasFocus() && field.isModified());
  int finished = 0;
  QObject::connect(&field, &QLineEdit::editingFinished, [&] { ++finished; });
  window.reset();
  EXPECT_EQ(finished, 0) << "there is no model any more";
  EXPECT_EQ(told, 0);
}

}  // namespace
}  // namespace orvanel
