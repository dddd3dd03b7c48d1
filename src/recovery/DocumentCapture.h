// Notices what changes in a document and gathers it for the next record, a moment of the main thread at a
// time: tiles are shared, not copied. Owned by the document's journal; main thread only. What it gathers goes
// to another thread.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "io/document/Manifest.h"
#include "io/document/SavedFile.h"
#include "io/files/KnownFile.h"
#include "model/Document.h"

namespace orvanel {

/// The tiles of one surface, by their index. One may occur more than once; the last one counts.
struct CapturedSurface {
  PixelFormat format = PixelFormat::rgba8Unorm;
  /// Whether these are all the tiles of the surface.
  bool isWhole = false;
  std::vector<std::pair<int, Tile>> tiles;
};

/// A consistent set of the changes since the capture before.
struct Capture {
  QString name;
  QString path;
  std::optional<Document::ImageFileFormat> imageFormat;
  int canvasWidth = 1;
  int canvasHeight = 1;
  /// If the tree or its properties have changed.
  std::optional<Manifest> manifest;
  /// By the path of their entries in a document's archive.
  std::map<std::string, CapturedSurface> surfaces;
  /// For the thumbnail, now and then. Null if there is no current one.
  std::shared_ptr<const Surface> composite;
  /// Whether it holds the whole document.
  bool isComplete = false;
  /// The document's file as it was read or written; may be null.
  KnownFilePtr known;
};

class DocumentCapture {
 public:
  /// The document must outlive it. Everything counts as changed.
  explicit DocumentCapture(const Document& document);

  void note(const DocumentChanges& changes);
  /// What was captured before is lost: everything counts as changed again.
  void forgetAll();
  /// Whether anything has changed that a record would hold.
  [[nodiscard]] bool hasChanges() const { return hasTreeChanged_ || !pending_.empty(); }

  /// Gathers for about this long; the next call continues from there. Changes in between are gathered as
  /// well, so that what it returns in the end is the document of that moment.
  [[nodiscard]] std::optional<Capture> advance(std::chrono::nanoseconds budget);

 private:
  using Key = std::pair<QUuid, SurfaceKind>;
  /// The tiles of a surface when they were last captured: versions and uniform pixels, which need no memory
  /// of the tiles.
  struct Marks {
    PixelFormat format = PixelFormat::rgba8Unorm;
    int width = 0;
    int height = 0;
    std::vector<TileMark> tiles;
  };

  void noteNode(const QUuid& nodeID);
  void noteLayer(const QUuid& layerID);
  void forgetLayersThatHaveGone();
  void restart(const Key& key);
  [[nodiscard]] bool gather(const Key& key, std::chrono::steady_clock::time_point deadline);
  void shareComposite(Capture& capture);
  [[nodiscard]] Capture finished();

  const Document& document_;
  std::map<QUuid, std::weak_ptr<Layer>> layers_;
  std::map<Key, Marks> marks_;
  std::set<Key> pending_;
  /// Where gathering of the first pending surface continues.
  int nextTile_ = 0;
  bool hasTreeChanged_ = true;
  bool isComplete_ = true;
  Capture capture_;
  std::optional<std::chrono::steady_clock::time_point> thumbnailTime_;
};

}  // namespace orvanel
