#include "app/dialogs/RecoveryDialog.h"

#include <gmock/gmock.h>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace orvanel {
namespace {

using testing::ElementsAre;

class RecoveryDialogTest : public testing::Test {
 protected:
  RecoveryDialogTest() {
    for (const char* name : {"Sky", "Sea", "<b>Sand</b>"}) {
      QImage picture(96, 48, QImage::Format_RGB32);
      picture.fill(Qt::blue);
      orphans.push_back({.id = QString::fromUtf8(name),
                         .name = QString::fromUtf8(name),
                         .path = QStringLiteral("/pictures/%1.tessel").arg(QString::fromUtf8(name)),
                         .time = QDateTime(QDate(2026, 1, 2), QTime(3, 4)),
                         .thumbnail = picture});
    }
    orphans[1].path.clear();
  }
  static QStringList textsOf(const QWidget& dialog) {
    QStringList texts;
    for (const QLabel* label : dialog.findChildren<QLabel*>()) texts << label->text();
    return texts;
  }

  OrphanList orphans;
};

TEST_F(RecoveryDialogTest, EveryDocumentHasItsNameItsPlaceAndItsTime) {
  const RecoveryDialog dialog(orphans);
  const QStringList texts = textsOf(dialog);
  EXPECT_TRUE(texts.contains(QStringLiteral("Sky")));
  EXPECT_TRUE(texts.contains(QStringLiteral("/pictures/Sky.tessel")));
  EXPECT_TRUE(texts.contains(QStringLiteral("Never saved to a file")));
  const QString time = QLocale().toString(orphans[0].time, QLocale::ShortFormat);
  EXPECT_TRUE(texts.contains(QStringLiteral("Last changed ") + time));
}

TEST_F(RecoveryDialogTest, NamesAreNoMarkup) {
  const RecoveryDialog dialog(orphans);
  for (const QLabel* label : dialog.findChildren<QLabel*>()) {
    if (label->text().contains(u'<')) {
      EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
  }
}

TEST_F(RecoveryDialogTest, EverythingIsRestoredUnlessOtherwiseChosen) {
  RecoveryDialog dialog(orphans);
  EXPECT_THAT(dialog.answers(),
              ElementsAre(RecoveryAnswer::restore, RecoveryAnswer::restore, RecoveryAnswer::restore));
  dialog.show();
  QTest::keyClick(dialog.choices()[1], Qt::Key_Down);
  QTest::keyClick(dialog.choices()[2], Qt::Key_End);
  EXPECT_THAT(dialog.answers(),
              ElementsAre(RecoveryAnswer::restore, RecoveryAnswer::discard, RecoveryAnswer::later));
}

TEST_F(RecoveryDialogTest, WhatCantBeRestoredIsToldAndKeptUnlessItIsDiscarded) {
  orphans[1] = {.id = orphans[1].id,
                .obstacle = QStringLiteral("The recovery data is damaged."),
                .time = orphans[1].time};
  RecoveryDialog dialog(orphans);
  const QStringList texts = textsOf(dialog);
  EXPECT_TRUE(texts.contains(QStringLiteral("Unknown document")));
  EXPECT_TRUE(texts.contains(QStringLiteral("The recovery data is damaged.")));
  EXPECT_FALSE(texts.contains(QStringLiteral("Never saved to a file")));
  EXPECT_EQ(dialog.choices()[1]->findText(QStringLiteral("Restore")), -1);
  EXPECT_THAT(dialog.answers(),
              ElementsAre(RecoveryAnswer::restore, RecoveryAnswer::later, RecoveryAnswer::restore));
  dialog.show();
  QTest::keyClick(dialog.choices()[1], Qt::Key_Home);
  EXPECT_THAT(dialog.answers(),
              ElementsAre(RecoveryAnswer::restore, RecoveryAnswer::discard, RecoveryAnswer::restore));
}

TEST_F(RecoveryDialogTest, EscapeDecidesNothing) {
  RecoveryDialog dialog(orphans);
  dialog.show();
  QTest::keyClick(&dialog, Qt::Key_Escape);
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
  dialog.show();
  dialog.laterButton().click();
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
  dialog.show();
  QTest::keyClick(&dialog, Qt::Key_Return);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(RecoveryDialogTest, ScreenReadersHearWhichDocumentIsMeant) {
  const RecoveryDialog dialog(orphans);
  EXPECT_EQ(dialog.choices()[0]->accessibleName(), "What to do with Sky");
  EXPECT_TRUE(
      dialog.choices()[0]->accessibleDescription().startsWith(QStringLiteral("/pictures/Sky.tessel")));
}

}  // namespace
}  // namespace orvanel
