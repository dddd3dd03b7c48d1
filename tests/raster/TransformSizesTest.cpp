// Rotating and scaling at every size of layer, held against a plain bilinear sample.
#include <gtest/gtest.h>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"

namespace orvanel {
namespace {

using reference::Color;
using reference::context;
using reference::Image;

constexpr std::array formats{PixelFormat::r16Float, PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                             PixelFormat::rgba8Unorm, PixelFormat::rgba16Float};

/// Where an edge falls exactly on a pixel's centre, single precision may take either side.
constexpr double awayFromCentres = 0.03;

Color premultiplied(const Color& color, PixelFormat format) {
  if (format == PixelFormat::r16Float) return color;
  return {color[0] * color[3], color[1] * color[3], color[2] * color[3], color[3]};
}

struct Region {
  double x, y, width, height;
  [[nodiscard]] bool holds(double px, double py) const {
    return px >= x && py >= y && px < x + width && py < y + height;
  }
};

/// The premultiplied mixture of the four pixels around a point; those outside of the region are transparent.
Color sampled(const Image& image, PixelFormat format, double u, double v, const Region& region) {
  const int x = static_cast<int>(std::floor(u - 0.5));
  const int y = static_cast<int>(std::floor(v - 0.5));
  Color sum{};
  for (const auto& [i, j] : {std::pair{0, 0}, {1, 0}, {0, 1}, {1, 1}}) {
    if (!region.holds(x + i, y + j)) continue;
    const double share = (1.0 - std::abs(u - 0.5 - (x + i))) * (1.0 - std::abs(v - 0.5 - (y + j)));
    const Color pixel = premultiplied(image.outsideEmpty(x + i, y + j), format);
    for (std::size_t c = 0; c < 4; ++c) sum[c] += pixel[c] * share;
  }
  return sum;
}

/// `expected` is premultiplied: where alpha is faint, its rounding moves the colour that is divided by it.
void expectPixels(const Surface& actual, const Image& expected) {
  const Image image = reference::imageOf(actual);
  const double unit = reference::halfUnit(actual.format(), 1.0) * 2.0 + 1e-5;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const Color pixel = premultiplied(image.at(x, y), actual.format());
      for (std::size_t c = 0; c < 4; ++c)
        ASSERT_NEAR(pixel[c], expected.at(x, y)[c], unit) << x << ", " << y << " channel " << c;
    }
  }
}

/// Calls `check` with a random layer of every format and size, on every instruction set.
void forEveryLayer(unsigned seed, const std::function<void(const Surface&, Surface& destination)>& check) {
  forEveryInstructionSet([&] {
    std::mt19937 random(seed);
    for (const PixelFormat format : formats) {
      for (const auto& [width, height] : reference::sizes) {
        SCOPED_TRACE(testing::Message()
                     << "format " << static_cast<int>(format) << ", " << width << " x " << height);
        const Surface source = randomSurface(format, width, height, random);
        Surface destination = randomSurface(format, width, height, random);
        check(source, destination);
      }
    }
  });
}

TEST(RotateLayerPixels, SamplesBilinearlyAtEverySize) {
  for (const float angle : {0.4F, -2.7F}) {
    forEveryLayer(81, [&](const Surface& source, Surface& destination) {
      const float centerX = static_cast<float>(source.width()) * 0.5F + 0.25F;
      const float centerY = static_cast<float>(source.height()) * 0.5F - 0.125F;
      context().rotateLayerPixels(source, destination, centerX, centerY, angle,
                                  reference::modeOf(source.format()));
      const Image image = reference::imageOf(source);
      const Region all{0.0, 0.0, 1.0 * image.width, 1.0 * image.height};
      Image expected(image.width, image.height);
      const double cosine = std::cos(static_cast<double>(angle));
      const double sine = std::sin(static_cast<double>(angle));
      for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
          const double dx = x + 0.5 - static_cast<double>(centerX);
          const double dy = y + 0.5 - static_cast<double>(centerY);
          expected.at(x, y) =
              sampled(image, source.format(), static_cast<double>(centerX) + cosine * dx + sine * dy,
                      static_cast<double>(centerY) - sine * dx + cosine * dy, all);
        }
      }
      expectPixels(destination, expected);
    });
  }
}

TEST(ScaleLayerRegion, SamplesBilinearlyAtEverySize) {
  // Never smaller, which would take more than one sample for a pixel. In parts of the layer: where the region
  // begins and how long it is, and the same of where it goes.
  struct Shares {
    double from, fromLength, to, toLength;
  };
  for (const Shares s :
       {Shares{0.0, 1.0, 0.0, 1.0}, {0.0, 0.5, 0.1, 0.65}, {0.3, 0.5, -0.2, 1.7}, {0.0, 0.4, 0.55, 0.4}}) {
    forEveryLayer(82, [&](const Surface& source, Surface& destination) {
      const Image image = reference::imageOf(source);
      // Whole pixels, as the box of a content has.
      const auto whole = [](double value) { return std::max(std::floor(value), 0.0); };
      const Region from{whole(s.from * image.width), whole(s.from * image.height),
                        std::max(whole(s.fromLength * image.width), 1.0),
                        std::max(whole(s.fromLength * image.height), 1.0)};
      const auto place = [](double value) { return std::floor(value) + awayFromCentres; };
      const Region to{place(s.to * image.width), place(s.to * image.height),
                      std::max(std::floor(s.toLength * image.width), from.width),
                      std::max(std::floor(s.toLength * image.height), from.height)};
      const auto asFloats = [](const Region& r) {
        return std::array<float, 4>{static_cast<float>(r.x), static_cast<float>(r.y),
                                    static_cast<float>(r.width), static_cast<float>(r.height)};
      };
      context().scaleLayerRegion(source, destination, asFloats(from), asFloats(to),
                                 reference::modeOf(source.format()));
      Image expected(image.width, image.height);
      for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
          if (!to.holds(x + 0.5, y + 0.5)) continue;
          expected.at(x, y) =
              sampled(image, source.format(), from.x + (x + 0.5 - to.x) * from.width / to.width,
                      from.y + (y + 0.5 - to.y) * from.height / to.height, from);
        }
      }
      expectPixels(destination, expected);
    });
  }
}

}  // namespace
}  // namespace orvanel
