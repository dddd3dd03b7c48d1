#include "recovery/RecoveryStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <utime.h>

#include <cerrno>
#include <cstring>

#include "io/files/FaultyDisk.h"
#include "raster/MemoryBudget.h"
#include "recovery/RecoveryFixture.h"

namespace orvanel {
namespace {

using testing::firstDifference;
using testing::unsavedDocument;

class RecoveryStoreTest : public testing::RecoveryTest {
 protected:
  static mode_t modeOf(const QString& path) {
    struct stat status {};
    ::stat(QFile::encodeName(path).constData(), &status);
    return status.st_mode & 0777U;
  }
  static void makeOfOtherVersion(const QString& journal) {
    constexpr qsizetype placeOfVersion = 4;
    QByteArray bytes = bytesOf(journal);
    ++bytes[placeOfVersion];
    put(journal, bytes);
  }
};

TEST_F(RecoveryStoreTest, isPrivateToTheUser) {
  const mode_t before = ::umask(0);
  crashWith(unsavedDocument());
  ::umask(before);
  EXPECT_EQ(modeOf(settings().folder), 0700U);
  for (const QString& name : files()) EXPECT_EQ(modeOf(QDir(settings().folder).filePath(name)), 0600U);
}

TEST_F(RecoveryStoreTest, isEmptyBeforeAnythingWasLeft) {
  EXPECT_TRUE(store().orphans().empty());
  EXPECT_FALSE(QDir(settings().folder).exists()) << "looking makes no folder";
}

TEST_F(RecoveryStoreTest, hidesWhatALivingProcessWrites) {
  const DocumentPtr document = unsavedDocument();
  Recovery living(settings());
  living.follow(document);
  living.recordNow();
  EXPECT_EQ(files().size(), 1);
  EXPECT_TRUE(store().orphans().empty());
  const QString id = JournalFiles::idInName(files().at(0));
  EXPECT_FALSE(store().claim(id).has_value());
}

TEST_F(RecoveryStoreTest, anOrphanCanBeClaimedOnce) {
  crashWith(unsavedDocument());
  const QString id = store().orphans().at(0).id;
  auto first = std::make_unique<Described<ClaimedOrphan>>(store().claim(id));
  ASSERT_TRUE(first->has_value());
  EXPECT_FALSE(store().claim(id).has_value());
  EXPECT_TRUE(store().orphans().empty());
  first.reset();
  EXPECT_TRUE(store().claim(id).has_value());
}

TEST_F(RecoveryStoreTest, aLaterJournalOfTheSameDocumentTakesItsPlace) {
  crashWith(unsavedDocument());
  const QString first = store().orphans().at(0).id;
  const QString second = QStringLiteral("0A1B2C3D-0000-4000-8000-000000000001");
  const auto next = JournalFiles::named(settings().folder, second);
  store().claim(first)->noteSuccessor(*next);
  ASSERT_EQ(store().offer().size(), 1U) << "the other doesn't stand yet";
  ASSERT_TRUE(QFile::copy(journalPath(), QFile::decodeName(next->journal().c_str())));
  ASSERT_EQ(store().orphans().size(), 1U);
  EXPECT_EQ(store().orphans().at(0).id, second);
  EXPECT_EQ(store().offer().size(), 1U);
  EXPECT_EQ(files().filter(first), QStringList()) << "nobody needs it any more";
}

TEST_F(RecoveryStoreTest, whatIsDiscardedTakesTheOrphansBeforeItAlong) {
  crashWith(unsavedDocument());
  const QString copied = journalPath();
  QString last = store().orphans().at(0).id;
  for (const char* id : {"0A1B2C3D-0000-4000-8000-000000000001", "0A1B2C3D-0000-4000-8000-000000000002"}) {
    const auto next = JournalFiles::named(settings().folder, QString::fromLatin1(id));
    store().claim(last)->noteSuccessor(*next);
    ASSERT_TRUE(QFile::copy(copied, QFile::decodeName(next->journal().c_str())));
    last = QString::fromLatin1(id);
  }
  ASSERT_EQ(store().orphans().size(), 1U);
  ASSERT_TRUE(store().discard(last).has_value());
  EXPECT_TRUE(store().orphans().empty());
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryStoreTest, whatIsDiscardedLeavesAnOrphanWhoseSuccessorNeverStood) {
  crashWith(unsavedDocument());
  const auto next =
      JournalFiles::named(settings().folder, QStringLiteral("0A1B2C3D-0000-4000-8000-000000000001"));
  claimOrphan()->noteSuccessor(*next);
  EXPECT_TRUE(next->removeAll().has_value());
  EXPECT_EQ(store().orphans().size(), 1U);
}

TEST_F(RecoveryStoreTest, namesThatAreNoIdsLeadNowhere) {
  crashWith(unsavedDocument());
  for (const char* id : {"", "../secret", "nonsense", "00000000-0000-0000-0000-000000000000"}) {
    EXPECT_FALSE(store().claim(QString::fromLatin1(id)).has_value()) << id;
  }
}

TEST_F(RecoveryStoreTest, listsTheNewestFirst) {
  for (const char* name : {"First", "Second", "Third"}) {
    const DocumentPtr document = unsavedDocument();
    document->setName(QString::fromLatin1(name));
    crashWith(document);
    QThread::msleep(2);
  }
  const OrphanList orphans = store().orphans();
  ASSERT_EQ(orphans.size(), 3U);
  EXPECT_EQ(orphans[0].name, QStringLiteral("Third"));
  EXPECT_EQ(orphans[2].name, QStringLiteral("First"));
}

TEST_F(RecoveryStoreTest, removesWhatWasOfferedTooLongAgo) {
  crashWith(unsavedDocument());
  EXPECT_EQ(strictStore().orphans().size(), 1U);
  EXPECT_EQ(strictStore().offer().size(), 1U) << "nobody has been told of it before";
  EXPECT_EQ(strictStore().orphans().size(), 1U) << "listing removes nothing";
  EXPECT_TRUE(strictStore().offer().empty());
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryStoreTest, theAgeCountsFromTheFirstOffer) {
  crashWith(unsavedDocument());
  const QString journal = QDir(settings().folder).filePath(files().at(0));
  const utimbuf longAgo{1'000'000'000, 1'000'000'000};
  ::utime(QFile::encodeName(journal).constData(), &longAgo);
  for (int start = 0; start < 3; ++start) EXPECT_EQ(store().offer().size(), 1U);
  EXPECT_TRUE(strictStore().offer().empty());
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryStoreTest, anOfferByAClockThatWasWrongDoesNotCount) {
  crashWith(unsavedDocument());
  EXPECT_EQ(store().offer().size(), 1U);
  const JournalFiles named = *JournalFiles::named(settings().folder, JournalFiles::idInName(files().at(0)));
  const utimbuf longAgo{1'000'000'000, 1'000'000'000};
  ::utime(named.offered().c_str(), &longAgo);
  EXPECT_EQ(store().offer().size(), 1U) << "it is offered as if for the first time";
  const QFileInfo mark(QString::fromStdString(named.offered()));
  EXPECT_LT(mark.lastModified().secsTo(QDateTime::currentDateTime()), 3600) << "its time runs from now";
}

TEST_F(RecoveryStoreTest, offersWhatAnotherVersionWroteHoweverOldItIs) {
  crashWith(unsavedDocument());
  makeOfOtherVersion(journalPath());
  const utimbuf longAgo{1'000'000'000, 1'000'000'000};
  ::utime(QFile::encodeName(journalPath()).constData(), &longAgo);
  for (int start = 0; start < 3; ++start) {
    const OrphanList orphans = store().offer();
    ASSERT_EQ(orphans.size(), 1U);
    EXPECT_EQ(orphans[0].obstacle,
              QStringLiteral("Another version of this program has written the recovery data."));
    EXPECT_EQ(orphans[0].time.toSecsSinceEpoch(), longAgo.modtime);
    EXPECT_GT(orphans[0].bytes, 0);
  }
  const auto claimed = claimOrphan();
  ASSERT_TRUE(claimed.has_value());
  const auto contents = claimed->restore(MetalContext::shared(), {});
  ASSERT_FALSE(contents.has_value());
  EXPECT_EQ(contents.error(),
            QStringLiteral("Another version of this program has written the recovery data."));
  claimed->remove();
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryStoreTest, whatCantBeReadIsBoundedLikeTheRest) {
  crashWith(unsavedDocument());
  makeOfOtherVersion(journalPath());
  EXPECT_EQ(strictStore().offer().size(), 1U) << "nobody has been told of it before";
  EXPECT_TRUE(strictStore().offer().empty());
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryStoreTest, damageIsToldAsWell) {
  crashWith(unsavedDocument());
  put(journalPath(), QByteArray(1000, 'x'));
  ASSERT_EQ(store().offer().size(), 1U);
  EXPECT_EQ(store().offer().at(0).obstacle, QStringLiteral("The recovery data is damaged."));
}

TEST_F(RecoveryStoreTest, aDiskThatFailsIsNoDamage) {
  const DocumentPtr document = unsavedDocument();
  crashWith(document);
  {
    testing::UnreadableDisk disk;
    const ScopedFileOperations scope(disk);
    const OrphanList orphans = store().offer();
    ASSERT_EQ(orphans.size(), 1U);
    EXPECT_EQ(orphans[0].obstacle, QStringLiteral("The recovery data can't be read: Input/output error."));
  }
  EXPECT_TRUE(store().offer().at(0).obstacle.isEmpty());
  EXPECT_EQ(firstDifference(*document, *restored()), "");
}

/// Journals can't be opened, for this reason.
class ClosedDisk final : public FileOperations {
 public:
  explicit ClosedDisk(int reason) : reason_(reason) {}
  int openFile(const std::string& /*path*/, int /*flags*/) override {
    errno = reason_;
    return -1;
  }

