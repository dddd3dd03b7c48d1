#include <gtest/gtest.h>

#include <limits>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"
#include "raster/kernels/DispatchBuilder.h"

namespace orvanel {
namespace {

using reference::context;
using reference::Image;

/// The rectangle of the pixels that qualify, by looking at all of them.
std::optional<PixelRect> boundsWhere(const Image& image,
                                     const std::function<bool(const reference::Color&)>& qualifies) {
  int left = image.width;
  int top = image.height;
  int right = -1;
  int bottom = -1;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      if (!qualifies(image.at(x, y))) continue;
      left = std::min(left, x);
      right = std::max(right, x);
      top = std::min(top, y);
      bottom = std::max(bottom, y);
    }
  }
  if (right < 0) return std::nullopt;
  return PixelRect{left, top, right - left + 1, bottom - top + 1};
}

Surface surfaceOf(PixelFormat format, int width, int height, std::uint64_t pixel) {
  Surface surface(format, width, height);
  surface.fill(pixel);
  return surface;
}

void setPixel(Surface& surface, int x, int y, std::uint64_t pixel) {
  surface.writeRect({x, y, 1, 1}, reinterpret_cast<const std::byte*>(&pixel), 8);
}

TEST(SelectionBounds, AnEmptyMaskHasNone) {
  EXPECT_EQ(context().selectionBounds(Surface(PixelFormat::r16Float, 1, 1)), std::nullopt);
  EXPECT_EQ(context().selectionBounds(Surface(PixelFormat::r16Float, 300, 257)), std::nullopt);
}

TEST(SelectionBounds, ASinglePixelIsItsOwnRectangle) {
  Surface mask(PixelFormat::r16Float, 300, 257);
  setPixel(mask, 3, 4, 0x0001);
  EXPECT_EQ(context().selectionBounds(mask), (PixelRect{3, 4, 1, 1}));
}

TEST(SelectionBounds, AFullSelectionIsTheWholeTexture) {
  for (const auto& [width, height] : reference::sizes) {
    EXPECT_EQ(context().selectionBounds(surfaceOf(PixelFormat::r16Float, width, height, 0x3C00)),
              (PixelRect{0, 0, width, height}));
  }
}

TEST(SelectionBounds, FindsScatteredPixelsWhereverTheyLie) {
  forEveryInstructionSet([] {
    std::mt19937 random(41);
    for (int round = 0; round < 60; ++round) {
      const auto& [width, height] = reference::sizes[random() % reference::sizes.size()];
      Surface mask(PixelFormat::r16Float, width, height);
      for (unsigned count = random() % 5; count > 0; --count) {
        setPixel(mask, static_cast<int>(random() % static_cast<unsigned>(width)),
                 static_cast<int>(random() % static_cast<unsigned>(height)), floatToHalf(0.01F));
      }
      EXPECT_EQ(context().selectionBounds(mask),
                boundsWhere(reference::imageOf(mask), [](const reference::Color& c) { return c[0] > 0.0; }));
    }
  });
}

TEST(SelectionBounds, TilePaddingBeyondTheEdgeIsIgnored) {
  Surface mask(PixelFormat::r16Float, 100, 50);
  std::byte* bytes = mask.editTile(0);
  auto* halves = reinterpret_cast<std::uint16_t*>(bytes);
  std::fill_n(halves, tilePixels, std::uint16_t{0x3C00});
  for (int y = 0; y < 50; ++y) std::fill_n(halves + y * tileSide, 100, std::uint16_t{0});
  EXPECT_EQ(context().selectionBounds(mask), std::nullopt);
  halves[7 * tileSide + 99] = 0x3C00;
  EXPECT_EQ(context().selectionBounds(mask), (PixelRect{99, 7, 1, 1}));
}

TEST(SelectionBounds, NegativeValuesAndNaNAreNotSelected) {
  Surface mask = reference::maskOf(130, 3, [](int x, int y) {
    return x == 5 && y == 1 ? std::numeric_limits<float>::quiet_NaN() : x == 6 ? -1.0F : -0.0F;
  });
  mask.setTrait(0, TileTrait::irregular);
  mask.setTrait(1, TileTrait::irregular);
  EXPECT_EQ(context().selectionBounds(mask), std::nullopt);
}

TEST(LayerContentBounds, IsWhereAlphaIsAboveZeroInEveryFormat) {
  forEveryInstructionSet([] {
    std::mt19937 random(42);
    for (const PixelFormat format : reference::layerFormats) {
      for (int round = 0; round < 20; ++round) {
        const auto& [width, height] = reference::sizes[random() % reference::sizes.size()];
        Surface layer(format, width, height);
        for (unsigned count = random() % 6; count > 0; --count) {
          setPixel(layer, static_cast<int>(random() % static_cast<unsigned>(width)),
                   static_cast<int>(random() % static_cast<unsigned>(height)), randomPixel(format, random));
        }
        EXPECT_EQ(
            context().layerContentBounds(layer, reference::modeOf(format), false),
            boundsWhere(reference::imageOf(layer), [](const reference::Color& c) { return c[3] > 0.0; }));
      }
    }
  });
}

