#include "app/SaveQueue.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <vector>

#include "raster/MetalContext.h"

namespace orvanel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Writes nothing. Each save ends when the test says so; all calls are logged.
class ScriptedWriter : public SaveQueueClient {
 public:
  std::vector<std::string> log;
  std::function<void(const SaveRequest&)> duringReport;
  /// Lets every save succeed as soon as events are processed.
  bool endsByItself = false;

  void beginSave(const SaveRequest& request, Done done) override {
    log.push_back("begin " + request.document->name.value().toStdString() + " " + request.path.toStdString());
    ASSERT_FALSE(running_);
    running_ = std::move(done);
    if (endsByItself) {
      QMetaObject::invokeMethod(
          QCoreApplication::instance(), [this] { succeed(); }, Qt::QueuedConnection);
    }
  }
  void saveEnded(const SaveRequest& request, const FileResult<void>& result) override {
    log.push_back((result ? "saved " : "failed ") + request.path.toStdString());
  }
  void reportFailedSave(const SaveRequest& request, const FileError& error) override {
    log.push_back("report " + request.path.toStdString() + ": " + error.message.toStdString());
    if (duringReport) duringReport(request);
  }

  void succeed() { end({}); }
  void cancel() {
    end(tl::make_unexpected(FileError{DocumentIOError::saveFailed, QStringLiteral("Cancelled."), true}));
  }
  void fail(const char* reason) {
    end(tl::make_unexpected(FileError{DocumentIOError::saveFailed, QString::fromUtf8(reason)}));
  }
  std::vector<std::string> takeLog() { return std::exchange(log, {}); }

 private:
  void end(const FileResult<void>& result) { std::exchange(running_, nullptr)(result); }

  Done running_;
};

class SaveQueueTest : public testing::Test {
 protected:
  static DocumentPtr document(const char* name) {
    return Document::create(QString::fromUtf8(name), 4, 4, ColorMode::rgb8, MetalContext::shared());
  }
  void save(const DocumentPtr& document, const char* path) {
    queue.add({document, QString::fromUtf8(path), std::nullopt});
  }

  ScriptedWriter writer;
  SaveQueue queue{writer};
  DocumentPtr sky = document("Sky");
  DocumentPtr sea = document("Sea");
};

TEST_F(SaveQueueTest, ASaveBeginsImmediatelyWhenNoneRuns) {
  save(sky, "sky");
  EXPECT_THAT(writer.takeLog(), ElementsAre("begin Sky sky"));
  writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("saved sky"));
  EXPECT_TRUE(queue.isEmpty());
}

TEST_F(SaveQueueTest, SavesRunOneAtATimeInTheOrderOfTheRequests) {
  const DocumentPtr sand = document("Sand");
  save(sky, "sky");
  save(sea, "sea");
  save(sand, "sand");
  EXPECT_THAT(writer.takeLog(), ElementsAre("begin Sky sky"));
  writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("saved sky", "begin Sea sea"));
  writer.succeed();
  writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("saved sea", "begin Sand sand", "saved sand"));
}

TEST_F(SaveQueueTest, ARequestForTheRunningSaveRunsAfterIt) {
  save(sky, "sky");
  save(sky, "sky");
  writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("begin Sky sky", "saved sky", "begin Sky sky"));
}

TEST_F(SaveQueueTest, EqualQueuedRequestsAreMerged) {
  save(sky, "sky");
  for (int press = 0; press < 5; ++press) save(sky, "sky");
  save(sea, "sea");
  save(sky, "sky");
  writer.takeLog();
  writer.succeed();
  writer.succeed();
  writer.succeed();
  EXPECT_THAT(writer.takeLog(),
              ElementsAre("saved sky", "begin Sky sky", "saved sky", "begin Sea sea", "saved sea"));
  EXPECT_TRUE(queue.isEmpty());
}

TEST_F(SaveQueueTest, AnotherDestinationIsAnotherRequest) {
  save(sea, "sea");
  save(sky, "here");
  save(sky, "there");
  queue.add({sky, QStringLiteral("there"), Document::ImageFileFormat::png});
  writer.takeLog();
  for (int saves = 0; saves < 4; ++saves) writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("saved sea", "begin Sky here", "saved here", "begin Sky there",
                                            "saved there", "begin Sky there", "saved there"));
}

TEST_F(SaveQueueTest, AFailureEndsOneSaveAndTheNextBeginsBeforeItIsReported) {
  save(sky, "sky");
  save(sea, "sea");
  writer.takeLog();
  writer.fail("The disk is full.");
  EXPECT_THAT(writer.takeLog(), ElementsAre("failed sky", "begin Sea sea", "report sky: The disk is full."));
  writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("saved sea"));
}

