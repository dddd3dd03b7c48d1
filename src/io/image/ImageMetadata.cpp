#include "io/image/ImageMetadata.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QSize>
#include <algorithm>
#include <array>
#include <cmath>
#include <exiv2/exiv2.hpp>
#include <mutex>
#include <string>

#include "io/image/ImageHeader.h"

namespace orvanel {

namespace {

/// Which kinds of metadata to write.
struct Parts {
  bool exif;
  bool xmp;
  bool iptc;
};
/// One block that can't be written, such as a JPEG segment beyond 64 KiB, must not cost the others.
constexpr std::array<Parts, 5> partsByPreference{{{.exif = true, .xmp = true, .iptc = true},
                                                  {.exif = true, .xmp = false, .iptc = true},
                                                  {.exif = true, .xmp = true, .iptc = false},
                                                  {.exif = true, .xmp = false, .iptc = false},
                                                  {.exif = false, .xmp = true, .iptc = true}}};

/// Cameras write 160, some twice or four times as much.
constexpr int largestThumbnailSide = 1024;

}  // namespace

struct ImageMetadata::Contents {
  Exiv2::ExifData exif;
  Exiv2::XmpData xmp;
  Exiv2::IptcData iptc;

  [[nodiscard]] bool isEmpty() const { return exif.empty() && xmp.empty() && iptc.empty(); }
  [[nodiscard]] Contents only(const Parts& parts) const {
    return {.exif = parts.exif ? exif : Exiv2::ExifData(),
            .xmp = parts.xmp ? xmp : Exiv2::XmpData(),
            .iptc = parts.iptc ? iptc : Exiv2::IptcData()};
  }
};

namespace {

/// Guards the library, parts of which share state.
std::mutex& libraryMutex() {
  static std::mutex mutex;
  static std::once_flag once;
  std::call_once(once, [] {
    Exiv2::LogMsg::setHandler(nullptr);
    Exiv2::XmpParser::initialize();
  });
  return mutex;
}

/// Tags of a TIFF directory that describe how pixels are stored (TIFF 6.0, and its supplements for profiles
/// and other blocks of metadata). They belong to one file and must not be copied to another.
constexpr std::array<std::uint16_t, 57> storageTags{
    254, 255, 256, 257, 258, 259, 262, 263, 264, 265, 266, 273, 277, 278, 279, 280, 281, 282,   283,
    284, 288, 289, 290, 291, 292, 293, 296, 297, 301, 317, 318, 319, 320, 321, 322, 323, 324,   325,
    330, 332, 334, 336, 338, 339, 340, 341, 342, 347, 512, 513, 514, 529, 530, 532, 700, 33723, 34675};

bool describesStorage(const Exiv2::Exifdatum& datum) {
  const std::string group = datum.groupName();
  // Thumbnails and further pictures in the same file.
  if (group.starts_with("Thumbnail") || group.starts_with("SubImage") || group.starts_with("SubThumb") ||
      (group.starts_with("Image") && group != "Image") || group == "Iop") {
    return true;
  }
  return group == "Image" && std::ranges::find(storageTags, datum.tag()) != storageTags.end();
}

template <typename Data, typename Predicate>
void eraseIf(Data& data, Predicate&& predicate) {
  for (auto datum = data.begin(); datum != data.end();)
    datum = predicate(*datum) ? data.erase(datum) : ++datum;
}

template <typename Data, typename Key, typename Value>
void correct(Data& data, const char* name, const Value& value) {
  if (const auto found = data.findKey(Key(name)); found != data.end()) *found = value;
}

void eraseOrientation(Exiv2::ExifData& exif, Exiv2::XmpData& xmp) {
  eraseIf(exif, [](const auto& datum) { return datum.key() == "Exif.Image.Orientation"; });
  eraseIf(xmp, [](const auto& datum) { return datum.key() == "Xmp.tiff.Orientation"; });
}

std::optional<int> perMeter(const Exiv2::ExifData& exif, const char* name, bool isPerCentimetre) {
  const auto found = exif.findKey(Exiv2::ExifKey(name));
  if (found == exif.end() || found->count() == 0) return std::nullopt;
  const double value = static_cast<double>(found->toFloat()) * (isPerCentimetre ? 100.0 : 100.0 / 2.54);
  constexpr double most = 1e7;
  if (!(value >= 1.0 && value <= most)) return std::nullopt;
  return static_cast<int>(std::lround(value));
}

std::optional<PixelDensity> densityOf(const Exiv2::ExifData& exif) {
  constexpr int centimetre = 3;
  const auto unit = exif.findKey(Exiv2::ExifKey("Exif.Image.ResolutionUnit"));
  const bool isPerCentimetre = unit != exif.end() && unit->count() > 0 && unit->toLong() == centimetre;
  const auto across = perMeter(exif, "Exif.Image.XResolution", isPerCentimetre);
  const auto down = perMeter(exif, "Exif.Image.YResolution", isPerCentimetre);
  if (!across || !down) return std::nullopt;
  return PixelDensity{*across, *down};
}

void correctSize(Exiv2::ExifData& exif, Exiv2::XmpData& xmp, const QSize& size) {
  const auto width = static_cast<std::uint32_t>(size.width());
  const auto height = static_cast<std::uint32_t>(size.height());
  correct<Exiv2::ExifData, Exiv2::ExifKey>(exif, "Exif.Photo.PixelXDimension", width);
  correct<Exiv2::ExifData, Exiv2::ExifKey>(exif, "Exif.Photo.PixelYDimension", height);
  for (const char* name : {"Xmp.exif.PixelXDimension", "Xmp.tiff.ImageWidth"})
    correct<Exiv2::XmpData, Exiv2::XmpKey>(xmp, name, std::to_string(width));
  for (const char* name : {"Xmp.exif.PixelYDimension", "Xmp.tiff.ImageLength"})
    correct<Exiv2::XmpData, Exiv2::XmpKey>(xmp, name, std::to_string(height));
}

/// The pixels have been converted to sRGB.
void correctColorSpace(Exiv2::ExifData& exif, Exiv2::XmpData& xmp) {
  constexpr std::uint16_t srgb = 1;
  correct<Exiv2::ExifData, Exiv2::ExifKey>(exif, "Exif.Photo.ColorSpace", srgb);
  correct<Exiv2::XmpData, Exiv2::XmpKey>(xmp, "Xmp.exif.ColorSpace", std::string("1"));
  eraseIf(xmp, [](const auto& datum) { return datum.key() == "Xmp.photoshop.ICCProfile"; });
}

/// The library gives some relative paths a meaning of their own, such as "-".
auto openedByLibrary(const QString& path) {
  const QString absolutePath = QFileInfo(path).absoluteFilePath();
  return Exiv2::ImageFactory::open(QFile::encodeName(absolutePath).toStdString(), false);
}

Exiv2::byte* bytesOf(const QByteArray& bytes) {
  return const_cast<Exiv2::byte*>(reinterpret_cast<const Exiv2::byte*>(bytes.constData()));
}

/// The file with this metadata; nothing if it can't be written.
template <typename Contents>
std::optional<QByteArray> withMetadata(const QByteArray& file, Contents ours, const QSize& size) {
  try {
    const auto image = Exiv2::ImageFactory::open(bytesOf(file), static_cast<long>(file.size()));
    image->readMetadata();
    correctSize(ours.exif, ours.xmp, size);
    correctColorSpace(ours.exif, ours.xmp);
    for (const Exiv2::Exifdatum& datum : ours.exif) {
      eraseIf(image->exifData(), [&](const auto& written) { return written.key() == datum.key(); });
    }
    for (const Exiv2::Exifdatum& datum : ours.exif) image->exifData().add(datum);
    image->setXmpData(ours.xmp);
    image->setIptcData(ours.iptc);
    image->writeMetadata();
    Exiv2::BasicIo& io = image->io();
    if (io.open() != 0 || io.seek(0, Exiv2::BasicIo::beg) != 0) return std::nullopt;
    QByteArray bytes(static_cast<qsizetype>(io.size()), Qt::Uninitialized);
    const long count = io.read(bytesOf(bytes), static_cast<long>(bytes.size()));
    if (count != bytes.size()) return std::nullopt;
    return bytes;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

ImageMetadata::ImageMetadata(std::unique_ptr<Contents> contents, std::optional<PixelDensity> density)
    : contents_(std::move(contents)), density_(density) {}

std::shared_ptr<const ImageMetadata> ImageMetadata::of(const Document& document) {
  return std::dynamic_pointer_cast<const ImageMetadata>(document.sourceMetadata.value());
}

ImageMetadata::~ImageMetadata() = default;

std::shared_ptr<const ImageMetadata> ImageMetadata::read(const QString& path, QIODevice& file,
                                                         Orientation orientation) {
  auto contents = std::make_unique<Contents>();
  std::optional<PixelDensity> density = densityOfHeader(file);
  try {
    const std::lock_guard lock(libraryMutex());
    const auto image = openedByLibrary(path);
    image->readMetadata();
    contents->exif = image->exifData();
    contents->xmp = image->xmpData();
    contents->iptc = image->iptcData();
    // The library doesn't read the eXIf chunk of a PNG.
    const QByteArray chunk = exifOfPng(file);
    if (contents->exif.empty() && !chunk.isEmpty()) {
      Exiv2::ExifParser::decode(contents->exif, bytesOf(chunk), static_cast<std::uint32_t>(chunk.size()));
    }
    if (!density) density = orvanel::densityOf(contents->exif);
    eraseIf(contents->exif, describesStorage);
    if (orientation == Orientation::applied) eraseOrientation(contents->exif, contents->xmp);
  } catch (const std::exception&) {
    *contents = {};
  }
  if (contents->isEmpty() && !density) return nullptr;
  return std::shared_ptr<const ImageMetadata>(new ImageMetadata(std::move(contents), density));
}

QImage ImageMetadata::thumbnailIn(const QString& path) {
  QByteArray jpeg;
  try {
    const std::lock_guard lock(libraryMutex());
    const auto image = openedByLibrary(path);
    image->readMetadata();
    const Exiv2::DataBuf bytes = Exiv2::ExifThumbC(image->exifData()).copy();
    jpeg = QByteArray(reinterpret_cast<const char*>(bytes.pData_), static_cast<qsizetype>(bytes.size_));
  } catch (const std::exception&) {
    return {};
  }
  QBuffer source(&jpeg);
  source.open(QIODevice::ReadOnly);
  QImageReader reader(&source, "jpeg");
  reader.setDecideFormatFromContent(false);
  const QSize size = reader.size();
  if (size.isEmpty() || std::max(size.width(), size.height()) > largestThumbnailSide) return {};
  return reader.read();
}

QByteArray ImageMetadata::addedTo(const QByteArray& file, const QSize& size) const {
  if (contents_->isEmpty()) return file;
  const std::lock_guard lock(libraryMutex());
  for (const Parts& parts : partsByPreference) {
    if (auto bytes = withMetadata(file, contents_->only(parts), size)) return *std::move(bytes);
  }
  return file;
}

}  // namespace orvanel
