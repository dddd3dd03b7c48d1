#include "app/DocumentFiles.h"

#include <QDir>
#include <algorithm>

#include "AppFixture.h"
#include "app/dialogs/ExportFormats.h"
#include "model/LevelsAdjustment.h"
#include "model/TestDoor.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class DocumentFilesTest : public AppFixture {
 protected:
  DocumentFilesTest() { observeNotifications(); }

  DocumentPtr openOne(const QString& file) {
    files.open({file});
    EXPECT_TRUE(waitForFiles());
    return state.windowState.activeDocument();
  }

  [[nodiscard]] QStringList filesIn() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }
};

// New documents.

TEST_F(DocumentFilesTest, ANewDocumentHasTheTypedSizeAndTheChosenMode) {
  dialogs.newDocument = NewDocumentEntry{QStringLiteral("16384"), QStringLiteral("1"), 1};
  files.newDocument();
  const DocumentPtr made = state.windowState.activeDocument();
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->canvasWidth.value(), 16384);
  EXPECT_EQ(made->canvasHeight.value(), 1);
  EXPECT_EQ(made->colorMode.value(), ColorMode::grayscale16);
  EXPECT_FALSE(made->isDirty.value());
}

TEST_F(DocumentFilesTest, NewDocumentsFromTheDialogAreCalledUntitled) {
  dialogs.newDocument = NewDocumentEntry{QStringLiteral("10"), QStringLiteral("10"), 2};
  files.newDocument();
  files.newDocument();
  EXPECT_THAT(openNames(), ElementsAre("Untitled", "Untitled"));
}

TEST_F(DocumentFilesTest, SizesOutOfRangeCreateNoDocument) {
  for (const char* typed : {"0", "16385", "abc", "", "-5", "12.5", "99999999999"}) {
    dialogs.warnings.clear();
    dialogs.newDocument = NewDocumentEntry{QString::fromLatin1(typed), QStringLiteral("10"), 2};
    files.newDocument();
    EXPECT_THAT(dialogs.warnings,
                ElementsAre(std::pair(std::string("Invalid Dimensions"),
                                      std::string("Width and height must be between 1 and 16384 pixels."))))
        << typed;
  }
  EXPECT_THAT(openNames(), IsEmpty());
}

TEST_F(DocumentFilesTest, ACancelledDialogCreatesNoDocument) {
  files.newDocument();
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

// Opening.

TEST_F(DocumentFilesTest, FilesOpenInTheOrderTheyWereNamed) {
  const QString large = writeImage("large.png", 900, 900);
  const QString small = writeImage("small.png", 4, 4);
  files.open({large, small});
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("large", "small"));
  EXPECT_EQ(state.windowState.activeDocument()->name.value(), "small");
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(DocumentFilesTest, FailuresAreListedAndTheOtherFilesOpen) {
  const QString good = writeImage("good.png");
  const QString noImage = writeText("broken.png", "no picture");
  const QString noDocument = writeText("broken.tessel", "no archive");
  files.open({noImage, noDocument, good});
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("good"));
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Open 2 Files");
  EXPECT_THAT(dialogs.warnings[0].second, StartsWith("broken.png: "));
  EXPECT_THAT(dialogs.warnings[0].second, HasSubstr("\nbroken.tessel: "));
}

TEST_F(DocumentFilesTest, ASingleFailureHasItsOwnTitle) {
  files.open({path("missing.png")});
  ASSERT_TRUE(waitForFiles());
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Open");
  EXPECT_THAT(dialogs.warnings[0].second, StartsWith("missing.png: "));
}

TEST_F(DocumentFilesTest, ADirectoryIsNotADocument) {
  QDir(folder.path()).mkdir(QStringLiteral("pictures"));
  files.open({path("pictures")});
  ASSERT_TRUE(waitForFiles());
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_THAT(dialogs.warnings[0].second, StartsWith("pictures: "));
}

TEST_F(DocumentFilesTest, AFailedDropHasItsOwnTitle) {
  files.openDropped({writeText("broken.png", "no picture"), writeImage("good.png")});
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("good"));
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Open Image");
}

