#include "panels/options/ToolOptionsPane.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

#include "panels/options/ToolOptions.h"
#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

using testing::ElementsAre;

/// A slider as the user reads it.
struct Range {
  QString label;
  float lowest = 0;
  float highest = 0;
  QString value;
  friend bool operator==(const Range&, const Range&) = default;
  // NOLINTNEXTLINE(readability-identifier-naming)
  friend void PrintTo(const Range& range, std::ostream* stream) {
    *stream << range.label.toStdString() << ' ' << range.lowest << " to " << range.highest << ", "
            << range.value.toStdString();
  }
};

class ToolOptionsPaneTest : public testing::Test {
 protected:
  ToolOptionsPaneTest() {
    pane.setDocument(document);
    pane.resize(900, pane.height());
    pane.show();
    QApplication::setActiveWindow(&pane);
  }

  [[nodiscard]] std::vector<Range> sliders() const {
    std::vector<Range> found;
    for (const SliderDropdown* slider : pane.currentRow()->findChildren<SliderDropdown*>()) {
      found.push_back({slider->label(), slider->lowest(), slider->highest(), slider->valueText()});
    }
    return found;
  }
  [[nodiscard]] std::vector<std::pair<QString, bool>> toggles() const {
    std::vector<std::pair<QString, bool>> found;
    for (const QCheckBox* toggle : pane.currentRow()->findChildren<QCheckBox*>()) {
      found.emplace_back(toggle->text(), toggle->isChecked());
    }
    return found;
  }
  /// What a row without controls says.
  [[nodiscard]] QString hint() const {
    if (!sliders().empty() || !toggles().empty()) return {};
    const auto* label = pane.currentRow()->findChild<QLabel*>();
    return label != nullptr && label->isVisible() ? label->text() : QString();
  }
  [[nodiscard]] SliderDropdown& slider(const QString& label) const {
    for (SliderDropdown* slider : pane.currentRow()->findChildren<SliderDropdown*>()) {
      if (slider->label() == label) return *slider;
    }
    throw std::out_of_range("no slider of this name");
  }
  [[nodiscard]] QCheckBox& toggle(const QString& text) const {
    for (QCheckBox* toggle : pane.currentRow()->findChildren<QCheckBox*>()) {
      if (toggle->text() == text) return *toggle;
    }
    throw std::out_of_range("no toggle of this name");
  }
  void type(const QString& label, const QString& text) const {
    SliderDropdown& control = slider(label);
    control.setFocus();
    QTest::keyClick(&control, Qt::Key_Return);
    QTest::keyClicks(&control.field(), text);
    QTest::keyClick(&control.field(), Qt::Key_Return);
  }
  static void click(QCheckBox& toggle) {
    QTest::mouseClick(&toggle, Qt::LeftButton, {}, QPoint(8, toggle.height() / 2));
  }

  ToolState tools;
  DocumentPtr document =
      Document::create(QStringLiteral("Test"), 8, 8, ColorMode::rgb8, MetalContext::shared());
  ToolOptionsPane pane{tools};
};

TEST_F(ToolOptionsPaneTest, TheBrushHasSizeHardnessAndFlow) {
  tools.selectTool(Tool::brush);
  EXPECT_THAT(sliders(), ElementsAre(Range{"Size:", 1, 500, "20"}, Range{"Hardness:", 0, 1, "80%"},
                                     Range{"Flow:", 0.01F, 1, "100%"}));
  EXPECT_THAT(toggles(), ElementsAre());
}

TEST_F(ToolOptionsPaneTest, TheEraserHasSizeAndHardness) {
  tools.selectTool(Tool::eraser);
  EXPECT_THAT(sliders(), ElementsAre(Range{"Size:", 1, 500, "20"}, Range{"Hardness:", 0, 1, "80%"}));
}

