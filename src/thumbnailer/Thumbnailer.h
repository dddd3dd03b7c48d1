// The command line of the program that file managers start for each document whose picture they want. It
// reads the preview that the document carries and nothing else of it.
#pragma once

#include <QStringList>

namespace orvanel {

/// `arguments` excludes the program's name. Returns the exit status: 0, 1 with a line on standard error if
/// there is no thumbnail, 2 with a line on standard error for invalid usage.
[[nodiscard]] int runThumbnailer(const QStringList& arguments);

}  // namespace orvanel
