// The first steps of loading a document: open the archive, parse its manifest, allocate surfaces, build the
// tree. Only building touches the model and runs on the main thread, in time proportional to the number
// of nodes; the other steps run anywhere. Pixels follow in `TextureLoading.h`.
#pragma once

#include <QString>
#include <QUuid>
#include <functional>
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

/// A surface to be filled from an entry.
struct TextureLoadRequest {
  std::size_t entry = 0;
  Texture destination;
};

/// A node of the tree to be built, with its surfaces.
struct PlannedNode {
  std::size_t manifest = 0;  ///< its place in the manifest's list
  QUuid id;
  Texture pixels = nullptr;
  QUuid maskID = {};
  Texture mask = nullptr;
};

/// A valid manifest, and the surfaces allocated for it.
struct DocumentPlan {
  Manifest manifest;
  /// The valid nodes of the manifest, in its order.
  std::vector<PlannedNode> nodes = {};
};

/// Checks what the manifest asks for against the limits of documents, and allocates the surfaces. A mask for
/// which there is no entry of this path is left out.
[[nodiscard]] Described<DocumentPlan> planDocument(Manifest manifest, const MetalContext& context,
                                                   const std::function<bool(const QString& path)>& hasEntry,
                                                   const Progress& progress = {});

/// An archive with the plan of its document.
struct OpenedDocument : DocumentPlan {
  ZipReader archive;
  std::vector<TextureLoadRequest> requests;
};

/// The manifest of an archive, with a canvas of a possible size.
[[nodiscard]] Described<Manifest> readManifest(const ZipReader& archive, const Progress& progress = {});

[[nodiscard]] Described<OpenedDocument> openDocument(const QString& path, const MetalContext& context,
                                                     const Progress& progress = {});
/// The bytes must outlive the result.
[[nodiscard]] Described<OpenedDocument> openDocument(std::span<const std::byte> bytes,
                                                     const MetalContext& context,
                                                     const Progress& progress = {});

/// Builds the document; its surfaces are still empty. Main thread.
[[nodiscard]] DocumentPtr buildDocument(const DocumentPlan& plan, MetalContext& context);

}  // namespace orvanel
