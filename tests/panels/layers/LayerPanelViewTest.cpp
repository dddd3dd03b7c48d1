#include "panels/layers/LayerPanelView.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPaintEvent>
#include <QSignalSpy>
#include <algorithm>

#include "panels/channels/ChannelListView.h"
#include "panels/layers/LayerPanelSupport.h"

namespace orvanel {
namespace {

using namespace test;

class LayerPanelViewTest : public LayerPanelTest {
 protected:
  LayerPanelViewTest() {
    panel.onAddLayer = [this] { document->addLayer("Layer"); };
    panel.onAddFolder = [this] { document->addFolder("Folder"); };
  }
};

TEST_F(LayerPanelViewTest, WithoutADocumentItIsEmptyAndDisabled) {
  panel.show();
  EXPECT_EQ(outline.treeModel().rowCount(), 0);
  EXPECT_EQ(panel.channels().channelModel().rowCount(), 0);
  for (const QAbstractButton* button :
       {panel.addLayerButton(), panel.addFolderButton(), panel.maskButton(), panel.deleteButton()}) {
    EXPECT_FALSE(button->isEnabled());
    EXPECT_FALSE(button->accessibleName().isEmpty());
  }
}

TEST_F(LayerPanelViewTest, TheBarAsksForNodesAndTakesThemAway) {
  showPanel();
  EXPECT_FALSE(panel.deleteButton()->isEnabled()) << "the last layer";
  QTest::mouseClick(panel.addLayerButton(), Qt::LeftButton);
  QTest::mouseClick(panel.addFolderButton(), Qt::LeftButton);
  EXPECT_EQ(treeText(*document), "Background, Layer, Folder[]");
  EXPECT_TRUE(panel.deleteButton()->isEnabled());
  EXPECT_FALSE(panel.maskButton()->isEnabled()) << "folders have no mask";
  QTest::mouseClick(panel.deleteButton(), Qt::LeftButton);
  EXPECT_EQ(treeText(*document), "Background, Layer");
}

TEST_F(LayerPanelViewTest, TheMaskButtonAddsAMaskOrRemovesIt) {
  showPanel();
  EXPECT_EQ(panel.maskButton()->accessibleName(), "Add Layer Mask");
  QTest::mouseClick(panel.maskButton(), Qt::LeftButton);
  EXPECT_NE(layer("Background")->mask.value(), nullptr);
  EXPECT_EQ(panel.maskButton()->accessibleName(), "Remove Layer Mask");
  document->undo();
  EXPECT_EQ(panel.maskButton()->accessibleName(), "Add Layer Mask");
  document->redo();
  QTest::mouseClick(panel.maskButton(), Qt::LeftButton);
  EXPECT_EQ(layer("Background")->mask.value(), nullptr);
  EXPECT_EQ(document->undoStack.undoActionName(), "Remove Layer Mask");
}

TEST_F(LayerPanelViewTest, TwoTabsShareThePanel) {
  showPanel();
  EXPECT_EQ(panel.tab(), LayerPanelView::Tab::layers);
  EXPECT_TRUE(outline.isVisible());
  EXPECT_TRUE(panel.deleteButton()->isVisible());
  panel.setTab(LayerPanelView::Tab::channels);
  EXPECT_TRUE(panel.channels().isVisible());
  EXPECT_FALSE(outline.isVisible());
  EXPECT_FALSE(panel.deleteButton()->isVisible());
}

TEST_F(LayerPanelViewTest, ThumbnailsAreMadeOnlyWhileThePanelShowsThem) {
  panel.setDocument(document);
  EXPECT_FALSE(document->thumbnailManager->isViewed());
  panel.show();
  EXPECT_TRUE(document->thumbnailManager->isViewed());
  EXPECT_TRUE(waitUntil([this] { return layer("Background")->thumbnailImage.value() != nullptr; }));
  const DocumentPtr other = makeDocument();
  panel.setDocument(other);
  EXPECT_FALSE(document->thumbnailManager->isViewed());
  EXPECT_TRUE(other->thumbnailManager->isViewed());
  panel.hide();
  EXPECT_FALSE(other->thumbnailManager->isViewed());
}

TEST_F(LayerPanelViewTest, RowsAreAsTallAsTheirThumbnailsNeed) {
  showPanel();
  EXPECT_EQ(outline.visualRect(at("Background")).height(), 48 + 8);
  panel.setThumbnailSize(32);
  QApplication::processEvents();
  EXPECT_EQ(outline.visualRect(at("Background")).height(), 32 + 8);
  EXPECT_EQ(outline.rectOf(at("Background"), Part::thumbnail).size(), QSize(32, 32));
}

TEST_F(LayerPanelViewTest, DoesNotKeepAClosedDocumentAlive) {
  showPanel();
  const std::weak_ptr<Document> watched = document;
  document.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_FALSE(panel.outline().viewport()->grab().isNull());
  document = makeDocument();
}

TEST_F(LayerPanelViewTest, TheRowsOfADocumentThatIsGoneGoAsWell) {
  showPanel();
  QSignalSpy resets(&outline.treeModel(), &QAbstractItemModel::modelReset);
  document.reset();
  panel.setDocument(nullptr);
  EXPECT_EQ(resets.count(), 1);
  EXPECT_EQ(outline.treeModel().rowCount(), 0);
  document = makeDocument();
}

/// Notes what a widget is asked to paint.
class PaintRecorder : public QObject {
 public:
  bool eventFilter(QObject* /*watched*/, QEvent* event) override {
    if (event->type() == QEvent::Paint) painted |= static_cast<QPaintEvent*>(event)->region();
    return false;
  }
  QRegion painted;
};

TEST_F(LayerPanelViewTest, AChangeOfOneNodePaintsItsRowAlone) {
  for (int folder = 0; folder < 20; ++folder) {
    document->selectNode(std::nullopt);
    document->addFolder("Folder");
    for (int i = 0; i < 25; ++i) document->addLayer("Layer");
  }
  document->selectNode(std::nullopt);
  showPanel();
  ASSERT_TRUE(waitUntil([this] {
    return std::ranges::none_of(document->allLayers(),
                                [](const auto& each) { return each->thumbnailDirty.value(); });
  }));
  outline.scrollToTop();
  QApplication::processEvents();
  const QModelIndex row = outline.treeModel().index(1, 0, outline.treeModel().index(0, 0));
  const QRect place = outline.visualRect(row);
  const QUuid id = outline.treeModel().idOf(row);
  ASSERT_FALSE(place.isEmpty());
  PaintRecorder recorder;
  outline.viewport()->installEventFilter(&recorder);
  const auto paintedBy = [&](const std::function<void()>& change) {
    QApplication::processEvents();
    recorder.painted = {};
    change();
    QApplication::processEvents();
    return recorder.painted;
  };
  EXPECT_EQ(paintedBy([&] { document->rename(id, "New name"); }), QRegion(place));
  EXPECT_EQ(paintedBy([&] { document->thumbnailManager->markDirty(id); }), QRegion(place));
  EXPECT_EQ(paintedBy([&] { document->setVisible(id, false); }), QRegion(place));
  EXPECT_EQ(paintedBy([&] { document->setLocked(id, true); }), QRegion(outline.rectOf(row, Part::lock)));
  EXPECT_EQ(paintedBy([&] { document->setOpacity(id, 0.5F); }), QRegion()) << "rows don't show the opacity";
  const QModelIndex hidden = outline.treeModel().index(1, 0, outline.treeModel().index(19, 0));
  EXPECT_EQ(paintedBy([&] { document->rename(outline.treeModel().idOf(hidden), "Far below"); }), QRegion());
  EXPECT_EQ(paintedBy([&] { document->zoomIn(); }), QRegion());
}

TEST_F(LayerPanelViewTest, TheRingOfTheKeysGoesWhenTheMouseTakesOver) {
  document->addLayer("a");
  document->addLayer("b");
  showPanel();
  key(Qt::Key_Down);
  ASSERT_EQ(selectedName(), "a");
  const QPoint lock = center("b", Part::lock);
  moveTo(lock, Qt::NoButton);
  QApplication::processEvents();
  PaintRecorder recorder;
  outline.viewport()->installEventFilter(&recorder);
  press(lock);
  QApplication::processEvents();
  EXPECT_TRUE(recorder.painted.contains(outline.visualRect(at("a"))));
}

TEST_F(LayerPanelViewTest, TheMenuKeyNeedsARowThatIsSeen) {
  document->addFolder("F");
  document->addLayer("inner");
  document->setExpanded(idOf(*document, "F"), false);
  showPanel();
  const auto opensMenu = [this] {
    QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(), outline.mapToGlobal(QPoint()));
    QApplication::sendEvent(&outline, &byKey);
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu != nullptr) menu->close();
    return menu != nullptr;
  };
  ASSERT_EQ(activeName(*document), "inner");
  EXPECT_FALSE(opensMenu());
  document->setExpanded(idOf(*document, "F"), true);
  QApplication::processEvents();
  EXPECT_TRUE(opensMenu());
}

}  // namespace
}  // namespace orvanel
