#include "model/VisibilitySweep.h"

#include <algorithm>

#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/records/PropertyOperations.h"

namespace orvanel {

VisibilitySweep::VisibilitySweep(const DocumentPtr& document, bool isVisible)
    : OpenEdit(document, Ground::properties, QStringLiteral("Visibility")), isVisible_(isVisible) {}

VisibilitySweep::~VisibilitySweep() {
  VisibilitySweep::end();
}

void VisibilitySweep::add(const QUuid& nodeID) {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  const std::optional<LayerNode> node = target->findNode(nodeID);
  const bool isKnown =
      std::ranges::any_of(swept_, [&](const SweptNode& known) { return known.nodeID == nodeID; });
  if (!node || isKnown) return;
  DocumentEdit edit(*target, editKind::state);
  const bool wasVisible = node->isVisible().value();
  // Told once: the nodes that follow would be refused as well.
  const bool isAdmitted = wasVisible == isVisible_ || edit.admits(editCost::ofFlatteningTree(
                                                          *target, {.visibility = {{nodeID, isVisible_}}}));
  if (!isAdmitted) return end();
  swept_.push_back({.nodeID = nodeID, .oldValue = wasVisible});
  edit.setVisible(*node, isVisible_);
  noteShown(edit, hasShown() || wasVisible != isVisible_);
}

void VisibilitySweep::end() {
  const DocumentPtr target = document();
  if (target == nullptr) return close();
  const bool isChanged = hasShown();
  DocumentEdit edit(*target, editKind::property);
  close();
  if (!isChanged) return;
  if (swept_.size() == 1) {
    const SweptNode& only = swept_.front();
    return edit.record(
        std::make_shared<VisibilityChangeOperation>(target, only.nodeID, only.oldValue, isVisible_));
  }
  std::vector<BatchVisibilityChangeOperation::Change> changes;
  for (const SweptNode& node : swept_) changes.push_back({.nodeID = node.nodeID, .oldValue = node.oldValue});
  edit.record(std::make_shared<BatchVisibilityChangeOperation>(target, std::move(changes), isVisible_));
}

}  // namespace orvanel
