// Frames are drawn on request only, at most one per screen refresh.
#include "canvas/FramePacer.h"

#include <gtest/gtest.h>

#include <functional>

#include "CanvasSupport.h"

namespace orvanel {
namespace {

using test::runEventLoop;
using test::runUntil;

TEST(FramePacer, DrawsNothingBeforeItIsStarted) {
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

TEST(FramePacer, DrawsNothingUntilTheNextRequest) {
  int frames = 0;
  FramePacer pacer([&] { ++frames; });
  pacer.start();
  ASSERT_TRUE(runUntil([&] { return frames == 1; }));
  runEventLoop(100);
  EXPECT_EQ(frames, 1);
  pacer.request();
  EXPECT_TRUE(runUntil([&] { return frames == 2; }));
}

TEST(FramePacer, AFrameMayRequestTheNext) {
  int frames = 0;
  FramePacer* asked = nullptr;
  FramePacer pacer([&] {
    if (++frames < 3) asked->request();
  });
  asked = &pacer;
  pacer.start();
  ASSERT_TRUE(runUntil([&] { return frames == 3; }));
  runEventLoop(100);
  EXPECT_EQ(frames, 3);
}

TEST(FramePacer, StoppingCancelsAPendingRequest) {
  int frames = 0;
  FramePacer pacer([&] { ++frames; });
  pacer.start();
  ASSERT_TRUE(runUntil([&] { return frames == 1; }));
  pacer.request();
  pacer.stop();
  runEventLoop(100);
  EXPECT_EQ(frames, 1);
}

TEST(FramePacer, StartingTwiceHasNoFurtherEffect) {
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
