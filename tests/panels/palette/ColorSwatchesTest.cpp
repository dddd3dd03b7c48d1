#include "panels/palette/ColorSwatches.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QTest>

#include "panels/controls/SymbolButton.h"

namespace orvanel {
namespace {

using testing::ElementsAre;

constexpr DisplayColor red{1.0F, 0.0F, 0.0F, 1.0F};
constexpr DisplayColor blue{0.0F, 0.0F, 1.0F, 1.0F};

class ColorSwatchesTest : public testing::Test {
 protected:
  ColorSwatchesTest() {
    swatches.onChooseColor = [this](Swatch which) { asked.push_back(which); };
    swatches.setDocument(document);
    swatches.show();
  }

  static DocumentPtr makeDocument() {
    return Document::create(QStringLiteral("Test"), 8, 8, ColorMode::rgb8, MetalContext::shared());
  }
  static void click(QWidget& widget) { QTest::mouseClick(&widget, Qt::LeftButton); }
  [[nodiscard]] ColorSwatch& foreground() const { return swatches.swatch(Swatch::foreground); }
  [[nodiscard]] ColorSwatch& background() const { return swatches.swatch(Swatch::background); }
  static QColor middle(ColorSwatch& swatch) {
    const QImage picture = swatch.grab().toImage();
    return picture.pixelColor(picture.rect().center());
  }

  DocumentPtr document = makeDocument();
  ColorSwatches swatches;
  std::vector<Swatch> asked;
};

TEST_F(ColorSwatchesTest, ShowTheDocumentsColorsAndFollowThem) {
  EXPECT_EQ(middle(foreground()), QColor(Qt::black));
  EXPECT_EQ(middle(background()), QColor(Qt::white));
  document->setForegroundColor(red);
  document->setBackgroundColor(blue);
  EXPECT_EQ(middle(foreground()), QColor(Qt::red));
  EXPECT_EQ(middle(background()), QColor(Qt::blue));
}

TEST_F(ColorSwatchesTest, ChangeWithTheDocument) {
  document->setForegroundColor(red);
  const DocumentPtr other = makeDocument();
  swatches.setDocument(other);
  EXPECT_EQ(foreground().color(), DisplayColor::black());
  document->setForegroundColor(blue);
  EXPECT_EQ(foreground().color(), DisplayColor::black()) << "the former document is none of its business";
  swatches.setDocument(document);
  EXPECT_EQ(foreground().color(), blue);
}

TEST_F(ColorSwatchesTest, AClickAsksForAColor) {
  click(foreground());
  QTest::mouseClick(&background(), Qt::LeftButton, {}, background().rect().bottomRight() - QPoint(3, 3));
  EXPECT_THAT(asked, ElementsAre(Swatch::foreground, Swatch::background));
}

TEST_F(ColorSwatchesTest, TheForegroundLiesOnTop) {
  const QPoint shared = background().geometry().topLeft() + QPoint(4, 4);
  ASSERT_TRUE(foreground().geometry().contains(shared));
  EXPECT_EQ(swatches.childAt(shared), &foreground());
}

TEST_F(ColorSwatchesTest, TheButtonsSwapAndResetAsTheKeysDo) {
  EXPECT_EQ(swatches.swapButton().toolTip(), "Swap Colors (X)");
  EXPECT_EQ(swatches.resetButton().toolTip(), "Reset Colors (D)");
  document->setForegroundColor(red);
  document->setBackgroundColor(blue);
  click(swatches.swapButton());
  EXPECT_EQ(document->foregroundColor.value(), blue);
  EXPECT_EQ(document->backgroundColor.value(), red);
  EXPECT_EQ(foreground().color(), blue);
  click(swatches.resetButton());
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::black());
  EXPECT_EQ(document->backgroundColor.value(), DisplayColor::white());
  EXPECT_TRUE(document->undoStack.operations().empty());
}

TEST_F(ColorSwatchesTest, AreDisabledWithoutADocument) {
  swatches.setDocument(nullptr);
  click(foreground());
  click(swatches.swapButton());
  EXPECT_THAT(asked, ElementsAre());
  EXPECT_FALSE(swatches.resetButton().isEnabled());
}

TEST_F(ColorSwatchesTest, AreNamedWithTheirColors) {
  document->setForegroundColor(red);
  EXPECT_EQ(foreground().accessibleName(), "Foreground Color: #FF0000");
  EXPECT_EQ(background().accessibleName(), "Background Color: #FFFFFF");
}

TEST_F(ColorSwatchesTest, AreNamedWithoutColorsWhenThereIsNoDocument) {
  document->setForegroundColor(red);
  swatches.setDocument(nullptr);
  EXPECT_EQ(foreground().accessibleName(), "Foreground Color");
  EXPECT_EQ(foreground().toolTip(), "Foreground Color");
  EXPECT_EQ(background().accessibleName(), "Background Color");
  swatches.setDocument(document);
  EXPECT_EQ(foreground().accessibleName(), "Foreground Color: #FF0000");
}

TEST_F(ColorSwatchesTest, TheButtonsHaveTheirPictures) {
  const auto name = [](const QAbstractButton& button) {
    return static_cast<const SymbolButton&>(button).symbolName();
  };
  EXPECT_EQ(name(swatches.swapButton()), "pixel/swap_colors");
  EXPECT_EQ(name(swatches.resetButton()), "pixel/reset_colors");
  for (const QAbstractButton* button : {&swatches.swapButton(), &swatches.resetButton()}) {
    EXPECT_TRUE(QFile::exists(QStringLiteral(":/icons/%1.svg").arg(name(*button))));
  }
}

TEST_F(ColorSwatchesTest, WorkByKeys) {
  QTest::keyClick(&background(), Qt::Key_Space);
  EXPECT_THAT(asked, ElementsAre(Swatch::background));
}

}  // namespace
}  // namespace orvanel