 private:
  int reason_;
};

TEST_F(RecoveryStoreTest, whatCantBeOpenedIsListedWithItsReason) {
  crashWith(unsavedDocument());
  const QString id = store().orphans().at(0).id;
  for (const int reason : {EACCES, EIO}) {
    ClosedDisk disk(reason);
    const ScopedFileOperations scope(disk);
    const OrphanList orphans = store().offer();
    ASSERT_EQ(orphans.size(), 1U);
    EXPECT_EQ(orphans[0].id, id);
    EXPECT_EQ(orphans[0].obstacle, QStringLiteral("The recovery data can't be read: %1.")
                                       .arg(QString::fromLocal8Bit(std::strerror(reason))));
    EXPECT_GT(orphans[0].bytes, 0);
    const auto claimed = store().claim(id);
    ASSERT_FALSE(claimed.has_value());
    EXPECT_EQ(claimed.error(), orphans[0].obstacle);
  }
  EXPECT_EQ(store().orphans().at(0).obstacle, QString()) << "it is still there";
}

TEST_F(RecoveryStoreTest, whatCantBeOpenedCanBeDiscarded) {
  for (const int reason : {EACCES, EIO}) {
    crashWith(unsavedDocument());
    const QString id = store().orphans().at(0).id;
    ClosedDisk disk(reason);
    const ScopedFileOperations scope(disk);
    EXPECT_TRUE(store().discard(id).has_value());
    EXPECT_EQ(files(), QStringList());
  }
}

TEST_F(RecoveryStoreTest, whatOnlyThisProcessCantOpenStays) {
  crashWith(unsavedDocument());
  const QString id = store().orphans().at(0).id;
  ClosedDisk disk(EMFILE);
  const ScopedFileOperations scope(disk);
  EXPECT_FALSE(store().discard(id).has_value()) << "another one may be writing it";
  EXPECT_EQ(store().orphans().size(), 1U);
}

TEST_F(RecoveryStoreTest, whatCantBeOpenedIsBoundedLikeTheRest) {
  crashWith(unsavedDocument());
  ClosedDisk disk(EIO);
  const ScopedFileOperations scope(disk);
  EXPECT_EQ(strictStore().offer().size(), 1U) << "nobody has been told of it before";
  EXPECT_TRUE(strictStore().offer().empty());
  EXPECT_EQ(files(), QStringList());
}

/// Its files can't be removed.
class LastingDisk final : public FileOperations {
 public:
  int removeFile(const std::string& /*path*/) override {
    errno = EROFS;
    return -1;
  }
};

TEST_F(RecoveryStoreTest, whatCantBeRemovedIsOfferedAgainAndSaidToStay) {
  crashWith(unsavedDocument());
  LastingDisk disk;
  const ScopedFileOperations scope(disk);
  const auto discarded = store().discard(store().orphans().at(0).id);
  ASSERT_FALSE(discarded.has_value());
  EXPECT_EQ(discarded.error(), QStringLiteral("The recovery data can't be removed: Read-only file system."));
  for (int start = 0; start < 3; ++start) EXPECT_EQ(strictStore().offer().size(), 1U);
}

/// Its files can be read and not written.
class ReadOnlyDisk final : public FileOperations {
 public:
  explicit ReadOnlyDisk(int reason) : reason_(reason) {}
  int openFile(const std::string& path, int flags) override {
    if ((flags & O_ACCMODE) == O_RDONLY) return FileOperations::openFile(path, flags);
    errno = reason_;
    return -1;
  }

