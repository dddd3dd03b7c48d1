#include "model/DocumentCompositor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "model/ModelSupport.h"
#include "model/edit/DocumentEdit.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;

constexpr std::uint64_t opaqueRed = 0xFF0000FFU;
constexpr std::uint64_t opaqueGreen = 0xFF00FF00U;

class DocumentCompositorTest : public testing::Test {
 protected:
  /// Background, F[L], with L entirely red.
  void SetUp() override {
    document->addFolder("F");
    document->addLayer("L");
    layer = nodeNamed(*document, "L").layer();
    writable(layer->texture.value()).fill(opaqueRed);
    folder = nodeNamed(*document, "F").folder();
  }

  CompositeReport composite(CompositeScope scope = CompositeScope::changedTiles) {
    return compositor.compositeDocument(*document, writable(document->compositedTexture.value()), scope);
  }
  [[nodiscard]] std::uint64_t hash() const {
    return static_cast<std::uint64_t>(compositor.compositingHash(*document));
  }
  [[nodiscard]] std::uint64_t compositePixel() const {
    return document->compositedTexture.value()->pixelAt(39, 29);
  }
  [[nodiscard]] std::size_t poolSize() const { return compositor.texturePool().size(); }
  void isolate(LayerFolder& isolated) { put(isolated.opacity, 0.5F); }
  std::shared_ptr<LayerFolder> addIsolatedFolder(const QString& name, const QString& layerName) {
    document->selectNode(std::nullopt);
    document->addFolder(name);
    document->addLayer(layerName);
    std::shared_ptr<LayerFolder> added = nodeNamed(*document, name).folder();
    isolate(*added);
    return added;
  }
  void resizeCanvas(int width, int height) {
    put(document->canvasWidth, width);
    put(document->canvasHeight, height);
    DocumentEdit(*document, editKind::state).rebuildDisplayTextures();
    for (const std::shared_ptr<Layer>& each : document->allLayers())
      put(each->texture, document->makeLayerTexture());
  }

  DocumentPtr document = makeDocument();
  DocumentCompositor compositor{document->context()};
  std::shared_ptr<LayerFolder> folder;
  std::shared_ptr<Layer> layer;
};

TEST_F(DocumentCompositorTest, HashChangesWithEveryVisibleProperty) {
  std::vector<std::uint64_t> hashes{hash()};
  const auto expectNew = [&] {
    const std::uint64_t now = hash();
    EXPECT_EQ(std::count(hashes.begin(), hashes.end(), now), 0) << "change " << hashes.size();
    hashes.push_back(now);
  };
  put(layer->opacity, 0.5F);
  expectNew();
  put(layer->blendMode, BlendMode::screen);
  expectNew();
  put(folder->opacity, 0.5F);
  expectNew();
  put(folder->blendMode, BlendMode::multiply);
  expectNew();
  put(folder->isVisible, false);
  expectNew();
  put(layer->isVisible, false);
  expectNew();
  addMask(*layer);
  expectNew();
  put(layer->mask.value()->isEnabled, false);
  expectNew();
}

TEST_F(DocumentCompositorTest, HashIgnoresInvisibleProperties) {
  const std::uint64_t before = hash();
  put(layer->name, QStringLiteral("other"));
  put(layer->isLocked, true);
  writable(layer->texture.value()).fill(opaqueGreen);
  put(layer->isMaskSelected, true);
  put(folder->isExpanded, false);
  document->setChannelVisibility(ChannelVisibility{0, 1, 1});
  put(document->customZoomLevel, 3.0);
  EXPECT_EQ(hash(), before);
}

TEST_F(DocumentCompositorTest, HashTreatsNegativeZeroAsZero) {
  put(layer->opacity, 0.0F);
  const std::uint64_t before = hash();
  const auto twin = std::make_shared<Layer>("L", layer->id);
  put(twin->opacity, -0.0F);
  ASSERT_TRUE(std::signbit(twin->opacity.value()));
  put(folder->children, LayerNodeList{twin});
  EXPECT_EQ(hash(), before);
}

TEST_F(DocumentCompositorTest, HashDetectsReorderingOfEqualNodes) {
  document->addLayer("M");
  const std::uint64_t before = hash();
  document->moveNode(idOf(*document, "M"), folder->id, 0);
  ASSERT_EQ(treeText(*document), "Background, F[M, L]");
  EXPECT_NE(hash(), before);
}

