// The flat formats that an image can be exported to, in the order of the chooser.
#pragma once

#include <QString>
#include <array>
#include <optional>

#include "model/Document.h"

namespace orvanel {

struct ExportFormat {
  const char* title;
  /// Extension of proposed names, without the dot.
  const char* fileExtension;
  /// File name patterns for a file panel, for example "*.jpg *.jpeg".
  const char* patterns;
  Document::ImageFileFormat format;
};

inline constexpr std::array<ExportFormat, 5> exportFormats{{
    {"PNG", "png", "*.png", Document::ImageFileFormat::png},
    {"JPEG", "jpg", "*.jpg *.jpeg", Document::ImageFileFormat::jpeg},
    {"TIFF", "tiff", "*.tiff *.tif", Document::ImageFileFormat::tiff},
    {"GIF", "gif", "*.gif", Document::ImageFileFormat::gif},
    {"BMP", "bmp", "*.bmp", Document::ImageFileFormat::bmp},
}};

/// Row of the format that a file name's extension selects, ignoring case.
[[nodiscard]] std::optional<int> exportRowForName(const QString& fileName);

}  // namespace orvanel
