#include "model/ChangeStream.h"

#include <deque>
#include <utility>

namespace orvanel {

struct ChangeStream::Delivery {
  Signal<const DocumentChanges&> signal;
  std::deque<DocumentChanges> pending;
  bool isUnderWay = false;
};

ChangeStream::ChangeStream() : delivery_(std::make_shared<Delivery>()) {}

ChangeStream::Subscription ChangeStream::observe(Handler handler) const {
  return delivery_->signal.observe(std::move(handler));
}

void ChangeStream::publish(DocumentChanges changes) {
  const std::shared_ptr<Delivery> delivery = delivery_;
  delivery->pending.push_back(std::move(changes));
  if (delivery->isUnderWay) return;
  delivery->isUnderWay = true;
  while (!delivery->pending.empty()) {
    const DocumentChanges next = std::move(delivery->pending.front());
    delivery->pending.pop_front();
    delivery->signal.emit(next);
  }
  delivery->isUnderWay = false;
}

}  // namespace orvanel
