#include "io/document/DocumentIO.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include "io/archive/ZipFixture.h"
#include "io/archive/ZipReader.h"
#include "io/document/DocumentFixture.h"
#include "io/document/DocumentReader.h"
#include "io/document/SaveSnapshot.h"
#include "io/document/TextureLoading.h"
#include "io/files/FaultyDisk.h"
#include "model/TestDoor.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using testing::contentsOf;
using testing::filesIn;
using testing::firstDifference;
using testing::richDocument;

class DocumentIOTest : public ::testing::Test {
 protected:
  QString path(const QString& name = QStringLiteral("image.tessel")) const {
    return directory_.filePath(name);
  }

  FileResult<void> save(const DocumentPtr& document) const {
    return DocumentIO::saveSynchronously(document, path(), MetalContext::shared());
  }
  FileResult<DocumentPtr> load() const {
    return DocumentIO::loadSynchronously(path(), MetalContext::shared());
  }

  std::vector<std::string> entryPaths() const {
    const auto reader = ZipReader::open(path().toStdString());
    std::vector<std::string> paths;
    for (const ArchiveEntryInfo& entry : reader->entries()) paths.push_back(entry.path);
    return paths;
  }
  std::size_t sizeOf(const std::string& entry) const {
    const auto reader = ZipReader::open(path().toStdString());
    return reader->entries()[*reader->find(entry)].size;
  }

