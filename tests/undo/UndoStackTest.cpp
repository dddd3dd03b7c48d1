#include "undo/UndoStack.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace orvanel {
namespace {

using testing::ElementsAre;

/// A record that logs the calls it receives.
class LoggedOperation : public UndoableOperation {
 public:
  LoggedOperation(QString name, std::int64_t cost, std::vector<QString>* log = nullptr)
      : name_(std::move(name)), cost_(cost), log_(log) {}

  [[nodiscard]] QString actionName() const override { return name_; }
  void redo() override { note(QStringLiteral("redo ")); }
  void undo() override { note(QStringLiteral("undo ")); }
  [[nodiscard]] std::int64_t memoryCost() const override { return cost_; }
  [[nodiscard]] std::shared_ptr<UndoableOperation> coalescedWith(
      const UndoableOperation& next) const override {
    if (!next.actionName().startsWith(name_)) return nullptr;
    return std::make_shared<LoggedOperation>(name_ + QChar(u'+') + next.actionName(), cost_, log_);
  }

  void setReady(bool ready) override { isReady = ready; }

  std::function<void()> onStep;
  bool isReady = false;

 private:
  void note(const QString& verb) {
    if (log_ != nullptr) log_->push_back(verb + name_);
    if (onStep) onStep();
  }

  QString name_;
  std::int64_t cost_;
  std::vector<QString>* log_;
};

class UndoStackTest : public testing::Test {
 protected:
  std::shared_ptr<LoggedOperation> record(const QString& name, std::int64_t cost = 0) {
    return std::make_shared<LoggedOperation>(name, cost, &log);
  }
  [[nodiscard]] std::vector<QString> names() const {
    std::vector<QString> result;
    for (const UndoStack::Record& operation : stack.operations()) result.push_back(operation->actionName());
    return result;
  }

