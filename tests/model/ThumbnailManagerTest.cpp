#include "model/ThumbnailManager.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThreadPool>
#include <functional>
#include <memory>

#include "model/LevelsAdjustment.h"
#include "model/OpenSurfaceEdit.h"
#include "model/PixelSupport.h"

namespace orvanel {
namespace {

using namespace test;

/// Thumbnails need an event loop.
class ThumbnailManagerTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static int argumentCount = 1;
    static char name[] = "model_tests";
    static char* arguments[] = {name, nullptr};
    application = std::make_unique<QCoreApplication>(argumentCount, arguments);
  }
  static void TearDownTestSuite() {
    QThreadPool::globalInstance()->waitForDone();
    application = nullptr;
  }
  static inline std::unique_ptr<QCoreApplication> application;

  static bool waitUntil(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
      if (timer.elapsed() > 30000) return false;
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
  }

  ThumbnailManager& manager() { return *document->thumbnailManager; }
  [[nodiscard]] bool isFresh(const Layer& made) const {
    return !made.thumbnailDirty.value() && !made.channelThumbnailsDirty.value();
  }
  void view() {
    viewer = ThumbnailManager::viewing(document);
    ASSERT_TRUE(waitUntil([this] { return isFresh(*layer) && document->compositeThumbnailImage.value(); }));
  }

  DocumentPtr document = makeDocument(200, 100);
  std::shared_ptr<Layer> layer = document->activeLayer();
  ThumbnailManager::Hold viewer;
};

TEST_F(ThumbnailManagerTest, ATransformInProgressIsContinuousEditing) {
  {
    const auto edit = OpenSurfaceEdit::begin(document, layer, SurfaceKind::pixels,
                                             OpenSurfaceEdit::Purpose::transform, QStringLiteral("Move"));
    EXPECT_EQ(manager().continuousEditingCount(), 1);
    edit->takeBack();
    EXPECT_EQ(manager().continuousEditingCount(), 0);
  }
  {
    const auto edit = OpenSurfaceEdit::begin(document, layer, SurfaceKind::pixels,
                                             OpenSurfaceEdit::Purpose::transform, QStringLiteral("Move"));
    document->addLayer(QStringLiteral("Other"));
    EXPECT_EQ(manager().continuousEditingCount(), 1) << "a new layer doesn't end it";
    document->invertActive();
    EXPECT_EQ(manager().continuousEditingCount(), 0);
  }
  EXPECT_EQ(manager().continuousEditingCount(), 0);
}

TEST_F(ThumbnailManagerTest, AnOpenAdjustmentIsContinuousEditingOnlyWhileItIsDragged) {
  const auto adjustment = LevelsAdjustment::begin(document);
  EXPECT_EQ(manager().continuousEditingCount(), 0);
}

TEST_F(ThumbnailManagerTest, EndingContinuousEditingThatNeverBeganChangesNothing) {
  manager().endContinuousEditing();
  EXPECT_EQ(manager().continuousEditingCount(), 0);
  manager().beginContinuousEditing();
  manager().beginContinuousEditing();
  manager().endContinuousEditing();
  EXPECT_EQ(manager().continuousEditingCount(), 1);
}

TEST_F(ThumbnailManagerTest, AHoldOutlivesItsDocument) {
  ThumbnailManager::Hold drag = ThumbnailManager::editingContinuously(document);
  viewer = ThumbnailManager::viewing(document);
  document.reset();
  drag = {};
  viewer = {};
}

TEST_F(ThumbnailManagerTest, NothingIsMadeWhileNobodyLooks) {
  document->invertActive();
  QCoreApplication::processEvents();
  EXPECT_TRUE(manager().dirtyLayerIDs().contains(layer->id));
  EXPECT_TRUE(layer->thumbnailDirty.value());
  EXPECT_EQ(layer->thumbnailImage.value(), nullptr);
}

TEST_F(ThumbnailManagerTest, AViewerGetsWhatIsMissing) {
  document->addLayerMask(layer);
  static_cast<void>(document->composite());
  view();
  EXPECT_NE(layer->thumbnailImage.value(), nullptr);
  EXPECT_NE(layer->maskThumbnailImage.value(), nullptr);
  EXPECT_FALSE(layer->maskThumbnailDirty.value());
  EXPECT_EQ(layer->channelThumbnails.value().size(), 3U);
  EXPECT_EQ(document->compositeChannelThumbnails.value().size(), 3U);
  EXPECT_TRUE(manager().dirtyLayerIDs().empty());
}

TEST_F(ThumbnailManagerTest, AnEditIsShownAMomentLater) {
  view();
  const Thumbnail before = layer->thumbnailImage.value();
  document->invertActive();
  EXPECT_TRUE(layer->thumbnailDirty.value());
  EXPECT_EQ(layer->thumbnailImage.value(), before);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(layer->thumbnailImage.value()->pixel(0, 0), qRgb(0, 0, 0));
  document->undo();
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(layer->thumbnailImage.value()->pixel(0, 0), qRgb(255, 255, 255));
}

TEST_F(ThumbnailManagerTest, ManyMarksMakeOneRefresh) {
  view();
  int refreshes = 0;
  const auto counter = document->changes().observe([&](const DocumentChanges& changes) {
    if (contains<change::ThumbnailsChanged>(changes) && isFresh(*layer)) ++refreshes;
  });
  for (int i = 0; i < 10; ++i) manager().markDirty(layer->id);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(refreshes, 1);
}