TEST_F(DocumentCompositorTest, HashDetectsANodeMovedIntoAFolder) {
  document->moveNode(layer->id, std::nullopt, 99);
  ASSERT_EQ(treeText(*document), "Background, F[], L");
  const std::uint64_t before = hash();
  document->moveNode(layer->id, folder->id, 0);
  EXPECT_NE(hash(), before);
}

TEST_F(DocumentCompositorTest, TheTopNodeCoversThoseBelow) {
  composite();
  EXPECT_EQ(compositePixel(), opaqueRed);
  document->moveNode(idOf(*document, "Background"), std::nullopt, 99);
  composite();
  EXPECT_EQ(compositePixel(), 0xFFFFFFFFU);
}

TEST_F(DocumentCompositorTest, AnEmptyTreeGivesATransparentComposite) {
  composite();
  ASSERT_NE(compositePixel(), 0U);
  put(document->rootNodes, LayerNodeList{});
  composite();
  EXPECT_TRUE(document->compositedTexture.value()->equals(Surface(PixelFormat::rgba8Unorm, 40, 30)));
}

TEST_F(DocumentCompositorTest, NothingHappensWithoutAComposite) {
  put(document->compositedTexture, nullptr);
  EXPECT_EQ(document->composite(), nullptr);
  EXPECT_TRUE(document->advanceComposite(std::chrono::milliseconds(1)));
  EXPECT_EQ(document->freezeComposite(), nullptr);
}

TEST_F(DocumentCompositorTest, TheCompositeIsAlwaysCurrentWhenRead) {
  put(document->needsCompositing, false);
  static_cast<void>(document->composite());
  document->selectNode(layer->id);
  document->fillSelection(DisplayColor{0.0F, 1.0F, 0.0F, 1.0F});
  EXPECT_FALSE(document->isCompositeCurrent());
  EXPECT_EQ(document->composite()->pixelAt(39, 29), opaqueGreen);
  EXPECT_FALSE(document->needsCompositing.value());
  document->setVisible(layer->id, false);
  EXPECT_FALSE(document->needsCompositing.value()) << "detected by the hash";
  EXPECT_EQ(document->composite()->pixelAt(39, 29), 0xFFFFFFFFU);
  EXPECT_TRUE(document->isCompositeCurrent());
}

TEST_F(DocumentCompositorTest, FlatteningResumesAfterADeadline) {
  document->resizeCanvas(128 * 40, 128 * 5, -1, -1);
  document->selectNode(layer->id);
  document->fillSelection(DisplayColor{0.0F, 1.0F, 0.0F, 0.5F});
  int turns = 1;
  while (!document->advanceComposite(std::chrono::milliseconds(0))) ++turns;
  EXPECT_EQ(turns, 25) << "200 tiles, 8 at a time";
  EXPECT_TRUE(document->isCompositeCurrent());
  const Surface made = *document->composite();
  Surface anew(made.format(), made.width(), made.height());
  compositor.compositeDocument(*document, anew, CompositeScope::allTiles);
  EXPECT_TRUE(made.equals(anew));
}

TEST_F(DocumentCompositorTest, AnEditDuringFlatteningRestartsIt) {
  document->resizeCanvas(128 * 40, 128 * 5, -1, -1);
  EXPECT_FALSE(document->advanceComposite(std::chrono::milliseconds(0)));
  document->selectNode(layer->id);
  document->fillSelection(DisplayColor{0.0F, 1.0F, 0.0F, 1.0F});
  document->crop({0, 0, 300, 200}, "Crop");
  EXPECT_EQ(document->composite()->bounds(), (PixelRect{0, 0, 300, 200}));
  EXPECT_EQ(document->composite()->pixelAt(299, 199), opaqueGreen);
}

TEST_F(DocumentCompositorTest, AFrozenCompositeShowsTheMomentItWasFrozen) {
  isolate(*folder);
  const auto frozen = document->freezeComposite();
  const Surface expected = *document->composite();
  document->selectNode(layer->id);
  document->fillSelection(DisplayColor{0.0F, 1.0F, 0.0F, 1.0F});
  document->crop({0, 0, 5, 4}, "Crop");
  ASSERT_NE(frozen->surface(), nullptr);
  EXPECT_TRUE(frozen->surface()->equals(expected));
}