TEST_F(DocumentFilesTest, AnIncompleteImageOpensWithOneWarningAndIsNotSavedOverItsFile) {
  const QString photo = writeImage("photo.jpg", 200, 200);
  ASSERT_TRUE(QFile::resize(photo, QFileInfo(photo).size() * 2 / 3));
  const DocumentPtr document = openOne(photo);
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->canvasWidth.value(), 200);
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Opened Incompletely");
  EXPECT_THAT(dialogs.warnings[0].second, StartsWith("photo.jpg: "));

  int asked = 0;
  subscriptions.push_back(NotificationCenter::standard().observe(notification::saveAsDocument,
                                                                 [&](const std::any&) { ++asked; }));
  document->setDirty(true);
  files.save(document);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("photo.jpg")}));
}

TEST_F(DocumentFilesTest, IncompleteAndUnreadableFilesAreReportedSeparately) {
  const QString photo = writeImage("photo.jpg", 200, 200);
  ASSERT_TRUE(QFile::resize(photo, QFileInfo(photo).size() * 2 / 3));
  files.open({photo, writeText("broken.png", "no picture"), writeImage("whole.png")});
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("photo", "whole"));
  ASSERT_THAT(dialogs.warnings, SizeIs(2));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Open");
  EXPECT_THAT(dialogs.warnings[0].second, StartsWith("broken.png: "));
  EXPECT_EQ(dialogs.warnings[1].first, "Opened Incompletely");
  EXPECT_THAT(dialogs.warnings[1].second, StartsWith("photo.jpg: "));
}

TEST_F(DocumentFilesTest, ALongFileNameIsShortenedInTheMiddleOfAMessage) {
  const QString name = QString(120, u'a') + QString(100, u'z') + QStringLiteral(".png");
  files.open({folder.filePath(name)});
  ASSERT_TRUE(waitForFiles());
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  const QString text = QString::fromStdString(dialogs.warnings[0].second);
  EXPECT_TRUE(text.startsWith(QStringLiteral("aaaa")));
  EXPECT_LT(text.indexOf(QStringLiteral(".png: ")), 80);
  EXPECT_GT(text.indexOf(QStringLiteral("z.png: ")), 0);
}

TEST_F(DocumentFilesTest, OpenedFilesBecomeRecentDocuments) {
  state.recentDocuments.clear();
  int told = 0;
  subscriptions.push_back(NotificationCenter::standard().observe(notification::recentDocumentsChanged,
                                                                 [&](const std::any&) { ++told; }));
  dialogs.filesToOpen = QStringList{writeImage("a.png"), writeText("broken.png", "x"), writeImage("b.png")};
  files.askAndOpen();
  ASSERT_TRUE(waitForFiles());
  EXPECT_EQ(state.recentDocuments.paths(), QStringList({path("b.png"), path("a.png")}));
  EXPECT_GE(told, 2);
}

TEST_F(DocumentFilesTest, SavedFilesBecomeRecentDocumentsOnceTheyAreWritten) {
  state.recentDocuments.clear();
  const DocumentPtr document = addDocument(QStringLiteral("Untitled"));
  dialogs.savePaths.push(path("missing/Sky.tessel"));
  files.saveAs(document);
  files.settleWrites();
  EXPECT_THAT(state.recentDocuments.paths(), IsEmpty());
  dialogs.savePaths.push(path("Sky.tessel"));
  files.saveAs(document);
  files.settleWrites();
  EXPECT_EQ(state.recentDocuments.paths(), QStringList(path("Sky.tessel")));
}

// Saving.

TEST_F(DocumentFilesTest, SaveAsAdoptsTheFileAndWritesIt) {
  const DocumentPtr document = addDocument(QStringLiteral("Untitled"));
  document->setSource(std::nullopt, Document::ImageFileFormat::png);
  document->setDirty(true);
  dialogs.savePaths.push(path("Evening sky.tessel"));
  files.saveAs(document);
  // The properties change immediately; only the write runs in the background.
  EXPECT_EQ(document->sourceFileURL.value(), path("Evening sky.tessel"));
  EXPECT_EQ(document->sourceFileFormat.value(), std::nullopt);
  EXPECT_EQ(document->name.value(), "Evening sky");
  EXPECT_FALSE(document->isDirty.value());
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(dialogs.warnings, IsEmpty());

  const DocumentPtr again = openOne(path("Evening sky.tessel"));
  EXPECT_EQ(again->name.value(), "Evening sky");
  EXPECT_EQ(again->canvasWidth.value(), 16);
  EXPECT_TRUE(again->rootNodes.value().front().layer()->texture.value()->equals(
      *document->rootNodes.value().front().layer()->texture.value()));
}

