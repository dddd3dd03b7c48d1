#include "app/BackgroundWork.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QThreadPool>

namespace orvanel {
namespace {

using std::chrono_literals::operator""ms;

TEST(BackgroundWorkTest, WorkThatEndsIsWaitedFor) {
  bool isDone = false;
  QThreadPool::globalInstance()->start([&] { isDone = true; });
  endBackgroundWork(3, 30000ms);
  EXPECT_TRUE(isDone);
}

TEST(BackgroundWorkDeathTest, WorkThatHangsEndsWithTheProcess) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto hang = [] {
    QThreadPool::globalInstance()->start([] {
      while (true) ::pause();
    });
    endBackgroundWork(3, 20ms);
  };
  EXPECT_EXIT(hang(), testing::ExitedWithCode(3), "");
}

TEST(BackgroundWorkTest, SavesRunBesideReadsThatHang) {
  const int before = QThreadPool::globalInstance()->maxThreadCount();
  makeRoomForHangingReads();
  EXPECT_GE(QThreadPool::globalInstance()->maxThreadCount(), 8);
  QThreadPool::globalInstance()->setMaxThreadCount(before);
}

}  // namespace
}  // namespace orvanel
