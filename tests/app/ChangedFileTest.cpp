// A file that another program has been at is not overwritten without a question.
#include <sys/stat.h>

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTest>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <optional>

#include "AppFixture.h"
#include "app/AppDelegate.h"
#include "io/files/FaultyDisk.h"
#include "io/files/FileOperations.h"

namespace orvanel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ChangedFileTest : public AppFixture {
 protected:
  ChangedFileTest() { observeNotifications(); }

  /// An open document with a file and an unsaved change.
  DocumentPtr addEdited(const char* name) {
    const DocumentPtr document = addDocument(QString::fromUtf8(name));
    dialogs.savePaths.push(path(name) + QStringLiteral(".tessel"));
    files.saveAs(document);
    files.settleWrites();
    document->addLayer(QStringLiteral("Clouds"));
    return document;
  }
  DocumentPtr openEdited(const QString& file) {
    files.open({file});
    EXPECT_TRUE(waitForFiles());
    const DocumentPtr document = state.windowState.activeDocument();
    document->setDirty(true);
    return document;
  }
  void save(const DocumentPtr& document) {
    files.save(document);
    files.settleWrites();
  }
  void saveAsWithFailure(const DocumentPtr& document, const QString& file, testing::FailingStep::Step step) {
    brokenDisk.emplace(step);
    dialogs.savePaths.push(file);
    files.saveAs(document);
    files.settleWrites();
    brokenDisk.reset();
    EXPECT_TRUE(document->isDirty.value());
  }
  static QByteArray contents(const QString& file) {
    QFile opened(file);
    EXPECT_TRUE(opened.open(QIODevice::ReadOnly));
    return opened.readAll();
  }
  /// A disk on which this step fails from now on.
  struct BrokenDisk {
    explicit BrokenDisk(testing::FailingStep::Step step) : disk(step), scope(disk) {}
    testing::FailingStep disk;
    ScopedFileOperations scope;
  };
  std::optional<BrokenDisk> brokenDisk;

  /// As another program does that writes into the file.
  static void overwrite(const QString& file) {
    QFile opened(file);
    EXPECT_TRUE(opened.open(QIODevice::WriteOnly));
    opened.write("by another program");
  }
};

/// Another program that writes into a file in the last moment of its save.
class WritingProgram final : public FileOperations {
 public:
  explicit WritingProgram(QString file) : file_(std::move(file)) {}
  int sync(int file) override {
    QFile opened(file_);
    EXPECT_TRUE(opened.open(QIODevice::WriteOnly));
    opened.write("by another program");
    opened.close();
    return FileOperations::sync(file);
  }

 private:
  QString file_;
};

/// Another program that writes into the file while its bytes are being copied.
class WritingIntoTheCopied final : public FileOperations {
 public:
  explicit WritingIntoTheCopied(QString file) : file_(std::move(file)) {}
  ssize_t copyRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                    std::size_t count) override {
    QFile opened(file_);
    EXPECT_TRUE(opened.open(QIODevice::ReadWrite));
    opened.write(QByteArray(static_cast<int>(opened.size()), 'x'));
    opened.close();
    return FileOperations::copyRange(from, fromOffset, to, toOffset, count);
  }

 private:
  QString file_;
};

/// Whether this process has the file open.
bool isOpenHere(const QString& path) {
  const QString file = QFileInfo(path).canonicalFilePath();
  const QDir descriptors(QStringLiteral("/proc/self/fd"));
  const QStringList names = descriptors.entryList(QDir::Files | QDir::System);
  return std::ranges::any_of(
      names, [&](const QString& name) { return QFile::symLinkTarget(descriptors.filePath(name)) == file; });
}

TEST_F(ChangedFileTest, TheQuestionNamesTheFileAndWhatHappened) {
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  save(document);
  ASSERT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(dialogs.overwriteQuestions[0].first, "\"Sky.tessel\" has been changed by another program.");
  EXPECT_THAT(dialogs.overwriteQuestions[0].second, HasSubstr("Nothing is lost"));
}

TEST_F(ChangedFileTest, CancelLeavesTheFileAndKeepsTheDocumentModified) {
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  save(document);
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_THAT(dialogs.warnings, IsEmpty());
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(2)) << "it is asked about each time";
}

