#include "model/OpenSurfaceEdit.h"

#include <utility>
#include <vector>

#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/edit/SurfaceTrace.h"
#include "model/records/PixelOperations.h"

namespace orvanel {

std::unique_ptr<OpenSurfaceEdit> OpenSurfaceEdit::begin(const DocumentPtr& document,
                                                        const std::shared_ptr<Layer>& layer, SurfaceKind kind,
                                                        Purpose purpose, const QString& actionName) {
  const Surface& surface = *layer->surface(kind);
  const std::shared_ptr<const Selection> selected = document->activeSelection();
  const Surface* const weight = selected != nullptr ? selected->maskTexture->texture.get() : nullptr;
  const std::vector<int> tiles =
      purpose == Purpose::levels ? editCost::tilesRewritten(surface, weight) : editCost::tilesMoved(surface);
  if (!document->admitsEdit(editCost::ofTiles(*document, surface, tiles))) return nullptr;
  return std::unique_ptr<OpenSurfaceEdit>(new OpenSurfaceEdit(document, layer, kind, purpose, actionName));
}

OpenSurfaceEdit::OpenSurfaceEdit(const DocumentPtr& document, std::shared_ptr<Layer> layer, SurfaceKind kind,
                                 Purpose purpose, const QString& actionName)
    : OpenEdit(document, Ground::surface),
      layer_(std::move(layer)),
      kind_(kind),
      original_(*layer_->surface(kind)),
      snapshotBefore_(TextureSnapshot::captureReady(original_, document->context())) {
  if (purpose == Purpose::transform) holdThumbnailsBack();
  if (snapshotBefore_ == nullptr) return;
  PixelEdit edit{.actionName = actionName,
                 .document = document,
                 .layerID = layer_->id,
                 .snapshotBefore = snapshotBefore_};
  if (purpose == Purpose::levels) {
    record_ = std::make_shared<LevelsOperation>(std::move(edit));
  } else {
    record_ = std::make_shared<MoveLayerOperation>(std::move(edit), kind_);
  }
}

OpenSurfaceEdit::~OpenSurfaceEdit() {
  OpenSurfaceEdit::end();
}

void OpenSurfaceEdit::show(const std::function<void(const Document& document, Surface& live)>& draw) {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, editKind::shown);
  draw(*target, edit.surface(*layer_, kind_));
}

void OpenSurfaceEdit::keep() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  close();
  DocumentEdit edit(*target, editKind::kept);
  const Surface& live = edit.surface(*layer_, kind_);
  if (record_ != nullptr) {
    record_->setSnapshotAfter(TextureSnapshot::captureReady(live, target->context()));
    edit.record(std::exchange(record_, nullptr));
  }
}

void OpenSurfaceEdit::takeBack() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  close();
  DocumentEdit edit(*target, editKind::takenBack);
  edit.surface(*layer_, kind_) = original_;
}

void OpenSurfaceEdit::end() {
  if (!isOpen()) return;
  const ConstTexture live = layer_->surface(kind_);
  const bool isChanged = live != nullptr && !SurfaceTrace(original_).changedTiles(*live).empty();
  if (isChanged) {
    keep();
  } else {
    close();
  }
}

}  // namespace orvanel
