// `orvanel-cli check`: whether documents are whole, entry by entry.
#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>

#include "cli/ProgramRun.h"
#include "io/archive/ZipFixture.h"
#include "io/archive/ZipReader.h"
#include "io/document/DocumentIO.h"
#include "io/document/SavedFile.h"
#include "model/Document.h"
#include "raster/MetalContext.h"

namespace orvanel {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

using test::Outcome;

class CheckCommandTest : public ::testing::Test {
 protected:
  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

  QString writeDocument(const char* name) {
    document = Document::create(QStringLiteral("Sky"), 300, 200, ColorMode::rgb8, MetalContext::shared());
    document->fillSelection({0.25F, 0.5F, 1.0F, 1.0F});
    document->addLayerMask(document->activeNode()->layer());
    EXPECT_TRUE(DocumentIO::saveSynchronously(document, path(name), MetalContext::shared()));
    return path(name);
  }
  static QString writeBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return path;
  }
  static QByteArray contents(const QString& file) {
    QFile opened(file);
    EXPECT_TRUE(opened.open(QIODevice::ReadOnly));
    return opened.readAll();
  }
  static Outcome check(const QStringList& files) {
    return test::runProgram(QStringList{QStringLiteral("check")} + files);
  }
  /// Inverts the first stored byte of the entry whose path ends like this.
  void damage(const QString& file, const std::string& end) {
    const auto saved = std::dynamic_pointer_cast<const SavedFile>(document->fileMemory());
    ASSERT_NE(saved, nullptr);
    for (const auto& [entry, surface] : saved->surfaces) {
      if (!entry.ends_with(end)) continue;
      QByteArray bytes = contents(file);
      const auto at = static_cast<qsizetype>(surface.chunks.front().offset);
      bytes[at] = static_cast<char>(~bytes[at]);
      writeBytes(file, bytes);
      return;
    }
    FAIL() << "no entry " << end;
  }

  DocumentPtr document;
  QTemporaryDir folder;
};

TEST_F(CheckCommandTest, AWholeDocumentIsListedEntryByEntry) {
  const QString file = writeDocument("sky.tessel");
  const Outcome outcome = check({file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.errors, "");
  const QList<QByteArray> lines = outcome.output.trimmed().split('\n');
  const auto archive = ZipReader::open(file.toStdString());
  ASSERT_TRUE(archive);
  ASSERT_EQ(lines.size(), static_cast<qsizetype>(archive->entries().size()) + 1);
  EXPECT_EQ(lines[0], file.toUtf8() + ": whole");
  for (qsizetype i = 1; i < lines.size(); ++i) {
    const ArchiveEntryInfo& entry = archive->entries()[static_cast<std::size_t>(i - 1)];
    EXPECT_EQ(lines[i].toStdString(), "  " + entry.path + "  " + std::to_string(entry.size) + "  ok");
  }
}

TEST_F(CheckCommandTest, ADamagedEntryHasItsReasonAndTheOthersAreFine) {
  const QString file = writeDocument("sky.tessel");
  damage(file, ".mask.layerdata");
  const Outcome outcome = check({file});
  EXPECT_EQ(outcome.status, 1);
  const std::string output = outcome.output.toStdString();
  EXPECT_THAT(output, StartsWith(file.toStdString() + ": damaged\n"));
  EXPECT_THAT(output, HasSubstr("  manifest.json  "));
  EXPECT_THAT(output, Not(HasSubstr("mask.layerdata  120024  ok")));
  EXPECT_THAT(output, HasSubstr("preview.png"));
  EXPECT_THAT(outcome.errors, StartsWith(file.toStdString() + ": layers/"));
}

TEST_F(CheckCommandTest, ADamagedPreviewCounts) {
  const QString file = writeDocument("sky.tessel");
  damage(file, "preview.png");
  const Outcome outcome = check({file});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("preview.png: "));
}

TEST_F(CheckCommandTest, PixelsThatAreMissingCount) {
  const QString file = writeDocument("sky.tessel");
  QByteArray bytes = contents(file);
  // The tree asks for another entry than there is.
  bytes.replace(".mask.layerdata", ".mark.layerdata");
  writeBytes(file, bytes);
  const Outcome outcome = check({file});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output.toStdString(), HasSubstr(".mask.layerdata  0  The entry is missing.\n"));
}

TEST_F(CheckCommandTest, NodesThatOpeningLeavesOutAreCountedAndNamed) {
  const std::string node = R"({"blendMode":0,"id":"","isLocked":false,"isVisible":true,"name":"Clouds",)"
                           R"("opacity":1,"type":"layer"})";
  const std::string manifest =
      R"({"formatVersion":3,"generator":"x","metadata":{"createdAt":"","modifiedAt":""},"document":)"
      R"({"name":"n","canvasWidth":3,"canvasHeight":2,"colorMode":2},"nodes":[)" +
      node + "," + node + "]}";
  testing::ZipFixture archive;
  archive.add(testing::ZipFixture::deflated("manifest.json", testing::bytesOf(manifest)));
  const testing::Bytes bytes = archive.make();
  const QString file = writeBytes(path("sky.tessel"), QByteArray(reinterpret_cast<const char*>(bytes.data()),
                                                                 static_cast<qsizetype>(bytes.size())));
  const Outcome outcome = check({file});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output.toStdString(), HasSubstr("  node \"Clouds\"  Its id is not valid.\n"));
  EXPECT_THAT(outcome.errors, HasSubstr("leaves out 2 of its nodes, among them \"Clouds\""));
}

TEST_F(CheckCommandTest, EveryFileIsCheckedAndEveryDamagedOneNamed) {
  const QString good = writeDocument("good.tessel");
  const QString text = writeBytes(path("text.tessel"), "no archive");
  const QString missing = path("missing.tessel");
  const Outcome outcome = check({text, good, missing});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output.toStdString(), HasSubstr(good.toStdString() + ": whole\n"));
  EXPECT_THAT(outcome.errors, HasSubstr(text.toStdString() + ": "));
  EXPECT_THAT(outcome.errors, HasSubstr(missing.toStdString() + ": "));
  EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 2);
}

TEST_F(CheckCommandTest, ACutDocumentIsDamaged) {
  const QString file = writeDocument("sky.tessel");
  writeBytes(file, contents(file).chopped(30));
  EXPECT_EQ(check({file}).status, 1);
}

TEST_F(CheckCommandTest, WithoutAFileTheUsageIsWrong) {
  EXPECT_EQ(check({}).status, 2);
}

}  // namespace
}  // namespace orvanel
