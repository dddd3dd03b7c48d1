// A document's only signal. Observers are called once per edit, after it is complete, with everything it
// changed. Owned by the document; main thread only.
#pragma once

#include <memory>

#include "model/DocumentChange.h"
#include "model/Signal.h"

namespace orvanel {

class ChangeStream {
 public:
  using Handler = Signal<const DocumentChanges&>::Handler;
  using Subscription = orvanel::Subscription;

  ChangeStream();
  ChangeStream(const ChangeStream&) = delete;
  ChangeStream& operator=(const ChangeStream&) = delete;

  /// Observers are called in order of subscription. A handler may edit the document; its changes are
  /// delivered to all observers after the current batch, so a handler may find the document already ahead of
  /// the batch it is given.
  [[nodiscard]] Subscription observe(Handler handler) const;

 private:
  friend class DocumentEdit;
  struct Delivery;
  void publish(DocumentChanges changes);

  /// Shared with a delivery in progress, which may outlive the document.
  std::shared_ptr<Delivery> delivery_;
};

}  // namespace orvanel
