// Blocks background work while alive, so that a test can observe the state before compression.
#pragma once

#include <memory>
#include <semaphore>

#include "raster/Background.h"

namespace orvanel {

class HeldBackground {
 public:
  /// Returns once every worker is held. Tasks that are merely queued don't start in the order of their
  /// queuing.
  HeldBackground() {
    const int workers = backgroundArena().max_concurrency() - 1;
    for (int worker = 0; worker < workers; ++worker) {
      enqueueBackgroundTask([held = held_, gate = gate_] {
        held->release();
        gate->acquire();
      });
    }
    for (int worker = 0; worker < workers; ++worker) held_->acquire();
  }
  ~HeldBackground() { letGo(); }
  HeldBackground(const HeldBackground&) = delete;
  HeldBackground& operator=(const HeldBackground&) = delete;
  void letGo() const { gate_->release(64); }

 private:
  std::shared_ptr<std::counting_semaphore<>> held_ = std::make_shared<std::counting_semaphore<>>(0);
  std::shared_ptr<std::counting_semaphore<>> gate_ = std::make_shared<std::counting_semaphore<>>(0);
};

}  // namespace orvanel
