// What the current edit has done so far; reported when it ends. Owned by the document; main thread only.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "model/Document.h"
#include "model/edit/SurfaceTrace.h"

namespace orvanel {

struct Document::Batch {
  /// The previous contents of a surface that was handed out for writing.
  struct TouchedSurface {
    std::shared_ptr<Layer> layer;
    SurfaceKind kind = SurfaceKind::pixels;
    SurfaceTrace before;
    bool renewsThumbnails = false;
  };
  struct TouchedSelection {
    std::shared_ptr<const Selection> object;
    SurfaceTrace before;
    Selection::Flags flags;
  };

  DocumentChanges changes;
  std::set<std::pair<QUuid, NodeProperty>> toldProperties;
  std::set<std::optional<QUuid>> toldThumbnails;
  std::vector<TouchedSurface> surfaces;
  std::optional<TouchedSelection> selection;
  bool isUnsavedChange = false;
  bool recomposites = false;
};

}  // namespace orvanel
