#include "model/Document.h"

#include <gtest/gtest.h>

#include "model/ModelSupport.h"
#include "model/edit/DocumentEdit.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

MetalContext& context() {
  return MetalContext::shared();
}

TEST(DocumentTest, BeginsWithAWhiteBackground) {
  const DocumentPtr document = Document::create("New", 40, 30, ColorMode::rgb8, context());
  EXPECT_EQ(document->name.value(), "New");
  EXPECT_EQ(document->canvasWidth.value(), 40);
  EXPECT_EQ(document->canvasHeight.value(), 30);
  ASSERT_EQ(treeText(*document), "Background");
  const std::shared_ptr<Layer> background = document->rootNodes.value().front().layer();
  EXPECT_EQ(document->selectedNodeID.value(), background->id);
  EXPECT_FALSE(background->isLocked.value());
  const Surface& pixels = *background->texture.value();
  EXPECT_EQ(pixels.format(), PixelFormat::rgba8Unorm);
  EXPECT_EQ(pixels.bounds(), (PixelRect{0, 0, 40, 30}));
  EXPECT_EQ(pixels.pixelAt(39, 29), 0xFFFFFFFFU);
}

TEST(DocumentTest, BackgroundIsOpaqueWhiteInEveryMode) {
  const std::array<std::uint64_t, 4> white{0xFFFFU, 0xFFFFFFFFU, 0xFFFFFFFFU, 0x3C003C003C003C00U};
  for (const ColorMode mode : allColorModes) {
    const DocumentPtr document = makeDocument(3, 2, mode);
    const Surface& pixels = *document->rootNodes.value().front().layer()->texture.value();
    EXPECT_EQ(pixels.format(), layerPixelFormat(mode));
    EXPECT_EQ(pixels.pixelAt(2, 1), white[rawValue(mode)]);
    EXPECT_EQ(document->compositedTexture.value()->format(), compositePixelFormat(mode));
    EXPECT_EQ(document->checkerboardTexture.value()->format(), compositePixelFormat(mode));
  }
}

TEST(DocumentTest, BeginsCleanUnscrolledAndWithTheHand) {
  const DocumentPtr document = makeDocument();
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(document->needsCompositing.value());
  EXPECT_TRUE(document->needsInitialZoom.value());
  EXPECT_EQ(document->zoomLevelIndex.value(), 14);
  EXPECT_EQ(document->customZoomLevel.value(), std::nullopt);
  EXPECT_EQ(document->viewportOffset.value(), QPointF(0.0, 0.0));
  EXPECT_EQ(document->cursorDocumentPosition.value(), std::nullopt);
  EXPECT_EQ(document->dragSize.value(), std::nullopt);
  EXPECT_EQ(document->sourceFileURL.value(), std::nullopt);
  EXPECT_EQ(document->sourceFileFormat.value(), std::nullopt);
  EXPECT_EQ(document->selectedTool.value(), Tool::hand);
  EXPECT_TRUE(document->selectedVariants.value().isEmpty());
  EXPECT_EQ(document->foregroundColor.value(), DisplayColor::black());
  EXPECT_EQ(document->backgroundColor.value(), DisplayColor::white());
  EXPECT_EQ(document->selection.value(), nullptr);
  EXPECT_EQ(document->channelVisibility.value(), (ChannelVisibility{1, 1, 1}));
  EXPECT_TRUE(document->undoStack.operations().empty());
}

TEST(DocumentTest, CheckerboardHasSquaresOfEightPixels) {
  const DocumentPtr document = makeDocument(40, 30);
  const Surface& board = *document->checkerboardTexture.value();
  EXPECT_EQ(board.pixelAt(0, 0), board.pixelAt(7, 7));
  EXPECT_NE(board.pixelAt(7, 0), board.pixelAt(8, 0));
  EXPECT_NE(board.pixelAt(0, 7), board.pixelAt(0, 8));
  EXPECT_EQ(board.pixelAt(0, 0), board.pixelAt(8, 8));
}

