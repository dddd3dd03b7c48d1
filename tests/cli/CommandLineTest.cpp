#include "cli/CommandLine.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <random>

#include "cli/ProgramRun.h"
#include "io/document/DocumentIO.h"
#include "tools/selection/SelectionGesture.h"

namespace orvanel {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

using test::Outcome;

Outcome run(const QStringList& arguments, const QString& outputFile = {}) {
  return test::runProgram(arguments, {.standardInput = {}, .outputFile = outputFile});
}

class CommandLineTest : public testing::Test {
 protected:
  [[nodiscard]] QString path(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

  QString writeImage(const char* name, QImage::Format format = QImage::Format_RGB32) {
    QImage image(20, 10, format);
    image.fill(Qt::red);
    EXPECT_TRUE(image.save(path(name)));
    return path(name);
  }

  /// The bytes of a noisy image whose file has lost its last third.
  QByteArray writeTruncated(const char* name) {
    QImage image(200, 200, QImage::Format_RGB32);
    std::mt19937 random(7);
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) image.setPixel(x, y, random());
    }
    EXPECT_TRUE(image.save(path(name)));
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::ReadWrite));
    EXPECT_TRUE(file.resize(file.size() * 2 / 3));
    return file.readAll();
  }

  /// A layer with a small rectangle inside a folder, below an empty layer.
  QString writeLayered(const char* name) {
    const DocumentPtr document =
        Document::create(QStringLiteral("Layered"), 64, 48, ColorMode::rgb16, MetalContext::shared());
    document->addFolder(QStringLiteral("Group"));
    document->addLayer(QStringLiteral("Spot"));
    const QUuid spot = *document->selectedNodeID.value();
    SelectionGesture gesture(document, QStringLiteral("Select"));
    gesture.selectShape(SelectionMode::replace, [](Selection& shape) {
      shape.setRect({10, 20, 5, 4}, 0.0F, MetalContext::shared());
    });
    gesture.close();
    document->fillSelection({1.0F, 1.0F, 1.0F, 1.0F});
    document->deselect();
    document->setOpacity(spot, 0.7F);
    document->setBlendMode(spot, BlendMode::multiply);
    document->addLayer(QStringLiteral("Empty"));
    document->setForegroundColor(DisplayColor{1.0F, 0.5F, 0.0F, 1.0F});
    EXPECT_TRUE(DocumentIO::saveSynchronously(document, path(name), MetalContext::shared()).has_value());
    return path(name);
  }

  QJsonObject info(const QString& file) {
    const Outcome outcome = run({QStringLiteral("info"), file});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(outcome.output, &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError);
    EXPECT_TRUE(json.isObject());
    return json.object();
  }

  /// Expects one line on standard error that begins with the file, and no standard output.
  static void expectFailure(const Outcome& outcome, const QString& file) {
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, QByteArray());
    EXPECT_THAT(outcome.errors, StartsWith(file.toStdString() + ": "));
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    EXPECT_TRUE(outcome.errors.ends_with('\n'));
  }

  QTemporaryDir folder;
};

TEST_F(CommandLineTest, InfoDescribesAFlatImage) {
  const QJsonObject facts = info(writeImage("photo.png"));
  EXPECT_EQ(facts["name"], QStringLiteral("photo"));
  EXPECT_EQ(facts["canvasWidth"], 20);
  EXPECT_EQ(facts["canvasHeight"], 10);
  EXPECT_EQ(facts["colorMode"], 2);
  EXPECT_EQ(facts["foregroundColor"], QStringLiteral("000000"));
  EXPECT_EQ(facts["backgroundColor"], QStringLiteral("FFFFFF"));
  EXPECT_EQ(facts["memoryUsage"], 20 * 10 * 4);
  const QJsonArray nodes = facts["nodes"].toArray();
  ASSERT_EQ(nodes.size(), 1);
  const QJsonObject layer = nodes[0].toObject();
  EXPECT_EQ(facts["selectedNodeID"], layer["id"]);
  EXPECT_EQ(layer["type"], QStringLiteral("layer"));
  EXPECT_EQ(layer["name"], QStringLiteral("photo"));
  EXPECT_EQ(layer["hasPixelData"], true);
  EXPECT_EQ(layer["contentBounds"], QJsonArray({0, 0, 20, 10}));
}

