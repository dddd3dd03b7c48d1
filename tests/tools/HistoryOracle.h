// A plain model of a document's history: a deep copy of the document for every position, and what the
// selection must be. Tests compare a document with it after every step.
#pragma once

#include <QStringList>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "model/Document.h"

namespace orvanel::test {

/// Everything that the history of pixels, masks and tree must bring back, as plain values.
struct DocumentState {
  /// Canvas, mode, and every node in order with its identity and properties.
  QString outline;
  /// The bytes of all layers and masks, in tree order.
  std::vector<std::vector<std::byte>> pixels;

  [[nodiscard]] static DocumentState of(const Document& document);
  friend bool operator==(const DocumentState&, const DocumentState&) = default;
};

/// A missing selection is the same as an empty one.
struct SelectionState {
  bool hasSelection = false;
  bool isFullSelection = false;
  /// Empty when all is zero.
  std::vector<std::byte> mask;

  [[nodiscard]] static SelectionState of(const Document& document);
  friend bool operator==(const SelectionState&, const SelectionState&) = default;
};

/// What a record touches, which decides what a step over it does to the selection.
enum class RecordKind { contents, selection, canvas };

class HistoryOracle {
 public:
  explicit HistoryOracle(const Document& document);

  /// Follows a command that has just run: the document must have gained one record (or merged it into the
  /// last), lost its redo tail and perhaps its oldest records; or nothing at all must have happened.
  /// `opacityNode`: the command changed the opacity of this node, which merges with a last record that did
  /// the same. Returns whether there is a new record.
  bool recordCommand(const Document& document, const std::optional<QUuid>& opacityNode);
  void undo(const Document& document);
  void redo(const Document& document);

  [[nodiscard]] std::size_t evicted() const { return evicted_; }
  [[nodiscard]] RecordKind lastKind() const { return steps_.back().kind; }

 private:
  struct Step {
    UndoStack::Record record;
    QString name;
    RecordKind kind = RecordKind::contents;
    SelectionState selectionBefore;
    SelectionState selectionAfter;
    std::optional<QUuid> opacityNode;
  };
  using States = std::deque<std::shared_ptr<const DocumentState>>;

  void expectUnchanged(const Document& document) const;
  void expectPosition(const Document& document) const;
  void crossSelection(const Step& step, const SelectionState& target);

  std::deque<Step> steps_;
  States states_;  ///< one more than steps; `states_[i]` stands after i steps
  SelectionState selection_;
  std::ptrdiff_t index_ = -1;
  std::size_t evicted_ = 0;
};

}  // namespace orvanel::test