TEST(DocumentTest, AnEmptyDocumentHasNoNodes) {
  const DocumentPtr document = Document::create(
      {.name = "Empty", .width = 4, .height = 3, .colorMode = ColorMode::grayscale8}, context());
  EXPECT_TRUE(document->rootNodes.value().empty());
  EXPECT_EQ(document->selectedNodeID.value(), std::nullopt);
  EXPECT_EQ(document->activeNode(), std::nullopt);
  EXPECT_NE(document->compositedTexture.value(), nullptr);
  EXPECT_FALSE(document->canSaveAsFlatImage());
}

TEST(DocumentDeathTest, SurfacesThatCannotBeMadeAreFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto createWith = [](int surfacesAllowed) {
    const tileMemory::ScopedSurfaceFailure failure(surfacesAllowed);
    (void)makeDocument();
  };
  EXPECT_DEATH(createWith(0), "Failed to create display texture");
  EXPECT_DEATH(createWith(1), "Failed to create display texture");
  EXPECT_DEATH(createWith(2), "Failed to create layer texture");
}

TEST(DocumentTest, ChangingTheActiveNodeIsReportedOnce) {
  const DocumentPtr document = makeDocument();
  const ChangeRecorder changes(*document);
  document->selectNode(document->selectedNodeID.value());
  EXPECT_EQ(changes.batches, 0);
  document->selectNode(std::nullopt);
  document->selectNode(std::nullopt);
  EXPECT_EQ(changes.count<change::ActiveNodeChanged>(), 1U);
}

TEST(DocumentTest, AnActiveIdWithoutANodeReadsAsNone) {
  const DocumentPtr document = makeDocument();
  document->selectNode(QUuid::createUuid());
  EXPECT_EQ(document->activeNode(), std::nullopt);
}

class DocumentTreeQueryTest : public testing::Test {
 protected:
  void SetUp() override {
    document->addFolder("F");
    document->addLayer("inner");
    document->addFolder("G");
    document->addLayer("deep");
    ASSERT_EQ(treeText(*document), "Background, F[inner, G[deep]]");
  }

  DocumentPtr document = makeDocument();
};

TEST_F(DocumentTreeQueryTest, FindsNodesAtAnyDepth) {
  EXPECT_EQ(document->activeNode()->name().value(), "deep");
  EXPECT_EQ(document->findNode(idOf(*document, "G")), nodeNamed(*document, "G"));
  EXPECT_EQ(document->findNode(QUuid::createUuid()), std::nullopt);
}

TEST_F(DocumentTreeQueryTest, FindsParentAndIndex) {
  const auto root = document->parentAndIndex(idOf(*document, "F"));
  ASSERT_TRUE(root);
  EXPECT_EQ(root->folder, nullptr);
  EXPECT_EQ(root->index, 1);
  const auto nested = document->parentAndIndex(idOf(*document, "G"));
  ASSERT_TRUE(nested);
  EXPECT_EQ(nested->folder, nodeNamed(*document, "F").folder());
  EXPECT_EQ(nested->index, 1);
  EXPECT_FALSE(document->parentAndIndex(QUuid::createUuid()));
}

TEST_F(DocumentTreeQueryTest, CountsLayersButNotFolders) {
  EXPECT_EQ(document->layerCount(), 3);
  EXPECT_EQ(document->allLayers().size(), 3U);
  EXPECT_EQ(document->allLayers()[1]->name.value(), "inner");
}

TEST_F(DocumentTreeQueryTest, UniqueNamesConsiderAllDepths) {
  EXPECT_EQ(document->allNodeNames(), (std::set<QString>{"Background", "F", "G", "deep", "inner"}));
  EXPECT_EQ(document->uniqueNodeName("other"), "other");
  EXPECT_EQ(document->uniqueNodeName("deep"), "deep 2");
  put(nodeNamed(*document, "inner").name(), QStringLiteral("deep 2"));
  EXPECT_EQ(document->uniqueNodeName("deep"), "deep 3");
  put(nodeNamed(*document, "Background").name(), QStringLiteral("deep 4"));
  EXPECT_EQ(document->uniqueNodeName("deep"), "deep 3") << "the first free number";
}

