#include <gtest/gtest.h>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"

namespace orvanel {
namespace {

using reference::Color;
using reference::context;
using reference::Image;

constexpr auto bicubic = ResampleMethod::bicubic;
constexpr auto bilinear = ResampleMethod::bilinear;
constexpr auto nearest = ResampleMethod::nearestNeighbor;

double weightOf(ResampleMethod method, double x) {
  x = std::abs(x);
  if (method == bilinear) return std::max(0.0, 1.0 - x);
  // Keys' cubic with a = -1/2.
  if (x < 1.0) return 1.5 * x * x * x - 2.5 * x * x + 1.0;
  if (x < 2.0) return -0.5 * x * x * x + 2.5 * x * x - 4.0 * x + 2.0;
  return 0.0;
}

/// One axis: every output as a weighted mean of all inputs within reach, edges standing for what's beyond.
template <typename At>
Color filtered(int i, int sourceSize, int destinationSize, ResampleMethod method, const At& at) {
  const double step = static_cast<double>(sourceSize) / destinationSize;
  const double widening = std::max(step, 1.0);
  const double center = (i + 0.5) * step;
  Color sum{};
  double total = 0.0;
  const int reach = static_cast<int>(2.0 * widening) + 2;
  for (int k = static_cast<int>(center) - reach; k <= static_cast<int>(center) + reach; ++k) {
    const double weight = weightOf(method, (k + 0.5 - center) / widening);
    const Color value = at(std::clamp(k, 0, sourceSize - 1));
    for (std::size_t c = 0; c < 4; ++c) sum[c] += weight * value[c];
    total += weight;
  }
  for (double& value : sum) value /= total;
  return sum;
}

Image resampled(const Surface& source, int width, int height, ResampleMethod method) {
  const bool isMask = source.format() == PixelFormat::r16Float;
  Image image = reference::imageOf(source);
  for (Color& pixel : image.pixels) {
    if (!isMask) pixel = {pixel[0] * pixel[3], pixel[1] * pixel[3], pixel[2] * pixel[3], pixel[3]};
  }
  Image across(width, image.height);
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < width; ++x) {
      across.at(x, y) = filtered(x, image.width, width, method, [&](int k) { return image.at(k, y); });
    }
  }
  Image result(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      Color pixel = filtered(y, image.height, height, method, [&](int k) { return across.at(x, k); });
      pixel[3] = std::clamp(pixel[3], 0.0, 1.0);
      if (isMask) {
        pixel.fill(pixel[3]);
      } else if (pixel[3] <= reference::halfUnit(source.format(), 0.0)) {
        pixel = {};
      } else {
        for (std::size_t c = 0; c < 3; ++c) {
          pixel[c] /= pixel[3];
          if (method == bicubic) pixel[c] = std::clamp(pixel[c], 0.0, 1.0);
        }
      }
      result.at(x, y) = pixel;
    }
  }
  return result;
}

/// Alpha within a unit; colour likewise, as far as alpha lets it show.
void expectAlike(const Surface& actual, const Image& expected) {
  const Image image = reference::imageOf(actual);
  const double unit = reference::halfUnit(actual.format(), 1.0) * 2.0 + 4e-6;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const Color& a = image.at(x, y);
      const Color& b = expected.at(x, y);
      ASSERT_NEAR(a[3], b[3], unit) << x << ", " << y;
      for (std::size_t c = 0; c < 3; ++c) ASSERT_NEAR(a[c] * a[3], b[c] * b[3], unit) << x << ", " << y;
    }
  }
}

constexpr std::array formats{PixelFormat::r16Float, PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                             PixelFormat::rgba8Unorm, PixelFormat::rgba16Float};

struct Sizes {
  int fromWidth, fromHeight, toWidth, toHeight;
};

