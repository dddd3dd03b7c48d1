// `recover`: lists the documents that a program which has ended left unsaved, writes one to a file, or
// discards it.
#pragma once

#include "cli/CommandLine.h"

namespace orvanel {

[[nodiscard]] CommandResult runRecover(const Invocation& invocation);
/// Nothing to list them, an id and a file to restore one, the option and an id to discard one.
[[nodiscard]] bool isRecoverUsage(const Invocation& invocation);

}  // namespace orvanel