TEST_F(ChangedFileTest, SaveAnywayReplacesTheFileAndKnowsItFromThen) {
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAnyway);
  save(document);
  EXPECT_FALSE(document->isDirty.value());
  const auto saved = DocumentIO::loadSynchronously(path("Sky.tessel"), state.metalContext);
  ASSERT_TRUE(saved);
  EXPECT_EQ((*saved)->rootNodes.value().size(), document->rootNodes.value().size());
  document->addLayer(QStringLiteral("Birds"));
  save(document);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
}

TEST_F(ChangedFileTest, AFileThatIsChangedDuringTheSaveIsAskedAbout) {
  const DocumentPtr document = addEdited("Sky");
  const DocumentPtr image = openEdited(writeImage("photo.png"));
  const auto saveDuringAWrite = [&](const DocumentPtr& each, const QString& file) {
    WritingProgram program(file);
    const ScopedFileOperations scope(program);
    save(each);
    EXPECT_EQ(contents(file), "by another program");
  };
  saveDuringAWrite(document, path("Sky.tessel"));
  saveDuringAWrite(image, path("photo.png"));
  ASSERT_THAT(dialogs.overwriteQuestions, SizeIs(2));
  EXPECT_EQ(dialogs.overwriteQuestions[0].first, "\"Sky.tessel\" has been changed by another program.");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_TRUE(image->isDirty.value());
}

TEST_F(ChangedFileTest, WhatIsWrittenDuringTheFirstAttemptOfASaveIsNotLostToTheSecond) {
  const DocumentPtr document = addEdited("Sky");
  const QString file = path("Sky.tessel");
  WritingIntoTheCopied program(file);
  const ScopedFileOperations scope(program);
  save(document);
  EXPECT_EQ(contents(file).count('x'), QFileInfo(file).size()) << "the other program's";
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_TRUE(document->isDirty.value());
}

TEST_F(ChangedFileTest, AFileThatIsReplacedWhileItIsOpenedIsAskedAbout) {
  addEdited("Sky");
  const QString file = path("Sky.tessel");
  overwrite(path("theirs"));
  DocumentPtr document;
  DocumentIO::load(file, state.metalContext, &files,
                   [&](const FileResult<DocumentPtr>& loaded) { document = loaded.value_or(nullptr); });
  const QDeadlineTimer deadline(std::chrono::minutes(1));
  while (!isOpenHere(file) && !deadline.hasExpired()) QThread::yieldCurrentThread();
  ASSERT_TRUE(isOpenHere(file));
  ASSERT_EQ(std::rename(qPrintable(path("theirs")), qPrintable(file)), 0);
  ASSERT_TRUE(QTest::qWaitFor([&] { return document != nullptr; }));
  document->setDirty(true);
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(contents(file), "by another program");
}

TEST_F(ChangedFileTest, AFileThatMayNotSurviveAPowerCutIsStillTheDocumentsOwn) {
  const DocumentPtr document = addEdited("Sky");
  const DocumentPtr image = openEdited(writeImage("photo.png"));
  for (const DocumentPtr& each : {document, image}) {
    {
      testing::FailingStep disk(testing::FailingStep::Step::syncFolder);
      const ScopedFileOperations scope(disk);
      save(each);
    }
    EXPECT_TRUE(each->isDirty.value());
    save(each);
    EXPECT_FALSE(each->isDirty.value());
  }
  EXPECT_THAT(dialogs.warnings, SizeIs(2));
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
}

TEST_F(ChangedFileTest, AQueuedSaveStillKnowsItsFileWhenSaveAsFollowsIt) {
  const DocumentPtr running = addEdited("Sea");
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  files.save(running);
  files.save(document);
  dialogs.savePaths.push(path("Sky 2.tessel"));
  files.saveAs(document);
  files.settleWrites();
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
  EXPECT_TRUE(DocumentIO::loadSynchronously(path("Sky 2.tessel"), state.metalContext));
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChangedFileTest, SaveAsWritesAnotherFileAndLeavesTheChangedOne) {
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAs);
  dialogs.savePaths.push(path("Sky 2.tessel"));
  save(document);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(document->sourceFileURL.value(), path("Sky 2.tessel"));
  EXPECT_EQ(document->name.value(), "Sky 2");
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
  EXPECT_TRUE(DocumentIO::loadSynchronously(path("Sky 2.tessel"), state.metalContext));
}

TEST_F(ChangedFileTest, ACancelledPanelIsACancelledSave) {
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAs);
  save(document);
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->sourceFileURL.value(), path("Sky.tessel"));
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
}

