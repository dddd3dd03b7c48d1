#include <QFile>
#include <QFileInfo>

#include "AppFixture.h"
#include "BackgroundBlock.h"
#include "app/AppDelegate.h"
#include "app/WindowAccessor.h"
#include "io/files/FileOperations.h"
#include "model/LevelsAdjustment.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ClosingTest : public AppFixture {
 protected:
  ClosingTest() { observeNotifications(); }

  DocumentPtr addUnsaved(const QString& name) {
    const DocumentPtr document = addDocument(name);
    document->setDirty(true);
    return document;
  }

  DocumentPtr openUnsaved(const QString& file) {
    files.open({file});
    EXPECT_TRUE(waitForFiles());
    const DocumentPtr document = state.windowState.activeDocument();
    document->setDirty(true);
    return document;
  }

  WindowState& windowState = state.windowState;
};

TEST_F(ClosingTest, TheQuestionNamesTheDocument) {
  windowState.closeDocument(addUnsaved(QStringLiteral("Sky"))->id);
  EXPECT_THAT(dialogs.questions, ElementsAre("Do you want to save changes to \"Sky\"?"));
  EXPECT_EQ(dialogs.lastInformativeText, "Your changes will be lost if you don't save them.");
}

TEST_F(ClosingTest, TheQuestionAndTheFilePanelShortenAnEndlessName) {
  dialogs.saveAnswers.push(SaveAnswer::save);
  windowState.closeDocument(addUnsaved(QString(1000000, u'a'))->id);
  ASSERT_THAT(dialogs.questions, SizeIs(1));
  EXPECT_LT(dialogs.questions[0].size(), 120U);
  ASSERT_THAT(dialogs.proposals, SizeIs(1));
  EXPECT_LT(QFileInfo(QString::fromStdString(dialogs.proposals[0])).fileName().toUtf8().size(), 256);
}

TEST_F(ClosingTest, ASavedDocumentClosesWithoutAQuestion) {
  windowState.closeDocument(addDocument(QStringLiteral("Sky"))->id);
  EXPECT_THAT(dialogs.questions, IsEmpty());
  EXPECT_THAT(openNames(), IsEmpty());
}

TEST_F(ClosingTest, AnOpenAdjustmentIsAChangeToAskAbout) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  document->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  document->setDirty(false);
  LevelsAdjustment levels = LevelsAdjustment::begin(document).value();
  levels.apply({.blackPoint = 100.0F});
  windowState.closeDocument(document->id);
  EXPECT_THAT(dialogs.questions, SizeIs(1));
}

TEST_F(ClosingTest, CancelKeepsTheDocumentAndDontSaveClosesIt) {
  const DocumentPtr document = addUnsaved(QStringLiteral("Sky"));
  dialogs.saveAnswers.push(SaveAnswer::cancel);
  windowState.closeDocument(document->id);
  EXPECT_THAT(openNames(), ElementsAre("Sky"));
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  windowState.closeDocument(document->id);
  EXPECT_THAT(openNames(), IsEmpty());
}

TEST_F(ClosingTest, WithoutConfirmationDirtyDocumentsCloseSilently) {
  state.userDefaults.setValue(UserDefaults::confirmUnsavedChangesKey, false);
  windowState.closeDocument(addUnsaved(QStringLiteral("Sky"))->id);
  EXPECT_THAT(openNames(), IsEmpty());
  addUnsaved(QStringLiteral("Sea"));
  EXPECT_EQ(AppDelegate(state, files, {}).applicationShouldTerminate(), TerminationReply::now);
  EXPECT_THAT(dialogs.questions, IsEmpty());
}

TEST_F(ClosingTest, AnsweringSaveWritesTheDocumentsFile) {
  const DocumentPtr document = addUnsaved(QStringLiteral("Sky"));
  document->setSource(path("Sky.Tessel"), std::nullopt);
  dialogs.saveAnswers.push(SaveAnswer::save);
  windowState.closeDocument(document->id);
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_THAT(dialogs.proposals, IsEmpty());
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(QFile::exists(path("Sky.Tessel")));
}

