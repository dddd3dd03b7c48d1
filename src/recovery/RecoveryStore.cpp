#include "recovery/RecoveryStore.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QSet>
#include <QThread>
#include <algorithm>
#include <cerrno>

namespace orvanel {
namespace {

/// Unfinished work is left alone for so long: its process may just be about to lock it.
constexpr int secondsOfGrace = 3600;
constexpr int claimAttempts = 40;
constexpr unsigned long millisecondsBetweenAttempts = 25;

/// The time of the last change to any file of a journal, by its id.
using LastChanges = QMap<QString, QDateTime>;

LastChanges lastChangesIn(const QString& folder) {
  LastChanges changes;
  for (const QFileInfo& file : QDir(folder).entryInfoList(QDir::Files | QDir::Hidden)) {
    const QString id = JournalFiles::idInName(file.fileName());
    if (id.isEmpty()) continue;
    QDateTime& last = changes[id];
    last = last.isValid() ? std::max(last, file.lastModified()) : file.lastModified();
  }
  return changes;
}

/// Removes the rest of a journal that never came about, or of which only a part could be removed.
void removeRest(const JournalFiles& files, const QDateTime& lastChange) {
  if (lastChange.secsTo(QDateTime::currentDateTimeUtc()) < secondsOfGrace) return;
  // In this order, because a part becomes a journal.
  const bool isBeingWritten =
      QFile::exists(QFile::decodeName(files.part().c_str())) && !openLocked(files.part());
  if (!isBeingWritten && !files.hasJournal()) static_cast<void>(files.removeAll());
}

/// What the journal and everything that belongs to it takes on the disk. A file that has another name as well
/// would be there without it.
qint64 bytesOf(const JournalFiles& files) {
  qint64 bytes = 0;
  const QString pattern = QString::fromStdString(files.id) + QStringLiteral(".*");
  const QDir folder(QFile::decodeName(files.folder.c_str()));
  for (const QString& name : folder.entryList({pattern}, QDir::Files | QDir::Hidden)) {
    struct stat status {};
    const QByteArray path = QFile::encodeName(folder.filePath(name));
    if (::stat(path.constData(), &status) == 0 && status.st_nlink == 1) bytes += status.st_size;
  }
  return bytes;
}

/// Nothing for a journal that somebody has locked.
std::optional<Orphan> orphanIn(const JournalFiles& files) {
  const auto lock = openLocked(files.journal());
  if (!lock && lock.error().error == 0) return std::nullopt;
  Orphan orphan{.id = QString::fromStdString(files.id), .bytes = bytesOf(files)};
  const auto state =
      lock ? readJournalState(JournalInput::ofFile(lock->number()), TileCheck::none)
           : tl::unexpected(JournalStop{JournalStop::Cause::unreadable, readFailure(lock.error().error)});
  if (!state) {
    orphan.obstacle = state.error().reason;
    orphan.time = QFileInfo(QFile::decodeName(files.journal().c_str())).lastModified();
    return orphan;
  }
  orphan.name = state->document.name;
  orphan.path = state->document.path;
  orphan.time = state->time;
  orphan.thumbnail = thumbnailOf(*state);
  return orphan;
}

/// When the user was first told of a journal that ended at `end`. Nothing if that was never, or well before
/// the end: by a clock that a machine without power had lost, for example.
std::optional<QDateTime> firstOffer(const JournalFiles& files, const QDateTime& end) {
  const QFileInfo mark(QFile::decodeName(files.offered().c_str()));
  if (!mark.exists() || mark.lastModified().addSecs(1) < end) return std::nullopt;
  return mark.lastModified();
}

/// Whoever lists the orphans holds their locks for a moment.
tl::expected<Descriptor, NotLocked> lockSoon(const JournalFiles& files) {
  auto lock = openLocked(files.journal());
  for (int attempt = 1; attempt < claimAttempts && !lock; ++attempt) {
    if (lock.error().error != 0 || !files.hasJournal()) break;
    QThread::msleep(millisecondsBetweenAttempts);
    lock = openLocked(files.journal());
  }
  return lock;
}

QString noSuchDocument() {
  return QStringLiteral("There is no such document to restore.");
}

QString reasonOf(const NotLocked& failure, const JournalFiles& files) {
  if (failure.error != 0) return readFailure(failure.error);
  return files.hasJournal() ? QStringLiteral("The document is open in another window.") : noSuchDocument();
}

void makeMark(const std::string& path) {
  constexpr mode_t forUserAlone = 0600;
  const Descriptor mark(::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, forUserAlone));
  if (mark.isOpen()) ::futimens(mark.number(), nullptr);
}

}  // namespace

