// How file work fails: one of three cases, and a sentence that an alert can show as it stands.
// Plain values, any thread.
#pragma once

#include <QString>
#include <tl/expected.hpp>

namespace orvanel {

enum class DocumentIOError { exportFailed, loadFailed, saveFailed };

struct FileError {
  DocumentIOError code = DocumentIOError::loadFailed;
  /// A whole sentence without the file's name, which the alert adds.
  QString message;
  /// The user has called the work off, and need not be told that it failed.
  bool isCancelled = false;
};

template <typename Value>
using FileResult = tl::expected<Value, FileError>;

/// For the parts below a load or a save, which don't know which of the two they serve.
template <typename Value>
using Described = tl::expected<Value, QString>;

[[nodiscard]] inline tl::unexpected<QString> because(QString reason) {
  return tl::unexpected<QString>(std::move(reason));
}

}  // namespace orvanel
