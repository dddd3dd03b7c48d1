#include "model/edit/DocumentEdit.h"

#include <algorithm>
#include <utility>

#include "model/DocumentCompositor.h"
#include "model/NodeWalk.h"
#include "model/OpenEdit.h"
#include "model/edit/DocumentBatch.h"
#include "model/edit/PropertyWriter.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

/// Side of a square of the transparency grid, in pixels.
constexpr float checkerboardSquare = 8.0F;

std::optional<QUuid> idOf(const std::shared_ptr<LayerFolder>& folder) {
  return folder != nullptr ? std::optional(folder->id) : std::nullopt;
}

/// The folder with this id; null for the root list or an unknown id.
std::shared_ptr<LayerFolder> folderAt(const Document& document, const std::optional<QUuid>& folderID) {
  const std::optional<LayerNode> node = folderID ? document.findNode(*folderID) : std::nullopt;
  return node ? node->folder() : nullptr;
}

bool holds(const LayerNode& node, const QUuid& id) {
  return node.id() == id || (node.folder() != nullptr && findNode(id, node.folder()->children.value()));
}

}  // namespace

DocumentEdit::DocumentEdit(Document& document, const EditKind& kind) : document_(document), kind_(kind) {
  if (document.batch_ == nullptr) {
    OpenEdit::endAll(document, kind.ends);
    if (kind.readsSurfaces) document.settle();
  }
  if (document.batch_ == nullptr) {
    document.batch_ = std::make_unique<Document::Batch>();
    isOutermost_ = true;
  }
}

DocumentEdit::~DocumentEdit() {
  if (isOutermost_) finish();
}

void DocumentEdit::done() {
  document_.batch_->isUnsavedChange |= kind_.isUnsavedChange;
  document_.batch_->recomposites |= kind_.recomposites;
}

void DocumentEdit::tell(const DocumentChange& change) {
  document_.batch_->changes.push_back(change);
  done();
}

const DocumentChanges& DocumentEdit::told() const {
  return document_.batch_->changes;
}

void DocumentEdit::tellCanvas() {
  if (!contains<change::CanvasChanged>(told())) tell(change::CanvasChanged{});
}

void DocumentEdit::tellProperty(const QUuid& nodeID, NodeProperty property) {
  if (document_.batch_->toldProperties.emplace(nodeID, property).second) {
    document_.batch_->changes.emplace_back(change::NodePropertyChanged{nodeID, property});
  }
  done();
}

void DocumentEdit::tellThumbnails(const std::optional<QUuid>& layerID) {
  if (document_.batch_->toldThumbnails.insert(layerID).second) {
    document_.batch_->changes.emplace_back(change::ThumbnailsChanged{layerID});
  }
  done();
}

bool DocumentEdit::admits(std::uint64_t bytes) {
  if (bytes == 0 || pixelsFitWithoutSpares(bytes)) return true;
  // Nothing was written, so the edit has no other effects.
  document_.batch_->changes.emplace_back(change::EditRefused{bytes});
  return false;
}

// The tree.

void DocumentEdit::insertNode(const LayerNode& node, const TreePosition& position) {
  const std::shared_ptr<LayerFolder> folder = folderAt(document_, position.parentID);
  Property<LayerNodeList>& list = folder != nullptr ? folder->children : document_.rootNodes;
  LayerNodeList extended = list.value();
  const std::int64_t index = std::clamp<std::int64_t>(position.index, 0, std::ssize(extended));
  extended.insert(extended.begin() + index, node);
  PropertyWriter::write(list, std::move(extended));
  tell(change::NodeInserted{node.id(), {idOf(folder), index}});
  document_.thumbnailManager->nodeCame(node);
  if (node.folder() == nullptr) return;
  walkNodes(
      node.folder()->children.value(),
      [&](const LayerNode& inner, const std::shared_ptr<LayerFolder>& parent, int place) {
        const QUuid parentID = parent != nullptr ? parent->id : node.id();
        tell(change::NodeInserted{inner.id(), {parentID, place}});
        return WalkStep::descend;
      },
      [](const LayerFolder&) {});
}

