// `info FILE`: what a document or image holds, as one JSON object on standard output.
#pragma once

#include <QByteArray>

#include "cli/CommandLine.h"
#include "model/Document.h"

namespace orvanel {

[[nodiscard]] CommandResult runInfo(const Invocation& invocation);

/// The facts of a document; nodes as in a document's manifest, layers with the bounds of their content.
[[nodiscard]] QByteArray describeAsJson(const Document& document);

}  // namespace orvanel
