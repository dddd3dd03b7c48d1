#include <gtest/gtest.h>

#include <limits>

#include "raster/InstructionSets.h"
#include "raster/KernelReference.h"

namespace orvanel {
namespace {

using reference::context;
using reference::Image;
using reference::maskAt;

/// The covered share of a pixel's area, estimated on a grid of points.
double sampledArea(int x, int y, int grid, const std::function<bool(double, double)>& isInside) {
  int hits = 0;
  for (int j = 0; j < grid; ++j) {
    for (int i = 0; i < grid; ++i) hits += isInside(x + (i + 0.5) / grid, y + (j + 0.5) / grid);
  }
  return static_cast<double>(hits) / (grid * grid);
}

bool isInsidePolygon(const std::vector<PolygonPoint>& points, double x, double y) {
  bool inside = false;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const PolygonPoint& a = points[i];
    const PolygonPoint& b = points[(i + 1) % points.size()];
    const auto ay = static_cast<double>(a.y);
    const auto by = static_cast<double>(b.y);
    if ((ay > y) == (by > y)) continue;
    const auto ax = static_cast<double>(a.x);
    if (x < ax + (y - ay) / (by - ay) * (static_cast<double>(b.x) - ax)) inside = !inside;
  }
  return inside;
}

/// Convolves with a Gaussian of large reach, edges replicated.
Image blurred(const Image& image, double sigma) {
  const int reach = static_cast<int>(std::ceil(5.0 * sigma));
  std::vector<double> weights;
  double sum = 0.0;
  for (int i = -reach; i <= reach; ++i) {
    weights.push_back(std::exp(-i * i / (2.0 * sigma * sigma)));
    sum += weights.back();
  }
  Image across(image.width, image.height);
  Image result(image.width, image.height);
  const auto pass = [&](const Image& from, Image& to, int stepX, int stepY) {
    for (int y = 0; y < from.height; ++y) {
      for (int x = 0; x < from.width; ++x) {
        double total = 0.0;
        for (int i = -reach; i <= reach; ++i) {
          total += weights[static_cast<std::size_t>(i + reach)] *
                   from.at(std::clamp(x + i * stepX, 0, from.width - 1),
                           std::clamp(y + i * stepY, 0, from.height - 1))[0];
        }
        to.at(x, y).fill(total / sum);
      }
    }
  };
  pass(image, across, 1, 0);
  pass(across, result, 0, 1);
  return result;
}

TEST(FillRectMask, IsExactlyOneInsideAndZeroOutside) {
  for (const auto& [width, height] : reference::sizes) {
    for (const PixelRect rect : {PixelRect{0, 0, 1, 1},
                                 {5, 0, 130, 200},
                                 {128, 128, 128, 128},
                                 {10, 10, 5000, 1},
                                 {-4, -4, 8, 8},
                                 {400, 0, 3, 3},
                                 {3, 3, 0, 9},
                                 {1, 1, std::numeric_limits<int>::max(), std::numeric_limits<int>::max()}}) {
      Surface mask(PixelFormat::r16Float, width, height);
      context().fillMask(mask, 0.5F);
      context().fillRectMask(mask, rect, 0.0F);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          const bool inside = x >= rect.x && y >= rect.y && x - std::int64_t{rect.x} < rect.width &&
                              y - std::int64_t{rect.y} < rect.height;
          ASSERT_EQ(maskAt(mask, x, y), inside ? 1.0F : 0.0F) << x << ", " << y;
        }
      }
    }
  }
}

TEST(FillRectMask, TheWholeCanvasTakesNoMemory) {
  Surface mask(PixelFormat::r16Float, 300, 257);
  context().fillRectMask(mask, {0, 0, 300, 257}, 0.0F);
  for (int index = 0; index < mask.tileCount(); ++index) EXPECT_EQ(mask.tile(index), Tile::uniform(0x3C00));
  // A shape that touches every edge doesn't fade there.
  context().fillRectMask(mask, {0, 0, 300, 257}, 20.0F);
  for (int index = 0; index < mask.tileCount(); ++index) EXPECT_EQ(mask.tile(index), Tile::uniform(0x3C00));
}

