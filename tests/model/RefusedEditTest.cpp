// Edits refused for lack of memory: they don't begin, report the refusal, and leave everything unchanged.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "model/LevelsAdjustment.h"
#include "model/OpenOpacityEdit.h"
#include "model/PixelSupport.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using namespace test;

struct Command {
  std::string name;
  std::function<void(Document&)> run;
};

const std::vector<Command> commands{
    {"invert", [](Document& d) { d.invertActive(); }},
    {"fillUnderASelection", [](Document& d) { d.fillSelection(DisplayColor::black()); }},
    {"imageSize", [](Document& d) { d.resizeImage(300, 260, ResampleMethod::bicubic); }},
    {"canvasSize", [](Document& d) { d.resizeCanvas(300, 260, 0, 0); }},
    {"crop",
     [](Document& d) {
       d.crop({1, 2, 90, 80}, QStringLiteral("Crop"));
     }},
    {"colorMode", [](Document& d) { d.changeColorMode(ColorMode::rgb8); }},
    {"applyMask", [](Document& d) { d.applyLayerMask(d.activeLayer()); }},
    {"copy", [](Document& d) { EXPECT_FALSE(d.copyPixels()); }},
    {"selectTransparency", [](Document& d) { d.selectLayerTransparency(*d.activeLayer()); }},
    {"selectChannel", [](Document& d) { d.selectChannel(0); }},
    {"invertSelection", [](Document& d) { d.invertSelection(); }},
    {"undo", [](Document& d) { d.undo(); }},
    {"levels", [](Document& d) { EXPECT_FALSE(LevelsAdjustment::begin(d.shared_from_this()).has_value()); }},
};

class RefusedEditTest : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override {
    addRandomMask(*document->activeLayer(), random);
    document->invertActive();
    selectRandomly(*document, random);
    static_cast<void>(document->composite());
  }

  std::mt19937 random{3};
  DocumentPtr document = makeRandomDocument(ColorMode::rgb16, random);
};

TEST_P(RefusedEditTest, LeavesEverythingUnchangedAndReportsTheRefusal) {
  TextureSnapshot::waitForCompression();
  const PixelState before = pixelState(*document);
  const SelectionState selectionBefore = selectionState(*document);
  const std::int64_t records = recordCount(*document);
  const ChangeRecorder changes(*document);
  EXPECT_FALSE(marksEdited(*document, [&] {
    const ScopedMemoryLimit limit(0);
    commands[GetParam()].run(*document);
  }));
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  EXPECT_EQ(difference(pixelState(*document), before), "");
  EXPECT_EQ(difference(selectionState(*document), selectionBefore), "");
  EXPECT_EQ(recordCount(*document), records);
}

INSTANTIATE_TEST_SUITE_P(Commands, RefusedEditTest, testing::Range<std::size_t>(0, commands.size()),
                         [](const auto& tested) { return commands[tested.param].name; });

TEST(RefusedEdits, ARefusedPasteLeavesNoLayer) {
  std::mt19937 random{4};
  const DocumentPtr document = makeRandomDocument(ColorMode::rgb8, random);
  selectRandomly(*document, random);
  const std::optional<PixelClipboard> copied = document->copyPixels();
  ASSERT_TRUE(copied.has_value());
  const int layers = document->layerCount();
  const ScopedMemoryLimit limit(0);
  document->pastePixels(*copied);
  EXPECT_EQ(document->layerCount(), layers);
}

class RefusedSteps : public testing::Test {
 protected:
  static constexpr int side = 4 * tileSide;
  static constexpr std::uint64_t tileBytes = std::uint64_t{tilePixels} * 4;

  /// A layer that is data everywhere, flattened, with one tile inverted.
  void SetUp() override {
    writable(document->activeLayer()->texture.value()) = randomSurface(side);
    document->selectAll();
    Selection& selected = writableSelection(*document);
    selected.setRect({0, 0, tileSide, tileSide}, 0.0F, document->context());
    static_cast<void>(document->composite());
    document->invertActive();
    static_cast<void>(document->composite());
    TextureSnapshot::waitForCompression();
  }

  [[nodiscard]] static Surface randomSurface(int size) {
    Surface surface(PixelFormat::rgba8Unorm, size, size);
    for (int index = 0; index < surface.tileCount(); ++index) {
      std::byte* out = surface.editTile(index);
      for (std::uint64_t i = 0; i < tileBytes; ++i) out[i] = static_cast<std::byte>((i * 31 + i / 4) | 0x0FU);
    }
    return surface;
  }