TEST_F(DocumentFilesTest, SaveAsProposesTheDocumentsName) {
  const DocumentPtr document = addDocument(QStringLiteral("before/after"));
  document->setSource(path("photo.png"), std::nullopt);
  files.saveAs(document);
  EXPECT_THAT(dialogs.proposals, ElementsAre(path("before-after.tessel").toStdString()));
  EXPECT_EQ(document->sourceFileURL.value(), path("photo.png"));
}

TEST_F(DocumentFilesTest, FilePanelsStartWhereTheUserIsWorking) {
  files.askAndOpen();
  EXPECT_EQ(dialogs.proposals.back(), QDir::homePath().toStdString());
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  dialogs.savePaths.push(path("Sky.tessel"));
  files.saveAs(document);
  ASSERT_TRUE(waitForFiles());
  addDocument(QStringLiteral("Untitled"));
  files.askAndOpen();
  EXPECT_EQ(dialogs.proposals.back(), folder.path().toStdString()) << "the folder used last";
  const QTemporaryDir other;
  document->setSource(other.filePath(QStringLiteral("Sky.tessel")), std::nullopt);
  state.windowState.switchToDocument(document->id);
  files.askAndOpen();
  EXPECT_EQ(dialogs.proposals.back(), other.path().toStdString()) << "the document's own";
}

TEST_F(DocumentFilesTest, AFailedSaveAsKeepsTheNewNameAndLeavesTheDocumentDirty) {
  const DocumentPtr document = addDocument(QStringLiteral("Untitled"));
  dialogs.savePaths.push(path("no such folder/Sky.tessel"));
  files.saveAs(document);
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->name.value(), "Sky");
  EXPECT_EQ(document->sourceFileURL.value(), path("no such folder/Sky.tessel"));
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Save");
  EXPECT_THAT(dialogs.warnings[0].second, StartsWith("Sky.tessel: "));
}

TEST_F(DocumentFilesTest, SaveClearsTheDirtyFlagBeforeItWrites) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  dialogs.savePaths.push(path("Sky.tessel"));
  files.saveAs(document);
  ASSERT_TRUE(waitForFiles());

  document->addLayer(QStringLiteral("Clouds"));
  ASSERT_TRUE(document->isDirty.value());
  files.save(document);
  EXPECT_FALSE(document->isDirty.value());
  document->addLayer(QStringLiteral("Later"));
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(openOne(path("Sky.tessel"))->layerCount(), 2);
}

TEST_F(DocumentFilesTest, ASaveKeepsAnAdjustmentThatIsOpen) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  document->setSource(path("Sky.tessel"), std::nullopt);
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  document->setDirty(false);
  LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  levels.apply({.blackPoint = 100.0F});
  files.save(document);
  EXPECT_FALSE(levels.isOpen());
  EXPECT_EQ(document->undoStack.undoActionName(), "Levels");
  ASSERT_TRUE(waitForFiles());
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(openOne(path("Sky.tessel"))
                  ->activeLayer()
                  ->texture.value()
                  ->equals(*document->activeLayer()->texture.value()));
}

TEST_F(DocumentFilesTest, AFailedSaveLeavesTheDocumentDirtyAndIsReportedOnce) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  document->setSource(path("no such folder/Sky.TESSEL"), std::nullopt);
  document->setDirty(true);
  files.save(document);
  EXPECT_FALSE(document->isDirty.value());
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(document->isDirty.value());
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Save");
}