TEST(FillRectMask, AFeatherBlursWithTheCanvasEdgesReplicated) {
  forEveryInstructionSet([&] {
    for (const float feather : {0.5F, 4.0F, 25.0F}) {
      Surface mask(PixelFormat::r16Float, 150, 140);
      context().fillRectMask(mask, {0, 40, 90, 60}, feather);
      const Image sharp = reference::imageOf(reference::maskOf(
          150, 140, [](int x, int y) { return x < 90 && y >= 40 && y < 100 ? 1.0F : 0.0F; }));
      reference::expectImage(mask, blurred(sharp, static_cast<double>(feather) / 2.0), 1e-4);
    }
  });
}

TEST(FillEllipseMask, CoversEachPixelByItsArea) {
  struct Ellipse {
    double cx, cy, rx, ry;
  };
  for (const Ellipse e : {Ellipse{30.0, 20.0, 25.0, 15.0},
                          {64.3, 50.7, 200.0, 3.5},
                          {10.5, 10.5, 0.3, 0.4},
                          {127.5, 60.2, 40.0, 70.0},
                          {-20.0, -10.0, 60.0, 80.0}}) {
    Surface mask(PixelFormat::r16Float, 160, 140);
    context().fillEllipseMask(mask, static_cast<float>(e.cx), static_cast<float>(e.cy),
                              static_cast<float>(e.rx), static_cast<float>(e.ry), 0.0F);
    const auto isInside = [&](double x, double y) {
      return std::pow((x - e.cx) / e.rx, 2) + std::pow((y - e.cy) / e.ry, 2) <= 1.0;
    };
    for (int y = 0; y < 140; ++y) {
      for (int x = 0; x < 160; ++x) {
        const double area = sampledArea(x, y, 32, isInside);
        ASSERT_NEAR(static_cast<double>(maskAt(mask, x, y)), area, 0.02) << x << ", " << y;
        if (isInside(x, y) && isInside(x + 1, y) && isInside(x, y + 1) && isInside(x + 1, y + 1)) {
          ASSERT_EQ(maskAt(mask, x, y), 1.0F) << x << ", " << y;
        }
      }
    }
  }
}

TEST(FillEllipseMask, ItsWholeAreaIsPiTimesBothRadii) {
  Surface mask(PixelFormat::r16Float, 300, 257);
  context().fillEllipseMask(mask, 150.2F, 128.9F, 111.7F, 93.3F, 0.0F);
  double sum = 0.0;
  for (const reference::Color& pixel : reference::imageOf(mask).pixels) sum += pixel[0];
  EXPECT_NEAR(sum, 3.14159265358979 * 111.7 * 93.3, 0.5);
  EXPECT_EQ(maskAt(mask, 0, 0), 0.0F);
}

TEST(FillEllipseMask, NonPositiveRadiiAndNaNCoverNothing) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Surface mask(PixelFormat::r16Float, 20, 20);
  for (const auto& [radius, center] : {std::pair{0.0F, 5.0F}, {-3.0F, 5.0F}, {nan, 5.0F}, {4.0F, nan}}) {
    context().fillMask(mask, 1.0F);
    context().fillEllipseMask(mask, center, 5.0F, radius, 4.0F, 0.0F);
    EXPECT_EQ(context().selectionBounds(mask), std::nullopt);
  }
}

TEST(FillEllipseMask, AFeatherBlursTheSharpOne) {
  Surface sharp(PixelFormat::r16Float, 200, 150);
  context().fillEllipseMask(sharp, 130.0F, 30.0F, 60.0F, 50.0F, 0.0F);
  forEveryInstructionSet([&] {
    Surface mask(PixelFormat::r16Float, 200, 150);
    context().fillEllipseMask(mask, 130.0F, 30.0F, 60.0F, 50.0F, 12.0F);
    reference::expectImage(mask, blurred(reference::imageOf(sharp), 6.0), 1e-4);
  });
}

/// A row's or column's blur of what lies from `begin` to `end`, with the outermost pixels repeated.
std::vector<double> blurredSpan(int size, int begin, int end, double sigma) {
  const int reach = static_cast<int>(std::ceil(6.0 * sigma));
  std::vector<double> result(static_cast<std::size_t>(size));
  for (int x = 0; x < size; ++x) {
    double inside = 0.0;
    double sum = 0.0;
    for (int i = -reach; i <= reach; ++i) {
      const double weight = std::exp(-i * i / (2.0 * sigma * sigma));
      const int from = std::clamp(x + i, 0, size - 1);
      if (from >= begin && from < end) inside += weight;
      sum += weight;
    }
    result[static_cast<std::size_t>(x)] = inside / sum;
  }
  return result;
}

