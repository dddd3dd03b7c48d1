#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <csignal>
#include <cstring>
#include <iostream>
#include <random>
#include <vector>

#include "io/document/DocumentIO.h"
#include "io/files/KnownFile.h"
#include "recovery/JournalChild.h"
#include "recovery/RecoveryStore.h"

namespace orvanel {
namespace {

using testing::StateReport;

#ifdef __SANITIZE_ADDRESS__
constexpr int rounds = 40;
#else
constexpr int rounds = 200;
#endif
// In intervals from a change to its record. Two are promised, and kept on a machine that isn't overloaded
// (180 ms at most). The test turns the interval down to a fiftieth, and a journal is written at low priority,
// so that a machine that is busy with other tests is late now and then: one kill in thirteen beside three
// busy programs and two compilers on two cores, by 744 ms at most, and by 4.8 s once when there were more. So
// most kills have to keep the promise as it is turned down, and all of them the ten seconds that are
// promised.
constexpr int promisedIntervals = 2;
constexpr int mostLateRounds = rounds / 4;
constexpr std::int64_t mostMs = 10'000;

std::vector<StateReport> reportsOf(QProcess& child) {
  const QByteArray bytes = child.readAllStandardOutput();
  std::vector<StateReport> reports(static_cast<std::size_t>(bytes.size()) / sizeof(StateReport));
  std::memcpy(reports.data(), bytes.constData(), reports.size() * sizeof(StateReport));
  return reports;
}

/// How long before the kill the child was last in this state, in nanoseconds; nothing if it never was.
std::optional<std::int64_t> ageOf(const QByteArray& fingerprint, const std::vector<StateReport>& reports,
                                  std::int64_t killed) {
  for (std::size_t i = reports.size(); i-- > 0;) {
    if (std::memcmp(reports[i].fingerprint, fingerprint.constData(), testing::fingerprintBytes) != 0)
      continue;
    return i + 1 < reports.size() ? std::max<std::int64_t>(0, killed - reports[i + 1].time) : 0;
  }
  return std::nullopt;
}

/// In memory where that is possible: a disk that is busy with something else suspends journals, and what is
/// tested here is the process that dies.
QString placeForStores() {
  const QString memory = QStringLiteral("/dev/shm");
  return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + QStringLiteral("/journals-XXXXXX");
}

bool holdsJournal(const QString& folder) {
  return !QDir(folder).entryList({QStringLiteral("*.journal")}).isEmpty();
}

/// What the next start finds after a kill.
struct Found {
  DocumentPtr document;
  QString loss;
};

Found fromJournal(const RecoveryStore& store) {
  const auto claimed = store.claim(store.orphans().at(0).id);
  const auto contents = claimed->restore(MetalContext::shared(), {});
  if (!contents) return {nullptr, contents.error()};
  return {buildRestored(*contents, MetalContext::shared()), contents->loss};
}

Found fromFile(const QString& path) {
  const auto document = DocumentIO::loadSynchronously(path, MetalContext::shared());
  return {document.value_or(nullptr), document ? QString() : document.error().message};
}

/// A process of this program for a test, and the place for its files.
class KilledJournal : public ::testing::Test {
 protected:
  KilledJournal() : folder(placeForStores()) {
    settings.folder = folder.filePath(QStringLiteral("recovery"));
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  }
  void start(const char* what, int seed) {
    child.start(QCoreApplication::applicationFilePath(),
                {QString::fromLatin1(what), folder.path(), QString::number(seed)});
    ASSERT_TRUE(child.waitForStarted());
  }
  void waitForItsEnd() {
    ASSERT_TRUE(child.waitForFinished(60'000));
    ASSERT_EQ(child.exitStatus(), QProcess::CrashExit) << "it gave up by itself: " << child.exitCode();
  }
  /// For the next round.
  void clear() {
    for (const QString& place : {settings.folder, folder.path()}) {
      QDir directory(place);
      for (const QString& name : directory.entryList(QDir::Files | QDir::Hidden)) directory.remove(name);
    }
  }

  QTemporaryDir folder;
  RecoverySettings settings;
  QProcess child;
};

TEST_F(KilledJournal, GivesBackARecentState) {
  std::mt19937 random(2025);
  std::int64_t sum = 0;
  std::int64_t longest = 0;
  std::size_t states = 0;
  int saved = 0;
  int late = 0;
  std::int64_t compactions = 0;
  const QString file = folder.filePath(QStringLiteral("saved.tessel"));
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    clear();
    start(testing::runUntilKilledArgument, round);
    // A save may remove it at once.
    bool hasBegun = false;
    for (int wait = 0; wait < 30'000 && !hasBegun; ++wait) {
      QThread::msleep(1);
      hasBegun = holdsJournal(settings.folder);
    }
    ASSERT_TRUE(hasBegun);
    const unsigned mostIntervalsOfLife = testing::savesWith(static_cast<unsigned>(round)) ? 4 : 20;
    const unsigned life = random() % (mostIntervalsOfLife * testing::journalIntervalMs);
    // Takes its reports meanwhile: it would wait for a full pipe.
    ASSERT_FALSE(child.waitForFinished(static_cast<int>(life)));
    const std::int64_t killed = testing::sharedClock();
    ASSERT_EQ(::kill(static_cast<pid_t>(child.processId()), SIGKILL), 0);
    waitForItsEnd();

    const RecoveryStore store(settings);
    const OrphanList orphans = store.orphans();
    ASSERT_LE(orphans.size(), 1U);
    Found found = orphans.empty() ? Found() : fromJournal(store);
    // Between the save that replaced the file and the record that belongs to the new one, a copy of the old
    // one may not have been made yet: then everything is in the new one.
    const bool isOnlyInFile = orphans.empty() || (!found.loss.isEmpty() && round % 2 == 1);
    if (isOnlyInFile) found = fromFile(file);
    ASSERT_EQ(found.loss, QString());
    ASSERT_NE(found.document, nullptr);
    if (!isOnlyInFile) {
      EXPECT_EQ(found.document->name.value(), QStringLiteral("Random"));
      EXPECT_TRUE(found.document->isDirty.value());
    }
    const std::vector<StateReport> reports = reportsOf(child);
    const auto age = ageOf(testing::fingerprintOf(*found.document), reports, killed);
    ASSERT_TRUE(age.has_value()) << "it was never in this state";
    EXPECT_LE(*age / 1'000'000, mostMs);
    late += *age / 1'000'000 > promisedIntervals * testing::journalIntervalMs ? 1 : 0;
    sum += *age;
    longest = std::max(longest, *age);
    states += reports.size();
    compactions += reports.back().compactions;
    saved += QFileInfo::exists(file) ? 1 : 0;
  }
  EXPECT_GT(compactions, 0);
  EXPECT_LE(late, mostLateRounds);
  std::cout << rounds << " kills after " << states << " states and " << compactions << " compactions, "
            << saved << " of them after a save; what was lost was " << sum / rounds / 1'000'000
            << " ms old on average and " << longest / 1'000'000 << " ms at most, " << late
            << " times more than two intervals, with an interval of " << testing::journalIntervalMs
            << " ms\n";
}

TEST_F(KilledJournal, RestoresWhatASaveHadJustReplaced) {
  // With a link to the file that was replaced, with a copy of it, and with neither. What is edited during the
  // save is in the journal alone, whose file is the older one then.
  for (const int seed : {0, 1, 2, 3, 7, 8, 9}) {
    SCOPED_TRACE(seed);
    clear();
    start(testing::dieInSaveArgument, seed);
    waitForItsEnd();
    const std::vector<StateReport> reports = reportsOf(child);
    ASSERT_EQ(reports.size(), testing::editsDuringSave(static_cast<unsigned>(seed)) ? 2U : 1U);
    const QByteArray expected(reports.back().fingerprint, testing::fingerprintBytes);
    const QByteArray savedState(reports.front().fingerprint, testing::fingerprintBytes);
    const RecoveryStore store(settings);
    ASSERT_EQ(store.orphans().size(), 1U);
    const Found found = fromJournal(store);
    ASSERT_EQ(found.loss, QString());
    EXPECT_EQ(testing::fingerprintOf(*found.document), expected)
        << "also what was edited just before the save, and during it";
    // Its file isn't the one that it was edited in: a save would ask first, and tell why.
    const auto known = std::dynamic_pointer_cast<const KnownFile>(found.document->fileMemory());
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->state(), FileState::otherVersion);
    const Found saved = fromFile(folder.filePath(QStringLiteral("saved.tessel")));
    ASSERT_NE(saved.document, nullptr);
    EXPECT_EQ(testing::fingerprintOf(*saved.document), savedState);
  }
}

}  // namespace
}  // namespace orvanel
