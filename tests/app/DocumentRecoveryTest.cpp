// Journals follow the open documents, and what they hold is offered at the next start.
#include "app/DocumentRecovery.h"

#include <QDir>
#include <QFile>
#include <QThreadPool>

#include "AppFixture.h"
#include "io/document/DocumentFixture.h"
#include "io/files/FaultyDisk.h"

namespace orvanel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class DocumentRecoveryTest : public AppFixture {
 protected:
  DocumentRecoveryTest() {
    observeNotifications();
    start();
  }
  ~DocumentRecoveryTest() override { end(); }

  void start() {
    RecoverySettings settings;
    settings.folder = path("store");
    settings.interval = std::chrono::milliseconds(1);
    recovery = std::make_unique<DocumentRecovery>(state, files, dialogs, settings);
  }
  void end() { recovery.reset(); }
  /// As after a crash: the documents are gone, their journals are not.
  void crashAndStart() {
    end();
    state.windowState.confirmClosing = nullptr;
    state.windowState.closeAllDocuments();
    start();
  }

  [[nodiscard]] QStringList journals() const {
    return QDir(path("store")).entryList({QStringLiteral("*.journal")}, QDir::Files);
  }
  bool waitForJournals(int count) {
    return waitUntil([this, count] { return journals().size() == count; });
  }
  DocumentPtr addEdited(const char* name) {
    const DocumentPtr document = addDocument(QString::fromUtf8(name));
    document->addLayer(QStringLiteral("Clouds"));
    recovery->recordNow();
    EXPECT_TRUE(waitForJournals(1));
    return document;
  }
  DocumentPtr addSavedAndEdited(const char* name) {
    const DocumentPtr document = addDocument(QString::fromUtf8(name));
    dialogs.savePaths.push(path(name) + QStringLiteral(".tessel"));
    files.saveAs(document);
    files.settleWrites();
    document->addLayer(QStringLiteral("Clouds"));
    recovery->recordNow();
    EXPECT_TRUE(waitForJournals(1));
    return document;
  }
  /// A document that has never been saved, or one that has, goes to another file, and the program ends before
  /// that is in its place.
  DocumentPtr crashInSaveAs(bool hasFile) {
    const DocumentPtr document = hasFile ? addSavedAndEdited("Sky") : addEdited("Sky");
    {
      testing::FailingStep disk(testing::FailingStep::Step::rename);
      const ScopedFileOperations scope(disk);
      dialogs.savePaths.push(path("Sea.tessel"));
      files.saveAs(document);
      files.settleWrites();
    }
    recovery->recordNow();
    crashAndStart();
    return document;
  }
  /// Restores what a save to another file left, twice, because the second process ends as well. Saves it, and
  /// returns the questions.
  std::vector<std::string> questionsAtSaveAfterTwoCrashes() {
    offer(RecoveryAnswer::restore, 1);
    recovery->recordNow();
    crashAndStart();
    offer(RecoveryAnswer::restore, 1);
    const DocumentPtr document = state.windowState.activeDocument();
    EXPECT_EQ(document->sourceFileURL.value(), path("Sea.tessel"));
    dialogs.overwriteQuestions.clear();
    files.save(document);
    files.settleWrites();
    std::vector<std::string> questions;
    for (const auto& question : dialogs.overwriteQuestions) questions.push_back(question.first);
    EXPECT_EQ(document->isDirty.value(), !questions.empty());
    document->setDirty(false);
    state.windowState.closeDocument(document->id);
    recovery->closeAll();
    EXPECT_TRUE(waitForJournals(0));
    QFile::remove(path("Sea.tessel"));
    return questions;
  }
  void openAndEditImage(const char* name) {
    files.open({writeImage(name)});
    ASSERT_TRUE(waitForFiles());
    state.windowState.activeDocument()->invertActive();
    recovery->recordNow();
    ASSERT_TRUE(waitForJournals(1));
  }
  /// `seconds` from now is the file's time afterwards.
  static void writeByAnotherProgram(const QString& name, int seconds) {
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("by another program");
    file.flush();
    ASSERT_TRUE(
        file.setFileTime(QDateTime::currentDateTime().addSecs(seconds), QFileDevice::FileModificationTime));
  }
  void expectQuestionAtSave() {
    dialogs.overwriteQuestions.clear();
    const DocumentPtr document = state.windowState.activeDocument();
    files.save(document);
    files.settleWrites();
    EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
    EXPECT_TRUE(document->isDirty.value());
    document->setDirty(false);
    state.windowState.closeDocument(document->id);
    recovery->closeAll();
    EXPECT_TRUE(waitForJournals(0));
  }
  /// Answers the offer, and waits for as many documents.
  void offer(RecoveryAnswer answer, std::size_t documents) {
    dialogs.askedOrphans.clear();
    dialogs.recoveryAnswers.push(answer);
    recovery->offerOrphans();
    ASSERT_TRUE(waitUntil([this] { return !dialogs.askedOrphans.empty(); }));
    ASSERT_TRUE(waitUntil([&] { return openNames().size() == documents; }));
  }

