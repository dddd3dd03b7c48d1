#include <gtest/gtest.h>

#include <limits>

#include "raster/HalfFloat.h"
#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"

namespace orvanel {
namespace {

using reference::Color;
using reference::context;
using reference::Image;

Color premultiplied(const Color& color, PixelFormat format) {
  if (format == PixelFormat::r16Float) return color;
  return {color[0] * color[3], color[1] * color[3], color[2] * color[3], color[3]};
}

Color straight(const Color& color, PixelFormat format) {
  if (format == PixelFormat::r16Float) return color;
  if (color[3] <= reference::halfUnit(format, 0.0)) return {};
  return {color[0] / color[3], color[1] / color[3], color[2] / color[3], color[3]};
}

/// A premultiplied bilinear sample; what `isInside` refuses is transparent.
Color sampled(const Image& source, PixelFormat format, double u, double v,
              const std::function<bool(int, int)>& isInside) {
  const double x = std::floor(u - 0.5);
  const double y = std::floor(v - 0.5);
  const double fx = u - 0.5 - x;
  const double fy = v - 0.5 - y;
  Color sum{};
  for (int j = 0; j < 2; ++j) {
    for (int i = 0; i < 2; ++i) {
      if (std::abs(x) > 1e5 || std::abs(y) > 1e5) continue;
      const int px = static_cast<int>(x) + i;
      const int py = static_cast<int>(y) + j;
      if (!isInside(px, py)) continue;
      const Color pixel = premultiplied(source.outsideEmpty(px, py), format);
      for (std::size_t c = 0; c < 4; ++c)
        sum[c] += pixel[c] * (i == 0 ? 1 - fx : fx) * (j == 0 ? 1 - fy : fy);
    }
  }
  return sum;
}

Image transformed(const Surface& source, const std::array<double, 6>& m, int width, int height) {
  const Image image = reference::imageOf(source);
  Image result(width, height);
  const int across = std::hypot(m[0], m[1]) > 2.0 ? static_cast<int>(std::ceil(std::hypot(m[0], m[1]))) : 1;
  const int down = std::hypot(m[2], m[3]) > 2.0 ? static_cast<int>(std::ceil(std::hypot(m[2], m[3]))) : 1;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      Color sum{};
      for (int j = 0; j < down; ++j) {
        for (int i = 0; i < across; ++i) {
          const double px = x + (i + 0.5) / across;
          const double py = y + (j + 0.5) / down;
          const Color one = sampled(image, source.format(), m[0] * px + m[2] * py + m[4],
                                    m[1] * px + m[3] * py + m[5], [](int, int) { return true; });
          for (std::size_t c = 0; c < 4; ++c) sum[c] += one[c] / (across * down);
        }
      }
      result.at(x, y) = straight(sum, source.format());
    }
  }
  return result;
}

/// Compares premultiplied: where alpha is faint, its rounding moves the colour that is divided by it.
void expectAlike(const Surface& actual, const Image& expected, double slack = 4e-6) {
  const Image image = reference::imageOf(actual);
  const double unit = reference::halfUnit(actual.format(), 1.0) * 2.0 + slack;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const Color a = premultiplied(image.at(x, y), actual.format());
      const Color b = premultiplied(expected.at(x, y), actual.format());
      for (std::size_t c = 0; c < 4; ++c) ASSERT_NEAR(a[c], b[c], unit) << x << ", " << y << " channel " << c;
    }
  }
}

constexpr std::array formats{PixelFormat::r16Float, PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                             PixelFormat::rgba8Unorm, PixelFormat::rgba16Float};

