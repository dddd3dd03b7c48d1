#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <optional>
#include <random>

#include "io/document/DocumentFixture.h"
#include "io/document/EndlessSaver.h"

namespace orvanel {
namespace {

using testing::Versions;

bool holdsVersion(const Document& document, Versions kind, int version) {
  const DocumentPtr expected = testing::versionToSave(kind, version);
  const LayerNodeList& layers = document.rootNodes.value();
  const LayerNodeList& expectedLayers = expected->rootNodes.value();
  if (layers.size() != expectedLayers.size()) return false;
  for (std::size_t i = 0; i < layers.size(); ++i) {
    if (layers[i].name().value() != expectedLayers[i].name().value()) return false;
    if (!testing::sameSurface(layers[i].layer()->texture.value(),
                              expectedLayers[i].layer()->texture.value())) {
      return false;
    }
  }
  return true;
}

/// Waits for the saver to report another save. Returns the time that took, or nothing on failure.
std::optional<std::chrono::microseconds> awaitSave(QProcess& saver) {
  const auto start = std::chrono::steady_clock::now();
  char saved = 0;
  while (saver.bytesAvailable() == 0) {
    if (!saver.waitForReadyRead(60'000)) return std::nullopt;
  }
  if (!saver.getChar(&saved)) return std::nullopt;
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
}

class KilledSave : public ::testing::TestWithParam<Versions> {};

TEST_P(KilledSave, leavesTheOldFileOrTheNewOne) {
  const Versions kind = GetParam();
  const QTemporaryDir directory;
  const QString path = directory.filePath(QStringLiteral("image.tessel"));
  ASSERT_TRUE(DocumentIO::saveSynchronously(testing::versionToSave(kind, 0), path, MetalContext::shared())
                  .has_value());
  std::mt19937 random(2024);
  std::array<int, 2> found{};
  for (int round = 0; round < (kind == Versions::edited ? 120 : 80); ++round) {
    QProcess saver;
    saver.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(testing::saveForeverArgument),
                                                          QString::number(static_cast<int>(kind)), path});
    // The first save is a warm-up and the second is timed, so that the kill falls within a later save however
    // busy the machine is.
    ASSERT_TRUE(awaitSave(saver).has_value());
    const auto duration = awaitSave(saver);
    ASSERT_TRUE(duration.has_value());
    const auto longest = std::max<unsigned long>(1000, 2 * static_cast<unsigned long>(duration->count()));
    QThread::usleep(random() % longest);
    ASSERT_EQ(::kill(static_cast<pid_t>(saver.processId()), SIGKILL), 0);
    ASSERT_TRUE(saver.waitForFinished(60'000));
    ASSERT_EQ(saver.exitStatus(), QProcess::CrashExit) << "it gave up by itself";

    const auto loaded = DocumentIO::loadSynchronously(path, MetalContext::shared());
    ASSERT_TRUE(loaded.has_value()) << "round " << round << ": " << loaded.error().message.toStdString();
    const bool isFirst = holdsVersion(**loaded, kind, 0);
    EXPECT_TRUE(isFirst || holdsVersion(**loaded, kind, 1)) << "round " << round;
    ++found[isFirst ? 0 : 1];
    // A killed process leaves its temporary file behind.
    for (const QString& left : testing::filesIn(directory.path())) {
      if (left.startsWith(QStringLiteral("dunmarrow_save_"))) QFile::remove(directory.filePath(left));
    }
  }
  EXPECT_GT(found[0], 0);
  EXPECT_GT(found[1], 0);
}

INSTANTIATE_TEST_SUITE_P(Versions, KilledSave, ::testing::Values(Versions::separate, Versions::edited));

}  // namespace
}  // namespace orvanel
