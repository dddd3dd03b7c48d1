// HEIC files for tests, written by libheif if it has an encoder.
#pragma once

#include <libheif/heif.h>

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QLibrary>
#include <QTemporaryDir>
#include <cstring>
#include <memory>
#include <optional>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace orvanel::testing {

/// Suppresses leak detection on this thread: the encoder leaks its own parameters.
#ifdef __SANITIZE_ADDRESS__
using UncountedLeaks = __lsan::ScopedDisabler;
#else
struct UncountedLeaks {};
#endif

/// The library's functions for writing, looked up at run time so that nothing else links it.
struct HeifWriter {
  QLibrary library{QStringLiteral("heif"), 1};

  template <typename Function>
  Function* find(const char* name) {
    return reinterpret_cast<Function*>(library.resolve(name));
  }

#define ORVANEL_HEIF(name) decltype(::heif_##name)* name = find<decltype(::heif_##name)>("heif_" #name)
  ORVANEL_HEIF(context_alloc);
  ORVANEL_HEIF(context_free);
  ORVANEL_HEIF(have_encoder_for_format);
  ORVANEL_HEIF(context_get_encoder_for_format);
  ORVANEL_HEIF(encoder_release);
  ORVANEL_HEIF(encoder_set_lossy_quality);
  ORVANEL_HEIF(image_create);
  ORVANEL_HEIF(image_release);
  ORVANEL_HEIF(image_add_plane);
  ORVANEL_HEIF(image_get_plane);
  ORVANEL_HEIF(image_set_raw_color_profile);
  ORVANEL_HEIF(context_encode_image);
  ORVANEL_HEIF(context_write_to_file);
#undef ORVANEL_HEIF

  static const HeifWriter& shared() {
    static const HeifWriter writer;
    return writer;
  }
  [[nodiscard]] bool canEncode() const {
    return library.isLoaded() && have_encoder_for_format(heif_compression_HEVC) != 0;
  }
};

/// Encodes an image with straight alpha or none, and its colour profile; nothing when the library fails.
inline std::optional<QByteArray> heicOf(const QImage& picture) {
  [[maybe_unused]] const UncountedLeaks encodersLeaks;
  const HeifWriter& api = HeifWriter::shared();
  const bool hasAlpha = picture.hasAlphaChannel();
  const QImage pixels = picture.convertToFormat(hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
  const std::unique_ptr<heif_context, decltype(api.context_free)> context(api.context_alloc(),
                                                                          api.context_free);
  heif_encoder* rawEncoder = nullptr;
  if (api.context_get_encoder_for_format(context.get(), heif_compression_HEVC, &rawEncoder).code !=
      heif_error_Ok) {
    return std::nullopt;
  }
  const std::unique_ptr<heif_encoder, decltype(api.encoder_release)> encoder(rawEncoder, api.encoder_release);
  api.encoder_set_lossy_quality(rawEncoder, 95);
  heif_image* rawImage = nullptr;
  if (api.image_create(pixels.width(), pixels.height(), heif_colorspace_RGB,
                       hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB, &rawImage)
          .code != heif_error_Ok) {
    return std::nullopt;
  }
  const std::unique_ptr<heif_image, decltype(api.image_release)> image(rawImage, api.image_release);
  api.image_add_plane(rawImage, heif_channel_interleaved, pixels.width(), pixels.height(), 8);
  int stride = 0;
  std::uint8_t* plane = api.image_get_plane(rawImage, heif_channel_interleaved, &stride);
  for (int y = 0; y < pixels.height(); ++y) {
    std::memcpy(plane + static_cast<std::ptrdiff_t>(y) * stride, pixels.constScanLine(y),
                static_cast<std::size_t>(pixels.width()) * (hasAlpha ? 4U : 3U));
  }
  if (const QByteArray profile = picture.colorSpace().iccProfile(); !profile.isEmpty()) {
    api.image_set_raw_color_profile(rawImage, "prof", profile.constData(),
                                    static_cast<std::size_t>(profile.size()));
  }
  const QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("written.heic")));
  if (api.context_encode_image(context.get(), rawImage, rawEncoder, nullptr, nullptr).code != heif_error_Ok ||
      api.context_write_to_file(context.get(), QFile::encodeName(file.fileName()).constData()).code !=
          heif_error_Ok ||
      !file.open(QIODevice::ReadOnly)) {
    return std::nullopt;
  }
  return file.readAll();
}

/// The same file with another declared image size.
inline QByteArray heicAnnouncing(QByteArray file, std::uint32_t width, std::uint32_t height) {
  constexpr qsizetype behindNameAndVersion = 8;
  for (qsizetype at = file.indexOf("ispe"); at >= 0; at = file.indexOf("ispe", at + 1)) {
    for (int byte = 0; byte < 4; ++byte) {
      file[at + behindNameAndVersion + byte] = static_cast<char>(width >> (24 - 8 * byte) & 0xFFU);
      file[at + behindNameAndVersion + 4 + byte] = static_cast<char>(height >> (24 - 8 * byte) & 0xFFU);
    }
  }
  return file;
}

}  // namespace orvanel::testing