std::optional<LayerNode> DocumentEdit::removeNode(const QUuid& nodeID) {
  const std::optional<Document::NodeLocation> location = document_.parentAndIndex(nodeID);
  if (!location) return std::nullopt;
  Property<LayerNodeList>& list =
      location->folder != nullptr ? location->folder->children : document_.rootNodes;
  LayerNodeList remaining = list.value();
  const auto place = remaining.begin() + location->index;
  LayerNode node = *place;
  remaining.erase(place);
  PropertyWriter::write(list, std::move(remaining));
  tell(change::NodeRemoved{nodeID, {idOf(location->folder), location->index}});
  return node;
}

bool DocumentEdit::moveNode(const QUuid& nodeID, const TreePosition& position) {
  const std::optional<LayerNode> node = document_.findNode(nodeID);
  const std::optional<TreePosition> from = document_.treePosition(nodeID);
  if (!node || !from || (position.parentID && holds(*node, *position.parentID))) return false;
  // Reports one move: it replaces the batch's changes from here on.
  DocumentChanges& changes = document_.batch_->changes;
  const std::size_t before = changes.size();
  removeNode(nodeID);
  const std::shared_ptr<LayerFolder> folder = folderAt(document_, position.parentID);
  insertNode(*node, {idOf(folder), position.index});
  changes.resize(before);
  tell(change::NodeMoved{nodeID, *from, document_.treePosition(nodeID).value_or(*from)});
  return true;
}

void DocumentEdit::setActiveNode(const std::optional<QUuid>& nodeID) {
  if (PropertyWriter::write(document_.selectedNodeID, nodeID)) tell(change::ActiveNodeChanged{});
}

// Properties of nodes.

void DocumentEdit::setName(const LayerNode& node, const QString& name) {
  if (PropertyWriter::write(node.name(), name)) tellProperty(node.id(), NodeProperty::name);
}

void DocumentEdit::setOpacity(const LayerNode& node, float opacity) {
  if (PropertyWriter::write(node.opacity(), opacity)) tellProperty(node.id(), NodeProperty::opacity);
}

void DocumentEdit::setBlendMode(const LayerNode& node, BlendMode blendMode) {
  if (PropertyWriter::write(node.blendMode(), blendMode)) tellProperty(node.id(), NodeProperty::blendMode);
}

void DocumentEdit::setVisible(const LayerNode& node, bool isVisible) {
  if (PropertyWriter::write(node.isVisible(), isVisible)) tellProperty(node.id(), NodeProperty::isVisible);
}

void DocumentEdit::setLocked(const LayerNode& node, bool isLocked) {
  if (PropertyWriter::write(node.isLocked(), isLocked)) tellProperty(node.id(), NodeProperty::isLocked);
}

void DocumentEdit::setExpanded(LayerFolder& folder, bool isExpanded) {
  if (PropertyWriter::write(folder.isExpanded, isExpanded)) tellProperty(folder.id, NodeProperty::isExpanded);
}

void DocumentEdit::setMask(Layer& layer, const std::shared_ptr<LayerMask>& mask) {
  if (!PropertyWriter::write(layer.mask, mask)) return;
  tellProperty(layer.id, NodeProperty::mask);
  tellThumbnails(layer.id);
}

void DocumentEdit::setMaskEnabled(Layer& layer, bool isEnabled) {
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  if (mask != nullptr && PropertyWriter::write(mask->isEnabled, isEnabled)) {
    tellProperty(layer.id, NodeProperty::isMaskEnabled);
  }
}

void DocumentEdit::setMaskLinked(Layer& layer, bool isMaskLinked) {
  if (PropertyWriter::write(layer.isMaskLinked, isMaskLinked)) {
    tellProperty(layer.id, NodeProperty::isMaskLinked);
  }
}

void DocumentEdit::setMaskSelected(Layer& layer, bool isMaskSelected) {
  if (PropertyWriter::write(layer.isMaskSelected, isMaskSelected)) {
    tellProperty(layer.id, NodeProperty::isMaskSelected);
  }
}

// Surfaces.

Surface& DocumentEdit::surface(Layer& layer, SurfaceKind kind) {
  const ConstTexture standing = layer.surface(kind);
  std::vector<Document::Batch::TouchedSurface>& touched = document_.batch_->surfaces;
  const auto known = std::ranges::find_if(touched, [&](const Document::Batch::TouchedSurface& surface) {
    return surface.layer.get() == &layer && surface.kind == kind;
  });
  if (known == touched.end()) {
    touched.push_back({.layer = layer.shared_from_this(),
                       .kind = kind,
                       .before = SurfaceTrace(*standing),
                       .renewsThumbnails = kind_.renewsThumbnails});
  } else {
    known->renewsThumbnails |= kind_.renewsThumbnails;
  }
  done();
  // Surfaces are created writable; only readers' pointers are const.
  return const_cast<Surface&>(*standing);
}

