#include "model/Document.h"

#include <QCoreApplication>
#include <algorithm>
#include <functional>
#include <utility>

#include "model/DocumentCompositor.h"
#include "model/NodeWalk.h"
#include "model/OpenEdit.h"
#include "model/ThumbnailManager.h"
#include "model/edit/DocumentBatch.h"
#include "model/edit/DocumentEdit.h"
#include "model/edit/EditCost.h"

namespace orvanel {

Document::Document(DocumentContents contents, MetalContext& context)
    : name(contents.name),
      canvasWidth(contents.width),
      canvasHeight(contents.height),
      colorMode(contents.colorMode),
      rootNodes(std::move(contents.rootNodes)),
      selectedNodeID(contents.selectedNodeID),
      foregroundColor(contents.foregroundColor),
      backgroundColor(contents.backgroundColor),
      thumbnailManager(std::make_unique<ThumbnailManager>(*this)),
      context_(context),
      compositor_(std::make_unique<DocumentCompositor>(context)) {
  DocumentEdit(*this, editKind::state).rebuildDisplayTextures();
}

Document::~Document() = default;

std::shared_ptr<Document> Document::create(DocumentContents contents, MetalContext& context) {
  return std::shared_ptr<Document>(new Document(std::move(contents), context));
}

std::shared_ptr<Document> Document::create(const QString& name, int width, int height, ColorMode colorMode,
                                           MetalContext& context) {
  const std::shared_ptr<Document> document =
      create({.name = name, .width = width, .height = height, .colorMode = colorMode}, context);
  const Texture pixels = document->makeLayerTexture();
  context.clearTexture(*pixels, colorMode, {1.0F, 1.0F, 1.0F, 1.0F});
  const auto background =
      std::make_shared<Layer>(NodeValues{.name = QCoreApplication::translate("names", "Background")}, pixels);
  DocumentEdit edit(*document, editKind::state);
  edit.insertNode(background, {});
  edit.setActiveNode(background->id);
  return document;
}

std::optional<LayerNode> Document::activeNode() const {
  const std::optional<QUuid>& nodeID = selectedNodeID.value();
  return nodeID ? findNode(*nodeID) : std::nullopt;
}

std::shared_ptr<Layer> Document::activeLayer() const {
  const std::optional<LayerNode> node = activeNode();
  return node ? node->layer() : nullptr;
}

std::optional<LayerNode> Document::findNode(const QUuid& nodeID) const {
  return orvanel::findNode(nodeID, rootNodes.value());
}

std::optional<Document::NodeLocation> Document::parentAndIndex(const QUuid& nodeID) const {
  std::optional<NodeLocation> found;
  walkNodes(
      rootNodes.value(),
      [&](const LayerNode& node, const std::shared_ptr<LayerFolder>& folder, int index) {
        if (node.id() != nodeID) return WalkStep::descend;
        found = NodeLocation{folder, index};
        return WalkStep::stop;
      },
      [](const LayerFolder&) {});
  return found;
}

std::optional<TreePosition> Document::treePosition(const QUuid& nodeID) const {
  const std::optional<NodeLocation> location = parentAndIndex(nodeID);
  if (!location) return std::nullopt;
  TreePosition position{.parentID = std::nullopt, .index = location->index};
  if (location->folder != nullptr) position.parentID = location->folder->id;
  return position;
}

std::vector<std::shared_ptr<Layer>> Document::allLayers() const {
  std::vector<std::shared_ptr<Layer>> layers;
  collectLayers(rootNodes.value(), layers);
  return layers;
}

int Document::layerCount() const {
  int count = 0;
  forEachNode(rootNodes.value(), [&](const LayerNode& node) { count += node.layer() != nullptr ? 1 : 0; });
  return count;
}

std::int64_t Document::memoryUsage() const {
  std::int64_t bytes = 0;
  for (const std::shared_ptr<Layer>& layer : allLayers()) {
    if (const ConstTexture& pixels = layer->texture.value()) bytes += MetalContext::byteSize(*pixels);
    if (const std::shared_ptr<LayerMask>& mask = layer->mask.value()) {
      bytes += MetalContext::byteSize(*mask->maskTexture->texture);
    }
  }
  return bytes;
}

std::set<QString> Document::allNodeNames() const {
  std::set<QString> names;
  forEachNode(rootNodes.value(), [&](const LayerNode& node) { names.insert(node.name().value()); });
  return names;
}

bool Document::canSaveAsFlatImage() const {
  const LayerNodeList& nodes = rootNodes.value();
  if (nodes.size() != 1) return false;
  const std::shared_ptr<Layer> layer = nodes.front().layer();
  return layer != nullptr && layer->mask.value() == nullptr && layer->texture.value() != nullptr;
}

QString Document::uniqueNodeName(const QString& base) const {
  const std::set<QString> taken = allNodeNames();
  QString candidate = base;
  for (int number = 2; taken.contains(candidate); ++number) {
    candidate = base + QChar(u' ') + QString::number(number);
  }
  return candidate;
}

Texture Document::makeLayerTexture() const {
  return makeLayerTexture(colorMode.value(), canvasWidth.value(), canvasHeight.value());
}

Texture Document::makeLayerTexture(ColorMode mode, int width, int height) const {
  Texture texture = context_.makeTexture(layerPixelFormat(mode), width, height);
  if (texture == nullptr) fatalFault("Failed to create layer texture");
  return texture;
}

DocumentChanges Document::wholeDocument() const {
  DocumentChanges changes{change::CanvasChanged{}};
  const auto describe = [&](const LayerNode& node, const std::shared_ptr<LayerFolder>& folder, int index) {
    const std::optional<QUuid> parentID = folder != nullptr ? std::optional(folder->id) : std::nullopt;
    changes.emplace_back(change::NodeInserted{node.id(), {parentID, index}});
    return WalkStep::descend;
  };
  walkNodes(rootNodes.value(), describe, [](const LayerFolder&) {});
  const auto everyTile = [](const Surface& surface) { return allTiles(surface); };
  for (const std::shared_ptr<Layer>& layer : allLayers()) {
    for (const SurfaceKind kind : {SurfaceKind::pixels, SurfaceKind::mask}) {
      const ConstTexture surface = layer->surface(kind);
      if (surface != nullptr)
        changes.emplace_back(change::PixelsChanged{layer->id, kind, everyTile(*surface)});
    }
    changes.emplace_back(change::ThumbnailsChanged{layer->id});
  }
  if (const auto& selected = selection.value()) {
    changes.emplace_back(change::SelectionChanged{everyTile(*selected->maskTexture->texture)});
  }
  changes.emplace_back(change::ActiveNodeChanged{});
  changes.emplace_back(change::HistoryChanged{});
  for (const ViewProperty property :
       {ViewProperty::zoom, ViewProperty::viewportOffset, ViewProperty::needsInitialZoom,
        ViewProperty::cursorDocumentPosition, ViewProperty::dragSize, ViewProperty::selectedTool,
        ViewProperty::colors, ViewProperty::channelVisibility}) {
    changes.emplace_back(change::ViewChanged{property});
  }
  for (const FileProperty property : {FileProperty::name, FileProperty::isDirty, FileProperty::source}) {
    changes.emplace_back(change::FileStateChanged{property});
  }
  changes.emplace_back(change::ThumbnailsChanged{});
  return changes;
}

// The flattened image.

bool Document::isCompositeCurrent() const {
  const bool isBeingEdited = batch_ != nullptr && batch_->recomposites;
  return !needsCompositing.value() && !isBeingEdited && compositor_->isCurrent(*this);
}

bool Document::advanceComposite(std::chrono::milliseconds budget) {
  return flatten(std::chrono::steady_clock::now() + budget);
}

ConstTexture Document::composite() {
  flatten(std::chrono::steady_clock::time_point::max());
  return compositedTexture.value();
}

bool Document::flatten(std::chrono::steady_clock::time_point deadline) {
  settle();
  if (compositedTexture.value() == nullptr || isCompositeCurrent()) return true;
  DocumentEdit edit(*this, editKind::state);
  return edit.flatten(deadline);
}

std::shared_ptr<FrozenComposite> Document::freezeComposite() const {
  if (compositedTexture.value() == nullptr) return nullptr;
  settle();
  return std::make_shared<FrozenComposite>(*this);
}

const Surface* Document::sampleComposite(SampledComposite& samples, const SampleGrid& grid) const {
  if (compositedTexture.value() == nullptr || grid.isEmpty()) return nullptr;
  return &compositor_->sample(*this, samples, grid);
}

bool Document::prepareSamples(SampledComposite& samples, const SampleGrid& grid,
                              std::chrono::milliseconds budget) const {
  if (compositedTexture.value() == nullptr || grid.isEmpty()) return true;
  return compositor_->prepareSample(*this, samples, grid, budget);
}

// Open edits.

void Document::settle() const {
  // Writing notifies observers, who may end edits.
  const auto next = [this] {
    return std::ranges::find_if(openEdits_, [](const OpenEdit* edit) { return !edit->isSettled(); });
  };
  for (auto it = next(); it != openEdits_.end(); it = next()) (*it)->settle();
}

bool Document::isSettled() const {
  return std::ranges::all_of(openEdits_, [](const OpenEdit* edit) { return edit->isSettled(); });
}

std::optional<ShownSurface> Document::shown(const Layer& layer, SurfaceKind kind) const {
  for (const OpenEdit* edit : openEdits_) {
    if (const std::optional<ShownSurface> found = edit->shown(layer, kind)) return found;
  }
  return std::nullopt;
}

std::optional<QString> Document::undoActionName() const {
  // The edits end in their order, so the last one's record is the first to be undone.
  const auto last = std::find_if(openEdits_.rbegin(), openEdits_.rend(), std::mem_fn(&OpenEdit::hasShown));
  return last != openEdits_.rend() ? (*last)->actionName() : undoStack.undoActionName();
}

std::optional<QString> Document::redoActionName() const {
  const bool isChangeOpen = std::ranges::any_of(openEdits_, &OpenEdit::hasShown);
  return isChangeOpen ? std::nullopt : undoStack.redoActionName();
}

bool Document::hasOpenUnsavedChange() const {
  return std::ranges::any_of(
      openEdits_, [](const OpenEdit* edit) { return edit->hasShown() && edit->isUnsavedChange(); });
}

// History and file.

void Document::undo() {
  DocumentEdit edit(*this, editKind::history);
  stepHistory(edit, history_.nextUndo().get(), &UndoStack::undo);
}

void Document::redo() {
  DocumentEdit edit(*this, editKind::history);
  stepHistory(edit, history_.nextRedo().get(), &UndoStack::redo);
}

void Document::stepHistory(DocumentEdit& edit, const UndoableOperation* record, void (UndoStack::*step)()) {
  if (record == nullptr || edit.admits(editCost::ofStep(*this, record->costToStep()))) edit.stepHistory(step);
}

void Document::endOpenEdits() {
  const DocumentEdit edit(*this, editKind::settled);
}

bool Document::admitsEdit(std::uint64_t bytes) {
  DocumentEdit edit(*this, editKind::state);
  return edit.admits(bytes);
}

void Document::setHistoryLimits(std::int64_t memoryBudget, std::int64_t maxOperations) {
  DocumentEdit edit(*this, editKind::state);
  edit.setHistoryLimits(memoryBudget, maxOperations);
}

void Document::setName(const QString& newName) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::name, newName, FileProperty::name);
}

void Document::setDirty(bool hasUnsavedChanges) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::isDirty, hasUnsavedChanges, FileProperty::isDirty);
}

void Document::setSource(const std::optional<QString>& path, const std::optional<ImageFileFormat>& format) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::sourceFileURL, path, FileProperty::source);
  edit.set(&Document::sourceFileFormat, format, FileProperty::source);
}

void Document::setSourceMetadata(const std::shared_ptr<const SourceMetadata>& metadata) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::sourceMetadata, metadata, FileProperty::source);
}

}  // namespace orvanel
