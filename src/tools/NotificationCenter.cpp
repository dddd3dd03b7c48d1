#include "tools/NotificationCenter.h"

#include <utility>

namespace orvanel {

NotificationCenter::Subscription::Subscription(Subscription&& other) noexcept
    : center_(std::exchange(other.center_, nullptr)), id_(other.id_) {}

NotificationCenter::Subscription& NotificationCenter::Subscription::operator=(Subscription&& other) noexcept {
  if (this == &other) return *this;
  if (center_ != nullptr) center_->end(id_);
  center_ = std::exchange(other.center_, nullptr);
  id_ = other.id_;
  return *this;
}

NotificationCenter::Subscription::~Subscription() {
  if (center_ != nullptr) center_->end(id_);
}

NotificationCenter& NotificationCenter::standard() {
  static NotificationCenter center;
  return center;
}

NotificationCenter::Subscription NotificationCenter::observe(std::string_view name, Handler handler) {
  const std::uint64_t id = nextID_++;
  observers_.emplace(id, Observer{std::string(name), std::move(handler)});
  return {this, id};
}

void NotificationCenter::post(std::string_view name, const std::any& object) {
  // A handler may subscribe, or end any subscription including its own, so the position is looked up again
  // after every call. New subscribers start with the next post.
  const std::uint64_t end = nextID_;
  for (auto it = observers_.begin(); it != observers_.end() && it->first < end;) {
    const std::uint64_t id = it->first;
    if (it->second.name == name) {
      const Handler handler = it->second.handler;
      handler(object);
    }
    it = observers_.upper_bound(id);
  }
}

}  // namespace orvanel