TEST_F(DocumentFilesTest, AQueuedSaveKeepsTheDocumentDirtyUntilItsTurn) {
  const DocumentPtr first = addDocument(QStringLiteral("First"));
  const DocumentPtr second = addDocument(QStringLiteral("Second"));
  first->setSource(path("first.tessel"), std::nullopt);
  second->setSource(path("second.tessel"), std::nullopt);
  first->setDirty(true);
  second->setDirty(true);
  files.save(first);
  files.save(second);
  EXPECT_FALSE(first->isDirty.value());
  EXPECT_TRUE(second->isDirty.value());
  files.settleSave(*second);
  EXPECT_FALSE(second->isDirty.value());
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("first.tessel"), QStringLiteral("second.tessel")}));
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(DocumentFilesTest, ASecondSaveOfADocumentWritesItAsItIsWhenTheFirstHasEnded) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  document->setSource(path("Sky.tessel"), std::nullopt);
  document->setDirty(true);
  files.save(document);
  document->addLayer(QStringLiteral("Asked for"));
  files.save(document);
  document->addLayer(QStringLiteral("Later"));
  files.settleSave(*document);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(openOne(path("Sky.tessel"))->layerCount(), 3);
}

TEST_F(DocumentFilesTest, ASaveAsDuringASaveOfTheSameDocumentWritesBothFiles) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  document->setSource(path("Sky.tessel"), std::nullopt);
  document->setDirty(true);
  files.save(document);
  document->addLayer(QStringLiteral("Clouds"));
  dialogs.savePaths.push(path("Copy.tessel"));
  files.saveAs(document);
  files.settleSave(*document);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(document->name.value(), "Copy");
  EXPECT_EQ(openOne(path("Sky.tessel"))->layerCount(), 1);
  EXPECT_EQ(openOne(path("Copy.tessel"))->layerCount(), 2);
}

TEST_F(DocumentFilesTest, EveryFailedSaveIsReportedWithItsFile) {
  for (const char* name : {"one.tessel", "two.tessel"}) {
    const DocumentPtr document = addDocument(QString::fromLatin1(name));
    document->setSource(path("no such folder/") + QLatin1String(name), std::nullopt);
    document->setDirty(true);
    files.save(document);
  }
  files.settleWrites();
  ASSERT_THAT(dialogs.warnings, SizeIs(2));
  EXPECT_THAT(dialogs.warnings[0].second, StartsWith("one.tessel: "));
  EXPECT_THAT(dialogs.warnings[1].second, StartsWith("two.tessel: "));
  for (const DocumentPtr& document : state.windowState.documents.value()) {
    EXPECT_TRUE(document->isDirty.value());
  }
}

TEST_F(DocumentFilesTest, ASaveAsDuringTheSaveOfAnotherDocumentRunsAfterIt) {
  const DocumentPtr first = addDocument(QStringLiteral("First"));
  const DocumentPtr second = addDocument(QStringLiteral("Second"));
  first->setSource(path("first.tessel"), std::nullopt);
  first->setDirty(true);
  second->setDirty(true);
  files.save(first);
  dialogs.savePaths.push(path("chosen.tessel"));
  files.saveAs(second);
  EXPECT_EQ(second->name.value(), "chosen");
  EXPECT_FALSE(second->isDirty.value());
  files.settleSave(*second);
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("chosen.tessel"), QStringLiteral("first.tessel")}));
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(DocumentFilesTest, ASaveAsAfterAFailedSaveOfTheSameDocumentLeavesItClean) {
  const DocumentPtr document = addDocument(QStringLiteral("Photo"));
  document->setSource(path("no such folder/photo.tessel"), std::nullopt);
  document->setDirty(true);
  files.save(document);
  dialogs.savePaths.push(path("rescued.tessel"));
  files.saveAs(document);
  ASSERT_TRUE(waitForFiles());
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("rescued.tessel")}));
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Save");
}

TEST_F(DocumentFilesTest, AFlatImageIsSavedInPlaceInItsFormat) {
  const DocumentPtr document = openOne(writeImage("photo.png", 20, 10, Qt::red));
  ASSERT_NE(document, nullptr);
  document->fillSelection({0.0F, 0.0F, 1.0F, 1.0F});
  document->setDirty(true);
  files.save(document);
  ASSERT_TRUE(waitForFiles());
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(QImage(path("photo.png")).pixelColor(3, 3), QColor(Qt::blue));
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("photo.png")}));
}