TEST(LayerContentBounds, OfAMaskIsWhereItIsAboveZero) {
  Surface mask(PixelFormat::r16Float, 200, 200);
  setPixel(mask, 150, 20, 0x3C00);
  EXPECT_EQ(context().layerContentBounds(mask, ColorMode::rgb16, true), (PixelRect{150, 20, 1, 1}));
}

/// A canvas of one colour with its edges in others: top, bottom, left, right. Corners belong to the
/// columns.
Surface framed(PixelFormat format, int side, std::uint64_t middle,
               const std::array<std::uint64_t, 4>& edges) {
  Surface surface = surfaceOf(format, side, side, middle);
  for (int i = 0; i < side; ++i) {
    setPixel(surface, i, 0, edges[0]);
    setPixel(surface, i, side - 1, edges[1]);
  }
  for (int i = 0; i < side; ++i) {
    setPixel(surface, 0, i, edges[2]);
    setPixel(surface, side - 1, i, edges[3]);
  }
  return surface;
}

constexpr std::uint64_t white = 0xFFFFFFFFU;
constexpr std::uint64_t black = 0xFF000000U;
constexpr std::uint64_t red = 0xFF0000FFU;

TEST(TrimBounds, AUniformCanvasHasNone) {
  for (const auto& [width, height] : reference::sizes) {
    EXPECT_EQ(context().trimBounds(surfaceOf(PixelFormat::rgba8Unorm, width, height, white)), std::nullopt);
  }
}