TEST(FillRectMask, AWideFeatherStaysWithinAThousandthOfTheGaussian) {
  constexpr int width = 1003;
  constexpr int height = 389;
  for (const PixelRect rect : {PixelRect{300, 100, 250, 130}, {0, 0, 999, 200}, {17, 0, 986, 389}}) {
    for (const float feather : {128.0F, 250.0F, 333.0F, 1000.0F, 4000.0F}) {
      SCOPED_TRACE(testing::Message() << rect.x << ", feather " << feather);
      const double sigma = static_cast<double>(feather) / 2.0;
      const std::vector<double> across = blurredSpan(width, rect.x, rect.x + rect.width, sigma);
      const std::vector<double> down = blurredSpan(height, rect.y, rect.y + rect.height, sigma);
      Image expected(width, height);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          expected.at(x, y).fill(across[static_cast<std::size_t>(x)] * down[static_cast<std::size_t>(y)]);
        }
      }
      forEveryInstructionSet([&] {
        Surface mask(PixelFormat::r16Float, width, height);
        context().fillRectMask(mask, rect, feather);
        // In addition to the rounding to half floats.
        reference::expectImage(mask, expected, 5e-4);
      });
    }
  }
}

TEST(FillEllipseMask, AWideFeatherStaysWithinAThousandthOfTheGaussian) {
  Surface sharp(PixelFormat::r16Float, 300, 210);
  context().fillEllipseMask(sharp, 280.0F, 90.0F, 90.0F, 60.0F, 0.0F);
  Surface mask(PixelFormat::r16Float, 300, 210);
  context().fillEllipseMask(mask, 280.0F, 90.0F, 90.0F, 60.0F, 128.0F);
  reference::expectImage(mask, blurred(reference::imageOf(sharp), 64.0), 5e-4);
}

TEST(FillEllipseMask, AWideFeatherLeavesFarTilesUniform) {
  Surface mask(PixelFormat::r16Float, 2000, 1500);
  context().fillEllipseMask(mask, 0.0F, 0.0F, 700.0F, 700.0F, 128.0F);
  EXPECT_EQ(mask.tile(0), Tile::uniform(0x3C00));
  EXPECT_EQ(mask.tile(mask.tileCount() - 1), Tile::uniform(0));
}

TEST(FillPolygonMask, NoPointsDoNothing) {
  Surface mask(PixelFormat::r16Float, 20, 20);
  context().fillMask(mask, 0.5F);
  context().fillPolygonMask(mask, {});
  EXPECT_EQ(mask.tile(0), Tile::uniform(0x3800));
}

TEST(FillPolygonMask, AnAlignedRectangleIsExactAndAFractionIsItsArea) {
  Surface mask(PixelFormat::r16Float, 300, 257);
  const std::vector<PolygonPoint> whole{{10, 20}, {290, 20}, {290, 250}, {10, 250}};
  context().fillPolygonMask(mask, whole);
  Surface rect(PixelFormat::r16Float, 300, 257);
  context().fillRectMask(rect, {10, 20, 280, 230}, 0.0F);
  EXPECT_TRUE(mask.equals(rect));
  const std::vector<PolygonPoint> part{{10.25F, 20.5F}, {12.5F, 20.5F}, {12.5F, 22.0F}, {10.25F, 22.0F}};
  context().fillPolygonMask(mask, part);
  EXPECT_EQ(maskAt(mask, 10, 20), 0.375F);
  EXPECT_EQ(maskAt(mask, 11, 20), 0.5F);
  EXPECT_EQ(maskAt(mask, 11, 21), 1.0F);
  EXPECT_EQ(maskAt(mask, 12, 21), 0.5F);
  EXPECT_EQ(maskAt(mask, 13, 21), 0.0F);
}

