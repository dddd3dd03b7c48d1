#include "recovery/JournalFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QUuid>
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

void JournalFiles::removeAll() const {
  // The journal goes first: without it the rest means nothing.
  ::unlink(journal().c_str());
  const QString pattern = QString::fromStdString(id) + QStringLiteral(".*");
  QDir directory(QFile::decodeName(folder.c_str()));
  for (const QString& name : directory.entryList({pattern}, QDir::Files | QDir::Hidden)) {
    ::unlink((folder + "/" + QFile::encodeName(name).toStdString()).c_str());
  }
}

void syncFolder(const std::string& folder) {
  const Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.isOpen()) ::fsync(directory.number());
}

}  // namespace orvanel
