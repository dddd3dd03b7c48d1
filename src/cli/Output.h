// The output of the headless program.
#pragma once

#include <QString>

#include "cli/CommandLine.h"

namespace orvanel {

/// Writes text to standard output; fails if it can't be written completely.
[[nodiscard]] CommandResult printText(const QString& text);

/// Writes one line to standard error, whatever characters the text contains.
void printErrorLine(const QString& text);

}  // namespace orvanel
