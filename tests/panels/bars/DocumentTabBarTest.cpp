#include "panels/bars/DocumentTabBar.h"
#include "panels/bars/FolderOpener.h"

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QDesktopServices>
#include <QEnterEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTest>
#include <QUrl>
#include <QWheelEvent>

#include "model/OpenOpacityEdit.h"

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

  [[nodiscard]] bool isInView(std::size_t index) const {
    const DocumentTab& tab = *bar.tabs()[index];
    const QRect place = tab.geometry();
    return place.left() >= 0 && place.right() < tab.parentWidget()->width();
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
    EXPECT_EQ(bar.tabs()[index]->document.lock(), documents[index]);
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

TEST_F(DocumentTabBarTest, TheDotAppearsWithTheFirstStepOfAGesture) {
  showDocuments(1);
  DocumentTab& tab = *bar.tabs()[0];
  const QString clean = tab.accessibleName();
  const auto edit = OpenOpacityEdit::begin(documents[0], documents[0]->rootNodes.value()[0].id());
  EXPECT_FALSE(tab.showsDirtyDot());
  edit->show(0.5F);
  EXPECT_TRUE(tab.showsDirtyDot());
  EXPECT_EQ(tab.accessibleName(), clean + QStringLiteral(", unsaved changes"));
  edit->takeBack();
  EXPECT_FALSE(tab.showsDirtyDot());
  EXPECT_EQ(tab.accessibleName(), clean);
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
    for (const auto& item : tab.contextItems()) result.push_back(item.title.toStdString());
    return result;
  };
  EXPECT_THAT(titles(*bar.tabs()[0]), ElementsAre("Close", "Close All", "Open Containing Folder"));
  documents.push_back(makeDocument(QStringLiteral("Other")));
  bar.setDocuments(documents, documents[0]->id);
  EXPECT_THAT(titles(*bar.tabs()[0]),
              ElementsAre("Close", "Close Others", "Close All", "Open Containing Folder"));

  const auto items = bar.tabs()[0]->contextItems();
  for (std::size_t index = 0; index < 3; ++index) items[index].action();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("close"), documents[0]->id),
                                 std::pair(std::string("closeOthers"), documents[0]->id),
                                 std::pair(std::string("closeAll"), QUuid())));
}

TEST_F(DocumentTabBarTest, AChosenContextItemActsOnItsTab) {
  showDocuments(2);
  DocumentTab& tab = *bar.tabs()[0];
  QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(3, 3), tab.mapToGlobal(QPoint(3, 3)));
  QApplication::sendEvent(&tab, &event);
  auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_NE(menu, nullptr);
  menu->setActiveAction(menu->actions().at(1));
  QTest::keyClick(menu, Qt::Key_Return);
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("closeOthers"), documents[0]->id)));
}

TEST_F(DocumentTabBarTest, TheLastButtonRequestsANewDocument) {
  showDocuments(1);
  bar.newTabButton()->click();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("new"), QUuid())));
}

TEST_F(DocumentTabBarTest, TheContainingFolderOfASavedDocumentCanBeOpened) {
  showDocuments(1);
  FolderOpener desktop;
  const auto item = [this] { return bar.tabs()[0]->contextItems().back(); };
  EXPECT_FALSE(item().isEnabled);
  documents[0]->setSource(QStringLiteral("/pictures/summer/sea.tessel"), std::nullopt);
  ASSERT_TRUE(item().isEnabled);
  item().action();
  EXPECT_EQ(desktop.opened, QList{QUrl::fromLocalFile(QStringLiteral("/pictures/summer"))});
}

TEST_F(DocumentTabBarTest, TheTooltipTellsTheWholePath) {
  showDocuments(1);
  documents[0]->setSource(QStringLiteral("/pictures/<b>sea.tessel"), std::nullopt);
  EXPECT_TRUE(bar.tabs()[0]->toolTip().contains(QStringLiteral("/pictures/&lt;b&gt;sea.tessel")));
}

// Many tabs.

TEST_F(DocumentTabBarTest, TabsKeepTheirSmallestWidthAndScroll) {
  showDocuments(4);
  EXPECT_FALSE(bar.scrollForwardButton()->isVisible());
  for (int index = 4; index < 30; ++index) documents.push_back(makeDocument(QStringLiteral("Doc")));
  bar.setDocuments(documents, documents.back()->id);
  for (const DocumentTab* tab : bar.tabs()) EXPECT_EQ(tab->width(), 120);
  EXPECT_TRUE(isInView(29));
  EXPECT_FALSE(isInView(0));
  EXPECT_TRUE(bar.scrollForwardButton()->isVisible());
  EXPECT_LT(bar.newTabButton()->geometry().right(), bar.scrollBackButton()->x());
  EXPECT_LT(bar.listButton()->geometry().right(), bar.width());

  bar.setDocuments(documents, documents[0]->id);
  EXPECT_TRUE(isInView(0));
}