 private:
  int reason_;
};

TEST_F(RecoveryStoreTest, whatCantBeWrittenIsRestoredAllTheSame) {
  const DocumentPtr document = unsavedDocument();
  crashWith(document);
  for (const int reason : {EACCES, EROFS}) {
    ReadOnlyDisk disk(reason);
    const ScopedFileOperations scope(disk);
    ASSERT_EQ(store().offer().size(), 1U);
    EXPECT_EQ(store().offer().at(0).obstacle, QString());
    EXPECT_EQ(firstDifference(*document, *restored()), "");
  }
}

TEST_F(RecoveryStoreTest, norIsMemoryThatIsLow) {
  const DocumentPtr document = unsavedDocument();
  crashWith(document);
  {
    const ScopedMemoryLimit limit(0);
    EXPECT_EQ(store().offer().at(0).obstacle,
              QStringLiteral("There is not enough memory for this document."));
    EXPECT_EQ(restored(), nullptr);
  }
  EXPECT_TRUE(store().offer().at(0).obstacle.isEmpty());
  EXPECT_EQ(firstDifference(*document, *restored()), "");
}

TEST_F(RecoveryStoreTest, tellsWhatADiskThatFailsDoesntGiveBack) {
  const DocumentPtr document = unsavedDocument();
  qint64 sizeOfFirst = 0;
  {
    Recovery recovery(settings());
    recovery.follow(document);
    recovery.recordNow();
    sizeOfFirst = QFile(journalPath()).size();
    testing::changePixels(*document);
    recovery.recordNow();
  }
  const auto orphan = claimOrphan();
  ASSERT_TRUE(orphan.has_value());
  testing::UnreadableDisk disk(sizeOfFirst);
  const ScopedFileOperations scope(disk);
  const auto contents = orphan->restore(MetalContext::shared(), {});
  ASSERT_TRUE(contents.has_value());
  EXPECT_EQ(
      contents->loss,
      QStringLiteral("Some of the recovery data can't be read, so the last changes could not be restored."));
}

TEST_F(RecoveryStoreTest, removesTheOldestOfTooMuchButNotTheNewest) {
  for (int i = 0; i < 3; ++i) {
    crashWith(unsavedDocument());
    QThread::msleep(2);
  }
  RecoverySettings strict = settings();
  strict.maximumBytes = 1;
  const OrphanList all = RecoveryStore(strict).offer();
  ASSERT_EQ(all.size(), 3U) << "nobody has been told of them before";
  strict.maximumBytes = all[0].bytes + all[1].bytes;
  EXPECT_EQ(RecoveryStore(strict).offer().size(), 2U);
  strict.maximumBytes = 1;
  const OrphanList left = RecoveryStore(strict).offer();
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].id, all[0].id);
  EXPECT_EQ(store().orphans().size(), 1U);
}

