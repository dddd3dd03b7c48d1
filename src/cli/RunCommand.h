// `run SCRIPT IN [OUT]`: runs a script on a document and writes the result.
#pragma once

#include "cli/CommandLine.h"

namespace orvanel {

/// SCRIPT may be "-" for standard input, IN may be new:WIDTHxHEIGHT:MODE. OUT is written only at the end.
/// With the option, each step's duration in milliseconds is printed to standard error.
[[nodiscard]] CommandResult runScript(const Invocation& invocation);

}  // namespace orvanel
