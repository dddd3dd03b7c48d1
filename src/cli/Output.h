// What the headless program prints.
#pragma once

#include <QString>

#include "cli/CommandLine.h"

namespace orvanel {

/// Writes text to standard output; fails when it doesn't get there.
[[nodiscard]] CommandResult printText(const QString& text);

/// Writes one line to standard error, whatever the text holds.
void printErrorLine(const QString& text);

}  // namespace orvanel
