// The metadata of an image file: EXIF, XMP, IPTC and pixel density. It is read with the image, kept as an
// opaque value and written with the image again. Immutable and shared, any thread.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QImage>
#include <QString>
#include <memory>
#include <optional>

#include "model/Document.h"

namespace orvanel {

/// Pixels per metre.
struct PixelDensity {
  int acrossPerMeter = 0;
  int downPerMeter = 0;
};

class ImageMetadata : public SourceMetadata {
 public:
  /// Whether the decoder has applied the file's orientation to the pixels.
  enum class Orientation { applied, ignored };

  /// Null when the file has no readable metadata. `file` must be the one at `path`.
  [[nodiscard]] static std::shared_ptr<const ImageMetadata> read(const QString& path, QIODevice& file,
                                                                 Orientation orientation);
  /// The small picture that a camera has put into the file's metadata, as it stands there; null for none.
  [[nodiscard]] static QImage thumbnailIn(const QString& path);
  /// Of the image that the document was opened from; null when there is none.
  [[nodiscard]] static std::shared_ptr<const ImageMetadata> of(const Document& document);
  ~ImageMetadata() override;

  [[nodiscard]] const std::optional<PixelDensity>& density() const { return density_; }

  /// Adds the metadata to a JPEG, PNG or TIFF file, corrected for an image of `size` in sRGB. Kinds of
  /// metadata that the file can't hold are left out.
  [[nodiscard]] QByteArray addedTo(const QByteArray& file, const QSize& size) const;

 private:
  struct Contents;
  ImageMetadata(std::unique_ptr<Contents> contents, std::optional<PixelDensity> density);

  std::unique_ptr<const Contents> contents_;
  std::optional<PixelDensity> density_;
};

}  // namespace orvanel
