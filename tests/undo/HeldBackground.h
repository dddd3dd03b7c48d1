// Blocks background work while alive, so that a test can observe the state before compression.
#pragma once

#include <memory>
#include <semaphore>

#include "raster/Background.h"

namespace orvanel {

class HeldBackground {
 public:
  HeldBackground() {
    for (int worker = 0; worker < backgroundArena().max_concurrency(); ++worker) {
      enqueueBackgroundTask([gate = gate_] { gate->acquire(); });
    }
  }
  ~HeldBackground() { letGo(); }
  HeldBackground(const HeldBackground&) = delete;
  HeldBackground& operator=(const HeldBackground&) = delete;
  void letGo() const { gate_->release(64); }

 private:
  std::shared_ptr<std::counting_semaphore<>> gate_ = std::make_shared<std::counting_semaphore<>>(0);
};

}  // namespace orvanel
