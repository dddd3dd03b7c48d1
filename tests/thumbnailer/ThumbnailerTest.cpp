// The thumbnailer as file managers start it: a process, without a display.
#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include "io/archive/ZipFixture.h"
#include "io/document/DocumentFixture.h"

namespace orvanel {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Outcome {
  int status = -1;
  std::string output;
  std::string errors;
};

Outcome run(const QStringList& arguments) {
  QProcess process;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    environment.remove(QLatin1String(variable));
  }
  process.setProcessEnvironment(environment);
  process.start(QStringLiteral(ORVANEL_THUMBNAILER_PATH), arguments);
  EXPECT_TRUE(process.waitForFinished(120000));
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  return {process.exitCode(), process.readAllStandardOutput().toStdString(),
          process.readAllStandardError().toStdString()};
}

class ThumbnailerTest : public ::testing::Test {
 protected:
  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

  /// Saves a document with a white layer.
  [[nodiscard]] QString saved(const char* name, int width, int height) const {
    const DocumentPtr document =
        Document::create(QStringLiteral("Picture"), width, height, ColorMode::rgb8, MetalContext::shared());
    EXPECT_TRUE(DocumentIO::saveSynchronously(document, path(name), MetalContext::shared()).has_value());
    return path(name);
  }

  [[nodiscard]] QString written(const char* name, const testing::Bytes& bytes) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
    return path(name);
  }

  void expectFailure(const QString& document, const char* reason) const {
    const Outcome outcome = run({document, path("thumbnail.png")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, StartsWith(document.toStdString() + ": "));
    EXPECT_THAT(outcome.errors, HasSubstr(reason));
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    EXPECT_FALSE(QFile::exists(path("thumbnail.png")));
  }

  QTemporaryDir folder;
};

TEST_F(ThumbnailerTest, WritesThePreviewWithinTheSquareAskedFor) {
  const QString document = saved("wide – 写真.tessel", 600, 300);
  for (const auto& [side, size] : {std::pair{"128", QSize(128, 64)}, std::pair{"256", QSize(256, 128)},
                                   std::pair{"1024", QSize(512, 256)}, std::pair{"1", QSize(1, 1)}}) {
    const Outcome outcome =
        run({QStringLiteral("--size"), QString::fromLatin1(side), document, path("out.png")});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    const QImage thumbnail(path("out.png"));
    EXPECT_EQ(thumbnail.size(), size);
    EXPECT_EQ(thumbnail.pixelColor(0, 0), QColor(Qt::white));
  }
}

TEST_F(ThumbnailerTest, APictureSmallerThanTheThumbnailIsNotEnlarged) {
  ASSERT_EQ(run({saved("small.tessel", 20, 30), path("out.png")}).status, 0);
  EXPECT_EQ(QImage(path("out.png")).size(), QSize(20, 30));
}

TEST_F(ThumbnailerTest, AThinPictureKeepsAPixelOfItsShortSide) {
  ASSERT_EQ(run({saved("thin.tessel", 2000, 1), path("out.png")}).status, 0);
  EXPECT_EQ(QImage(path("out.png")).size(), QSize(256, 1));
}

TEST_F(ThumbnailerTest, WhatIsNoDocumentHasNoThumbnail) {
  expectFailure(path("missing.tessel"), "");
  expectFailure(folder.path(), "");
  expectFailure(written("text.tessel", testing::bytesOf("neither archive nor image")),
                "not a readable archive");
  expectFailure(written("empty.tessel", {}), "empty");
}

TEST_F(ThumbnailerTest, ADocumentWithoutAPreviewHasNoThumbnail) {
  testing::ZipFixture archive;
  archive.add(testing::ZipFixture::stored("manifest.json", testing::bytesOf("{}")));
  expectFailure(written("bare.tessel", archive.make()), "has no preview");
}

TEST_F(ThumbnailerTest, AThumbnailThatCannotBeWrittenFails) {
  const QString nowhere = path("no such folder/out.png");
  const Outcome outcome = run({saved("a.tessel", 8, 8), nowhere});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, StartsWith(nowhere.toStdString() + ": "));
  EXPECT_EQ(run({path("a.tessel"), QStringLiteral("/dev/full")}).status, 1);
}

TEST_F(ThumbnailerTest, InvalidUsageIsReported) {
  const QString document = saved("a.tessel", 8, 8);
  const QStringList wrong[] = {
      {},
      {document},
      {document, path("b.png"), path("c.png")},
      {QStringLiteral("--size")},
      {QStringLiteral("--size"), QStringLiteral("0"), document, path("b.png")},
      {QStringLiteral("--size"), QStringLiteral("1025"), document, path("b.png")},
      {QStringLiteral("--size"), QStringLiteral("large"), document, path("b.png")},
  };
  for (const QStringList& arguments : wrong) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments.join(u' ').toStdString();
    EXPECT_NE(outcome.errors, "");
  }
  EXPECT_FALSE(QFile::exists(path("b.png")));
}

TEST_F(ThumbnailerTest, HelpAndVersionSucceed) {
  EXPECT_THAT(run({QStringLiteral("--help")}).output, HasSubstr("--size"));
  EXPECT_EQ(run({QStringLiteral("--version")}).output, "orvanel-thumbnailer 0.1\n");
}

}  // namespace
}  // namespace orvanel

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