void DocumentEdit::setTexture(Layer& layer, const Texture& texture) {
  if (layer.texture.value() != nullptr) static_cast<void>(surface(layer, SurfaceKind::pixels));
  PropertyWriter::write(layer.texture, texture);
  done();
}

// Thumbnails.

void DocumentEdit::renewThumbnails(Layer& layer) {
  const bool isPixels = PropertyWriter::write(layer.thumbnailDirty, true);
  const bool isMask = PropertyWriter::write(layer.maskThumbnailDirty, true);
  const bool isChannels = PropertyWriter::write(layer.channelThumbnailsDirty, true);
  if (isPixels || isMask || isChannels) tellThumbnails(layer.id);
  document_.thumbnailManager->layerMarked(layer.id);
}

void DocumentEdit::setThumbnails(Layer& layer, const ColorThumbnails& thumbnails, bool isDirty) {
  PropertyWriter::write(layer.thumbnailImage, thumbnails.image);
  PropertyWriter::write(layer.thumbnailDirty, isDirty);
  PropertyWriter::write(layer.channelThumbnails, thumbnails.channels);
  PropertyWriter::write(layer.channelThumbnailsDirty, isDirty);
  tellThumbnails(layer.id);
}

void DocumentEdit::setCompositeThumbnails(ColorThumbnails thumbnails) {
  PropertyWriter::write(document_.compositeThumbnailImage, std::move(thumbnails.image));
  PropertyWriter::write(document_.compositeChannelThumbnails, std::move(thumbnails.channels));
  tellThumbnails(std::nullopt);
}

void DocumentEdit::makeThumbnail(Layer& layer) {
  const ConstTexture pixels = layer.texture.value();
  if (pixels == nullptr || !document_.thumbnailManager->isViewed()) return;
  PropertyWriter::write(layer.thumbnailImage, ThumbnailGenerator::colorThumbnail(*pixels));
  PropertyWriter::write(layer.thumbnailDirty, false);
  tellThumbnails(layer.id);
}

void DocumentEdit::makeMaskThumbnail(Layer& layer) {
  const ConstTexture mask = layer.surface(SurfaceKind::mask);
  const bool isMade = mask != nullptr && document_.thumbnailManager->isViewed();
  setMaskThumbnail(layer, isMade ? ThumbnailGenerator::maskThumbnail(*mask) : nullptr, !isMade);
}

void DocumentEdit::setMaskThumbnail(Layer& layer, const Thumbnail& image, bool isDirty) {
  const bool isImage = PropertyWriter::write(layer.maskThumbnailImage, image);
  const bool isMark = PropertyWriter::write(layer.maskThumbnailDirty, isDirty);
  if (isImage || isMark) tellThumbnails(layer.id);
}

// The selection.

void DocumentEdit::touchSelection() {
  done();
  std::optional<Document::Batch::TouchedSelection>& touched = document_.batch_->selection;
  if (touched) return;
  touched.emplace();
  touched->object = document_.selection.value();
  if (touched->object == nullptr) return;
  touched->before = SurfaceTrace(*touched->object->maskTexture->texture);
  touched->flags = touched->object->flags();
}

std::shared_ptr<Selection> DocumentEdit::selection() {
  const std::shared_ptr<const Selection>& standing = document_.selection.value();
  if (standing == nullptr) return nullptr;
  touchSelection();
  return std::const_pointer_cast<Selection>(standing);
}

std::shared_ptr<Selection> DocumentEdit::ensureSelection() {
  if (document_.selection.value() == nullptr) resetSelection();
  return selection();
}

void DocumentEdit::resetSelection() {
  touchSelection();
  PropertyWriter::write(
      document_.selection,
      Selection::create(document_.canvasWidth.value(), document_.canvasHeight.value(), document_.context()));
}

// The canvas.

void DocumentEdit::setCanvasSize(int width, int height) {
  const bool isWidth = PropertyWriter::write(document_.canvasWidth, width);
  const bool isHeight = PropertyWriter::write(document_.canvasHeight, height);
  if (isWidth || isHeight) tellCanvas();
}

