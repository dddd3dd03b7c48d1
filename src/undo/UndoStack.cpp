#include "undo/UndoStack.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "undo/TextureSnapshot.h"

namespace orvanel {
namespace {

using Clock = std::chrono::steady_clock;

// A pause that users barely notice, after which it shows whether compression keeps up.
constexpr std::chrono::milliseconds firstWait{40};
// No edit is held up for longer, and only one that rewrites hundreds of megabytes is held up for as long.
constexpr std::chrono::milliseconds longestWait{500};

}  // namespace

void UndoStack::push(Record operation) {
  dropRedoTail();
  append(std::move(operation));
  positionChanged();
  enforceLimits();
}

void UndoStack::pushAndRedo(Record operation) {
  dropRedoTail();
  const Record applied = operation;
  append(std::move(operation));
  applied->redo();
  positionChanged();
  enforceLimits();
}

void UndoStack::pushOpacityChange(Record operation) {
  dropRedoTail();
  const Record applied = operation;
  Record merged = operations_.empty() ? nullptr : operations_.back()->coalescedWith(*applied);
  if (merged != nullptr) {
    operations_.back() = std::move(merged);
    operationsChanged();
  } else {
    append(std::move(operation));
  }
  applied->redo();
  positionChanged();
  enforceLimits();
}

void UndoStack::undo() {
  if (currentIndex.value() < 0) return;
  const Record record = operations_[static_cast<std::size_t>(currentIndex.value())];
  record->undo();
  record->setApplied(false);
  currentIndex = currentIndex.value() - 1;
  positionChanged();
  dropReadiness();
}

void UndoStack::redo() {
  if (currentIndex.value() >= std::ssize(operations_) - 1) return;
  currentIndex = currentIndex.value() + 1;
  const Record record = operations_[static_cast<std::size_t>(currentIndex.value())];
  record->redo();
  record->setApplied(true);
  positionChanged();
  dropReadiness();
}

UndoStack::Record UndoStack::recordAt(std::int64_t index) const {
  if (index < 0 || index >= std::ssize(operations_)) return nullptr;
  return operations_[static_cast<std::size_t>(index)];
}

std::optional<QString> UndoStack::undoActionName() const {
  const auto record = nextUndo();
  return record != nullptr ? std::optional(record->actionName()) : std::nullopt;
}

std::optional<QString> UndoStack::redoActionName() const {
  const auto record = nextRedo();
  return record != nullptr ? std::optional(record->actionName()) : std::nullopt;
}

void UndoStack::enforceLimits() {
  evictOldest(std::ssize(operations_) - maxOperations.value());
  if (!isOverBudget()) return;
  dropReadiness();
  if (operations_.size() >= 2) awaitCompression();
  evictBeyond(memoryBudget.value());
}

void UndoStack::awaitCompression() {
  const Clock::time_point deadline = Clock::now() + longestWait;
  for (std::int64_t excess = totalMemoryCost() - memoryBudget.value(); excess > 0;) {
    TextureSnapshot::helpCompression(firstWait, [this] { return !isOverBudget(); });
    const std::int64_t left = totalMemoryCost() - memoryBudget.value();
    const std::int64_t saved = excess - left;
    // Waiting is futile if at this pace there won't be room in time.
    const std::int64_t waits = (deadline - Clock::now()) / firstWait;
    if (saved <= 0 || left > saved * waits) return;
    excess = left;
  }
}

void UndoStack::evictBeyond(std::int64_t bytes) {
  // Snapshots share bytes, so evicting a record raises the shares of others. Count again until the limit
  // holds.
  for (std::int64_t cost = totalMemoryCost(); cost > bytes && operations_.size() >= 2;
       cost = totalMemoryCost()) {
    std::int64_t evicted = 0;
    while (cost > bytes && std::ssize(operations_) - evicted >= 2) {
      cost -= operations_[static_cast<std::size_t>(evicted)]->memoryCost();
      ++evicted;
    }
    evictOldest(evicted);
  }
}

bool UndoStack::isOverBudget() const {
  return totalMemoryCost() > memoryBudget.value();
}

void UndoStack::dropReadiness() {
  for (Record& record : ready_) {
    if (record == nullptr) continue;
    if (!isOverBudget()) return;
    record->setReady(false);
    record = nullptr;
  }
}

void UndoStack::evictOldest(std::int64_t count) {
  const std::int64_t evicted = std::clamp<std::int64_t>(count, 0, std::ssize(operations_));
  if (evicted == 0) return;
  operations_.erase(operations_.begin(), operations_.begin() + evicted);
  currentIndex = std::max<std::int64_t>(currentIndex.value() - evicted, -1);
  operationsChanged();
}

std::int64_t UndoStack::totalMemoryCost() const {
  std::int64_t cost = 0;
  for (const Record& record : operations_) cost += record->memoryCost();
  return cost;
}

void UndoStack::operationsChanged() {
  // Records that have left the history must not hold raw tiles any longer.
  for (Record& record : ready_) {
    if (record == nullptr || std::ranges::find(operations_, record) != operations_.end()) continue;
    record->setReady(false);
    record = nullptr;
  }
  revision = revision.value() + 1;
}

void UndoStack::positionChanged() {
  std::array<Record, 2> beside{recordAt(currentIndex.value()), recordAt(currentIndex.value() + 1)};
  for (const Record& record : ready_) {
    if (record != nullptr && record != beside[0] && record != beside[1]) record->setReady(false);
  }
  for (const Record& record : beside) {
    if (record != nullptr) record->setReady(true);
  }
  ready_ = std::move(beside);
}

void UndoStack::dropRedoTail() {
  const auto kept = static_cast<std::size_t>(currentIndex.value() + 1);
  if (kept >= operations_.size()) return;
  operations_.resize(kept);
  operationsChanged();
}

void UndoStack::append(Record operation) {
  operations_.push_back(std::move(operation));
  currentIndex = std::ssize(operations_) - 1;
  operationsChanged();
}

}  // namespace orvanel
