#include "look/TranslationSources.h"

#include <QCoreApplication>
#include <array>

namespace orvanel::look {
namespace {

constexpr std::array names{
    // Color modes.
    QT_TRANSLATE_NOOP("names", "Grayscale 8-bit"),
    QT_TRANSLATE_NOOP("names", "Grayscale 16-bit"),
    QT_TRANSLATE_NOOP("names", "RGB 8-bit"),
    QT_TRANSLATE_NOOP("names", "RGB 16-bit"),
    // Blend modes.
    QT_TRANSLATE_NOOP("names", "Normal"),
    QT_TRANSLATE_NOOP("names", "Multiply"),
    QT_TRANSLATE_NOOP("names", "Screen"),
    QT_TRANSLATE_NOOP("names", "Overlay"),
    QT_TRANSLATE_NOOP("names", "Darken"),
    QT_TRANSLATE_NOOP("names", "Lighten"),
    QT_TRANSLATE_NOOP("names", "Difference"),
    QT_TRANSLATE_NOOP("names", "Exclusion"),
    // Tools, and the actions that they record.
    QT_TRANSLATE_NOOP("names", "Hand"),
    QT_TRANSLATE_NOOP("names", "Move"),
    QT_TRANSLATE_NOOP("names", "Rectangle Select"),
    QT_TRANSLATE_NOOP("names", "Ellipse Select"),
    QT_TRANSLATE_NOOP("names", "Lasso Select"),
    QT_TRANSLATE_NOOP("names", "Polygonal Lasso Select"),
    QT_TRANSLATE_NOOP("names", "Magic Wand"),
    QT_TRANSLATE_NOOP("names", "Brush"),
    QT_TRANSLATE_NOOP("names", "Eraser"),
    QT_TRANSLATE_NOOP("names", "Eyedropper"),
    QT_TRANSLATE_NOOP("names", "Zoom"),
    QT_TRANSLATE_NOOP("names", "Free Transform"),
    // What new documents and layers are called.
    QT_TRANSLATE_NOOP("names", "Untitled"),
    QT_TRANSLATE_NOOP("names", "Background"),
    QT_TRANSLATE_NOOP("names", "Pasted Layer"),
    // Actions that can be undone.
    QT_TRANSLATE_NOOP("names", "Add Folder"),
    QT_TRANSLATE_NOOP("names", "Add Layer"),
    QT_TRANSLATE_NOOP("names", "Add Layer Mask"),
    QT_TRANSLATE_NOOP("names", "Apply Layer Mask"),
    QT_TRANSLATE_NOOP("names", "Blend Mode"),
    QT_TRANSLATE_NOOP("names", "Canvas Size"),
    QT_TRANSLATE_NOOP("names", "Change Color Mode"),
    QT_TRANSLATE_NOOP("names", "Clear"),
    QT_TRANSLATE_NOOP("names", "Crop"),
    QT_TRANSLATE_NOOP("names", "Delete"),
    QT_TRANSLATE_NOOP("names", "Delete Folder"),
    QT_TRANSLATE_NOOP("names", "Delete Layer"),
    QT_TRANSLATE_NOOP("names", "Deselect"),
    QT_TRANSLATE_NOOP("names", "Duplicate"),
    QT_TRANSLATE_NOOP("names", "Duplicate Folder"),
    QT_TRANSLATE_NOOP("names", "Duplicate Layer"),
    QT_TRANSLATE_NOOP("names", "Fill"),
    QT_TRANSLATE_NOOP("names", "Image Size"),
    QT_TRANSLATE_NOOP("names", "Invert"),
    QT_TRANSLATE_NOOP("names", "Invert Selection"),
    QT_TRANSLATE_NOOP("names", "Levels"),
    QT_TRANSLATE_NOOP("names", "Lock"),
    QT_TRANSLATE_NOOP("names", "Move Layer"),
    QT_TRANSLATE_NOOP("names", "Move Selection"),
    QT_TRANSLATE_NOOP("names", "Opacity"),
    QT_TRANSLATE_NOOP("names", "Remove Layer Mask"),
    QT_TRANSLATE_NOOP("names", "Rename"),
    QT_TRANSLATE_NOOP("names", "Rotate"),
    QT_TRANSLATE_NOOP("names", "Scale"),
    QT_TRANSLATE_NOOP("names", "Select All"),
    QT_TRANSLATE_NOOP("names", "Select Channel"),
    QT_TRANSLATE_NOOP("names", "Select Layer Transparency"),
    QT_TRANSLATE_NOOP("names", "Select Mask"),
    QT_TRANSLATE_NOOP("names", "Trim"),
    QT_TRANSLATE_NOOP("names", "Visibility"),
};

// What has no arguments comes first, so that the rest never takes it for one of its own.
constexpr std::array sentences{
    QT_TRANSLATE_NOOP("sentences", "A layer's data has no valid header."),
    QT_TRANSLATE_NOOP("sentences", "A layer's data is too short."),
    QT_TRANSLATE_NOOP("sentences", "An entry of the archive has an invalid name."),
    QT_TRANSLATE_NOOP("sentences", "Another entry has the same name."),
    QT_TRANSLATE_NOOP("sentences", "It ends too early."),
    QT_TRANSLATE_NOOP("sentences", "It is compressed in a way that is not supported."),
    QT_TRANSLATE_NOOP("sentences", "It is encrypted."),
    QT_TRANSLATE_NOOP("sentences", "It is missing from the archive."),
    QT_TRANSLATE_NOOP("sentences", "It is too large."),
    QT_TRANSLATE_NOOP("sentences", "It is too long."),
    QT_TRANSLATE_NOOP("sentences", "It is too short."),
    QT_TRANSLATE_NOOP("sentences", "Its checksum is wrong."),
    QT_TRANSLATE_NOOP("sentences", "Its size is impossible."),
    QT_TRANSLATE_NOOP("sentences", "Reading this format needs libheif."),
    QT_TRANSLATE_NOOP("sentences", "The archive contains more data than its document can use."),
    QT_TRANSLATE_NOOP("sentences", "The archive contains no document."),
    QT_TRANSLATE_NOOP("sentences", "The archive has too many entries."),
    QT_TRANSLATE_NOOP("sentences", "The archive is damaged or can't be read."),
    QT_TRANSLATE_NOOP("sentences", "The archive's directory is damaged."),
    QT_TRANSLATE_NOOP("sentences", "The archive's entries are larger than the archive."),
    QT_TRANSLATE_NOOP("sentences", "The compressed data ends too early."),
    QT_TRANSLATE_NOOP("sentences", "The compressed data is damaged."),
    QT_TRANSLATE_NOOP("sentences", "The destination is not a regular file."),
    QT_TRANSLATE_NOOP("sentences", "The document can't be written. An opacity is not a number."),
    QT_TRANSLATE_NOOP("sentences", "The document has more layers than a file can hold."),
    QT_TRANSLATE_NOOP("sentences", "The document has more nodes than a file can hold."),
    QT_TRANSLATE_NOOP("sentences", "The document has no preview."),
    QT_TRANSLATE_NOOP("sentences", "The document has two nodes with the same id."),
    QT_TRANSLATE_NOOP("sentences", "The document's canvas is not between 1 and 16384 pixels on a side."),
    QT_TRANSLATE_NOOP("sentences", "The document's file can't be read."),
    QT_TRANSLATE_NOOP("sentences", "The drawing can't be unpacked."),
    QT_TRANSLATE_NOOP("sentences", "The drawing's compressed data is damaged."),
    QT_TRANSLATE_NOOP("sentences", "The file can't be written beyond its end."),
    QT_TRANSLATE_NOOP("sentences", "The file ends before the image does."),
    QT_TRANSLATE_NOOP("sentences", "The file is damaged or incomplete: part of the image is missing."),
    QT_TRANSLATE_NOOP("sentences", "The file is empty."),
    QT_TRANSLATE_NOOP("sentences", "The file on the disk differs from what was written."),
    QT_TRANSLATE_NOOP("sentences", "The image couldn't be encoded in this format."),
    QT_TRANSLATE_NOOP("sentences", "The image has no pixels to write."),
    QT_TRANSLATE_NOOP("sentences", "The image is damaged."),
    QT_TRANSLATE_NOOP("sentences", "The operation was cancelled."),
    QT_TRANSLATE_NOOP("sentences", "The preview is damaged."),
    QT_TRANSLATE_NOOP("sentences", "The preview is not a PNG image."),
    QT_TRANSLATE_NOOP("sentences", "The preview is too large."),
    QT_TRANSLATE_NOOP("sentences", "The save was cancelled."),
    QT_TRANSLATE_NOOP("sentences", "There is not enough memory for this document."),
    QT_TRANSLATE_NOOP("sentences", "There is not enough memory for this image."),
    QT_TRANSLATE_NOOP("sentences", "There is not enough memory to write this image."),
    QT_TRANSLATE_NOOP("sentences", "This is a folder, not a file."),
    QT_TRANSLATE_NOOP("sentences", "This is not a regular file."),
    QT_TRANSLATE_NOOP("sentences", "Only the first of %1 pictures was opened."),
    QT_TRANSLATE_NOOP("sentences", "The document has format version %1, which can't be read."),
    QT_TRANSLATE_NOOP("sentences", "The document's manifest is damaged: %1."),
    QT_TRANSLATE_NOOP("sentences", "The drawing is damaged: %1."),
    QT_TRANSLATE_NOOP("sentences", "The drawing is larger than %1 MiB."),
    QT_TRANSLATE_NOOP("sentences", "The entry \"%1\" can't be read. %2"),
    QT_TRANSLATE_NOOP("sentences", "The entry \"%1\" can't be read. Its checksum is wrong."),
    QT_TRANSLATE_NOOP("sentences", "The entry \"%1\" doesn't match the document's canvas and color mode."),
    QT_TRANSLATE_NOOP("sentences", "The file can't be closed: %1."),
    QT_TRANSLATE_NOOP("sentences", "The file can't be created: %1."),
    QT_TRANSLATE_NOOP("sentences", "The file can't be opened: %1."),
    QT_TRANSLATE_NOOP("sentences", "The file can't be replaced: %1."),
    QT_TRANSLATE_NOOP("sentences", "The file can't be written to the disk: %1."),
    QT_TRANSLATE_NOOP("sentences", "The file can't be written: %1."),
    QT_TRANSLATE_NOOP("sentences", "The file is not a readable archive: %1."),
    QT_TRANSLATE_NOOP("sentences", "The image is larger than %1 pixels on a side."),
};

}  // namespace

std::span<const char* const> translatableNames() {
  return names;
}

std::span<const char* const> translatableSentences() {
  return sentences;
}

}  // namespace orvanel::look
