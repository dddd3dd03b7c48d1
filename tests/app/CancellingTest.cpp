#include <QDir>
#include <QKeyEvent>
#include <QThreadPool>

#include "AppFixture.h"
#include "BackgroundBlock.h"
#include "app/DocumentFiles.h"
#include "app/ProgressLine.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class CancellingTest : public AppFixture {
 protected:
  CancellingTest() { observeNotifications(); }
  ~CancellingTest() override { QThreadPool::globalInstance()->waitForDone(); }

  DocumentPtr addSaved(const char* name) {
    const DocumentPtr document = addDocument(QString::fromUtf8(name));
    dialogs.savePaths.push(path(name) + QStringLiteral(".tessel"));
    files.saveAs(document);
    files.settleWrites();
    return document;
  }
  QByteArray contents(const QString& file) {
    QFile opened(file);
    EXPECT_TRUE(opened.open(QIODevice::ReadOnly));
    return opened.readAll();
  }
  [[nodiscard]] QStringList filesIn() const { return QDir(folder.path()).entryList(QDir::Files, QDir::Name); }
};

TEST_F(CancellingTest, ACancelledRequestOpensNothingMore) {
  const QString image = writeImage("photo.png", 300, 200);
  addSaved("Sky");
  {
    const BackgroundBlock block;
    files.open({image, path("Sky.tessel")});
    files.open({path("Sky.tessel"), image});
    files.cancelAll();
    EXPECT_FALSE(files.activity.fraction.value().has_value());
  }
  QThreadPool::globalInstance()->waitForDone();
  QApplication::processEvents();
  EXPECT_THAT(openNames(), ElementsAre("Sky"));
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(CancellingTest, FailuresBeforeTheCancellationAreStillReported) {
  const QString image = writeImage("photo.png", 300, 200);
  bool isCancelled = false;
  const auto notifier = files.activity.fraction.addNotifier([&] {
    if (isCancelled || files.activity.fraction.value().value_or(0.0) < 0.5) return;
    isCancelled = true;
    QMetaObject::invokeMethod(
        &files, [this] { files.cancelAll(); }, Qt::QueuedConnection);
  });
  files.open({writeText("broken.png", "no picture"), image});
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(openNames(), IsEmpty());
  ASSERT_THAT(dialogs.warnings, SizeIs(1));
  EXPECT_EQ(dialogs.warnings[0].first, "Failed to Open");
}

TEST_F(CancellingTest, ACancelledSaveLeavesTheFileAndTheMark) {
  const DocumentPtr document = addSaved("Sky");
  const QByteArray before = contents(path("Sky.tessel"));
  document->addLayer(QStringLiteral("Clouds"));
  {
    const BackgroundBlock block;
    files.save(document);
    EXPECT_FALSE(document->isDirty.value());
    files.cancelAll();
  }
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(contents(path("Sky.tessel")), before);
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("Sky.tessel")}));
  EXPECT_THAT(dialogs.warnings, IsEmpty());

  files.save(document);
  files.settleWrites();
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_NE(contents(path("Sky.tessel")), before);
}

TEST_F(CancellingTest, ACancelledSaveOfAnImageLeavesItAsItWas) {
  files.open({writeImage("photo.png")});
  ASSERT_TRUE(waitForFiles());
  const DocumentPtr document = state.windowState.activeDocument();
  const QByteArray before = contents(path("photo.png"));
  document->setDirty(true);
  {
    const BackgroundBlock block;
    files.save(document);
    files.cancelAll();
  }
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(contents(path("photo.png")), before);
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("photo.png")}));
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(CancellingTest, SavesThatWaitAreCancelledWithTheRunningOne) {
  const DocumentPtr sky = addSaved("Sky");
  const DocumentPtr sea = addDocument(QStringLiteral("Sea"));
  sky->addLayer(QStringLiteral("Clouds"));
  {
    const BackgroundBlock block;
    files.save(sky);
    dialogs.savePaths.push(path("Sea.tessel"));
    files.saveAs(sea);
    files.cancelAll();
  }
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(sky->isDirty.value());
  EXPECT_TRUE(sea->isDirty.value());
  EXPECT_EQ(filesIn(), QStringList({QStringLiteral("Sky.tessel")}));
}

TEST_F(CancellingTest, EscapeEndsTheWaitForASaveThatHangsAndOtherInputIsBlocked) {
  showWindow();
  subscriptions.clear();
  const DocumentPtr sky = addSaved("Sky");
  sky->addLayer(QStringLiteral("Clouds"));
  QWidget& canvas = window->contentView();
  const CancelButton& button = window->contentView().progressLine().cancelButton();
  {
    const BackgroundBlock block;
    files.save(sky);
    ASSERT_TRUE(waitUntil([&] { return button.isVisible(); }));
    QMetaObject::invokeMethod(
        &canvas,
        [&] {
          QKeyEvent key(QEvent::KeyPress, Qt::Key_W, Qt::NoModifier);
          EXPECT_TRUE(QApplication::sendEvent(&canvas, &key));
          EXPECT_FALSE(sky->isDirty.value());
          QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
          QApplication::sendEvent(&canvas, &escape);
        },
        Qt::QueuedConnection);
    files.settleSave(*sky);
    files.settleWrites();
    EXPECT_TRUE(sky->isDirty.value());
  }
  ASSERT_TRUE(waitForFiles());
  EXPECT_TRUE(sky->isDirty.value());
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(CancellingTest, ACancelledExportLeavesNothingBehind) {
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  dialogs.exportTargets.push({path("out.png"), 0});
  {
    const BackgroundBlock block;
    files.exportImage(document);
    files.cancelAll();
  }
  ASSERT_TRUE(waitForFiles());
  EXPECT_THAT(filesIn(), IsEmpty());
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(CancellingTest, EndingTheProgramStopsReadingAndFinishesWriting) {
  const QString image = writeImage("photo.png");
  const DocumentPtr document = addDocument(QStringLiteral("Sky"));
  dialogs.savePaths.push(path("Sky.tessel"));
  {
    const BackgroundBlock block;
    files.open({image, writeText("broken.png", "no picture")});
    files.saveAs(document);
    files.abandonReading();
  }
  files.settleWrites();
  EXPECT_TRUE(QFile::exists(path("Sky.tessel")));
  EXPECT_THAT(openNames(), ElementsAre("Sky"));
  EXPECT_THAT(dialogs.warnings, IsEmpty());
}

TEST_F(CancellingTest, TheWindowsButtonCancels) {
  showWindow();
  subscriptions.clear();
  const QString image = writeImage("photo.png", 300, 200);
  {
    const BackgroundBlock block;
    files.open({image});
    window->contentView().progressLine().cancelButton().click();
    EXPECT_FALSE(files.activity.fraction.value().has_value());
  }
  QThreadPool::globalInstance()->waitForDone();
  QApplication::processEvents();
  EXPECT_THAT(openNames(), IsEmpty());
}

}  // namespace
}  // namespace orvanel
