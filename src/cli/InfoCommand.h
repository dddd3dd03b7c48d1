// `info FILE`: describes a document or image as one JSON object on standard output.
#pragma once

#include <QByteArray>

#include "cli/CommandLine.h"
#include "model/Document.h"

namespace orvanel {

[[nodiscard]] CommandResult runInfo(const Invocation& invocation);

/// Describes a document; nodes as in its manifest, layers with the bounds of their content.
[[nodiscard]] QByteArray describeAsJson(const Document& document);

}  // namespace orvanel
