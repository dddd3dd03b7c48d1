// Posts what a document's changes mean in the vocabulary of notifications, for those that watch all documents
// rather than one. Owned by the window, one for each open document; main thread only.
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
