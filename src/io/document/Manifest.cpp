#include "io/document/Manifest.h"

#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <cmath>

#include "io/document/Json.h"
#include "model/Document.h"

namespace orvanel {
namespace {

/// Notes which of the required keys of an object have come.
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

std::vector<NodeManifest> readNodes(JsonReader& json, int depth);

bool readOptionalOfNode(JsonReader& json, const QString& key, NodeManifest& node, int depth) {
  const bool isOptional =
      key == u"hasPixelData" || key == u"mask" || key == u"isExpanded" || key == u"children";
  if (!isOptional) return false;
  if (json.takeNull()) return true;
  if (key == u"hasPixelData") {
    node.hasPixelData = json.boolean();
  } else if (key == u"mask") {
    node.mask = readMask(json);
  } else if (key == u"isExpanded") {
    node.isExpanded = json.boolean();
  } else {
    node.children = readNodes(json, depth + 1);
  }
  return true;
}

float readOpacity(JsonReader& json) {
  const auto opacity = static_cast<float>(json.number());
  if (!std::isfinite(opacity)) json.fail(QStringLiteral("an opacity is out of range"));
  return opacity;
}

void readNode(JsonReader& json, NodeManifest& node, int depth) {
  RequiredKeys required("a node", {"type", "id", "name", "opacity", "blendMode", "isVisible", "isLocked"});
  json.object([&](const QString& key) {
    required.met(key);
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
    } else if (!readOptionalOfNode(json, key, node, depth)) {
      json.skip();
    }
  });
  required.check(json);
}

std::vector<NodeManifest> readNodes(JsonReader& json, int depth) {
  std::vector<NodeManifest> nodes;
  if (depth > maximumFolderDepth) {
    json.fail(QStringLiteral("its folders are nested too deeply"));
    return nodes;
  }
  json.array([&] { readNode(json, nodes.emplace_back(), depth); });
  return nodes;
}

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

Manifest readManifest(JsonReader& json) {
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
      manifest.nodes = readNodes(json, 0);
    } else {
      json.skip();
    }
  });
  required.check(json);
  return manifest;
}

/// The first look at a manifest, which needs nothing but its version.
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

/// The common part of both kinds of node.
NodeManifest describeCommon(const LayerNode& node) {
  NodeManifest manifest;
  manifest.id = uuidText(node.id());
  manifest.name = node.name().value();
  manifest.opacity = node.opacity().value();
  manifest.blendMode = rawValue(node.blendMode().value());
  manifest.isVisible = node.isVisible().value();
  manifest.isLocked = node.isLocked().value();
  return manifest;
}

/// Why the tree can't be written; empty when it can.
QString obstacle(const LayerNodeList& nodes, int depth) {
  if (depth > maximumFolderDepth) return QStringLiteral("Its folders are nested too deeply.");
  for (const LayerNode& node : nodes) {
    if (!std::isfinite(node.opacity().value())) return QStringLiteral("An opacity is not a number.");
    if (const auto folder = node.folder()) {
      if (QString reason = obstacle(folder->children.value(), depth + 1); !reason.isEmpty()) return reason;
    }
  }
  return {};
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

void writeNodes(JsonWriter& json, std::string_view key, const std::vector<NodeManifest>& nodes,
                const NodeExtras& extras) {
  json.key(key);
  json.openArray();
  for (const NodeManifest& node : nodes) writeNode(json, node, extras);
  json.closeArray();
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

void writeNode(JsonWriter& json, const NodeManifest& node, const NodeExtras& extras) {
  json.openObject();
  writeInteger(json, "blendMode", node.blendMode);
  if (node.children.has_value()) writeNodes(json, "children", *node.children, extras);
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
  writeNodes(json, "nodes", manifest.nodes, {});
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
  Manifest manifest = readManifest(json);
  if (json.hasFailed()) return because(damagedManifest(json));
  return manifest;
}

NodeManifest describeNode(const LayerNode& node) {
  NodeManifest manifest = describeCommon(node);
  if (const std::shared_ptr<Layer> layer = node.layer()) {
    manifest.type = QStringLiteral("layer");
    manifest.hasPixelData = layer->texture.value() != nullptr;
    if (const std::shared_ptr<LayerMask> mask = layer->mask.value()) {
      manifest.mask = MaskManifest{uuidText(mask->id), mask->isEnabled.value()};
    }
    return manifest;
  }
  const std::shared_ptr<LayerFolder> folder = node.folder();
  manifest.type = QStringLiteral("folder");
  manifest.hasPixelData = false;
  manifest.isExpanded = folder->isExpanded.value();
  auto& children = manifest.children.emplace();
  for (const LayerNode& child : folder->children.value()) children.push_back(describeNode(child));
  return manifest;
}

Described<Manifest> describeDocument(const Document& document) {
  if (const QString reason = obstacle(document.rootNodes.value(), 0); !reason.isEmpty()) {
    return because(QStringLiteral("The document can't be written. %1").arg(reason));
  }
  Manifest manifest;
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
  for (const LayerNode& node : document.rootNodes.value()) manifest.nodes.push_back(describeNode(node));
  return manifest;
}

}  // namespace orvanel
