#include "tools/DocumentMirror.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "raster/SurfaceChange.h"

namespace orvanel::test {
namespace {

/// Copies the bytes of these tiles only. A surface of another size or format is replaced.
void copyTiles(const Surface& from, const std::vector<int>& tiles, std::optional<Surface>& to) {
  const bool isAlike = to && to->format() == from.format() && to->bounds() == from.bounds();
  if (!isAlike) {
    EXPECT_EQ(tiles.size(), static_cast<std::size_t>(from.tileCount()))
        << "all tiles of a new surface are new";
    to.emplace(from.format(), from.width(), from.height());
  }
  std::vector<std::byte> rows(from.tileBytes());
  for (const int index : tiles) {
    const PixelRect rect = from.tileRect(index);
    const auto stride = static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(from.pixelBytes());
    from.readRect(rect, rows.data(), stride);
    to->writeRect(rect, rows.data(), stride);
  }
}

std::optional<Surface> copyOf(const Surface* surface) {
  std::optional<Surface> copy;
  if (surface == nullptr) return copy;
  std::vector<int> tiles;
  for (int index = 0; index < surface->tileCount(); ++index) tiles.push_back(index);
  copyTiles(*surface, tiles, copy);
  return copy;
}

/// The surface as an open edit shows it without having written it; nothing if none does.
std::optional<Surface> shownBy(const Document& document, const Layer& layer, SurfaceKind kind) {
  const std::optional<ShownSurface> shown = document.shown(layer, kind);
  if (!shown) return std::nullopt;
  Surface changed = *shown->original;
  applyChange(*shown->change, document.context(), *shown->original, changed);
  return changed;
}

bool areEqual(const std::optional<Surface>& mirrored, const ConstTexture& real) {
  return mirrored.has_value() == (real != nullptr) && (!mirrored || mirrored->equals(*real));
}

}  // namespace

DocumentMirror::DocumentMirror(const Document& followed)
    : followed_(followed),
      subscription_(followed.changes().observe([this](const DocumentChanges& changes) { follow(changes); })) {
  follow(followed.wholeDocument());
}

void DocumentMirror::follow(const DocumentChanges& changes) {
  for (const DocumentChange& change : changes) {
    std::visit([this](const auto& kind) { this->follow(kind); }, change);
    ++changes_;
  }
}

// The tree.

std::vector<QUuid>& DocumentMirror::listAt(const std::optional<QUuid>& parentID) {
  return parentID ? nodes_.at(*parentID).children : roots_;
}

void DocumentMirror::putIn(const QUuid& nodeID, const TreePosition& position) {
  std::vector<QUuid>& list = listAt(position.parentID);
  ASSERT_LE(position.index, std::ssize(list));
  list.insert(list.begin() + position.index, nodeID);
}

void DocumentMirror::takeOut(const QUuid& nodeID, const TreePosition& position) {
  std::vector<QUuid>& list = listAt(position.parentID);
  ASSERT_LT(position.index, std::ssize(list));
  ASSERT_EQ(list[static_cast<std::size_t>(position.index)], nodeID);
  list.erase(list.begin() + position.index);
}

void DocumentMirror::forget(const QUuid& nodeID) {
  for (const QUuid& child : nodes_.at(nodeID).children) forget(child);
  nodes_.erase(nodeID);
}

void DocumentMirror::follow(const change::NodeInserted& inserted) {
  putIn(inserted.nodeID, inserted.position);
  const std::optional<LayerNode> real = followed_.findNode(inserted.nodeID);
  ASSERT_TRUE(real);
  Node node{.isFolder = real->folder() != nullptr,
            .name = real->name().value(),
            .opacity = real->opacity().value(),
            .blendMode = real->blendMode().value(),
            .isVisible = real->isVisible().value(),
            .isLocked = real->isLocked().value()};
  if (const auto folder = real->folder()) node.isExpanded = folder->isExpanded.value();
  if (const auto layer = real->layer()) {
    node.isMaskLinked = layer->isMaskLinked.value();
    node.isMaskSelected = layer->isMaskSelected.value();
    node.picture = pictureOf(*layer, SurfaceKind::pixels);
    node.mask = maskOf(*layer);
    node.thumbnails = thumbnailsOf(*layer);
  }
  nodes_.insert_or_assign(inserted.nodeID, std::move(node));
}

void DocumentMirror::follow(const change::NodeRemoved& removed) {
  takeOut(removed.nodeID, removed.position);
  forget(removed.nodeID);
}

void DocumentMirror::follow(const change::NodeMoved& moved) {
  takeOut(moved.nodeID, moved.from);
  putIn(moved.nodeID, moved.to);
}

void DocumentMirror::follow(const change::NodePropertyChanged& changed) {
  const std::optional<LayerNode> real = followed_.findNode(changed.nodeID);
  if (!real) return;
  Node& node = nodes_.at(changed.nodeID);
  const std::shared_ptr<Layer> layer = real->layer();
  switch (changed.property) {
    case NodeProperty::name:
      node.name = real->name().value();
      break;
    case NodeProperty::opacity:
      node.opacity = real->opacity().value();
      break;
    case NodeProperty::blendMode:
      node.blendMode = real->blendMode().value();
      break;
    case NodeProperty::isVisible:
      node.isVisible = real->isVisible().value();
      break;
    case NodeProperty::isLocked:
      node.isLocked = real->isLocked().value();
      break;
    case NodeProperty::isExpanded:
      node.isExpanded = real->folder()->isExpanded.value();
      break;
    case NodeProperty::mask:
      node.mask = maskOf(*layer);
      break;
    case NodeProperty::isMaskEnabled:
      node.mask->isEnabled = layer->mask.value()->isEnabled.value();
      break;
    case NodeProperty::isMaskLinked:
      node.isMaskLinked = layer->isMaskLinked.value();
      break;
    case NodeProperty::isMaskSelected:
      node.isMaskSelected = layer->isMaskSelected.value();
      break;
  }
}

// Surfaces.

DocumentMirror::Picture& DocumentMirror::pictureAt(const QUuid& layerID, SurfaceKind kind) {
  Node& node = nodes_.at(layerID);
  return kind == SurfaceKind::pixels ? *node.picture : node.mask->picture;
}

DocumentMirror::Picture DocumentMirror::pictureOf(const Layer& layer, SurfaceKind kind) const {
  const std::optional<Surface> shown = shownBy(followed_, layer, kind);
  return {.written = copyOf(layer.surface(kind).get()), .shown = copyOf(shown ? &*shown : nullptr)};
}

std::optional<DocumentMirror::Mask> DocumentMirror::maskOf(const Layer& layer) const {
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  if (mask == nullptr) return std::nullopt;
  return Mask{.picture = pictureOf(layer, SurfaceKind::mask), .isEnabled = mask->isEnabled.value()};
}

void DocumentMirror::follow(const change::PixelsChanged& changed) {
  Picture& picture = pictureAt(changed.layerID, changed.kind);
  const std::shared_ptr<Layer> layer = followed_.findNode(changed.layerID)->layer();
  const Surface& real = *layer->surface(changed.kind);
  EXPECT_TRUE(std::ranges::is_sorted(changed.tiles));
  copyTiles(real, changed.tiles, picture.written);
  if (!picture.shown) return;
  const std::optional<Surface> shown = shownBy(followed_, *layer, changed.kind);
  copyTiles(shown ? *shown : real, changed.tiles, picture.shown);
}

void DocumentMirror::follow(const change::PreviewChanged& changed) {
  const std::shared_ptr<Layer> layer = followed_.findNode(changed.layerID)->layer();
  const std::optional<Surface> shown = shownBy(followed_, *layer, changed.kind);
  pictureAt(changed.layerID, changed.kind).shown = copyOf(shown ? &*shown : nullptr);
}

void DocumentMirror::follow(const change::SelectionChanged& changed) {
  const std::shared_ptr<const Selection>& real = followed_.selection.value();
  if (real == nullptr) {
    selection_.reset();
    selectionFlags_ = {};
    return;
  }
  copyTiles(*real->maskTexture->texture, changed.tiles, selection_);
  selectionFlags_ = real->flags();
}

// The rest.

void DocumentMirror::follow(const change::CanvasChanged&) {
  width_ = followed_.canvasWidth.value();
  height_ = followed_.canvasHeight.value();
  mode_ = followed_.colorMode.value();
  composite_ = copyOf(followed_.compositedTexture.value().get());
}

void DocumentMirror::follow(const change::ActiveNodeChanged&) {
  active_ = followed_.selectedNodeID.value();
}

void DocumentMirror::follow(const change::ViewChanged& changed) {
  const View real = viewOf(followed_);
  switch (changed.property) {
    case ViewProperty::zoom:
      view_.zoom = real.zoom;
      break;
    case ViewProperty::viewportOffset:
      view_.offset = real.offset;
      break;
    case ViewProperty::needsInitialZoom:
      view_.needsInitialZoom = real.needsInitialZoom;
      break;
    case ViewProperty::cursorDocumentPosition:
      view_.cursor = real.cursor;
      break;
    case ViewProperty::dragSize:
      view_.dragSize = real.dragSize;
      break;
    case ViewProperty::selectedTool:
      view_.tool = real.tool;
      break;
    case ViewProperty::colors:
      view_.foreground = real.foreground;
      view_.background = real.background;
      break;
    case ViewProperty::channelVisibility:
      view_.channels = real.channels;
      break;
  }
}

void DocumentMirror::follow(const change::HistoryChanged&) {
  history_ = historyOf(followed_);
  steps_ = stepsOf(followed_);
}

void DocumentMirror::follow(const change::OpenEditChanged&) {
  steps_ = stepsOf(followed_);
  hasOpenUnsavedChange_ = followed_.hasOpenUnsavedChange();
}

void DocumentMirror::follow(const change::FileStateChanged& changed) {
  File real = fileOf(followed_);
  switch (changed.property) {
    case FileProperty::name:
      file_.name = real.name;
      break;
    case FileProperty::isDirty:
      file_.isDirty = real.isDirty;
      break;
    case FileProperty::source:
      file_.source = real.source;
      file_.format = real.format;
      file_.metadata = real.metadata;
      break;
  }
}

void DocumentMirror::follow(const change::Composited&) {
  composite_ = copyOf(followed_.compositedTexture.value().get());
}

void DocumentMirror::follow(const change::ThumbnailsChanged& changed) {
  if (!changed.layerID) {
    compositeThumbnail_ = followed_.compositeThumbnailImage.value();
    compositeChannels_ = followed_.compositeChannelThumbnails.value();
  } else if (const std::optional<LayerNode> real = followed_.findNode(*changed.layerID)) {
    nodes_.at(*changed.layerID).thumbnails = thumbnailsOf(*real->layer());
  }
}

DocumentMirror::Thumbnails DocumentMirror::thumbnailsOf(const Layer& layer) {
  return {.image = layer.thumbnailImage.value(),
          .isDirty = layer.thumbnailDirty.value(),
          .mask = layer.maskThumbnailImage.value(),
          .isMaskDirty = layer.maskThumbnailDirty.value(),
          .channels = layer.channelThumbnails.value(),
          .areChannelsDirty = layer.channelThumbnailsDirty.value()};
}

DocumentMirror::History DocumentMirror::historyOf(const Document& document) {
  History history{.names = {}, .index = document.undoStack.currentIndex.value()};
  for (const auto& record : document.undoStack.operations()) history.names.push_back(record->actionName());
  return history;
}

DocumentMirror::Steps DocumentMirror::stepsOf(const Document& document) {
  return {.undo = document.undoActionName(), .redo = document.redoActionName()};
}

DocumentMirror::File DocumentMirror::fileOf(const Document& document) {
  return {.name = document.name.value(),
          .isDirty = document.isDirty.value(),
          .source = document.sourceFileURL.value(),
          .format = document.sourceFileFormat.value(),
          .metadata = document.sourceMetadata.value()};
}

DocumentMirror::View DocumentMirror::viewOf(const Document& document) {
  return {.zoom = document.zoom(),
          .offset = document.viewportOffset.value(),
          .needsInitialZoom = document.needsInitialZoom.value(),
          .cursor = document.cursorDocumentPosition.value(),
          .dragSize = document.dragSize.value(),
          .tool = document.selectedTool.value(),
          .foreground = document.foregroundColor.value(),
          .background = document.backgroundColor.value(),
          .channels = document.channelVisibility.value()};
}

// Comparison.

bool DocumentMirror::isAsMirrored(const Layer& layer, SurfaceKind kind, const Picture& picture) const {
  const ConstTexture real = layer.surface(kind);
  if (!areEqual(picture.written, real)) return false;
  const std::optional<Surface> shown = shownBy(followed_, layer, kind);
  if (!shown && !picture.shown) return true;
  return (picture.shown ? *picture.shown : *picture.written).equals(shown ? *shown : *real);
}

std::string DocumentMirror::nodeDifference(const LayerNode& real, const Node& node) const {
  if (node.isFolder != (real.folder() != nullptr)) return "kind";
  if (node.name != real.name().value()) return "name";
  if (node.opacity != real.opacity().value()) return "opacity";
  if (node.blendMode != real.blendMode().value()) return "blend mode";
  if (node.isVisible != real.isVisible().value()) return "visibility";
  if (node.isLocked != real.isLocked().value()) return "lock";
  if (const auto folder = real.folder()) {
    return node.isExpanded != folder->isExpanded.value() ? "expansion" : "";
  }
  const Layer& layer = *real.layer();
  const std::shared_ptr<LayerMask>& mask = layer.mask.value();
  if (node.isMaskLinked != layer.isMaskLinked.value()) return "link of the mask";
  if (node.isMaskSelected != layer.isMaskSelected.value()) return "target of edits";
  if (!isAsMirrored(layer, SurfaceKind::pixels, *node.picture)) return "pixels";
  if (node.thumbnails != thumbnailsOf(layer)) return "thumbnails";
  if (node.mask.has_value() != (mask != nullptr)) return "presence of the mask";
  if (mask == nullptr) return "";
  if (node.mask->isEnabled != mask->isEnabled.value()) return "enabling of the mask";
  return isAsMirrored(layer, SurfaceKind::mask, node.mask->picture) ? "" : "pixels of the mask";
}

std::string DocumentMirror::nodesDifference(const LayerNodeList& nodes, const std::vector<QUuid>& ids) const {
  if (nodes.size() != ids.size()) return "number of nodes";
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].id() != ids[i]) return "order of nodes";
    const Node& node = nodes_.at(ids[i]);
    if (const std::string found = nodeDifference(nodes[i], node); !found.empty()) {
      return found + " of " + nodes[i].name().value().toStdString();
    }
    if (!node.isFolder) continue;
    const std::string inner = nodesDifference(nodes[i].folder()->children.value(), node.children);
    if (!inner.empty()) return inner;
  }
  return "";
}