TEST_F(CommandLineTest, InfoDescribesATree) {
  const QJsonObject facts = info(writeLayered("layered.tessel"));
  EXPECT_EQ(facts["name"], QStringLiteral("Layered"));
  EXPECT_EQ(facts["colorMode"], 3);
  EXPECT_EQ(facts["foregroundColor"], QStringLiteral("FF8000"));
  const QJsonArray nodes = facts["nodes"].toArray();
  ASSERT_EQ(nodes.size(), 2);
  EXPECT_EQ(nodes[0].toObject()["name"], QStringLiteral("Background"));
  const QJsonObject group = nodes[1].toObject();
  EXPECT_EQ(group["type"], QStringLiteral("folder"));
  EXPECT_EQ(group["isExpanded"], true);
  EXPECT_EQ(group["hasPixelData"], false);
  EXPECT_FALSE(group.contains("contentBounds"));
  const QJsonArray children = group["children"].toArray();
  ASSERT_EQ(children.size(), 2);
  const QJsonObject spot = children[0].toObject();
  EXPECT_EQ(spot["contentBounds"], QJsonArray({10, 20, 5, 4}));
  EXPECT_EQ(spot["opacity"], 0.7);
  EXPECT_EQ(spot["blendMode"], 1);
  EXPECT_FALSE(spot.contains("children"));
  EXPECT_TRUE(children[1].toObject()["contentBounds"].isNull());
}

TEST_F(CommandLineTest, InfoOfAMissingOrBrokenFileFails) {
  const QString missing = path("missing.png");
  expectFailure(run({QStringLiteral("info"), missing}), missing);
  for (const char* name : {"broken.tessel", "broken.png", "broken"}) {
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("neither archive nor image");
    file.close();
    expectFailure(run({QStringLiteral("info"), path(name)}), path(name));
  }
  expectFailure(run({QStringLiteral("info"), folder.path()}), folder.path());
}

TEST_F(CommandLineTest, UnwritableStandardOutputFails) {
  const Outcome outcome = run({QStringLiteral("info"), writeImage("photo.png")}, QStringLiteral("/dev/full"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, StartsWith("standard output: "));
}

TEST_F(CommandLineTest, ConvertWritesByTheExtension) {
  const QString source = writeLayered("layered.tessel");
  for (const char* name : {"out.png", "out.jpg", "out.JPEG", "out.tiff", "out.tif", "out.gif", "out.bmp"}) {
    const Outcome outcome = run({QStringLiteral("convert"), source, path(name)});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, QByteArray());
    EXPECT_EQ(outcome.errors, "");
    const QImage written(path(name));
    EXPECT_EQ(written.size(), QSize(64, 48)) << name;
    EXPECT_EQ(written.pixelColor(0, 0), QColor(Qt::white)) << name;
  }
}

TEST_F(CommandLineTest, ADocumentConvertsToAnEqualDocument) {
  const QString source = writeLayered("layered.tessel");
  const QJsonObject before = info(source);
  ASSERT_EQ(run({QStringLiteral("convert"), source, path("copy.tessel")}).status, 0);
  EXPECT_EQ(info(path("copy.tessel")), before);
  ASSERT_EQ(run({QStringLiteral("convert"), source, source}).status, 0);
  EXPECT_EQ(info(source), before);
}

TEST_F(CommandLineTest, ConvertOfAFlatImageToADocumentKeepsItsPixels) {
  const QString source = writeImage("photo.png");
  ASSERT_EQ(run({QStringLiteral("convert"), source, path("photo.tessel")}).status, 0);
  ASSERT_EQ(run({QStringLiteral("convert"), path("photo.tessel"), path("again.png")}).status, 0);
  const QImage again(path("again.png"));
  const QImage original(source);
  ASSERT_EQ(again.size(), original.size());
  for (int y = 0; y < original.height(); ++y) {
    for (int x = 0; x < original.width(); ++x) ASSERT_EQ(again.pixel(x, y), original.pixel(x, y));
  }
}

TEST_F(CommandLineTest, AFailedConversionLeavesTheDestinationAsItWas) {
  QFile destination(path("out.png"));
  ASSERT_TRUE(destination.open(QIODevice::WriteOnly));
  destination.write("what was here before");
  destination.close();
  const QString missing = path("missing.tessel");
  expectFailure(run({QStringLiteral("convert"), missing, path("out.png")}), missing);
  ASSERT_TRUE(destination.open(QIODevice::ReadOnly));
  EXPECT_EQ(destination.readAll(), QByteArray("what was here before"));
  EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden),
            QStringList({QStringLiteral("out.png")}));
}

