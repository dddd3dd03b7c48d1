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
/// Of the interval from a change to its record. Two are what is promised; the rest is for a machine that is
/// busy with other tests.
constexpr int mostIntervals = 60;

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

TEST(KilledJournal, GivesBackARecentState) {
  std::mt19937 random(2025);
  std::int64_t sum = 0;
  std::int64_t longest = 0;
  std::size_t states = 0;
  for (int round = 0; round < rounds && !::testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(round);
    const QTemporaryDir folder(placeForStores());
    RecoverySettings settings;
    settings.folder = folder.filePath(QStringLiteral("recovery"));
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(
        QCoreApplication::applicationFilePath(),
        {QString::fromLatin1(testing::runUntilKilledArgument), settings.folder, QString::number(round)});
    ASSERT_TRUE(child.waitForStarted());
    for (int wait = 0; wait < 30'000 && !holdsJournal(settings.folder); ++wait) QThread::msleep(1);
    ASSERT_TRUE(holdsJournal(settings.folder));
    QThread::usleep(random() % 400'000);
    const std::int64_t killed = testing::sharedClock();
    ASSERT_EQ(::kill(static_cast<pid_t>(child.processId()), SIGKILL), 0);
    ASSERT_TRUE(child.waitForFinished(60'000));
    ASSERT_EQ(child.exitStatus(), QProcess::CrashExit) << "it gave up by itself: " << child.exitCode();

    const RecoveryStore store(settings);
    const OrphanList orphans = store.orphans();
    ASSERT_EQ(orphans.size(), 1U);
    const auto claimed = store.claim(orphans.front().id);
    ASSERT_TRUE(claimed.has_value());
    const auto contents = claimed->restore(MetalContext::shared(), {});
    ASSERT_TRUE(contents.has_value()) << contents.error().toStdString();
    const DocumentPtr document = buildRestored(*contents, MetalContext::shared());
    EXPECT_EQ(document->name.value(), QStringLiteral("Random"));
    EXPECT_TRUE(document->isDirty.value());
    const std::vector<StateReport> reports = reportsOf(child);
    const auto age = ageOf(testing::fingerprintOf(*document), reports, killed);
    ASSERT_TRUE(age.has_value()) << "it was never in this state";
    EXPECT_LE(*age / 1'000'000, mostIntervals * testing::journalIntervalMs);
    sum += *age;
    longest = std::max(longest, *age);
    states += reports.size();
  }
  std::cout << rounds << " kills after " << states << " states; what was lost was "
            << sum / rounds / 1'000'000 << " ms old on average and " << longest / 1'000'000
            << " ms at most, with an interval of " << testing::journalIntervalMs << " ms\n";
}

}  // namespace
}  // namespace orvanel
