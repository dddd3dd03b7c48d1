#include "recovery/Recovery.h"

#include <QThreadPool>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <mutex>

#include "io/files/FaultyDisk.h"
#include "model/ThumbnailGenerator.h"
#include "raster/FatalFault.h"
#include "recovery/DiskReserve.h"
#include "recovery/RecoveryFixture.h"

namespace orvanel {
namespace {

using testing::changePixels;
using testing::firstDifference;
using testing::FullDisk;
using testing::unsavedDocument;
using RecoveryTest = testing::RecoveryTest;

TEST_F(RecoveryTest, givesBackAnUnsavedDocument) {
  for (const ColorMode mode : allColorModes) {
    const DocumentPtr document = unsavedDocument(mode);
    crashWith(document);
    const DocumentPtr back = restored();
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(firstDifference(*document, *back), "") << displayName(mode);
    EXPECT_TRUE(back->isDirty.value());
    EXPECT_EQ(back->sourceFileURL.value(), std::nullopt);
    EXPECT_FALSE(back->undoStack.undoActionName());
    discard();
  }
}

TEST_F(RecoveryTest, keepsNameAndPathOfTheFile) {
  const DocumentPtr document = unsavedDocument(ColorMode::rgb8);
  document->setName(QStringLiteral("Holiday"));
  document->setSource(QStringLiteral("/pictures/Holiday.png"), Document::ImageFileFormat::png);
  crashWith(document);
  const OrphanList orphans = store().orphans();
  ASSERT_EQ(orphans.size(), 1U);
  EXPECT_EQ(orphans[0].name, QStringLiteral("Holiday"));
  EXPECT_EQ(orphans[0].path, QStringLiteral("/pictures/Holiday.png"));
  EXPECT_LT(orphans[0].time.secsTo(QDateTime::currentDateTime()), 60);
  const DocumentPtr back = restored();
  EXPECT_EQ(back->sourceFileURL.value(), QStringLiteral("/pictures/Holiday.png"));
  EXPECT_EQ(back->sourceFileFormat.value(), Document::ImageFileFormat::png);
}

TEST_F(RecoveryTest, anOrphanHasAThumbnailIfThereIsACompositeAtHand) {
  const DocumentPtr document = unsavedDocument();
  static_cast<void>(document->composite());
  crashWith(document);
  EXPECT_EQ(store().orphans().at(0).thumbnail.size(), ThumbnailGenerator::fittedSize(300, 270));
}

TEST_F(RecoveryTest, followsEveryKindOfChange) {
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(settings());
  recovery.follow(document);
  recovery.recordNow();
  const auto expectRecorded = [&](const char* what) {
    recovery.recordNow();
    // A second process can't claim it, so that a copy of the store is read.
    const QTemporaryDir copy;
    RecoverySettings other = settings();
    other.folder = copy.path();
    for (const QString& name : files())
      QFile::copy(QDir(settings().folder).filePath(name), copy.filePath(name));
    const RecoveryStore read(other);
    const auto orphan = read.claim(read.orphans().at(0).id);
    const auto contents = orphan->restore(MetalContext::shared(), {});
    ASSERT_TRUE(contents.has_value()) << what;
    EXPECT_EQ(firstDifference(*document, *buildRestored(*contents, MetalContext::shared())), "") << what;
  };
  changePixels(*document);
  expectRecorded("pixels");
  document->addLayer(QStringLiteral("New"));
  document->addFolder(QStringLiteral("Folder"));
  expectRecorded("new nodes");
  document->selectNode(document->allLayers().front()->id);
  document->duplicateNode(document->allLayers().front()->id);
  expectRecorded("a copy");
  document->addLayerMask(document->activeLayer());
  expectRecorded("a mask");
  document->resizeCanvas(200, 400, -1, 1);
  expectRecorded("another size");
  document->changeColorMode(ColorMode::grayscale8);
  expectRecorded("another mode");
  document->removeNode(document->activeLayer()->id);
  expectRecorded("a node less");
  document->undo();
  expectRecorded("the node again");
  while (document->undoStack.undoActionName()) document->undo();
  expectRecorded("everything undone");
  document->setForegroundColor({0.0F, 1.0F, 0.0F, 1.0F});
  document->setName(QStringLiteral("Another"));
  expectRecorded("name and colours");
}

TEST_F(RecoveryTest, aCleanDocumentHasNoJournal) {
  const DocumentPtr document = unsavedDocument();
  document->setDirty(false);
  crashWith(document);
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryTest, savingRemovesTheJournal) {
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(settings());
  recovery.follow(document);
  recovery.recordNow();
  EXPECT_EQ(files().size(), 1);
  document->setDirty(false);
  recovery.saved(*document);
  recovery.recordNow();
  EXPECT_EQ(files(), QStringList());
  // And the next change begins another.
  changePixels(*document);
  recovery.recordNow();
  EXPECT_EQ(files().size(), 1);
}

TEST_F(RecoveryTest, theJournalStaysUntilTheSaveHasSucceeded) {
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(settings());
  recovery.follow(document);
  recovery.recordNow();
  // A save marks the document first. It may then take long, or fail.
  document->setDirty(false);
  recovery.recordNow();
  EXPECT_EQ(files().size(), 1);
  changePixels(*document);
  document->setDirty(true);
  recovery.recordNow();
  EXPECT_EQ(files().size(), 1);
  recovery.saved(*document);
  recovery.recordNow();
  EXPECT_EQ(files().size(), 1) << "what has changed since";
}

TEST_F(RecoveryTest, closingWithoutSavingRemovesTheJournal) {
  const DocumentPtr document = unsavedDocument();
  {
    Recovery recovery(settings());
    recovery.follow(document);
    recovery.recordNow();
    recovery.closed(*document);
  }
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryTest, recordsByItselfAfterTheInterval) {
  RecoverySettings quick = settings();
  quick.interval = std::chrono::milliseconds(1);
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(quick);
  recovery.follow(document);
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records == 1; }));
  changePixels(*document);
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records == 2; }));
  EXPECT_GT(recovery.figures().bytesWritten, 0);
}

