// Progress reporting and cancellation of file work. Plain values, any thread.
#pragma once

#include <QString>
#include <atomic>
#include <functional>
#include <memory>

#include "io/files/FileError.h"

namespace orvanel {

/// A cancellation flag, shared by whoever may cancel and the work itself. Any thread.
class Cancellation {
 public:
  void cancel() { isCancelled_.store(true, std::memory_order_relaxed); }
  [[nodiscard]] bool isCancelled() const { return isCancelled_.load(std::memory_order_relaxed); }

 private:
  std::atomic<bool> isCancelled_{false};
};

using CancellationPtr = std::shared_ptr<const Cancellation>;

/// Passed to the work. A default-constructed one reports to nobody and is never cancelled.
class Progress {
 public:
  /// Receives values from 0 to 1, on the working thread.
  using Listener = std::function<void(double)>;

  Progress() = default;
  explicit Progress(Listener listener, CancellationPtr cancellation = nullptr)
      : listener_(std::move(listener)), cancellation_(std::move(cancellation)) {}

  void tell(double done) const {
    if (listener_) listener_(done);
  }
  [[nodiscard]] bool isCancelled() const { return cancellation_ != nullptr && cancellation_->isCancelled(); }
  /// For a part of the work: maps its progress to the range `from` to `to` of the whole.
  [[nodiscard]] Progress part(double from, double to) const {
    if (!listener_) return Progress({}, cancellation_);
    return Progress([whole = listener_, from, to](double done) { whole(from + (to - from) * done); },
                    cancellation_);
  }

 private:
  Listener listener_;
  CancellationPtr cancellation_;
};

/// The error of cancelled work.
[[nodiscard]] inline tl::unexpected<QString> cancelled() {
  return because(QStringLiteral("The operation was cancelled."));
}

}  // namespace orvanel