  DocumentPtr document = makeDocument(side, side);
};

TEST_F(RefusedSteps, AStepNeedsMemoryOnlyForTheTilesItChanges) {
  const ChangeRecorder changes(*document);
  {
    const ScopedMemoryLimit limit(tileBytes - 1);
    document->undo();
  }
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  {
    const ScopedMemoryLimit limit(2 * tileBytes);
    document->undo();
    document->redo();
  }
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  EXPECT_EQ(document->undoStack.currentIndex.value(), recordCount(*document) - 1);
}

TEST_F(RefusedSteps, ANewIsolatingFolderNeedsMemoryForItsImage) {
  document->addFolder("F");
  const QUuid folder = *document->selectedNodeID.value();
  const QUuid layer = document->rootNodes.value().front().id();
  document->moveNode(layer, folder);
  static_cast<void>(document->composite());
  const ChangeRecorder changes(*document);
  const ScopedMemoryLimit limit(15 * tileBytes);
  document->setOpacity(layer, 0.5F);
  EXPECT_EQ(changes.count<change::EditRefused>(), 0U);
  document->setOpacity(folder, 0.5F);
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  document->setBlendMode(folder, BlendMode::multiply);
  EXPECT_EQ(changes.count<change::EditRefused>(), 2U);
  EXPECT_NE(OpenOpacityEdit::begin(document, layer), nullptr);
  EXPECT_EQ(OpenOpacityEdit::begin(document, folder), nullptr);
  EXPECT_EQ(changes.count<change::EditRefused>(), 3U);
}

TEST_F(RefusedSteps, LevelsNeedMemoryForWhatTheSelectionCoversWhenTheyAreApplied) {
  std::optional<LevelsAdjustment> levels = LevelsAdjustment::begin(document);
  ASSERT_TRUE(levels.has_value());
  const ChangeRecorder changes(*document);
  const ScopedMemoryLimit limit(16 * tileBytes - 1);
  levels->apply({.blackPoint = 20.0F});
  document->settle();
  const Surface shown = pixelsOf(*document->activeLayer());
  document->selectAll();
  levels->apply({.blackPoint = 90.0F});
  levels->apply({.blackPoint = 95.0F});
  document->settle();
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U) << "told once";
  EXPECT_TRUE(pixelsOf(*document->activeLayer()).equals(shown));
  document->undo();
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
}

TEST_F(RefusedSteps, ANodeMovedIntoAnIsolatingFolderNeedsMemoryForTheFoldersImage) {
  const QUuid layer = document->rootNodes.value().front().id();
  document->addFolder("F");
  const QUuid folder = *document->selectedNodeID.value();
  document->setOpacity(folder, 0.5F);
  static_cast<void>(document->composite());
  const ChangeRecorder changes(*document);
  {
    const ScopedMemoryLimit limit(16 * tileBytes - 1);
    document->moveNode(layer, folder);
    document->moveNode(layer, folder, 0);
    document->placeNode(layer, folder, 0);
    EXPECT_EQ(changes.count<change::EditRefused>(), 3U);
    EXPECT_EQ(treeText(*document), "Background, F[]");
  }
  const ScopedMemoryLimit limit(16 * tileBytes);
  document->moveNode(layer, folder);
  document->undo();
  document->redo();
  EXPECT_EQ(changes.count<change::EditRefused>(), 3U);
  EXPECT_EQ(treeText(*document), "F[Background]");
  document->undo();
  const ScopedMemoryLimit less(16 * tileBytes - 1);
  document->redo();
  EXPECT_EQ(changes.count<change::EditRefused>(), 4U);
  EXPECT_EQ(treeText(*document), "Background, F[]");
}

TEST_F(RefusedSteps, ACopyOfAnIsolatingFolderNeedsMemoryForAnImageOfItsOwn) {
  const QUuid layer = document->rootNodes.value().front().id();
  document->addFolder("F");
  const QUuid folder = *document->selectedNodeID.value();
  document->setOpacity(folder, 0.5F);
  document->moveNode(layer, folder);
  static_cast<void>(document->composite());
  const ChangeRecorder changes(*document);
  {
    const ScopedMemoryLimit limit(16 * tileBytes - 1);
    document->duplicateNode(folder);
    EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
    EXPECT_EQ(document->layerCount(), 1);
  }
  document->duplicateNode(folder);
  document->undo();
  const ScopedMemoryLimit limit(16 * tileBytes - 1);
  document->redo();
  EXPECT_EQ(changes.count<change::EditRefused>(), 2U);
  EXPECT_EQ(document->layerCount(), 1);
}