  UndoStack stack;
  std::vector<QString> log;
};

TEST_F(UndoStackTest, ANewHistoryOffersNothing) {
  EXPECT_EQ(stack.currentIndex.value(), -1);
  EXPECT_EQ(stack.memoryBudget.value(), 500 * 1024 * 1024);
  EXPECT_EQ(stack.maxOperations.value(), 100);
  EXPECT_EQ(stack.undoActionName(), std::nullopt);
  EXPECT_EQ(stack.redoActionName(), std::nullopt);
  EXPECT_EQ(stack.totalMemoryCost(), 0);
  stack.undo();
  stack.redo();
  EXPECT_EQ(stack.currentIndex.value(), -1);
  EXPECT_EQ(stack.revision.value(), 0U);
}

TEST_F(UndoStackTest, PushRecordsWithoutApplying) {
  stack.push(record("a"));
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(stack.currentIndex.value(), 0);
  EXPECT_EQ(stack.undoActionName(), "a");
  EXPECT_EQ(stack.redoActionName(), std::nullopt);
}

TEST_F(UndoStackTest, PushAndRedoApplies) {
  stack.pushAndRedo(record("a"));
  EXPECT_THAT(log, ElementsAre("redo a"));
  EXPECT_EQ(stack.currentIndex.value(), 0);
}

TEST_F(UndoStackTest, UndoAndRedoWalkTheHistory) {
  stack.push(record("a"));
  stack.push(record("b"));
  stack.undo();
  EXPECT_EQ(stack.undoActionName(), "a");
  EXPECT_EQ(stack.redoActionName(), "b");
  stack.undo();
  stack.undo();
  stack.redo();
  stack.redo();
  stack.redo();
  EXPECT_THAT(log, ElementsAre("undo b", "undo a", "redo a", "redo b"));
  EXPECT_EQ(stack.currentIndex.value(), 1);
}

TEST_F(UndoStackTest, TheIndexPointsAtTheRunningRecord) {
  const auto operation = record("a");
  stack.push(operation);
  std::vector<std::int64_t> seen;
  operation->onStep = [&] { seen.push_back(stack.currentIndex.value()); };
  stack.undo();
  stack.redo();
  EXPECT_THAT(seen, ElementsAre(0, 0));
}

TEST_F(UndoStackTest, PushDropsExactlyTheRedoTail) {
  for (const char* name : {"a", "b", "c", "d"}) stack.push(record(name));
  stack.undo();
  stack.undo();
  stack.push(record("e"));
  EXPECT_THAT(names(), ElementsAre("a", "b", "e"));
  EXPECT_EQ(stack.currentIndex.value(), 2);
}

TEST_F(UndoStackTest, TheRedoTailGoesBeforeTheLimitsRun) {
  stack.memoryBudget = 100;
  stack.push(record("a", 40));
  stack.push(record("b", 40));
  stack.undo();
  stack.push(record("c", 60));
  EXPECT_THAT(names(), ElementsAre("a", "c"));
}

TEST_F(UndoStackTest, TheHundredAndFirstRecordPushesOutTheOldest) {
  for (int i = 0; i <= 100; ++i) stack.push(record(QString::number(i)));
  EXPECT_EQ(stack.operations().size(), 100U);
  EXPECT_EQ(stack.operations().front()->actionName(), "1");
  EXPECT_EQ(stack.currentIndex.value(), 99);
}

TEST_F(UndoStackTest, AHistoryOfExactlyTheBudgetStaysWhole) {
  stack.memoryBudget = 100;
  stack.push(record("a", 50));
  stack.push(record("b", 50));
  EXPECT_THAT(names(), ElementsAre("a", "b"));
  stack.push(record("c", 1));
  EXPECT_THAT(names(), ElementsAre("b", "c"));
  EXPECT_EQ(stack.currentIndex.value(), 1);
}

TEST_F(UndoStackTest, ARecordBeyondTheBudgetBecomesTheWholeHistory) {
  stack.memoryBudget = 100;
  stack.push(record("a", 30));
  stack.push(record("b", 30));
  stack.push(record("c", 101));
  EXPECT_THAT(names(), ElementsAre("c"));
  EXPECT_EQ(stack.currentIndex.value(), 0);
  stack.undo();
  EXPECT_THAT(log, ElementsAre("undo c"));
}

TEST_F(UndoStackTest, LimitsWaitForTheNextPush) {
  for (const char* name : {"a", "b", "c"}) stack.push(record(name, 10));
  stack.maxOperations = 2;
  stack.memoryBudget = 10;
  EXPECT_EQ(stack.operations().size(), 3U);
  stack.push(record("d", 10));
  EXPECT_THAT(names(), ElementsAre("d"));
}

/// A record whose bytes shrink whenever somebody looks, as those of one that is being compressed.
class ShrinkingOperation final : public LoggedOperation {
 public:
  ShrinkingOperation(const QString& name, std::int64_t from, std::int64_t to, std::int64_t pace)
      : LoggedOperation(name, 0), cost_(from), least_(to), pace_(pace) {}
  [[nodiscard]] std::int64_t memoryCost() const override { return cost_ = std::max(cost_ - pace_, least_); }