TEST_F(ClosingTest, SavingAnUntitledDocumentAsksForAFile) {
  const DocumentPtr document = addUnsaved(QStringLiteral("Untitled"));
  dialogs.saveAnswers.push(SaveAnswer::save);
  dialogs.savePaths.push(path("Sea.tessel"));
  windowState.closeDocument(document->id);
  EXPECT_THAT(openNames(), IsEmpty());
  ASSERT_THAT(dialogs.proposals, SizeIs(1));
  EXPECT_TRUE(QString::fromStdString(dialogs.proposals[0]).endsWith(QStringLiteral("/Untitled.tessel")));
  EXPECT_EQ(document->name.value(), "Sea");
  EXPECT_EQ(document->sourceFileURL.value(), path("Sea.tessel"));
  EXPECT_TRUE(QFile::exists(path("Sea.tessel")));
}

TEST_F(ClosingTest, ASaveThatGoesToASecondFileAdoptsThat) {
  const DocumentPtr document = addUnsaved(QStringLiteral("Untitled"));
  const DocumentPtr refused = addUnsaved(QStringLiteral("Other"));
  dialogs.savePaths.push(path("Sea.tessel"));
  dialogs.savePaths.push(path("Sea 2.tessel"));
  dialogs.saveAnswers.push(SaveAnswer::save);
  dialogs.saveAnswers.push(SaveAnswer::cancel);
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAs);
  // Another program puts a file there while the save runs.
  struct Program final : FileOperations {
    int sync(int file) override {
      QFile::copy(theirs, place);
      return FileOperations::sync(file);
    }
    QString theirs;
    QString place;
  };
  Program program;
  program.theirs = writeText("theirs", "by another program");
  program.place = path("Sea.tessel");
  const ScopedFileOperations scope(program);
  AppDelegate delegate(state, files, {});
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::cancel);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(document->sourceFileURL.value(), path("Sea 2.tessel"));
  EXPECT_EQ(document->name.value(), "Sea 2");
}

TEST_F(ClosingTest, ACancelledPanelCountsAsARefusal) {
  addUnsaved(QStringLiteral("Untitled"));
  dialogs.saveAnswers.push(SaveAnswer::save);
  windowState.closeAllDocuments();
  EXPECT_THAT(openNames(), ElementsAre("Untitled"));
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(ClosingTest, AFlatSourceIsOverwrittenInPlace) {
  const DocumentPtr document = openUnsaved(writeImage("photo.png"));
  document->fillSelection({0.0F, 0.0F, 1.0F, 1.0F});
  dialogs.saveAnswers.push(SaveAnswer::save);
  windowState.closeDocument(document->id);
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_THAT(dialogs.proposals, IsEmpty());
  EXPECT_EQ(QImage(path("photo.png")).pixelColor(0, 0), QColor(Qt::blue));
}

TEST_F(ClosingTest, SavingAFlatSourceThatGainedALayerAsksForAFile) {
  const DocumentPtr document = openUnsaved(writeImage("photo.png"));
  document->addLayer(QStringLiteral("Second"));
  dialogs.saveAnswers.push(SaveAnswer::save);
  dialogs.savePaths.push(path("photo.tessel"));
  windowState.closeDocument(document->id);
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_EQ(document->sourceFileFormat.value(), std::nullopt);
  EXPECT_TRUE(QFile::exists(path("photo.tessel")));
  EXPECT_EQ(QImage(path("photo.png")).pixelColor(0, 0), QColor(Qt::red));
}

TEST_F(ClosingTest, AFailedSaveKeepsTheDocumentOpenAndDirty) {
  const DocumentPtr document = addUnsaved(QStringLiteral("Untitled"));
  dialogs.saveAnswers.push(SaveAnswer::save);
  dialogs.savePaths.push(path("no such folder/Sea.tessel"));
  windowState.closeDocument(document->id);
  EXPECT_THAT(openNames(), ElementsAre("Untitled"));
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->sourceFileURL.value(), std::nullopt);
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Save");
}

TEST_F(ClosingTest, QuittingStopsAtTheFirstRefusalAndKeepsAllOpen) {
  const DocumentPtr a = addUnsaved(QStringLiteral("A"));
  addDocument(QStringLiteral("Saved"));
  addUnsaved(QStringLiteral("B"));
  addUnsaved(QStringLiteral("C"));
  a->setSource(path("A.tessel"), std::nullopt);
  dialogs.saveAnswers.push(SaveAnswer::save);
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  dialogs.saveAnswers.push(SaveAnswer::cancel);
  AppDelegate delegate(state, files, {});
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::cancel);
  EXPECT_THAT(dialogs.questions, SizeIs(3));
  EXPECT_THAT(openNames(), ElementsAre("A", "Saved", "B", "C"));
  EXPECT_FALSE(a->isDirty.value());
}

