#include <gtest/gtest.h>

#include "model/Document.h"
#include "model/ModelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

class DocumentTreeTest : public testing::Test {
 protected:
  void SetUp() override { settle(); }

  /// Clears the flags as a save and a frame would.
  void settle() {
    document->setDirty(false);
    put(document->needsCompositing, false);
  }
  [[nodiscard]] bool isEdited() const {
    return document->isDirty.value() && document->needsCompositing.value();
  }
  void remove(const QString& name) { document->removeNode(idOf(*document, name)); }
  [[nodiscard]] std::size_t historySize() const { return document->undoStack.operations().size(); }

  DocumentPtr document = makeDocument();
};

TEST_F(DocumentTreeTest, ANewLayerGoesDirectlyAboveTheActiveNode) {
  document->addLayer("Layer");
  activate(*document, "Background");
  document->addLayer("Layer");
  EXPECT_EQ(treeText(*document), "Background, Layer 2, Layer");
  EXPECT_EQ(activeName(*document), "Layer 2");
  EXPECT_TRUE(isEdited());
}

TEST_F(DocumentTreeTest, ANewLayerIsTransparentAndHasCanvasSize) {
  document->addLayer("Layer");
  const std::shared_ptr<Layer> layer = nodeNamed(*document, "Layer").layer();
  EXPECT_TRUE(layer->texture.value()->equals(Surface(PixelFormat::rgba8Unorm, 40, 30)));
  EXPECT_EQ(layer->opacity.value(), 1.0F);
  EXPECT_EQ(document->undoStack.undoActionName(), "Add Layer");
}

TEST_F(DocumentTreeTest, ANewLayerGoesToTheTopOfAnActiveFolder) {
  document->addFolder("Folder");
  const std::shared_ptr<LayerFolder> folder = nodeNamed(*document, "Folder").folder();
  document->addLayer("a");
  EXPECT_TRUE(folder->isExpanded.value()) << "an expanded folder stays expanded";
  put(folder->isExpanded, false);
  activate(*document, "Folder");
  document->addLayer("b");
  EXPECT_EQ(treeText(*document), "Background, Folder[a, b]");
  EXPECT_FALSE(folder->isExpanded.value()) << "a collapsed folder stays collapsed";
}

TEST_F(DocumentTreeTest, ANewNodeGoesIntoTheParentOfTheActiveNode) {
  document->addFolder("Folder");
  document->addLayer("a");
  document->addLayer("c");
  activate(*document, "a");
  document->addFolder("b");
  EXPECT_EQ(treeText(*document), "Background, Folder[a, b[], c]");
  EXPECT_EQ(activeName(*document), "b");
  EXPECT_EQ(document->undoStack.undoActionName(), "Add Folder");
}

TEST_F(DocumentTreeTest, WithoutAnActiveNodeANewOneGoesToTheTop) {
  document->addLayer("a");
  document->selectNode(std::nullopt);
  document->addLayer("b");
  document->selectNode(QUuid::createUuid());
  document->addFolder("c");
  EXPECT_EQ(treeText(*document), "Background, a, b, c[]");
}

TEST(DocumentTreeDeathTest, ALayerWithoutPixelsIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const DocumentPtr document = makeDocument();
  const auto withoutSurfaces = [](const auto& action) {
    const tileMemory::ScopedSurfaceFailure failure(0);
    action();
  };
  EXPECT_DEATH(withoutSurfaces([&] { document->addLayer("L"); }), "Failed to create layer texture");
  EXPECT_DEATH(withoutSurfaces([&] { document->duplicateNode(idOf(*document, "Background")); }),
               "Failed to create layer texture");
}

TEST_F(DocumentTreeTest, TheLastLayerCannotBeRemoved) {
  document->addFolder("Folder");
  settle();
  remove("Background");
  EXPECT_EQ(treeText(*document), "Background, Folder[]");
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(historySize(), 1U);
  remove("Folder");
  EXPECT_EQ(treeText(*document), "Background");
  EXPECT_TRUE(isEdited());
}