TEST_F(DocumentTabBarTest, TheWheelAndTheButtonsScroll) {
  showDocuments(30);
  for (int click = 0; click < 200; ++click) {
    QWheelEvent wheel(QPointF(10, 10), QPointF(10, 10), QPoint(), QPoint(0, 120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&bar, &wheel);
  }
  EXPECT_TRUE(isInView(0));
  EXPECT_FALSE(bar.scrollBackButton()->isEnabled());
  int clicks = 0;
  for (; bar.scrollForwardButton()->isEnabled() && clicks < 100; ++clicks) {
    QTest::mouseClick(bar.scrollForwardButton(), Qt::LeftButton);
  }
  EXPECT_TRUE(isInView(29));
  EXPECT_GT(clicks, 20);
}

TEST_F(DocumentTabBarTest, TheListSelectsAnyDocument) {
  showDocuments(30);
  documents[3]->setName(QStringLiteral("Cats & Dogs"));
  QTest::mouseClick(bar.listButton(), Qt::LeftButton);
  auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_NE(menu, nullptr);
  ASSERT_EQ(menu->actions().size(), 30);
  EXPECT_EQ(menu->actions().at(3)->text(), "Cats && Dogs");
  EXPECT_TRUE(menu->actions().at(29)->isChecked());
  menu->actions().at(3)->trigger();
  menu->close();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("select"), documents[3]->id)));
}

// Closing one tab after the other.

class ClosingInARowTest : public DocumentTabBarTest {
 protected:
  ClosingInARowTest() {
    bar.onClose = [this](const QUuid& id) {
      asked.emplace_back("close", id);
      std::erase_if(documents, [&](const DocumentPtr& document) { return document->id == id; });
      bar.setDocuments(documents, documents.empty() ? std::nullopt : std::optional(documents[0]->id));
    };
  }

  /// Clicks where the pointer is.
  void click() {
    const QPoint place = bar.mapFromGlobal(QCursor::pos());
    QWidget* target = bar.childAt(place);
    ASSERT_NE(target, nullptr);
    QTest::mouseClick(target, Qt::LeftButton, Qt::NoModifier, target->mapFrom(&bar, place));
    QApplication::processEvents();
  }
  void pointAtCloseButton(std::size_t index) {
    QTest::mouseMove(&bar, QPoint(-20, -20));
    QTest::mouseMove(bar.tabs()[index], QPoint(5, 5));
    QApplication::processEvents();
    const QRect button = bar.tabs()[index]->closeButton()->geometry();
    QTest::mouseMove(bar.tabs()[index], button.center());
    QApplication::processEvents();
  }
};

TEST_F(ClosingInARowTest, TheNextTabsButtonComesUnderThePointer) {
  bar.resize(2000, 32);
  showDocuments(6);
  documents[2]->setName(QStringLiteral("A considerably longer name"));
  documents[4]->setName(QStringLiteral("Another considerably longer name than that"));
  const std::vector<DocumentPtr> all = documents;
  pointAtCloseButton(1);
  for (int step = 0; step < 4; ++step) click();
  EXPECT_EQ(documents, (std::vector{all[0], all[5]}));
}

TEST_F(ClosingInARowTest, AfterTheLastTabComesTheOneBeforeIt) {
  bar.resize(2000, 32);
  showDocuments(5);
  documents[3]->setName(QStringLiteral("A considerably longer name"));
  const std::vector<DocumentPtr> all = documents;
  pointAtCloseButton(4);
  for (int step = 0; step < 3; ++step) click();
  EXPECT_EQ(documents, (std::vector{all[0], all[1]}));
}

TEST_F(ClosingInARowTest, WorksInARowThatScrolls) {
  showDocuments(30);
  bar.setDocuments(documents, documents[29]->id);
  pointAtCloseButton(28);
  for (int step = 0; step < 10; ++step) click();
  EXPECT_EQ(documents.size(), 20U);
}

TEST_F(ClosingInARowTest, TheTabsFillTheRowAgainWhenThePointerLeaves) {
  bar.resize(700, 32);
  showDocuments(5);
  for (const DocumentPtr& document : documents) {
    document->setName(QStringLiteral("A considerably longer name"));
  }
  const int squeezed = bar.tabs()[0]->width();
  pointAtCloseButton(1);
  click();
  click();
  EXPECT_EQ(bar.tabs()[0]->width(), squeezed);
  QEvent leave(QEvent::Leave);
  QApplication::sendEvent(&bar, &leave);
  EXPECT_GT(bar.tabs()[0]->width(), squeezed);
}