TEST_F(ChangedFileTest, AFileThatIsGoneIsAskedAbout) {
  const DocumentPtr document = addEdited("Sky");
  ASSERT_TRUE(QFile::rename(path("Sky.tessel"), path("Moved.tessel")));
  save(document);
  ASSERT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(dialogs.overwriteQuestions[0].first, "\"Sky.tessel\" is no longer where it was.");
  EXPECT_FALSE(QFile::exists(path("Sky.tessel")));
  EXPECT_TRUE(document->isDirty.value());
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAnyway);
  save(document);
  EXPECT_TRUE(QFile::exists(path("Sky.tessel")));
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChangedFileTest, AnImageIsAskedAbout) {
  const DocumentPtr document = openEdited(writeImage("photo.png"));
  save(document);
  EXPECT_FALSE(document->isDirty.value());
  document->setDirty(true);
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty()) << "it knows what it has written itself";
  overwrite(path("photo.png"));
  document->setDirty(true);
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(contents(path("photo.png")), "by another program");
  EXPECT_TRUE(document->isDirty.value());
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAs);
  dialogs.savePaths.push(path("photo.tessel"));
  save(document);
  EXPECT_TRUE(DocumentIO::loadSynchronously(path("photo.tessel"), state.metalContext));
  EXPECT_EQ(document->sourceFileFormat.value(), std::nullopt);
}

TEST_F(ChangedFileTest, WhatChangesNoByteIsNoChange) {
  const QString file = path("Sky.tessel");
  const DocumentPtr document = addEdited("Sky");
  ASSERT_EQ(::chmod(QFile::encodeName(file).constData(), 0640), 0);
  ASSERT_TRUE(QFile::rename(file, path("Away.tessel")) && QFile::rename(path("Away.tessel"), file));
  ASSERT_TRUE(QFile::link(file, path("Link.tessel")));
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChangedFileTest, ADocumentOpenedThroughALinkIsKnownByIt) {
  addEdited("Sky");
  ASSERT_TRUE(QFile::link(path("Sky.tessel"), path("Link.tessel")));
  const DocumentPtr document = openEdited(path("Link.tessel"));
  save(document);
  document->setDirty(true);
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
  EXPECT_TRUE(QFileInfo(path("Link.tessel")).isSymLink());
  overwrite(path("Sky.tessel"));
  document->setDirty(true);
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
}

TEST_F(ChangedFileTest, AFileChosenInThePanelNeedsNoSecondQuestion) {
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  dialogs.savePaths.push(path("Sky.tessel"));
  files.saveAs(document);
  files.settleWrites();
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChangedFileTest, WhatAppearsWhereASaveAsIsToGoIsAskedAbout) {
  const DocumentPtr running = addEdited("Sea");
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  files.save(running);
  dialogs.savePaths.push(path("Sky.tessel"));
  files.saveAs(document);
  overwrite(path("Sky.tessel"));
  files.settleWrites();
  ASSERT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(dialogs.overwriteQuestions[0].first, "There is already a file \"Sky.tessel\".");
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
  EXPECT_TRUE(document->isDirty.value());
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAnyway);
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(2));
  EXPECT_TRUE(DocumentIO::loadSynchronously(path("Sky.tessel"), state.metalContext));
}

TEST_F(ChangedFileTest, WhatAppearsAfterAFailedSaveAsIsAskedAbout) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  saveAsWithFailure(document, path("Sky.tessel"), testing::FailingStep::Step::rename);
  overwrite(path("Sky.tessel"));
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
}

TEST_F(ChangedFileTest, WhatWasChosenInThePanelStaysChosenAfterAFailure) {
  using Step = testing::FailingStep::Step;
  // Before the file is replaced, and after.
  for (const Step step : {Step::rename, Step::syncFolder}) {
    overwrite(path("Sky.tessel"));
    const DocumentPtr document = addDocument(QStringLiteral("Sky"));
    saveAsWithFailure(document, path("Sky.tessel"), step);
    save(document);
    EXPECT_FALSE(document->isDirty.value());
  }
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
}

