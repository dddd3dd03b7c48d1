#include "panels/controls/SliderDropdown.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStyleOptionSlider>
#include <QTest>
#include <QWheelEvent>
#include <vector>

#include "panels/controls/DirectSlider.h"
#include "panels/controls/SliderPanel.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {
namespace {

/// A control in a window, beside a field that had the keyboard before and a label to click elsewhere.
class SliderDropdownTest : public testing::Test {
 protected:
  explicit SliderDropdownTest(SliderDropdown* made = new SliderDropdown("Opacity:", 0.0, 1.0,
                                                                        SliderDropdown::Display::percent))
      : control(*made) {
    auto* row = new QHBoxLayout(&window);
    row->addWidget(before);
    row->addWidget(made);
    row->addWidget(elsewhere);
    elsewhere->setMinimumWidth(80);
    control.setValue(1.0F);
    control.onValueChanged = [this](float value) { values.push_back(value); };
    control.onEditingChanged = [this](bool isEditing) { edits.push_back(isEditing); };
    window.resize(500, 60);
    window.show();
    window.activateWindow();
    static_cast<void>(QTest::qWaitForWindowActive(&window));
    before->setFocus();
  }

  /// Presses as the window system reports it, so that popups hear of it.
  void clickInWindow(const QWidget& at) {
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, at.mapTo(&window, at.rect().center()));
  }
  void clickText() {
    const QRect button = QRect(control.button().mapTo(&window, QPoint()), control.button().size());
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {},
                      QPoint(button.left() - 12, button.center().y()));
  }
  void type(const QString& text) {
    QTest::keyClicks(&control.field(), text);
    QTest::keyClick(&control.field(), Qt::Key_Return);
  }
  void typeOverTheText(const QString& text) {
    clickText();
    type(text);
  }
  /// The pointer's place on the slider for a shown value.
  QPoint placeOf(int shownValue) {
    DirectSlider& slider = control.slider();
    const int shown = slider.value();
    const QSignalBlocker silent(slider);
    slider.setValue(shownValue);
    QStyleOptionSlider option;
    option.initFrom(&slider);
    option.minimum = slider.minimum();
    option.maximum = slider.maximum();
    option.sliderPosition = option.sliderValue = shownValue;
    const QPoint place =
        slider.style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider).center();
    slider.setValue(shown);
    return place;
  }

  std::vector<float> values;
  std::vector<bool> edits;
  QWidget window;
  QLineEdit* before = new QLineEdit(&window);
  QLabel* elsewhere = new QLabel(QStringLiteral("Elsewhere"), &window);
  SliderDropdown& control;
};

/// The same with whole numbers.
class WholeSliderDropdownTest : public SliderDropdownTest {
 protected:
  WholeSliderDropdownTest()
      : SliderDropdownTest(new SliderDropdown("Tolerance:", 0.0, 255.0, SliderDropdown::Display::integer)) {}
};

const std::vector<bool> oneEdit{true, false};

TEST_F(SliderDropdownTest, ShowsItsLabelAndTheValueTruncated) {
  EXPECT_EQ(control.valueText(), "100%");
  control.setValue(0.507F);
  EXPECT_EQ(control.valueText(), "50%");
  EXPECT_EQ(control.findChild<QLabel*>()->text(), "Opacity:");
  EXPECT_TRUE(values.empty()) << "a value from elsewhere isn't reported";
}

TEST_F(SliderDropdownTest, EveryWholePercentIsShownAsItself) {
  for (int shown = 0; shown <= 100; ++shown) {
    control.edit(shown);
    EXPECT_EQ(control.shownValue(), shown);
  }
}

TEST_F(WholeSliderDropdownTest, ShowsWholeNumbersWithoutAUnit) {
  control.setValue(32.9F);
  EXPECT_EQ(control.valueText(), "32");
}

TEST_F(SliderDropdownTest, AClickOnTheTextOpensAFieldWithAllOfItSelected) {
  clickText();
  EXPECT_TRUE(control.isEditingText());
  EXPECT_TRUE(control.field().hasFocus());
  EXPECT_EQ(control.field().selectedText(), "100");
}

