#include "cli/InfoCommand.h"

#include <optional>

#include "cli/DocumentAccess.h"
#include "cli/Output.h"
#include "io/Json.h"

namespace orvanel {

namespace {

void writeOptionalID(JsonWriter& json, const std::optional<QUuid>& id) {
  if (id) {
    json.string(uuidText(*id));
  } else {
    json.null();
  }
}

void writeBounds(JsonWriter& json, const std::optional<PixelRect>& bounds) {
  if (!bounds) {
    json.null();
    return;
  }
  json.openArray();
  for (const int value : {bounds->x, bounds->y, bounds->width, bounds->height}) json.integer(value);
  json.closeArray();
}

std::optional<PixelRect> contentBounds(const Layer& layer, const Document& document) {
  const Texture& pixels = layer.texture.value();
  if (!pixels) return std::nullopt;
  return document.context().layerContentBounds(*pixels, document.colorMode.value(), false);
}

void writeMask(JsonWriter& json, const LayerMask& mask) {
  json.openObject();
  json.key("id");
  json.string(uuidText(mask.id));
  json.key("isEnabled");
  json.boolean(mask.isEnabled.value());
  json.closeObject();
}

/// The keys of a document's manifest, and `contentBounds`, in alphabetical order.
void writeNode(JsonWriter& json, const LayerNode& node, const Document& document) {
  const std::shared_ptr<Layer> layer = node.layer();
  const std::shared_ptr<LayerFolder> folder = node.folder();
  json.openObject();
  json.key("blendMode");
  json.integer(rawValue(node.blendMode().value()));
  if (folder) {
    json.key("children");
    json.openArray();
    for (const LayerNode& child : folder->children.value()) writeNode(json, child, document);
    json.closeArray();
  }
  if (layer) {
    json.key("contentBounds");
    writeBounds(json, contentBounds(*layer, document));
  }
  json.key("hasPixelData");
  json.boolean(layer && layer->texture.value());
  json.key("id");
  json.string(uuidText(node.id()));
  if (folder) {
    json.key("isExpanded");
    json.boolean(folder->isExpanded.value());
  }
  json.key("isLocked");
  json.boolean(node.isLocked().value());
  json.key("isVisible");
  json.boolean(node.isVisible().value());
  if (layer && layer->mask.value()) {
    json.key("mask");
    writeMask(json, *layer->mask.value());
  }
  json.key("name");
  json.string(node.name().value());
  json.key("opacity");
  json.number(node.opacity().value());
  json.key("type");
  json.string(layer ? QStringLiteral("layer") : QStringLiteral("folder"));
  json.closeObject();
}

}  // namespace

QByteArray describeAsJson(const Document& document) {
  JsonWriter json;
  json.openObject();
  json.key("backgroundColor");
  json.string(document.backgroundColor.value().hexText());
  json.key("canvasHeight");
  json.integer(document.canvasHeight.value());
  json.key("canvasWidth");
  json.integer(document.canvasWidth.value());
  json.key("colorMode");
  json.integer(rawValue(document.colorMode.value()));
  json.key("foregroundColor");
  json.string(document.foregroundColor.value().hexText());
  json.key("memoryUsage");
  json.integer(document.memoryUsage());
  json.key("name");
  json.string(document.name.value());
  json.key("nodes");
  json.openArray();
  for (const LayerNode& node : document.rootNodes.value()) writeNode(json, node, document);
  json.closeArray();
  json.key("selectedNodeID");
  writeOptionalID(json, document.selectedNodeID.value());
  json.closeObject();
  return json.text() + '\n';
}

CommandResult runInfo(const QStringList& arguments) {
  const auto document = readDocument(arguments.at(0));
  if (!document) return tl::make_unexpected(document.error());
  return printText(QString::fromUtf8(describeAsJson(**document)));
}

}  // namespace orvanel