  void expectASaveWithoutAQuestion() {
    const DocumentPtr document = state.windowState.activeDocument();
    files.save(document);
    files.settleWrites();
    EXPECT_FALSE(document->isDirty.value());
    EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
  }

  std::unique_ptr<DocumentRecovery> recovery;
};

TEST_F(DocumentRecoveryTest, ADocumentWithoutChangesHasNoJournal) {
  addDocument(QStringLiteral("Sky"));
  recovery->recordNow();
  QThreadPool::globalInstance()->waitForDone();
  EXPECT_THAT(journals(), IsEmpty());
}

TEST_F(DocumentRecoveryTest, TheJournalGoesWithASave) {
  const DocumentPtr document = addEdited("Sky");
  dialogs.savePaths.push(path("Sky.tessel"));
  files.saveAs(document);
  files.settleWrites();
  EXPECT_TRUE(waitForJournals(0));
}

TEST_F(DocumentRecoveryTest, TheJournalGoesWithADocumentThatNobodyWantsToSave) {
  const DocumentPtr document = addEdited("Sky");
  dialogs.saveAnswers.push(SaveAnswer::cancel);
  state.windowState.closeDocument(document->id);
  EXPECT_THAT(journals(), SizeIs(1));
  dialogs.saveAnswers.push(SaveAnswer::dontSave);
  state.windowState.closeDocument(document->id);
  EXPECT_TRUE(waitForJournals(0));
}

TEST_F(DocumentRecoveryTest, TheJournalGoesWhenTheUserQuits) {
  addEdited("Sky");
  recovery->closeAll();
  EXPECT_TRUE(waitForJournals(0));
}

TEST_F(DocumentRecoveryTest, WhatACrashLeftOpensUnsavedUnderItsNameAndPath) {
  addSavedAndEdited("Sky");
  crashAndStart();
  ASSERT_THAT(openNames(), IsEmpty());
  offer(RecoveryAnswer::restore, 1);
  ASSERT_THAT(dialogs.askedOrphans, SizeIs(1));
  EXPECT_EQ(dialogs.askedOrphans[0].name, QStringLiteral("Sky"));
  EXPECT_EQ(dialogs.askedOrphans[0].path, path("Sky.tessel"));
  const DocumentPtr document = state.windowState.activeDocument();
  EXPECT_EQ(document->name.value(), "Sky");
  EXPECT_EQ(document->sourceFileURL.value(), path("Sky.tessel"));
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->rootNodes.value().size(), 2U);
}

TEST_F(DocumentRecoveryTest, DecidingLaterKeepsEverything) {
  addEdited("Sky");
  crashAndStart();
  offer(RecoveryAnswer::later, 0);
  EXPECT_THAT(journals(), SizeIs(1));
  offer(RecoveryAnswer::restore, 1);
  EXPECT_THAT(openNames(), ElementsAre("Sky"));
}

TEST_F(DocumentRecoveryTest, WhatIsDiscardedIsGone) {
  addEdited("Sky");
  crashAndStart();
  offer(RecoveryAnswer::discard, 0);
  EXPECT_TRUE(waitForJournals(0));
}

TEST_F(DocumentRecoveryTest, ARestoredDocumentIsSavedOverItsFileWithoutAQuestion) {
  addSavedAndEdited("Sky");
  crashAndStart();
  offer(RecoveryAnswer::restore, 1);
  expectASaveWithoutAQuestion();
  EXPECT_TRUE(waitForJournals(0));
}

