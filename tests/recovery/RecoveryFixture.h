// A store of its own, and a process's life in it, for tests of recovery.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QThread>
#include <memory>

#include "io/document/DocumentFixture.h"
#include "recovery/Recovery.h"
#include "recovery/RecoveryStore.h"

namespace orvanel::testing {

class RecoveryTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(directory.isValid()); }

  /// No record comes by itself.
  [[nodiscard]] RecoverySettings settings() const {
    RecoverySettings chosen;
    chosen.folder = directory.filePath(QStringLiteral("state/recovery"));
    chosen.interval = std::chrono::hours(1);
    chosen.retryInterval = std::chrono::hours(1);
    chosen.patience = std::chrono::minutes(10);
    return chosen;
  }
  [[nodiscard]] RecoveryStore store() const { return RecoveryStore(settings()); }
  /// To which everything is too old that has been offered.
  [[nodiscard]] RecoveryStore strictStore() const {
    RecoverySettings strict = settings();
    strict.maximumAge = std::chrono::hours(-1);
    return RecoveryStore(strict);
  }
  [[nodiscard]] QStringList files() const {
    return QDir(settings().folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
  }
  [[nodiscard]] QString journalPath() const {
    const QStringList names = QDir(settings().folder).entryList({QStringLiteral("*.journal")});
    EXPECT_EQ(names.size(), 1);
    return QDir(settings().folder).filePath(names.value(0));
  }
  [[nodiscard]] static QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  static void put(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
  }

  static void notDiscarded(const QString& reason) { ADD_FAILURE() << reason.toStdString(); }

  /// The program starts, follows the document, and ends without a word.
  void crashWith(const DocumentPtr& document) const {
    Recovery recovery(settings());
    recovery.follow(document);
    recovery.recordNow();
  }

  // Of the only orphan in the store.
  [[nodiscard]] Described<ClaimedOrphan> claimOrphan() const {
    const OrphanList orphans = store().orphans();
    EXPECT_EQ(orphans.size(), 1U);
    return store().claim(orphans.empty() ? QString() : orphans.front().id);
  }
  [[nodiscard]] Described<RestoredContents> contentsOfOrphan() const {
    const auto orphan = claimOrphan();
    return orphan ? orphan->restore(MetalContext::shared(), {}) : because(orphan.error());
  }
  /// Null if it can't be restored.
  [[nodiscard]] DocumentPtr restored() const {
    const auto found = contentsOfOrphan();
    return found ? buildRestored(*found, MetalContext::shared()) : nullptr;
  }
  void discard() const { claimOrphan()->remove(); }

  /// Delivers what waits for the main thread until the condition holds.
  static bool waitUntil(const std::function<bool()>& condition) {
    for (int round = 0; round < 20'000 && !condition(); ++round) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
      QThread::usleep(500);
    }
    return condition();
  }

  QTemporaryDir directory;
};

/// A document with unsaved changes that don't compress.
inline DocumentPtr unsavedDocument(ColorMode mode = ColorMode::rgb16) {
  const DocumentPtr document = richDocument(mode);
  document->setDirty(true);
  return document;
}

/// Changes all pixels of the active layer.
inline void changePixels(Document& document) {
  document.invertActive();
}

}  // namespace orvanel::testing