TEST(AffineTransform, SamplesBilinearlyThroughTheInverse) {
  forEveryInstructionSet([&] {
    std::mt19937 random(71);
    for (const PixelFormat format : formats) {
      for (const auto& [width, height] : reference::sizes) {
        const Surface source = randomSurface(format, width, height, random);
        for (const std::array<float, 6> inverse :
             {std::array<float, 6>{0.9F, 0.3F, -0.3F, 0.9F, 12.5F, -4.25F},
              {0.5F, 0, 0, 0.5F, 3, 7},
              {3.0F, 0, 0, 2.5F, -20, 0},
              {-1, 0, 0, 1, static_cast<float>(width), 0},
              {1, 0, 0, 1, 0.5F, 0}}) {
          std::array<double, 6> matrix{};
          for (std::size_t i = 0; i < 6; ++i) matrix[i] = static_cast<double>(inverse[i]);
          Surface destination(format, width, height);
          context().affineTransformLayerPixels(source, destination, inverse, reference::modeOf(format));
          expectAlike(destination, transformed(source, matrix, width, height));
        }
      }
    }
  });
}

TEST(AffineTransform, TheIdentitySharesEveryTile) {
  std::mt19937 random(72);
  const Surface source = randomSurface(PixelFormat::rgba16Float, 300, 257, random);
  Surface destination(PixelFormat::rgba16Float, 300, 257);
  context().affineTransformLayerPixels(source, destination, {1, 0, 0, 1, 0, 0}, ColorMode::rgb16);
  for (int index = 0; index < source.tileCount(); ++index)
    EXPECT_EQ(destination.tile(index).buffer(), source.tile(index).buffer());
}

TEST(AffineTransform, StrongReductionAveragesInsteadOfAliasing) {
  // Thin stripes: one in eight columns is white.
  Surface source(PixelFormat::rgba8Unorm, 1024, 64);
  source.fill(0xFF000000U);
  std::vector<std::uint32_t> column(64, 0xFFFFFFFFU);
  for (int x = 0; x < 1024; x += 8)
    source.writeRect({x, 0, 1, 64}, reinterpret_cast<const std::byte*>(column.data()), 4);
  Surface destination(PixelFormat::rgba8Unorm, 1024, 64);
  context().affineTransformLayerPixels(source, destination, {16, 0, 0, 16, 0, 0}, ColorMode::rgb8);
  for (int x = 1; x < 63; ++x) EXPECT_NEAR(static_cast<double>(destination.pixelAt(x, 2) & 0xFFU), 32.0, 2.0);
  EXPECT_EQ(destination.pixelAt(64, 2), 0U);
}

std::uint64_t stored(const Color& color, PixelFormat format) {
  const auto whole = [](double value, double most) {
    return static_cast<std::uint64_t>(std::lround(value * most));
  };
  const auto half = [](double value) { return std::uint64_t{floatToHalf(static_cast<float>(value))}; };
  switch (format) {
    case PixelFormat::r16Float:
      return half(color[0]);
    case PixelFormat::rg8Unorm:
      return whole(color[0], 255) | whole(color[3], 255) << 8U;
    case PixelFormat::rg16Unorm:
      return whole(color[0], 65535) | whole(color[3], 65535) << 16U;
    case PixelFormat::rgba8Unorm:
      return whole(color[0], 255) | whole(color[1], 255) << 8U | whole(color[2], 255) << 16U |
             whole(color[3], 255) << 24U;
    default:
      return half(color[0]) | half(color[1]) << 16U | half(color[2]) << 32U | half(color[3]) << 48U;
  }
}

/// Waves in both directions with a transparent rim.
Surface wavySurface(PixelFormat format, int width, int height) {
  Surface surface(format, width, height);
  for (int y = 10; y < height - 10; ++y) {
    for (int x = 10; x < width - 10; ++x) {
      const double value = 0.5 + 0.3 * std::sin(x * 0.35) + 0.2 * std::cos(y * 0.5 + x * 0.1);
      const std::uint64_t pixel = stored({value, 1.0 - value, value * value, 0.25 + 0.75 * value}, format);
      surface.writeRect({x, y, 1, 1}, reinterpret_cast<const std::byte*>(&pixel), sizeof(pixel));
    }
  }
  return surface;
}