TEST_F(SaveQueueTest, AFailureDuringAReportIsReportedAfterIt) {
  const DocumentPtr sand = document("Sand");
  save(sky, "sky");
  save(sea, "sea");
  save(sand, "sand");
  writer.takeLog();
  writer.duringReport = [&](const SaveRequest& request) {
    writer.log.emplace_back("alert opens");
    if (request.path == u"sky") writer.fail("The folder is gone.");
    writer.log.emplace_back("alert closes");
  };
  writer.fail("The disk is full.");
  EXPECT_THAT(writer.takeLog(),
              ElementsAre("failed sky", "begin Sea sea", "report sky: The disk is full.", "alert opens",
                          "failed sea", "begin Sand sand", "alert closes", "report sea: The folder is gone.",
                          "alert opens", "alert closes"));
}

TEST_F(SaveQueueTest, ARequestMadeDuringAReportIsKept) {
  save(sky, "sky");
  writer.takeLog();
  writer.duringReport = [&](const SaveRequest&) { save(sky, "elsewhere"); };
  writer.fail("The disk is full.");
  EXPECT_THAT(writer.takeLog(),
              ElementsAre("failed sky", "report sky: The disk is full.", "begin Sky elsewhere"));
}

TEST_F(SaveQueueTest, ACancelledSaveEndsWithoutAReport) {
  save(sky, "sky");
  save(sea, "sea");
  writer.takeLog();
  writer.cancel();
  EXPECT_THAT(writer.takeLog(), ElementsAre("failed sky", "begin Sea sea"));
  writer.succeed();
}

TEST_F(SaveQueueTest, CancellingTheWaitingSavesLeavesTheRunningOne) {
  save(sky, "sky");
  save(sea, "sea");
  save(sky, "copy");
  writer.takeLog();
  queue.cancelWaiting();
  EXPECT_THAT(writer.takeLog(), ElementsAre("failed sea", "failed copy"));
  EXPECT_TRUE(queue.contains(sky->id));
  EXPECT_FALSE(queue.contains(sea->id));
  writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("saved sky"));
  EXPECT_TRUE(queue.isEmpty());
}

TEST_F(SaveQueueTest, TheQueueKnowsWhichDocumentsItContains) {
  save(sky, "sky");
  save(sea, "sea");
  EXPECT_TRUE(queue.contains(sky->id));
  EXPECT_TRUE(queue.contains(sea->id));
  writer.succeed();
  EXPECT_FALSE(queue.contains(sky->id));
  EXPECT_TRUE(queue.contains(sea->id));
  writer.succeed();
  EXPECT_FALSE(queue.contains(sea->id));
}

TEST_F(SaveQueueTest, SettlingADocumentWaitsForAllItsSavesAndNoOthers) {
  const DocumentPtr sand = document("Sand");
  writer.endsByItself = true;
  save(sky, "sky");
  save(sea, "here");
  save(sea, "there");
  save(sand, "sand");
  queue.settle(sea->id);
  EXPECT_FALSE(queue.contains(sea->id));
  EXPECT_TRUE(queue.contains(sand->id));
  queue.settle(sand->id);
  EXPECT_TRUE(queue.isEmpty());
  queue.settle(sky->id);
}

TEST_F(SaveQueueTest, QueuedSavesRunInOrderWhileOneIsSettled) {
  writer.endsByItself = true;
  save(sky, "sky");
  save(sea, "sea");
  save(sky, "sky");
  queue.settle(sky->id);
  EXPECT_THAT(writer.takeLog(), ElementsAre("begin Sky sky", "saved sky", "begin Sea sea", "saved sea",
                                            "begin Sky sky", "saved sky"));
}

TEST_F(SaveQueueTest, AnAbandonedSaveIsNotWaitedForButHoldsUpTheNext) {
  save(sky, "sky");
  queue.abandonRunning();
  EXPECT_TRUE(queue.isEmpty());
  EXPECT_FALSE(queue.contains(sky->id));
  queue.settle(sky->id);
  save(sea, "sea");
  EXPECT_THAT(writer.takeLog(), ElementsAre("begin Sky sky", "failed sky"));
  writer.cancel();
  EXPECT_THAT(writer.takeLog(), ElementsAre("failed sky", "begin Sea sea"));
  EXPECT_TRUE(queue.contains(sea->id));
  writer.succeed();
  EXPECT_TRUE(queue.isEmpty());
}

TEST_F(SaveQueueTest, AQueuedSaveKeepsItsDocumentAlive) {
  save(sky, "sky");
  save(sea, "sea");
  sea.reset();
  writer.takeLog();
  writer.succeed();
  EXPECT_THAT(writer.takeLog(), ElementsAre("saved sky", "begin Sea sea"));
  writer.succeed();
}

TEST_F(SaveQueueTest, AFinishedSaveReleasesItsDocument) {
  const std::weak_ptr<Document> held = sea;
  save(sea, "sea");
  sea.reset();
  EXPECT_FALSE(held.expired());
  writer.succeed();
  EXPECT_TRUE(held.expired());
}

}  // namespace
}  // namespace orvanel
