// Decides when a document's thumbnails are made: a moment after the last change, the composite's never in the
// middle of a drag, and only while something shows them, so that an idle program isn't woken for pictures
// that nobody sees. The pictures are made in the background from surfaces that share their tiles. Owned by
// its document; main thread only.
#pragma once

#include <QTimer>
#include <QUuid>
#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "model/ThumbnailGenerator.h"

namespace orvanel {

class Document;

class ThumbnailManager {
 public:
  /// How long a document has to be left alone before its thumbnails are made.
  static constexpr std::chrono::milliseconds debounceInterval{150};

  explicit ThumbnailManager(Document& document);
  ~ThumbnailManager();
  ThumbnailManager(const ThumbnailManager&) = delete;
  ThumbnailManager& operator=(const ThumbnailManager&) = delete;

  /// Something that lasts until it is destroyed. May outlive the document.
  class Hold {
   public:
    Hold() = default;
    Hold(Hold&&) noexcept = default;
    Hold& operator=(Hold&& other) noexcept;
    ~Hold() { end(); }

   private:
    friend class ThumbnailManager;
    using Step = void (ThumbnailManager::*)();
    Hold(const std::shared_ptr<Document>& document, Step first, Step last);
    void end();

    std::weak_ptr<Document> document_;
    Step last_ = nullptr;
  };

  /// Keeps the thumbnails up to date, for what shows them.
  [[nodiscard]] static Hold viewing(const std::shared_ptr<Document>& document);
  [[nodiscard]] bool isViewed() const { return viewers_ > 0; }

  /// A drag that changes pixels at every step: the composite's thumbnails wait for its end.
  [[nodiscard]] static Hold editingContinuously(const std::shared_ptr<Document>& document);
  void beginContinuousEditing() { ++continuousEditingCount_; }
  /// At the end of the last one the composite's thumbnails that came due meanwhile are made at once.
  void endContinuousEditing();
  [[nodiscard]] int continuousEditingCount() const { return continuousEditingCount_; }

  /// Marks all thumbnails of a layer as stale.
  void markDirty(const QUuid& layerID);
  /// To be called whenever the composite has changed.
  void scheduleCompositeRefresh();
  /// The layers whose thumbnails are waiting to be made.
  [[nodiscard]] const std::set<QUuid>& dirtyLayerIDs() const { return dirtyLayerIDs_; }

 private:
  friend class DocumentEdit;

  struct Job;
  struct LayerPictures;
  struct Pictures;

  void viewerCame();
  void viewerLeft();
  /// The layer has been marked: makes its thumbnails after the debounce.
  void layerMarked(const QUuid& layerID);
  /// A node has entered the tree: makes what its layers lack.
  void nodeCame(const LayerNode& node);
  [[nodiscard]] bool isWaiting(const QUuid& layerID) const;
  void refreshComposite();
  void refreshLayers();
  /// Starts the next piece of work unless one is under way, so that results arrive in order.
  void startNextJob();
  void land(Pictures pictures);

  Document& document_;
  int viewers_ = 0;
  int continuousEditingCount_ = 0;
  std::set<QUuid> dirtyLayerIDs_;
  QTimer layerDebounce_;
  QTimer compositeDebounce_;
  /// The composite's refresh came due during continuous editing.
  bool isCompositePending_ = false;

  /// Work that is due, in order.
  std::vector<QUuid> dueLayers_;
  bool isCompositeDue_ = false;
  bool isWorking_ = false;
};

}  // namespace orvanel
