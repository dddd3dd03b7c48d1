#include "recovery/JournalChild.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFile>
#include <QThread>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "io/document/DocumentFixture.h"
#include "io/document/Manifest.h"
#include "io/files/FileOperations.h"
#include "recovery/Recovery.h"
#include "tools/RandomCommands.h"

namespace orvanel::testing {
namespace {

constexpr std::array modes{ColorMode::grayscale8, ColorMode::grayscale16, ColorMode::rgb8, ColorMode::rgb16};

class ChildDisk final : public FileOperations {
 public:
  explicit ChildDisk(bool isOtherDisk) : isOtherDisk_(isOtherDisk) {}

  int linkFile(const std::string& file, const std::string& to) override {
    if (!isOtherDisk_) return FileOperations::linkFile(file, to);
    errno = EXDEV;
    return -1;
  }
  int renameFile(const std::string& from, const std::string& to) override {
    while (to == diesAfterRenamingTo && !mayReplace) QThread::msleep(1);
    const int result = FileOperations::renameFile(from, to);
    if (to.ends_with(".journal") && isJournalRead_.exchange(false)) ++compactions;
    if (to == diesAfterRenamingTo) ::kill(::getpid(), SIGKILL);
    return result;
  }

  /// While it is written, only compacting reads a journal.
  ssize_t readAt(int file, void* bytes, std::size_t count, std::int64_t offset) override {
    const QString link = QStringLiteral("/proc/self/fd/%1").arg(file);
    if (QFile::symLinkTarget(link).endsWith(QStringLiteral(".journal"))) isJournalRead_ = true;
    return FileOperations::readAt(file, bytes, count, offset);
  }

  std::string diesAfterRenamingTo;
  /// Before, that file isn't replaced.
  std::atomic<bool> mayReplace = false;
  std::atomic<std::int64_t> compactions = 0;

 private:
  bool isOtherDisk_;
  std::atomic<bool> isJournalRead_ = false;
};

QByteArray bytesOf(const Surface& surface) {
  QByteArray bytes(static_cast<qsizetype>(surface.byteSize()), Qt::Uninitialized);
  surface.readRect(
      surface.bounds(), reinterpret_cast<std::byte*>(bytes.data()),
      static_cast<std::size_t>(surface.width()) * static_cast<std::size_t>(surface.pixelBytes()));
  return bytes;
}

void tell(const Document& document, QByteArray& last, std::int64_t compactions = 0) {
  const QByteArray now = fingerprintOf(document);
  if (now == last) return;
  last = now;
  StateReport report{.time = sharedClock(), .compactions = compactions};
  std::memcpy(report.fingerprint, now.constData(), fingerprintBytes);
  if (::write(STDOUT_FILENO, &report, sizeof report) != sizeof report) std::_Exit(2);
}

}  // namespace

QByteArray fingerprintOf(const Document& document) {
  auto manifest = describeDocument(document);
  if (!manifest) return {};
  // The time of the writing is no part of the document.
  manifest->metadata = {};
  QCryptographicHash hash(QCryptographicHash::Sha1);
  hash.addData(encodeManifest(*manifest));
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    for (const SurfaceKind kind : {SurfaceKind::pixels, SurfaceKind::mask}) {
      if (const ConstTexture surface = layer->surface(kind)) hash.addData(bytesOf(*surface));
    }
  }
  return hash.result();
}

std::int64_t sharedClock() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void runUntilKilled(const QString& folder, unsigned seed) {
  ChildDisk disk(seed % 2 == 1);
  const ScopedFileOperations scope(disk);
  RecoverySettings settings;
  settings.folder = folder + QStringLiteral("/recovery");
  settings.interval = std::chrono::milliseconds(journalIntervalMs);
  // So that journals are compacted while the process lives.
  settings.toleratedWaste = 4'000;
  Recovery recovery(settings);
  const DocumentPtr document = Document::create(QStringLiteral("Random"), 150, 140,
                                                modes[seed % modes.size()], MetalContext::shared());
  document->setDirty(true);
  test::RandomCommands commands(document, seed);
  QByteArray last;
  tell(*document, last);
  recovery.follow(document);
  QObject receiver;
  const auto save = [&] {
    document->setDirty(false);
    DocumentIO::save(document, folder + QStringLiteral("/saved.tessel"), MetalContext::shared(), &receiver,
                     [&](const FileResult<void>& result) {
                       if (!result) std::_Exit(4);
                       recovery.saved(*document);
                       // What the commands do to a clean document doesn't count as work.
                       document->setDirty(true);
                     });
  };
  for (;;) {
    const int choice = commands.below(100);
    if (choice < 1 && savesWith(seed) && !DocumentIO::isSaving()) {
      save();
    } else if (choice < 9) {
      document->undo();
    } else if (choice < 16) {
      document->redo();
    } else {
      commands.runOne();
    }
    // A record can only be made of a state that has been told.
    tell(*document, last, disk.compactions);
    QCoreApplication::processEvents();
    if (recovery.status().state != RecoveryStatus::State::recording &&
        !recovery.status().reason.contains(u"slow"))
      std::_Exit(3);
  }
}

void dieInSave(const QString& folder, unsigned seed) {
  ChildDisk disk(seed % 2 == 1);
  const ScopedFileOperations scope(disk);
  RecoverySettings settings;
  settings.folder = folder + QStringLiteral("/recovery");
  settings.interval = std::chrono::hours(1);
  settings.patience = std::chrono::minutes(10);
  // Enough for the journal, but not for the copy of a file.
  const bool isFileHeld = seed < 4 || editsDuringSave(seed);
  if (!isFileHeld) settings.maximumBytes = 480'000;
  const QString path = folder + QStringLiteral("/saved.tessel");
  const DocumentPtr document = richDocument(modes[seed % modes.size()]);
  if (!DocumentIO::saveSynchronously(document, path, MetalContext::shared())) std::_Exit(4);
  document->setSource(path, std::nullopt);
  Recovery recovery(settings);
  recovery.follow(document);
  document->setOpacity(document->activeLayer()->id, 0.25F);
  document->setDirty(true);
  recovery.recordNow();
  const auto isHeld = [&] {
    const auto bases = QDir(settings.folder).entryList({QStringLiteral("*.base")});
    return !bases.isEmpty();
  };
  while (isFileHeld && !isHeld()) QThread::msleep(1);
  // The last edit has no record yet when the save begins.
  document->invertActive();
  QByteArray last;
  tell(*document, last);
  document->setDirty(false);
  recovery.recordNow();
  disk.diesAfterRenamingTo = path.toStdString();
  QObject receiver;
  DocumentIO::save(document, path, MetalContext::shared(), &receiver,
                   [](const FileResult<void>&) { std::_Exit(5); });
  if (editsDuringSave(seed)) {
    document->setOpacity(document->activeLayer()->id, 0.75F);
    document->setDirty(true);
    recovery.recordNow();
    tell(*document, last);
  }
  disk.mayReplace = true;
  for (;;) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace orvanel::testing