TEST_F(ToolOptionsPaneTest, AllShapesShareTheirFeather) {
  for (const Tool tool :
       {Tool::rectangleSelect, Tool::ellipseSelect, Tool::lassoSelect, Tool::polygonalLassoSelect}) {
    tools.selectTool(tool);
    EXPECT_THAT(sliders(), ElementsAre(Range{"Feather:", 0, 100, "0"})) << displayName(tool).toStdString();
  }
  type(QStringLiteral("Feather:"), QStringLiteral("12"));
  EXPECT_EQ(tools.selectionSettings.value().featherRadius, 12.0F);
  tools.selectTool(Tool::rectangleSelect);
  EXPECT_EQ(slider(QStringLiteral("Feather:")).valueText(), "12");
}

TEST_F(ToolOptionsPaneTest, TheWandHasThreeTogglesAndATolerance) {
  tools.selectTool(Tool::magicWand);
  EXPECT_THAT(toggles(),
              ElementsAre(std::pair(QString("Contiguous"), true), std::pair(QString("Anti-aliased"), true),
                          std::pair(QString("Sample All Layers"), false)));
  EXPECT_THAT(sliders(), ElementsAre(Range{"Tolerance:", 0, 255, "32"}));
}

TEST_F(ToolOptionsPaneTest, ZoomHasItsToggle) {
  tools.selectTool(Tool::zoom);
  EXPECT_THAT(toggles(), ElementsAre(std::pair(QString("Scrubby Zoom"), false)));
  click(toggle(QStringLiteral("Scrubby Zoom")));
  EXPECT_TRUE(tools.zoomSettings.value().scrubbyZoom);
}

TEST_F(ToolOptionsPaneTest, FreeTransformShowsItsHint) {
  tools.pushTool(Tool::freeTransform);
  EXPECT_EQ(hint(), "Press Enter to apply, Escape to cancel");
  tools.popTool();
  EXPECT_EQ(hint(), "No options available");
}

TEST_F(ToolOptionsPaneTest, TheOtherToolsHaveNoOptions) {
  for (const Tool tool : {Tool::eyedropper, Tool::hand, Tool::move}) {
    tools.selectTool(tool);
    EXPECT_EQ(hint(), "No options available") << displayName(tool).toStdString();
  }
}

TEST_F(ToolOptionsPaneTest, ATypedNumberChangesOnlyItsSetting) {
  tools.selectTool(Tool::brush);
  type(QStringLiteral("Size:"), QStringLiteral("50"));
  type(QStringLiteral("Flow:"), QStringLiteral("0"));
  EXPECT_EQ(tools.brushSettings.value(),
            (BrushSettings{.size = 50.0F, .hardness = 0.8F, .flow = 0.01F, .spacing = 0.1F}));
  EXPECT_EQ(tools.eraserSettings.value(), EraserSettings());
}

TEST_F(ToolOptionsPaneTest, ASettingChangedElsewhereIsShown) {
  tools.selectTool(Tool::brush);
  tools.brushSettings = BrushSettings{.size = 77.0F, .hardness = 0.5F};
  EXPECT_EQ(slider(QStringLiteral("Size:")).valueText(), "77");
  EXPECT_EQ(slider(QStringLiteral("Hardness:")).valueText(), "50%");
  tools.selectTool(Tool::magicWand);
  tools.magicWandSettings = MagicWandSettings{.contiguous = false};
  EXPECT_FALSE(toggle(QStringLiteral("Contiguous")).isChecked());
  EXPECT_FALSE(tools.magicWandSettings.value().contiguous);
}

TEST_F(ToolOptionsPaneTest, TogglesOfTheWandAreIndependent) {
  tools.selectTool(Tool::magicWand);
  click(toggle(QStringLiteral("Anti-aliased")));
  EXPECT_EQ(tools.magicWandSettings.value(), (MagicWandSettings{.antialiased = false}));
  click(toggle(QStringLiteral("Sample All Layers")));
  EXPECT_EQ(tools.magicWandSettings.value(),
            (MagicWandSettings{.antialiased = false, .sampleAllLayers = true}));
}

