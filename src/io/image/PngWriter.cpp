#include "io/image/PngWriter.h"

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

#include "io/archive/ChunkPipeline.h"
#include "io/archive/Deflate.h"

namespace orvanel {
namespace {

constexpr std::size_t bandBytes = std::size_t{1} << 20U;
constexpr int bandsAhead = 16;

using Row = std::vector<std::uint8_t>;

std::uint8_t paeth(int left, int up, int upLeft) {
  const int estimate = left + up - upLeft;
  const int toLeft = std::abs(estimate - left);
  const int toUp = std::abs(estimate - up);
  const int toUpLeft = std::abs(estimate - upLeft);
  const int near = toUp <= toUpLeft ? up : upLeft;
  return static_cast<std::uint8_t>(toLeft <= toUp && toLeft <= toUpLeft ? left : near);
}

/// A row behind as many zeros as a pixel has bytes, so that its first pixel has a neighbour on the left.
struct PaddedRow {
  PaddedRow(std::size_t rowBytes, std::size_t pixelBytes) : bytes(rowBytes + pixelBytes), pixel(pixelBytes) {}
  std::uint8_t* data() { return bytes.data() + pixel; }
  [[nodiscard]] const std::uint8_t* data() const { return bytes.data() + pixel; }

  Row bytes;
  std::size_t pixel;
};

/// Writes what a filter leaves of a row, and tells how far from zero that is.
template <typename Predict>
std::uint32_t applyFilter(const PaddedRow& row, std::size_t count, std::uint8_t* out, Predict&& predict) {
  std::uint32_t distance = 0;
  const std::uint8_t* in = row.data();
  for (std::size_t i = 0; i < count; ++i) {
    const auto rest = static_cast<std::uint8_t>(in[i] - predict(i));
    out[i] = rest;
    distance += static_cast<std::uint32_t>(std::abs(static_cast<std::int8_t>(rest)));
  }
  return distance;
}

/// Filters one row as each filter would and keeps the one that leaves the least.
class RowFilter {
 public:
  RowFilter(std::size_t rowBytes, std::size_t pixelBytes) : rowBytes_(rowBytes), pixelBytes_(pixelBytes) {
    for (Row& candidate : candidates_) candidate.resize(rowBytes);
  }

  void filter(const PaddedRow& above, const PaddedRow& row, std::uint8_t* out) {
    const std::uint8_t* left = row.data() - pixelBytes_;
    const std::uint8_t* up = above.data();
    const std::uint8_t* upLeft = up - pixelBytes_;
    std::array<std::uint32_t, 4> distances{};
    distances[0] = applyFilter(row, rowBytes_, candidates_[0].data(), [=](std::size_t i) { return left[i]; });
    distances[1] = applyFilter(row, rowBytes_, candidates_[1].data(), [=](std::size_t i) { return up[i]; });
    distances[2] = applyFilter(row, rowBytes_, candidates_[2].data(), [=](std::size_t i) {
      return static_cast<std::uint8_t>((left[i] + up[i]) / 2);
    });
    distances[3] = applyFilter(row, rowBytes_, candidates_[3].data(),
                               [=](std::size_t i) { return paeth(left[i], up[i], upLeft[i]); });
    const auto best = std::ranges::min_element(distances) - distances.begin();
    *out = static_cast<std::uint8_t>(best + 1);
    std::memcpy(out + 1, candidates_[static_cast<std::size_t>(best)].data(), rowBytes_);
  }