  /// Processes events until the condition holds; false after a minute.
  static bool waitFor(const std::function<bool()>& condition) {
    QElapsedTimer timer;
    timer.start();
    while (!condition() && !timer.hasExpired(60'000))
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return condition();
  }

  QTemporaryDir directory_;
};

TEST_F(DocumentIOTest, roundTripKeepsEverything) {
  for (const ColorMode mode : allColorModes) {
    const DocumentPtr document = richDocument(mode);
    ASSERT_TRUE(save(document).has_value());
    const auto loaded = load();
    ASSERT_TRUE(loaded.has_value()) << loaded.error().message.toStdString();
    EXPECT_EQ(firstDifference(*document, **loaded), QString()) << displayName(mode);
  }
}

TEST_F(DocumentIOTest, loadedDocumentStartsClean) {
  const DocumentPtr document = richDocument(ColorMode::rgb8);
  ASSERT_TRUE(save(document).has_value());
  const DocumentPtr loaded = *load();
  EXPECT_NE(loaded->id, document->id);
  EXPECT_FALSE(loaded->isDirty.value());
  EXPECT_EQ(loaded->sourceFileURL.value(), path());
  EXPECT_FALSE(loaded->sourceFileFormat.value().has_value());
  EXPECT_TRUE(loaded->undoStack.operations().empty());
  const auto layer = loaded->rootNodes.value()[0].layer();
  EXPECT_TRUE(layer->isMaskLinked.value());
  EXPECT_FALSE(layer->isMaskSelected.value());
}

TEST_F(DocumentIOTest, entriesAreInTreeOrder) {
  const DocumentPtr document = richDocument(ColorMode::rgb16);
  ASSERT_TRUE(save(document).has_value());
  const LayerNodeList& roots = document->rootNodes.value();
  const LayerNodeList& inOuter = roots[1].folder()->children.value();
  const std::string bottom = "layers/" + uuidText(roots[0].id()).toStdString();
  const std::string masked = "layers/" + uuidText(inOuter[0].id()).toStdString();
  const std::string bare = "layers/" + uuidText(inOuter[1].folder()->children.value()[0].id()).toStdString();
  EXPECT_EQ(entryPaths(), (std::vector<std::string>{"manifest.json", "preview.png", bottom + ".layerdata",
                                                    masked + ".layerdata", masked + ".mask.layerdata",
                                                    bare + ".mask.layerdata"}));
  EXPECT_EQ(sizeOf(bottom + ".layerdata"), 24U + 300U * 270U * 8U);
  EXPECT_EQ(sizeOf(masked + ".mask.layerdata"), 24U + 300U * 270U * 2U);
}

TEST_F(DocumentIOTest, greyLayersTakeTwoBytesPerPixel) {
  const DocumentPtr document = richDocument(ColorMode::grayscale8, 3, 2);
  ASSERT_TRUE(save(document).has_value());
  EXPECT_EQ(sizeOf(entryPaths()[2]), 24U + 12U);
}

TEST_F(DocumentIOTest, previewShowsTheComposite) {
  const DocumentPtr document =
      Document::create(QStringLiteral("Blue"), 300, 1200, ColorMode::rgb8, MetalContext::shared());
  document->fillSelection({32 / 255.0F, 64 / 255.0F, 128 / 255.0F, 1.0F});
  ASSERT_TRUE(save(document).has_value());
  const auto reader = ZipReader::open(path().toStdString());
  const auto png = reader->readAll(*reader->find("preview.png"), 1'000'000);
  ASSERT_TRUE(png.has_value());
  EXPECT_FALSE(reader->entries()[1].isDeflated);
  const QImage image =
      QImage::fromData(reinterpret_cast<const uchar*>(png->data()), static_cast<int>(png->size()), "png");
  EXPECT_EQ(image.size(), QSize(128, 512));
  EXPECT_EQ(image.pixel(64, 200), qRgb(0x20, 0x40, 0x80));
}

TEST_F(DocumentIOTest, noPreviewWithoutAComposite) {
  const DocumentPtr document = richDocument(ColorMode::rgb8);
  test::put(document->compositedTexture, nullptr);
  ASSERT_TRUE(save(document).has_value());
  EXPECT_EQ(entryPaths()[1].substr(0, 7), "layers/");
  EXPECT_TRUE(load().has_value());
}

TEST_F(DocumentIOTest, noPreviewWithoutTheMemoryToFlatten) {
  const DocumentPtr document = richDocument(ColorMode::rgb8);
  {
    const ScopedMemoryLimit limit(0);
    ASSERT_TRUE(save(document).has_value());
  }
  EXPECT_EQ(entryPaths()[1].substr(0, 7), "layers/");
  EXPECT_TRUE(load().has_value());
}

TEST_F(DocumentIOTest, emptyDocumentHasNothingSelected) {
  const DocumentPtr document =
      Document::create({.name = QStringLiteral("Empty"), .width = 10, .height = 10}, MetalContext::shared());
  ASSERT_TRUE(save(document).has_value());
  const DocumentPtr loaded = *load();
  EXPECT_TRUE(loaded->rootNodes.value().empty());
  EXPECT_FALSE(loaded->selectedNodeID.value().has_value());
}

TEST_F(DocumentIOTest, filesOfOtherVersionsAreRejectedBeforeTheirContents) {
  for (const char* version : {"2", "4"}) {
    testing::ZipFixture archive;
    archive.add(testing::ZipFixture::deflated("manifest.json",
                                              testing::bytesOf(std::string(R"({"formatVersion":)") + version +
                                                               R"(,"document":7,"nodes":"not nodes"})")));
    const testing::Bytes bytes = archive.make();
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
    file.close();
    const auto loaded = load();
    ASSERT_FALSE(loaded.has_value()) << version;
    EXPECT_EQ(loaded.error().code, DocumentIOError::loadFailed);
    EXPECT_TRUE(loaded.error().message.contains(QStringLiteral("format version")))
        << loaded.error().message.toStdString();
  }
}

TEST_F(DocumentIOTest, uniformLayersStayUniform) {
  const DocumentPtr document =
      Document::create(QStringLiteral("White"), 2000, 2000, ColorMode::rgb16, MetalContext::shared());
  ASSERT_TRUE(save(document).has_value());
  EXPECT_LT(QFileInfo(path()).size(), 200'000);
  const DocumentPtr loaded = *load();
  const Surface& pixels = *loaded->rootNodes.value()[0].layer()->texture.value();
  for (int i = 0; i < pixels.tileCount(); ++i) EXPECT_TRUE(pixels.tile(i).isUniform());
  EXPECT_EQ(firstDifference(*document, *loaded), QString());
}

TEST_F(DocumentIOTest, nanPixelsKeepTheirBytes) {
  const DocumentPtr document = richDocument(ColorMode::rgb16);
  Surface& pixels = test::writable(document->rootNodes.value()[0].layer()->texture.value());
  const std::array<std::uint16_t, 4> odd{0x7E00, 0x7C00, 0xFC00, 0x4000};
  pixels.writeRect({5, 5, 1, 1}, reinterpret_cast<const std::byte*>(odd.data()), 8);
  ASSERT_TRUE(save(document).has_value());
  const DocumentPtr loaded = *load();
  const Surface& read = *loaded->rootNodes.value()[0].layer()->texture.value();
  EXPECT_TRUE(read.equals(pixels));
  EXPECT_TRUE(read.tile(0).has(TileTrait::irregular));
  EXPECT_FALSE(read.tile(1).has(TileTrait::irregular));
}

TEST_F(DocumentIOTest, maskValuesOutOfRangeAreDetectedAnywhere) {
  // Nine halves, so that vectorised checks have a remainder.
  const DocumentPtr document = richDocument(ColorMode::rgb16, 3, 3);
  const std::shared_ptr<LayerMask> mask = testing::scribbledMask(3, 3, 1);
  test::put(document->rootNodes.value()[0].layer()->mask, mask);
  Surface& values = test::writable(mask->maskTexture->texture);
  const auto isMarkedWhen = [&](std::uint16_t half, int place) {
    values.fill(0x3C00);
    values.writeRect({place % 3, place / 3, 1, 1}, reinterpret_cast<const std::byte*>(&half), 2);
    if (!save(document)) return false;
    const auto loaded = load();
    if (!loaded) return false;
    const ConstTexture read = (*loaded)->rootNodes.value()[0].layer()->mask.value()->maskTexture->texture;
    EXPECT_TRUE(read->equals(values));
    return read->tile(0).has(TileTrait::irregular);
  };
  for (const int place : {0, 3, 4, 8}) {
    for (const std::uint16_t regular : {0x0001, 0x3BFF}) EXPECT_FALSE(isMarkedWhen(regular, place)) << place;
    for (const std::uint16_t irregular : {0x3C01, 0x7C00, 0x7E00, 0x8000, 0xFFFF}) {
      EXPECT_TRUE(isMarkedWhen(irregular, place)) << place << ", " << irregular;
    }
  }
}

TEST_F(DocumentIOTest, savesOverAnOlderFile) {
  ASSERT_TRUE(save(richDocument(ColorMode::rgb8)).has_value());
  const DocumentPtr second = richDocument(ColorMode::grayscale16);
  ASSERT_TRUE(save(second).has_value());
  EXPECT_EQ(firstDifference(*second, **load()), QString());
  EXPECT_EQ(testing::filesIn(directory_.path()), QStringList{QStringLiteral("image.tessel")});
}

TEST_F(DocumentIOTest, fullDiskAtAnyPointLeavesTheOldFile) {
  const DocumentPtr document = richDocument(ColorMode::grayscale8);
  ASSERT_TRUE(save(document).has_value());
  const QByteArray old = testing::contentsOf(path());
  document->setName(QStringLiteral("Changed"));
  for (std::int64_t capacity = 0; capacity < old.size(); capacity += 1 + old.size() / 40) {
    testing::FullDisk disk(capacity);
    const ScopedFileOperations scope(disk);
    const auto result = save(document);
    ASSERT_FALSE(result.has_value()) << capacity;
    EXPECT_EQ(result.error().code, DocumentIOError::saveFailed);
    EXPECT_TRUE(result.error().message.contains(QStringLiteral("No space left on device")));
    EXPECT_TRUE(testing::contentsOf(path()) == old);
    EXPECT_EQ(testing::filesIn(directory_.path()).size(), 1);
  }
}

TEST_F(DocumentIOTest, readOnlyDirectoryLeavesTheOldFile) {
  const DocumentPtr document = richDocument(ColorMode::grayscale8);
  ASSERT_TRUE(save(document).has_value());
  const QByteArray old = testing::contentsOf(path());
  testing::ReadOnlyDirectory disk(QFileInfo(directory_.path()).canonicalFilePath().toStdString());
  const ScopedFileOperations scope(disk);
  EXPECT_FALSE(save(document).has_value());
  EXPECT_TRUE(testing::contentsOf(path()) == old);
  EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(disk.created)));
}

TEST_F(DocumentIOTest, backgroundSaveWritesTheDocumentAsOfTheCall) {
  const DocumentPtr document = richDocument(ColorMode::rgb16);
  ASSERT_TRUE(save(document).has_value());
  const DocumentPtr before = *load();
  QObject receiver;
  int finished = 0;
  std::vector<double> progress;
  DocumentIO::save(
      document, path(), MetalContext::shared(), &receiver,
      [&](const FileResult<void>& result) {
        EXPECT_TRUE(result.has_value());
        EXPECT_FALSE(DocumentIO::isSaving());
        ++finished;
      },
      [&](double done) { progress.push_back(done); });
  EXPECT_TRUE(DocumentIO::isSaving());
  EXPECT_EQ(finished, 0);
  // Edits after the call change the document, not the file.
  document->selectNode(document->rootNodes.value()[0].id());
  document->clearActive();
  document->setName(QStringLiteral("Later"));
  ASSERT_TRUE(waitFor([&] { return finished == 1; }));
  EXPECT_EQ(firstDifference(*before, **load()), QString());
  EXPECT_FALSE(progress.empty());
  EXPECT_TRUE(std::ranges::is_sorted(progress));
}

TEST_F(DocumentIOTest, snapshotDescribesTheFormatOfTheComposite) {
  for (const ColorMode mode :
       {ColorMode::grayscale8, ColorMode::grayscale16, ColorMode::rgb8, ColorMode::rgb16}) {
    const DocumentPtr document = richDocument(mode);
    const auto snapshot = SaveSnapshot::take(*document);
    ASSERT_TRUE(snapshot.has_value());
    const bool isDeep = mode == ColorMode::grayscale16 || mode == ColorMode::rgb16;
    EXPECT_EQ(snapshot->previewPixelFormat, isDeep ? PixelFormat::rgba16Float : PixelFormat::rgba8Unorm);
    EXPECT_EQ(snapshot->previewPixelFormat, document->compositedTexture.value()->format());
    EXPECT_EQ(snapshot->previewBytesPerPixel, isDeep ? 8 : 4);
    EXPECT_EQ(snapshot->compositingBitsPerChannel, isDeep ? 16 : 8);
  }
}

TEST_F(DocumentIOTest, cancelledSaveLeavesTheOldFileAndNothingElse) {
  const DocumentPtr document = richDocument(ColorMode::rgb16, 600, 600);
  ASSERT_TRUE(save(document).has_value());
  const QByteArray before = contentsOf(path());
  const QStringList files = filesIn(QFileInfo(path()).path());
  const auto cancellation = std::make_shared<Cancellation>();
  cancellation->cancel();
  QObject receiver;
  std::optional<FileResult<void>> outcome;
  DocumentIO::save(
      document, path(), MetalContext::shared(), &receiver,
      [&](const FileResult<void>& result) { outcome = result; }, {}, cancellation);
  ASSERT_TRUE(waitFor([&] { return outcome.has_value(); }));
  ASSERT_FALSE(outcome->has_value());
  EXPECT_TRUE(outcome->error().isCancelled);
  EXPECT_EQ(outcome->error().code, DocumentIOError::saveFailed);
  EXPECT_EQ(contentsOf(path()), before);
  EXPECT_EQ(filesIn(QFileInfo(path()).path()), files);
  EXPECT_FALSE(DocumentIO::isSaving());
}

TEST_F(DocumentIOTest, cancelledLoadDeliversNoDocument) {
  ASSERT_TRUE(save(richDocument(ColorMode::rgb8)).has_value());
  const auto cancellation = std::make_shared<Cancellation>();
  QObject receiver;
  std::optional<FileResult<DocumentPtr>> outcome;
  DocumentIO::load(
      path(), MetalContext::shared(), &receiver,
      [&](const FileResult<DocumentPtr>& result) { outcome = result; }, {}, cancellation);
  cancellation->cancel();
  ASSERT_TRUE(waitFor([&] { return outcome.has_value(); }));
  ASSERT_FALSE(outcome->has_value());
  EXPECT_TRUE(outcome->error().isCancelled);
  EXPECT_EQ(outcome->error().code, DocumentIOError::loadFailed);
}

TEST_F(DocumentIOTest, fillingStopsBetweenBandsWhenItIsCancelled) {
  ASSERT_TRUE(save(richDocument(ColorMode::rgb16, 300, 2000)).has_value());
  const auto opened = openDocument(path(), MetalContext::shared());
  ASSERT_TRUE(opened.has_value());
  const auto cancellation = std::make_shared<Cancellation>();
  int told = 0;
  const Progress progress(
      [&](double) {
        ++told;
        cancellation->cancel();
      },
      cancellation);
  const auto filled = fillTextures(*opened, progress);
  ASSERT_FALSE(filled.has_value());
  EXPECT_EQ(filled.error(), cancelled().value());
  EXPECT_LE(told, static_cast<int>(opened->requests.size()));
}

TEST_F(DocumentIOTest, secondSimultaneousSaveWritesNothingAndSucceeds) {
  const DocumentPtr document = richDocument(ColorMode::rgb8);
  const DocumentPtr other = richDocument(ColorMode::grayscale8);
  QObject receiver;
  int finished = 0;
  const auto done = [&](const FileResult<void>& result) {
    EXPECT_TRUE(result.has_value());
    ++finished;
  };
  DocumentIO::save(document, path(), MetalContext::shared(), &receiver, done);
  DocumentIO::save(other, path(QStringLiteral("other.tessel")), MetalContext::shared(), &receiver, done);
  ASSERT_TRUE(waitFor([&] { return finished == 2; }));
  EXPECT_TRUE(QFileInfo::exists(path()));
  EXPECT_FALSE(QFileInfo::exists(path(QStringLiteral("other.tessel"))));
}

TEST_F(DocumentIOTest, synchronousSaveWorksDuringABackgroundSave) {
  const DocumentPtr document = richDocument(ColorMode::rgb8);
  QObject receiver;
  bool finished = false;
  DocumentIO::save(document, path(), MetalContext::shared(), &receiver,
                   [&](const FileResult<void>&) { finished = true; });
  EXPECT_TRUE(
      DocumentIO::saveSynchronously(document, path(QStringLiteral("other.tessel")), MetalContext::shared())
          .has_value());
  EXPECT_TRUE(DocumentIO::isSaving());
  ASSERT_TRUE(waitFor([&] { return finished; }));
}

TEST_F(DocumentIOTest, failedBackgroundSaveReportsOnce) {
  const DocumentPtr document = richDocument(ColorMode::rgb8);
  QObject receiver;
  int failures = 0;
  DocumentIO::save(document, path(QStringLiteral("missing/image.tessel")), MetalContext::shared(), &receiver,
                   [&](const FileResult<void>& result) {
                     ASSERT_FALSE(result.has_value());
                     EXPECT_EQ(result.error().code, DocumentIOError::saveFailed);
                     ++failures;
                   });
  ASSERT_TRUE(waitFor([&] { return failures == 1; }));
  EXPECT_FALSE(DocumentIO::isSaving());
}

TEST_F(DocumentIOTest, destroyedReceiversAreNotCalled) {
  const DocumentPtr document = richDocument(ColorMode::rgb8);
  auto receiver = std::make_unique<QObject>();
  bool called = false;
  DocumentIO::save(document, path(), MetalContext::shared(), receiver.get(),
                   [&](const FileResult<void>&) { called = true; });
  receiver.reset();
  ASSERT_TRUE(waitFor([] { return !DocumentIO::isSaving(); }));
  EXPECT_FALSE(called);
}

TEST_F(DocumentIOTest, loadsInTheBackground) {
  const DocumentPtr document = richDocument(ColorMode::rgb16);
  ASSERT_TRUE(save(document).has_value());
  QObject receiver;
  DocumentPtr loaded;
  std::vector<double> progress;
  DocumentIO::load(
      path(), MetalContext::shared(), &receiver,
      [&](const FileResult<DocumentPtr>& result) {
        ASSERT_TRUE(result.has_value());
        loaded = *result;
      },
      [&](double done) { progress.push_back(done); });
  EXPECT_EQ(loaded, nullptr);
  ASSERT_TRUE(waitFor([&] { return loaded != nullptr; }));
  EXPECT_EQ(firstDifference(*document, *loaded), QString());
  EXPECT_FALSE(progress.empty());
}

TEST_F(DocumentIOTest, failedLoadReportsOnce) {
  QObject receiver;
  int failures = 0;
  DocumentIO::load(path(QStringLiteral("missing.tessel")), MetalContext::shared(), &receiver,
                   [&](const FileResult<DocumentPtr>& result) {
                     ASSERT_FALSE(result.has_value());
                     EXPECT_EQ(result.error().code, DocumentIOError::loadFailed);
                     EXPECT_FALSE(result.error().message.isEmpty());
                     ++failures;
                   });
  ASSERT_TRUE(waitFor([&] { return failures == 1; }));
}

TEST(DocumentPath, isRecognisedByExtensionOrDirectory) {
  const QTemporaryDir directory;
  EXPECT_TRUE(DocumentIO::isDocumentPath(QStringLiteral("a.tessel")));
  EXPECT_TRUE(DocumentIO::isDocumentPath(QStringLiteral("a.TESSEL")));
  EXPECT_TRUE(DocumentIO::isDocumentPath(directory.path()));
  EXPECT_FALSE(DocumentIO::isDocumentPath(QStringLiteral("tessel")));
  EXPECT_FALSE(DocumentIO::isDocumentPath(QStringLiteral("a.tessel.png")));
}

}  // namespace
}  // namespace orvanel
