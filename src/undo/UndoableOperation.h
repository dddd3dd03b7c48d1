// One step of a document's history, which can be undone and redone. Main thread only.
#pragma once

#include <QString>
#include <cstdint>
#include <memory>

#include "undo/ChangedTiles.h"

namespace orvanel {

/// Records hold their document weakly and name nodes by id; a record whose document is gone does nothing.
class UndoableOperation {
 public:
  virtual ~UndoableOperation() = default;

  /// The word shown in the menu, for example "Opacity".
  [[nodiscard]] virtual QString actionName() const = 0;
  virtual void redo() = 0;
  virtual void undo() = 0;
  /// Bytes that exist because of the record now; falls as its snapshots are compressed.
  [[nodiscard]] virtual std::int64_t memoryCost() const = 0;

  /// The most pixel memory that the next step over it can take: an undo while it is applied, else a redo.
  struct StepCost {
    /// Where the tree or a node's properties change, this includes flattening.
    std::uint64_t bytes = 0;
    /// Tiles of the canvas whose pixels change, in any order; flattening them is not included.
    ChangedTiles tiles = {};
  };
  [[nodiscard]] virtual StepCost costToStep() const { return {}; }

  /// Called when the record becomes one of the two next to the history's position, and when it ceases to be.
  /// The next step may be this record's, so it should be fast, at the cost of some memory.
  virtual void setReady(bool isReady) { (void)isReady; }

  /// Whether the change stands in the document or has been undone; kept up to date by the history. What a
  /// record adds to the document belongs to the document while the record is applied.
  [[nodiscard]] bool isApplied() const { return isApplied_; }
  void setApplied(bool isApplied) { isApplied_ = isApplied; }

  /// A record that replaces this one followed by `next`, or null when the two can't be merged.
  [[nodiscard]] virtual std::shared_ptr<UndoableOperation> coalescedWith(
      const UndoableOperation& next) const {
    (void)next;
    return nullptr;
  }

 private:
  bool isApplied_ = true;
};

}  // namespace orvanel