TEST_F(DocumentRecoveryTest, TellsWhatCouldntBeRestoredAndKeepsItForTheNextStart) {
  const DocumentPtr document = testing::richDocument(ColorMode::rgb8);
  state.windowState.addDocument(document);
  dialogs.savePaths.push(path("Sky.tessel"));
  files.saveAs(document);
  files.settleWrites();
  document->addLayer(QStringLiteral("Clouds"));
  const std::size_t layers = document->allLayers().size();
  recovery->recordNow();
  ASSERT_TRUE(waitForJournals(1));
  crashAndStart();
  QFile file(path("Sky.tessel"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("by another program");
  file.close();
  offer(RecoveryAnswer::restore, 1);
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Restored in Part");
  EXPECT_THAT(dialogs.warnings[0].second, ::testing::HasSubstr("\"Sky.tessel\" has been changed or removed"));
  EXPECT_THAT(dialogs.warnings[0].second,
              ::testing::EndsWith("\n\nIt will be offered again at the next start."));
  EXPECT_EQ(state.windowState.activeDocument()->allLayers().size(), layers);
  recovery->recordNow();
  EXPECT_TRUE(waitForJournals(2)) << "its own, and the one that was offered";
}

TEST_F(DocumentRecoveryTest, SaysThatNothingIsKeptForAsLongAsThatIsSo) {
  QString standing;
  QStringList notes;
  recovery->onSuspended = [&](const QString& note) { standing = note; };
  recovery->onNote = [&](const QString& note) { notes << note; };
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  {
    testing::FullDisk disk(0);
    const ScopedFileOperations scope(disk);
    document->addLayer(QStringLiteral("Clouds"));
    recovery->recordNow();
    ASSERT_TRUE(waitUntil([&] { return !standing.isEmpty(); }));
    EXPECT_TRUE(standing.startsWith(QStringLiteral("Unsaved changes aren't kept for recovery: ")));
    EXPECT_THAT(notes, IsEmpty());
  }
  document->addLayer(QStringLiteral("More clouds"));
  recovery->recordNow();
  ASSERT_TRUE(waitUntil([&] { return standing.isEmpty(); }));
  EXPECT_THAT(notes, ElementsAre(QStringLiteral("Unsaved changes are kept for recovery again.")));
}

TEST_F(DocumentRecoveryTest, ARestoredDocumentWhoseFileHasChangedAsksBeforeItIsSaved) {
  // Also for a file that was put there with an older time, as from a backup.
  for (const int seconds : {10, -1000}) {
    addSavedAndEdited("Sky");
    crashAndStart();
    writeByAnotherProgram(path("Sky.tessel"), seconds);
    offer(RecoveryAnswer::restore, 1);
    expectQuestionAtSave();
  }
}

TEST_F(DocumentRecoveryTest, SoDoesARestoredImage) {
  openAndEditImage("photo.png");
  crashAndStart();
  writeByAnotherProgram(path("photo.png"), -1000);
  offer(RecoveryAnswer::restore, 1);
  expectQuestionAtSave();
}

TEST_F(DocumentRecoveryTest, NobodyKnowsWhichOfTwoVersionsIsTheLaterOne) {
  addSavedAndEdited("Sky");
  const auto other = DocumentIO::loadSynchronously(path("Sky.tessel"), state.metalContext);
  ASSERT_TRUE(other);
  (*other)->addLayer(QStringLiteral("Birds"));
  ASSERT_TRUE(DocumentIO::saveSynchronously(*other, path("Sky.tessel"), state.metalContext));
  crashAndStart();
  offer(RecoveryAnswer::restore, 1);
  files.save(state.windowState.activeDocument());
  files.settleWrites();
  ASSERT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(dialogs.overwriteQuestions[0].first, "\"Sky.tessel\" holds another version of this document.");
  EXPECT_THAT(dialogs.overwriteQuestions[0].second, ::testing::HasSubstr("may be older or newer"));
}

TEST_F(DocumentRecoveryTest, ASaveAsThatACrashHasEndedIsDoneWithoutAQuestion) {
  for (const bool hasFile : {true, false}) {
    crashInSaveAs(hasFile);
    EXPECT_THAT(questionsAtSaveAfterTwoCrashes(), IsEmpty());
  }
}

TEST_F(DocumentRecoveryTest, ASaveAsThatACrashHasEndedAsksAboutTheFileThatWasThere) {
  for (const bool hasFile : {true, false}) {
    writeText("Sea.tessel", "by another program");
    crashInSaveAs(hasFile);
    EXPECT_THAT(questionsAtSaveAfterTwoCrashes(), ElementsAre("There is already a file \"Sea.tessel\"."));
  }
}

TEST_F(DocumentRecoveryTest, WhatASaveAsHadWrittenBeforeACrashIsKnownAsTheDocuments) {
  for (const bool hasFile : {true, false}) {
    const DocumentPtr document = crashInSaveAs(hasFile);
    ASSERT_TRUE(DocumentIO::saveSynchronously(document, path("Sea.tessel"), state.metalContext));
    EXPECT_THAT(questionsAtSaveAfterTwoCrashes(),
                ElementsAre("\"Sea.tessel\" holds another version of this document."));
  }
}

TEST_F(DocumentRecoveryTest, AnImageKnowsWhatWasExportedOverItAfterACrashAsWell) {
  openAndEditImage("photo.png");
  dialogs.exportTargets.push({path("photo.png"), 0});
  files.exportImage(state.windowState.activeDocument());
  files.settleWrites();
  recovery->recordNow();
  crashAndStart();
  offer(RecoveryAnswer::restore, 1);
  expectASaveWithoutAQuestion();
}

/// Its files can't be removed.
class LastingDisk final : public FileOperations {
 public:
  int removeFile(const std::string& /*path*/) override {
    errno = EACCES;
    return -1;
  }
};

TEST_F(DocumentRecoveryTest, SaysThatSomethingCouldntBeDiscarded) {
  addEdited("Sky");
  crashAndStart();
  LastingDisk disk;
  const ScopedFileOperations scope(disk);
  offer(RecoveryAnswer::discard, 0);
  ASSERT_TRUE(waitUntil([this] { return !dialogs.warnings.empty(); }));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Discard");
  EXPECT_EQ(dialogs.warnings[0].second,
            "Sky: The recovery data can't be removed: Permission denied.\n\nIt will be offered again at the "
            "next start.");
}

TEST_F(DocumentRecoveryTest, ARestoredImageIsSavedOverItsFileWithoutAQuestion) {
  openAndEditImage("photo.png");
  crashAndStart();
  offer(RecoveryAnswer::restore, 1);
  const DocumentPtr document = state.windowState.activeDocument();
  files.save(document);
  files.settleWrites();
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
}

}  // namespace
}  // namespace orvanel
