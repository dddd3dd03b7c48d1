#include "recovery/JournalFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QUuid>
#include <cerrno>

#include "model/Layer.h"

namespace orvanel {
namespace {

constexpr int idLength = 36;

bool isSameFile(int descriptor, const std::string& path) {
  struct stat open {};
  struct stat named {};
  return ::fstat(descriptor, &open) == 0 && ::stat(path.c_str(), &named) == 0 &&
         open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

}  // namespace

JournalFiles JournalFiles::createIn(const QString& folder) {
  return {QFile::encodeName(folder).toStdString(), uuidText(QUuid::createUuid()).toStdString()};
}

std::optional<JournalFiles> JournalFiles::named(const QString& folder, const QString& id) {
  const QUuid uuid = uuidFromText(id);
  if (uuid.isNull()) return std::nullopt;
  return JournalFiles{QFile::encodeName(folder).toStdString(), uuidText(uuid).toStdString()};
}

QString JournalFiles::idInName(const QString& fileName) {
  const QString id = fileName.left(idLength);
  const bool isOurs = fileName.mid(idLength, 1) == QStringLiteral(".") && uuidText(uuidFromText(id)) == id;
  return isOurs ? id : QString();
}

void JournalFiles::removeAll() const {
  // The journal goes first: without it the rest means nothing.
  ::unlink(journal().c_str());
  const QString pattern = QString::fromStdString(id) + QStringLiteral(".*");
  QDir directory(QFile::decodeName(folder.c_str()));
  for (const QString& name : directory.entryList({pattern}, QDir::Files | QDir::Hidden)) {
    ::unlink((folder + "/" + QFile::encodeName(name).toStdString()).c_str());
  }
}

bool lockFile(int descriptor, LockWait wait) {
  int result = 0;
  do {
    result = ::flock(descriptor, wait == LockWait::none ? LOCK_EX | LOCK_NB : LOCK_EX);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

Descriptor openLocked(const std::string& path) {
  // For writing as well: some network file systems lock nothing else exclusively.
  Descriptor file(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  if (!lockFile(file.number(), LockWait::none) || !isSameFile(file.number(), path)) return {};
  return file;
}

void syncFolder(const std::string& folder) {
  const Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen()) ::fsync(directory.number());
}

}  // namespace orvanel
