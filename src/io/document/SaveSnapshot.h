// A snapshot of a document, passed from the main thread to the one that saves: the encoded manifest, and
// surfaces that share their tiles with the live ones. Taken on the main thread in time proportional to the
// number of nodes and tiles; no pixels are copied.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "io/archive/ZipWriter.h"
#include "io/document/SavedFile.h"
#include "io/files/FileError.h"
#include "raster/Surface.h"

namespace orvanel {

class Document;
class FrozenComposite;

struct SaveSnapshot {
  struct LayerEntry {
    QString entryPath;
    std::shared_ptr<const Surface> texture;
    std::uint16_t layerdataFormat = 3;
    PixelFormat metalPixelFormat = PixelFormat::rgba16Float;
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t bpp = 0;
  };

  QByteArray manifestData;
  /// One for each surface, in tree order.
  std::vector<LayerEntry> layerEntries;
  /// For the preview; flattened in the background where it isn't current. Null without a composite.
  std::shared_ptr<FrozenComposite> compositedTexture;
  PixelFormat previewPixelFormat = PixelFormat::rgba8Unorm;
  std::int64_t previewBytesPerPixel = 4;
  std::int64_t compositingBitsPerChannel = 8;
  /// What the document's file holds already; may be null.
  SavedFilePtr saved;

  [[nodiscard]] static Described<SaveSnapshot> take(const Document& document);
};

/// The archive's entry of a layer's surface, and of its mask's.
[[nodiscard]] QString layerEntryPath(const QString& layerID);
[[nodiscard]] QString maskEntryPath(const QString& layerID);

struct WrittenDocument {
  /// What the file holds; null if that can't be told.
  SavedFilePtr saved;
  /// Why the file may not survive a power cut; empty if it will.
  QString doubt;
};

/// Writes the document's archive to the destination. Copies unchanged chunks from the document's file, if
/// that file hasn't changed. `replaced` is the version of the destination that may be replaced: by default
/// what stands there now. Any thread; the work spreads over all cores.
[[nodiscard]] Described<WrittenDocument> writeSnapshot(const SaveSnapshot& snapshot,
                                                       const QString& destination, const Progress& progress,
                                                       std::optional<FileIdentity> replaced = {});

}  // namespace orvanel
