// Arbitrary bytes as an image file whose header, structure and end the program reads by itself.
#include <QBuffer>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "Mutations.h"
#include "io/image/ImageEnd.h"
#include "io/image/ImageHeader.h"
#include "io/image/PictureCount.h"
#include "io/image/SvgSource.h"

namespace {

/// A file refuses positions beyond its end; a buffer says so on the console, too.
[[maybe_unused]] const QtMessageHandler printing =
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
  QBuffer file(&bytes);
  file.open(QIODevice::ReadOnly);
  const auto read = [&](auto query) {
    file.seek(0);
    return query(file);
  };
  const auto traits = read([](QIODevice& device) { return orvanel::traitsOfHeader(device); });
  if (traits && (traits->bitsPerComponent < 1 || traits->bitsPerPixel < 1)) std::abort();
  static_cast<void>(read([](QIODevice& device) { return orvanel::isTiff(device); }));
  static_cast<void>(read([](QIODevice& device) { return orvanel::densityOfHeader(device); }));
  static_cast<void>(read([](QIODevice& device) { return orvanel::exifOfPng(device); }));
  static_cast<void>(read([](QIODevice& device) { return orvanel::isPngForDisplay(device); }));
  static_cast<void>(read([](QIODevice& device) { return orvanel::endsTooEarly(device); }));
  static_cast<void>(read([](QIODevice& device) { return orvanel::framesOfPng(device); }));
  if (read([](QIODevice& device) { return orvanel::pictureCount(device); }) < 1) std::abort();
  const auto drawing = read([](QIODevice& device) { return orvanel::selfContainedSvg(device); });
  if (!drawing && drawing.error().isEmpty()) std::abort();
  if (drawing && drawing->contains("<!DOCTYPE")) std::abort();
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t most,
                                               unsigned int seed) {
  orvanel::fuzz::Random random(seed);
  const std::size_t mutated = orvanel::fuzz::handedOver({}, data, size, most);
  if (orvanel::fuzz::choose(random, 4) != 0) orvanel::fuzz::mendPng({data, mutated});
  return mutated;
}
