#include "model/OpenSurfaceEdit.h"

#include <algorithm>
#include <utility>

#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"
#include "model/edit/MoveCost.h"
#include "model/edit/SurfaceTrace.h"
#include "model/records/LinkedMoveOperation.h"
#include "model/records/PixelOperations.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

bool isUniform(const Surface& surface) {
  for (int index = 0; index < surface.tileCount(); ++index) {
    if (!surface.tile(index).isUniform() || !(surface.tile(index) == surface.tile(0))) return false;
  }
  return true;
}

/// The surfaces that change together.
std::vector<SurfaceKind> kindsOf(const Layer& layer, SurfaceKind kind, OpenSurfaceEdit::Purpose purpose) {
  const ConstTexture mask = layer.surface(SurfaceKind::mask);
  const bool carriesMask = purpose == OpenSurfaceEdit::Purpose::transform && kind == SurfaceKind::pixels &&
                           mask != nullptr && layer.isMaskLinked.value() && !isUniform(*mask);
  if (carriesMask) return {kind, SurfaceKind::mask};
  return {kind};
}

std::uint64_t costOfLevels(const Document& document, const Layer& layer, SurfaceKind kind) {
  const std::shared_ptr<const Selection> selected = document.activeSelection();
  const Surface* const weight = selected != nullptr ? selected->maskTexture->texture.get() : nullptr;
  const Surface& surface = *layer.surface(kind);
  return editCost::ofTiles(document, surface, {editCost::tilesRewritten(surface, weight), layer.id});
}

}  // namespace

std::unique_ptr<OpenSurfaceEdit> OpenSurfaceEdit::begin(const DocumentPtr& document,
                                                        const std::shared_ptr<Layer>& layer, SurfaceKind kind,
                                                        Purpose purpose, const QString& actionName) {
  document->settle();
  const std::vector<SurfaceKind> kinds = kindsOf(*layer, kind, purpose);
  bool isAdmittedAnywhere = true;
  if (purpose == Purpose::levels) {
    if (!document->admitsEdit(costOfLevels(*document, *layer, kind))) return nullptr;
  } else {
    const editCost::MoveCost cost = editCost::ofMoves(*document, *layer, kinds);
    isAdmittedAnywhere = pixelsFitInMemory(cost.anywhere);
    if (!isAdmittedAnywhere && !document->admitsEdit(cost.shifted)) return nullptr;
  }
  auto edit =
      std::unique_ptr<OpenSurfaceEdit>(new OpenSurfaceEdit(document, layer, kinds, purpose, actionName));
  edit->isAdmittedAnywhere_ = isAdmittedAnywhere;
  return edit;
}

OpenSurfaceEdit::OpenSurfaceEdit(const DocumentPtr& document, std::shared_ptr<Layer> layer,
                                 const std::vector<SurfaceKind>& kinds, Purpose purpose, QString actionName)
    : OpenEdit(document, Ground::surfaces, std::move(actionName)),
      layer_(std::move(layer)),
      purpose_(purpose) {
  for (const SurfaceKind kind : kinds) {
    const Surface& surface = *layer_->surface(kind);
    parts_.push_back({.kind = kind,
                      .original = surface,
                      .snapshotBefore = TextureSnapshot::captureReady(surface, document->context()),
                      .change = std::nullopt});
  }
  if (purpose == Purpose::transform) holdThumbnailsBack();
}

OpenSurfaceEdit::~OpenSurfaceEdit() {
  OpenSurfaceEdit::end();
}

bool OpenSurfaceEdit::show(const SurfaceChange& change, const SurfaceChange& changeOfMask) {
  const DocumentPtr target = document();
  if (target == nullptr) return false;
  DocumentEdit edit(*target, editKind::shown);
  if (!admits(edit, *target, change, changeOfMask)) return false;
  noteShown(edit, true);
  for (Part& part : parts_) {
    part.change = changeOf(part, change, changeOfMask);
    edit.tell(change::PreviewChanged{layer_->id, part.kind});
  }
  return true;
}