TEST_F(SliderDropdownTest, ATypedNumberBecomesTheValueAsOneEdit) {
  typeOverTheText(QStringLiteral("30"));
  EXPECT_EQ(control.value(), 0.3F);
  EXPECT_EQ(values, std::vector<float>{0.3F});
  EXPECT_EQ(edits, oneEdit);
  EXPECT_FALSE(control.isEditingText());
  EXPECT_TRUE(before->hasFocus()) << "the keyboard goes back";
}

TEST_F(SliderDropdownTest, Typing150Gives100Percent) {
  control.setValue(0.5F);
  typeOverTheText(QStringLiteral("150"));
  EXPECT_EQ(control.value(), 1.0F);
  EXPECT_EQ(control.valueText(), "100%");
}

TEST_F(SliderDropdownTest, NumbersBeyondTheRangeAreKeptWithinIt) {
  typeOverTheText(QStringLiteral("-5"));
  EXPECT_EQ(control.value(), 0.0F);
  typeOverTheText(QStringLiteral("99999999999"));
  EXPECT_EQ(control.value(), 1.0F);
}

TEST_F(WholeSliderDropdownTest, NumbersBeyondTheRangeAreKeptWithinIt) {
  typeOverTheText(QStringLiteral("300"));
  EXPECT_EQ(control.value(), 255.0F);
  typeOverTheText(QStringLiteral("-1"));
  EXPECT_EQ(control.value(), 0.0F);
}

TEST_F(SliderDropdownTest, WhatIsNoNumberKeepsTheValueAndClosesTheField) {
  for (const char* text : {"abc", "", "3.5", "12x", "0x10"}) {
    control.setValue(0.507F);
    values.clear();
    clickText();
    control.field().clear();
    type(QString::fromLatin1(text));
    EXPECT_EQ(control.value(), 0.507F) << text;
    EXPECT_TRUE(values.empty()) << text;
    EXPECT_FALSE(control.isEditingText()) << text;
  }
}

TEST_F(SliderDropdownTest, SpacesAndTheUnitMayBeTyped) {
  typeOverTheText(QStringLiteral(" 40 % "));
  EXPECT_EQ(control.value(), 0.4F);
}

TEST_F(SliderDropdownTest, TypingTheSameNumberChangesNothing) {
  typeOverTheText(QStringLiteral("100"));
  EXPECT_TRUE(values.empty());
  EXPECT_EQ(edits, oneEdit);
}

TEST_F(SliderDropdownTest, ATextThatNobodyTouchedLeavesTheFractionOfTheValue) {
  control.setValue(0.507F);
  clickText();
  QTest::keyClick(&control.field(), Qt::Key_Return);
  EXPECT_FALSE(control.isEditingText());
  clickText();
  before->setFocus();
  EXPECT_FALSE(control.isEditingText());
  EXPECT_EQ(control.value(), 0.507F);
  EXPECT_TRUE(values.empty());
  EXPECT_TRUE(edits.empty()) << "it is no edit";
  typeOverTheText(QStringLiteral("50"));
  EXPECT_EQ(control.value(), 0.5F) << "the same number, typed";
}

TEST_F(SliderDropdownTest, EscapeClosesTheFieldAndKeepsTheValue) {
  clickText();
  QTest::keyClicks(&control.field(), QStringLiteral("30"));
  QTest::keyClick(&control.field(), Qt::Key_Escape);
  EXPECT_FALSE(control.isEditingText());
  EXPECT_EQ(control.value(), 1.0F);
  EXPECT_TRUE(edits.empty());
  EXPECT_TRUE(before->hasFocus());
}

TEST_F(SliderDropdownTest, LeavingTheFieldTakesOverWhatWasTyped) {
  clickText();
  QTest::keyClicks(&control.field(), QStringLiteral("30"));
  before->setFocus();
  EXPECT_FALSE(control.isEditingText());
  EXPECT_EQ(control.value(), 0.3F);
  EXPECT_EQ(edits, oneEdit);
  EXPECT_TRUE(before->hasFocus());
}