TEST_F(ChangedFileTest, ASaveAsOverASaveOfTheSameDocumentNeedsNoQuestion) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  for (int time = 0; time < 3; ++time) {
    dialogs.savePaths.push(path("Sky.tessel"));
    files.saveAs(document);
  }
  files.settleWrites();
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChangedFileTest, AnImageKnowsWhatWasExportedOverIt) {
  const DocumentPtr document = openEdited(writeImage("photo.png"));
  dialogs.exportTargets.push({path("photo.png"), 0});
  files.exportImage(document);
  files.settleWrites();
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChangedFileTest, AnExportOverTheImageEndsWhatWasAgreedOnBefore) {
  const DocumentPtr document = openEdited(writeImage("photo.png"));
  overwrite(path("photo.png"));
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAnyway);
  dialogs.duringQuestion = [&] { brokenDisk.emplace(testing::FailingStep::Step::rename); };
  save(document);
  brokenDisk.reset();
  ASSERT_TRUE(document->isDirty.value());
  dialogs.exportTargets.push({path("photo.png"), 0});
  files.exportImage(document);
  files.settleWrites();
  dialogs.overwriteQuestions.clear();
  save(document);
  EXPECT_THAT(dialogs.overwriteQuestions, IsEmpty());
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(ChangedFileTest, ASavedDocumentWhoseFileHasGoneIsUnsaved) {
  const DocumentPtr document = addEdited("Sky");
  save(document);
  const DocumentPtr other = addDocument(QStringLiteral("Sea"));
  Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive);
  QThread::msleep(10);
  QApplication::processEvents();
  EXPECT_FALSE(document->isDirty.value());
  ASSERT_TRUE(QFile::remove(path("Sky.tessel")));
  EXPECT_TRUE(waitUntil([&] {
    Q_EMIT qApp->applicationStateChanged(Qt::ApplicationActive);
    return document->isDirty.value();
  }));
  EXPECT_FALSE(other->isDirty.value()) << "it never had one";
  dialogs.saveAnswers.push(SaveAnswer::cancel);
  state.windowState.closeDocument(document->id);
  EXPECT_EQ(dialogs.lastInformativeText,
            "Its file is no longer where it was. The whole document will be lost if you don't save it.");
  dialogs.overwriteAnswers.push(OverwriteAnswer::saveAnyway);
  save(document);
  ASSERT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_EQ(dialogs.overwriteQuestions[0].first, "\"Sky.tessel\" is no longer where it was.");
  EXPECT_TRUE(QFile::exists(path("Sky.tessel")));
}

TEST_F(ChangedFileTest, AnExportLeavesWhatAppearsMeanwhile) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  dialogs.exportTargets.push({path("photo.png"), 0});
  {
    WritingProgram program(path("photo.png"));
    const ScopedFileOperations scope(program);
    files.exportImage(document);
    files.settleWrites();
  }
  EXPECT_EQ(contents(path("photo.png")), "by another program");
  EXPECT_THAT(dialogs.warnings, SizeIs(1));
}

TEST_F(ChangedFileTest, ClosingStopsWhenTheQuestionIsCancelled) {
  const DocumentPtr document = addEdited("Sky");
  overwrite(path("Sky.tessel"));
  dialogs.saveAnswers.push(SaveAnswer::save);
  state.windowState.closeDocument(document->id);
  EXPECT_THAT(dialogs.overwriteQuestions, SizeIs(1));
  EXPECT_THAT(openNames(), ElementsAre("Sky"));
  EXPECT_TRUE(document->isDirty.value());
  dialogs.saveAnswers.push(SaveAnswer::save);
  EXPECT_EQ(AppDelegate(state, files, {}).applicationShouldTerminate(), TerminationReply::cancel);
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
}

TEST_F(ChangedFileTest, ClosingGoesOnOnceTheDocumentIsSaved) {
  for (const OverwriteAnswer answer : {OverwriteAnswer::saveAnyway, OverwriteAnswer::saveAs}) {
    const DocumentPtr document = addEdited("Sky");
    overwrite(path("Sky.tessel"));
    dialogs.saveAnswers.push(SaveAnswer::save);
    dialogs.overwriteAnswers.push(answer);
    if (answer == OverwriteAnswer::saveAs) dialogs.savePaths.push(path("Sky 2.tessel"));
    state.windowState.closeDocument(document->id);
    EXPECT_THAT(openNames(), IsEmpty());
    EXPECT_FALSE(document->isDirty.value());
  }
  EXPECT_EQ(contents(path("Sky.tessel")), "by another program");
  EXPECT_TRUE(DocumentIO::loadSynchronously(path("Sky 2.tessel"), state.metalContext));
}

}  // namespace
}  // namespace orvanel
