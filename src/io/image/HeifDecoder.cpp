#include "io/image/HeifDecoder.h"

#include <libheif/heif.h>

#include <QColorSpace>
#include <algorithm>
#include <cstring>
#include <memory>

#include "io/files/LazyLibrary.h"
#include "io/image/ImageLimits.h"

namespace orvanel {
namespace {

struct HeifLibrary : LazyLibrary {
  HeifLibrary() : LazyLibrary(QStringLiteral("heif"), 1) {}

#define ORVANEL_HEIF(name) decltype(::heif_##name)* name = find<decltype(::heif_##name)>("heif_" #name)
  ORVANEL_HEIF(context_alloc);
  ORVANEL_HEIF(context_free);
  ORVANEL_HEIF(context_read_from_memory_without_copy);
  ORVANEL_HEIF(context_get_primary_image_handle);
  ORVANEL_HEIF(image_handle_release);
  ORVANEL_HEIF(image_handle_get_width);
  ORVANEL_HEIF(image_handle_get_height);
  ORVANEL_HEIF(image_handle_has_alpha_channel);
  ORVANEL_HEIF(image_handle_get_luma_bits_per_pixel);
  ORVANEL_HEIF(image_handle_get_raw_color_profile_size);
  ORVANEL_HEIF(image_handle_get_raw_color_profile);
  ORVANEL_HEIF(decode_image);
  ORVANEL_HEIF(image_release);
  ORVANEL_HEIF(image_get_width);
  ORVANEL_HEIF(image_get_height);
  ORVANEL_HEIF(image_get_plane_readonly);
#undef ORVANEL_HEIF
};

const HeifLibrary& heif() {
  static const HeifLibrary library;
  return library;
}

tl::unexpected<QString> failed(const heif_error& error) {
  return because(QStringLiteral("%1.").arg(QString::fromUtf8(error.message)));
}

Described<QImage> copyOfPixels(const HeifLibrary& api, const heif_image* decoded, bool hasAlpha) {
  int stride = 0;
  const std::uint8_t* plane = api.image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
  const QSize size(api.image_get_width(decoded, heif_channel_interleaved),
                   api.image_get_height(decoded, heif_channel_interleaved));
  // The coded picture needn't have the size that the file announces.
  if (const auto judged = judgeImageSize(size); !judged) return because(judged.error());
  QImage image(size, hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
  if (plane == nullptr || image.isNull()) return because(notEnoughMemory());
  for (int y = 0; y < size.height(); ++y) {
    std::memcpy(image.scanLine(y), plane + static_cast<std::ptrdiff_t>(y) * stride,
                static_cast<std::size_t>(size.width()) * 4);
  }
  return image;
}

}  // namespace

Described<HeifImage> decodeHeif(const QByteArray& file) {
  const HeifLibrary& api = heif();
  if (!api.isComplete()) return because(QStringLiteral("Reading this format needs libheif."));

  const std::unique_ptr<heif_context, decltype(api.context_free)> context(api.context_alloc(),
                                                                          api.context_free);
  const heif_error opened = api.context_read_from_memory_without_copy(
      context.get(), file.constData(), static_cast<std::size_t>(file.size()), nullptr);
  if (opened.code != heif_error_Ok) return failed(opened);

  heif_image_handle* rawHandle = nullptr;
  const heif_error found = api.context_get_primary_image_handle(context.get(), &rawHandle);
  if (found.code != heif_error_Ok) return failed(found);
  const std::unique_ptr<heif_image_handle, decltype(api.image_handle_release)> handle(
      rawHandle, api.image_handle_release);
  const QSize announced(api.image_handle_get_width(rawHandle), api.image_handle_get_height(rawHandle));
  if (const auto judged = judgeImageSize(announced); !judged) return because(judged.error());

  heif_image* rawImage = nullptr;
  const heif_error decoded =
      api.decode_image(rawHandle, &rawImage, heif_colorspace_RGB, heif_chroma_interleaved_RGBA, nullptr);
  if (decoded.code != heif_error_Ok) return failed(decoded);
  const std::unique_ptr<heif_image, decltype(api.image_release)> pixels(rawImage, api.image_release);

  Described<QImage> image = copyOfPixels(api, rawImage, api.image_handle_has_alpha_channel(rawHandle) != 0);
  if (!image) return because(image.error());
  QByteArray profile(static_cast<qsizetype>(api.image_handle_get_raw_color_profile_size(rawHandle)), '\0');
  if (!profile.isEmpty() &&
      api.image_handle_get_raw_color_profile(rawHandle, profile.data()).code == heif_error_Ok) {
    image->setColorSpace(QColorSpace::fromIccProfile(profile));
  }
  return HeifImage{std::move(*image), std::max(8, api.image_handle_get_luma_bits_per_pixel(rawHandle))};
}

}  // namespace orvanel