TEST_F(DocumentFilesTest, AQueuedFlatSaveFailsIfItsDocumentIsNoLongerFlat) {
  const DocumentPtr first = addDocument(QStringLiteral("First"));
  first->setSource(path("first.tessel"), std::nullopt);
  first->setDirty(true);
  const DocumentPtr photo = openOne(writeImage("photo.png", 20, 10, Qt::red));
  ASSERT_NE(photo, nullptr);
  photo->fillSelection({0.0F, 0.0F, 1.0F, 1.0F});
  files.save(first);
  files.save(photo);
  photo->addLayer(QStringLiteral("Second"));
  files.settleWrites();
  EXPECT_TRUE(photo->isDirty.value());
  EXPECT_EQ(QImage(path("photo.png")).pixelColor(3, 3), QColor(Qt::red));
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Save");
  EXPECT_EQ(dialogs.warnings[0].second,
            "photo.png: The document has gained layers, masks or folders that this format can't hold. "
            "Use Save As.\nThe document stays open with all its changes.");
}

TEST_F(DocumentFilesTest, SavingAnUnmodifiedDocumentWritesNothing) {
  const QString photo = writeImage("photo.jpg");
  const DocumentPtr document = openOne(photo);
  ASSERT_TRUE(QFile::remove(photo));
  EXPECT_FALSE(DocumentFiles::canSave(*document));
  files.save(document);
  EXPECT_FALSE(files.activity.fraction.value().has_value());
  files.settleWrites();
  EXPECT_THAT(filesIn(), IsEmpty());
}

TEST_F(DocumentFilesTest, AnUnmodifiedDocumentWithoutAFileCanBeSaved) {
  EXPECT_TRUE(DocumentFiles::canSave(*addDocument(QStringLiteral("Untitled"))));
}

TEST_F(DocumentFilesTest, AnImageKeepsItsMetadataWhenItIsSavedAndExported) {
  constexpr int dotsPerMeter = 11811;
  QImage image(20, 10, QImage::Format_RGB32);
  image.fill(Qt::red);
  image.setDotsPerMeterX(dotsPerMeter);
  image.setDotsPerMeterY(dotsPerMeter);
  ASSERT_TRUE(image.save(path("scan.png")));
  const DocumentPtr scan = openOne(path("scan.png"));
  openOne(writeImage("other.png"));
  scan->setDirty(true);
  files.save(scan);
  dialogs.exportTargets.push({path("copy.jpg"), 1});
  files.exportImage(scan);
  files.settleWrites();
  EXPECT_EQ(QImage(path("scan.png")).dotsPerMeterX(), dotsPerMeter);
  EXPECT_NEAR(QImage(path("copy.jpg")).dotsPerMeterX(), dotsPerMeter, 40);
}

TEST_F(DocumentFilesTest, AFailedFlatSaveLeavesTheDocumentDirty) {
  const DocumentPtr document = openOne(writeImage("photo.png"));
  document->setSource(path("no such folder/photo.png"), Document::ImageFileFormat::png);
  document->setDirty(true);
  files.save(document);
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(document->isDirty.value());
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Save");
}

TEST_F(DocumentFilesTest, SavingWhatAFlatFileCannotHoldLeadsToSaveAs) {
  int asked = 0;
  subscriptions.push_back(NotificationCenter::standard().observe(notification::saveAsDocument,
                                                                 [&](const std::any&) { ++asked; }));
  const DocumentPtr layered = openOne(writeImage("photo.png"));
  layered->addLayer(QStringLiteral("Second"));
  files.save(layered);
  EXPECT_EQ(asked, 1);

  files.save(addDocument(QStringLiteral("Untitled")));
  EXPECT_EQ(asked, 2);

  const DocumentPtr otherFormat = openOne(writeImage("photo.ppm"));
  EXPECT_EQ(otherFormat->sourceFileFormat.value(), std::nullopt);
  otherFormat->setDirty(true);
  files.save(otherFormat);
  EXPECT_EQ(asked, 3);
  EXPECT_TRUE(layered->isDirty.value());
}

