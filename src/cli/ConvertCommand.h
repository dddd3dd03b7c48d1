// `convert IN OUT`: reads a document or image and writes it by OUT's extension, replacing OUT in one step.
#pragma once

#include "cli/CommandLine.h"

namespace orvanel {

[[nodiscard]] CommandResult runConvert(const Invocation& invocation);

}  // namespace orvanel
