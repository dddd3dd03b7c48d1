// Errors of file work: one of three codes, and a sentence that an alert can show.
// Plain values, any thread.
#pragma once

#include <QString>
#include <tl/expected.hpp>

namespace orvanel {

enum class DocumentIOError { exportFailed, loadFailed, saveFailed };

/// How a file is found, compared with what was last read or written.
enum class FileState {
  asKnown,
  changed,
  unexpected,    ///< something stands where nothing is known to
  otherVersion,  ///< of the document than the one that was restored
  missing,
};

struct FileError {
  DocumentIOError code = DocumentIOError::loadFailed;
  /// A full sentence, without the file's name.
  QString message;
  /// The user has cancelled the work, so that no alert is needed.
  bool isCancelled = false;
  /// Not `asKnown`: the save stopped because its file had changed.
  FileState found = FileState::asKnown;
};

template <typename Value>
using FileResult = tl::expected<Value, FileError>;

/// The result of a step that may be part of a load or a save.
template <typename Value>
using Described = tl::expected<Value, QString>;

[[nodiscard]] inline tl::unexpected<QString> because(QString reason) {
  return tl::unexpected<QString>(std::move(reason));
}

}  // namespace orvanel
