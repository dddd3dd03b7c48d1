#include "model/ChangeStream.h"

#include <utility>

namespace orvanel {

struct ChangeStream::Observers {
  std::map<std::uint64_t, Handler> handlers;
  std::deque<DocumentChanges> pending;
  std::uint64_t nextID = 1;
  bool isDelivering = false;

  void deliver(const DocumentChanges& changes) {
    // A handler may subscribe, or end any subscription including its own, so the position is looked up again
    // after every call. New subscribers start with the next batch.
    const std::uint64_t end = nextID;
    for (auto it = handlers.begin(); it != handlers.end() && it->first < end;) {
      const std::uint64_t id = it->first;
      const Handler handler = it->second;
      handler(changes);
      it = handlers.upper_bound(id);
    }
  }
};

ChangeStream::ChangeStream() : observers_(std::make_shared<Observers>()) {}

ChangeStream::Subscription ChangeStream::observe(Handler handler) const {
  const std::uint64_t id = observers_->nextID++;
  observers_->handlers.emplace(id, std::move(handler));
  return {observers_, id};
}

void ChangeStream::publish(DocumentChanges changes) {
  const std::shared_ptr<Observers> observers = observers_;
  observers->pending.push_back(std::move(changes));
  if (observers->isDelivering) return;
  observers->isDelivering = true;
  while (!observers->pending.empty()) {
    const DocumentChanges next = std::move(observers->pending.front());
    observers->pending.pop_front();
    observers->deliver(next);
  }
  observers->isDelivering = false;
}

ChangeStream::Subscription::Subscription(std::weak_ptr<Observers> observers, std::uint64_t id)
    : observers_(std::move(observers)), id_(id) {}

ChangeStream::Subscription::Subscription(Subscription&& other) noexcept
    : observers_(std::exchange(other.observers_, {})), id_(other.id_) {}

ChangeStream::Subscription& ChangeStream::Subscription::operator=(Subscription&& other) noexcept {
  if (this == &other) return *this;
  end();
  observers_ = std::exchange(other.observers_, {});
  id_ = other.id_;
  return *this;
}

ChangeStream::Subscription::~Subscription() {
  end();
}

void ChangeStream::Subscription::end() {
  if (const auto observers = observers_.lock()) observers->handlers.erase(id_);
  observers_.reset();
}

}  // namespace orvanel