TEST_F(SliderDropdownTest, AValueFromElsewhereLeavesTheTypedTextAlone) {
  clickText();
  QTest::keyClicks(&control.field(), QStringLiteral("30"));
  control.setValue(0.7F);
  EXPECT_EQ(control.field().text(), "30");
}

TEST_F(SliderDropdownTest, TheButtonOpensAPanelUnderTheControl) {
  clickInWindow(control.button());
  ASSERT_TRUE(control.isShowingPopover());
  const SliderPanel& panel = control.panel();
  EXPECT_TRUE(panel.windowFlags().testFlag(Qt::FramelessWindowHint));
  EXPECT_GT(panel.y(), control.mapToGlobal(QPoint()).y());
  EXPECT_EQ(control.slider().minimum(), 0);
  EXPECT_EQ(control.slider().maximum(), 100);
  EXPECT_EQ(control.slider().value(), 100);
}

TEST_F(SliderDropdownTest, AClickElsewhereClosesThePanel) {
  clickInWindow(control.button());
  clickInWindow(*elsewhere);
  EXPECT_FALSE(control.isShowingPopover());
}

TEST_F(SliderDropdownTest, AClickOnTheButtonClosesThePanelForGood) {
  clickInWindow(control.button());
  clickInWindow(control.button());
  EXPECT_FALSE(control.isShowingPopover());
  clickInWindow(control.button());
  EXPECT_TRUE(control.isShowingPopover());
}

TEST_F(SliderDropdownTest, AClickOnThePanelLeavesItOpen) {
  clickInWindow(control.button());
  QTest::mouseClick(control.panel().windowHandle(), Qt::LeftButton, {}, QPoint(2, 2));
  EXPECT_TRUE(control.isShowingPopover());
}

TEST_F(SliderDropdownTest, EscapeClosesThePanel) {
  clickInWindow(control.button());
  QTest::keyClick(&control.slider(), Qt::Key_Escape);
  EXPECT_FALSE(control.isShowingPopover());
}

TEST_F(SliderDropdownTest, ADragWritesEveryValueWithinOneEdit) {
  clickInWindow(control.button());
  DirectSlider& slider = control.slider();
  QTest::mousePress(&slider, Qt::LeftButton, {}, placeOf(100));
  EXPECT_EQ(edits, std::vector<bool>{true});
  EXPECT_TRUE(values.empty()) << "taking the handle moves nothing";
  QTest::mouseMove(&slider, placeOf(75));
  QTest::mouseMove(&slider, placeOf(50));
  EXPECT_EQ(values, (std::vector<float>{0.75F, 0.5F}));
  QTest::mouseMove(&slider, placeOf(100));
  QTest::mouseRelease(&slider, Qt::LeftButton, {}, placeOf(100));
  EXPECT_EQ(edits, oneEdit);
  EXPECT_EQ(control.value(), 1.0F);
  EXPECT_TRUE(control.isShowingPopover());
}

TEST_F(SliderDropdownTest, TheHandleComesToWhereTheSliderIsPressed) {
  clickInWindow(control.button());
  QTest::mousePress(&control.slider(), Qt::LeftButton, {}, placeOf(20));
  EXPECT_EQ(control.valueText(), "20%");
  EXPECT_EQ(edits, std::vector<bool>{true}) << "the press belongs to the drag";
  QTest::mouseRelease(&control.slider(), Qt::LeftButton, {}, placeOf(20));
  EXPECT_EQ(edits, oneEdit);
}

TEST_F(SliderDropdownTest, ClosingThePanelEndsADrag) {
  clickInWindow(control.button());
  QTest::mousePress(&control.slider(), Qt::LeftButton, {}, placeOf(20));
  QTest::keyClick(&control.slider(), Qt::Key_Escape);
  EXPECT_EQ(edits, oneEdit);
}

TEST_F(SliderDropdownTest, AValueFromElsewhereMovesTheOpenSliderSilently) {
  clickInWindow(control.button());
  control.setValue(0.25F);
  EXPECT_EQ(control.slider().value(), 25);
  EXPECT_TRUE(values.empty());
}

