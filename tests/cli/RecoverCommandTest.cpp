#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "cli/ProgramRun.h"
#include "io/document/DocumentFixture.h"
#include "recovery/Recovery.h"

namespace orvanel {
namespace {

using test::Outcome;
using test::runProgram;

class RecoverCommandTest : public ::testing::Test {
 protected:
  void SetUp() override { qputenv("XDG_STATE_HOME", QFile::encodeName(folder.path())); }
  void TearDown() override { qunsetenv("XDG_STATE_HOME"); }

  static void leaveUnsaved(const QString& name) {
    Recovery recovery;
    const DocumentPtr document = Document::create(name, 30, 20, ColorMode::rgb8, MetalContext::shared());
    document->addLayer(QStringLiteral("Unsaved"));
    recovery.follow(document);
    recovery.recordNow();
  }
  static QJsonArray list() {
    const Outcome outcome = runProgram({QStringLiteral("recover")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    return QJsonDocument::fromJson(outcome.output).array();
  }

  QTemporaryDir folder;
};

TEST_F(RecoverCommandTest, listsRestoresAndDiscards) {
  EXPECT_TRUE(list().isEmpty());
  leaveUnsaved(QStringLiteral("Sketch"));
  const QJsonArray left = list();
  ASSERT_EQ(left.size(), 1);
  EXPECT_EQ(left[0][u"name"], QStringLiteral("Sketch"));
  EXPECT_TRUE(left[0][u"obstacle"].isNull());
  EXPECT_TRUE(left[0][u"path"].isNull());
  EXPECT_TRUE(QDateTime::fromString(left[0][u"time"].toString(), Qt::ISODate).isValid());

  const QString id = left[0][u"id"].toString();
  const QString restored = folder.filePath(QStringLiteral("restored.tessel"));
  const Outcome outcome = runProgram({QStringLiteral("recover"), id, restored});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  const auto document = DocumentIO::loadSynchronously(restored, MetalContext::shared());
  ASSERT_TRUE(document.has_value());
  EXPECT_EQ((*document)->layerCount(), 2);
  EXPECT_EQ(list().size(), 1) << "it stays until it is discarded";

  EXPECT_EQ(runProgram({QStringLiteral("recover"), QStringLiteral("--discard"), id}).status, 0);
  EXPECT_TRUE(list().isEmpty());
}

TEST_F(RecoverCommandTest, writesAnImageAsWell) {
  leaveUnsaved(QStringLiteral("Sketch"));
  const QString image = folder.filePath(QStringLiteral("sketch.png"));
  EXPECT_EQ(runProgram({QStringLiteral("recover"), list()[0][u"id"].toString(), image}).status, 0);
  EXPECT_TRUE(QFile::exists(image));
}

TEST_F(RecoverCommandTest, restoresWhatThereIsAndSaysWhatIsnt) {
  const QString file = folder.filePath(QStringLiteral("picture.tessel"));
  {
    Recovery recovery;
    const DocumentPtr document = testing::richDocument(ColorMode::rgb8);
    ASSERT_TRUE(DocumentIO::saveSynchronously(document, file, MetalContext::shared()).has_value());
    document->setSource(file, std::nullopt);
    document->setDirty(true);
    recovery.follow(document);
    recovery.recordNow();
  }
  // Written into, so that what keeps the file changes with it.
  QFile damaged(file);
  ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
  damaged.write("something else");
  damaged.close();
  const QString id = list()[0][u"id"].toString();
  const QString restored = folder.filePath(QStringLiteral("restored.tessel"));
  const Outcome outcome = runProgram({QStringLiteral("recover"), id, restored});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors,
              ::testing::StartsWith(id.toStdString() + ": The file \"picture.tessel\" has been changed"));
  const auto document = DocumentIO::loadSynchronously(restored, MetalContext::shared());
  ASSERT_TRUE(document.has_value());
  EXPECT_EQ((*document)->layerCount(), testing::richDocument(ColorMode::rgb8)->layerCount());
}

TEST_F(RecoverCommandTest, listsWhatItCantRead) {
  leaveUnsaved(QStringLiteral("Sketch"));
  const QDir store(defaultRecoveryFolder());
  QFile journal(store.filePath(store.entryList({QStringLiteral("*.journal")}).value(0)));
  ASSERT_TRUE(journal.open(QIODevice::WriteOnly));
  journal.write("by nobody");
  journal.close();
  const QJsonArray left = list();
  ASSERT_EQ(left.size(), 1);
  EXPECT_TRUE(left[0][u"name"].isNull());
  EXPECT_EQ(left[0][u"obstacle"], QStringLiteral("The recovery data is damaged."));
  const QString id = left[0][u"id"].toString();
  const Outcome outcome =
      runProgram({QStringLiteral("recover"), id, folder.filePath(QStringLiteral("restored.tessel"))});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, id.toStdString() + ": The recovery data is damaged.\n");
  EXPECT_EQ(runProgram({QStringLiteral("recover"), QStringLiteral("--discard"), id}).status, 0);
  EXPECT_TRUE(list().isEmpty());
}

TEST_F(RecoverCommandTest, reportsWhatIsntThere) {
  const Outcome outcome = runProgram(
      {QStringLiteral("recover"), QStringLiteral("nonsense"), folder.filePath(QStringLiteral("a.png"))});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "nonsense: There is no such document to restore.\n");
  EXPECT_EQ(
      runProgram({QStringLiteral("recover"), QStringLiteral("--discard"), QStringLiteral("nonsense")}).status,
      1);
}

}  // namespace
}  // namespace orvanel
