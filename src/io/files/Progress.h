// The line between file work and whoever waits for it: the work tells how far it has come and asks whether
// it is still wanted. Plain values, any thread.
#pragma once

#include <QString>
#include <atomic>
#include <functional>
#include <memory>

#include "io/files/FileError.h"

namespace orvanel {

/// A request to stop, shared by the one who may make it and the work that honours it. Any thread.
class Cancellation {
 public:
  void cancel() { isCancelled_.store(true, std::memory_order_relaxed); }
  [[nodiscard]] bool isCancelled() const { return isCancelled_.load(std::memory_order_relaxed); }

 private:
  std::atomic<bool> isCancelled_{false};
};

using CancellationPtr = std::shared_ptr<const Cancellation>;

/// What a piece of work is given. A default one tells nobody and is never cancelled.
class Progress {
 public:
  /// Called on the thread that does the work, with values from 0 to 1.
  using Listener = std::function<void(double)>;

  Progress() = default;
  explicit Progress(Listener listener, CancellationPtr cancellation = nullptr)
      : listener_(std::move(listener)), cancellation_(std::move(cancellation)) {}

  void tell(double done) const {
    if (listener_) listener_(done);
  }
  [[nodiscard]] bool isCancelled() const { return cancellation_ != nullptr && cancellation_->isCancelled(); }
  /// For a part of the work: its 0 to 1 are `from` to `to` of the whole.
  [[nodiscard]] Progress part(double from, double to) const {
    if (!listener_) return Progress({}, cancellation_);
    return Progress([whole = listener_, from, to](double done) { whole(from + (to - from) * done); },
                    cancellation_);
  }

 private:
  Listener listener_;
  CancellationPtr cancellation_;
};

/// How cancelled work fails.
[[nodiscard]] inline tl::unexpected<QString> cancelled() {
  return because(QStringLiteral("The operation was cancelled."));
}

}  // namespace orvanel
