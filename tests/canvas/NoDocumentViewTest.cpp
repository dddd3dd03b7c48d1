// The placeholder for the canvas: its links, its recent files, and the keys that lead through them.
#include "canvas/NoDocumentView.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QTest>

namespace orvanel {
namespace {

class NoDocumentViewTest : public testing::Test {
 protected:
  NoDocumentViewTest() {
    view.onNew = [this] { asked << "new"; };
    view.onOpen = [this] { asked << "open"; };
    view.onOpenRecent = [this](const QString& path) { asked << path; };
    view.resize(900, 600);
    view.show();
    QApplication::setActiveWindow(&view);
  }

  static std::vector<RecentEntry> entries(int count) {
    std::vector<RecentEntry> result;
    for (int index = 0; index < count; ++index) {
      const QString name = QStringLiteral("photo %1.png").arg(index);
      result.push_back({"/pictures/" + name, name, {}});
    }
    return result;
  }
  [[nodiscard]] std::vector<QAbstractButton*> shownCards() const {
    std::vector<QAbstractButton*> shown;
    for (QAbstractButton* card : view.recentFiles().cards()) {
      if (card->isVisible()) shown.push_back(card);
    }
    return shown;
  }

  NoDocumentView view;
  QStringList asked;
};

TEST_F(NoDocumentViewTest, ItsSentenceHoldsTwoLinks) {
  EXPECT_EQ(view.newLink().text() + " or " + view.openLink().text() + ".",
            "Create a new document or open an existing one.");
  QTest::mouseClick(&view.newLink(), Qt::LeftButton);
  QTest::mouseClick(&view.openLink(), Qt::LeftButton);
  EXPECT_EQ(asked, (QStringList{"new", "open"}));
}

TEST_F(NoDocumentViewTest, TheArrowKeysAndReturnReachEverything) {
  view.setRecentEntries(entries(1));
  const auto press = [](Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); };
  ASSERT_EQ(QApplication::focusWidget(), &view.newLink());
  press(Qt::Key_Return);
  press(Qt::Key_Right);
  EXPECT_EQ(QApplication::focusWidget(), &view.openLink());
  press(Qt::Key_Space);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  EXPECT_EQ(asked, (QStringList{"new", "open", "/pictures/photo 0.png"}));
}

TEST_F(NoDocumentViewTest, AClickOpensARecentFile) {
  view.setRecentEntries(entries(3));
  ASSERT_EQ(shownCards().size(), 3U);
  EXPECT_EQ(shownCards()[1]->accessibleName(), "Open photo 1.png");
  QTest::mouseClick(shownCards()[1], Qt::LeftButton);
  EXPECT_EQ(asked, QStringList{"/pictures/photo 1.png"});
}

TEST_F(NoDocumentViewTest, ShowsOnlyTheCardsThatFit) {
  view.setRecentEntries(entries(10));
  EXPECT_EQ(shownCards().size(), 10U);
  view.resize(480, 600);
  EXPECT_EQ(shownCards().size(), 6U);
  for (const QAbstractButton* card : shownCards()) {
    EXPECT_TRUE(view.rect().contains(QRect(card->mapTo(&view, QPoint()), card->size())));
  }
  view.resize(480, 200);
  EXPECT_TRUE(shownCards().empty());
  view.setRecentEntries({});
  EXPECT_TRUE(view.recentFiles().cards().empty());
}

TEST_F(NoDocumentViewTest, ShowsThePictures) {
  view.setRecentEntries(entries(1));
  const QImage without = view.grab().toImage();
  std::vector<RecentEntry> withPicture = entries(1);
  withPicture[0].picture = QImage(60, 40, QImage::Format_RGB32);
  withPicture[0].picture.fill(Qt::red);
  view.setRecentEntries(withPicture);
  const QPoint centre = shownCards()[0]->mapTo(&view, QPoint(68, 52));
  EXPECT_NE(without.pixelColor(centre), QColor(Qt::red));
  EXPECT_EQ(view.grab().toImage().pixelColor(centre), QColor(Qt::red));
}

}  // namespace
}  // namespace orvanel
