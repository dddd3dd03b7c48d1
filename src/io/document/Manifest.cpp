#include "io/document/Manifest.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <cmath>
#include <utility>

#include "io/document/Json.h"
#include "model/Document.h"

namespace orvanel {
namespace {

/// Tracks which required keys of an object have been read.
class RequiredKeys {
 public:
  RequiredKeys(const char* what, std::initializer_list<const char*> keys) : what_(what), missing_(keys) {}

  void met(const QString& key) {
    std::erase_if(missing_, [&](const char* name) { return key == QLatin1String(name); });
  }
  void check(JsonReader& json) const {
    if (missing_.empty()) return;
    json.fail(QStringLiteral("%1 has no \"%2\"").arg(QLatin1String(what_), QLatin1String(missing_.front())));
  }

 private:
  const char* what_;
  std::vector<const char*> missing_;
};

MaskManifest readMask(JsonReader& json) {
  MaskManifest mask;
  RequiredKeys required("a mask", {"id", "isEnabled"});
  json.object([&](const QString& key) {
    required.met(key);
    if (key == u"id") {
      mask.id = json.string();
    } else if (key == u"isEnabled") {
      mask.isEnabled = json.boolean();
    } else {
      json.skip();
    }
  });
  required.check(json);
  return mask;
}

bool readOptionalOfNode(JsonReader& json, const QString& key, NodeManifest& node) {
  if (key != u"hasPixelData" && key != u"mask" && key != u"isExpanded") return false;
  if (json.takeNull()) return true;
  if (key == u"hasPixelData") {
    node.hasPixelData = json.boolean();
  } else if (key == u"mask") {
    node.mask = readMask(json);
  } else {
    node.isExpanded = json.boolean();
  }
  return true;
}

float readOpacity(JsonReader& json) {
  const auto opacity = static_cast<float>(json.number());
  if (!std::isfinite(opacity)) json.fail(QStringLiteral("an opacity is out of range"));
  return opacity;
}

/// A member of a node other than its children.
void readMemberOfNode(JsonReader& json, const QString& key, NodeManifest& node) {
  if (key == u"type") {
    node.type = json.string();
  } else if (key == u"id") {
    node.id = json.string();
  } else if (key == u"name") {
    node.name = json.string();
  } else if (key == u"opacity") {
    node.opacity = readOpacity(json);
  } else if (key == u"blendMode") {
    node.blendMode = json.integer();
  } else if (key == u"isVisible") {
    node.isVisible = json.boolean();
  } else if (key == u"isLocked") {
    node.isLocked = json.boolean();
  } else if (!readOptionalOfNode(json, key, node)) {
    json.skip();
  }
}

/// Reads an array of nodes and everything below them, with an explicit stack of open nodes.
class NodesReader {
 public:
  NodesReader(JsonReader& json, const Progress& progress) : json_(json), progress_(progress) {}

  NodeManifestList read() {
    json_.beginArray();
    while (!json_.hasFailed() && (json_.nextElement() ? beginNode() : endArray())) {
      readMembers();
    }
    return std::move(nodes_);
  }

 private:
  struct OpenNode {
    std::size_t index;
    RequiredKeys required;
  };

  bool beginNode() {
    if (progress_.isCancelled()) json_.fail(cancelled().value());
    json_.beginObject();
    nodes_.emplace_back().depth = static_cast<int>(open_.size());
    open_.push_back({nodes_.size() - 1,
                     {"a node", {"type", "id", "name", "opacity", "blendMode", "isVisible", "isLocked"}}});
    return true;
  }

  /// Returns to the parent node; false after the outermost array.
  [[nodiscard]] bool endArray() const { return !open_.empty(); }

  /// Reads members up to the node's children or its end.
  void readMembers() {
    while (const auto key = json_.nextKey()) {
      OpenNode& node = open_.back();
      node.required.met(*key);
      if (*key != u"children") {
        readMemberOfNode(json_, *key, nodes_[node.index]);
      } else if (!json_.takeNull()) {
        if (std::exchange(nodes_[node.index].hasChildren, true)) {
          json_.fail(QStringLiteral("a node has \"children\" twice"));
        }
        json_.beginArray();
        return;
      }
    }
    open_.back().required.check(json_);
    open_.pop_back();
  }