/// Moves by whole pixels were admitted from the start.
bool OpenSurfaceEdit::admits(DocumentEdit& edit, const Document& document, const SurfaceChange& change,
                             const SurfaceChange& changeOfMask) {
  if (isAdmittedAnywhere_ || std::holds_alternative<OffsetParams>(change.arguments)) return true;
  std::vector<editCost::MovedSurface> moved;
  for (const Part& part : parts_) {
    moved.push_back({part.kind, part.original, changeOf(part, change, changeOfMask)});
  }
  const std::uint64_t bytes = editCost::ofMove(document, *layer_, moved);
  // Told once for steps that follow one another.
  isRefused_ = isRefused_ ? !pixelsFitInMemory(bytes) : !edit.admits(bytes);
  return !isRefused_;
}

void OpenSurfaceEdit::write(DocumentEdit& edit) {
  const DocumentPtr target = document();
  for (Part& part : parts_) {
    if (!part.change) continue;
    Surface& surface = edit.surface(*layer_, part.kind);
    // Lets go of what an earlier change has made, so that it never stands beside what this one makes.
    surface = part.original;
    applyChange(*part.change, target->context(), part.original, surface);
    part.change.reset();
  }
}

void OpenSurfaceEdit::settle() {
  const DocumentPtr target = document();
  if (target == nullptr || isSettled()) return;
  DocumentEdit edit(*target, editKind::shown);
  write(edit);
}

bool OpenSurfaceEdit::isSettled() const {
  return std::ranges::none_of(parts_, [](const Part& part) { return part.change.has_value(); });
}

std::optional<ShownSurface> OpenSurfaceEdit::shown(const Layer& layer, SurfaceKind kind) const {
  if (&layer != layer_.get()) return std::nullopt;
  for (const Part& part : parts_) {
    if (part.kind == kind && part.change) return ShownSurface{&part.original, &*part.change};
  }
  return std::nullopt;
}

void OpenSurfaceEdit::keep() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  if (isRefused_ && !hasShown()) return takeBack();
  DocumentEdit edit(*target, editKind::kept);
  // Written as part of this edit, so that its declared effects hold for the surfaces.
  write(edit);
  for (const Part& part : parts_) static_cast<void>(edit.surface(*layer_, part.kind));
  close();
  record(target, edit);
}

void OpenSurfaceEdit::record(const DocumentPtr& document, DocumentEdit& edit) {
  std::vector<std::shared_ptr<MoveLayerOperation>> moves;
  for (const Part& part : parts_) {
    if (part.snapshotBefore == nullptr) return;
    PixelEdit pixelEdit{.actionName = actionName(),
                        .document = document,
                        .layerID = layer_->id,
                        .snapshotBefore = part.snapshotBefore};
    auto after = TextureSnapshot::captureReady(*layer_->surface(part.kind), document->context());
    if (purpose_ == Purpose::levels) {
      const auto levels = std::make_shared<LevelsOperation>(std::move(pixelEdit));
      levels->setSnapshotAfter(std::move(after));
      return edit.record(levels);
    }
    const auto move = std::make_shared<MoveLayerOperation>(std::move(pixelEdit), part.kind);
    move->setSnapshotAfter(std::move(after));
    moves.push_back(move);
  }
  if (moves.size() == 1) return edit.record(moves.front());
  edit.record(std::make_shared<LinkedMoveOperation>(actionName(), document, moves[0], moves[1]));
}

void OpenSurfaceEdit::takeBack() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  DocumentEdit edit(*target, editKind::takenBack);
  close();
  for (Part& part : parts_) {
    if (std::exchange(part.change, std::nullopt)) edit.tell(change::PreviewChanged{layer_->id, part.kind});
    edit.surface(*layer_, part.kind) = part.original;
  }
}

void OpenSurfaceEdit::end() {
  const DocumentPtr target = document();
  if (target == nullptr) return;
  // Observers, who may destroy this edit, hear of all of it at once and last.
  const DocumentEdit whole(*target, editKind::shown);
  settle();
  const bool isChanged = std::ranges::any_of(parts_, [this](const Part& part) {
    const ConstTexture live = layer_->surface(part.kind);
    return live != nullptr && !SurfaceTrace(part.original).changedTiles(*live).empty();
  });
  if (isChanged) {
    keep();
  } else {
    close();
  }
}

}  // namespace orvanel
