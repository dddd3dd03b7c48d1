// A process that saves two versions of a document alternately until it is killed.
#pragma once

#include <QString>

#include "model/Document.h"

namespace orvanel::testing {

inline constexpr const char* saveForeverArgument = "--save-forever";

/// How the versions differ: documents of their own, each of which is written whole, or one document before
/// and after an edit, of which most is copied from the file.
enum class Versions { separate, edited };

/// One of the two versions, the same in every process.
[[nodiscard]] DocumentPtr versionToSave(Versions kind, int version);

/// Writes a byte to standard output after each save.
[[noreturn]] void saveForever(Versions kind, const QString& path);

}  // namespace orvanel::testing
