#include "io/files/KnownFile.h"

#include <QFile>

#include "model/Document.h"

namespace orvanel {

namespace {

std::optional<FileIdentity> identityNow(const QString& path) {
  return FileIdentity::of(QFile::encodeName(path).toStdString());
}

struct OtherVersion final : KnownFile {
  FileIdentity other;

  [[nodiscard]] FileState state() const override {
    const auto now = identityNow(documentPath);
    return now && now->isSameVersionAs(other) ? FileState::otherVersion : KnownFile::state();
  }
};

/// A sentence for the user.
QString sentenceOf(FileState found) {
  switch (found) {
    case FileState::unexpected:
      return QStringLiteral("Another file has appeared there.");
    case FileState::otherVersion:
      return QStringLiteral("The file holds another version of the document than the one that was restored.");
    case FileState::missing:
      return QStringLiteral("The file is no longer there.");
    case FileState::asKnown:
    case FileState::changed:
      break;
  }
  return QStringLiteral("The file was changed by another program.");
}

struct ChosenFile final : KnownFile {
  [[nodiscard]] FileState state() const override {
    const FileState found = KnownFile::state();
    if (found == FileState::missing) return FileState::asKnown;
    return found == FileState::changed && identity == FileIdentity() ? FileState::unexpected : found;
  }
};

}  // namespace

FileState KnownFile::state() const {
  const auto now = identityNow(documentPath);
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
  return tl::unexpected(FileError{code, sentenceOf(found), progress.isCancelled(), found});
}

KnownFilePtr makeKnownFile(const QString& documentPath, const FileIdentity& identity) {
  auto known = std::make_shared<KnownFile>();
  known->documentPath = documentPath;
  known->identity = identity;
  return known;
}

KnownFilePtr makeOtherVersion(const QString& documentPath, const FileIdentity& identity,
                              const FileIdentity& other) {
  auto version = std::make_shared<OtherVersion>();
  version->documentPath = documentPath;
  version->identity = identity;
  version->other = other;
  return version;
}

KnownFilePtr chosenFile(const QString& path) {
  auto chosen = std::make_shared<ChosenFile>();
  chosen->documentPath = path;
  // No file has the version that stands for none.
  chosen->identity = identityNow(path).value_or(FileIdentity());
  return chosen;
}

KnownFilePtr noFile(const QString& path) {
  auto none = std::make_shared<ChosenFile>();
  none->documentPath = path;
  return none;
}

KnownFilePtr knownFileOf(const Document& document, const QString& path) {
  auto known = std::dynamic_pointer_cast<const KnownFile>(document.fileMemory());
  return known != nullptr && path == known->documentPath ? known : nullptr;
}

}  // namespace orvanel