TEST_F(DocumentCompositorTest, ACancelledFrozenCompositeYieldsNothing) {
  const auto frozen = document->freezeComposite();
  EXPECT_EQ(frozen->surface([] { return true; }), nullptr);
  EXPECT_NE(frozen->surface(), nullptr);
}

TEST_F(DocumentCompositorTest, InvisibleNodesAreSkippedWithTheirDescendants) {
  put(folder->isVisible, false);
  composite();
  EXPECT_EQ(compositePixel(), 0xFFFFFFFFU);
  put(folder->isVisible, true);
  put(layer->isVisible, false);
  composite();
  EXPECT_EQ(compositePixel(), 0xFFFFFFFFU);
}

TEST_F(DocumentCompositorTest, ALayerWithoutPixelsIsSkipped) {
  put(layer->texture, nullptr);
  composite();
  EXPECT_EQ(compositePixel(), 0xFFFFFFFFU);
}

TEST_F(DocumentCompositorTest, ADisabledMaskIsIgnored) {
  addMask(*layer);
  composite();
  EXPECT_EQ(compositePixel(), 0xFFFFFFFFU) << "a mask of zeros hides everything";
  put(layer->mask.value()->isEnabled, false);
  composite();
  EXPECT_EQ(compositePixel(), opaqueRed);
}

TEST_F(DocumentCompositorTest, OnlyOpaqueNormalFoldersPassThrough) {
  composite();
  EXPECT_EQ(compositor.texturePoolIndex(), 0);
  put(folder->opacity, 0.999F);
  composite();
  EXPECT_EQ(compositor.texturePoolIndex(), 1);
  put(folder->opacity, 1.0F);
  composite();
  EXPECT_EQ(compositor.texturePoolIndex(), 0);
  put(folder->blendMode, BlendMode::multiply);
  composite();
  EXPECT_EQ(compositor.texturePoolIndex(), 1);
  EXPECT_EQ(poolSize(), 1U);
}

TEST_F(DocumentCompositorTest, ChildrenOfAnIsolatingFolderBlendOnlyWithEachOther) {
  put(layer->blendMode, BlendMode::difference);
  composite();
  EXPECT_EQ(compositePixel(), 0xFFFFFF00U) << "passing through, red is blended with the white beneath";
  put(folder->blendMode, BlendMode::multiply);
  composite();
  EXPECT_EQ(compositePixel(), opaqueRed) << "isolated, red stands alone and then multiplies white";
}

TEST_F(DocumentCompositorTest, AnEmptyFolderNeedsNoTemporary) {
  put(folder->children, LayerNodeList{});
  for (const BlendMode mode : {BlendMode::normal, BlendMode::difference}) {
    put(folder->blendMode, mode);
    for (const float opacity : {0.0F, 0.5F, 0.999F, 1.0F}) {
      put(folder->opacity, opacity);
      composite();
      EXPECT_EQ(compositor.texturePoolIndex(), 0) << displayName(mode) << " " << opacity;
      EXPECT_EQ(poolSize(), 0U);
      EXPECT_EQ(compositePixel(), 0xFFFFFFFFU);
    }
  }
}

TEST_F(DocumentCompositorTest, SiblingFoldersHaveTheirOwnTemporaries) {
  isolate(*folder);
  addIsolatedFolder("G", "M");
  composite();
  ASSERT_EQ(compositor.texturePoolIndex(), 2);
  const std::vector<ConstTexture> first = compositor.texturePool();
  EXPECT_NE(first[0], first[1]);
  put(document->needsCompositing, true);
  composite();
  EXPECT_EQ(compositor.texturePoolIndex(), 2);
  EXPECT_EQ(compositor.texturePool(), first);
}

TEST_F(DocumentCompositorTest, NestedFoldersHaveTheirOwnTemporaries) {
  isolate(*folder);
  const std::shared_ptr<LayerFolder> inner = addIsolatedFolder("G", "M");
  document->moveNode(inner->id, folder->id);
  composite();
  EXPECT_EQ(compositor.texturePoolIndex(), 2);
  EXPECT_EQ(poolSize(), 2U);
}