TEST_F(RecoveryTest, findsAndDiscardsOrphans) {
  crashWith(unsavedDocument());
  Recovery recovery(settings());
  QObject receiver;
  std::optional<OrphanList> found;
  recovery.findOrphans(&receiver, [&](const OrphanList& list) { found = list; });
  ASSERT_TRUE(waitUntil([&] { return found.has_value(); }));
  ASSERT_EQ(found->size(), 1U);
  recovery.discard(found->front().id, &receiver, notDiscarded);
  recovery.recordNow();
  found.reset();
  recovery.findOrphans(&receiver, [&](const OrphanList& list) { found = list; });
  ASSERT_TRUE(waitUntil([&] { return found.has_value(); }));
  EXPECT_TRUE(found->empty());
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryTest, aFullDiskSuspendsAndLaterEverythingIsThere) {
  // Every write of the first two records fails in one of the rounds.
  for (std::int64_t capacity = 0;; capacity += 40'000) {
    const DocumentPtr document = unsavedDocument();
    Recovery recovery(settings());
    bool hasFailed = false;
    const Subscription watching = recovery.observeStatus([&](const RecoveryStatus& status) {
      if (status.state == RecoveryStatus::State::suspended) hasFailed = !status.reason.isEmpty();
    });
    {
      FullDisk disk(capacity);
      const ScopedFileOperations scope(disk);
      recovery.follow(document);
      recovery.recordNow();
      changePixels(*document);
      recovery.recordNow();
      if (!hasFailed) {
        EXPECT_GT(capacity, 100'000);
        return;
      }
    }
    changePixels(*document);
    document->addLayer(QStringLiteral("Later"));
    recovery.recordNow();
    EXPECT_EQ(recovery.status().state, RecoveryStatus::State::recording);
    const DocumentPtr now = document;
    const QByteArray journal = bytesOf(journalPath());
    recovery.closed(*document);
    recovery.recordNow();
    put(QDir(settings().folder).filePath(QStringLiteral("0C1A7C2E-9F2B-4F9E-8E07-0D4C3C0B6D11.journal")),
        journal);
    const DocumentPtr back = restored();
    ASSERT_NE(back, nullptr) << capacity;
    EXPECT_EQ(firstDifference(*now, *back), "") << capacity;
    discard();
  }
}

/// A disk that doesn't answer until it is told to.
class StuckDisk final : public FileOperations {
 public:
  int syncData(int file) override {
    std::unique_lock guard(mutex_);
    if (isOnlyFirstStuck && std::exchange(wasAsked_, true)) return FileOperations::syncData(file);
    answers_.wait(guard, [this] { return isFree_; });
    return FileOperations::syncData(file);
  }
  void answer() {
    const std::lock_guard guard(mutex_);
    isFree_ = true;
    answers_.notify_all();
  }

  bool isOnlyFirstStuck = false;

 private:
  std::mutex mutex_;
  std::condition_variable answers_;
  bool isFree_ = false;
  bool wasAsked_ = false;
};

TEST_F(RecoveryTest, aSlowDiskSuspendsUntilItHasCaughtUp) {
  StuckDisk disk;
  const ScopedFileOperations scope(disk);
  RecoverySettings quick = settings();
  quick.interval = std::chrono::milliseconds(1);
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(quick);
  recovery.follow(document);
  // The record is under way; another one comes due.
  ASSERT_TRUE(waitUntil([&] {
    changePixels(*document);
    return recovery.status().state == RecoveryStatus::State::suspended;
  }));
  EXPECT_FALSE(recovery.status().reason.isEmpty());
  disk.answer();
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records >= 2; }));
  EXPECT_EQ(recovery.status().state, RecoveryStatus::State::recording);
}

