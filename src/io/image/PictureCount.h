// Counts the pictures of an image file: frames of an animation, pages of a document. Any thread; the bytes
// are not trusted.
#pragma once

#include <QIODevice>

namespace orvanel {

/// The number of pictures in a GIF, PNG or TIFF file. 1 for other formats, and for files without any picture.
/// Follows only the structure, in time proportional to the file's length at most.
[[nodiscard]] int pictureCount(QIODevice& file);

}  // namespace orvanel
