#include "panels/bars/DocumentTabBar.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QEnterEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTimer>
#include <QWheelEvent>

namespace orvanel {
namespace {

using testing::ElementsAre;

DocumentPtr makeDocument(const QString& name) {
  return Document::create(name, 8, 8, ColorMode::rgb8, MetalContext::shared());
}

class DocumentTabBarTest : public testing::Test {
 protected:
  DocumentTabBarTest() {
    bar.onSelect = [this](const QUuid& id) { asked.emplace_back("select", id); };
    bar.onClose = [this](const QUuid& id) { asked.emplace_back("close", id); };
    bar.onCloseOthers = [this](const QUuid& id) { asked.emplace_back("closeOthers", id); };
    bar.onCloseAll = [this] { asked.emplace_back("closeAll", QUuid()); };
    bar.onNewDocument = [this] { asked.emplace_back("new", QUuid()); };
    bar.resize(600, 30);
  }

  void showDocuments(int count) {
    for (int index = 0; index < count; ++index)
      documents.push_back(makeDocument(QStringLiteral("Doc %1").arg(index)));
    bar.setDocuments(documents, documents.back()->id);
    bar.show();
    QApplication::processEvents();
  }

  static void hover(DocumentTab& tab, bool inside) {
    if (inside) {
      QEnterEvent event(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
      QApplication::sendEvent(&tab, &event);
    } else {
      QEvent event(QEvent::Leave);
      QApplication::sendEvent(&tab, &event);
    }
  }

  DocumentTabBar bar;
  std::vector<DocumentPtr> documents;
  std::vector<std::pair<std::string, QUuid>> asked;
};

TEST_F(DocumentTabBarTest, AnEndlessNameIsShownShortened) {
  documents.push_back(makeDocument(QString(1000000, u'a') + QStringLiteral("\nb")));
  bar.setDocuments(documents, documents.back()->id);
  const DocumentTab& tab = *bar.tabs().front();
  EXPECT_LT(tab.toolTip().size(), 100);
  EXPECT_LT(tab.accessibleName().size(), 100);
  EXPECT_TRUE(tab.accessibleName().endsWith(QStringLiteral("a b")));
}

TEST_F(DocumentTabBarTest, ShowsATabForEachDocumentInOrder) {
  showDocuments(3);
  ASSERT_EQ(bar.tabs().size(), 3U);
  int left = 0;
  for (std::size_t index = 0; index < 3; ++index) {
    EXPECT_EQ(bar.tabs()[index]->document, documents[index]);
    EXPECT_EQ(bar.tabs()[index]->isSelected(), index == 2);
    EXPECT_EQ(bar.tabs()[index]->x(), left);
    left += bar.tabs()[index]->width();
  }
  EXPECT_GE(bar.newTabButton()->x(), left);
}

TEST_F(DocumentTabBarTest, KeepsTheTabsOfDocumentsThatRemainOpen) {
  showDocuments(3);
  DocumentTab* kept = bar.tabs()[2];
  documents.erase(documents.begin());
  bar.setDocuments(documents, documents.front()->id);
  ASSERT_EQ(bar.tabs().size(), 2U);
  EXPECT_EQ(bar.tabs()[1], kept);
  EXPECT_TRUE(bar.tabs()[0]->isSelected());
  EXPECT_FALSE(bar.tabs()[1]->isSelected());
}

TEST_F(DocumentTabBarTest, AClickOnlyRequestsTheDocument) {
  showDocuments(2);
  bar.tabs()[0]->click();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("select"), documents[0]->id)));
  EXPECT_FALSE(bar.tabs()[0]->isSelected());
  EXPECT_FALSE(bar.tabs()[0]->isChecked());
  bar.tabs()[1]->click();
  EXPECT_TRUE(bar.tabs()[1]->isChecked());
}

