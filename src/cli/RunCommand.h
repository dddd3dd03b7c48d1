// `run SCRIPT IN [OUT]`: carries out a script's steps on a document and writes the result.
#pragma once

#include "cli/CommandLine.h"

namespace orvanel {

/// SCRIPT may be "-" for standard input, IN may be new:WIDTHxHEIGHT:MODE. OUT is written at the end only.
/// With the option, each step's milliseconds go to standard error.
[[nodiscard]] CommandResult runScript(const Invocation& invocation);

}  // namespace orvanel