  JsonReader& json_;
  const Progress& progress_;
  NodeManifestList nodes_;
  std::vector<OpenNode> open_;
};

MetadataManifest readMetadata(JsonReader& json) {
  MetadataManifest metadata;
  RequiredKeys required("\"metadata\"", {"createdAt", "modifiedAt"});
  json.object([&](const QString& key) {
    required.met(key);
    if (key == u"createdAt") {
      metadata.createdAt = json.string();
    } else if (key == u"modifiedAt") {
      metadata.modifiedAt = json.string();
    } else {
      json.skip();
    }
  });
  required.check(json);
  return metadata;
}

std::optional<QString> readOptionalText(JsonReader& json) {
  if (json.takeNull()) return std::nullopt;
  return json.string();
}

DocumentManifest readDocument(JsonReader& json) {
  DocumentManifest document;
  RequiredKeys required("\"document\"", {"name", "canvasWidth", "canvasHeight", "colorMode"});
  json.object([&](const QString& key) {
    required.met(key);
    if (key == u"name") {
      document.name = json.string();
    } else if (key == u"canvasWidth") {
      document.canvasWidth = json.integer();
    } else if (key == u"canvasHeight") {
      document.canvasHeight = json.integer();
    } else if (key == u"colorMode") {
      document.colorMode = json.integer();
    } else if (key == u"selectedNodeID") {
      document.selectedNodeID = readOptionalText(json);
    } else if (key == u"foregroundColor") {
      document.foregroundColor = readOptionalText(json);
    } else if (key == u"backgroundColor") {
      document.backgroundColor = readOptionalText(json);
    } else {
      json.skip();
    }
  });
  required.check(json);
  return document;
}

Manifest readManifest(JsonReader& json, const Progress& progress) {
  Manifest manifest;
  RequiredKeys required("it", {"formatVersion", "generator", "metadata", "document", "nodes"});
  json.object([&](const QString& key) {
    required.met(key);
    if (key == u"formatVersion") {
      manifest.formatVersion = json.integer();
    } else if (key == u"generator") {
      manifest.generator = json.string();
    } else if (key == u"metadata") {
      manifest.metadata = readMetadata(json);
    } else if (key == u"document") {
      manifest.document = readDocument(json);
    } else if (key == u"nodes") {
      manifest.nodes = NodesReader(json, progress).read();
    } else {
      json.skip();
    }
  });
  required.check(json);
  return manifest;
}

/// Reads only the version of a manifest.
struct FormatVersionCheck {
  std::int64_t formatVersion = 0;