TEST(ResampleTexture, FiltersLikeASeparableResizerThatWidensWhenShrinking) {
  forEveryInstructionSet([&] {
    std::mt19937 random(81);
    for (const PixelFormat format : formats) {
      for (const Sizes s : {Sizes{1, 1, 5, 3},
                            {17, 1, 4, 9},
                            {127, 60, 200, 140},
                            {300, 257, 131, 40},
                            {150, 200, 150, 133}}) {
        for (const ResampleMethod method : {bicubic, bilinear}) {
          SCOPED_TRACE(testing::Message() << static_cast<int>(format) << " to " << s.toWidth << ", "
                                          << static_cast<int>(method));
          const Surface source = randomSurface(format, s.fromWidth, s.fromHeight, random);
          Surface destination(format, s.toWidth, s.toHeight);
          context().resampleTexture(source, destination, method);
          expectAlike(destination, resampled(source, s.toWidth, s.toHeight, method));
        }
      }
    }
  });
}

TEST(ResampleTexture, NearestTakesThePixelUnderTheCentre) {
  std::mt19937 random(82);
  for (const PixelFormat format : formats) {
    for (const Sizes s :
         {Sizes{1, 1, 5, 3}, {17, 1, 4, 9}, {127, 60, 200, 140}, {300, 257, 131, 40}, {300, 200, 100, 600}}) {
      const Surface source = randomSurface(format, s.fromWidth, s.fromHeight, random);
      Surface destination(format, s.toWidth, s.toHeight);
      context().resampleTexture(source, destination, nearest);
      for (int y = 0; y < s.toHeight; ++y) {
        for (int x = 0; x < s.toWidth; ++x) {
          const int fromX = (2 * x + 1) * s.fromWidth / (2 * s.toWidth);
          const int fromY = (2 * y + 1) * s.fromHeight / (2 * s.toHeight);
          ASSERT_EQ(destination.pixelAt(x, y), source.pixelAt(fromX, fromY)) << x << ", " << y;
        }
      }
    }
  }
}

TEST(ResampleTexture, TheSameSizeSharesEveryTile) {
  std::mt19937 random(83);
  const Surface source = randomSurface(PixelFormat::rgba16Float, 300, 257, random);
  for (const ResampleMethod method : {bicubic, bilinear, nearest}) {
    Surface destination(PixelFormat::rgba16Float, 300, 257);
    context().resampleTexture(source, destination, method);
    for (int index = 0; index < source.tileCount(); ++index)
      EXPECT_EQ(destination.tile(index).buffer(), source.tile(index).buffer());
  }
}

TEST(ResampleTexture, AUniformImageStaysUniformAndTakesNoMemory) {
  Surface source(PixelFormat::rgba8Unorm, 700, 500);
  source.fill(0xFF336699U);
  for (const ResampleMethod method : {bicubic, bilinear, nearest}) {
    Surface destination(PixelFormat::rgba8Unorm, 333, 900);
    context().resampleTexture(source, destination, method);
    for (int index = 0; index < destination.tileCount(); ++index)
      EXPECT_EQ(destination.tile(index), Tile::uniform(0xFF336699U));
  }
}

TEST(ResampleTexture, ColourDoesNotBleedOutOfTransparentPixels) {
  // Opaque red beside transparent pixels that remember green.
  Surface source(PixelFormat::rgba8Unorm, 64, 64);
  source.fill(0x0000FF00U);
  std::vector<std::uint32_t> red(32 * 64, 0xFF0000FFU);
  source.writeRect({0, 0, 32, 64}, reinterpret_cast<const std::byte*>(red.data()), 128);
  for (const ResampleMethod method : {bicubic, bilinear}) {
    Surface destination(PixelFormat::rgba8Unorm, 40, 40);
    context().resampleTexture(source, destination, method);
    for (int x = 0; x < 40; ++x) EXPECT_EQ(destination.pixelAt(x, 20) & 0xFF00U, 0U) << x;
  }
}

}  // namespace
}  // namespace orvanel