TEST(AffineTransform, ADiagonalSquashAveragesEachPixelsFootprint) {
  for (const PixelFormat format : {PixelFormat::r16Float, PixelFormat::rg16Unorm, PixelFormat::rgba8Unorm}) {
    const Surface source = wavySurface(format, 150, 140);
    // Squashed to a twentieth along one diagonal; along the other stretched, as it is, and shrunk.
    for (const float other : {0.25F, 1.0F, 3.0F}) {
      const float sum = (20.0F + other) / 2.0F;
      const float difference = (20.0F - other) / 2.0F;
      for (const std::array<float, 6> inverse :
           {std::array<float, 6>{sum, difference, difference, sum, -450.0F, -450.0F},
            {sum, -difference, -difference, sum, 200.0F, -150.0F}}) {
        std::array<double, 6> matrix{};
        for (std::size_t i = 0; i < 6; ++i) matrix[i] = static_cast<double>(inverse[i]);
        const Image expected = transformed(source, matrix, 150, 140);
        forEveryInstructionSet([&] {
          Surface destination(format, 150, 140);
          context().affineTransformLayerPixels(source, destination, inverse, reference::modeOf(format));
          expectAlike(destination, expected, 0.02);
        });
      }
    }
  }
}

TEST(AffineTransform, AUniformLayerKeepsItsColorUnderADiagonalSquash) {
  constexpr std::uint64_t color = 0xFFE6994DU;
  Surface source(PixelFormat::rgba8Unorm, 1000, 1000);
  source.fill(color);
  for (const float nearOne : {0.9F, 0.999F, 0.99999F}) {
    // The way back from a squash onto the diagonal, which keeps the layer's centre in place.
    const float stretch = 1.0F / (1.0F - nearOne * nearOne);
    const float center = 500.5F * (1.0F - stretch + nearOne * stretch);
    Surface destination(PixelFormat::rgba8Unorm, 1000, 1000);
    context().affineTransformLayerPixels(
        source, destination, {stretch, -nearOne * stretch, -nearOne * stretch, stretch, center, center},
        ColorMode::rgb8);
    EXPECT_EQ(destination.pixelAt(500, 500) & 0xFFFFFFU, color & 0xFFFFFFU) << nearOne;
    EXPECT_EQ(destination.pixelAt(100, 900), 0U) << nearOne;
  }
}

TEST(AffineTransform, ExtremeReductionsTerminate) {
  Surface source(PixelFormat::rgba8Unorm, 300, 200);
  source.fill(0xFFFFFFFFU);
  for (const float huge : {1e6F, 1e20F, 3e38F}) {
    for (const std::array<float, 6> inverse : {std::array<float, 6>{huge, huge, huge, -huge, 0, 0},
                                               {huge, huge, -huge, -huge, 10, 10},
                                               {1, huge, 0, 1, 0, 0}}) {
      Surface destination(PixelFormat::rgba8Unorm, 300, 200);
      context().affineTransformLayerPixels(source, destination, inverse, ColorMode::rgb8);
      EXPECT_EQ(destination.pixelAt(250, 150) & 0xFFU, destination.pixelAt(250, 150) >> 24U);
    }
  }
}

TEST(AffineTransform, AWholeLayerCanShrinkToOnePixel) {
  Surface source(PixelFormat::rg8Unorm, 2000, 1500);
  source.fill(0xFF80U);
  const std::uint64_t grey = 0xFF81U;
  source.writeRect({7, 7, 1, 1}, reinterpret_cast<const std::byte*>(&grey), 8);
  Surface destination(PixelFormat::rg8Unorm, 2000, 1500);
  context().affineTransformLayerPixels(source, destination, {2000, 0, 0, 1500, 0, 0}, ColorMode::grayscale8);
  EXPECT_EQ(destination.pixelAt(0, 0), 0xFF80U);
  EXPECT_EQ(context().layerContentBounds(destination, ColorMode::grayscale8, false), (PixelRect{0, 0, 1, 1}));
}