std::string DocumentMirror::difference() const {
  if (width_ != followed_.canvasWidth.value() || height_ != followed_.canvasHeight.value())
    return "canvas size";
  if (mode_ != followed_.colorMode.value()) return "colour mode";
  if (const std::string found = nodesDifference(followed_.rootNodes.value(), roots_); !found.empty()) {
    return found;
  }
  if (active_ != followed_.selectedNodeID.value()) return "active node";
  const std::shared_ptr<const Selection>& selection = followed_.selection.value();
  if (!areEqual(selection_, selection != nullptr ? selection->maskTexture->texture : nullptr)) {
    return "selected pixels";
  }
  if (selection != nullptr && selectionFlags_ != selection->flags()) return "flags of the selection";
  if (history_ != historyOf(followed_)) return "history";
  if (steps_ != stepsOf(followed_)) return "names of the next undo and redo";
  if (hasOpenUnsavedChange_ != followed_.hasOpenUnsavedChange()) return "open unsaved change";
  if (view_ != viewOf(followed_)) return "view";
  if (file_ != fileOf(followed_)) return "file";
  if (!areEqual(composite_, followed_.compositedTexture.value())) return "flattened image";
  if (compositeThumbnail_ != followed_.compositeThumbnailImage.value()) return "thumbnail of the whole";
  return compositeChannels_ == followed_.compositeChannelThumbnails.value() ? "" : "thumbnails of channels";
}

}  // namespace orvanel::test
