// `check FILE...`: says of each document, entry by entry, whether it is whole.
#pragma once

#include "cli/CommandLine.h"

namespace orvanel {

[[nodiscard]] CommandResult runCheck(const Invocation& invocation);

}  // namespace orvanel
