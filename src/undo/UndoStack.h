// A document's linear history, bounded by a number of records and a number of bytes. Owned by its document
// for life. Main thread only; `memoryCost` of a record may take a snapshot's lock.
#pragma once

#include <QProperty>
#include <QString>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "undo/UndoableOperation.h"

namespace orvanel {

class UndoStack {
 public:
  using Record = std::shared_ptr<UndoableOperation>;

  /// Bytes and records the history may hold; enforced at the next push, not when set.
  QProperty<std::int64_t> memoryBudget{524288000};
  QProperty<std::int64_t> maxOperations{100};
  /// Index of the last applied record; -1 when nothing is applied.
  QProperty<std::int64_t> currentIndex{-1};
  /// Counts every change of `operations`, for observers.
  QProperty<std::uint64_t> revision{0};

  /// Oldest first; records above `currentIndex` are the redo tail.
  [[nodiscard]] const std::vector<Record>& operations() const { return operations_; }

  /// Records an operation that has been applied already. The redo tail is lost.
  void push(Record operation);
  /// As `push`, then applies the operation before limits are enforced.
  void pushAndRedo(Record operation);
  /// As `pushAndRedo`; a run of opacity changes of one node becomes one record.
  void pushOpacityChange(Record operation);

  void undo();
  void redo();

  /// The record that the next undo takes back, or the next redo carries out; null when there is none.
  [[nodiscard]] std::shared_ptr<const UndoableOperation> nextUndo() const {
    return recordAt(currentIndex.value());
  }
  [[nodiscard]] std::shared_ptr<const UndoableOperation> nextRedo() const {
    return recordAt(currentIndex.value() + 1);
  }
  [[nodiscard]] std::optional<QString> undoActionName() const;
  [[nodiscard]] std::optional<QString> redoActionName() const;

  /// Evicts the oldest records until both limits hold; the newest is never evicted for its bytes. Before it
  /// evicts for bytes, raw tiles kept for quick steps are let go, and compression gets up to half a second
  /// while it promises to make room.
  void enforceLimits();
  /// Bytes over all records, the redo tail included.
  [[nodiscard]] std::int64_t totalMemoryCost() const;

 private:
  [[nodiscard]] Record recordAt(std::int64_t index) const;
  void dropRedoTail();
  void append(Record operation);
  void evictOldest(std::int64_t count);
  /// Nothing is evicted for bytes that are about to shrink.
  void awaitCompression();
  void evictBeyond(std::int64_t bytes);
  /// Updates which records are ready, after the position has changed.
  void positionChanged();
  void operationsChanged();
  [[nodiscard]] bool isOverBudget() const;
  /// While the history is over its budget, takes readiness from its records, the oldest first.
  void dropReadiness();

  std::vector<Record> operations_;
  std::array<Record, 2> ready_;  ///< the records next to the position, older first
};

}  // namespace orvanel
