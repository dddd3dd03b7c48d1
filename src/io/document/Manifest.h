// The manifest of a document file: the tree and all settings that are not pixels, as JSON. Plain values,
// any thread; only the functions that read a document or a node belong to the main thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "io/files/FileError.h"
#include "io/files/Progress.h"
#include "raster/ColorMode.h"

namespace orvanel {

class Document;
class LayerNode;
using LayerNodeList = std::vector<LayerNode>;

/// The only version of the format.
inline constexpr std::int64_t documentFormatVersion = 3;
/// The largest manifest that is read or written, in bytes.
inline constexpr std::uint64_t maximumManifestBytes = std::uint64_t{64} << 20U;

struct MaskManifest {
  QString id;
  bool isEnabled = true;
};

/// A layer or a folder; fields that belong to only one of them are absent in the other.
struct NodeManifest {
  /// The number of folders around it.
  int depth = 0;
  QString type;
  QString id;
  QString name;
  float opacity = 1.0F;
  std::int64_t blendMode = 0;
  bool isVisible = true;
  bool isLocked = false;
  std::optional<bool> hasPixelData;
  std::optional<MaskManifest> mask;
  std::optional<bool> isExpanded;
  /// Whether it has a list of children, which may be empty.
  bool hasChildren = false;
};

/// The node's blend mode; `normal` for an unknown number.
[[nodiscard]] BlendMode blendModeOf(const NodeManifest& node);
/// Whether a folder is composited in isolation, which takes a surface of its own.
[[nodiscard]] bool isolates(const NodeManifest& node);

/// Subtrees in depth-first order: a node's children follow it, one level deeper. The list is flat, so that no
/// walk over it recurses.
using NodeManifestList = std::vector<NodeManifest>;

struct MetadataManifest {
  QString createdAt;
  QString modifiedAt;
};

struct DocumentManifest {
  QString name;
  std::int64_t canvasWidth = 0;
  std::int64_t canvasHeight = 0;
  std::int64_t colorMode = 0;
  std::optional<QString> selectedNodeID;
  std::optional<QString> foregroundColor;
  std::optional<QString> backgroundColor;
};

struct Manifest {
  std::int64_t formatVersion = documentFormatVersion;
  QString generator;
  MetadataManifest metadata;
  DocumentManifest document;
  NodeManifestList nodes;
};

class JsonWriter;
/// Appends members to a node's own.
using NodeExtras = std::function<void(JsonWriter& json, const NodeManifest& node)>;
/// Writes the nodes as nested arrays with sorted keys.
void writeNodes(JsonWriter& json, const NodeManifestList& nodes, const NodeExtras& extras = {});

/// Pretty-printed UTF-8 with sorted keys.
[[nodiscard]] QByteArray encodeManifest(const Manifest& manifest);
/// Rejects other versions first, then missing keys and values of the wrong type.
[[nodiscard]] Described<Manifest> decodeManifest(std::string_view text, const Progress& progress = {});

/// Describes the nodes and everything below them. Main thread.
[[nodiscard]] NodeManifestList describeNodes(const LayerNodeList& nodes);
/// Describes the document as of now. Fails if an opacity is not finite. Main thread.
[[nodiscard]] Described<Manifest> describeDocument(const Document& document);

}  // namespace orvanel
