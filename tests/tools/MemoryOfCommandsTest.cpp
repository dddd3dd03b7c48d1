// Edits ask for memory before they begin. One that is carried out never takes
// more than it asked for: running out of memory would end the program.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "model/ModelSupport.h"
#include "raster/HalfFloat.h"
#include "raster/MemoryBudget.h"
#include "raster/TileMemory.h"
#include "tools/RandomCommands.h"
#include "undo/TextureSnapshot.h"

namespace orvanel {
namespace {

using namespace test;

/// Of a layer's format: the alpha of an opaque pixel, where it lies in a pixel,
/// and its size.
struct OpaqueAlpha {
  std::uint16_t value;
  std::size_t offset;
  std::size_t size;
};

OpaqueAlpha opaqueAlphaOf(PixelFormat format) {
  switch (format) {
    case PixelFormat::rg8Unorm:
      return {0xFF, 1, 1};
    case PixelFormat::rg16Unorm:
      return {0xFFFF, 2, 2};
    case PixelFormat::rgba8Unorm:
      return {0xFF, 3, 1};
    default:
      return {halfOne, 6, 2};
  }
}

/// As a photo's tiles are, which the flattened image shares.
void makeOpaque(Surface& surface, int index) {
  const OpaqueAlpha alpha = opaqueAlphaOf(surface.format());
  const auto step = static_cast<std::size_t>(surface.pixelBytes());
  std::byte* const bytes = surface.editTile(index);
  for (std::size_t i = 0; i < tilePixels; ++i) {
    std::memcpy(bytes + i * step + alpha.offset, &alpha.value, alpha.size);
  }
  surface.setTrait(index, TileTrait::opaque);
}

struct Plan {
  unsigned seed;
  ColorMode mode;
};

class MemoryOfCommands : public testing::TestWithParam<Plan> {
 protected:
  void makeAnyLayerOpaque() {
    const auto layers = document->allLayers();
    if (layers.empty()) return;
    const Layer& layer = *layers[static_cast<std::size_t>(commands.below(static_cast<int>(layers.size())))];
    Surface& pixels = writable(layer.texture.value());
    for (int index = 0; index < pixels.tileCount(); ++index) {
      if (!pixels.tile(index).isUniform() && commands.below(4) != 0) makeOpaque(pixels, index);
    }
    put(document->needsCompositing, true);
  }

  /// Without a limit: the history keeps raw tiles of its own, for which nobody asks.
  void stepSometimes() {
    if (commands.below(4) == 0) document->undo();
    if (commands.below(8) == 0) document->redo();
  }

  DocumentPtr document =
      Document::create(QStringLiteral("Random"), 420, 300, GetParam().mode, MetalContext::shared());
  RandomCommands commands{document, GetParam().seed};
};

TEST_P(MemoryOfCommands, StaysWithinWhatThereIs) {
  constexpr int steps = 1500;
  constexpr std::uint64_t smallestTile = std::uint64_t{tilePixels} * 2;
  commands.onStep = [&] { static_cast<void>(document->composite()); };
  int refused = 0;
  int carriedOut = 0;
  for (int step = 0; step < steps && !HasFailure(); ++step) {
    if (commands.below(5) == 0) makeAnyLayerOpaque();
    stepSometimes();
    static_cast<void>(document->composite());
    TextureSnapshot::waitForCompression();
    const ChangeRecorder changes(*document);
    const std::uint64_t before = tileMemory::bytesInUse();
    const std::uint64_t room = static_cast<std::uint64_t>(commands.below(60)) * smallestTile;
    std::string name;
    {
      const ScopedMemoryLimit limit(room);
      name = commands.runOne();
      static_cast<void>(document->composite());
    }
    ++(changes.count<change::EditRefused>() > 0 ? refused : carriedOut);
    const std::uint64_t now = tileMemory::bytesInUse();
    EXPECT_LE(now, before + room) << name << ", step " << step << ": " << (now - before) / smallestTile
                                  << " instead of " << room / smallestTile;
  }
  EXPECT_GT(refused, steps / 60);
  EXPECT_GT(carriedOut, steps / 3);
}

INSTANTIATE_TEST_SUITE_P(Seeds, MemoryOfCommands,
                         testing::Values(Plan{1, ColorMode::rgb8}, Plan{2, ColorMode::rgb16},
                                         Plan{3, ColorMode::grayscale8}, Plan{4, ColorMode::grayscale16},
                                         Plan{5, ColorMode::rgb8}),
                         [](const auto& tested) { return "seed" + std::to_string(tested.param.seed); });

}  // namespace
}  // namespace orvanel
