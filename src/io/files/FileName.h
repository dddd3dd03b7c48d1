// What file names mean and how they are shown. Any thread.
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

/// What a document is called that comes from this file or is saved to it: the file's name without its
/// extension, or all of a name that is nothing but an extension.
[[nodiscard]] QString documentName(const QString& path);

/// A file's name, or an archive entry's, for a message: on one line, and a long one shortened in its middle.
[[nodiscard]] QString displayName(const QString& path);

/// Whether the bytes are valid UTF-8.
[[nodiscard]] bool isUtf8(std::string_view text);

}  // namespace orvanel
