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

/// The one version of the format there is.
inline constexpr std::int64_t documentFormatVersion = 3;
/// The longest manifest, in bytes; nothing longer is written or read.
inline constexpr std::uint64_t maximumManifestBytes = std::uint64_t{64} << 20U;

struct MaskManifest {
  QString id;
  bool isEnabled = true;
};

/// A layer or a folder; what only one of them has is absent in the other.
struct NodeManifest {
  /// How many folders it lies in.
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
  /// Whether it lists children, which may be none.
  bool hasChildren = false;
};

/// `normal` for a number that is none of a blend mode.
[[nodiscard]] BlendMode blendModeOf(const NodeManifest& node);
/// Whether a folder doesn't let its children through: it gets a surface of its own when it is shown.
[[nodiscard]] bool isolates(const NodeManifest& node);

/// Whole subtrees in depth-first order: the children of a node follow it, one level deeper. A tree of any
/// depth is a plain array, and no walk over it recurses.
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
/// Adds members of its own behind those of a node.
using NodeExtras = std::function<void(JsonWriter& json, const NodeManifest& node)>;
/// Writes the array of the nodes at depth 0, with all below them, keys sorted.
void writeNodes(JsonWriter& json, const NodeManifestList& nodes, const NodeExtras& extras = {});

/// Pretty-printed UTF-8 with sorted keys.
[[nodiscard]] QByteArray encodeManifest(const Manifest& manifest);
/// Refuses another version before it looks at anything else, then missing keys and values of another type.
[[nodiscard]] Described<Manifest> decodeManifest(std::string_view text, const Progress& progress = {});

/// The nodes and all below them. Main thread.
[[nodiscard]] NodeManifestList describeNodes(const LayerNodeList& nodes);
/// The whole document, saved at this moment. Fails when an opacity is not a finite number. Main thread.
[[nodiscard]] Described<Manifest> describeDocument(const Document& document);

}  // namespace orvanel
