// Descriptions of a document by the headless program, as parts of a JSON object. Main thread only.
#pragma once

#include <QUuid>
#include <optional>

#include "io/document/Json.h"
#include "model/Document.h"

namespace orvanel {

/// Writes the id in upper case, or null.
void writeOptionalID(JsonWriter& json, const std::optional<QUuid>& id);
/// Writes [x, y, width, height], or null.
void writeBounds(JsonWriter& json, const std::optional<PixelRect>& bounds);
/// Writes an array of the nodes as in a document's manifest; layers also have `contentBounds`.
void writeNodes(JsonWriter& json, const Document& document);

}  // namespace orvanel