TEST(FillPolygonMask, CrossingsAndNestedLoopsFollowTheEvenOddRule) {
  std::mt19937 random(61);
  std::vector<std::vector<PolygonPoint>> polygons{
      {{5, 5}, {60, 50}, {60, 5}, {5, 50}},
      {{30, 2}, {47, 55}, {2, 22}, {58, 22}, {13, 55}},
      {{-50, 20}, {30, -40}, {150, 30}, {40, 200}},
      {{3.3F, 4.4F}, {3.3F, 4.4F}, {50.1F, 9.7F}, {20.2F, 60.0F}},
  };
  for (int round = 0; round < 6; ++round) {
    std::vector<PolygonPoint> points;
    std::uniform_real_distribution<float> place(-10.0F, 80.0F);
    for (int i = 0; i < 12; ++i) points.push_back({place(random), place(random)});
    polygons.push_back(points);
  }
  for (const std::vector<PolygonPoint>& points : polygons) {
    Image expected(70, 66);
    for (int y = 0; y < 66; ++y) {
      for (int x = 0; x < 70; ++x) {
        expected.at(x, y).fill(
            sampledArea(x, y, 24, [&](double px, double py) { return isInsidePolygon(points, px, py); }));
      }
    }
    forEveryInstructionSet([&] {
      Surface mask(PixelFormat::r16Float, 70, 66);
      context().fillPolygonMask(mask, points);
      reference::expectImage(mask, expected, 0.02);
    });
  }
}

/// Even-odd coverage from many scan lines per pixel row, each exact horizontally.
Image scanned(const std::vector<PolygonPoint>& points, int width, int height, int linesPerRow) {
  Image image(width, height);
  for (int line = 0; line < height * linesPerRow; ++line) {
    const double y = (line + 0.5) / linesPerRow;
    std::vector<double> places;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const PolygonPoint& a = points[i];
      const PolygonPoint& b = points[(i + 1) % points.size()];
      const auto ay = static_cast<double>(a.y);
      const auto by = static_cast<double>(b.y);
      if ((ay > y) == (by > y)) continue;
      places.push_back(std::lerp(static_cast<double>(a.x), static_cast<double>(b.x), (y - ay) / (by - ay)));
    }
    std::sort(places.begin(), places.end());
    for (std::size_t i = 0; i + 1 < places.size(); i += 2) {
      for (int x = std::max(static_cast<int>(places[i]), 0); x < width && x < places[i + 1]; ++x) {
        const double share = std::min(places[i + 1], x + 1.0) - std::max(places[i], 1.0 * x);
        for (double& value : image.at(x, line / linesPerRow)) value += std::max(share, 0.0) / linesPerRow;
      }
    }
  }
  return image;
}

TEST(FillPolygonMask, EdgesThatIntersectWithinAPixelAreSplit) {
  std::uniform_real_distribution<float> place(-30.0F, 300.0F);
  for (const unsigned seed : {3U, 62U}) {
    std::mt19937 random(seed);
    std::vector<PolygonPoint> points;
    for (int i = 0; i < 80; ++i) {
      const float x = place(random);
      points.push_back({x, place(random)});
    }
    // Several points at one height, and an edge along a line between pixels.
    for (const float x : {20.0F, 250.0F, 90.0F, 200.0F}) points.push_back({x, 140.0F});
    Surface mask(PixelFormat::r16Float, 270, 260);
    context().fillPolygonMask(mask, points);
    reference::expectImage(mask, scanned(points, 270, 260, 200), 0.005);
  }
}

TEST(FillPolygonMask, DenselyCrossedRowsAreSampled) {
  std::mt19937 random(65);
  std::uniform_real_distribution<float> place(-20.0F, 290.0F);
  std::vector<PolygonPoint> points;
  for (int i = 0; i < 3000; ++i) {
    const float x = place(random);
    points.push_back({x, place(random) * 0.4F});
  }
  // A corner far below, so that exact rows follow the sampled ones.
  points.push_back({60.0F, 200.0F});
  points.push_back({200.0F, 190.5F});
  const Image expected = scanned(points, 270, 210, 100);
  forEveryInstructionSet([&] {
    Surface mask(PixelFormat::r16Float, 270, 210);
    context().fillPolygonMask(mask, points);
    double squares = 0.0;
    for (int y = 0; y < 210; ++y) {
      for (int x = 0; x < 270; ++x) {
        const double error = static_cast<double>(maskAt(mask, x, y)) - expected.at(x, y)[0];
        ASSERT_NEAR(error, 0.0, y < 120 ? 0.2 : 0.005) << x << ", " << y;
        squares += error * error;
      }
    }
    EXPECT_LT(std::sqrt(squares / (270 * 210)), 0.03);
  });
}

