#include "app/BackgroundWork.h"

#include <unistd.h>

#include <QThread>
#include <QThreadPool>
#include <algorithm>
#include <cstdio>

namespace orvanel {

namespace {

constexpr int fewestThreads = 16;

}  // namespace

void makeRoomForHangingReads() {
  QThreadPool::globalInstance()->setMaxThreadCount(std::max(fewestThreads, QThread::idealThreadCount()));
}

void endBackgroundWork(int status, std::chrono::milliseconds patience) {
  if (QThreadPool::globalInstance()->waitForDone(static_cast<int>(patience.count()))) return;
  std::fflush(nullptr);
  ::_exit(status);
}

}  // namespace orvanel