TEST_F(DocumentTreeTest, RemovingAFolderMayRemoveTheLastLayer) {
  document->addFolder("Folder");
  document->moveNode(idOf(*document, "Background"), idOf(*document, "Folder"));
  remove("Folder");
  EXPECT_EQ(document->layerCount(), 0);
  EXPECT_EQ(document->selectedNodeID.value(), std::nullopt) << "the root list is empty";
}

TEST_F(DocumentTreeTest, RemovingTheTopNodeActivatesTheNewTop) {
  document->addLayer("a");
  document->addLayer("b");
  remove("b");
  EXPECT_EQ(activeName(*document), "a");
}

TEST_F(DocumentTreeTest, RemovingActivatesTheNodeThatTakesItsPlace) {
  document->addLayer("a");
  document->addLayer("b");
  remove("a");
  EXPECT_EQ(treeText(*document), "Background, b");
  EXPECT_EQ(activeName(*document), "b");
  EXPECT_EQ(document->undoStack.undoActionName(), "Delete Layer");
}

TEST_F(DocumentTreeTest, RemovingTheOnlyChildActivatesItsFolder) {
  document->addFolder("Folder");
  document->addLayer("a");
  remove("a");
  EXPECT_EQ(treeText(*document), "Background, Folder[]");
  EXPECT_EQ(activeName(*document), "Folder");
}

