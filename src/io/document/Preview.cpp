#include "io/document/Preview.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "io/image/EightBit.h"
#include "io/image/PngWriter.h"

namespace orvanel {
namespace {

/// Rows and columns of the source that are averaged into one pixel, at most; more would not be seen.
constexpr int mostSamples = 16;

/// The source positions that go into pixel `index` of `count` along an axis of `length`.
struct Samples {
  int first;
  int step;
  int count;

  static Samples of(int index, int count, int length) {
    const auto begin = static_cast<int>(std::int64_t{index} * length / count);
    const auto end = std::max(begin + 1, static_cast<int>((std::int64_t{index} + 1) * length / count));
    const int span = end - begin;
    const int taken = std::min(span, mostSamples);
    return {begin, span / taken, taken};
  }
};

/// Alpha-weighted sums of one target row.
struct Sums {
  std::int64_t red = 0;
  std::int64_t green = 0;
  std::int64_t blue = 0;
  std::int64_t alpha = 0;
  std::int64_t samples = 0;

  void add(const std::uint8_t* pixel) {
    const std::int64_t weight = pixel[3];
    red += pixel[0] * weight;
    green += pixel[1] * weight;
    blue += pixel[2] * weight;
    alpha += weight;
    ++samples;
  }
  void write(std::uint8_t* out) const {
    const auto share = [](std::int64_t sum, std::int64_t of) {
      return static_cast<std::uint8_t>(of == 0 ? 0 : (sum + of / 2) / of);
    };
    out[0] = share(red, alpha);
    out[1] = share(green, alpha);
    out[2] = share(blue, alpha);
    out[3] = share(alpha, samples);
  }
};

void averageRow(const Surface& composite, int y, const QSize& size, std::uint8_t* out) {
  const Samples rows = Samples::of(y, size.height(), composite.height());
  std::vector<std::uint8_t> source(static_cast<std::size_t>(composite.width()) * 4);
  std::vector<Sums> sums(static_cast<std::size_t>(size.width()));
  for (int row = 0; row < rows.count; ++row) {
    readRowEightBit(composite, 0, rows.first + row * rows.step, composite.width(), source.data());
    for (int x = 0; x < size.width(); ++x) {
      const Samples columns = Samples::of(x, size.width(), composite.width());
      for (int column = 0; column < columns.count; ++column) {
        sums[static_cast<std::size_t>(x)].add(
            source.data() + static_cast<std::size_t>(columns.first + column * columns.step) * 4);
      }
    }
  }
  for (int x = 0; x < size.width(); ++x) sums[static_cast<std::size_t>(x)].write(out + std::size_t{4} * x);
}

}  // namespace

QSize previewSize(int canvasWidth, int canvasHeight) {
  const std::int64_t longest = std::max({canvasWidth, canvasHeight, previewSide});
  const auto scaled = [longest](int side) {
    return std::max(1, static_cast<int>(std::int64_t{side} * previewSide / longest));
  };
  return {scaled(canvasWidth), scaled(canvasHeight)};
}

QByteArray previewPng(const Surface& composite) {
  const QSize size = previewSize(composite.width(), composite.height());
  const std::size_t rowBytes = static_cast<std::size_t>(size.width()) * 4;
  std::vector<std::uint8_t> pixels(rowBytes * static_cast<std::size_t>(size.height()));
  for (int y = 0; y < size.height(); ++y) {
    averageRow(composite, y, size, pixels.data() + static_cast<std::size_t>(y) * rowBytes);
  }
  return encodePng({size.width(), size.height(), PngChannels::rgba, [&](int y, std::uint8_t* row) {
                      std::copy_n(pixels.data() + static_cast<std::size_t>(y) * rowBytes, rowBytes, row);
                    }});
}

}  // namespace orvanel
