// Remembers which documents' changes the user has discarded, until there are new ones. Owned by the delegate;
// main thread only.
#pragma once

#include <QUuid>
#include <map>
#include <vector>

#include "model/Document.h"

namespace orvanel {

class GivenUpChanges {
 public:
  /// Replaces what was remembered.
  void remember(const std::vector<DocumentPtr>& documents);
  void forget() { unchanged_.clear(); }
  /// False once the document has changed.
  [[nodiscard]] bool contains(const Document& document) const { return unchanged_.contains(document.id); }

 private:
  /// Each subscription waits for the change that ends it.
  std::map<QUuid, ChangeStream::Subscription> unchanged_;
};

}  // namespace orvanel