TEST(AffineTransform, AUniformLayerKeepsItsColorUnderAnyReduction) {
  constexpr std::uint64_t color = 0xFFE6994DU;
  for (const auto& [width, height] : {std::pair{2048, 2048}, {8192, 1024}, {16384, 64}, {64, 16384}}) {
    Surface source(PixelFormat::rgba8Unorm, width, height);
    source.fill(color);
    Surface destination(PixelFormat::rgba8Unorm, width, height);
    const auto fullWidth = static_cast<float>(width);
    const auto fullHeight = static_cast<float>(height);
    context().affineTransformLayerPixels(source, destination, {fullWidth, 0, 0, fullHeight, 0, 0},
                                         ColorMode::rgb8);
    EXPECT_EQ(destination.pixelAt(0, 0), color) << width << " x " << height;
    context().scaleLayerRegion(source, destination, {0, 0, fullWidth, fullHeight}, {3, 4, 1, 1},
                               ColorMode::rgb8);
    EXPECT_EQ(destination.pixelAt(3, 4), color) << width << " x " << height;
  }
}

TEST(AffineTransform, ManySamplesGiveTheAverageOfWhatAPixelCovers) {
  std::mt19937 random(79);
  const Surface source = randomSurface(PixelFormat::rgba8Unorm, 100, 80, random);
  Surface fine(PixelFormat::rgba8Unorm, 100, 80);
  Surface turned(PixelFormat::rgba8Unorm, 100, 80);
  // The same average by way of either axis: 20 x 40 source pixels for each.
  context().affineTransformLayerPixels(source, fine, {20, 0, 0, 40, 0, 0}, ColorMode::rgb8);
  context().affineTransformLayerPixels(source, turned, {0, 40, 20, 0, 0, 0}, ColorMode::rgb8);
  for (int x = 0; x < 5; ++x) {
    for (int y = 0; y < 2; ++y) EXPECT_EQ(fine.pixelAt(x, y), turned.pixelAt(y, x)) << x << ", " << y;
  }
}

TEST(AffineTransform, ASpeckOfALayerIsFoundAtOnce) {
  Surface source(PixelFormat::rgba8Unorm, 64, 48);
  source.fill(0xFFFFFFFFU);
  Surface destination(PixelFormat::rgba8Unorm, 300, 300);
  context().affineTransformLayerPixels(source, destination, {10000, 0, 0, 10000, -200000, -200000},
                                       ColorMode::rgb8);
  const auto bounds = context().layerContentBounds(destination, ColorMode::rgb8, false);
  EXPECT_TRUE(!bounds || *bounds == (PixelRect{20, 20, 1, 1}));
}

TEST(AffineTransform, ANonFiniteMatrixGivesAnEmptyLayer) {
  std::mt19937 random(73);
  const Surface source = randomSurface(PixelFormat::rgba8Unorm, 60, 60, random);
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    Surface destination = source;
    context().affineTransformLayerPixels(source, destination, {bad, 0, 0, 1, 0, 0}, ColorMode::rgb8);
    EXPECT_EQ(context().layerContentBounds(destination, ColorMode::rgb8, false), std::nullopt);
  }
  Surface destination = source;
  context().affineTransformLayerPixels(source, destination, {1e30F, 0, 0, 1e30F, 1e30F, 0}, ColorMode::rgb8);
  context().affineTransformLayerPixels(source, destination, {0, 0, 0, 0, 30, 30}, ColorMode::rgb8);
  EXPECT_EQ(destination.pixelAt(3, 50), destination.pixelAt(40, 2));
}

TEST(RotateLayerPixels, TurnsClockwiseOnScreenAboutTheCentre) {
  forEveryInstructionSet([&] {
    std::mt19937 random(74);
    for (const PixelFormat format : formats) {
      const Surface source = randomSurface(format, 200, 150, random);
      Surface destination(format, 200, 150);
      const float angle = 0.4F;
      context().rotateLayerPixels(source, destination, 90.5F, 70.25F, angle, reference::modeOf(format));
      const double cosine = std::cos(static_cast<double>(angle));
      const double sine = std::sin(static_cast<double>(angle));
      expectAlike(destination, transformed(source,
                                           {cosine, -sine, sine, cosine, 90.5 - cosine * 90.5 - sine * 70.25,
                                            70.25 + sine * 90.5 - cosine * 70.25},
                                           200, 150));
    }
  });
}

