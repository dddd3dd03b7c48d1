// A list of observers that are called with each event. Owned by whoever has something to tell; main thread
// only.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvanel {

/// Ends when destroyed, and may outlive the signal. An ended subscription is never called again, even during
/// a delivery.
class Subscription {
 public:
  Subscription() = default;
  /// Observes for as long as `handler` lives; the subscription is its only owner.
  explicit Subscription(std::shared_ptr<const void> handler) : handler_(std::move(handler)) {}
  Subscription(Subscription&&) noexcept = default;
  Subscription& operator=(Subscription&&) noexcept = default;
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() = default;

 private:
  std::shared_ptr<const void> handler_;
};

template <typename... Arguments>
class Signal {
 public:
  using Handler = std::function<void(Arguments...)>;

  /// Observers are called in order of subscription.
  [[nodiscard]] Subscription observe(Handler handler) {
    const auto observer = std::make_shared<const Handler>(std::move(handler));
    std::erase_if(observers_, [](const auto& ended) { return ended.expired(); });
    observers_.push_back(observer);
    return Subscription(observer);
  }

  /// A handler may subscribe, end any subscription including its own, or destroy the signal. New observers
  /// start with the next event.
  void emit(Arguments... arguments) const {
    const std::vector<std::weak_ptr<const Handler>> observers = observers_;
    for (const std::weak_ptr<const Handler>& weak : observers) {
      if (const auto handler = weak.lock()) (*handler)(arguments...);
    }
  }

 private:
  std::vector<std::weak_ptr<const Handler>> observers_;
};

}  // namespace orvanel
