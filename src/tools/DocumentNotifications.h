// Posts a document's changes as notifications, for observers of all documents rather than one. Owned by the
// window, one per open document; main thread only.
#pragma once

#include "model/Document.h"

namespace orvanel {

class DocumentNotifications {
 public:
  explicit DocumentNotifications(const Document& document);

 private:
  ChangeStream::Subscription changes_;
};

}  // namespace orvanel