TEST_F(RecoveryStoreTest, removesUnfinishedWorkOnceItIsOld) {
  crashWith(unsavedDocument());
  const QString part =
      QDir(settings().folder).filePath(QStringLiteral("0C1A7C2E-9F2B-4F9E-8E07-0D4C3C0B6D11.part"));
  put(part, "half");
  EXPECT_EQ(store().offer().size(), 1U);
  EXPECT_TRUE(QFile::exists(part));
  const utimbuf longAgo{1'000'000'000, 1'000'000'000};
  ::utime(QFile::encodeName(part).constData(), &longAgo);
  EXPECT_EQ(store().offer().size(), 1U);
  EXPECT_FALSE(QFile::exists(part));
}

TEST_F(RecoveryStoreTest, removesWhatKilledWorkHasLeftBesideAnOrphan) {
  const DocumentPtr document = unsavedDocument();
  const auto putParts = [this] {
    const QString journal = journalPath().chopped(QStringLiteral("journal").size());
    put(journal + QStringLiteral("part"), "half");
    put(journal + QStringLiteral("1.base.part"), "half");
  };
  const auto parts = [this] { return files().filter(QStringLiteral(".part")); };
  {
    Recovery living(settings());
    living.follow(document);
    living.recordNow();
    putParts();
    static_cast<void>(store().offer());
    EXPECT_EQ(parts().size(), 2) << "its process is at work";
  }
  ASSERT_EQ(store().offer().size(), 1U);
  EXPECT_EQ(parts(), QStringList());
  EXPECT_EQ(firstDifference(*document, *restored()), "");
}

TEST_F(RecoveryStoreTest, otherFilesStay) {
  crashWith(unsavedDocument());
  put(QDir(settings().folder).filePath(QStringLiteral("notes.txt")), "mine");
  discard();
  EXPECT_EQ(files(), QStringList{QStringLiteral("notes.txt")});
}

TEST_F(RecoveryStoreTest, standsUnderTheUsersState) {
  qputenv("XDG_STATE_HOME", "/somewhere");
  EXPECT_EQ(defaultRecoveryFolder(), QStringLiteral("/somewhere/orvanel/recovery"));
  qputenv("XDG_STATE_HOME", "relative");
  EXPECT_EQ(defaultRecoveryFolder(), QDir::homePath() + QStringLiteral("/.local/state/orvanel/recovery"));
  qunsetenv("XDG_STATE_HOME");
  EXPECT_EQ(defaultRecoveryFolder(), QDir::homePath() + QStringLiteral("/.local/state/orvanel/recovery"));
}

}  // namespace
}  // namespace orvanel
