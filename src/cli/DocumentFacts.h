// What the headless program says of a document, as parts of a JSON object. Main thread only.
#pragma once

#include <QUuid>
#include <optional>

#include "io/document/Json.h"
#include "model/Document.h"

namespace orvanel {

/// The upper-case text, or null.
void writeOptionalID(JsonWriter& json, const std::optional<QUuid>& id);
/// [x, y, width, height], or null.
void writeBounds(JsonWriter& json, const std::optional<PixelRect>& bounds);
/// An array of the nodes as in a document's manifest; a layer also has `contentBounds`.
void writeNodes(JsonWriter& json, const Document& document);

}  // namespace orvanel
