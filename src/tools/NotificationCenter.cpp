#include "tools/NotificationCenter.h"

#include <utility>

namespace orvanel {

NotificationCenter& NotificationCenter::standard() {
  static NotificationCenter center;
  return center;
}

NotificationCenter::Subscription NotificationCenter::observe(std::string_view name, Handler handler) {
  return signals_[std::string(name)].observe(std::move(handler));
}

void NotificationCenter::post(std::string_view name, const std::any& object) const {
  const auto found = signals_.find(name);
  if (found != signals_.end()) found->second.emit(object);
}

}  // namespace orvanel
