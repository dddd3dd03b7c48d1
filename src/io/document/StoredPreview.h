// Reads the preview that a document file carries, without reading the document: what file managers show.
// Trusts nothing in the file. Any thread.
#pragma once

#include <QImage>
#include <QString>
#include <cstddef>
#include <span>

#include "io/files/FileError.h"

namespace orvanel {

class ZipReader;

/// The preview's entry in a document's archive.
inline constexpr const char* previewEntryPath = "preview.png";
/// The largest preview that is read: twice the side that is written, and as many bytes as such a picture
/// takes without compression.
inline constexpr int maximumPreviewSide = 1024;
inline constexpr std::uint64_t maximumPreviewBytes = std::uint64_t{5} << 20U;

[[nodiscard]] Described<QImage> readStoredPreview(const QString& path);
/// The same for a file in memory.
[[nodiscard]] Described<QImage> readStoredPreview(std::span<const std::byte> archive);
/// The same for an archive that is open already.
[[nodiscard]] Described<QImage> readStoredPreview(const ZipReader& archive);

/// The preview in a square of this side: made smaller where it is larger, never enlarged.
[[nodiscard]] QImage fittedPreview(const QImage& preview, int side);

}  // namespace orvanel