 private:
  mutable std::int64_t cost_;
  std::int64_t least_;
  std::int64_t pace_;
};

constexpr std::int64_t mebibyte = std::int64_t{1} << 20;

TEST_F(UndoStackTest, NothingIsEvictedForBytesThatAreAboutToShrink) {
  stack.memoryBudget = 500 * mebibyte;
  for (const char* name : {"a", "b", "c", "d"}) {
    stack.push(std::make_shared<ShrinkingOperation>(QString::fromUtf8(name), 400 * mebibyte, 100 * mebibyte,
                                                    30 * mebibyte));
  }
  EXPECT_THAT(names(), ElementsAre("a", "b", "c", "d"));
}

TEST_F(UndoStackTest, RecordsThatShrinkTooSlowlyAreNotWaitedFor) {
  stack.memoryBudget = 500 * mebibyte;
  for (const char* name : {"a", "b"}) {
    stack.push(std::make_shared<ShrinkingOperation>(QString::fromUtf8(name), 400 * mebibyte, 100 * mebibyte,
                                                    mebibyte / 8));
  }
  EXPECT_THAT(names(), ElementsAre("b"));
}

TEST_F(UndoStackTest, EqualLimitsNotifyNobody) {
  int changes = 0;
  const auto counting = [&] { ++changes; };
  const auto budgetObserver = stack.memoryBudget.addNotifier(counting);
  const auto countObserver = stack.maxOperations.addNotifier(counting);
  stack.memoryBudget = stack.memoryBudget.value();
  stack.maxOperations = 100;
  EXPECT_EQ(changes, 0);
  stack.maxOperations = 99;
  EXPECT_EQ(changes, 1);
}

TEST_F(UndoStackTest, TheCostCountsTheRedoTail) {
  stack.push(record("a", 30));
  stack.push(record("b", 12));
  stack.undo();
  EXPECT_EQ(stack.totalMemoryCost(), 42);
}

TEST_F(UndoStackTest, EvictionOfAFullyUndoneHistoryLeavesNothingApplied) {
  for (const char* name : {"a", "b", "c"}) stack.push(record(name, 10));
  for (int i = 0; i < 3; ++i) stack.undo();
  stack.maxOperations = 1;
  stack.enforceLimits();
  EXPECT_THAT(names(), ElementsAre("c"));
  EXPECT_EQ(stack.currentIndex.value(), -1);
  EXPECT_EQ(stack.redoActionName(), "c");
}

TEST_F(UndoStackTest, ARunOfChangesThatBelongTogetherIsOneRecord) {
  stack.pushOpacityChange(record("x"));
  stack.pushOpacityChange(record("xy"));
  EXPECT_THAT(names(), ElementsAre("x+xy"));
  EXPECT_EQ(stack.currentIndex.value(), 0);
  EXPECT_THAT(log, ElementsAre("redo x", "redo xy"));
}

TEST_F(UndoStackTest, AnotherRecordInBetweenEndsTheRun) {
  stack.pushOpacityChange(record("x"));
  stack.push(record("other"));
  stack.pushOpacityChange(record("x"));
  EXPECT_THAT(names(), ElementsAre("x", "other", "x"));
}

TEST_F(UndoStackTest, AnUndoneRunIsDroppedBeforeMerging) {
  stack.pushOpacityChange(record("x"));
  stack.push(record("other"));
  stack.pushOpacityChange(record("y"));
  stack.undo();
  stack.pushOpacityChange(record("yy"));
  EXPECT_THAT(names(), ElementsAre("x", "other", "yy"));
  stack.undo();
  stack.undo();
  stack.pushOpacityChange(record("xx"));
  EXPECT_THAT(names(), ElementsAre("x+xx"));
  EXPECT_EQ(stack.currentIndex.value(), 0);
}

TEST_F(UndoStackTest, ObserversAreNotifiedOfEveryChangeOfTheRecords) {
  int changes = 0;
  const auto observer = stack.revision.addNotifier([&] { ++changes; });
  stack.push(record("x"));
  stack.pushOpacityChange(record("xx"));
  EXPECT_EQ(changes, 2);
  stack.undo();
  EXPECT_EQ(changes, 2);
  stack.push(record("z"));
  EXPECT_EQ(changes, 4);
}

TEST_F(UndoStackTest, TheRecordsNextToThePositionAreKeptReady) {
  std::vector<std::shared_ptr<LoggedOperation>> records;
  const auto ready = [&records] {
    QString marks;
    for (const auto& operation : records) marks += operation->isReady ? u'x' : u'-';
    return marks;
  };
  for (const char* name : {"a", "b", "c"}) {
    records.push_back(record(QString::fromUtf8(name)));
    stack.push(records.back());
  }
  EXPECT_EQ(ready(), "--x");
  stack.undo();
  EXPECT_EQ(ready(), "-xx");
  stack.undo();
  EXPECT_EQ(ready(), "xx-");
  stack.undo();
  EXPECT_EQ(ready(), "x--");
  stack.redo();
  EXPECT_EQ(ready(), "xx-");
  stack.push(record(QStringLiteral("d")));
  EXPECT_EQ(ready(), "---");
}

}  // namespace
}  // namespace orvanel
