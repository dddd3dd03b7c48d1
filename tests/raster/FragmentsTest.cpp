// The output of the passes, compared with an image computed pixel by pixel.
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include "InstructionSets.h"
#include "RandomSurface.h"
#include "ScreenReference.h"
#include "raster/MetalContext.h"
#include "raster/RenderEncoder.h"
#include "raster/fragments/ScreenMapping.h"

namespace orvanel {
namespace {

constexpr std::uint32_t sentinel = 0xFF336699U;
constexpr std::array zooms{0.01F, 0.03F, 1.0F / 12.0F, 0.1F, 0.25F, 1.0F / 3.0F, 0.4687F, 0.5F,  2.0F / 3.0F,
                           0.99F, 1.0F,  1.37F,        2.0F, 3.0F,  7.0F,        12.0F,   64.0F, 400.0F};
constexpr std::array scales{1.0F, 1.25F, 2.0F};

/// An image with a margin that no pass may touch.
class Picture {
 public:
  Picture(int width, int height)
      : width_(width),
        height_(height),
        stride_(static_cast<std::size_t>(width) + 3),
        pixels_(stride_ * static_cast<std::size_t>(height), sentinel) {}

  template <typename Uniforms>
  void draw(FragmentFunction function, const Uniforms& uniforms, const Surface* texture = nullptr) {
    RenderEncoder encoder({pixels_.data(), stride_, width_, height_});
    encoder.draw({"", function, true}, std::as_bytes(std::span(&uniforms, 1)), texture);
    encoder.endEncoding();
  }

  [[nodiscard]] std::uint32_t& at(int x, int y) {
    return pixels_[static_cast<std::size_t>(y) * stride_ + static_cast<std::size_t>(x)];
  }
  [[nodiscard]] const std::vector<std::uint32_t>& pixels() const { return pixels_; }

 private:
  int width_;
  int height_;
  std::size_t stride_;
  std::vector<std::uint32_t> pixels_;
};

CanvasViewUniforms viewOf(int width, int height, int canvasWidth, int canvasHeight, float zoom, float scale) {
  return {static_cast<float>(width),
          static_cast<float>(height),
          static_cast<float>(canvasWidth),
          static_cast<float>(canvasHeight),
          0.0F,
          0.0F,
          zoom,
          scale};
}

/// Every zoom at every scale, each with a place where the canvas lies partly outside.
template <typename Check>
void forEveryView(int width, int height, int canvasWidth, int canvasHeight, const Check& check) {
  std::mt19937 random(20);
  for (const float zoom : zooms) {
    for (const float scale : scales) {
      CanvasViewUniforms view = viewOf(width, height, canvasWidth, canvasHeight, zoom, scale);
      const auto offset = [&](float canvas, float viewport) {
        const float visible = viewport / (zoom * scale);
        if (visible >= canvas) return 0.0F;
        return std::uniform_real_distribution<float>(-visible / 2.0F, canvas - visible / 2.0F)(random);
      };
      view.offsetX = offset(view.canvasWidth, view.viewportWidth);
      view.offsetY = offset(view.canvasHeight, view.viewportHeight);
      SCOPED_TRACE(testing::Message() << "zoom " << zoom << " scale " << scale);
      check(view);
    }
  }
}

void expectDocumentDrawn(const Surface& texture, const CanvasViewUniforms& view, int width, int height,
                         std::array<float, 3> channels = {1.0F, 1.0F, 1.0F}) {
  const ScreenReference reference{view, &texture, channels};
  Picture drawn(width, height);
  Picture expected(width, height);
  drawn.draw(fragments::document, DocumentUniforms{view, channels}, &texture);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (!reference.isInside(x, y)) continue;
      expected.at(x, y) = ScreenReference::over(expected.at(x, y), reference.premultiplied(x, y));
    }
  }
  // Premultiplying and blending round once each; single precision may fall to the other side of a half.
  EXPECT_LE(largestDifference(drawn.pixels(), expected.pixels()), 1);
}

TEST(Background, CoversEveryPixelOpaquely) {
  Picture picture(37, 70);
  picture.draw(fragments::background, BackgroundUniforms{viewOf(37, 70, 10, 10, 1.0F, 1.0F),
                                                         {0.5803922F, 0.5803922F, 0.6117647F, 0.0F}});
  for (int y = 0; y < 70; ++y) {
    for (int x = 0; x < 37; ++x) ASSERT_EQ(picture.at(x, y), 0xFF94949CU);
  }
}

