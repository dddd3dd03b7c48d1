// Opens and writes common flat image files: one layer in, the composite out, 8 bits a channel both ways.
// Decoding and encoding run on any thread; documents are made on the main thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <optional>

#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "model/Document.h"
#include "raster/Surface.h"

namespace orvanel {

class ImageMetadata;

/// The format that a file name's extension selects, in either case; nothing for any other extension.
[[nodiscard]] std::optional<Document::ImageFileFormat> imageFileFormat(const QString& path);

/// What a decoded file says of its pixels.
struct ImageTraits {
  bool isMonochrome = false;  ///< by its colour space
  int bitsPerComponent = 8;
  int bitsPerPixel = 32;
};

/// Grey counts by colour space, or by 8 or 16 bits a pixel; deep from 9 bits a component.
[[nodiscard]] ColorMode colorMode(const ImageTraits& image);

/// A decoded file: upright, in sRGB, as a layer's surface of its mode.
struct FlatImage {
  ColorMode mode = ColorMode::rgb8;
  Texture pixels;
  /// A sentence for the user about what is missing of the image; empty when all of it is there.
  QString warning;
  /// For `writeFlatImage`, so that the image keeps it; null when the file has none.
  std::shared_ptr<const ImageMetadata> metadata = nullptr;
};

/// Decodes a file; what is no image, or larger than a canvas can be, is `loadFailed`.
/// Progress comes in steps: header, decoded, in sRGB, in tiles. Cancelled work ends between them, or as soon
/// as the decoder asks for more of the file.
[[nodiscard]] FileResult<FlatImage> readFlatImage(const QString& path, const MetalContext& context,
                                                  const Progress& progress = {});

/// A document of one layer, both named after the file. It has no format to be saved in when part of the image
/// is missing, so that saving doesn't destroy what the file still holds. Main thread.
[[nodiscard]] DocumentPtr documentOfFlatImage(const FlatImage& image, const QString& path,
                                              MetalContext& context);

/// Both in one step. Main thread.
[[nodiscard]] FileResult<DocumentPtr> openImage(const QString& path, MetalContext& context,
                                                const Progress& progress = {});

/// A composite encoded as a file's bytes; half floats are clamped to 0 to 1, and formats without alpha
/// get the image over white. Nothing when the encoder fails or the work is cancelled. Metadata goes where the
/// format can carry it: all of it into JPEG, PNG and TIFF, only the density into BMP, none into GIF. A PNG
/// tells of progress band by band, the others when the picture is converted and when it is encoded.
[[nodiscard]] std::optional<QByteArray> exportImage(const Surface& composite, ColorMode mode,
                                                    Document::ImageFileFormat fileType,
                                                    const MetalContext& context,
                                                    const Progress& progress = {},
                                                    const ImageMetadata* metadata = nullptr);

/// The same, put at `path` in one step for whoever looks; what goes wrong is `exportFailed`. Any thread, on
/// which progress is told.
[[nodiscard]] FileResult<void> writeFlatImage(const Surface& composite, ColorMode mode,
                                              Document::ImageFileFormat fileType, const QString& path,
                                              const MetalContext& context, const Progress& progress = {},
                                              const ImageMetadata* metadata = nullptr);
/// The same for a document's flattened image of one moment, which is finished first. A document without one
/// has nothing to write.
[[nodiscard]] FileResult<void> writeFlatImage(FrozenComposite* composite, ColorMode mode,
                                              Document::ImageFileFormat fileType, const QString& path,
                                              const MetalContext& context, const Progress& progress = {},
                                              const ImageMetadata* metadata = nullptr);

}  // namespace orvanel