TEST_F(DocumentTreeQueryTest, MemoryCountsPixelsAndMasksAsPackedRows) {
  EXPECT_EQ(document->memoryUsage(), 3 * 40 * 30 * 4);
  addMask(*nodeNamed(*document, "deep").layer());
  EXPECT_EQ(document->memoryUsage(), 3 * 40 * 30 * 4 + 40 * 30 * 2);
  put(nodeNamed(*document, "inner").layer()->texture, nullptr);
  EXPECT_EQ(document->memoryUsage(), 2 * 40 * 30 * 4 + 40 * 30 * 2);
}

TEST(DocumentTest, OnlyASingleUnmaskedLayerIsAFlatImage) {
  const DocumentPtr document = makeDocument();
  EXPECT_TRUE(document->canSaveAsFlatImage());
  const std::shared_ptr<Layer> background = document->allLayers().front();
  addMask(*background);
  EXPECT_FALSE(document->canSaveAsFlatImage());
  put(background->mask, nullptr);
  document->addFolder("F");
  EXPECT_FALSE(document->canSaveAsFlatImage());
  document->undo();
  EXPECT_TRUE(document->canSaveAsFlatImage());
  put(background->texture, nullptr);
  EXPECT_FALSE(document->canSaveAsFlatImage());
}

TEST(DocumentTest, AFolderAroundTheOnlyLayerIsNoFlatImage) {
  const DocumentPtr document = makeDocument();
  document->addFolder("F");
  document->moveNode(idOf(*document, "Background"), idOf(*document, "F"));
  ASSERT_EQ(treeText(*document), "F[Background]");
  EXPECT_FALSE(document->canSaveAsFlatImage());
}

TEST(DocumentTest, UndoAndRedoOfAnEmptyHistoryStillMakeItDirty) {
  for (void (Document::*step)() : {&Document::undo, &Document::redo}) {
    const DocumentPtr document = makeDocument();
    put(document->needsCompositing, false);
    const ChangeRecorder changes(*document);
    ((*document).*step)();
    EXPECT_TRUE(document->isDirty.value());
    EXPECT_TRUE(document->needsCompositing.value());
    EXPECT_EQ(changes.count<change::HistoryStepped>(), 1U);
    EXPECT_EQ(changes.count<change::HistoryChanged>(), 0U);
  }
}

TEST(DocumentTest, UndoingBackToTheSavedStateIsStillDirty) {
  const DocumentPtr document = makeDocument();
  document->setDirty(false);
  document->addLayer("L");
  document->undo();
  EXPECT_EQ(treeText(*document), "Background");
  EXPECT_TRUE(document->isDirty.value());
}

TEST(DocumentTest, EqualValuesNotifyNobody) {
  const DocumentPtr document = makeDocument();
  const ChangeRecorder changes(*document);
  document->setChannelVisibility(ChannelVisibility{1, 1, 1});
  document->setForegroundColor(DisplayColor::black());
  document->setViewportOffset(QPointF(0.0, 0.0));
  document->setName(document->name.value());
  document->setSource(std::nullopt, std::nullopt);
  EXPECT_EQ(changes.batches, 0);
  document->setChannelVisibility(ChannelVisibility{1, 0, 1});
  EXPECT_EQ(changes.count<change::ViewChanged>(ViewProperty::channelVisibility), 1U);
}

TEST(DocumentTest, DisplayTexturesFollowSizeAndMode) {
  const DocumentPtr document = makeDocument();
  const ConstTexture before = document->compositedTexture.value();
  put(document->canvasWidth, 50);
  put(document->colorMode, ColorMode::rgb16);
  DocumentEdit(*document, editKind::state).rebuildDisplayTextures();
  EXPECT_NE(document->compositedTexture.value(), before);
  for (const ConstTexture& texture :
       {document->compositedTexture.value(), document->checkerboardTexture.value()}) {
    EXPECT_EQ(texture->bounds(), (PixelRect{0, 0, 50, 30}));
    EXPECT_EQ(texture->format(), PixelFormat::rgba16Float);
  }
}

}  // namespace
}  // namespace orvanel
