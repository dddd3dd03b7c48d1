#include "recovery/JournalLane.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace orvanel {
namespace {

constexpr auto aLongTime = std::chrono::minutes(10);

JournalLane::Clock::time_point inALongTime() {
  return JournalLane::Clock::now() + aLongTime;
}

class JournalLaneTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::shared_ptr<JournalLane> newLane() const { return std::make_shared<JournalLane>(turns); }

  std::shared_ptr<JournalTurns> turns = std::make_shared<JournalTurns>(1);
};

TEST_F(JournalLaneTest, worksInOrder) {
  const auto lane = newLane();
  std::vector<int> done;
  for (int i = 0; i < 100; ++i) lane->run([&done, i] { done.push_back(i); });
  ASSERT_TRUE(lane->waitForWork(inALongTime()));
  ASSERT_EQ(done.size(), 100U);
  EXPECT_TRUE(std::ranges::is_sorted(done));
  EXPECT_TRUE(lane->waitForRest(inALongTime()));
}

TEST_F(JournalLaneTest, whatCanWaitComesLast) {
  const auto lane = newLane();
  std::vector<char> done;
  std::promise<void> begin;
  lane->run([&] { begin.get_future().wait(); });
  lane->runWhenIdle([&] { done.push_back('s'); });
  lane->run([&] { done.push_back('d'); });
  begin.set_value();
  ASSERT_TRUE(lane->waitForRest(inALongTime()));
  EXPECT_EQ(done, (std::vector<char>{'d', 's'}));
}

TEST_F(JournalLaneTest, aLaneThatHangsHoldsUpNoOther) {
  const auto hanging = newLane();
  const auto lane = newLane();
  std::promise<void> answer;
  hanging->run([&] { answer.get_future().wait(); });
  bool isDone = false;
  lane->run([&] { isDone = true; });
  EXPECT_TRUE(lane->waitForWork(inALongTime()));
  EXPECT_TRUE(isDone);
  EXPECT_FALSE(hanging->waitForWork(JournalLane::Clock::now())) << "waiting ends";
  answer.set_value();
  EXPECT_TRUE(hanging->waitForRest(inALongTime()));
}

TEST_F(JournalLaneTest, longWorkLetsOthersGoFirst) {
  const auto huge = newLane();
  const auto small = newLane();
  std::promise<void> begun;
  std::atomic<bool> isSmallDone = false;
  huge->run([&] {
    JournalTurns::Turn turn(*turns);
    begun.set_value();
    while (!isSmallDone) ASSERT_TRUE(turn.pass());
  });
  begun.get_future().wait();
  small->run([&] {
    const JournalTurns::Turn turn(*turns);
    isSmallDone = true;
  });
  EXPECT_TRUE(small->waitForWork(inALongTime()));
  EXPECT_TRUE(huge->waitForWork(inALongTime()));
}

TEST_F(JournalLaneTest, onlyAFewAreAtWorkAtOnce) {
  turns = std::make_shared<JournalTurns>(2);
  std::vector<std::shared_ptr<JournalLane>> lanes;
  std::atomic<int> atWork = 0;
  std::atomic<int> most = 0;
  for (int i = 0; i < 8; ++i) {
    lanes.push_back(newLane());
    lanes.back()->run([&] {
      JournalTurns::Turn turn(*turns);
      for (int piece = 0; piece < 200; ++piece) {
        const int now = ++atWork;
        if (now > most) most = now;
        std::this_thread::yield();
        --atWork;
        ASSERT_TRUE(turn.pass());
      }
    });
  }
  for (const auto& lane : lanes) EXPECT_TRUE(lane->waitForWork(inALongTime()));
  EXPECT_LE(most, 2);
}

TEST_F(JournalLaneTest, theEndLeavesWorkUndone) {
  const auto first = newLane();
  const auto second = newLane();
  std::promise<void> begun;
  std::atomic<bool> isFirstToldToEnd = false;
  std::atomic<bool> isSecondToldToEnd = false;
  first->run([&] {
    JournalTurns::Turn turn(*turns);
    begun.set_value();
    while (turn.pass()) std::this_thread::yield();
    isFirstToldToEnd = true;
  });
  begun.get_future().wait();
  second->run([&] {
    JournalTurns::Turn turn(*turns);
    isSecondToldToEnd = !turn.pass();
  });
  turns->end();
  EXPECT_TRUE(first->waitForRest(inALongTime()));
  EXPECT_TRUE(second->waitForRest(inALongTime()));
  EXPECT_TRUE(isFirstToldToEnd);
  EXPECT_TRUE(isSecondToldToEnd);
}

}  // namespace
}  // namespace orvanel
