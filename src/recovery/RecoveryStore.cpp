#include "recovery/RecoveryStore.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QSet>
#include <QThread>
#include <algorithm>

namespace orvanel {
namespace {

/// Unfinished work is left alone for so long: its process may just be about to lock it.
constexpr int secondsOfGrace = 3600;
/// Whoever lists the orphans holds their locks for a moment.
constexpr int claimAttempts = 40;
constexpr unsigned long millisecondsBetweenAttempts = 25;

bool exists(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

/// Removes the rest of a journal that never came about, or of which only a part could be removed.
void removeRemains(const JournalFiles& files, const QDateTime& lastChange) {
  if (lastChange.secsTo(QDateTime::currentDateTimeUtc()) < secondsOfGrace) return;
  // In this order, because a part becomes a journal.
  const bool isBeingWritten = exists(files.part()) && !openLocked(files.part()).isOpen();
  if (!isBeingWritten && !exists(files.journal())) files.removeAll();
}

}  // namespace

Described<RestoredContents> ClaimedOrphan::restore(const MetalContext& context,
                                                   const Progress& progress) const {
  const auto copyOfBase = [this](std::uint32_t number) { return files_.copy(number); };
  return restoreContents(JournalInput::ofFile(lock_.number()), context, copyOfBase, progress);
}

bool RecoveryStore::isTooOld(const QDateTime& time) const {
  const qint64 age = time.secsTo(QDateTime::currentDateTimeUtc());
  return age > std::chrono::duration_cast<std::chrono::seconds>(settings_.maximumAge).count();
}

std::optional<Orphan> RecoveryStore::orphanIn(const JournalFiles& files) const {
  const Descriptor lock = openLocked(files.journal());
  if (!lock.isOpen()) return std::nullopt;
  const JournalInput input = JournalInput::ofFile(lock.number());
  const auto state = readJournalState(input, TileCheck::none);
  const QFileInfo file(QFile::decodeName(files.journal().c_str()));
  if (isTooOld(state ? state->time : file.lastModified())) files.removeAll();
  if (!state || isTooOld(state->time)) return std::nullopt;
  return Orphan{QString::fromStdString(files.id),
                state->document.name,
                state->document.path,
                state->time,
                thumbnailOf(*state),
                static_cast<qint64>(input.size())};
}

OrphanList RecoveryStore::orphans() const {
  const QDir folder(settings_.folder);
  QMap<QString, QDateTime> lastChanges;
  for (const QFileInfo& file : folder.entryInfoList(QDir::Files | QDir::Hidden)) {
    const QString id = JournalFiles::idInName(file.fileName());
    if (id.isEmpty()) continue;
    QDateTime& last = lastChanges[id];
    last = last.isValid() ? std::max(last, file.lastModified()) : file.lastModified();
  }
  OrphanList list;
  for (auto entry = lastChanges.begin(); entry != lastChanges.end(); ++entry) {
    const auto files = JournalFiles::named(settings_.folder, entry.key());
    if (!files) continue;
    if (!exists(files->journal())) removeRemains(*files, entry.value());
    if (auto orphan = orphanIn(*files)) list.push_back(std::move(*orphan));
  }
  std::ranges::stable_sort(list, [](const Orphan& a, const Orphan& b) { return a.time > b.time; });
  std::int64_t bytes = 0;
  std::erase_if(list, [&](const Orphan& orphan) {
    const bool isNewest = bytes == 0;
    bytes += orphan.bytes;
    if (isNewest || bytes <= settings_.maximumBytes) return false;
    if (const auto claimed = claim(orphan.id)) claimed->remove();
    return true;
  });
  return list;
}

Described<ClaimedOrphan> RecoveryStore::claim(const QString& orphanID) const {
  const auto files = JournalFiles::named(settings_.folder, orphanID);
  for (int attempt = 0; files && attempt < claimAttempts && exists(files->journal()); ++attempt) {
    if (attempt > 0) QThread::msleep(millisecondsBetweenAttempts);
    Descriptor lock = openLocked(files->journal());
    if (lock.isOpen()) return ClaimedOrphan(*files, std::move(lock));
  }
  if (files && exists(files->journal()))
    return because(QStringLiteral("The document is open in another window."));
  return because(QStringLiteral("There is no such document to restore."));
}

JournalFiles RecoveryStore::newJournal() const {
  const QByteArray folder = QFile::encodeName(settings_.folder);
  if (!QDir(settings_.folder).exists()) QDir().mkpath(settings_.folder);
  ::chmod(folder.constData(), 0700);
  return JournalFiles::createIn(settings_.folder);
}

}  // namespace orvanel