void DocumentEdit::setColorMode(ColorMode mode) {
  if (PropertyWriter::write(document_.colorMode, mode)) tellCanvas();
}

void DocumentEdit::rebuildDisplayTextures() {
  const auto make = [this] {
    Texture texture =
        document_.context().makeTexture(compositePixelFormat(document_.colorMode.value()),
                                        document_.canvasWidth.value(), document_.canvasHeight.value());
    if (texture == nullptr) fatalFault("Failed to create display texture");
    return texture;
  };
  PropertyWriter::write(document_.compositedTexture, make());
  const Texture checkerboard = make();
  document_.context().drawCheckerboard(*checkerboard, checkerboardSquare);
  PropertyWriter::write(document_.checkerboardTexture, checkerboard);
  document_.compositor_->forget();
  tellCanvas();
}

bool DocumentEdit::flatten(std::chrono::steady_clock::time_point deadline) {
  // Flattening also covers what this edit has written so far.
  const bool isWritten = std::exchange(document_.batch_->recomposites, false);
  const bool isMarked = PropertyWriter::write(document_.needsCompositing, false);
  const auto freshness =
      isWritten || isMarked ? DocumentCompositor::Freshness::stale : DocumentCompositor::Freshness::unknown;
  Surface& composite = const_cast<Surface&>(*document_.compositedTexture.value());
  const bool isDone = document_.compositor_->flatten(document_, composite, freshness, deadline);
  tell(change::Composited{});
  return isDone;
}

// The history.

void DocumentEdit::record(const UndoStack::Record& operation) {
  document_.history_.push(operation);
  tell(change::HistoryChanged{});
}

void DocumentEdit::recordAndRedo(const UndoStack::Record& operation) {
  document_.history_.pushAndRedo(operation);
  tell(change::HistoryChanged{});
}

void DocumentEdit::recordOpacityChange(const UndoStack::Record& operation) {
  document_.history_.pushOpacityChange(operation);
  tell(change::HistoryChanged{});
}

void DocumentEdit::stepHistory(void (UndoStack::*step)()) {
  const std::int64_t index = document_.history_.currentIndex.value();
  (document_.history_.*step)();
  if (document_.history_.currentIndex.value() != index) tell(change::HistoryChanged{});
  tell(change::HistoryStepped{});
}

void DocumentEdit::setHistoryLimits(std::int64_t memoryBudget, std::int64_t maxOperations) {
  document_.history_.memoryBudget = memoryBudget;
  document_.history_.maxOperations = maxOperations;
}

// The end of the outermost edit.

void DocumentEdit::finish() {
  Document::Batch& batch = *document_.batch_;
  for (std::size_t i = 0; i < batch.surfaces.size(); ++i) {
    const Document::Batch::TouchedSurface& touched = batch.surfaces[i];
    if (touched.renewsThumbnails) renewThumbnails(*touched.layer);
    const ConstTexture now = touched.layer->surface(touched.kind);
    if (now == nullptr || !document_.findNode(touched.layer->id)) continue;
    std::vector<int> tiles = touched.before.changedTiles(*now);
    if (tiles.empty()) continue;
    batch.changes.emplace_back(change::PixelsChanged{touched.layer->id, touched.kind, std::move(tiles)});
  }
  if (batch.selection) {
    const std::shared_ptr<const Selection>& now = document_.selection.value();
    const bool isReplaced = now != batch.selection->object;
    std::vector<int> tiles;
    if (now != nullptr) {
      const Surface& mask = *now->maskTexture->texture;
      tiles = isReplaced ? allTiles(mask) : batch.selection->before.changedTiles(mask);
    }
    if (isReplaced || !tiles.empty() || (now != nullptr && now->flags() != batch.selection->flags)) {
      batch.changes.emplace_back(change::SelectionChanged{std::move(tiles)});
    }
  }
  if (batch.recomposites) PropertyWriter::write(document_.needsCompositing, true);
  if (batch.isUnsavedChange && PropertyWriter::write(document_.isDirty, true)) {
    batch.changes.emplace_back(change::FileStateChanged{FileProperty::isDirty});
  }
  if (contains<change::Composited>(batch.changes)) document_.thumbnailManager->scheduleCompositeRefresh();
  DocumentChanges changes = std::move(batch.changes);
  document_.batch_ = nullptr;
  if (!changes.empty()) document_.changes_.publish(std::move(changes));
}

}  // namespace orvanel
