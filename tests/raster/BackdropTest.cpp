// The lower part of a picture is drawn once more when it is kept, and then no more until it changes.
#include "raster/Backdrop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "raster/RenderEncoder.h"
#include "raster/fragments/FragmentUniforms.h"

namespace orvanel {
namespace {

/// A picture of two passes: a grey backdrop whose drawing is counted, and a mark in one place above it.
class BackdropTest : public testing::Test {
 protected:
  BackdropTest() { drawn = 0; }

  /// Draws a frame and expects what passes alone would make of it.
  void draw(std::uint32_t grey, std::uint32_t mark) {
    RenderEncoder encoder({pixels_.data(), stride, width, height});
    encoder.draw({"", fill, false}, std::as_bytes(std::span(&grey, 1)));
    encoder.endBackdrop();
    encoder.draw({"", markPixel, false}, std::as_bytes(std::span(&mark, 1)));
    encoder.endEncoding(backdrop);
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < stride; ++x) {
        const std::uint32_t place = y * stride + x;
        const std::uint32_t expected = x >= width ? 0U : place == mark ? ~grey : grey;
        ASSERT_EQ(pixels_[place], expected) << x << ", " << y;
      }
    }
  }

  static constexpr std::uint32_t width = 50;
  static constexpr std::uint32_t stride = 53;
  static constexpr std::uint32_t height = 70;
  /// Bands that the lower pass has drawn.
  static inline std::atomic<int> drawn;
  Backdrop backdrop;

 private:
  static std::uint32_t valueOf(const FragmentInvocation& invocation) {
    std::uint32_t value = 0;
    std::memcpy(&value, invocation.uniforms.data(), sizeof value);
    return value;
  }

  static void fill(const FragmentInvocation& invocation, const FragmentBand& band) {
    ++drawn;
    for (int row = 0; row < band.rows; ++row) {
      std::fill_n(bandRow(band, row), band.width, valueOf(invocation));
    }
  }

  static void markPixel(const FragmentInvocation& invocation, const FragmentBand& band) {
    const auto place = static_cast<int>(valueOf(invocation));
    const int row = place / static_cast<int>(stride) - band.y;
    if (row < 0 || row >= band.rows) return;
    std::uint32_t& pixel = bandRow(band, row)[place % static_cast<int>(stride)];
    pixel = ~pixel;
  }

  std::vector<std::uint32_t> pixels_ = std::vector<std::uint32_t>(std::size_t{stride} * height);
};

constexpr int bandsOfAFrame = 3;

TEST_F(BackdropTest, IsDrawnTwiceAndThenKept) {
  for (std::uint32_t place = 10; place < 2000; place += 400) draw(0x808080U, place);
  EXPECT_EQ(drawn, 2 * bandsOfAFrame);
}

TEST_F(BackdropTest, IsDrawnAgainWhenItChanges) {
  for (const std::uint32_t grey : {1U, 1U, 1U, 2U, 2U, 2U, 1U, 3U}) draw(grey, grey * 60);
  EXPECT_EQ(drawn, 6 * bandsOfAFrame);
}

TEST_F(BackdropTest, IsDrawnAgainOnceForgotten) {
  for (int i = 0; i < 3; ++i) draw(7, 60);
  backdrop.forget();
  draw(7, 61);
  EXPECT_EQ(drawn, 3 * bandsOfAFrame);
}

}  // namespace
}  // namespace orvanel
