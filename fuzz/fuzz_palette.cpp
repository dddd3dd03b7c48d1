// Images with palettes, made from arbitrary bytes: whatever stands in the palette and however the indexes lie
// in it, each pixel of the opened image has its index's colour.
#include <sys/mman.h>
#include <unistd.h>

#include <QString>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include <zlib.h>

#include "Mutations.h"
#include "io/image/ImageDecoder.h"

namespace {

using orvanel::fuzz::Bytes;

/// The bytes of the input one after the other, then zeros.
class Source {
 public:
  explicit Source(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  std::uint8_t next() {
    if (bytes_.empty()) return 0;
    const std::uint8_t byte = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return byte;
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

struct Paletted {
  int width;
  int height;
  unsigned bits;
  std::vector<QRgb> colors;
  bool hasAlpha;
  Bytes indexes;
};

Paletted drawn(Source& source) {
  Paletted image{.width = 1 + source.next() % 20, .height = 1 + source.next() % 9};
  image.bits = 1U << (source.next() % 4U);
  const unsigned most = 1U << image.bits;
  image.colors.resize(1 + source.next() % most);
  image.hasAlpha = source.next() % 2 == 0;
  for (QRgb& color : image.colors) {
    const int red = source.next();
    const int green = source.next();
    const int blue = source.next();
    color = qRgba(red, green, blue, image.hasAlpha ? source.next() : 255);
  }
  image.indexes.resize(static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height));
  for (std::uint8_t& index : image.indexes) index = static_cast<std::uint8_t>(source.next() % most);
  return image;
}

void addNumber(Bytes& out, std::uint32_t number) {
  for (unsigned i = 0; i < 4; ++i) out.push_back(static_cast<std::uint8_t>(number >> (24U - 8U * i)));
}

void addChunk(Bytes& file, const char* kind, const Bytes& content) {
  addNumber(file, static_cast<std::uint32_t>(content.size()));
  file.insert(file.end(), kind, kind + 4);
  file.insert(file.end(), content.begin(), content.end());
  addNumber(file, 0);
}

Bytes packedRows(const Paletted& image) {
  Bytes rows;
  for (int y = 0; y < image.height; ++y) {
    rows.push_back(0);
    unsigned filled = 0;
    for (int x = 0; x < image.width; ++x) {
      if (filled == 0) rows.push_back(0);
      const std::uint8_t index = image.indexes[static_cast<std::size_t>(y * image.width + x)];
      filled += image.bits;
      rows.back() = static_cast<std::uint8_t>(rows.back() | (index << (8U - filled)));
      if (filled == 8) filled = 0;
    }
  }
  return rows;
}

Bytes pngOf(const Paletted& image) {
  Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  Bytes header;
  addNumber(header, static_cast<std::uint32_t>(image.width));
  addNumber(header, static_cast<std::uint32_t>(image.height));
  header.insert(header.end(), {static_cast<std::uint8_t>(image.bits), 3, 0, 0, 0});
  addChunk(file, "IHDR", header);
  Bytes palette;
  Bytes alphas;
  for (const QRgb color : image.colors) {
    for (const int part : {qRed(color), qGreen(color), qBlue(color)}) {
      palette.push_back(static_cast<std::uint8_t>(part));
    }
    alphas.push_back(static_cast<std::uint8_t>(qAlpha(color)));
  }
  addChunk(file, "PLTE", palette);
  if (image.hasAlpha) addChunk(file, "tRNS", alphas);
  const Bytes rows = packedRows(image);
  uLongf size = compressBound(rows.size());
  Bytes stream(size);
  compress2(stream.data(), &size, rows.data(), rows.size(), 1);
  stream.resize(size);
  addChunk(file, "IDAT", stream);
  addChunk(file, "IEND", {});
  orvanel::fuzz::mendPng(file);
  return file;
}

/// Of a file that exists in memory only.
orvanel::Described<orvanel::DecodedImage> decoded(const Bytes& file) {
  const int descriptor = memfd_create("image", MFD_CLOEXEC);
  if (descriptor < 0 || write(descriptor, file.data(), file.size()) != static_cast<ssize_t>(file.size())) {
    std::abort();
  }
  auto result = orvanel::decodeImageFile(QStringLiteral("/proc/self/fd/%1").arg(descriptor));
  close(descriptor);
  return result;
}

bool isSame(QRgb shown, QRgb wanted) {
  return qAlpha(wanted) == 0 ? qAlpha(shown) == 0 : shown == wanted;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Source source({data, size});
  const Paletted image = drawn(source);
  const auto opened = decoded(pngOf(image));
  if (!opened) {
    if (opened.error().isEmpty()) std::abort();
    return 0;
  }
  if (opened->image.width() != image.width || opened->image.height() != image.height) std::abort();
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const std::size_t index = image.indexes[static_cast<std::size_t>(y * image.width + x)];
      // What lies beyond the palette has no colour of its own.
      if (index >= image.colors.size()) continue;
      if (!isSame(opened->image.pixel(x, y), image.colors[index])) std::abort();
    }
  }
  return 0;
}