TEST_F(DocumentCompositorTest, TemporariesHaveTheFormatOfTheComposite) {
  for (const ColorMode mode : allColorModes) {
    const DocumentPtr other = makeDocument(20, 10, mode);
    other->addFolder("F");
    other->addLayer("L");
    put(nodeNamed(*other, "F").opacity(), 0.5F);
    DocumentCompositor own(other->context());
    own.compositeDocument(*other, writable(other->compositedTexture.value()));
    ASSERT_EQ(own.texturePool().size(), 1U);
    EXPECT_EQ(own.texturePool().front()->format(), compositePixelFormat(mode));
    EXPECT_EQ(own.texturePool().front()->bounds(), (PixelRect{0, 0, 20, 10}));
  }
}

TEST_F(DocumentCompositorTest, AGreyFolderIsCompositedAsRgb) {
  const DocumentPtr grey = makeDocument(20, 10, ColorMode::grayscale8);
  grey->addFolder("F");
  grey->addLayer("L");
  writable(nodeNamed(*grey, "L").layer()->texture.value()).fill(0xFF00U);
  put(nodeNamed(*grey, "F").opacity(), 0.5F);
  EXPECT_EQ(grey->composite()->pixelAt(0, 0), 0xFF808080U) << "half black over white";

  const DocumentPtr deep = makeDocument(20, 10, ColorMode::grayscale16);
  deep->addFolder("F");
  deep->addLayer("L");
  writable(nodeNamed(*deep, "L").layer()->texture.value()).fill(0xFFFF0000U);
  put(nodeNamed(*deep, "F").opacity(), 0.5F);
  EXPECT_EQ(deep->composite()->pixelAt(0, 0), 0x3C00380038003800U) << "the same at 16 bits";
}

TEST_F(DocumentCompositorTest, ASurfaceThatDoesNotFitStaysInThePool) {
  isolate(*folder);
  composite();
  ASSERT_EQ(poolSize(), 1U);
  const ConstTexture old = compositor.texturePool().front();
  resizeCanvas(50, 20);
  composite();
  ASSERT_EQ(poolSize(), 2U);
  EXPECT_EQ(compositor.texturePool()[0], old);
  EXPECT_EQ(compositor.texturePool()[1]->bounds(), (PixelRect{0, 0, 50, 20}));
  EXPECT_EQ(compositor.texturePoolIndex(), 2);
}

TEST_F(DocumentCompositorTest, ThePoolSettlesAfterAResize) {
  isolate(*folder);
  addIsolatedFolder("G", "M");
  composite();
  resizeCanvas(50, 20);
  composite();
  const std::vector<ConstTexture> settled = compositor.texturePool();
  EXPECT_EQ(settled.size(), 3U) << "the second slot was free for reuse";
  EXPECT_EQ(compositor.texturePoolIndex(), 3);
  put(layer->opacity, 0.25F);
  composite();
  EXPECT_EQ(compositor.texturePool(), settled);
  EXPECT_EQ(compositor.texturePoolIndex(), 3);
}

TEST_F(DocumentCompositorTest, AnUnchangedTreeMakesNoTiles) {
  isolate(*folder);
  EXPECT_GT(composite().tilesMade, 0);
  EXPECT_EQ(composite().tilesMade, 0);
  EXPECT_GT(composite(CompositeScope::allTiles).tilesMade, 0);
}

TEST_F(DocumentCompositorTest, AnEditRemakesOnlyItsTiles) {
  resizeCanvas(512, 384);
  isolate(*folder);
  EXPECT_EQ(composite().tilesMade, 2 * 12) << "tiles of the canvas and of the folder's temporary";
  const auto pixel = static_cast<std::uint32_t>(opaqueGreen);
  writable(layer->texture.value())
      .writeRect({300, 200, 1, 1}, reinterpret_cast<const std::byte*>(&pixel), sizeof(pixel));
  EXPECT_EQ(composite().tilesMade, 2);
  put(nodeNamed(*document, "Background").opacity(), 0.5F);
  EXPECT_EQ(composite().tilesMade, 12) << "the folder above is unchanged";
}

TEST(DocumentCompositorDeathTest, ATemporaryThatCannotBeMadeIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const DocumentPtr document = makeDocument();
  document->addFolder("F");
  document->addLayer("L");
  put(nodeNamed(*document, "F").opacity(), 0.5F);
  const auto composite = [&] {
    const tileMemory::ScopedSurfaceFailure failure(0);
    static_cast<void>(document->composite());
  };
  EXPECT_DEATH(composite(), "Failed to create temporary texture");
}

}  // namespace
}  // namespace orvanel