TEST(RotateLayerPixels, AQuarterTurnMovesPixelsExactly) {
  Surface source(PixelFormat::rgba8Unorm, 40, 40);
  const std::uint64_t pixel = 0xFF102030U;
  source.writeRect({30, 20, 1, 1}, reinterpret_cast<const std::byte*>(&pixel), 8);
  Surface destination(PixelFormat::rgba8Unorm, 40, 40);
  context().rotateLayerPixels(source, destination, 20.0F, 20.0F, 1.57079633F, ColorMode::rgb8);
  EXPECT_EQ(destination.pixelAt(19, 30), pixel);
  EXPECT_EQ(context().layerContentBounds(destination, ColorMode::rgb8, false), (PixelRect{19, 30, 1, 1}));
}

TEST(ScaleLayerRegion, CopiesOneRectangleIntoTheOther) {
  forEveryInstructionSet([&] {
    std::mt19937 random(75);
    for (const PixelFormat format : formats) {
      const Surface source = randomSurface(format, 200, 150, random);
      const Image image = reference::imageOf(source);
      for (const std::array<double, 8> r : {std::array<double, 8>{20, 30, 100, 80, 20, 30, 100, 80},
                                            {20, 30, 100, 80, -30.5, 10.25, 210, 130.5},
                                            {0, 0, 200, 150, 40.3, 50, 70, 40.6}}) {
        std::array<float, 4> from{};
        std::array<float, 4> to{};
        for (std::size_t i = 0; i < 4; ++i) {
          from[i] = static_cast<float>(r[i]);
          to[i] = static_cast<float>(r[i + 4]);
        }
        Surface destination = randomSurface(format, 200, 150, random);
        context().scaleLayerRegion(source, destination, from, to, reference::modeOf(format));
        Image expected(200, 150);
        const double stepX = r[2] / r[6];
        const double stepY = r[3] / r[7];
        const int across = stepX > 2.0 ? static_cast<int>(std::ceil(stepX)) : 1;
        const int down = stepY > 2.0 ? static_cast<int>(std::ceil(stepY)) : 1;
        for (int y = 0; y < 150; ++y) {
          for (int x = 0; x < 200; ++x) {
            const bool isWithin =
                x + 0.5 >= r[4] && x + 0.5 < r[4] + r[6] && y + 0.5 >= r[5] && y + 0.5 < r[5] + r[7];
            if (!isWithin) continue;
            Color sum{};
            for (int j = 0; j < down; ++j) {
              for (int i = 0; i < across; ++i) {
                const Color one =
                    sampled(image, format, r[0] + (x + (i + 0.5) / across - r[4]) * stepX,
                            r[1] + (y + (j + 0.5) / down - r[5]) * stepY, [&](int px, int py) {
                              return px >= r[0] && py >= r[1] && px < r[0] + r[2] && py < r[1] + r[3];
                            });
                for (std::size_t c = 0; c < 4; ++c) sum[c] += one[c] / (across * down);
              }
            }
            expected.at(x, y) = straight(sum, format);
          }
        }
        expectAlike(destination, expected);
      }
    }
  });
}

TEST(ScaleLayerRegion, OnlyTilesUnderTheNewRectangleHoldPixels) {
  std::mt19937 random(76);
  Surface source(PixelFormat::rgba16Float, 1000, 1000);
  fillRandomTile(source, 0, random);
  Surface destination(PixelFormat::rgba16Float, 1000, 1000);
  context().scaleLayerRegion(source, destination, {0, 0, 128, 128}, {600, 600, 100, 100}, ColorMode::rgb16);
  for (int index = 0; index < destination.tileCount(); ++index) {
    const PixelRect part = destination.tileRect(index).intersected({600, 600, 100, 100});
    EXPECT_EQ(destination.tile(index) == Tile::uniform(0), part.isEmpty());
  }
}

}  // namespace
}  // namespace orvanel