TEST(TrimBounds, ContainsEverythingThatDiffersFromTheBorder) {
  for (const PixelFormat format : {PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    const std::uint64_t border = format == PixelFormat::rgba8Unorm ? white : 0x3C003C003C003C00U;
    Surface canvas = surfaceOf(format, 300, 257, border);
    setPixel(canvas, 20, 30, 0);
    setPixel(canvas, 280, 200, 0);
    EXPECT_EQ(context().trimBounds(canvas), (PixelRect{20, 30, 261, 171}));
  }
}

TEST(TrimBounds, IgnoresTheTilesBeyondTheEdge) {
  Surface canvas = surfaceOf(PixelFormat::rgba8Unorm, 100, 100, white);
  auto* pixels = reinterpret_cast<std::uint32_t*>(canvas.editTile(0));
  std::fill_n(pixels, tilePixels, 0U);
  for (int y = 0; y < 100; ++y) std::fill_n(pixels + y * tileSide, 100, 0xFFFFFFFFU);
  EXPECT_EQ(context().trimBounds(canvas), std::nullopt);
}

TEST(TrimBounds, TwoEvenColumnsAreTrimmedBetweenUnevenRows) {
  const Surface canvas = framed(PixelFormat::rgba8Unorm, 12, red, {black, black, white, white});
  EXPECT_EQ(context().trimBounds(canvas), (PixelRect{1, 0, 10, 12}));
}

TEST(TrimBounds, EvenEdgesOfTwoColoursTie) {
  // The rows end in both colours, so only the columns are even: one white, one black.
  const Surface canvas = framed(PixelFormat::rgba8Unorm, 12, red, {white, white, white, black});
  EXPECT_EQ(context().trimBounds(canvas), std::nullopt);
  Surface row = surfaceOf(PixelFormat::rgba8Unorm, 9, 1, white);
  setPixel(row, 8, 0, black);
  EXPECT_EQ(context().trimBounds(row), std::nullopt);
}

TEST(TrimBounds, TheColourOfMostEvenEdgesWins) {
  // Top, left and right are white, the bottom is noisy.
  Surface canvas = framed(PixelFormat::rgba8Unorm, 12, red, {white, white, white, white});
  for (int x = 1; x < 11; x += 2) setPixel(canvas, x, 11, black);
  EXPECT_EQ(context().trimBounds(canvas), (PixelRect{1, 1, 10, 11}));
}

TEST(TrimBounds, NoEvenEdgeMeansNone) {
  std::mt19937 random(43);
  Surface canvas(PixelFormat::rgba8Unorm, 50, 50);
  fillRandomTile(canvas, 0, random);
  EXPECT_EQ(context().trimBounds(canvas), std::nullopt);
}

TEST(TrimBounds, AFaintDifferenceWithinTheToleranceDoesNotCount) {
  Surface canvas = surfaceOf(PixelFormat::rgba16Float, 40, 40, 0x3C00380038003800U);
  setPixel(canvas, 0, 5, 0x3C00380038003801U);
  setPixel(canvas, 10, 5, 0x3C00380038003801U);
  EXPECT_EQ(context().trimBounds(canvas), std::nullopt);
  setPixel(canvas, 10, 5, 0x3C00380038003804U);
  EXPECT_EQ(context().trimBounds(canvas), (PixelRect{10, 5, 1, 1}));
}

bool isAlike(const reference::Color& a, const reference::Color& b) {
  double distance = 0.0;
  for (std::size_t c = 0; c < 4; ++c) distance = std::max(distance, std::abs(a[c] - b[c]));
  return distance <= 0.001;
}

/// An image of one colour, with `odd` pixels of others strewn over it.
Surface strewn(PixelFormat format, int width, int height, unsigned odd, std::mt19937& random) {
  Surface surface = surfaceOf(format, width, height, randomPixel(format, random));
  for (; odd > 0; --odd) {
    setPixel(surface, static_cast<int>(random() % static_cast<unsigned>(width)),
             static_cast<int>(random() % static_cast<unsigned>(height)), randomPixel(format, random));
  }
  return surface;
}

struct EdgeFlags {
  std::array<std::uint32_t, 4> isUneven{};
  std::array<Color4, 4> colors{};
};

EdgeFlags edgesOf(const Surface& surface) {
  EdgeFlags edges;
  context().checkEdgeUniformityPipeline.function(
      DispatchBuilder()
          .read(0, surface)
          .buffer(0, std::as_writable_bytes(std::span(edges.isUneven)))
          .buffer(1, std::as_writable_bytes(std::span(edges.colors)))
          .dispatch());
  return edges;
}

void expectEdges(const Surface& surface) {
  const EdgeFlags edges = edgesOf(surface);
  const Image image = reference::imageOf(surface);
  const int right = image.width - 1;
  const int bottom = image.height - 1;
  const std::array<PixelRect, 4> strips{PixelRect{0, 0, image.width, 1}, PixelRect{0, bottom, image.width, 1},
                                        PixelRect{0, 0, 1, image.height},
                                        PixelRect{right, 0, 1, image.height}};
  for (std::size_t edge = 0; edge < 4; ++edge) {
    const PixelRect& strip = strips[edge];
    const reference::Color& first = image.at(strip.x, strip.y);
    bool isUneven = false;
    for (int i = 0; i < std::max(strip.width, strip.height); ++i) {
      isUneven |= !isAlike(
          image.at(strip.x + std::min(i, strip.width - 1), strip.y + std::min(i, strip.height - 1)), first);
    }
    EXPECT_EQ(edges.isUneven[edge] != 0, isUneven) << "edge " << edge;
    for (std::size_t c = 0; c < 4; ++c)
      EXPECT_NEAR(static_cast<double>(edges.colors[edge][c]), first[c], 1e-6);
  }
}

TEST(CheckEdgeUniformity, ReportsTheFirstColourOfEachEdgeAndWhetherTheEdgeIsUniform) {
  forEveryInstructionSet([] {
    std::mt19937 random(44);
    for (const PixelFormat format : reference::layerFormats) {
      for (const auto& [width, height] : reference::sizes) {
        SCOPED_TRACE(testing::Message()
                     << "format " << static_cast<int>(format) << ", " << width << " x " << height);
        expectEdges(randomSurface(format, width, height, random));
        for (int round = 0; round < 12; ++round) {
          Surface surface = strewn(format, width, height, 0, random);
          // One pixel somewhere along one of the edges, its ends among them.
          const int x =
              round % 3 == 0 ? width - 1 : static_cast<int>(random() % static_cast<unsigned>(width));
          const int y =
              round % 2 == 0 ? height - 1 : static_cast<int>(random() % static_cast<unsigned>(height));
          setPixel(surface, round % 4 == 1 ? 0 : x, round % 4 == 2 ? 0 : y, randomPixel(format, random));
          expectEdges(surface);
        }
      }
    }
  });
}

TEST(TrimBoundingRect, HoldsEveryPixelThatDiffersFromTheColour) {
  forEveryInstructionSet([] {
    std::mt19937 random(45);
    for (const PixelFormat format : reference::layerFormats) {
      for (const auto& [width, height] : reference::sizes) {
        SCOPED_TRACE(testing::Message()
                     << "format " << static_cast<int>(format) << ", " << width << " x " << height);
        for (int round = 0; round < 12; ++round) {
          const Surface surface = round == 0 ? randomSurface(format, width, height, random)
                                             : strewn(format, width, height, random() % 5, random);
          const Image image = reference::imageOf(surface);
          const reference::Color& first = image.at(0, 0);
          const Color4 color{static_cast<float>(first[0]), static_cast<float>(first[1]),
                             static_cast<float>(first[2]), static_cast<float>(first[3])};
          BoundsRecord bounds;
          context().trimBoundingRectPipeline.function(
              DispatchBuilder()
                  .read(0, surface)
                  .buffer(0, std::as_writable_bytes(std::span(&bounds, 1)))
                  .bytes(1, color)
                  .dispatch());
          const auto expected =
              boundsWhere(image, [&](const reference::Color& pixel) { return !isAlike(pixel, first); });
          ASSERT_EQ(bounds.minX < static_cast<std::uint32_t>(width), expected.has_value());
          if (!expected) continue;
          EXPECT_EQ(bounds.minX, static_cast<std::uint32_t>(expected->x));
          EXPECT_EQ(bounds.minY, static_cast<std::uint32_t>(expected->y));
          EXPECT_EQ(bounds.maxX, static_cast<std::uint32_t>(expected->x + expected->width - 1));
          EXPECT_EQ(bounds.maxY, static_cast<std::uint32_t>(expected->y + expected->height - 1));
        }
      }
    }
  });
}

}  // namespace
}  // namespace orvanel
