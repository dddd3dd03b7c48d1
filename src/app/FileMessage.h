// How an alert speaks of a file. Any thread.
#pragma once

#include <QString>

namespace orvanel {

/// One line: the file's name, shortened where it is too long to read, and what happened to it.
[[nodiscard]] QString fileMessage(const QString& path, const QString& message);

}  // namespace orvanel
