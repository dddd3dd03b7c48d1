// Holds back background work, so that a test decides how far it gets.
#pragma once

#include <QSemaphore>
#include <QThreadPool>
#include <memory>
#include <utility>

namespace orvanel {

/// Holds back all background work while alive, by occupying the only thread of the pool.
class BackgroundBlock {
 public:
  BackgroundBlock() : threadsBefore_(pool().maxThreadCount()) {
    pool().waitForDone();
    pool().setMaxThreadCount(1);
    occupy(release_);
  }
  ~BackgroundBlock() {
    release_->release();
    pool().setMaxThreadCount(threadsBefore_);
  }
  BackgroundBlock(const BackgroundBlock&) = delete;
  BackgroundBlock& operator=(const BackgroundBlock&) = delete;

  /// Lets pass what waits so far, and holds back what comes later.
  void letPass() {
    const auto next = std::make_shared<QSemaphore>();
    occupy(next);
    std::exchange(release_, next)->release();
  }

 private:
  static QThreadPool& pool() { return *QThreadPool::globalInstance(); }
  static void occupy(const std::shared_ptr<QSemaphore>& release) {
    pool().start([release] { release->acquire(); });
  }

  std::shared_ptr<QSemaphore> release_ = std::make_shared<QSemaphore>();
  const int threadsBefore_;
};

}  // namespace orvanel
