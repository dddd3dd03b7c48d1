// Foretells, tile by tile, what flattening a tree as it will be makes: the data tiles of the canvas and of
// the temporaries of isolating folders, and how many more they are than now. A part of `editCost`; lives for
// a question. Main thread only.
#pragma once

#include <QSet>
#include <QUuid>
#include <memory>
#include <optional>
#include <vector>

#include "model/edit/FlatteningCost.h"
#include "raster/TileContribution.h"

namespace orvanel::editCost {

class FlattenedTiles {
 public:
  FlattenedTiles(const Document& document, const PixelChange& pixels, const TreeChange& tree);

  /// Of each tile of the canvas: how many data tiles more than now, if it is flattened.
  [[nodiscard]] std::vector<int> growth() const;

 private:
  struct Target {
    std::vector<TileOutcome> tiles;
    bool isOnPath = false;   ///< shows the layer whose pixels change
    bool isCertain = false;  ///< whether the folder isolates for certain
  };
  /// Data tiles at one place.
  struct Count {
    int canvas = 0;
    int certain = 0;   ///< of temporaries that are used for certain
    int possible = 0;  ///< of others
  };

  /// A layer that lies over a target.
  struct Above {
    const Layer& layer;
    const Surface& pixels;
    const Surface* mask;  ///< null if it doesn't fit
    bool isMaskEnabled;
    bool isKnown;      ///< whether its properties are those that it has
    bool mayBeEdited;  ///< whether pixels that change may be its own
  };

  void findPath(const std::optional<QUuid>& layerID);
  void walk(const LayerNodeList& nodes, bool isInserted);
  [[nodiscard]] bool enter(const LayerNode& node, const std::shared_ptr<LayerFolder>& parent,
                           bool isInserted);
  void leave(const LayerFolder& folder);
  void insert();
  [[nodiscard]] bool isIsolating(const LayerFolder& folder) const;
  [[nodiscard]] bool isIsolatingForCertain(const LayerFolder& folder) const;
  void pushTarget(bool isOnPath, bool isCertain);
  void composite(const Layer& layer, bool isKnown);
  [[nodiscard]] TileOutcome composited(TileOutcome below, const Above& above, std::size_t place) const;
  void finishFolder();
  void finishCanvas();
  [[nodiscard]] std::vector<Count> standing() const;

  const Document& document_;
  const TreeChange& tree_;
  std::vector<TileOutcome> changed_;  ///< what the pixels that change make of a tile at least
  PixelFormat format_;
  bool isAnyLayer_;
  QSet<QUuid> path_;  ///< the layer whose pixels change, and the folders that it is in
  std::shared_ptr<const LayerFolder> destination_;
  std::shared_ptr<const LayerFolder> source_;
  bool isInsertionPending_;
  std::int64_t passed_ = 0;      ///< nodes below the destination
  std::vector<bool> areKnown_;   ///< whether what the folders that are walked through show is known
  std::vector<Target> targets_;  ///< from the canvas to the folder that is walked through
  std::vector<Count> counts_;
  int certainTemporaries_ = 0;
  int possibleTemporaries_ = 0;
};

}  // namespace orvanel::editCost
