// What an image file says about its picture beside the pixels: EXIF, XMP, IPTC and how dense its pixels lie.
// Read with the picture, kept as it is, and written with it again. Immutable and shared, any thread.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QImage>
#include <QString>
#include <memory>
#include <optional>

namespace orvanel {

/// How many pixels lie on a metre.
struct PixelDensity {
  int acrossPerMeter = 0;
  int downPerMeter = 0;
};

class ImageMetadata {
 public:
  /// Whether the pixels have been turned upright as the file's orientation says.
  enum class Orientation { applied, ignored };

  /// Null when the file says nothing, or nothing that can be understood. `file` is the one at `path`.
  [[nodiscard]] static std::shared_ptr<const ImageMetadata> read(const QString& path, QIODevice& file,
                                                                 Orientation orientation);
  ~ImageMetadata();
  ImageMetadata(const ImageMetadata&) = delete;
  ImageMetadata& operator=(const ImageMetadata&) = delete;

  [[nodiscard]] const std::optional<PixelDensity>& density() const { return density_; }

  /// A JPEG, PNG or TIFF file with this metadata, made to agree with an image of `size` in sRGB; the file as
  /// it stands when that can't be done.
  [[nodiscard]] QByteArray addedTo(const QByteArray& file, const QSize& size) const;

 private:
  struct Contents;
  ImageMetadata(std::unique_ptr<Contents> contents, std::optional<PixelDensity> density);

  std::unique_ptr<const Contents> contents_;
  std::optional<PixelDensity> density_;
};

}  // namespace orvanel