  static FormatVersionCheck read(JsonReader& json) {
    FormatVersionCheck check;
    RequiredKeys required("it", {"formatVersion"});
    json.object([&](const QString& key) {
      required.met(key);
      if (key == u"formatVersion") {
        check.formatVersion = json.integer();
      } else {
        json.skip();
      }
    });
    required.check(json);
    json.end();
    return check;
  }
};

QString damagedManifest(const JsonReader& json) {
  return QStringLiteral("The document's manifest is damaged: %1.").arg(json.failure());
}

/// One node without what is below it.
NodeManifest describeNode(const LayerNode& node) {
  NodeManifest manifest;
  manifest.id = uuidText(node.id());
  manifest.name = node.name().value();
  manifest.opacity = node.opacity().value();
  manifest.blendMode = rawValue(node.blendMode().value());
  manifest.isVisible = node.isVisible().value();
  manifest.isLocked = node.isLocked().value();
  if (const std::shared_ptr<Layer> layer = node.layer()) {
    manifest.type = QStringLiteral("layer");
    manifest.hasPixelData = layer->texture.value() != nullptr;
    if (const std::shared_ptr<LayerMask> mask = layer->mask.value()) {
      manifest.mask = MaskManifest{uuidText(mask->id), mask->isEnabled.value()};
    }
    return manifest;
  }
  manifest.type = QStringLiteral("folder");
  manifest.hasPixelData = false;
  manifest.isExpanded = node.folder()->isExpanded.value();
  manifest.hasChildren = true;
  return manifest;
}

void writeText(JsonWriter& json, std::string_view key, const QString& value) {
  json.key(key);
  json.string(value);
}

void writeOptionalText(JsonWriter& json, std::string_view key, const std::optional<QString>& value) {
  if (value.has_value()) writeText(json, key, *value);
}

void writeInteger(JsonWriter& json, std::string_view key, std::int64_t value) {
  json.key(key);
  json.integer(value);
}

void writeBoolean(JsonWriter& json, std::string_view key, bool value) {
  json.key(key);
  json.boolean(value);
}

/// A node up to its children, and the children's opening bracket if it has any.
void beginNode(JsonWriter& json, const NodeManifest& node) {
  json.openObject();
  writeInteger(json, "blendMode", node.blendMode);
  if (!node.hasChildren) return;
  json.key("children");
  json.openArray();
}

/// What follows the children of a node.
void endNode(JsonWriter& json, const NodeManifest& node, const NodeExtras& extras) {
  if (node.hasChildren) json.closeArray();
  if (node.hasPixelData.has_value()) writeBoolean(json, "hasPixelData", *node.hasPixelData);
  writeText(json, "id", node.id);
  if (node.isExpanded.has_value()) writeBoolean(json, "isExpanded", *node.isExpanded);
  writeBoolean(json, "isLocked", node.isLocked);
  writeBoolean(json, "isVisible", node.isVisible);
  if (node.mask.has_value()) {
    json.key("mask");
    json.openObject();
    writeText(json, "id", node.mask->id);
    writeBoolean(json, "isEnabled", node.mask->isEnabled);
    json.closeObject();
  }
  writeText(json, "name", node.name);
  json.key("opacity");
  json.number(node.opacity);
  writeText(json, "type", node.type);
  if (extras) extras(json, node);
  json.closeObject();
}

void writeDocument(JsonWriter& json, const DocumentManifest& document) {
  json.openObject();
  writeOptionalText(json, "backgroundColor", document.backgroundColor);
  writeInteger(json, "canvasHeight", document.canvasHeight);
  writeInteger(json, "canvasWidth", document.canvasWidth);
  writeInteger(json, "colorMode", document.colorMode);
  writeOptionalText(json, "foregroundColor", document.foregroundColor);
  writeText(json, "name", document.name);
  writeOptionalText(json, "selectedNodeID", document.selectedNodeID);
  json.closeObject();
}

}  // namespace

BlendMode blendModeOf(const NodeManifest& node) {
  return blendModeFromRaw(node.blendMode).value_or(BlendMode::normal);
}

bool isolates(const NodeManifest& node) {
  return !passesThrough(node.opacity, blendModeOf(node));
}

void writeNodes(JsonWriter& json, const NodeManifestList& nodes, const NodeExtras& extras) {
  std::vector<const NodeManifest*> open;
  const auto endNodesDownTo = [&](int depth) {
    while (!open.empty() && open.back()->depth >= depth) {
      endNode(json, *open.back(), extras);
      open.pop_back();
    }
  };
  json.openArray();
  for (const NodeManifest& node : nodes) {
    endNodesDownTo(node.depth);
    beginNode(json, node);
    open.push_back(&node);
  }
  endNodesDownTo(0);
  json.closeArray();
}

QByteArray encodeManifest(const Manifest& manifest) {
  JsonWriter json;
  json.openObject();
  json.key("document");
  writeDocument(json, manifest.document);
  writeInteger(json, "formatVersion", manifest.formatVersion);
  writeText(json, "generator", manifest.generator);
  json.key("metadata");
  json.openObject();
  writeText(json, "createdAt", manifest.metadata.createdAt);
  writeText(json, "modifiedAt", manifest.metadata.modifiedAt);
  json.closeObject();
  json.key("nodes");
  writeNodes(json, manifest.nodes);
  json.closeObject();
  return json.text();
}

Described<Manifest> decodeManifest(std::string_view text, const Progress& progress) {
  JsonReader first(text);
  const FormatVersionCheck check = FormatVersionCheck::read(first);
  if (first.hasFailed()) return because(damagedManifest(first));
  if (check.formatVersion != documentFormatVersion) {
    return because(
        QStringLiteral("The document has format version %1, which can't be read.").arg(check.formatVersion));
  }
  if (progress.isCancelled()) return cancelled();
  JsonReader json(text);
  Manifest manifest = readManifest(json, progress);
  if (progress.isCancelled()) return cancelled();
  if (json.hasFailed()) return because(damagedManifest(json));
  return manifest;
}

NodeManifestList describeNodes(const LayerNodeList& nodes) {
  struct Place {
    const LayerNodeList* siblings;
    std::size_t next;
  };
  NodeManifestList manifests;
  std::vector<Place> open{{&nodes, 0}};
  while (!open.empty()) {
    Place& place = open.back();
    if (place.next == place.siblings->size()) {
      open.pop_back();
      continue;
    }
    const LayerNode& node = (*place.siblings)[place.next++];
    const auto depth = static_cast<int>(open.size()) - 1;
    if (const std::shared_ptr<LayerFolder> folder = node.folder())
      open.push_back({&folder->children.value(), 0});
    manifests.push_back(describeNode(node));
    manifests.back().depth = depth;
  }
  return manifests;
}

Described<Manifest> describeDocument(const Document& document) {
  Manifest manifest;
  manifest.nodes = describeNodes(document.rootNodes.value());
  if (!std::ranges::all_of(manifest.nodes, [](const auto& node) { return std::isfinite(node.opacity); })) {
    return because(QStringLiteral("The document can't be written. An opacity is not a number."));
  }
  manifest.generator = QStringLiteral("Orvanel 0.1");
  const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
  manifest.metadata = {now, now};
  manifest.document.name = document.name.value();
  manifest.document.canvasWidth = document.canvasWidth.value();
  manifest.document.canvasHeight = document.canvasHeight.value();
  manifest.document.colorMode = rawValue(document.colorMode.value());
  if (const auto& selected = document.selectedNodeID.value()) {
    manifest.document.selectedNodeID = uuidText(*selected);
  }
  manifest.document.foregroundColor = document.foregroundColor.value().hexText();
  manifest.document.backgroundColor = document.backgroundColor.value().hexText();
  return manifest;
}

}  // namespace orvanel
