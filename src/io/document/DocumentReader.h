// The first steps of loading a document: open the archive, understand its manifest, make the surfaces, build
// the tree. Only building touches the model and runs on the main thread, in time proportional to the number
// of nodes; the other steps run anywhere. Pixels follow in `TextureLoading.h`.
#pragma once

#include <QUuid>
#include <optional>
#include <span>
#include <vector>

#include "io/archive/ZipReader.h"
#include "io/document/Manifest.h"
#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "model/Document.h"

namespace orvanel {

class MetalContext;

/// A surface that waits for the pixels of an entry.
struct TextureLoadRequest {
  std::size_t entry = 0;
  Texture destination;
};

/// A node that the tree will have, with its surfaces.
struct PlannedNode {
  std::size_t manifest = 0;  ///< its place in the manifest's list
  QUuid id;
  Texture pixels = nullptr;
  QUuid maskID = {};
  Texture mask = nullptr;
};

/// An archive whose manifest has been read and judged, with a surface for everything it asks for.
struct OpenedDocument {
  ZipReader archive;
  Manifest manifest;
  /// Those of the manifest's nodes that are sound, in its order.
  std::vector<PlannedNode> nodes;
  std::vector<TextureLoadRequest> requests;
};

[[nodiscard]] Described<OpenedDocument> openDocument(const QString& path, const MetalContext& context,
                                                     const Progress& progress = {});
/// Over bytes that outlive the result.
[[nodiscard]] Described<OpenedDocument> openDocument(std::span<const std::byte> bytes,
                                                     const MetalContext& context,
                                                     const Progress& progress = {});

/// The document that was opened, its surfaces still without pixels. Main thread.
[[nodiscard]] DocumentPtr buildDocument(const OpenedDocument& opened, MetalContext& context);

}  // namespace orvanel
