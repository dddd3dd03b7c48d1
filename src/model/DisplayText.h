// Shortening texts of unknown origin, such as names of documents, before they are shown. Any thread.
#pragma once

#include <QString>

namespace orvanel {

/// The text on one line of at most 60 UTF-16 units: line breaks become spaces, and long texts are elided in
/// the middle. Layout and window titles take time in proportion to a text's length, which files can make
/// arbitrary.
[[nodiscard]] QString displayText(const QString& text);

}  // namespace orvanel