TEST_F(ClosingTest, QuittingWithoutUnsavedChangesAsksNothing) {
  AppDelegate delegate(state, files, {});
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::now);
  addDocument(QStringLiteral("A"));
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::now);
  EXPECT_THAT(dialogs.questions, IsEmpty());
}

// The end of the session.

TEST_F(ClosingTest, TheAnswersToASessionThatAsksStandWhenItEnds) {
  addUnsaved(QStringLiteral("A"));
  addUnsaved(QStringLiteral("B"));
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  AppDelegate delegate(state, files, {});
  EXPECT_EQ(delegate.sessionShouldEnd(), TerminationReply::now);
  EXPECT_THAT(dialogs.questions, SizeIs(2));
  EXPECT_EQ(delegate.sessionEnds(), TerminationReply::now);
  EXPECT_THAT(dialogs.questions, SizeIs(2));
}

TEST_F(ClosingTest, WhatChangesBeforeTheSessionEndsIsAskedAboutAgain) {
  const DocumentPtr changed = addUnsaved(QStringLiteral("A"));
  const DocumentPtr looked = addUnsaved(QStringLiteral("B"));
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  AppDelegate delegate(state, files, {});
  ASSERT_EQ(delegate.sessionShouldEnd(), TerminationReply::now);
  changed->addLayer(QStringLiteral("Later"));
  looked->setZoom(2.0);
  dialogs.questions.clear();
  EXPECT_EQ(delegate.sessionEnds(), TerminationReply::cancel);
  EXPECT_THAT(dialogs.questions, ElementsAre("Do you want to save changes to \"A\"?"));
}

TEST_F(ClosingTest, ASessionThatWentOnLeavesNoAnswers) {
  addUnsaved(QStringLiteral("A"));
  AppDelegate delegate(state, files, {});
  EXPECT_EQ(delegate.sessionShouldEnd(), TerminationReply::cancel);
  EXPECT_EQ(delegate.sessionEnds(), TerminationReply::cancel);
  EXPECT_THAT(dialogs.questions, SizeIs(2)) << "who refuses has given up nothing";
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  ASSERT_EQ(delegate.sessionShouldEnd(), TerminationReply::now);
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::cancel);
  EXPECT_THAT(dialogs.questions, SizeIs(4)) << "quitting later is a decision of its own";
}

TEST_F(ClosingTest, ASessionThatAsksNobodyKeepsTheWorkBeforeItWaitsForSaves) {
  const DocumentPtr document = addUnsaved(QStringLiteral("A"));
  document->setSource(path("A.tessel"), std::nullopt);
  const DocumentPtr adjusted = addDocument(QStringLiteral("B"));
  adjusted->fillSelection({0.5F, 0.5F, 0.5F, 1.0F});
  LevelsAdjustment levels = LevelsAdjustment::begin(adjusted).value();
  levels.apply({.blackPoint = 100.0F});
  AppDelegate delegate(state, files, {});
  std::vector<bool> savesRan;
  {
    const BackgroundBlock storageThatDoesntAnswer;
    files.save(document);
    const auto recordNow = [&] {
      EXPECT_FALSE(levels.isOpen());
      savesRan.push_back(files.activity.fraction.value().has_value());
    };
    delegate.keepUnsavedWork(recordNow, std::chrono::milliseconds(20));
  }
  EXPECT_THAT(savesRan, ElementsAre(true, true)) << "before the wait, and when patience had ended";
  EXPECT_THAT(dialogs.questions, IsEmpty());
}

TEST_F(ClosingTest, UITestingQuitsAtOnce) {
  addUnsaved(QStringLiteral("A"));
  AppDelegate delegate(state, files, {QStringLiteral("--uitesting")});
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::now);
  EXPECT_THAT(dialogs.questions, IsEmpty());
}

TEST_F(ClosingTest, QuittingWaitsForARunningSave) {
  const DocumentPtr document = addUnsaved(QStringLiteral("A"));
  document->setSource(path("A.tessel"), std::nullopt);
  files.save(document);
  AppDelegate delegate(state, files, {});
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::now);
  EXPECT_TRUE(QFile::exists(path("A.tessel")));
}