TEST_F(DocumentTabBarTest, TheCloseButtonAppearsUnderThePointer) {
  showDocuments(2);
  DocumentTab& tab = *bar.tabs()[1];
  EXPECT_FALSE(tab.closeButton()->isVisible());
  hover(tab, true);
  EXPECT_TRUE(tab.isHovering());
  ASSERT_TRUE(tab.closeButton()->isVisible());
  tab.closeButton()->click();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("close"), documents[1]->id)));
  hover(tab, false);
  EXPECT_FALSE(tab.closeButton()->isVisible());
}

TEST_F(DocumentTabBarTest, TheDotFollowsUnsavedChanges) {
  showDocuments(1);
  DocumentTab& tab = *bar.tabs()[0];
  EXPECT_FALSE(tab.showsDirtyDot());
  const QImage clean = tab.grab().toImage();
  documents[0]->setDirty(true);
  EXPECT_TRUE(tab.showsDirtyDot());
  EXPECT_NE(tab.grab().toImage(), clean);
  documents[0]->setDirty(false);
  EXPECT_EQ(tab.grab().toImage(), clean);
}

TEST_F(DocumentTabBarTest, ATabFollowsItsDocumentsName) {
  showDocuments(2);
  DocumentTab& tab = *bar.tabs()[0];
  const int before = bar.tabs()[1]->x();
  documents[0]->setName(QStringLiteral("A considerably longer name"));
  EXPECT_EQ(tab.accessibleName(), "A considerably longer name");
  EXPECT_GT(bar.tabs()[1]->x(), before);
}

TEST_F(DocumentTabBarTest, CloseOthersIsOfferedOnlyWhenThereAreOthers) {
  showDocuments(1);
  const auto titles = [](const DocumentTab& tab) {
    std::vector<std::string> result;
    for (const auto& item : tab.contextItems()) result.push_back(item.first.toStdString());
    return result;
  };
  EXPECT_THAT(titles(*bar.tabs()[0]), ElementsAre("Close", "Close All"));
  documents.push_back(makeDocument(QStringLiteral("Other")));
  bar.setDocuments(documents, documents[0]->id);
  EXPECT_THAT(titles(*bar.tabs()[0]), ElementsAre("Close", "Close Others", "Close All"));

  for (const auto& item : bar.tabs()[0]->contextItems()) item.second();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("close"), documents[0]->id),
                                 std::pair(std::string("closeOthers"), documents[0]->id),
                                 std::pair(std::string("closeAll"), QUuid())));
}

TEST_F(DocumentTabBarTest, AChosenContextItemActsOnItsTab) {
  showDocuments(2);
  DocumentTab& tab = *bar.tabs()[0];
  QTimer::singleShot(0, [] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    menu->setActiveAction(menu->actions().at(1));
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(menu, &press);
  });
  QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(3, 3), tab.mapToGlobal(QPoint(3, 3)));
  QApplication::sendEvent(&tab, &event);
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("closeOthers"), documents[0]->id)));
}

TEST_F(DocumentTabBarTest, TheLastButtonRequestsANewDocument) {
  showDocuments(1);
  bar.newTabButton()->click();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("new"), QUuid())));
}

TEST_F(DocumentTabBarTest, ManyTabsScrollToTheActiveOne) {
  showDocuments(30);
  const auto isInView = [this](std::size_t index) {
    const DocumentTab& tab = *bar.tabs()[index];
    const QRect place = tab.geometry();
    return place.left() >= 0 && place.right() < tab.parentWidget()->width();
  };
  EXPECT_TRUE(isInView(29));
  EXPECT_FALSE(isInView(0));
  EXPECT_LT(bar.newTabButton()->geometry().right(), bar.width());

  bar.setDocuments(documents, documents[0]->id);
  EXPECT_TRUE(isInView(0));

  for (int click = 0; click < 200; ++click) {
    QWheelEvent wheel(QPointF(10, 10), QPointF(10, 10), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&bar, &wheel);
  }
  EXPECT_TRUE(isInView(29));
}

}  // namespace
}  // namespace orvanel