TEST_F(ToolOptionsPaneTest, NamesTheToolAndKeepsTheControlsInPlace) {
  tools.selectTool(Tool::brush);
  EXPECT_EQ(pane.toolName(), "Brush");
  const int left = pane.currentRow()->mapTo(&pane, QPoint()).x();
  tools.selectTool(Tool::polygonalLassoSelect);
  EXPECT_EQ(pane.toolName(), "Polygonal Lasso Select");
  QApplication::processEvents();
  EXPECT_EQ(pane.currentRow()->mapTo(&pane, QPoint()).x(), left);
}

TEST_F(ToolOptionsPaneTest, AllOptionsFitASmallScreen) {
  EXPECT_LE(pane.minimumSizeHint().width(), 1024);
}

TEST_F(ToolOptionsPaneTest, AClickOnAToggleLeavesTheKeyboardWhereItWas) {
  QLineEdit elsewhere(&pane);
  elsewhere.show();
  elsewhere.setFocus();
  tools.selectTool(Tool::zoom);
  click(toggle(QStringLiteral("Scrubby Zoom")));
  EXPECT_EQ(QApplication::focusWidget(), &elsewhere);
}

/// The pane beside a canvas that takes the keyboard when it is offered.
class ToolOptionsFocusTest : public ToolOptionsPaneTest {
 protected:
  ToolOptionsFocusTest() {
    canvas.setFocusPolicy(Qt::StrongFocus);
    canvas.show();
    canvas.setFocus();
  }
  /// A click into the number, and what follows it.
  void beginTyping(const QString& label, const QString& text) const {
    SliderDropdown& control = slider(label);
    QTest::mouseClick(&control, Qt::LeftButton, {}, control.field().parentWidget()->geometry().center());
    ASSERT_TRUE(control.isEditingText());
    QTest::keyClicks(&control.field(), text);
  }

  QWidget canvas{&pane};
  NotificationCenter::Subscription offer = NotificationCenter::standard().observe(
      notification::focusCanvas, [this](const std::any& /*object*/) { canvas.setFocus(); });
};

TEST_F(ToolOptionsFocusTest, AnotherToolTakesTheNumberAndGivesBackTheKeyboard) {
  tools.selectTool(Tool::brush);
  beginTyping(QStringLiteral("Size:"), QStringLiteral("55"));
  tools.selectTool(Tool::magicWand);
  EXPECT_EQ(tools.brushSettings.value().size, 55.0F);
  EXPECT_EQ(QApplication::focusWidget(), &canvas) << "or Space would turn the first setting";
}

TEST_F(ToolOptionsFocusTest, SoDoesAToolWithTheSameOptions) {
  tools.selectTool(Tool::rectangleSelect);
  beginTyping(QStringLiteral("Feather:"), QStringLiteral("7"));
  tools.selectTool(Tool::lassoSelect);
  EXPECT_EQ(tools.selectionSettings.value().featherRadius, 7.0F);
  EXPECT_FALSE(slider(QStringLiteral("Feather:")).isEditingText());
  EXPECT_EQ(QApplication::focusWidget(), &canvas);
}

TEST_F(ToolOptionsFocusTest, AControlThatGoesLeavesTheKeyboardToTheCanvas) {
  tools.selectTool(Tool::brush);
  slider(QStringLiteral("Size:")).setFocus(Qt::TabFocusReason);
  tools.selectTool(Tool::magicWand);
  EXPECT_EQ(QApplication::focusWidget(), &canvas);
}

TEST_F(ToolOptionsFocusTest, AnotherToolLeavesTheKeyboardOutsideAlone) {
  QLineEdit elsewhere(&pane);
  elsewhere.show();
  elsewhere.setFocus();
  tools.selectTool(Tool::magicWand);
  EXPECT_EQ(QApplication::focusWidget(), &elsewhere);
}

TEST_F(ToolOptionsPaneTest, WithoutADocumentThereIsNothingToSet) {
  pane.setDocument(nullptr);
  EXPECT_FALSE(pane.isEnabled());
  pane.setDocument(document);
  EXPECT_TRUE(pane.isEnabled());
}

}  // namespace
}  // namespace orvanel
