#include "app/dialogs/ExportFormatHelper.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTemporaryDir>

namespace orvanel {
namespace {

class ExportFormatHelperTest : public testing::Test {
 protected:
  ExportFormatHelperTest() : panel(nullptr, QString(), folder.path()) {
    panel.setOption(QFileDialog::DontUseNativeDialog);
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
  }

  [[nodiscard]] QLineEdit& nameField() const {
    return *panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  }

  QTemporaryDir folder;
  QFileDialog panel;
};

TEST_F(ExportFormatHelperTest, StartsWithTheFirstFormat) {
  ExportFormatHelper helper(panel, QStringLiteral("Picture"));
  helper.selectRow(0);
  EXPECT_EQ(helper.selectedRow(), 0);
  EXPECT_EQ(nameField().text(), "Picture.png");
}

TEST_F(ExportFormatHelperTest, AnotherFormatReplacesTheTypedName) {
  ExportFormatHelper helper(panel, QStringLiteral("Picture"));
  helper.selectRow(0);
  nameField().setText(QStringLiteral("typed.png"));
  panel.selectNameFilter(nameFilterForRow(1));
  Q_EMIT panel.filterSelected(nameFilterForRow(1));
  EXPECT_EQ(helper.selectedRow(), 1);
  EXPECT_EQ(nameField().text(), "Picture.jpg");
}

TEST_F(ExportFormatHelperTest, AKnownExtensionChoosesItsFormat) {
  ExportFormatHelper helper(panel, QStringLiteral("Picture"));
  helper.selectRow(0);
  EXPECT_EQ(helper.completedName(QStringLiteral("Sea.JPEG")), "Sea.JPEG");
  EXPECT_EQ(helper.selectedRow(), 1);
}

TEST_F(ExportFormatHelperTest, AnyOtherNameGetsTheExtensionOfTheFormat) {
  ExportFormatHelper helper(panel, QStringLiteral("Picture"));
  helper.selectRow(2);
  EXPECT_EQ(helper.completedName(QStringLiteral("Sea")), "Sea.tiff");
  EXPECT_EQ(helper.completedName(QStringLiteral("Sea 1.5")), "Sea 1.5.tiff");
  EXPECT_EQ(helper.selectedRow(), 2);
}

TEST_F(ExportFormatHelperTest, OffersTheFormatsInOrder) {
  const ExportFormatHelper helper(panel, QStringLiteral("Picture"));
  EXPECT_EQ(panel.nameFilters(),
            QStringList({QStringLiteral("PNG (*.png)"), QStringLiteral("JPEG (*.jpg *.jpeg)"),
                         QStringLiteral("TIFF (*.tiff *.tif)"), QStringLiteral("GIF (*.gif)"),
                         QStringLiteral("BMP (*.bmp)")}));
}

}  // namespace
}  // namespace orvanel