TEST_F(ClosingTest, QuittingWaitsForQueuedSaves) {
  for (const char* name : {"A.tessel", "B.tessel", "C.tessel"}) {
    const DocumentPtr document = addUnsaved(QString::fromLatin1(name));
    document->setSource(path(name), std::nullopt);
    files.save(document);
  }
  AppDelegate delegate(state, files, {});
  EXPECT_EQ(delegate.applicationShouldTerminate(), TerminationReply::now);
  for (const char* name : {"A.tessel", "B.tessel", "C.tessel"}) EXPECT_TRUE(QFile::exists(path(name)));
  EXPECT_THAT(dialogs.questions, IsEmpty());
}

TEST_F(ClosingTest, ClosingADocumentWithAQueuedSaveWritesItFirst) {
  const DocumentPtr first = addUnsaved(QStringLiteral("A"));
  const DocumentPtr second = addUnsaved(QStringLiteral("B"));
  first->setSource(path("A.tessel"), std::nullopt);
  second->setSource(path("B.tessel"), std::nullopt);
  files.save(first);
  files.save(second);
  windowState.closeDocument(second->id);
  EXPECT_THAT(openNames(), ElementsAre("A"));
  EXPECT_THAT(dialogs.questions, IsEmpty());
  EXPECT_TRUE(QFile::exists(path("B.tessel")));
}

TEST_F(ClosingTest, AnEditDuringASaveIsAskedAboutWhenTheDocumentCloses) {
  const DocumentPtr document = addUnsaved(QStringLiteral("A"));
  document->setSource(path("A.tessel"), std::nullopt);
  files.save(document);
  document->addLayer(QStringLiteral("Later"));
  windowState.closeDocument(document->id);
  EXPECT_THAT(dialogs.questions, SizeIs(1));
  EXPECT_THAT(openNames(), ElementsAre("A"));
}

TEST_F(ClosingTest, ClosingDuringASaveThatFailsAsksAboutTheChanges) {
  const DocumentPtr document = addUnsaved(QStringLiteral("A"));
  document->setSource(path("no such folder/A.tessel"), std::nullopt);
  files.save(document);
  ASSERT_FALSE(document->isDirty.value());
  windowState.closeDocument(document->id);
  EXPECT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_THAT(dialogs.questions, SizeIs(1));
  EXPECT_THAT(openNames(), ElementsAre("A"));
}

TEST_F(ClosingTest, ClosingADocumentDoesNotWaitForTheSaveOfAnother) {
  const DocumentPtr saved = addUnsaved(QStringLiteral("A"));
  saved->setSource(path("A.tessel"), std::nullopt);
  const DocumentPtr closed = addUnsaved(QStringLiteral("B"));
  closed->setDirty(false);
  files.save(saved);
  windowState.closeDocument(closed->id);
  EXPECT_TRUE(files.activity.fraction.value().has_value());
  EXPECT_THAT(openNames(), ElementsAre("A"));
}

TEST_F(ClosingTest, TheCloseButtonClosesTabsFirst) {
  addDocument(QStringLiteral("A"));
  addDocument(QStringLiteral("B"));
  WindowCloseDelegate delegate(windowState);
  EXPECT_FALSE(delegate.windowShouldClose());
  EXPECT_THAT(openNames(), ElementsAre("A"));
  EXPECT_FALSE(delegate.windowShouldClose());
  EXPECT_THAT(openNames(), IsEmpty());
  EXPECT_TRUE(delegate.windowShouldClose());
}

// Starting.

TEST_F(ClosingTest, StartingWithoutArgumentsOpensNothing) {
  AppDelegate(state, files, {}).applicationDidFinishLaunching();
  EXPECT_THAT(openNames(), IsEmpty());
}

TEST_F(ClosingTest, StartingForUITestingCreatesATestDocument) {
  AppDelegate(state, files, {QStringLiteral("--uitesting")}).applicationDidFinishLaunching();
  const DocumentPtr made = windowState.activeDocument();
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->name.value(), "Test");
  EXPECT_EQ(made->canvasWidth.value(), 256);
  EXPECT_EQ(made->canvasHeight.value(), 256);
  EXPECT_EQ(made->colorMode.value(), ColorMode::rgb16);
}

TEST_F(ClosingTest, ArgumentsAreFilesToOpen) {
  const QString image = writeImage("a picture.png");
  AppDelegate(state, files,
              {image, QStringLiteral("file://") + path("a%20picture.png"), QStringLiteral("--typo")})
      .applicationDidFinishLaunching();
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), ElementsAre("a picture", "a picture"));
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_THAT(dialogs.warnings[0].second, testing::StartsWith("--typo: "));
}

}  // namespace
}  // namespace orvanel