TEST(FillPolygonMask, PixelsWhollyInsideOrOutsideAreExactInSampledRowsToo) {
  // A dense scribble beside a block of solid pixels, one polygon.
  std::mt19937 random(66);
  std::uniform_real_distribution<float> place(100.0F, 199.0F);
  std::vector<PolygonPoint> points{{10, 0}, {50, 0}, {50, 200}, {10, 200}, {10, 0}, {100, 0}};
  for (int i = 0; i < 2000; ++i) {
    const float x = place(random);
    points.push_back({x, (place(random) - 100.0F) * 2.0F});
  }
  points.push_back({100, 0});
  Surface mask(PixelFormat::r16Float, 210, 200);
  context().fillPolygonMask(mask, points);
  for (int y = 0; y < 200; ++y) {
    for (int x = 0; x < 100; ++x)
      ASSERT_EQ(maskAt(mask, x, y), x >= 10 && x < 50 ? 1.0F : 0.0F) << x << ", " << y;
    ASSERT_EQ(maskAt(mask, 205, y), 0.0F) << y;
  }
}

TEST(FillPolygonMask, SpansTilesAndLeavesInnerOnesUniform) {
  std::vector<PolygonPoint> points;
  for (int i = 0; i < 1000; ++i) {
    const float angle = static_cast<float>(i) * 0.00628318F;
    points.push_back({320.0F + 300.0F * std::cos(angle), 320.0F + 300.0F * std::sin(angle)});
  }
  Surface mask(PixelFormat::r16Float, 640, 640);
  context().fillPolygonMask(mask, points);
  EXPECT_EQ(mask.tile(mask.tileIndex(2, 2)), Tile::uniform(0x3C00));
  double sum = 0.0;
  for (const reference::Color& pixel : reference::imageOf(mask).pixels) sum += pixel[0];
  EXPECT_NEAR(sum, 3.14159265 * 300.0 * 300.0, 20.0);
}

TEST(FillPolygonMask, ARowThatIsHalfCoveredFromSideToSideIsHalf) {
  forEveryInstructionSet([] {
    Surface mask(PixelFormat::r16Float, 300, 257);
    context().fillPolygonMask(mask,
                              std::vector<PolygonPoint>{{-9, 20.5F}, {500, 20.5F}, {500, 900}, {-9, 900}});
    for (int y = 0; y < 257; ++y) {
      for (const int x : {0, 127, 128, 299}) {
        ASSERT_EQ(maskAt(mask, x, y), y < 20 ? 0.0F : y == 20 ? 0.5F : 1.0F) << x << ", " << y;
      }
    }
    for (const int index : {3, 4, 5}) EXPECT_EQ(mask.tile(index), Tile::uniform(0x3C00));
    context().fillPolygonMask(mask, std::vector<PolygonPoint>{{-9, -9}, {0, -9}, {0, 900}, {-9, 900}});
    for (int index = 0; index < mask.tileCount(); ++index) EXPECT_EQ(mask.tile(index), Tile::uniform(0));
  });
}

TEST(FillPolygonMask, FlatEdgesAcrossManyColumnsAndBeyondTheCanvasKeepTheirArea) {
  const std::vector<PolygonPoint> points{{-80, 3.25F}, {420, 5.5F}, {420, 30}, {60.5F, 7.75F}, {-80, 9}};
  const Image expected = scanned(points, 300, 40, 400);
  forEveryInstructionSet([&] {
    Surface mask(PixelFormat::r16Float, 300, 40);
    context().fillPolygonMask(mask, points);
    reference::expectImage(mask, expected, 0.003);
  });
}

TEST(FillPolygonMask, NonFinitePointsAreIgnored) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Surface mask(PixelFormat::r16Float, 20, 20);
  context().fillPolygonMask(mask, std::vector<PolygonPoint>{{2, 2}, {nan, 4}, {10, 2}, {10, 9}, {2, 9}});
  EXPECT_EQ(context().selectionBounds(mask), (PixelRect{2, 2, 8, 7}));
  context().fillPolygonMask(mask, std::vector<PolygonPoint>{{-1e30F, -1e30F}, {1e30F, -1e30F}, {0, 1e30F}});
  EXPECT_EQ(maskAt(mask, 19, 19), 1.0F);
}

}  // namespace
}  // namespace orvanel
