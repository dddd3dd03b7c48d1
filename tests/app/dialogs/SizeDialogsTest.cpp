// The dialogs that ask for a size, as widgets: what they propose, and how their controls follow each other.
#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "../ClippedText.h"
#include "app/dialogs/CanvasSizeDialog.h"
#include "app/dialogs/ImageSizeDialog.h"
#include "app/dialogs/NewDocumentDialog.h"
#include "app/dialogs/SizeRule.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {
namespace {

using testing::ElementsAre;

DocumentPtr canvas(int width, int height) {
  return Document::create(QStringLiteral("Picture"), width, height, ColorMode::rgb8, MetalContext::shared());
}

std::vector<std::string> labelTexts(const QWidget& widget) {
  std::vector<std::string> texts;
  for (const QLabel* label : widget.findChildren<QLabel*>()) texts.push_back(label->text().toStdString());
  return texts;
}

QStringList items(const QComboBox& popup) {
  QStringList texts;
  for (int index = 0; index < popup.count(); ++index) texts << popup.itemText(index);
  return texts;
}

void retype(QLineEdit& field, const QString& text) {
  field.setFocus();
  field.selectAll();
  QTest::keyClicks(&field, text);
}

/// The dialogs as users with twice the usual text size have them.
class LargeText {
 public:
  LargeText() {
    QFont large = before_;
    large.setPointSizeF(before_.pointSizeF() * 2);
    QApplication::setFont(large);
  }
  ~LargeText() { QApplication::setFont(before_); }