TEST_F(CommandLineTest, ADamagedImageIsConvertedButNeverOverwritten) {
  const QByteArray bytes = writeTruncated("broken.jpg");
  QFile link(path("link.jpg"));
  ASSERT_TRUE(QFile::link(path("broken.jpg"), link.fileName()));
  const QString broken = path("broken.jpg");
  for (const QString& destination : {broken, link.fileName()}) {
    const Outcome converted = run({QStringLiteral("convert"), broken, destination});
    expectFailure(converted, broken);
    EXPECT_THAT(converted.errors, HasSubstr("Write the result to another file."));
    QFile script(path("steps.json"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("[]");
    script.close();
    expectFailure(run({QStringLiteral("run"), script.fileName(), broken, destination}), broken);
  }
  QFile file(broken);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), bytes);
  const Outcome copied = run({QStringLiteral("convert"), broken, path("copy.jpg")});
  EXPECT_EQ(copied.status, 0);
  EXPECT_THAT(copied.errors, StartsWith(broken.toStdString() + ": "));
  EXPECT_TRUE(QFile::exists(path("copy.jpg")));
}

TEST_F(CommandLineTest, ConvertAndRunKeepAnImagesDensity) {
  constexpr int dotsPerMeter = 11811;
  QImage image(20, 10, QImage::Format_RGB32);
  image.fill(Qt::red);
  image.setDotsPerMeterX(dotsPerMeter);
  image.setDotsPerMeterY(dotsPerMeter);
  ASSERT_TRUE(image.save(path("scan.png")));
  QFile script(path("steps.json"));
  ASSERT_TRUE(script.open(QIODevice::WriteOnly));
  script.write(R"([{"do": "deselect"}])");
  script.close();
  ASSERT_EQ(run({QStringLiteral("convert"), path("scan.png"), path("copy.png")}).status, 0);
  ASSERT_EQ(run({QStringLiteral("run"), script.fileName(), path("scan.png"), path("run.png")}).status, 0);
  EXPECT_EQ(QImage(path("copy.png")).dotsPerMeterX(), dotsPerMeter);
  EXPECT_EQ(QImage(path("run.png")).dotsPerMeterX(), dotsPerMeter);
}

TEST_F(CommandLineTest, ADestinationThatCannotBeWrittenFails) {
  const QString source = writeImage("photo.png");
  const QString nowhere = path("no such folder/out.png");
  expectFailure(run({QStringLiteral("convert"), source, nowhere}), nowhere);
  const QString document = path("no such folder/out.tessel");
  expectFailure(run({QStringLiteral("convert"), source, document}), document);
}

TEST_F(CommandLineTest, AnUnknownExtensionFailsBeforeAnythingIsRead) {
  const QString target = path("out.xyz");
  expectFailure(run({QStringLiteral("convert"), path("missing.png"), target}), target);
  expectFailure(run({QStringLiteral("convert"), path("missing.png"), path("out")}), path("out"));
}

TEST_F(CommandLineTest, WrongUsageIsReported) {
  const QStringList wrong[] = {
      {},
      {QStringLiteral("frobnicate")},
      {QStringLiteral("info")},
      {QStringLiteral("info"), path("a.png"), path("b.png")},
      {QStringLiteral("convert"), path("a.png")},
      {QStringLiteral("convert"), path("a.png"), path("b.png"), path("c.png")},
      {QStringLiteral("info"), QStringLiteral("--fast"), path("a.png")},
      {QStringLiteral("--frobnicate")},
      {QStringLiteral("run"), path("a.json")},
      {QStringLiteral("run"), QStringLiteral("--fast"), path("a.json"), path("a.png")},
      {QStringLiteral("info"), QStringLiteral("--time"), path("a.png")},
      {QStringLiteral("recover"), QStringLiteral("some-id")},
      {QStringLiteral("recover"), QStringLiteral("--discard")},
      {QStringLiteral("recover"), QStringLiteral("--discard"), QStringLiteral("some-id"), path("a.png")},
  };
  for (const QStringList& arguments : wrong) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments.join(u' ').toStdString();
    EXPECT_EQ(outcome.output, QByteArray());
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
  }
}

TEST_F(CommandLineTest, HelpAndVersionSucceed) {
  const Outcome help = run({QStringLiteral("--help")});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.errors, "");
  for (const Subcommand& command : subcommands()) {
    EXPECT_THAT(help.output.toStdString(), HasSubstr(std::string(command.name)));
  }
  const Outcome version = run({QStringLiteral("--version")});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output, QByteArray("orvanel-cli 0.1\n"));
}

TEST_F(CommandLineTest, FileNamesMayContainAnyCharacters) {
  const QString odd = writeImage("ein Bild – 写真 \"x\".png");
  EXPECT_EQ(info(odd)["name"], QStringLiteral("ein Bild – 写真 \"x\""));
}

}  // namespace
}  // namespace orvanel

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