TEST_F(DocumentTreeTest, UnknownNodesAreIgnored) {
  const QUuid unknown = QUuid::createUuid();
  document->addFolder("Folder");
  settle();
  document->removeNode(unknown);
  document->moveNode(unknown, idOf(*document, "Folder"));
  document->moveNode(unknown, std::nullopt, 0);
  document->duplicateNode(unknown);
  EXPECT_EQ(treeText(*document), "Background, Folder[]");
  EXPECT_EQ(historySize(), 1U);
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(DocumentTreeTest, MovingIntoAFolderPutsTheNodeOnTopAndActivatesIt) {
  document->addFolder("Folder");
  document->addLayer("inner");
  settle();
  document->moveNode(idOf(*document, "Background"), idOf(*document, "Folder"));
  EXPECT_EQ(treeText(*document), "Folder[inner, Background]");
  EXPECT_EQ(activeName(*document), "Background");
  EXPECT_TRUE(isEdited());
  EXPECT_EQ(document->undoStack.undoActionName(), "Move Layer");
}

TEST_F(DocumentTreeTest, AMovesIndexIsCountedAfterTheNodesRemoval) {
  for (const char* name : {"a", "b", "c"}) document->addLayer(name);
  document->moveNode(idOf(*document, "a"), std::nullopt, 2);
  EXPECT_EQ(treeText(*document), "Background, b, a, c");
  document->moveNode(idOf(*document, "b"), std::nullopt, 99);
  EXPECT_EQ(treeText(*document), "Background, a, c, b");
  document->moveNode(idOf(*document, "b"), std::nullopt, -1);
  EXPECT_EQ(treeText(*document), "b, Background, a, c");
}

TEST_F(DocumentTreeTest, MovingToAnIndexChangesNeitherActiveNodeNorFlags) {
  document->addLayer("a");
  document->addFolder("Folder");
  settle();
  document->moveNode(idOf(*document, "Background"), idOf(*document, "Folder"), 0);
  EXPECT_EQ(treeText(*document), "a, Folder[Background]");
  EXPECT_EQ(activeName(*document), "Folder");
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_FALSE(document->needsCompositing.value());
  EXPECT_EQ(document->undoStack.undoActionName(), "Move Layer");
}

TEST_F(DocumentTreeTest, PlacingANodeActivatesItAndLeavesTheDocumentUnsaved) {
  document->addLayer("a");
  document->addFolder("Folder");
  settle();
  ChangeRecorder changes(*document);
  document->placeNode(idOf(*document, "Background"), idOf(*document, "Folder"), 0);
  EXPECT_EQ(treeText(*document), "a, Folder[Background]");
  EXPECT_EQ(activeName(*document), "Background");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(changes.batches, 1);
  EXPECT_EQ(document->undoStack.undoActionName(), "Move Layer");
  document->undo();
  EXPECT_EQ(treeText(*document), "Background, a, Folder[]");
}

TEST_F(DocumentTreeTest, PlacingANodeWhereItIsOnlyActivatesIt) {
  document->addLayer("a");
  settle();
  document->placeNode(idOf(*document, "Background"), std::nullopt, 0);
  EXPECT_EQ(activeName(*document), "Background");
  EXPECT_EQ(historySize(), 1U);
  EXPECT_FALSE(document->isDirty.value());
  document->placeNode(QUuid::createUuid(), std::nullopt, 0);
  EXPECT_EQ(activeName(*document), "Background");
}

TEST_F(DocumentTreeTest, MovingIntoALayerMovesToTheRoot) {
  document->addFolder("Folder");
  document->addLayer("a");
  document->moveNode(idOf(*document, "a"), idOf(*document, "Background"), 0);
  EXPECT_EQ(treeText(*document), "a, Background, Folder[]");
}

TEST_F(DocumentTreeTest, ACopyGoesDirectlyAboveItsSource) {
  document->addLayer("a");
  document->duplicateNode(idOf(*document, "Background"));
  EXPECT_EQ(treeText(*document), "Background, Background Copy, a");
  EXPECT_EQ(activeName(*document), "Background Copy");
  EXPECT_EQ(document->undoStack.undoActionName(), "Duplicate Layer");
  EXPECT_TRUE(isEdited());
}

TEST_F(DocumentTreeTest, ACopiedLayerHasItsOwnPixelsAndMask) {
  const std::shared_ptr<Layer> source = document->allLayers().front();
  put(source->opacity, 0.25F);
  put(source->blendMode, BlendMode::overlay);
  put(source->isVisible, false);
  put(source->isLocked, true);
  put(source->isMaskLinked, false);
  put(source->isMaskSelected, true);
  put(source->thumbnailDirty, false);
  const std::shared_ptr<LayerMask> sourceMask = addMask(*source);
  put(sourceMask->isEnabled, false);
  MetalContext::shared().fillMask(writable(sourceMask->maskTexture->texture), 0.75F);
  put(source->maskThumbnailImage, std::make_shared<const QImage>(2, 1, QImage::Format_RGBA8888));

  document->duplicateNode(source->id);
  const std::shared_ptr<Layer> copy = nodeNamed(*document, "Background Copy").layer();
  EXPECT_NE(copy->id, source->id);
  EXPECT_EQ(copy->opacity.value(), 0.25F);
  EXPECT_EQ(copy->blendMode.value(), BlendMode::overlay);
  EXPECT_FALSE(copy->isVisible.value());
  EXPECT_FALSE(copy->isLocked.value());
  EXPECT_FALSE(copy->isMaskLinked.value());
  EXPECT_FALSE(copy->isMaskSelected.value());
  EXPECT_NE(copy->texture.value(), source->texture.value());
  EXPECT_TRUE(copy->texture.value()->equals(*source->texture.value()));

  const std::shared_ptr<LayerMask> copyMask = copy->mask.value();
  ASSERT_NE(copyMask, nullptr);
  EXPECT_NE(copyMask->id, sourceMask->id);
  EXPECT_FALSE(copyMask->isEnabled.value());
  EXPECT_NE(copyMask->maskTexture->texture, sourceMask->maskTexture->texture);
  EXPECT_TRUE(copyMask->maskTexture->texture->equals(*sourceMask->maskTexture->texture));
  EXPECT_EQ(copy->maskThumbnailImage.value(), source->maskThumbnailImage.value());
  EXPECT_EQ(copy->maskThumbnailDirty.value(), source->maskThumbnailDirty.value());
  EXPECT_TRUE(copy->channelThumbnailsDirty.value());
}

TEST_F(DocumentTreeTest, ACopyWithoutAMaskSurfaceHasNoMask) {
  const std::shared_ptr<Layer> source = document->allLayers().front();
  addMask(*source);
  {
    const tileMemory::ScopedSurfaceFailure failure(1);
    document->duplicateNode(source->id);
  }
  const std::shared_ptr<Layer> copy = nodeNamed(*document, "Background Copy").layer();
  EXPECT_NE(copy->texture.value(), nullptr);
  EXPECT_EQ(copy->mask.value(), nullptr);
}

TEST_F(DocumentTreeTest, ACopiedFolderHoldsUnlockedCopies) {
  document->addFolder("F");
  document->addLayer("L");
  const std::shared_ptr<LayerFolder> source = nodeNamed(*document, "F").folder();
  const std::shared_ptr<Layer> inner = nodeNamed(*document, "L").layer();
  put(source->isLocked, true);
  put(source->isExpanded, false);
  put(source->isVisible, false);
  put(source->opacity, 0.5F);
  put(source->blendMode, BlendMode::darken);
  put(inner->isLocked, true);

  document->duplicateNode(source->id);
  EXPECT_EQ(treeText(*document), "Background, F[L], F Copy[L Copy]");
  const std::shared_ptr<LayerFolder> copy = nodeNamed(*document, "F Copy").folder();
  EXPECT_NE(copy->id, source->id);
  EXPECT_FALSE(copy->isLocked.value());
  EXPECT_FALSE(copy->isExpanded.value());
  EXPECT_FALSE(copy->isVisible.value());
  EXPECT_EQ(copy->opacity.value(), 0.5F);
  EXPECT_EQ(copy->blendMode.value(), BlendMode::darken);
  const std::shared_ptr<Layer> innerCopy = nodeNamed(*document, "L Copy").layer();
  EXPECT_NE(innerCopy->id, inner->id);
  EXPECT_FALSE(innerCopy->isLocked.value());
  EXPECT_EQ(document->undoStack.undoActionName(), "Duplicate Folder");
}

TEST_F(DocumentTreeTest, NoMoveLosesANode) {
  document->addFolder("F");
  document->addFolder("inner");
  document->addLayer("a");
  settle();
  const QString before = treeText(*document);
  const QUuid folder = idOf(*document, "F");
  const QUuid inner = idOf(*document, "inner");
  document->moveNode(idOf(*document, "a"), idOf(*document, "Background"));
  document->moveNode(idOf(*document, "a"), QUuid::createUuid());
  document->moveNode(folder, folder);
  document->moveNode(folder, inner);
  document->moveNode(folder, std::optional(folder), 0);
  document->moveNode(folder, std::optional(inner), 0);
  EXPECT_EQ(treeText(*document), before);
  EXPECT_EQ(historySize(), 3U);
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(DocumentTreeTest, NestingDepthIsUnlimited) {
  constexpr int depth = 20000;
  LayerNodeList nodes{std::make_shared<Layer>(NodeValues{.name = "deep"}, document->makeLayerTexture())};
  const QUuid deepest = nodes.front().id();
  for (int i = 0; i < depth; ++i) {
    nodes = {std::make_shared<LayerFolder>(NodeValues{.name = QString::number(i), .opacity = 1.0F}, nodes)};
  }
  const DocumentPtr deep = Document::create(
      {.name = "Deep", .width = 4, .height = 3, .rootNodes = nodes, .selectedNodeID = deepest},
      MetalContext::shared());
  nodes.clear();
  EXPECT_EQ(deep->layerCount(), 1);
  EXPECT_NE(deep->composite(), nullptr);
  const QUuid top = deep->rootNodes.value().front().id();
  deep->duplicateNode(top);
  EXPECT_EQ(deep->layerCount(), 2);
  deep->removeNode(top);
  deep->undo();
  EXPECT_EQ(deep->allLayers().front()->id, deepest);
}

}  // namespace
}  // namespace orvanel
