#include "model/ThumbnailManager.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThreadPool>
#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

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

TEST_F(ThumbnailManagerTest, ManyLayersThatAreGoneHoldNobodyUp) {
  // Layers come in the order of their identities: those that go are looked for first, in a large tree.
  DocumentContents contents{
      .name = QStringLiteral("Many"), .width = 8, .height = 8, .colorMode = ColorMode::rgb8};
  const Texture pixels = MetalContext::shared().makeTexture(PixelFormat::rgba8Unorm, 8, 8);
  std::vector<std::shared_ptr<Layer>> kept;
  std::vector<QUuid> gone;
  for (std::uint32_t i = 0; i < 2000; ++i) {
    const QUuid id(i < 200 ? 1 : 2, 0, 0, 0, 0, 0, 0, 0, 0, static_cast<unsigned char>(i >> 8U),
                   static_cast<unsigned char>(i));
    const auto made = std::make_shared<Layer>(NodeValues{.id = id}, pixels);
    contents.rootNodes.emplace_back(made);
    if (i < 200) {
      gone.push_back(id);
    } else {
      kept.push_back(made);
    }
  }
  document = Document::create(std::move(contents), MetalContext::shared());
  const auto areFresh = [&] {
    return std::ranges::all_of(kept, [this](const auto& each) { return isFresh(*each); });
  };
  viewer = ThumbnailManager::viewing(document);
  ASSERT_TRUE(waitUntil(areFresh));
  for (const QUuid& id : gone) manager().markDirty(id);
  for (const auto& each : kept) manager().markDirty(each->id);
  for (const QUuid& id : gone) document->removeNode(id);
  EXPECT_FALSE(areFresh());
  EXPECT_TRUE(waitUntil(areFresh));
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

TEST_F(ThumbnailManagerTest, APictureShowsWhatAnOpenAdjustmentShows) {
  view();
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  auto adjustment = LevelsAdjustment::begin(document);
  adjustment->apply({.blackPoint = 200.0F, .whitePoint = 255.0F, .gamma = 1.0F});
  manager().markDirty(layer->id);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(layer->thumbnailImage.value()->pixel(0, 0), qRgb(0, 0, 0));
  EXPECT_TRUE(adjustment->isOpen());
  adjustment->cancel();
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(layer->thumbnailImage.value()->pixel(0, 0), qRgb(128, 128, 128));
}

TEST_F(ThumbnailManagerTest, ALayerThatComesBackGetsWhatItMissed) {
  document->addLayer(QStringLiteral("Other"));
  const std::shared_ptr<Layer> other = document->activeLayer();
  view();
  document->invertActive();
  document->removeNode(other->id);
  ASSERT_TRUE(waitUntil([this] { return manager().dirtyLayerIDs().empty(); }));
  EXPECT_FALSE(isFresh(*other));
  document->undo();
  ASSERT_TRUE(waitUntil([&] { return isFresh(*other); }));
}

TEST_F(ThumbnailManagerTest, ALayerThatComesBackInItsFolderGetsWhatItMissed) {
  document->addFolder(QStringLiteral("Folder"));
  const QUuid folder = document->selectedNodeID.value().value();
  document->addLayer(QStringLiteral("Other"));
  const std::shared_ptr<Layer> other = document->activeLayer();
  view();
  document->invertActive();
  document->removeNode(folder);
  ASSERT_TRUE(waitUntil([this] { return manager().dirtyLayerIDs().empty(); }));
  document->undo();
  ASSERT_TRUE(waitUntil([&] { return isFresh(*other); }));
}

TEST_F(ThumbnailManagerTest, TheCopyOfAMaskIsAsStaleAsTheMask) {
  document->addLayerMask(layer);
  ASSERT_TRUE(layer->maskThumbnailDirty.value());
  document->duplicateNode(layer->id);
  const std::shared_ptr<Layer> copy = document->activeLayer();
  EXPECT_TRUE(copy->maskThumbnailDirty.value());
  view();
  ASSERT_TRUE(waitUntil([&] { return !copy->maskThumbnailDirty.value(); }));
  EXPECT_NE(copy->maskThumbnailImage.value(), nullptr);
}

TEST_F(ThumbnailManagerTest, APictureOfAnotherMaskIsDropped) {
  document->addLayerMask(layer);
  view();
  document->setMaskSelected(layer->id, true);
  manager().markDirty(layer->id);
  ASSERT_TRUE(waitUntil([this] { return manager().dirtyLayerIDs().empty(); }));
  document->removeLayerMask(layer);
  document->selectAll();
  document->invertSelection();
  document->addLayerMask(layer);
  const Thumbnail own = layer->maskThumbnailImage.value();
  ASSERT_NE(own, nullptr);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(layer->maskThumbnailImage.value(), own);
}

TEST_F(ThumbnailManagerTest, AMovedHoldEndsTheOneThatItReplaces) {
  ThumbnailManager::Hold first = ThumbnailManager::editingContinuously(document);
  ThumbnailManager::Hold second = ThumbnailManager::editingContinuously(document);
  EXPECT_EQ(manager().continuousEditingCount(), 2);
  first = std::move(second);
  EXPECT_EQ(manager().continuousEditingCount(), 1);
  second = {};
  EXPECT_EQ(manager().continuousEditingCount(), 1);
  first = {};
  EXPECT_EQ(manager().continuousEditingCount(), 0);
}

TEST_F(ThumbnailManagerTest, WorkUnderWayIsKeptForTheNextViewer) {
  viewer = ThumbnailManager::viewing(document);
  ASSERT_TRUE(waitUntil([this] { return manager().dirtyLayerIDs().empty(); }));
  viewer = {};
  EXPECT_FALSE(manager().isViewed());
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_NE(layer->thumbnailImage.value(), nullptr);
}

TEST_F(ThumbnailManagerTest, ADragThatFlattensNothingRenewsNoComposite) {
  view();
  const Thumbnail before = document->compositeThumbnailImage.value();
  ThumbnailManager::Hold drag = ThumbnailManager::editingContinuously(document);
  drag = {};
  manager().markDirty(layer->id);
  ASSERT_TRUE(waitUntil([this] { return isFresh(*layer); }));
  EXPECT_EQ(document->compositeThumbnailImage.value(), before);
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
