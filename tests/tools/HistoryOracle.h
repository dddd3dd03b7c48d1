// A simple model of a document's history: a deep copy of the document for every position, and the expected
// selection. Tests compare a document with it after every step.
#pragma once

#include <QStringList>
#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "model/Document.h"

namespace orvanel::test {

/// Everything that pixel, mask and tree records must restore, as plain values.
struct DocumentState {
  /// Canvas, mode, and every node in order with its identity and properties.
  QString outline;
  /// Every node's folder; none at the root.
  std::map<QUuid, std::optional<QUuid>> parents;
  /// The bytes of all layers and masks, in tree order.
  std::vector<std::vector<std::byte>> pixels;

  [[nodiscard]] static DocumentState of(const Document& document);
  friend bool operator==(const DocumentState&, const DocumentState&) = default;
};

/// A missing selection equals an empty one.
struct SelectionState {
  bool hasSelection = false;
  bool isFullSelection = false;
  /// Empty if all values are zero.
  std::vector<std::byte> mask;

  [[nodiscard]] static SelectionState of(const Document& document);
  friend bool operator==(const SelectionState&, const SelectionState&) = default;
};

/// State that isn't recorded and no step may change: it stays with its node or mask throughout the history.
class UnrecordedState {
 public:
  explicit UnrecordedState(const Document& document) { accept(document); }

  /// Accepts the current state, after the user has changed it.
  void accept(const Document& document) { follow(document, Change::allowed); }
  /// Expects all known values to be unchanged, and adopts new ones.
  void expectUnchanged(const Document& document) { follow(document, Change::none); }
  /// The layer has lost its mask, so edits go to its pixels.
  void maskHasGone(const QUuid& layerID) { editsMask_[layerID] = false; }

 private:
  enum class Change { none, allowed };

  void follow(const Document& document, Change change);
  void followNodes(const LayerNodeList& nodes, Change change, std::map<QUuid, QUuid>& attached);
  void followMask(const Layer& layer, Change change, std::map<QUuid, QUuid>& attached);
  static void compare(std::map<QUuid, bool>& known, const QUuid& id, bool value, Change change,
                      const char* what);

  std::map<QUuid, bool> isExpanded_;  ///< by folder
  std::map<QUuid, bool> editsMask_;   ///< by layer
  std::map<QUuid, bool> isEnabled_;   ///< by the first mask in a chain of replacements
  /// A change of the canvas replaces a layer's mask object; the new one continues the old one's state.
  std::map<QUuid, QUuid> firstOfLine_;  ///< by mask
  std::map<QUuid, QUuid> attached_;     ///< the mask of each layer in the tree
};

/// What a record changes; determines how a step over it affects the selection.
enum class RecordKind { contents, selection, canvas };

/// Facts about a command that the document's state alone doesn't reveal.
struct CommandFacts {
  /// The node whose opacity the command changed. The record merges with a previous one for the same node.
  std::optional<QUuid> opacityNode;
  /// The node that the command moved.
  std::optional<QUuid> movedNode;
};

class HistoryOracle {
 public:
  explicit HistoryOracle(const Document& document);

  /// Checks a command that has just run: either it added one record (or merged it into the last one), dropped
  /// the redo tail and possibly evicted the oldest records, or nothing happened at all. Returns whether there
  /// is a new record.
  bool recordCommand(const Document& document, const CommandFacts& facts);
  void undo(const Document& document);
  void redo(const Document& document);

  [[nodiscard]] std::size_t evicted() const { return evicted_; }
  [[nodiscard]] RecordKind lastKind() const { return steps_.back().kind; }

 private:
  using NodeID = std::optional<QUuid>;
  enum class Direction { undo, redo };
  /// The active nodes after undo and redo of a record that determines them.
  struct ActiveNodes {
    NodeID afterUndo;
    NodeID afterRedo;
  };

  struct Step {
    /// Weak, because an evicted record kept alive would share in the cost of those that remain.
    std::weak_ptr<UndoableOperation> record;
    QString name;
    RecordKind kind = RecordKind::contents;
    SelectionState selectionBefore;
    SelectionState selectionAfter;
    std::optional<QUuid> opacityNode;
    /// None for a record that doesn't affect the active node.
    std::optional<ActiveNodes> activeNodes;
    /// The layer whose mask the record attaches or detaches.
    NodeID maskedLayer;
  };
  using States = std::deque<std::shared_ptr<const DocumentState>>;

  void expectUnchanged(const Document& document) const;
  void expectPosition(const Document& document) const;
  void crossSelection(const Step& step, const SelectionState& target);
  void crossMask(const Step& step, Direction direction);
  void crossActiveNode(const Step& step, Direction direction);
  void expectUnrecorded(const Document& document);
  [[nodiscard]] std::optional<ActiveNodes> activeNodesOf(const QString& name, const CommandFacts& facts,
                                                         const DocumentState& now,
                                                         const NodeID& activeNow) const;

  std::deque<Step> steps_;
  States states_;  ///< one more than steps; `states_[i]` is the state after i steps
  SelectionState selection_;
  NodeID active_;
  UnrecordedState unrecorded_;
  std::ptrdiff_t index_ = -1;
  std::size_t evicted_ = 0;
};

}  // namespace orvanel::test
