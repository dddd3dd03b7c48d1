// Frames come when asked for, and no more than the screen can show.
#include "canvas/FramePacer.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QWidget>

namespace orvanel {
namespace {

void runEventLoop(int milliseconds) {
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() < milliseconds) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
}

bool runUntil(const std::function<bool()>& condition) {
  QElapsedTimer timer;
  timer.start();
  while (!condition() && timer.elapsed() < 5000) QApplication::processEvents(QEventLoop::AllEvents, 5);
  return condition();
}

TEST(FramePacer, StaysStillUntilItIsStarted) {
  int frames = 0;
  FramePacer pacer([&] { ++frames; });
  pacer.request();
  runEventLoop(30);
  EXPECT_EQ(frames, 0);
  EXPECT_FALSE(pacer.isRunning());
}

TEST(FramePacer, DrawsOneFrameForManyRequests) {
  int frames = 0;
  FramePacer pacer([&] { ++frames; });
  pacer.start();
  for (int i = 0; i < 10; ++i) pacer.request();
  ASSERT_TRUE(runUntil([&] { return frames > 0; }));
  EXPECT_EQ(frames, 1);
}

TEST(FramePacer, LooksAgainByItselfForChangesNobodyTold) {
  int frames = 0;
  FramePacer pacer([&] { ++frames; });
  pacer.start();
  EXPECT_TRUE(runUntil([&] { return frames >= 3; }));
  pacer.stop();
  const int stopped = frames;
  runEventLoop(250);
  EXPECT_EQ(frames, stopped);
}

TEST(FramePacer, LooksAfterInputThatReachesAnyWidget) {
  QWidget elsewhere;
  int frames = 0;
  FramePacer pacer([&] { ++frames; });
  pacer.start();
  ASSERT_TRUE(runUntil([&] { return frames == 1; }));
  QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
  QApplication::sendEvent(&elsewhere, &key);
  EXPECT_TRUE(runUntil([&] { return frames >= 2; }));
}

TEST(FramePacer, IsStartedOnceHoweverOften) {
  int frames = 0;
  FramePacer pacer([&] { ++frames; });
  pacer.start();
  pacer.start();
  EXPECT_TRUE(pacer.isRunning());
  pacer.stop();
  EXPECT_FALSE(pacer.isRunning());
  runEventLoop(30);
  EXPECT_EQ(frames, 0);
}

}  // namespace
}  // namespace orvanel
