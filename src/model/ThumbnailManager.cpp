#include "model/ThumbnailManager.h"

#include <algorithm>
#include <utility>

#include "model/BackgroundCall.h"
#include "model/Document.h"
#include "model/NodeWalk.h"
#include "model/edit/DocumentEdit.h"

namespace orvanel {
namespace {

using Clock = std::chrono::steady_clock;

/// How long the main thread may take to hand out surfaces at a time.
constexpr std::chrono::milliseconds handOutTime{1};

std::shared_ptr<Layer> layerWithID(const Document& document, const QUuid& layerID) {
  const std::optional<LayerNode> node = document.findNode(layerID);
  return node ? node->layer() : nullptr;
}

bool hasStaleThumbnails(const Layer& layer) {
  const bool isMaskStale = layer.mask.value() != nullptr &&
                           (layer.maskThumbnailDirty.value() || layer.maskThumbnailImage.value() == nullptr);
  return layer.thumbnailDirty.value() || layer.channelThumbnailsDirty.value() || isMaskStale;
}

std::optional<Surface> sharedCopy(const ConstTexture& surface) {
  return surface != nullptr ? std::optional<Surface>(*surface) : std::nullopt;
}

}  // namespace

/// Surfaces to make pictures of, for another thread.
struct ThumbnailManager::Job {
  struct LayerSurfaces {
    QUuid layerID;
    std::optional<Surface> pixels;
    std::optional<Surface> mask;
    /// Only compared, and only on the main thread: a layer may get another mask in the meantime.
    std::weak_ptr<LayerMask> maskObject;
  };
  ColorMode mode = ColorMode::rgb8;
  std::vector<LayerSurfaces> layers;
  std::optional<Surface> composite;

