// Messages about files, for alerts. Any thread.
#pragma once

#include <QString>

namespace orvanel {

/// "name: message" on one line; a long name is shortened in the middle.
[[nodiscard]] QString fileMessage(const QString& path, const QString& message);

}  // namespace orvanel
