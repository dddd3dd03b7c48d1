// The list of recently used files that all programs of a freedesktop.org desktop share, an XBEL document.
// Safe to call from any thread.
#pragma once

#include <QString>

namespace orvanel {

/// Adds a file to the list, or refreshes its entry. Other programs' entries keep their place and content;
/// a list that can't be read or written stays as it is. False when nothing was written.
bool publishRecentFile(const QString& absolutePath);

}  // namespace orvanel
