// Base class of all records of a document's history: the name shown in the menu, and the document, held
// weakly. Owned by the history; main thread only.
#pragma once

#include <QString>
#include <memory>
#include <utility>

#include "model/Document.h"
#include "undo/UndoableOperation.h"

namespace orvanel {

class DocumentOperation : public UndoableOperation {
 public:
  [[nodiscard]] QString actionName() const final { return actionName_; }

 protected:
  DocumentOperation(QString actionName, const DocumentPtr& document)
      : actionName_(std::move(actionName)), document_(document) {}

  void setActionName(QString actionName) { actionName_ = std::move(actionName); }

  /// Null once the document is closed; the step then does nothing.
  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }

 private:
  QString actionName_;
  std::weak_ptr<Document> document_;
};

}  // namespace orvanel
