#include "panels/controls/ValueField.h"

#include <gtest/gtest.h>

#include <QTest>

namespace orvanel {
namespace {

TEST(ValueFieldTest, ADoubleClickSelectsTheWholeNumber) {
  ValueField field;
  field.setValueText(QStringLiteral("1.00"));
  field.show();
  const QPoint onThePoint(field.fontMetrics().horizontalAdvance(QStringLiteral("1")) + 8, field.height() / 2);
  QTest::mouseClick(&field, Qt::LeftButton, {}, onThePoint);
  QTest::mouseDClick(&field, Qt::LeftButton, {}, onThePoint);
  EXPECT_EQ(field.selectedText(), "1.00");
  QTest::keyClicks(&field, QStringLiteral("1.4"));
  EXPECT_EQ(field.text(), "1.4");
}

}  // namespace
}  // namespace orvanel
