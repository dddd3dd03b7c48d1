#include "model/OpenOpacityEdit.h"

#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/records/PropertyOperations.h"

namespace orvanel {

std::unique_ptr<OpenOpacityEdit> OpenOpacityEdit::begin(const DocumentPtr& document, const QUuid& nodeID) {
  const std::optional<LayerNode> node = document->findNode(nodeID);
  if (!node || !document->admitsEdit(editCost::ofFlatteningTree(*document, {.blended = nodeID})))
    return nullptr;
  return std::unique_ptr<OpenOpacityEdit>(new OpenOpacityEdit(document, nodeID, node->opacity().value()));
}

OpenOpacityEdit::OpenOpacityEdit(const DocumentPtr& document, const QUuid& nodeID, float opacity)
    : OpenEdit(document, Ground::properties, QStringLiteral("Opacity")),
      nodeID_(nodeID),
      startValue_(opacity) {
  holdThumbnailsBack();
}

OpenOpacityEdit::~OpenOpacityEdit() {
  OpenOpacityEdit::keep();
}

void OpenOpacityEdit::show(float opacity) {
  const DocumentPtr target = document();
  const std::optional<LayerNode> node = target != nullptr ? target->findNode(nodeID_) : std::nullopt;
  if (!node) return;
  DocumentEdit edit(*target, editKind::state);
  edit.setOpacity(*node, opacity);
  noteShown(edit, opacity != startValue_);
}

void OpenOpacityEdit::keep() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  const std::optional<LayerNode> node = target->findNode(nodeID_);
  DocumentEdit edit(*target, editKind::property);
  close();
  if (!node || node->opacity().value() == startValue_) return;
  edit.recordOpacityChange(
      std::make_shared<OpacityChangeOperation>(target, nodeID_, startValue_, node->opacity().value()));
}

void OpenOpacityEdit::takeBack() {
  show(startValue_);
  close();
}

}  // namespace orvanel