TEST_F(ThumbnailManagerTest, ALayerThatIsRemovedInTimeIsSkipped) {
  view();
  document->addLayer(QStringLiteral("Other"));
  const std::shared_ptr<Layer> other = document->activeLayer();
  manager().markDirty(other->id);
  manager().markDirty(layer->id);
  document->removeNode(other->id);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_TRUE(other->thumbnailDirty.value());
  EXPECT_TRUE(manager().dirtyLayerIDs().empty());
}

TEST_F(ThumbnailManagerTest, MarkingAFolderOrAnUnknownNodeDoesNothing) {
  document->addFolder(QStringLiteral("Folder"));
  manager().markDirty(document->selectedNodeID.value().value());
  manager().markDirty(QUuid::createUuid());
  EXPECT_TRUE(manager().dirtyLayerIDs().empty());
}

TEST_F(ThumbnailManagerTest, TheCompositeFollowsItsFlattening) {
  view();
  const Thumbnail before = document->compositeThumbnailImage.value();
  document->invertActive();
  static_cast<void>(document->composite());
  ASSERT_TRUE(waitUntil([&] { return document->compositeThumbnailImage.value() != before; }));
  EXPECT_EQ(document->compositeThumbnailImage.value()->pixel(0, 0), qRgb(0, 0, 0));
}

TEST_F(ThumbnailManagerTest, TheCompositeWaitsForTheEndOfADrag) {
  view();
  const Thumbnail before = document->compositeThumbnailImage.value();
  auto drag = ThumbnailManager::editingContinuously(document);
  document->invertActive();
  static_cast<void>(document->composite());
  // The layer's refresh came due after the composite's.
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  manager().markDirty(layer->id);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(document->compositeThumbnailImage.value(), before);
  drag = {};
  ASSERT_TRUE(waitUntil([&] { return document->compositeThumbnailImage.value() != before; }));
  EXPECT_EQ(document->compositeThumbnailImage.value()->pixel(0, 0), qRgb(0, 0, 0));
}

TEST_F(ThumbnailManagerTest, NewLayersAndMasksHavePicturesAtOnce) {
  view();
  document->addLayer(QStringLiteral("New"));
  const std::shared_ptr<Layer> added = document->activeLayer();
  EXPECT_NE(added->thumbnailImage.value(), nullptr);
  EXPECT_FALSE(added->thumbnailDirty.value());

  document->addLayerMask(layer);
  EXPECT_NE(layer->maskThumbnailImage.value(), nullptr);
  EXPECT_FALSE(layer->maskThumbnailDirty.value());

  document->duplicateNode(layer->id);
  const std::shared_ptr<Layer> copy = document->activeLayer();
  EXPECT_NE(copy->thumbnailImage.value(), nullptr);
  EXPECT_FALSE(copy->thumbnailDirty.value());
  EXPECT_EQ(copy->maskThumbnailImage.value(), layer->maskThumbnailImage.value());
  EXPECT_FALSE(copy->maskThumbnailDirty.value());
}

TEST_F(ThumbnailManagerTest, APastedLayerHasAPictureAtOnce) {
  view();
  document->selectAll();
  const auto copied = document->copyPixels();
  ASSERT_TRUE(copied.has_value());
  document->pastePixels(*copied);
  EXPECT_NE(document->activeLayer()->thumbnailImage.value(), nullptr);
  EXPECT_FALSE(document->activeLayer()->thumbnailDirty.value());
}

TEST_F(ThumbnailManagerTest, AMaskThatComesBackHasItsPictureAtOnce) {
  view();
  document->addLayerMask(layer);
  document->removeLayerMask(layer);
  EXPECT_EQ(layer->maskThumbnailImage.value(), nullptr);
  document->undo();
  EXPECT_NE(layer->maskThumbnailImage.value(), nullptr);
  EXPECT_FALSE(layer->maskThumbnailDirty.value());
  document->undo();
  EXPECT_EQ(layer->maskThumbnailImage.value(), nullptr);
  document->redo();
  EXPECT_NE(layer->maskThumbnailImage.value(), nullptr);
}

TEST_F(ThumbnailManagerTest, CommandsOnTheCanvasRenewEveryLayer) {
  document->addLayer(QStringLiteral("Other"));
  view();
  document->resizeCanvas(100, 100, 0, 0);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  for (const auto& renewed : document->allLayers()) {
    ASSERT_TRUE(waitUntil([&] { return isFresh(*renewed); }));
    EXPECT_EQ(renewed->thumbnailImage.value()->size(), QSize(96, 96));
  }
}

TEST_F(ThumbnailManagerTest, EverythingCanBeRenewed) {
  document->addLayer(QStringLiteral("Other"));
  view();
  const Thumbnail composite = document->compositeThumbnailImage.value();
  manager().refreshEverything();
  for (const auto& renewed : document->allLayers()) EXPECT_TRUE(renewed->thumbnailDirty.value());
  ASSERT_TRUE(waitUntil([&] { return document->compositeThumbnailImage.value() != composite; }));
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
}

TEST_F(ThumbnailManagerTest, AClosedDocumentIsForgottenByWorkUnderWay) {
  viewer = ThumbnailManager::viewing(document);
  manager().beginContinuousEditing();
  manager().endContinuousEditing();
  document.reset();
  layer.reset();
  QThreadPool::globalInstance()->waitForDone();
  QCoreApplication::processEvents();
}

}  // namespace
}  // namespace orvanel