// Screen readers.

TEST_F(DocumentTabBarTest, ScreenReadersSeeAListOfTabs) {
  showDocuments(2);
  QAccessibleInterface* tab = QAccessible::queryAccessibleInterface(bar.tabs()[0]);
  ASSERT_NE(tab, nullptr);
  EXPECT_EQ(tab->role(), QAccessible::PageTab);
  EXPECT_EQ(tab->text(QAccessible::Name), "Doc 0");
  EXPECT_TRUE(tab->state().selectable);
  EXPECT_FALSE(tab->state().selected);
  EXPECT_TRUE(QAccessible::queryAccessibleInterface(bar.tabs()[1])->state().selected);
  EXPECT_EQ(tab->parent()->role(), QAccessible::PageTabList);
  EXPECT_EQ(tab->parent()->text(QAccessible::Name), "Open documents");
  tab->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("select"), documents[0]->id)));
}

TEST_F(DocumentTabBarTest, ScreenReadersOpenATabsMenu) {
  showDocuments(2);
  auto* actions = QAccessible::queryAccessibleInterface(bar.tabs()[0])->actionInterface();
  EXPECT_TRUE(actions->actionNames().contains(QAccessibleActionInterface::showMenuAction()));
  actions->doAction(QAccessibleActionInterface::showMenuAction());
  auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_NE(menu, nullptr);
  EXPECT_EQ(menu->actions().front()->text(), "Close");
  menu->actions().front()->trigger();
  menu->close();
  EXPECT_THAT(asked, ElementsAre(std::pair(std::string("close"), documents[0]->id)));
}

TEST_F(DocumentTabBarTest, TabsKeepNoDocumentAlive) {
  showDocuments(1);
  const std::weak_ptr<Document> watched = documents[0];
  documents.clear();
  EXPECT_TRUE(watched.expired());
  DocumentTab& tab = *bar.tabs()[0];
  EXPECT_FALSE(tab.showsDirtyDot());
  EXPECT_FALSE(tab.grab().isNull());
  bar.setDocuments({}, std::nullopt);
  EXPECT_TRUE(bar.tabs().empty());
}

TEST_F(DocumentTabBarTest, AFileThatIsBeingOpenedHasATabAfterTheOthers) {
  showDocuments(2);
  EXPECT_FALSE(bar.loadingTab()->isVisible());
  const int plusBefore = bar.newTabButton()->x();
  bar.setLoading(LoadingTabContent{QStringLiteral("Sky"), QStringLiteral("/pictures/Sky.tessel"), true});
  ASSERT_TRUE(bar.loadingTab()->isVisible());
  EXPECT_EQ(bar.tabs().size(), 2U);
  const QWidget& last = *bar.tabs().back();
  EXPECT_EQ(bar.loadingTab()->x(), last.mapTo(&bar, QPoint(last.width(), 0)).x());
  EXPECT_EQ(bar.newTabButton()->x(), plusBefore + bar.loadingTab()->width());
  EXPECT_TRUE(bar.loadingTab()->isChecked());
  EXPECT_EQ(bar.loadingTab()->accessibleName(), "Sky, opening");
  bar.setLoading(std::nullopt);
  EXPECT_FALSE(bar.loadingTab()->isVisible());
  EXPECT_EQ(bar.newTabButton()->x(), plusBefore);
}

TEST_F(DocumentTabBarTest, TheTabOfAFileThatIsBeingOpenedSelectsAndCancels) {
  showDocuments(1);
  int selected = 0;
  int cancelled = 0;
  bar.onSelectLoading = [&] { ++selected; };
  bar.onCancelLoading = [&] { ++cancelled; };
  bar.setLoading(LoadingTabContent{QStringLiteral("Sky"), QStringLiteral("/Sky.tessel"), false});
  QTest::mouseClick(bar.loadingTab(), Qt::LeftButton, {}, QPoint(10, 10));
  EXPECT_EQ(selected, 1);
  EXPECT_FALSE(bar.loadingTab()->isChecked()) << "the window decides";
  QTest::mouseClick(bar.loadingTab()->closeButton(), Qt::LeftButton);
  EXPECT_EQ(cancelled, 1);
  EXPECT_EQ(selected, 1);
}

TEST_F(DocumentTabBarTest, NamesInTheTooltipOfAFileBeingOpenedAreNoMarkup) {
  bar.setLoading(LoadingTabContent{QStringLiteral("<b>"), QStringLiteral("/<b>.tessel"), false});
  EXPECT_TRUE(bar.loadingTab()->toolTip().contains(QLatin1String("&lt;b&gt;")));
}

}  // namespace
}  // namespace orvanel
