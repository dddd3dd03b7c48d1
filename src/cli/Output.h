// Standard output and standard error of the headless program.
#pragma once

#include <QString>

#include "cli/CommandLine.h"

namespace orvanel {

/// Writes text to standard output. Fails if it can't be written completely.
[[nodiscard]] CommandResult printText(const QString& text);

/// Writes one line to standard error; control characters in the text become spaces.
void printErrorLine(const QString& text);

}  // namespace orvanel