TEST_F(RecoveryTest, aRecordThatHangsHoldsUpNoOtherDocument) {
  StuckDisk disk;
  disk.isOnlyFirstStuck = true;
  const ScopedFileOperations scope(disk);
  RecoverySettings quick = settings();
  quick.interval = std::chrono::milliseconds(1);
  const DocumentPtr first = unsavedDocument();
  const DocumentPtr second = unsavedDocument();
  Recovery recovery(quick);
  recovery.follow(first);
  ASSERT_TRUE(waitUntil([&] { return !files().isEmpty(); }));
  recovery.follow(second);
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records == 1; }));
  disk.answer();
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records == 2; }));
}

TEST_F(RecoveryTest, theEndDoesntWaitForADiskThatNeverAnswers) {
  StuckDisk disk;
  const ScopedFileOperations scope(disk);
  RecoverySettings impatient = settings();
  impatient.patience = std::chrono::milliseconds(20);
  const DocumentPtr document = unsavedDocument();
  {
    Recovery recovery(impatient);
    recovery.follow(document);
    recovery.recordNow();
    EXPECT_EQ(recovery.figures().records, 0);
  }
  disk.answer();
  QThreadPool::globalInstance()->waitForDone();
}

TEST_F(RecoveryTest, followingADocumentTouchesNoDisk) {
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(settings());
  recovery.follow(document);
  EXPECT_FALSE(QDir(settings().folder).exists());
}

/// A disk with so much room beyond what is left to the user's files.
class NearlyFullDisk final : public FileOperations {
 public:
  int measureSpace(int /*file*/, DiskSpace& space) override {
    space = {largestReserve + static_cast<std::uint64_t>(room.load()), std::uint64_t{1} << 40U};
    return 0;
  }
  std::atomic<std::int64_t> room{0};
};

TEST_F(RecoveryTest, leavesTheLastOfTheDiskToTheUsersFiles) {
  NearlyFullDisk disk;
  const ScopedFileOperations scope(disk);
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(settings());
  recovery.follow(document);
  recovery.recordNow();
  EXPECT_EQ(recovery.status().state, RecoveryStatus::State::suspended);
  EXPECT_TRUE(recovery.status().reason.contains(QStringLiteral("nearly full")));
  EXPECT_EQ(files(), QStringList());
  // A save may take what is left.
  const QString path = directory.filePath(QStringLiteral("image.tessel"));
  EXPECT_TRUE(DocumentIO::saveSynchronously(document, path, MetalContext::shared()).has_value());
  disk.room = 100'000'000;
  changePixels(*document);
  recovery.recordNow();
  EXPECT_EQ(recovery.status().state, RecoveryStatus::State::recording);
}

