// Reads and writes common flat image files with 8 bits a channel: a file becomes one layer, and the composite
// is written. Decoding and encoding run on any thread; documents are made on the main thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <optional>

#include "io/files/AtomicFile.h"
#include "io/files/FileError.h"
#include "io/files/FileIdentity.h"
#include "io/files/Progress.h"
#include "model/Document.h"
#include "raster/Surface.h"

namespace orvanel {

class ImageMetadata;

/// The format that a file name's extension selects, in either case; nothing for any other extension.
[[nodiscard]] std::optional<Document::ImageFileFormat> imageFileFormat(const QString& path);

/// The pixel format of a file, as its decoder reports it.
struct ImageTraits {
  bool isMonochrome = false;  ///< by its colour space
  int bitsPerComponent = 8;
  int bitsPerPixel = 32;
};

/// Grey if the colour space is, or with 8 or 16 bits a pixel; deep from 9 bits a component.
[[nodiscard]] ColorMode colorMode(const ImageTraits& image);

/// A decoded file: upright, in sRGB, as a layer surface of its mode.
struct FlatImage {
  ColorMode mode = ColorMode::rgb8;
  Texture pixels;
  /// For the user, if the surface doesn't hold everything that is in the file; empty otherwise.
  QString warning;
  /// To be passed to `writeFlatImage`; null when the file has none.
  std::shared_ptr<const ImageMetadata> metadata = nullptr;
  /// Which file was read, if that can be told.
  std::optional<FileIdentity> identity = std::nullopt;
};

/// Decodes a file; fails with `loadFailed` if it is not an image or is larger than the largest canvas.
/// Progress is reported after the header, the decoding, the conversion to sRGB and to tiles. Cancellation
/// takes effect between these, and when the decoder reads from the file.
[[nodiscard]] FileResult<FlatImage> readFlatImage(const QString& path, const MetalContext& context,
                                                  const Progress& progress = {});

/// A document of one layer, both named after the file. An image with a warning gives the document no source
/// format, so that saving asks for a new file instead of overwriting this one. Main thread.
[[nodiscard]] DocumentPtr documentOfFlatImage(const FlatImage& image, const QString& path,
                                              MetalContext& context);

/// Both in one step. Main thread.
[[nodiscard]] FileResult<DocumentPtr> openImage(const QString& path, MetalContext& context,
                                                const Progress& progress = {});

/// Encodes a composite. Half floats are clamped to 0 to 1; formats without alpha get the image over white.
/// Returns nothing if the encoder fails or the work is cancelled. JPEG, PNG and TIFF carry all metadata, BMP
/// only the density, GIF none. PNG reports progress for each band of rows, the others after conversion and
/// encoding.
[[nodiscard]] std::optional<QByteArray> exportImage(const Surface& composite, ColorMode mode,
                                                    Document::ImageFileFormat fileType,
                                                    const MetalContext& context,
                                                    const Progress& progress = {},
                                                    const ImageMetadata* metadata = nullptr);

/// Encodes a composite and replaces the file at `path` atomically; fails with `exportFailed`. Returns which
/// file it is now, if that can be told. `replaced` is the version that may be replaced: by default what
/// stands there in the end. Any thread; progress is reported on it.
[[nodiscard]] FileResult<ReplacedFile> writeFlatImage(const Surface& composite, ColorMode mode,
                                                      Document::ImageFileFormat fileType, const QString& path,
                                                      const MetalContext& context,
                                                      const Progress& progress = {},
                                                      const ImageMetadata* metadata = nullptr,
                                                      std::optional<FileIdentity> replaced = {});
/// The same for a document's flattened image of one moment, which is finished first. A document without one
/// has nothing to write.
[[nodiscard]] FileResult<ReplacedFile> writeFlatImage(FrozenComposite* composite, ColorMode mode,
                                                      Document::ImageFileFormat fileType, const QString& path,
                                                      const MetalContext& context,
                                                      const Progress& progress = {},
                                                      const ImageMetadata* metadata = nullptr,
                                                      std::optional<FileIdentity> replaced = {});

}  // namespace orvanel
