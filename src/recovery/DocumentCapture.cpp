#include "recovery/DocumentCapture.h"

#include <algorithm>

#include "io/document/SaveSnapshot.h"
#include "model/NodeWalk.h"

namespace orvanel {
namespace {

using Clock = std::chrono::steady_clock;

/// Tiles between two looks at the clock.
constexpr int tilesAtOnce = 64;
/// Thumbnails are small, but not beside the record of a small edit.
constexpr std::chrono::seconds thumbnailInterval{30};
/// Sharing more tiles than these would take too long for a picture.
constexpr int mostCompositeTiles = 4096;

/// How a change bears on what a record holds.
struct Sorter {
  std::function<void(const QUuid&)> node;
  std::function<void(const QUuid&, SurfaceKind)> surface;
  std::function<void()> tree;
  std::function<void()> everything;

  void operator()(const change::NodeInserted& inserted) const { node(inserted.nodeID); }
  void operator()(const change::NodeRemoved&) const { tree(); }
  void operator()(const change::NodeMoved&) const { tree(); }
  void operator()(const change::NodePropertyChanged& changed) const {
    tree();
    if (changed.property == NodeProperty::mask) surface(changed.nodeID, SurfaceKind::mask);
  }
  void operator()(const change::PixelsChanged& changed) const { surface(changed.layerID, changed.kind); }
  void operator()(const change::CanvasChanged&) const { everything(); }
  void operator()(const change::ActiveNodeChanged&) const { tree(); }
  void operator()(const change::ViewChanged& changed) const {
    if (changed.property == ViewProperty::colors) tree();
  }
  void operator()(const change::FileStateChanged& changed) const {
    if (changed.property != FileProperty::isDirty) tree();
  }
  template <typename Other>
  void operator()(const Other&) const {}
};

std::string pathOf(const QUuid& layerID, SurfaceKind kind) {
  const QString id = uuidText(layerID);
  return (kind == SurfaceKind::mask ? maskEntryPath(id) : layerEntryPath(id)).toStdString();
}

}  // namespace

DocumentCapture::DocumentCapture(const Document& document) : document_(document) {
  forgetAll();
}

void DocumentCapture::forgetAll() {
  marks_.clear();
  layers_.clear();
  pending_.clear();
  nextTile_ = 0;
  capture_ = {};
  isComplete_ = true;
  hasTreeChanged_ = true;
  for (const std::shared_ptr<Layer>& layer : document_.allLayers()) {
    layers_[layer->id] = layer;
    noteLayer(layer->id);
  }
}

void DocumentCapture::restart(const Key& key) {
  if (pending_.empty() || key <= *pending_.begin()) nextTile_ = 0;
  pending_.insert(key);
}

void DocumentCapture::noteLayer(const QUuid& layerID) {
  restart({layerID, SurfaceKind::pixels});
  restart({layerID, SurfaceKind::mask});
}

void DocumentCapture::noteNode(const QUuid& nodeID) {
  hasTreeChanged_ = true;
  const std::optional<LayerNode> node = document_.findNode(nodeID);
  if (!node || node->layer() == nullptr) return;
  layers_[nodeID] = node->layer();
  noteLayer(nodeID);
}

void DocumentCapture::note(const DocumentChanges& changes) {
  const auto treeChanged = [this] { hasTreeChanged_ = true; };
  const Sorter sorter{.node = [this](const QUuid& nodeID) { noteNode(nodeID); },
                      .surface =
                          [this](const QUuid& layerID, SurfaceKind kind) {
                            restart({layerID, kind});
                          },
                      .tree = treeChanged,
                      .everything =
                          [&] {
                            treeChanged();
                            for (const auto& [layerID, layer] : layers_) noteLayer(layerID);
                          }};
  for (const DocumentChange& change : changes) std::visit(sorter, change);
}

bool DocumentCapture::gather(const Key& key, Clock::time_point deadline) {
  const auto found = layers_.find(key.first);
  const std::shared_ptr<Layer> layer = found != layers_.end() ? found->second.lock() : nullptr;
  const ConstTexture surface = layer != nullptr ? layer->surface(key.second) : nullptr;
  if (surface == nullptr) {
    marks_.erase(key);
    capture_.surfaces.erase(pathOf(key.first, key.second));
    return true;
  }
  Marks& marks = marks_[key];
  CapturedSurface& captured = capture_.surfaces[pathOf(key.first, key.second)];
  const bool isNew = marks.tiles.empty() || marks.format != surface->format() ||
                     marks.width != surface->width() || marks.height != surface->height();
  if (isNew) {
    nextTile_ = 0;
    captured = {.format = surface->format(), .isWhole = true, .tiles = {}};
    // No tile has this mark: it is that of a data tile, and their versions begin at 1.
    marks = {surface->format(), surface->width(), surface->height(),
             std::vector<TileMark>(static_cast<std::size_t>(surface->tileCount()))};
  }
  captured.format = surface->format();
  for (; nextTile_ < surface->tileCount(); ++nextTile_) {
    if (nextTile_ % tilesAtOnce == tilesAtOnce - 1 && Clock::now() >= deadline) return false;
    const Tile& tile = surface->tile(nextTile_);
    TileMark& mark = marks.tiles[static_cast<std::size_t>(nextTile_)];
    const TileMark now = TileMark::of(tile);
    if (mark == now) continue;
    mark = now;
    captured.tiles.emplace_back(nextTile_, tile);
  }
  return true;
}

/// Nodes that have gone leave their marks; should they come back, they count as new.
void DocumentCapture::forgetLayersThatHaveGone() {
  std::map<QUuid, std::weak_ptr<Layer>> standing;
  for (const std::shared_ptr<Layer>& layer : document_.allLayers()) standing[layer->id] = layer;
  for (const auto& [layerID, layer] : layers_) {
    if (standing.contains(layerID)) continue;
    for (const SurfaceKind kind : {SurfaceKind::pixels, SurfaceKind::mask}) {
      marks_.erase({layerID, kind});
      pending_.erase({layerID, kind});
      capture_.surfaces.erase(pathOf(layerID, kind));
      nextTile_ = 0;
    }
  }
  layers_ = std::move(standing);
}

void DocumentCapture::shareComposite(Capture& capture) {
  const Clock::time_point now = Clock::now();
  if (thumbnailTime_ && now - *thumbnailTime_ < thumbnailInterval && !isComplete_) return;
  const ConstTexture& composite = document_.compositedTexture.value();
  if (composite == nullptr || composite->tileCount() > mostCompositeTiles || !document_.isCompositeCurrent())
    return;
  thumbnailTime_ = now;
  capture.composite = std::make_shared<const Surface>(*composite);
}

Capture DocumentCapture::finished() {
  Capture capture = std::move(capture_);
  capture_ = {};
  std::erase_if(capture.surfaces,
                [](const auto& entry) { return entry.second.tiles.empty() && !entry.second.isWhole; });
  capture.name = document_.name.value();
  capture.path = document_.sourceFileURL.value().value_or(QString());
  capture.imageFormat = document_.sourceFileFormat.value();
  capture.canvasWidth = document_.canvasWidth.value();
  capture.canvasHeight = document_.canvasHeight.value();
  if (hasTreeChanged_) {
    // A document with an opacity that is no number can't be described; its tree stays as it was recorded.
    if (auto manifest = describeDocument(document_)) capture.manifest = std::move(*manifest);
  }
  shareComposite(capture);
  capture.isComplete = isComplete_;
  capture.known = std::dynamic_pointer_cast<const KnownFile>(document_.fileMemory());
  hasTreeChanged_ = false;
  isComplete_ = false;
  return capture;
}

std::optional<Capture> DocumentCapture::advance(std::chrono::nanoseconds budget) {
  const Clock::time_point deadline = Clock::now() + budget;
  if (hasTreeChanged_) forgetLayersThatHaveGone();
  while (!pending_.empty()) {
    if (!gather(*pending_.begin(), deadline)) return std::nullopt;
    nextTile_ = 0;
    pending_.erase(pending_.begin());
    if (!pending_.empty() && Clock::now() >= deadline) return std::nullopt;
  }
  return finished();
}

}  // namespace orvanel
