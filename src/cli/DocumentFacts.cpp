#include "cli/DocumentFacts.h"

#include <QHash>

#include "io/document/Manifest.h"

namespace orvanel {
namespace {

using BoundsOfLayers = QHash<QString, std::optional<PixelRect>>;

BoundsOfLayers contentBoundsOfLayers(const Document& document) {
  BoundsOfLayers bounds;
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    const Texture& pixels = layer->texture.value();
    if (pixels == nullptr) continue;
    bounds.insert(uuidText(layer->id),
                  document.context().layerContentBounds(*pixels, document.colorMode.value(), false));
  }
  return bounds;
}

}  // namespace

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

void writeNodes(JsonWriter& json, const Document& document) {
  const BoundsOfLayers bounds = contentBoundsOfLayers(document);
  const NodeExtras extras = [&](JsonWriter& out, const NodeManifest& node) {
    if (node.hasChildren) return;
    out.key("contentBounds");
    writeBounds(out, bounds.value(node.id));
  };
  writeNodes(json, describeNodes(document.rootNodes.value()), extras);
}

}  // namespace orvanel
