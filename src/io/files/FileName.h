// Interpreting and displaying file names. Any thread.
#pragma once

#include <QString>
#include <string_view>

namespace orvanel {

/// The extension of the editor's own documents.
inline constexpr auto documentExtension = "tessel";

/// Whether the name has this extension, in either case.
[[nodiscard]] bool hasExtension(const QString& path, QStringView extension);
/// Whether a file of this name is written as a document.
[[nodiscard]] bool isDocumentName(const QString& path);

/// The name of a document read from or saved to this file: the file's name without its extension, or the
/// whole name if there is nothing else.
[[nodiscard]] QString documentName(const QString& path);

/// The last part of a path for use in messages: on one line, long names elided in the middle.
[[nodiscard]] QString displayName(const QString& path);

/// Whether the bytes are valid UTF-8.
[[nodiscard]] bool isUtf8(std::string_view text);

}  // namespace orvanel
