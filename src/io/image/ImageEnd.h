// Whether an image file reaches the end that its format announces. Readers fill what is missing of some
// formats with grey or black and say nothing. Any thread; the bytes are not trusted.
#pragma once

#include <QIODevice>

namespace orvanel {

/// Whether a JPEG, PNG, GIF, BMP or WebP file stops before its picture does. False for any other file, and
/// for one that is damaged in another way.
[[nodiscard]] bool endsTooEarly(QIODevice& file);

}  // namespace orvanel
