// A process that saves two versions of a document in turn until it is killed.
#pragma once

#include <QString>

#include "model/Document.h"

namespace orvanel::testing {

inline constexpr const char* saveForeverArgument = "--save-forever";

/// One of the two versions, the same in every process.
[[nodiscard]] DocumentPtr versionToSave(int version);

/// Writes a byte to standard output after each save.
[[noreturn]] void saveForever(const QString& path);

}  // namespace orvanel::testing