Described<RestoredContents> ClaimedOrphan::restore(const MetalContext& context,
                                                   const Progress& progress) const {
  const auto copyOfBase = [this](std::uint32_t number) { return files_.copy(number); };
  return restoreContents(JournalInput::ofFile(lock_.number()), context, copyOfBase, progress);
}

void ClaimedOrphan::noteSuccessor(const JournalFiles& successor) const {
  makeMark(files_.successor(successor.id));
  syncFolder(files_.folder);
}

bool RecoveryStore::isTooOld(const QDateTime& time) const {
  const qint64 age = time.secsTo(QDateTime::currentDateTimeUtc());
  return age > std::chrono::duration_cast<std::chrono::seconds>(settings_.maximumAge).count();
}

OrphanList RecoveryStore::orphans() const {
  OrphanList list;
  for (const QString& id : lastChangesIn(settings_.folder).keys()) {
    const auto files = JournalFiles::named(settings_.folder, id);
    if (!files || hasSuccessor(*files)) continue;
    if (auto orphan = orphanIn(*files)) list.push_back(std::move(*orphan));
  }
  std::ranges::stable_sort(list, [](const Orphan& a, const Orphan& b) { return a.time > b.time; });
  return list;
}

OrphanList RecoveryStore::offer() const {
  removeRemains();
  OrphanList list = orphans();
  removeOffered(list);
  for (const Orphan& orphan : list) {
    const auto files = JournalFiles::named(settings_.folder, orphan.id);
    if (files && !firstOffer(*files, orphan.time)) makeMark(files->offered());
  }
  return list;
}

/// What will never be an orphan, nor be needed by one: the rest of unfinished work.
void RecoveryStore::removeRemains() const {
  const LastChanges changes = lastChangesIn(settings_.folder);
  for (auto entry = changes.begin(); entry != changes.end(); ++entry) {
    const auto files = JournalFiles::named(settings_.folder, entry.key());
    if (!files) continue;
    if (!files->hasJournal()) removeRest(*files, entry.value());
    const bool isFollowed = hasSuccessor(*files);
    if (!isFollowed && files->parts().isEmpty()) continue;
    // Nothing if the process lives that writes or has restored it.
    const auto lock = openLocked(files->journal());
    if (lock && isFollowed) static_cast<void>(files->removeAll());
    if (lock && !isFollowed) files->removeParts();
  }
}

bool RecoveryStore::hasSuccessor(const JournalFiles& files) const {
  const QString pattern = QString::fromStdString(files.id) + QStringLiteral(".*.next");
  const QStringList names = QDir(settings_.folder).entryList({pattern}, QDir::Files | QDir::Hidden);
  return std::ranges::any_of(names, [&](const QString& name) {
    const auto next = JournalFiles::named(settings_.folder, JournalFiles::successorInName(name));
    return next && next->hasJournal();
  });
}

/// Removes orphans that the user has known of for too long, or that are too much. Others stay, however old.
void RecoveryStore::removeOffered(OrphanList& orphans) const {
  std::int64_t bytes = 0;
  std::erase_if(orphans, [&](const Orphan& orphan) {
    const bool isNewest = bytes == 0;
    bytes += orphan.bytes;
    const auto files = JournalFiles::named(settings_.folder, orphan.id);
    const auto since = files ? firstOffer(*files, orphan.time) : std::nullopt;
    const bool isTooMuch = !isNewest && bytes > settings_.maximumBytes;
    if (!since || (!isTooMuch && !isTooOld(*since))) return false;
    return discard(orphan.id).has_value();
  });
}

Described<ClaimedOrphan> RecoveryStore::claim(const QString& orphanID) const {
  const auto files = JournalFiles::named(settings_.folder, orphanID);
  if (!files) return because(noSuchDocument());
  auto lock = lockSoon(*files);
  if (!lock) return because(reasonOf(lock.error(), *files));
  return ClaimedOrphan(*files, std::move(*lock));
}

Described<void> RecoveryStore::discard(const QString& orphanID) const {
  const auto files = JournalFiles::named(settings_.folder, orphanID);
  if (!files) return because(noSuchDocument());
  const auto lock = lockSoon(*files);
  // Nobody else can open such a file either, but its folder may give it up.
  const bool isClosed = !lock && (lock.error().error == EACCES || lock.error().error == EIO);
  if (!lock && !isClosed) return because(reasonOf(lock.error(), *files));
  return files->removeAll();
}

JournalFiles RecoveryStore::newJournal() const {
  return JournalFiles::createIn(settings_.folder);
}

}  // namespace orvanel
