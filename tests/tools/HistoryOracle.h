// A plain model of a document's history: a deep copy of the document for every position, and what the
// selection must be. Tests compare a document with it after every step.
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

/// Everything that the history of pixels, masks and tree must bring back, as plain values.
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

/// A missing selection is the same as an empty one.
struct SelectionState {
  bool hasSelection = false;
  bool isFullSelection = false;
  /// Empty when all is zero.
  std::vector<std::byte> mask;

  [[nodiscard]] static SelectionState of(const Document& document);
  friend bool operator==(const SelectionState&, const SelectionState&) = default;
};

/// What no record keeps and no step may change: it stays with its node, or its mask, through all of history.
class UnrecordedState {
 public:
  explicit UnrecordedState(const Document& document) { accept(document); }

  /// Takes things as they stand, after the user has changed them.
  void accept(const Document& document) { follow(document, Change::allowed); }
  /// Nothing known has changed; what is new is taken as it stands.
  void expectUnchanged(const Document& document) { follow(document, Change::none); }
  /// The layer has lost its mask: edits go to its pixels.
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
  std::map<QUuid, bool> isEnabled_;   ///< by the first mask of a line
  /// A change of the canvas gives a layer another mask object, which stands for the one before.
  std::map<QUuid, QUuid> firstOfLine_;  ///< by mask
  std::map<QUuid, QUuid> attached_;     ///< the mask of each layer in the tree
};

/// What a record touches, which decides what a step over it does to the selection.
enum class RecordKind { contents, selection, canvas };

/// What a document's state alone doesn't tell of a command.
struct CommandFacts {
  /// The command changed the opacity of this node, which merges with a last record that did the same.
  std::optional<QUuid> opacityNode;
  /// The command moved this node.
  std::optional<QUuid> movedNode;
};

class HistoryOracle {
 public:
  explicit HistoryOracle(const Document& document);

  /// Follows a command that has just run: the document must have gained one record (or merged it into the
  /// last), lost its redo tail and perhaps its oldest records; or nothing at all must have happened.
  /// Returns whether there is a new record.
  bool recordCommand(const Document& document, const CommandFacts& facts);
  void undo(const Document& document);
  void redo(const Document& document);

  [[nodiscard]] std::size_t evicted() const { return evicted_; }
  [[nodiscard]] RecordKind lastKind() const { return steps_.back().kind; }

 private:
  using NodeID = std::optional<QUuid>;
  enum class Direction { undo, redo };
  /// Which node is active after steps over a record that decides it.
  struct ActiveNodes {
    NodeID afterUndo;
    NodeID afterRedo;
  };

  struct Step {
    /// Not kept alive: an evicted record that lived on would share in the bytes of those that stay.
    std::weak_ptr<UndoableOperation> record;
    QString name;
    RecordKind kind = RecordKind::contents;
    SelectionState selectionBefore;
    SelectionState selectionAfter;
    std::optional<QUuid> opacityNode;
    /// Nothing for a record that leaves the active node alone.
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
  States states_;  ///< one more than steps; `states_[i]` stands after i steps
  SelectionState selection_;
  NodeID active_;
  UnrecordedState unrecorded_;
  std::ptrdiff_t index_ = -1;
  std::size_t evicted_ = 0;
};

}  // namespace orvanel::test