TEST(DiskReserve, isAPartOfASmallDiskAndNoMoreThanAGigabyteOfALargeOne) {
  class Disk final : public FileOperations {
   public:
    int measureSpace(int /*file*/, DiskSpace& asked) override {
      asked = space;
      return 0;
    }
    DiskSpace space;
  };
  Disk disk;
  const ScopedFileOperations scope(disk);
  disk.space = {60'000, 1'000'000};
  EXPECT_TRUE(leavesReserve(0, 10'000));
  EXPECT_FALSE(leavesReserve(0, 10'001));
  disk.space = {(std::uint64_t{1} << 30U) + 10, std::uint64_t{1} << 50U};
  EXPECT_TRUE(leavesReserve(0, 10));
  EXPECT_FALSE(leavesReserve(0, 11));
}

TEST_F(RecoveryTest, recordsWhatALongSaveWrites) {
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(settings());
  recovery.follow(document);
  recovery.recordNow();
  changePixels(*document);
  // A save begins, and takes its time.
  document->setDirty(false);
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records == 2; })) << "at once, whatever the interval";
  document->setOpacity(document->activeLayer()->id, 0.5F);
  recovery.saved(*document);
  document->setDirty(false);
  recovery.saved(*document);
  recovery.recordNow();
  EXPECT_EQ(files(), QStringList());
}

TEST_F(RecoveryTest, aFirstRecordWaitsForItsTimeWhileASaveRuns) {
  RecoverySettings quick = settings();
  quick.interval = std::chrono::milliseconds(1);
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(quick);
  recovery.follow(document);
  document->setDirty(false);
  EXPECT_TRUE(waitUntil([&] { return recovery.figures().records == 1; }));
}

/// What a process says that has this many documents with a record, and then ends.
class LastWordsDeathTest : public RecoveryTest {
 protected:
  LastWordsDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

  void endWith(const std::function<void(Recovery&)>& before, const std::function<void()>& end) const {
    Recovery recovery(settings());
    const DocumentPtr document = unsavedDocument();
    document->setName(QStringLiteral("Kept"));
    recovery.follow(document);
    recovery.recordNow();
    before(recovery);
    end();
  }
  static void nothing(Recovery& /*recovery*/) {}
};

TEST_F(LastWordsDeathTest, tellThatUnsavedWorkIsKept) {
  EXPECT_DEATH(endWith(nothing, [] { fatalFault("Out of memory for pixels"); }),
               "Out of memory for pixels\nUnsaved work .* is kept, and offered at the next start.\n$");
}

TEST_F(LastWordsDeathTest, tellWhatIsNotKept) {
  const auto openAnother = [](Recovery& recovery) {
    static const DocumentPtr another = unsavedDocument();
    another->setName(QStringLiteral("New one"));
    recovery.follow(another);
  };
  EXPECT_DEATH(endWith(openAnother, [] { fatalFault("A fault"); }),
               "is kept, and offered at the next start. Not all of it is kept of \"New one\".\n$");
  const auto suspend = [](Recovery& recovery) {
    static FullDisk disk(0);
    static const ScopedFileOperations scope(disk);
    static const DocumentPtr another = unsavedDocument();
    another->setName(QStringLiteral("Too much"));
    recovery.follow(another);
    recovery.recordNow();
  };
  EXPECT_DEATH(endWith(suspend, [] { fatalFault("A fault"); }), "Not all of it is kept of \"Too much\".\n$");
}

TEST_F(LastWordsDeathTest, sayNothingOfCleanDocuments) {
  const auto openClean = [](Recovery& recovery) {
    static const DocumentPtr clean = unsavedDocument();
    clean->setDirty(false);
    recovery.follow(clean);
  };
  EXPECT_DEATH(endWith(openClean, [] { fatalFault("A fault"); }), "offered at the next start.\n$");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST_F(LastWordsDeathTest, areSaidBeforeAFaultSignalEndsTheProcessAsEver) {
  for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) {
    const auto fault = [signal] {
      speakBeforeFaultSignals();
      ::raise(signal);
    };
    EXPECT_EXIT(endWith(nothing, fault), ::testing::KilledBySignal(signal),
                "^The program has ended because of a fault.\nUnsaved work .* is kept.*\n$");
  }
  const auto abortTwice = [] {
    speakBeforeFaultSignals();
    fatalFault("Out of memory for pixels");
  };
  EXPECT_EXIT(endWith(nothing, abortTwice), ::testing::KilledBySignal(SIGABRT),
              "^Out of memory for pixels\nUnsaved work[^\n]*\n$");
}

int overflow(int depth) {
  volatile char frame[4096] = {};
  frame[0] = static_cast<char>(depth);
  return depth < 0 ? 0 : overflow(depth + 1) + frame[0];
}

TEST_F(LastWordsDeathTest, areSaidWhenTheStackOverflows) {
  const auto fault = [] {
    speakBeforeFaultSignals();
    static_cast<void>(overflow(0));
  };
  EXPECT_EXIT(endWith(nothing, fault), ::testing::KilledBySignal(SIGSEGV), "Unsaved work .* is kept");
}

#endif

}  // namespace
}  // namespace orvanel