  [[nodiscard]] bool isEmpty() const { return layers.empty() && !composite; }
  [[nodiscard]] Pictures pictures() const;
};

struct ThumbnailManager::LayerPictures {
  QUuid layerID;
  std::optional<ColorThumbnails> pixels;
  Thumbnail mask;
  std::weak_ptr<LayerMask> maskObject;
};

struct ThumbnailManager::Pictures {
  std::vector<LayerPictures> layers;
  std::optional<ColorThumbnails> composite;
};

ThumbnailManager::Pictures ThumbnailManager::Job::pictures() const {
  Pictures made;
  for (const LayerSurfaces& layer : layers) {
    LayerPictures pictures{
        .layerID = layer.layerID, .pixels = std::nullopt, .mask = nullptr, .maskObject = layer.maskObject};
    if (layer.pixels) pictures.pixels = ThumbnailGenerator::colorThumbnails(*layer.pixels, mode);
    if (layer.mask) pictures.mask = ThumbnailGenerator::maskThumbnail(*layer.mask);
    made.layers.push_back(std::move(pictures));
  }
  if (composite) made.composite = ThumbnailGenerator::colorThumbnails(*composite, mode);
  return made;
}

ThumbnailManager::ThumbnailManager(Document& document) : document_(document) {
  const auto prepare = [](QTimer& timer, std::function<void()> due) {
    timer.setSingleShot(true);
    timer.setInterval(debounceInterval);
    QObject::connect(&timer, &QTimer::timeout, &timer, std::move(due));
  };
  prepare(layerDebounce_, [this] { refreshLayers(); });
  prepare(compositeDebounce_, [this] { refreshComposite(); });
}

ThumbnailManager::~ThumbnailManager() = default;

// Holds.

ThumbnailManager::Hold::Hold(const std::shared_ptr<Document>& document, Step first, Step last)
    : document_(document), last_(last) {
  (document->thumbnailManager.get()->*first)();
}

ThumbnailManager::Hold& ThumbnailManager::Hold::operator=(Hold&& other) noexcept {
  if (this == &other) return *this;
  end();
  document_ = std::exchange(other.document_, {});
  last_ = other.last_;
  return *this;
}

void ThumbnailManager::Hold::end() {
  const auto document = std::exchange(document_, {}).lock();
  if (document != nullptr) (document->thumbnailManager.get()->*last_)();
}

ThumbnailManager::Hold ThumbnailManager::viewing(const std::shared_ptr<Document>& document) {
  return {document, &ThumbnailManager::viewerCame, &ThumbnailManager::viewerLeft};
}

ThumbnailManager::Hold ThumbnailManager::editingContinuously(const std::shared_ptr<Document>& document) {
  return {document, &ThumbnailManager::beginContinuousEditing, &ThumbnailManager::endContinuousEditing};
}

void ThumbnailManager::viewerCame() {
  if (++viewers_ > 1) return;
  // What was marked while nobody looked is made now.
  for (const std::shared_ptr<Layer>& layer : document_.allLayers()) {
    if (hasStaleThumbnails(*layer)) layerMarked(layer->id);
  }
  scheduleCompositeRefresh();
}

void ThumbnailManager::viewerLeft() {
  if (--viewers_ > 0) return;
  layerDebounce_.stop();
  compositeDebounce_.stop();
}

void ThumbnailManager::endContinuousEditing() {
  if (continuousEditingCount_ == 0 || --continuousEditingCount_ > 0) return;
  const bool isPending = std::exchange(isCompositePending_, false);
  // One that is out of date is flattened soon, which asks for a refresh of its own.
  if (isPending && isViewed() && document_.isCompositeCurrent()) refreshComposite();
}

// Marks.

void ThumbnailManager::markDirty(const QUuid& layerID) {
  const std::shared_ptr<Layer> layer = layerWithID(document_, layerID);
  if (layer != nullptr) DocumentEdit(document_, editKind::state).renewThumbnails(*layer);
}

void ThumbnailManager::layerMarked(const QUuid& layerID) {
  dirtyLayerIDs_.insert(layerID);
  if (isViewed()) layerDebounce_.start();
}

void ThumbnailManager::nodeCame(const LayerNode& node) {
  if (!isViewed()) return;
  forEachNode({node}, [this](const LayerNode& inserted) {
    const std::shared_ptr<Layer> layer = inserted.layer();
    if (layer != nullptr && hasStaleThumbnails(*layer)) layerMarked(layer->id);
  });
}

bool ThumbnailManager::isWaiting(const QUuid& layerID) const {
  return dirtyLayerIDs_.contains(layerID) || std::ranges::find(dueLayers_, layerID) != dueLayers_.end();
}

void ThumbnailManager::scheduleCompositeRefresh() {
  if (isViewed()) compositeDebounce_.start();
}

// Refreshes.

void ThumbnailManager::refreshComposite() {
  isCompositePending_ = continuousEditingCount_ > 0;
  if (isCompositePending_) return;
  isCompositeDue_ = true;
  startNextJob();
}

void ThumbnailManager::refreshLayers() {
  dueLayers_.insert(dueLayers_.end(), dirtyLayerIDs_.begin(), dirtyLayerIDs_.end());
  dirtyLayerIDs_.clear();
  startNextJob();
}

void ThumbnailManager::startNextJob() {
  if (isWorking_) return;
  // What a drag shows is made at its end, which marks the layer; writing it earlier would hold up the drag.
  if (!dueLayers_.empty() && continuousEditingCount_ == 0) document_.settle();
  if (isWorking_) return;
  auto job = std::make_shared<Job>();
  job->mode = document_.colorMode.value();
  if (std::exchange(isCompositeDue_, false)) job->composite = sharedCopy(document_.compositedTexture.value());
  const Clock::time_point deadline = Clock::now() + handOutTime;
  auto next = dueLayers_.begin();
  for (; next != dueLayers_.end() && Clock::now() < deadline; ++next) {
    const std::shared_ptr<Layer> layer = layerWithID(document_, *next);
    if (layer == nullptr) continue;
    job->layers.push_back({.layerID = layer->id,
                           .pixels = sharedCopy(layer->surface(SurfaceKind::pixels)),
                           .mask = sharedCopy(layer->surface(SurfaceKind::mask)),
                           .maskObject = layer->mask.value()});
  }
  dueLayers_.erase(dueLayers_.begin(), next);
  if (job->isEmpty() && dueLayers_.empty()) return;

  isWorking_ = true;
  runInBackground([job = std::move(job), weak = document_.weak_from_this()]() mutable {
    auto pictures = std::make_shared<Pictures>(job->pictures());
    // The tiles are let go here, because a shared tile costs the next edit a copy.
    job = nullptr;
    runOnMainThread([weak = std::move(weak), pictures] {
      if (const auto document = weak.lock()) document->thumbnailManager->land(std::move(*pictures));
    });
  });
}

void ThumbnailManager::land(Pictures pictures) {
  isWorking_ = false;
  {
    DocumentEdit edit(document_, editKind::state);
    for (const LayerPictures& made : pictures.layers) {
      const std::shared_ptr<Layer> layer = layerWithID(document_, made.layerID);
      if (layer == nullptr) continue;
      // A layer that was edited in the meantime stays marked.
      const bool isStale = isWaiting(made.layerID);
      if (made.pixels) edit.setThumbnails(*layer, *made.pixels, isStale);
      const std::shared_ptr<LayerMask> mask = made.maskObject.lock();
      if (made.mask != nullptr && mask != nullptr && mask == layer->mask.value()) {
        edit.setMaskThumbnail(*layer, made.mask, isStale);
      }
    }
    if (pictures.composite) edit.setCompositeThumbnails(std::move(*pictures.composite));
  }
  startNextJob();
}

}  // namespace orvanel
