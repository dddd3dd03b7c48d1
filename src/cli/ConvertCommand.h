// `convert IN OUT`: reads a document or image and writes it in the format of OUT's extension, replacing OUT
// atomically.
#pragma once

#include "cli/CommandLine.h"

namespace orvanel {

[[nodiscard]] CommandResult runConvert(const Invocation& invocation);

}  // namespace orvanel