 private:
  std::size_t rowBytes_;
  std::size_t pixelBytes_;
  std::array<Row, 4> candidates_;
};

void appendNumber(QByteArray& out, std::uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) out.append(static_cast<char>(value >> shift & 0xFFU));
}

void appendChunk(QByteArray& out, const char* type, std::span<const std::byte> data) {
  appendNumber(out, static_cast<std::uint32_t>(data.size()));
  const qsizetype checkedFrom = out.size();
  out.append(type, 4);
  out.append(reinterpret_cast<const char*>(data.data()), static_cast<qsizetype>(data.size()));
  const auto* checked = reinterpret_cast<const std::byte*>(out.constData() + checkedFrom);
  appendNumber(out, crc32({checked, static_cast<std::size_t>(out.size() - checkedFrom)}));
}

void appendChunk(QByteArray& out, const char* type, const QByteArray& data) {
  appendChunk(out, type, std::as_bytes(std::span(data.constData(), static_cast<std::size_t>(data.size()))));
}

std::uint32_t adler32(std::span<const std::byte> bytes) {
  return isal_adler32(1, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

class Encoder {
 public:
  Encoder(const PngSource& source, const Progress& progress)
      : source_(source),
        progress_(progress),
        pixelBytes_(source.channels == PngChannels::rgb ? 3 : 4),
        rowBytes_(static_cast<std::size_t>(source.width) * pixelBytes_),
        rowsPerBand_(static_cast<int>(std::clamp<std::size_t>(bandBytes / (rowBytes_ + 1), 1,
                                                              static_cast<std::size_t>(source.height)))) {}

  QByteArray encode() {
    QByteArray out("\x89PNG\r\n\x1A\n", 8);
    QByteArray header;
    appendNumber(header, static_cast<std::uint32_t>(source_.width));
    appendNumber(header, static_cast<std::uint32_t>(source_.height));
    header.append(char{8});
    header.append(source_.channels == PngChannels::rgb ? char{2} : char{6});
    header.append(3, '\0');
    appendChunk(out, "IHDR", header);
    appendChunk(out, "sRGB", QByteArray(1, '\0'));
    if (source_.density) {
      QByteArray density;
      appendNumber(density, static_cast<std::uint32_t>(source_.density->acrossPerMeter));
      appendNumber(density, static_cast<std::uint32_t>(source_.density->downPerMeter));
      density.append(char{1});  // to the metre
      appendChunk(out, "pHYs", density);
    }
    if (!appendImage(out)) return {};
    appendChunk(out, "IEND", QByteArray());
    return out;
  }

 private:
  bool appendImage(QByteArray& out) {
    appendChunk(out, "IDAT", QByteArray("\x78\x01", 2));
    const int bands = (source_.height + rowsPerBand_ - 1) / rowsPerBand_;
    ChunkPipeline pipeline(bands, bandsAhead, [this](int band) { return makeBand(band); });
    uLong checkSum = 1;
    for (int band = 0; band < bands; ++band) {
      if (progress_.isCancelled()) return false;
      const Chunk chunk = pipeline.take();
      appendChunk(out, "IDAT", chunk.bytes.span());
      checkSum = adler32_combine(checkSum, chunk.rawCheckSum, static_cast<z_off_t>(chunk.rawSize));
      progress_.tell(static_cast<double>(band + 1) / bands);
    }
    QByteArray end(reinterpret_cast<const char*>(deflateStreamEnd.data()), deflateStreamEnd.size());
    appendNumber(end, static_cast<std::uint32_t>(checkSum));
    appendChunk(out, "IDAT", end);
    return true;
  }

  /// A band of filtered rows, deflated; the check sum it carries is the zlib format's Adler-32.
  [[nodiscard]] Chunk makeBand(int band) const {
    const int first = band * rowsPerBand_;
    const int end = std::min(source_.height, first + rowsPerBand_);
    PaddedRow above(rowBytes_, pixelBytes_);
    PaddedRow row(rowBytes_, pixelBytes_);
    RowFilter filter(rowBytes_, pixelBytes_);
    ByteBuffer filtered(static_cast<std::size_t>(end - first) * (rowBytes_ + 1));
    auto* out = reinterpret_cast<std::uint8_t*>(filtered.data());
    if (first > 0) source_.readRow(first - 1, above.data());
    for (int y = first; y < end; ++y) {
      source_.readRow(y, row.data());
      filter.filter(above, row, out);
      out += rowBytes_ + 1;
      std::swap(above, row);
    }
    return {deflateChunk(filtered.span()), filtered.size(), adler32(filtered.span())};
  }

  const PngSource& source_;
  const Progress& progress_;
  std::size_t pixelBytes_;
  std::size_t rowBytes_;
  int rowsPerBand_;
};

}  // namespace

QByteArray encodePng(const PngSource& source, const Progress& progress) {
  return Encoder(source, progress).encode();
}

}  // namespace orvanel