 private:
  QFont before_ = QApplication::font();
};

// The rule.

TEST(SizeRuleTest, SidesRunFrom1To16384) {
  EXPECT_EQ(allowedSize(16384, 1), QSize(16384, 1));
  EXPECT_EQ(allowedSize(0, 10), std::nullopt);
  EXPECT_EQ(allowedSize(10, 16385), std::nullopt);
  EXPECT_EQ(allowedSize(-5, 10), std::nullopt);
  EXPECT_EQ(allowedSize(std::nullopt, 10), std::nullopt);
  EXPECT_EQ(allowedSize(std::int64_t{1} << 32, 10), std::nullopt);
}

TEST(SizeRuleTest, OnlyDecimalIntegersAreNumbers) {
  EXPECT_EQ(typedNumber(QStringLiteral("640")), 640);
  EXPECT_EQ(typedNumber(QStringLiteral("-10")), -10);
  for (const char* text : {"", "abc", "1.5", "0x10", "10px", "99999999999"}) {
    EXPECT_EQ(typedNumber(QString::fromLatin1(text)), std::nullopt) << text;
  }
}

// New Document.

TEST(NewDocumentDialogTest, StartsWithItsOwnValues) {
  const NewDocumentDialog dialog;
  EXPECT_EQ(dialog.windowTitle(), "New Document");
  EXPECT_THAT(labelTexts(dialog),
              ElementsAre("New Document", "Enter the dimensions and color mode for the new document.",
                          "Width:", "px", "Height:", "px", "Color Mode:"));
  EXPECT_EQ(dialog.widthField->text(), "1024");
  EXPECT_EQ(dialog.widthField->placeholderText(), "1024");
  EXPECT_EQ(dialog.heightField->text(), "768");
  EXPECT_EQ(dialog.heightField->placeholderText(), "768");
  EXPECT_EQ(items(*dialog.colorModePopup),
            (QStringList{"Grayscale 8-bit", "Grayscale 16-bit", "RGB 8-bit", "RGB 16-bit"}));
  EXPECT_EQ(dialog.entry().colorModeIndex, 2);
}

TEST(NewDocumentDialogTest, TheWidthIsTypedFirstAndReturnCreates) {
  NewDocumentDialog dialog;
  dialog.show();
  QApplication::setActiveWindow(&dialog);
  ASSERT_TRUE(dialog.widthField->hasFocus());
  QTest::keyClicks(dialog.focusWidget(), "640");
  EXPECT_EQ(dialog.entry().width, "640") << "typing replaces the proposal";
  QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST(NewDocumentDialogTest, EscapeCancels) {
  NewDocumentDialog dialog;
  dialog.show();
  QTest::keyClick(&dialog, Qt::Key_Escape);
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
  EXPECT_FALSE(dialog.isVisible());
}

// Canvas Size.

class CanvasSizeDialogTest : public testing::Test {
 protected:
  [[nodiscard]] std::vector<std::string> cells() const {
    std::vector<std::string> titles;
    for (const QAbstractButton* button : dialog.anchorButtons) titles.push_back(button->text().toStdString());
    return titles;
  }
  void click(std::size_t tag) { QTest::mouseClick(dialog.anchorButtons.at(tag), Qt::LeftButton); }

  CanvasSizeDialog dialog{canvas(100, 80)};
};

TEST_F(CanvasSizeDialogTest, StartsWithTheSizeOfTheCanvasAndItsCentre) {
  EXPECT_THAT(labelTexts(dialog),
              ElementsAre("Canvas Size", "Enter the new canvas dimensions.", "100 × 80 px",
                          "New Size:", "Width:", "px", "Height:", "px", "Anchor:"));
  EXPECT_EQ(dialog.findChild<QGroupBox*>()->title(), "Current Size");
  const CanvasSizeEntry entry = dialog.entry();
  EXPECT_EQ(entry.width, "100");
  EXPECT_EQ(entry.height, "80");
  EXPECT_FALSE(entry.isRelative);
  EXPECT_EQ(entry.anchorX, 0);
  EXPECT_EQ(entry.anchorY, 0);
  EXPECT_THAT(cells(), ElementsAre("↘", "↓", "↙", "→", "●", "←", "↗", "↑", "↖"));
  EXPECT_TRUE(dialog.anchorButtons[4]->isChecked());
}

TEST_F(CanvasSizeDialogTest, TheNeighboursOfTheAnchorPointAtIt) {
  dialog.show();
  click(0);
  EXPECT_EQ(dialog.anchorX, -1);
  EXPECT_EQ(dialog.anchorY, -1);
  EXPECT_THAT(cells(), ElementsAre("●", "←", "·", "↑", "↖", "·", "·", "·", "·"));
  click(5);
  EXPECT_EQ(dialog.entry().anchorX, 1);
  EXPECT_EQ(dialog.entry().anchorY, 0);
  EXPECT_THAT(cells(), ElementsAre("·", "↘", "↓", "·", "→", "●", "·", "↗", "↑"));
  for (std::size_t tag = 0; tag < 9; ++tag) EXPECT_EQ(dialog.anchorButtons.at(tag)->isChecked(), tag == 5);
}

TEST_F(CanvasSizeDialogTest, AssistiveTechnologyMovesTheAnchor) {
  QAccessibleInterface* corner = QAccessible::queryAccessibleInterface(dialog.anchorButtons[0]);
  corner->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_EQ(dialog.entry().anchorX, -1);
  EXPECT_EQ(dialog.entry().anchorY, -1);
}

TEST_F(CanvasSizeDialogTest, TheArrowKeysMoveTheAnchor) {
  dialog.show();
  QApplication::setActiveWindow(&dialog);
  dialog.anchorButtons[4]->setFocus();
  QTest::keyClick(dialog.focusWidget(), Qt::Key_Right);
  EXPECT_EQ(dialog.focusWidget(), dialog.anchorButtons[5]);
  EXPECT_EQ(dialog.anchorX, 1);
  QTest::keyClick(dialog.focusWidget(), Qt::Key_Up);
  EXPECT_EQ(dialog.focusWidget(), dialog.anchorButtons[2]);
  EXPECT_EQ(dialog.anchorY, -1);
}

TEST_F(CanvasSizeDialogTest, TheAnchorsPlacesHaveNames) {
  std::vector<std::string> names;
  for (const QAbstractButton* button : dialog.anchorButtons) {
    names.push_back(button->accessibleName().toStdString());
  }
  EXPECT_THAT(names, ElementsAre("Top left", "Top", "Top right", "Left", "Center", "Right", "Bottom left",
                                 "Bottom", "Bottom right"));
}

TEST_F(CanvasSizeDialogTest, RelativeExchangesSizesForDifferences) {
  retype(*dialog.widthField, "90");
  retype(*dialog.heightField, "100");
  dialog.relativeCheckbox->click();
  EXPECT_EQ(dialog.widthField->text(), "-10");
  EXPECT_EQ(dialog.heightField->text(), "20");
  EXPECT_TRUE(dialog.entry().isRelative);
  dialog.relativeCheckbox->click();
  EXPECT_EQ(dialog.widthField->text(), "90");
  EXPECT_EQ(dialog.heightField->text(), "100");
}

TEST_F(CanvasSizeDialogTest, RelativeTakesTextThatIsNoNumberForTheCurrentSize) {
  retype(*dialog.widthField, "abc");
  dialog.relativeCheckbox->click();
  EXPECT_EQ(dialog.widthField->text(), "0");
  retype(*dialog.widthField, "abc");
  dialog.relativeCheckbox->click();
  EXPECT_EQ(dialog.widthField->text(), "100");
}

// Image Size.

class ImageSizeDialogTest : public testing::Test {
 protected:
  ImageSizeDialog dialog{canvas(100, 50)};
};

TEST_F(ImageSizeDialogTest, StartsWithTheSizeOfTheImageAndBicubic) {
  EXPECT_THAT(labelTexts(dialog), ElementsAre("Image Size", "Resize the image and all layer content.",
                                              "Width:", "px", "Height:", "px", "Resample:"));
  EXPECT_EQ(items(*dialog.resamplePopup), (QStringList{"Bicubic", "Bilinear", "Nearest Neighbor"}));
  const ImageSizeEntry entry = dialog.entry();
  EXPECT_EQ(entry.width, "100");
  EXPECT_EQ(entry.height, "50");
  EXPECT_EQ(entry.resampleMethod, 0);
  EXPECT_TRUE(dialog.aspectLocked);
  EXPECT_EQ(dialog.lockButton->symbolName(), "lock.fill");
  EXPECT_EQ(dialog.lockButton->accessibleName(), "Lock aspect ratio");
}

TEST_F(ImageSizeDialogTest, WhileLockedTheOtherFieldFollows) {
  retype(*dialog.widthField, "200");
  EXPECT_EQ(dialog.heightField->text(), "100");
  retype(*dialog.heightField, "25");
  EXPECT_EQ(dialog.widthField->text(), "50");
  retype(*dialog.widthField, "3");
  EXPECT_EQ(dialog.heightField->text(), "2") << "halves round up";
}

TEST_F(ImageSizeDialogTest, TheOtherFieldFollowsAssistiveTechnologyToo) {
  QAccessibleInterface* width = QAccessible::queryAccessibleInterface(dialog.widthField);
  width->setText(QAccessible::Value, QStringLiteral("300"));
  EXPECT_EQ(dialog.heightField->text(), "150");
  EXPECT_EQ(dialog.widthField->text(), "300") << "the follower doesn't lead";
}

TEST_F(ImageSizeDialogTest, TextThatIsNoSizeLeavesTheOtherField) {
  retype(*dialog.widthField, "200");
  retype(*dialog.widthField, "abc");
  EXPECT_EQ(dialog.heightField->text(), "100");
  retype(*dialog.widthField, "0");
  EXPECT_EQ(dialog.heightField->text(), "100");
}

TEST_F(ImageSizeDialogTest, UnlockedFieldsAreIndependent) {
  dialog.lockButton->click();
  EXPECT_FALSE(dialog.aspectLocked);
  EXPECT_EQ(dialog.lockButton->symbolName(), "lock.open");
  EXPECT_EQ(dialog.lockButton->accessibleName(), "Unlock aspect ratio");
  retype(*dialog.widthField, "200");
  EXPECT_EQ(dialog.heightField->text(), "50");
  dialog.lockButton->click();
  EXPECT_EQ(dialog.heightField->text(), "50") << "until something is typed";
  retype(*dialog.widthField, "80");
  EXPECT_EQ(dialog.heightField->text(), "40");
}

// Their frames.

TEST(SizeDialogFrameTest, HoldsAtTheDefaultFont) {
  NewDocumentDialog newDocument;
  CanvasSizeDialog canvasSize(canvas(100, 80));
  ImageSizeDialog imageSize(canvas(100, 80));
  for (SizeDialog* dialog : std::initializer_list<SizeDialog*>{&newDocument, &canvasSize, &imageSize}) {
    dialog->show();
    EXPECT_EQ(dialog->widthField->size(), QSize(80, 24));
    EXPECT_EQ(dialog->heightField->y() - dialog->widthField->y(), 30);
    EXPECT_EQ(dialog->widthField->alignment(), Qt::AlignRight);
  }
  for (const SizeDialog* dialog : std::initializer_list<SizeDialog*>{&newDocument, &canvasSize, &imageSize}) {
    EXPECT_EQ(dialog->accessory().width(), 280);
  }
  EXPECT_EQ(canvasSize.widthField->x(), 70);
  EXPECT_EQ(canvasSize.relativeCheckbox->x(), 190);
  EXPECT_EQ(canvasSize.anchorButtons[0]->x(), 70);
  EXPECT_EQ(imageSize.lockButton->x(), 180);
  EXPECT_EQ(newDocument.accessory().height(), 100);
  EXPECT_EQ(newDocument.colorModePopup->width(), 150);
  EXPECT_EQ(canvasSize.accessory().height(), 230);
  EXPECT_EQ(canvasSize.anchorButtons[4]->size(), QSize(24, 24));
  EXPECT_EQ(canvasSize.anchorButtons[4]->pos() - canvasSize.anchorButtons[0]->pos(), QPoint(26, 26));
  EXPECT_EQ(imageSize.accessory().height(), 130);
  EXPECT_EQ(imageSize.lockButton->size(), QSize(30, 50));
}

TEST(SizeDialogFrameTest, GrowsWithLargerTextInsteadOfClipping) {
  const LargeText large;
  NewDocumentDialog newDocument;
  CanvasSizeDialog canvasSize(canvas(16384, 16384));
  ImageSizeDialog imageSize(canvas(16384, 16384));
  for (SizeDialog* dialog : std::initializer_list<SizeDialog*>{&newDocument, &canvasSize, &imageSize}) {
    dialog->show();
    EXPECT_EQ(clippedText(*dialog), QString()) << dialog->windowTitle().toStdString();
  }
  EXPECT_GT(canvasSize.accessory().height(), 230);
}

}  // namespace
}  // namespace orvanel