// Exporting.

TEST_F(DocumentFilesTest, AnExportDoesNotChangeTheDocument) {
  const DocumentPtr document = addDocument(QStringLiteral("Picture"));
  document->setDirty(true);
  document->setSource(path("Picture.tessel"), std::nullopt);
  for (std::size_t row = 0; row < exportFormats.size(); ++row) {
    const QString target = path("out.") + QLatin1String(exportFormats[row].fileExtension);
    dialogs.exportTargets.push({target, static_cast<int>(row)});
    files.exportImage(document);
    ASSERT_TRUE(waitForFiles());
    const QImage written(target);
    EXPECT_EQ(written.size(), QSize(16, 12)) << target.toStdString();
    EXPECT_EQ(written.pixelColor(1, 1), QColor(Qt::white));
  }
  EXPECT_THAT(dialogs.warnings, IsEmpty());
  EXPECT_EQ(dialogs.proposals.front(), path("Picture").toStdString());
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->sourceFileURL.value(), path("Picture.tessel"));
  EXPECT_EQ(document->name.value(), "Picture");
}

TEST_F(DocumentFilesTest, AnExportIncludesEditsThatWereNeverOnScreen) {
  const DocumentPtr document = addDocument(QStringLiteral("Picture"));
  document->fillSelection({0.0F, 1.0F, 0.0F, 1.0F});
  dialogs.exportTargets.push({path("out.png"), 0});
  files.exportImage(document);
  ASSERT_TRUE(waitForFiles());
  EXPECT_EQ(QImage(path("out.png")).pixelColor(1, 1), QColor(Qt::green));
}

TEST_F(DocumentFilesTest, OpeningAndExportingAnImageReportProgress) {
  std::vector<double> fractions;
  const auto subscription = files.activity.fraction.addNotifier([&] {
    if (const auto fraction = files.activity.fraction.value()) fractions.push_back(*fraction);
  });
  const auto hasBetween = [&] {
    return std::ranges::any_of(fractions, [](double value) { return value > 0.0 && value < 1.0; });
  };
  const DocumentPtr document = openOne(writeImage("photo.png", 400, 300));
  EXPECT_TRUE(hasBetween());
  EXPECT_TRUE(std::ranges::is_sorted(fractions));
  fractions.clear();
  dialogs.exportTargets.push({path("copy.jpg"), 1});
  files.exportImage(document);
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(hasBetween());
  EXPECT_TRUE(std::ranges::is_sorted(fractions));
}

TEST_F(DocumentFilesTest, AFailedExportIsReported) {
  const DocumentPtr document = addDocument(QStringLiteral("Picture"));
  dialogs.exportTargets.push({path("no such folder/out.png"), 0});
  files.exportImage(document);
  ASSERT_TRUE(waitForFiles());
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Export");

  test::put(document->compositedTexture, nullptr);
  dialogs.exportTargets.push({path("out.png"), 0});
  files.exportImage(document);
  ASSERT_TRUE(waitForFiles());
  ASSERT_THAT(dialogs.warnings, SizeIs(2));
  EXPECT_EQ(dialogs.warnings[1].first, "Failed to Export");
  EXPECT_THAT(filesIn(), IsEmpty());
}

TEST_F(DocumentFilesTest, ExtensionsSelectTheirFormats) {
  EXPECT_EQ(exportRowForName(QStringLiteral("a.png")), 0);
  EXPECT_EQ(exportRowForName(QStringLiteral("a.JPEG")), 1);
  EXPECT_EQ(exportRowForName(QStringLiteral("a.tif")), 2);
  EXPECT_EQ(exportRowForName(QStringLiteral("a.b.gif")), 3);
  EXPECT_EQ(exportRowForName(QStringLiteral("a.bmp")), 4);
  EXPECT_EQ(exportRowForName(QStringLiteral("a.tessel")), std::nullopt);
  EXPECT_EQ(exportRowForName(QStringLiteral("png")), std::nullopt);
}

}  // namespace
}  // namespace orvanel
