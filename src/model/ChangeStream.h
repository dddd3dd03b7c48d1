// A document's only signal. Observers are called once per edit, after it is complete, with everything it
// changed. Owned by the document; main thread only.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>

#include "model/DocumentChange.h"

namespace orvanel {

class ChangeStream {
 public:
  using Handler = std::function<void(const DocumentChanges&)>;
  class Subscription;

  ChangeStream();
  ChangeStream(const ChangeStream&) = delete;
  ChangeStream& operator=(const ChangeStream&) = delete;

  /// Observers are called in order of subscription. A handler may edit the document; its changes are
  /// delivered to all observers after the current batch, so a handler may find the document already ahead of
  /// the batch it is given.
  [[nodiscard]] Subscription observe(Handler handler) const;

 private:
  friend class DocumentEdit;
  struct Observers;
  void publish(DocumentChanges changes);

  std::shared_ptr<Observers> observers_;
};

/// Ends when destroyed, and may outlive the document. An ended subscription is never called again, even
/// during a delivery.
class ChangeStream::Subscription {
 public:
  Subscription() = default;
  Subscription(Subscription&& other) noexcept;
  Subscription& operator=(Subscription&& other) noexcept;
  ~Subscription();

 private:
  friend class ChangeStream;
  Subscription(std::weak_ptr<Observers> observers, std::uint64_t id);
  void end();

  std::weak_ptr<Observers> observers_;
  std::uint64_t id_ = 0;
};

}  // namespace orvanel
