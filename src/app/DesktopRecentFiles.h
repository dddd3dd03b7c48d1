// The list of recently used files shared by all programs of a freedesktop.org desktop, an XBEL document. Any
// thread.
#pragma once

#include <QString>

namespace orvanel {

/// Adds a file to the list or updates its entry. Entries of other programs are preserved. Returns false, and
/// leaves the list alone, if it can't be read or written.
bool publishRecentFile(const QString& absolutePath);

}  // namespace orvanel
