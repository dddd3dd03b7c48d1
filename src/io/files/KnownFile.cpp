#include "io/files/KnownFile.h"

#include <QFile>

#include "model/Document.h"

namespace orvanel {

std::shared_ptr<const KnownFile> KnownFile::under(const QString& path) const {
  return makeKnownFile(path, identity);
}

FileState KnownFile::state() const {
  const auto now = FileIdentity::of(QFile::encodeName(documentPath).toStdString());
  if (!now) return FileState::missing;
  return now->isSameVersionAs(identity) ? FileState::asKnown : FileState::changed;
}

std::optional<FileIdentity> replaceable(const KnownFile* expected) {
  if (expected == nullptr) return std::nullopt;
  return expected->identity;
}

FileResult<void> judgeFound(const KnownFile* expected, DocumentIOError code, const Progress& progress) {
  const FileState found = expected == nullptr ? FileState::asKnown : expected->state();
  if (found == FileState::asKnown) return {};
  return tl::unexpected(FileError{code,
                                  found == FileState::missing
                                      ? QStringLiteral("The file is no longer there.")
                                      : QStringLiteral("The file was changed by another program."),
                                  progress.isCancelled(), found});
}

KnownFilePtr makeKnownFile(const QString& documentPath, const FileIdentity& identity) {
  auto known = std::make_shared<KnownFile>();
  known->documentPath = documentPath;
  known->identity = identity;
  return known;
}

KnownFilePtr knownFileOf(const Document& document, const QString& path) {
  auto known = std::dynamic_pointer_cast<const KnownFile>(document.fileMemory());
  return known != nullptr && path == known->documentPath ? known : nullptr;
}

}  // namespace orvanel
