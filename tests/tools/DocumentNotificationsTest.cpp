// How a document's changes become notifications: each is posted once per edit, and none without a change.
#include "tools/DocumentNotifications.h"

#include <gtest/gtest.h>

#include <memory>

#include "model/ModelSupport.h"
#include "tools/PostCounter.h"

namespace orvanel {
namespace {

using test::PostCounter;
using test::put;

class DocumentNotificationsTest : public testing::Test {
 protected:
  DocumentNotificationsTest() {
    document->addFolder(QStringLiteral("Folder"));
    document->addLayer(QStringLiteral("Deep"));
    notifications = std::make_unique<DocumentNotifications>(*document);
  }

  [[nodiscard]] QUuid idOf(const char* name) const { return test::idOf(*document, QString::fromUtf8(name)); }
  [[nodiscard]] std::shared_ptr<Layer> layer(const char* name) const {
    return test::nodeNamed(*document, QString::fromUtf8(name)).layer();
  }
  /// Clears all dirty marks, as making the thumbnails does.
  void thumbnailsAreMade() const {
    for (const std::shared_ptr<Layer>& each : document->allLayers()) {
      put(each->thumbnailDirty, false);
      put(each->maskThumbnailDirty, false);
      put(each->channelThumbnailsDirty, false);
    }
  }
  void expectPosts(int activeLayer, int thumbnails, int undoRedo) {
    EXPECT_EQ(activeLayerChanged.count, activeLayer);
    EXPECT_EQ(thumbnailsDidUpdate.count, thumbnails);
    EXPECT_EQ(undoRedoPerformed.count, undoRedo);
    for (PostCounter* posts : {&activeLayerChanged, &thumbnailsDidUpdate, &undoRedoPerformed}) {
      posts->count = 0;
    }
  }

  DocumentPtr document = test::makeDocument();
  std::unique_ptr<DocumentNotifications> notifications;
  PostCounter activeLayerChanged{notification::activeLayerChanged};
  PostCounter thumbnailsDidUpdate{notification::thumbnailsDidUpdate};
  PostCounter undoRedoPerformed{notification::undoRedoPerformed};
};

TEST_F(DocumentNotificationsTest, ANewActiveNodeIsPostedOnce) {
  document->selectNode(idOf("Folder"));
  expectPosts(1, 0, 0);
  document->selectNode(std::nullopt);
  expectPosts(1, 0, 0);
}

TEST_F(DocumentNotificationsTest, TheSameActiveNodeIsNotPosted) {
  document->selectNode(document->selectedNodeID.value());
  expectPosts(0, 0, 0);
}

TEST_F(DocumentNotificationsTest, ACommandThatChangesTheActiveNodePostsOnce) {
  document->addLayer(QStringLiteral("New"));
  expectPosts(1, 0, 0);
  document->removeNode(idOf("New"));
  expectPosts(1, 0, 0);
}

TEST_F(DocumentNotificationsTest, SwitchingBetweenPixelsAndMaskChangesTheActiveLayer) {
  const std::shared_ptr<Layer> deep = layer("Deep");
  test::addMask(*deep);
  document->setMaskSelected(deep->id, true);
  expectPosts(1, 0, 0);
  document->setMaskSelected(deep->id, true);
  expectPosts(0, 0, 0);
  document->setMaskSelected(deep->id, false);
  expectPosts(1, 0, 0);
}

TEST_F(DocumentNotificationsTest, UndoingANewMaskThatIsSelectedChangesTheActiveLayerOnce) {
  const std::shared_ptr<Layer> deep = layer("Deep");
  document->addLayerMask(deep);
  document->setMaskSelected(deep->id, true);
  activeLayerChanged.count = 0;
  document->undo();
  EXPECT_EQ(deep->mask.value(), nullptr);
  EXPECT_FALSE(deep->isMaskSelected.value());
  EXPECT_EQ(activeLayerChanged.count, 1);
  EXPECT_FALSE(activeLayerChanged.hadObject);
}

TEST_F(DocumentNotificationsTest, AnEditThatInvalidatesThumbnailsPostsOnce) {
  thumbnailsAreMade();
  document->fillSelection({1.0F, 0.0F, 0.0F, 1.0F});
  expectPosts(0, 1, 0);
}

TEST_F(DocumentNotificationsTest, AnEditOfSeveralLayersPostsThumbnailsOnce) {
  thumbnailsAreMade();
  document->resizeCanvas(50, 40, 0, 0);
  expectPosts(0, 1, 0);
}

TEST_F(DocumentNotificationsTest, StaleThumbnailsAreNotPostedAgain) {
  thumbnailsAreMade();
  document->invertActive();
  expectPosts(0, 1, 0);
  document->invertActive();
  expectPosts(0, 0, 0);
}

TEST_F(DocumentNotificationsTest, UndoAndRedoArePostedOnceEach) {
  document->setOpacity(idOf("Deep"), 0.5F);
  expectPosts(0, 0, 0);
  document->undo();
  expectPosts(0, 0, 1);
  document->redo();
  expectPosts(0, 0, 1);
}

TEST_F(DocumentNotificationsTest, AStepWithNothingToDoIsAlsoPosted) {
  const DocumentPtr fresh = test::makeDocument();
  const DocumentNotifications ofFresh(*fresh);
  fresh->undo();
  expectPosts(0, 0, 1);
  fresh->redo();
  expectPosts(0, 0, 1);
}

TEST_F(DocumentNotificationsTest, AnUndoPostsEachNotificationOnce) {
  document->removeNode(idOf("Deep"));
  expectPosts(1, 0, 0);
  document->undo();
  EXPECT_EQ(undoRedoPerformed.count, 1);
  EXPECT_EQ(activeLayerChanged.count, 1);
  EXPECT_LE(thumbnailsDidUpdate.count, 1);
}

TEST_F(DocumentNotificationsTest, OtherChangesPostNothing) {
  document->setOpacity(idOf("Deep"), 0.5F);
  document->rename(idOf("Deep"), QStringLiteral("Renamed"));
  document->setExpanded(idOf("Folder"), false);
  document->selectAll();
  document->zoomIn();
  document->setName(QStringLiteral("Another"));
  static_cast<void>(document->composite());
  expectPosts(0, 0, 0);
}

TEST_F(DocumentNotificationsTest, NothingIsPostedAfterDestruction) {
  notifications = nullptr;
  document->selectNode(std::nullopt);
  document->undo();
  expectPosts(0, 0, 0);
}

}  // namespace
}  // namespace orvanel