TEST_F(SliderDropdownTest, ArrowKeysStepByOneAndWithShiftByTen) {
  control.setFocus();
  QTest::keyClick(&control, Qt::Key_Down);
  EXPECT_EQ(control.valueText(), "99%");
  EXPECT_EQ(edits, oneEdit);
  QTest::keyClick(&control, Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(control.valueText(), "89%");
  QTest::keyClick(&control, Qt::Key_Up, Qt::ShiftModifier);
  QTest::keyClick(&control, Qt::Key_Up);
  QTest::keyClick(&control, Qt::Key_Up);
  EXPECT_EQ(control.value(), 1.0F);
}

TEST_F(SliderDropdownTest, ReturnOpensTheFieldAndGivesTheKeyboardBack) {
  control.setFocus();
  QTest::keyClick(&control, Qt::Key_Return);
  ASSERT_TRUE(control.isEditingText());
  type(QStringLiteral("12"));
  EXPECT_EQ(control.valueText(), "12%");
  EXPECT_TRUE(control.hasFocus());
}

TEST_F(SliderDropdownTest, AltAndDownOpensThePanelForItsKeys) {
  control.setFocus();
  QTest::keyClick(&control, Qt::Key_Down, Qt::AltModifier);
  ASSERT_TRUE(control.isShowingPopover());
  QTest::keyClick(&control.slider(), Qt::Key_Left);
  QTest::keyClick(&control.slider(), Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_EQ(control.valueText(), "89%");
  EXPECT_EQ(edits, (std::vector<bool>{true, false, true, false}));
  QTest::keyClick(&control.slider(), Qt::Key_Home);
  EXPECT_EQ(control.value(), 0.0F);
}

void turnWheel(QWidget& over, int delta, Qt::KeyboardModifiers modifiers = {}) {
  const QPointF centre = QRectF(over.rect()).center();
  QWheelEvent event(centre, over.mapToGlobal(centre), {}, QPoint(0, delta), {}, modifiers, Qt::NoScrollPhase,
                    false);
  QApplication::sendEvent(&over, &event);
}

TEST_F(SliderDropdownTest, ANotchOfTheWheelIsOneStepOfTheOpenSlider) {
  clickInWindow(control.button());
  turnWheel(control.slider(), -120);
  EXPECT_EQ(control.valueText(), "99%");
  turnWheel(control.slider(), -120, Qt::ShiftModifier);
  EXPECT_EQ(control.valueText(), "89%");
  turnWheel(control.slider(), 60);
  EXPECT_EQ(control.valueText(), "89%") << "half a notch";
  turnWheel(control.slider(), 60);
  EXPECT_EQ(control.valueText(), "90%");
  EXPECT_EQ(edits.size(), 6U);
}

TEST_F(SliderDropdownTest, TheWheelOverTheClosedControlDoesNothing) {
  turnWheel(control, -120);
  EXPECT_EQ(control.value(), 1.0F);
}

TEST_F(SliderDropdownTest, DisablingEndsWhatIsBeingTyped) {
  clickText();
  QTest::keyClicks(&control.field(), QStringLiteral("30"));
  control.setEnabled(false);
  EXPECT_FALSE(control.isEditingText());
  clickText();
  EXPECT_FALSE(control.isEditingText());
}

TEST_F(SliderDropdownTest, AssistiveTechnologyReadsAndSetsTheValue) {
  QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&control);
  ASSERT_NE(interface, nullptr);
  EXPECT_EQ(interface->role(), QAccessible::SpinBox);
  EXPECT_EQ(interface->text(QAccessible::Name), "Opacity");
  EXPECT_EQ(interface->text(QAccessible::Value), "100%");
  QAccessibleValueInterface* value = interface->valueInterface();
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(value->minimumValue(), 0);
  EXPECT_EQ(value->maximumValue(), 100);
  value->setCurrentValue(45);
  EXPECT_EQ(value->currentValue(), 45);
  EXPECT_EQ(values, std::vector<float>{0.45F});
  EXPECT_EQ(edits, oneEdit);
}

}  // namespace
}  // namespace orvanel