TEST_F(RefusedSteps, AStepThatIsolatesAFolderNeedsMemoryForItsImage) {
  const QUuid layer = document->rootNodes.value().front().id();
  document->addFolder("F");
  const QUuid folder = *document->selectedNodeID.value();
  document->moveNode(layer, folder);
  static_cast<void>(document->composite());
  const ChangeRecorder changes(*document);
  const auto isRefused = [&] {
    const std::size_t before = changes.count<change::EditRefused>();
    document->undo();
    const ScopedMemoryLimit limit(16 * tileBytes - 1);
    document->redo();
    return changes.count<change::EditRefused>() == before + 1;
  };
  document->setOpacity(folder, 0.5F);
  EXPECT_TRUE(isRefused());
  document->setBlendMode(folder, BlendMode::multiply);
  EXPECT_TRUE(isRefused());
}

/// The layer is opaque, so that the flattened image shares its tiles.
class RefusedStepsOnAnOpaqueLayer : public RefusedSteps {
 protected:
  void SetUp() override {
    Surface& pixels = writable(document->activeLayer()->texture.value());
    pixels = randomSurface(side);
    for (int index = 0; index < pixels.tileCount(); ++index) {
      std::byte* const bytes = pixels.editTile(index);
      for (std::uint64_t i = 3; i < tileBytes; i += 4) bytes[i] = std::byte{255};
      pixels.setTrait(index, TileTrait::opaque);
    }
    ASSERT_EQ(document->composite()->tile(0), pixels.tile(0));
  }

  /// How many refusals `edit` has with this memory.
  [[nodiscard]] std::size_t refusals(std::uint64_t bytes, const std::function<void()>& edit) const {
    const ChangeRecorder changes(*document);
    const ScopedMemoryLimit limit(bytes);
    edit();
    return changes.count<change::EditRefused>();
  }
};

TEST_F(RefusedStepsOnAnOpaqueLayer, AnImageThatSharesTilesWithALayerCannotBeWrittenInPlace) {
  const auto fade = [this] { document->setOpacity(document->activeLayer()->id, 0.5F); };
  EXPECT_EQ(refusals(16 * tileBytes - 1, fade), 1U);
  EXPECT_EQ(document->activeLayer()->opacity.value(), 1.0F);
  EXPECT_EQ(refusals(16 * tileBytes, fade), 0U);
  static_cast<void>(document->composite());
  EXPECT_EQ(refusals(0, [this] { document->setOpacity(document->activeLayer()->id, 0.25F); }), 0U);
}

TEST_F(RefusedStepsOnAnOpaqueLayer, AnEditOfSomeTilesNeedsMemoryForThemAlone) {
  selectRect(*document, {0, 0, tileSide, tileSide});
  EXPECT_EQ(refusals(2 * tileBytes - 1, [this] { document->invertActive(); }), 1U);
  EXPECT_EQ(refusals(2 * tileBytes, [this] { document->invertActive(); }), 0U);
  selectRect(*document, {tileSide, 0, tileSide, tileSide});
  writable(document->activeLayer()->texture.value()).setTrait(0, TileTrait::none);
  EXPECT_EQ(refusals(3 * tileBytes - 1, [this] { document->invertActive(); }), 1U)
      << "the tile of the edit before isn't flattened yet";
  EXPECT_EQ(refusals(3 * tileBytes, [this] { document->invertActive(); }), 0U);
}

TEST_F(RefusedStepsOnAnOpaqueLayer, AnImageThatASaveHoldsCannotBeWrittenInPlace) {
  document->setOpacity(document->activeLayer()->id, 0.5F);
  static_cast<void>(document->composite());
  auto saved = document->freezeComposite();
  const auto fade = [this] { document->setOpacity(document->activeLayer()->id, 0.25F); };
  EXPECT_EQ(refusals(16 * tileBytes - 1, fade), 1U);
  saved.reset();
  EXPECT_EQ(refusals(0, fade), 0U);
}

TEST(RefusedEdits, EditsThatNeedNoMemoryAreNeverRefused) {
  const DocumentPtr document = makeDocument(2000, 1500);
  const ScopedMemoryLimit limit(0);
  const ChangeRecorder changes(*document);
  document->fillSelection(DisplayColor::black());
  document->invertActive();
  document->addLayer("L");
  document->selectAll();
  document->undo();
  document->redo();
  EXPECT_EQ(changes.count<change::EditRefused>(), 0U);
  EXPECT_EQ(recordCount(*document), 4);
}

}  // namespace
}  // namespace orvanel
