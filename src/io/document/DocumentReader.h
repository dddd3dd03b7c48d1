// The steps of loading a document: open the archive and understand its manifest, build the tree, fill the
// surfaces. Only the middle step touches the model and runs on the main thread; the others run anywhere.
#pragma once

#include <span>
#include <unordered_map>
#include <vector>

#include "io/archive/ZipReader.h"
#include "io/archive/ZipWriter.h"
#include "io/document/Manifest.h"
#include "io/files/FileError.h"
#include "model/Document.h"

namespace orvanel {

class MetalContext;

/// An archive whose manifest has been read and judged.
struct OpenedDocument {
  ZipReader archive;
  Manifest manifest;
};

/// A surface that waits for the pixels of an entry.
struct TextureLoadRequest {
  std::size_t entry = 0;
  Texture destination;
};

struct BuiltDocument {
  DocumentPtr document;
  std::vector<TextureLoadRequest> requests;
};

[[nodiscard]] Described<OpenedDocument> openDocument(const QString& path, const Progress& progress = {});
/// Over bytes that outlive the result.
[[nodiscard]] Described<OpenedDocument> openDocument(std::span<const std::byte> bytes,
                                                     const Progress& progress = {});

/// Main thread.
[[nodiscard]] Described<BuiltDocument> buildDocument(const OpenedDocument& opened, MetalContext& context);

/// Reads every entry, fills the surfaces that were asked for and checks the rest.
[[nodiscard]] Described<void> fillTextures(const OpenedDocument& opened,
                                           const std::vector<TextureLoadRequest>& requests,
                                           const Progress& progress);

/// Whether the composite and the folders' surfaces fit in memory beside the pixels read. Main thread.
[[nodiscard]] Described<void> judgeShownMemory(const Document& document);

}  // namespace orvanel