TEST(DocumentPass, ShowsTheNearestPixelAtEveryZoomAndScale) {
  std::mt19937 random(3);
  for (const PixelFormat format : {PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    const Surface texture = randomSurface(format, 300, 257, random);
    forEveryView(333, 217, 300, 257,
                 [&](const CanvasViewUniforms& view) { expectDocumentDrawn(texture, view, 333, 217); });
  }
}

TEST(DocumentPass, ShowsCanvasesOfOnePixelAndOfOddShapes) {
  std::mt19937 random(4);
  const std::array<std::array<int, 2>, 4> sizes{{{1, 1}, {17, 1}, {129, 127}, {1, 400}}};
  for (const auto [width, height] : sizes) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    const Surface texture = randomSurface(PixelFormat::rgba16Float, width, height, random);
    forEveryView(65, 33, width, height,
                 [&](const CanvasViewUniforms& view) { expectDocumentDrawn(texture, view, 65, 33); });
  }
}

TEST(DocumentPass, AgreesOnEveryInstructionSet) {
  std::mt19937 random(5);
  for (const PixelFormat format : {PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    const Surface texture = randomSurface(format, 150, 140, random);
    forEveryInstructionSet([&] {
      expectDocumentDrawn(texture, viewOf(151, 67, 150, 140, 1.0F, 1.0F), 151, 67);
      expectDocumentDrawn(texture, viewOf(151, 67, 150, 140, 0.7F, 1.0F), 151, 67);
    });
  }
}

TEST(DocumentPass, HidesSwitchedOffChannels) {
  std::mt19937 random(6);
  const Surface texture = randomSurface(PixelFormat::rgba8Unorm, 60, 50, random);
  const CanvasViewUniforms view = viewOf(70, 60, 60, 50, 1.0F, 1.0F);
  expectDocumentDrawn(texture, view, 70, 60, {0.0F, 1.0F, 1.0F});
  expectDocumentDrawn(texture, view, 70, 60, {1.0F, 0.0F, 1.0F});
  expectDocumentDrawn(texture, view, 70, 60, {1.0F, 1.0F, 0.0F});
  expectDocumentDrawn(texture, view, 70, 60, {0.0F, 0.0F, 0.0F});
}

TEST(DocumentPass, ShowsNaNAsZeroAndInfinityAsTheLargestValue) {
  Surface texture(PixelFormat::rgba16Float, 4, 1);
  const std::uint64_t nan = 0x7E00;
  const std::uint64_t infinity = 0x7C00;
  const std::uint64_t negativeInfinity = 0xFC00;
  const std::uint64_t one = 0x3C00;
  const std::array<std::uint64_t, 4> pixels{nan | one << 16 | one << 32 | one << 48,
                                            infinity | negativeInfinity << 16 | infinity << 32 | one << 48,
                                            one | one << 16 | one << 32 | nan << 48, one | infinity << 48};
  texture.writeRect(texture.bounds(), reinterpret_cast<const std::byte*>(pixels.data()), sizeof(pixels));
  Picture picture(4, 1);
  picture.draw(fragments::document, DocumentUniforms{viewOf(4, 1, 4, 1, 1.0F, 1.0F)}, &texture);
  EXPECT_EQ(picture.at(0, 0), 0xFF00FFFFU);
  EXPECT_EQ(picture.at(1, 0), 0xFFFF00FFU);
  EXPECT_EQ(picture.at(2, 0), sentinel);
  EXPECT_EQ(picture.at(3, 0), 0xFFFF0000U);
}

TEST(DocumentPass, LeavesEightBitColoursUnchanged) {
  Surface texture(PixelFormat::rgba8Unorm, 256, 1);
  std::vector<std::uint32_t> pixels(256);
  for (std::uint32_t i = 0; i < 256; ++i) pixels[i] = 0xFF000000U | i << 16 | (255 - i) << 8 | (i ^ 0x5AU);
  texture.writeRect(texture.bounds(), reinterpret_cast<const std::byte*>(pixels.data()), 1024);
  Picture picture(256, 1);
  picture.draw(fragments::document, DocumentUniforms{viewOf(256, 1, 256, 1, 1.0F, 1.0F)}, &texture);
  for (std::uint32_t i = 0; i < 256; ++i) {
    ASSERT_EQ(picture.at(static_cast<int>(i), 0), 0xFF000000U | (i ^ 0x5AU) << 16 | (255 - i) << 8 | i);
  }
}

TEST(DocumentPass, IgnoresATextureOfAnotherSizeThanTheCanvas) {
  const Surface texture(PixelFormat::rgba8Unorm, 20, 20);
  Picture picture(30, 30);
  picture.draw(fragments::document, DocumentUniforms{viewOf(30, 30, 21, 20, 1.0F, 1.0F)}, &texture);
  picture.draw(fragments::document, DocumentUniforms{viewOf(30, 30, 20, 20, 1.0F, 1.0F)}, nullptr);
  EXPECT_EQ(picture.pixels(), Picture(30, 30).pixels());
}

TEST(Checkerboard, FillsTheCanvasOnlyWithTwoOpaqueColours) {
  forEveryView(333, 217, 300, 257, [&](const CanvasViewUniforms& view) {
    const ScreenReference reference{view, nullptr};
    Picture picture(333, 217);
    picture.draw(fragments::checkerboard, view);
    for (int y = 0; y < 217; ++y) {
      for (int x = 0; x < 333; ++x) {
        const std::uint32_t pixel = picture.at(x, y);
        if (!reference.isInside(x, y)) {
          ASSERT_EQ(pixel, sentinel) << x << ", " << y;
        } else {
          ASSERT_TRUE(pixel == 0xFFF7F7F7U || pixel == 0xFFE3E3E3U) << x << ", " << y;
        }
      }
    }
  });
}

TEST(Checkerboard, KeepsTheSizeOfItsSquaresOnTheScreenAndMovesWithTheCanvas) {
  for (const float scale : scales) {
    for (const float zoom : {0.5F, 1.0F, 8.0F}) {
      CanvasViewUniforms view = viewOf(400, 300, 4000, 3000, zoom, scale);
      view.offsetX = -16.0F;
      view.offsetY = -32.0F;
      const int side = static_cast<int>(8.0F * scale);
      const int left = static_cast<int>(16.0F * zoom * scale);
      const int top = static_cast<int>(32.0F * zoom * scale);
      Picture picture(400, 300);
      picture.draw(fragments::checkerboard, view);
      for (int y = top; y < 300; ++y) {
        for (int x = left; x < 400; ++x) {
          const bool isFirst = (((x - left) / side + (y - top) / side) & 1) == 0;
          ASSERT_EQ(picture.at(x, y), isFirst ? 0xFFF7F7F7U : 0xFFE3E3E3U) << x << ", " << y;
        }
      }
    }
  }
}

TEST(PixelGrid, DrawsOneDevicePixelAtEveryInnerBorderOfDocumentPixels) {
  for (const float scaled : {40.0F, 43.7F, 64.0F, 400.0F}) {
    CanvasViewUniforms view = viewOf(333, 217, 300, 2, scaled, 1.0F);
    view.offsetX = -0.55F;
    const ScreenReference reference{view, nullptr};
    Picture picture(333, 217);
    picture.draw(fragments::pixelGrid, view);
    const auto isLine = [](const ScreenReference::Axis& axis, int device) {
      return axis.contains(device) && axis.contains(device - 1) &&
             axis.index(device) != axis.index(device - 1);
    };
    for (int y = 0; y < 217; ++y) {
      for (int x = 0; x < 333; ++x) {
        const bool isDrawn = reference.isInside(x, y) &&
                             (isLine(reference.horizontal(), x) || isLine(reference.vertical(), y));
        ASSERT_EQ(picture.at(x, y) != sentinel, isDrawn) << x << ", " << y;
      }
    }
  }
}

TEST(PixelGrid, ShowsOnEveryGround) {
  const CanvasViewUniforms view = viewOf(100, 100, 10, 10, 40.0F, 1.0F);
  for (std::uint32_t tone = 0; tone < 256; tone += 5) {
    const std::uint32_t ground = 0xFF000000U | tone * 0x010101U;
    Picture picture(100, 100);
    for (int x = 0; x < 100; ++x) picture.at(x, 20) = ground;
    picture.draw(fragments::pixelGrid, view);
    EXPECT_GE(std::abs(static_cast<int>(picture.at(40, 20) & 0xFFU) - static_cast<int>(ground & 0xFFU)), 28);
  }
}

TEST(ScreenMapping, GivesEveryDocumentColumnTheSameWidthUpToOneDevicePixel) {
  for (const float scaled : {1.25F, 2.0F, 3.75F, 7.0F, 8.75F, 64.0F, 400.0F}) {
    const double offset = 8000.3;
    const AxisMapping mapping(1920.0, 16384.0, offset, static_cast<double>(scaled));
    const PixelSpan inside = mapping.inside(0, 1920);
    ASSERT_EQ(inside.length(), 1920);
    int start = -1;
    for (int x = 1; x < 1920; ++x) {
      if (!mapping.startsDocumentPixel(x)) continue;
      if (start >= 0) {
        EXPECT_GE(x - start, static_cast<int>(scaled));
        EXPECT_LE(x - start, static_cast<int>(std::ceil(scaled)));
      }
      start = x;
    }
  }
}

TEST(ScreenMapping, FindsTheCanvasWhereverItLies) {
  const AxisMapping centred(100.0, 40.0, 0.0, 1.0);
  EXPECT_EQ(centred.inside(0, 100).begin, 30);
  EXPECT_EQ(centred.inside(0, 100).end, 70);
  EXPECT_EQ(centred.inside(50, 60).begin, 50);
  EXPECT_EQ(centred.inside(50, 60).end, 60);
  EXPECT_TRUE(centred.inside(80, 100).isEmpty());
  EXPECT_TRUE(centred.inside(0, 10).isEmpty());
  EXPECT_EQ(centred.canvasStart(), 30);
  const AxisMapping scrolled(100.0, 1000.0, 500.0, 400.0);
  EXPECT_EQ(scrolled.canvasStart(), -200000);
  EXPECT_EQ(scrolled.inside(0, 100).length(), 100);
}

class EncoderFingerprint : public testing::Test {
 protected:
  [[nodiscard]] std::uint64_t fingerprint() {
    RenderEncoder encoder({pixels.data(), 8, 8, 8});
    encoder.draw({"", fragments::document, true}, std::as_bytes(std::span(&uniforms, 1)), &texture);
    return encoder.fingerprint();
  }

  std::vector<std::uint32_t> pixels = std::vector<std::uint32_t>(64);
  Surface texture{PixelFormat::rgba8Unorm, 200, 200};
  DocumentUniforms uniforms{viewOf(8, 8, 200, 200, 1.0F, 1.0F)};
};

TEST_F(EncoderFingerprint, StaysWhileNothingChanges) {
  const std::uint64_t before = fingerprint();
  EXPECT_EQ(fingerprint(), before);
}

TEST_F(EncoderFingerprint, ChangesWithUniformsTilesAndPasses) {
  const std::uint64_t before = fingerprint();
  uniforms.view.offsetX = 1.0F;
  const std::uint64_t panned = fingerprint();
  EXPECT_NE(panned, before);
  texture.setUniform(3, 0xFF00FF00U);
  const std::uint64_t painted = fingerprint();
  EXPECT_NE(painted, panned);
  texture.editTile(3)[0] = std::byte{7};
  const std::uint64_t edited = fingerprint();
  EXPECT_NE(edited, painted);
  texture.editTile(3)[0] = std::byte{8};
  EXPECT_NE(fingerprint(), edited);

  RenderEncoder withGrid({pixels.data(), 8, 8, 8});
  withGrid.draw({"", fragments::document, true}, std::as_bytes(std::span(&uniforms, 1)), &texture);
  withGrid.draw({"", fragments::pixelGrid, true}, std::as_bytes(std::span(&uniforms.view, 1)));
  EXPECT_NE(withGrid.fingerprint(), fingerprint());
}

TEST(RenderEncoder, DrawsPassesInTheOrderTheyWereRecorded) {
  std::vector<std::uint32_t> pixels(100 * 100);
  const CanvasViewUniforms view = viewOf(100, 100, 50, 50, 1.0F, 1.0F);
  const BackgroundUniforms grey{view, {0.0F, 0.0F, 0.0F, 0.0F}};
  RenderEncoder encoder({pixels.data(), 100, 100, 100});
  encoder.draw({"", fragments::checkerboard, true}, std::as_bytes(std::span(&view, 1)));
  encoder.draw({"", fragments::background, false}, std::as_bytes(std::span(&grey, 1)));
  encoder.endEncoding();
  EXPECT_EQ(pixels, std::vector<std::uint32_t>(100 * 100, 0xFF000000U));
}

}  // namespace
}  // namespace orvanel
