#include "recovery/JournalFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QUuid>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "io/files/FileOperations.h"
#include "model/Layer.h"

namespace orvanel {
namespace {

constexpr int idLength = 36;

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

QString JournalFiles::successorInName(const QString& fileName) {
  if (idInName(fileName).isEmpty() || !fileName.endsWith(QStringLiteral(".next"))) return {};
  return idInName(fileName.mid(idLength + 1));
}

bool JournalFiles::hasJournal() const {
  struct stat status {};
  return ::stat(journal().c_str(), &status) == 0;
}

QStringList JournalFiles::namesLike(const QString& rest) const {
  const QString pattern = QString::fromStdString(id) + u'.' + rest;
  return QDir(QFile::decodeName(folder.c_str())).entryList({pattern}, QDir::Files | QDir::Hidden);
}

std::vector<JournalFiles> JournalFiles::predecessors() const {
  if (!hasJournal()) return {};
  const QString pattern = QStringLiteral("*.%1.next").arg(QString::fromStdString(id));
  const QDir directory(QFile::decodeName(folder.c_str()));
  std::vector<JournalFiles> found;
  for (const QString& name : directory.entryList({pattern}, QDir::Files | QDir::Hidden)) {
    if (auto files = named(directory.path(), idInName(name))) found.push_back(std::move(*files));
  }
  return found;
}

void JournalFiles::removeEach(const QStringList& names) const {
  for (const QString& name : names)
    FileOperations::current().removeFile(folder + "/" + QFile::encodeName(name).toStdString());
}

Described<void> JournalFiles::removeAll() const {
  std::vector<JournalFiles> chain{*this};
  for (std::size_t link = 0; link < chain.size(); ++link) {
    for (JournalFiles& before : chain[link].predecessors()) {
      const auto isSame = [&](const JournalFiles& other) { return other.id == before.id; };
      if (std::ranges::none_of(chain, isSame)) chain.push_back(std::move(before));
    }
  }
  for (; !chain.empty(); chain.pop_back()) {
    const JournalFiles& files = chain.back();
    // The journal goes first: without it the rest means nothing.
    if (FileOperations::current().removeFile(files.journal()) != 0 && errno != ENOENT) {
      return because(QStringLiteral("The recovery data can't be removed: %1.")
                         .arg(QString::fromLocal8Bit(std::strerror(errno))));
    }
    files.removeEach(files.namesLike(QStringLiteral("*")));
  }
  return {};
}

void syncFolder(const std::string& folder) {
  const Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen()) ::fsync(directory.number());
}

}  // namespace orvanel
