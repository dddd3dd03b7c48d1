#include "tools/HistoryOracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "model/ModelSupport.h"

namespace orvanel::test {
namespace {

std::vector<std::byte> bytesOf(const Surface& surface) {
  std::vector<std::byte> bytes(static_cast<std::size_t>(surface.byteSize()));
  surface.readRect(
      surface.bounds(), bytes.data(),
      static_cast<std::size_t>(surface.width()) * static_cast<std::size_t>(surface.pixelBytes()));
  return bytes;
}

void describe(const LayerNodeList& nodes, QStringList& lines, int depth) {
  for (const LayerNode& node : nodes) {
    const std::shared_ptr<Layer> layer = node.layer();
    lines << QStringLiteral("%1%2 %3 opacity %4 blend %5 visible %6 locked %7 %8")
                 .arg(QString(depth, u' '), uuidText(node.id()), node.name().value())
                 .arg(static_cast<double>(node.opacity().value()))
                 .arg(rawValue(node.blendMode().value()))
                 .arg(node.isVisible().value())
                 .arg(node.isLocked().value())
                 .arg(layer == nullptr                 ? QStringLiteral("folder")
                      : layer->mask.value() != nullptr ? QStringLiteral("masked")
                                                       : QStringLiteral("layer"));
    if (const std::shared_ptr<LayerFolder> folder = node.folder()) {
      describe(folder->children.value(), lines, depth + 1);
    }
  }
}

void collectParents(const LayerNodeList& nodes, const std::optional<QUuid>& parent,
                    std::map<QUuid, std::optional<QUuid>>& parents) {
  for (const LayerNode& node : nodes) {
    parents[node.id()] = parent;
    if (const std::shared_ptr<LayerFolder> folder = node.folder()) {
      collectParents(folder->children.value(), folder->id, parents);
    }
  }
}

/// A text for failure messages.
std::string textOf(const std::optional<QUuid>& id) {
  return id ? uuidText(*id).toStdString() : "none";
}

RecordKind kindOf(const QString& actionName) {
  static const std::set<QString> selections{"Select All",       "Deselect",
                                            "Invert Selection", "Select Layer Transparency",
                                            "Select Channel",   "Select Mask",
                                            "Rectangle Select", "Ellipse Select",
                                            "Magic Wand",       "Polygonal Lasso Select"};
  static const std::set<QString> canvases{"Canvas Size", "Crop", "Trim"};
  if (selections.contains(actionName)) return RecordKind::selection;
  return canvases.contains(actionName) ? RecordKind::canvas : RecordKind::contents;
}

}  // namespace

DocumentState DocumentState::of(const Document& document) {
  DocumentState state;
  QStringList lines{QStringLiteral("%1 x %2, mode %3")
                        .arg(document.canvasWidth.value())
                        .arg(document.canvasHeight.value())
                        .arg(rawValue(document.colorMode.value()))};
  describe(document.rootNodes.value(), lines, 0);
  state.outline = lines.join(u'\n');
  collectParents(document.rootNodes.value(), std::nullopt, state.parents);
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    state.pixels.push_back(bytesOf(*layer->texture.value()));
    if (const std::shared_ptr<LayerMask>& mask = layer->mask.value()) {
      state.pixels.push_back(bytesOf(*mask->maskTexture->texture));
    }
  }
  return state;
}

SelectionState SelectionState::of(const Document& document) {
  const std::shared_ptr<const Selection>& selection = document.selection.value();
  if (selection == nullptr) return {};
  std::vector<std::byte> mask = bytesOf(*selection->maskTexture->texture);
  if (std::all_of(mask.begin(), mask.end(), [](std::byte b) { return b == std::byte{0}; })) mask.clear();
  return {selection->hasSelection.value(), selection->isFullSelection.value(), std::move(mask)};
}

void UnrecordedState::compare(std::map<QUuid, bool>& known, const QUuid& id, bool value, Change change,
                              const char* what) {
  const auto [place, isNew] = known.try_emplace(id, value);
  if (!isNew && change == Change::none) {
    EXPECT_EQ(value, place->second) << what << " of " << textOf(id);
  }
  place->second = value;
}

void UnrecordedState::followMask(const Layer& layer, Change change, std::map<QUuid, QUuid>& attached) {
  const LayerMask& mask = *layer.mask.value();
  const auto before = attached_.find(layer.id);
  firstOfLine_.try_emplace(mask.id, before != attached_.end() ? firstOfLine_.at(before->second) : mask.id);
  attached[layer.id] = mask.id;
  compare(isEnabled_, firstOfLine_.at(mask.id), mask.isEnabled.value(), change, "enabling of the mask");
}

void UnrecordedState::followNodes(const LayerNodeList& nodes, Change change,
                                  std::map<QUuid, QUuid>& attached) {
  for (const LayerNode& node : nodes) {
    if (const std::shared_ptr<LayerFolder> folder = node.folder()) {
      compare(isExpanded_, folder->id, folder->isExpanded.value(), change, "expansion");
      followNodes(folder->children.value(), change, attached);
    } else {
      const Layer& layer = *node.layer();
      compare(editsMask_, layer.id, layer.isMaskSelected.value(), change, "target of edits");
      if (layer.mask.value() != nullptr) followMask(layer, change, attached);
    }
  }
}

void UnrecordedState::follow(const Document& document, Change change) {
  std::map<QUuid, QUuid> attached;
  followNodes(document.rootNodes.value(), change, attached);
  attached_ = std::move(attached);
}

HistoryOracle::HistoryOracle(const Document& document)
    : selection_(SelectionState::of(document)),
      active_(document.selectedNodeID.value()),
      unrecorded_(document) {
  states_.push_back(std::make_shared<const DocumentState>(DocumentState::of(document)));
}

void HistoryOracle::expectUnchanged(const Document& document) const {
  const DocumentState now = DocumentState::of(document);
  const DocumentState& expected = *states_[static_cast<std::size_t>(index_ + 1)];
  EXPECT_EQ(now.outline, expected.outline);
  EXPECT_TRUE(now.pixels == expected.pixels) << "pixels differ";
  EXPECT_TRUE(SelectionState::of(document) == selection_) << "the selection differs";
}

void HistoryOracle::expectUnrecorded(const Document& document) {
  EXPECT_EQ(textOf(document.selectedNodeID.value()), textOf(active_)) << "the active node";
  unrecorded_.expectUnchanged(document);
}

void HistoryOracle::expectPosition(const Document& document) const {
  const UndoStack& history = document.undoStack;
  EXPECT_EQ(history.currentIndex.value(), index_);
  ASSERT_EQ(history.operations().size(), steps_.size());
  for (std::size_t i = 0; i < steps_.size(); ++i) {
    EXPECT_EQ(history.operations()[i], steps_[i].record.lock());
  }
  const auto nameAt = [this](std::ptrdiff_t index) -> std::optional<QString> {
    if (index < 0 || index >= std::ssize(steps_)) return std::nullopt;
    return steps_[static_cast<std::size_t>(index)].name;
  };
  EXPECT_EQ(history.undoActionName(), nameAt(index_));
  EXPECT_EQ(history.redoActionName(), nameAt(index_ + 1));
}

/// A new node is active until its insertion is undone; a moved node is active after either step. After
/// undoing a removal, the removed node is active; after redoing it, the node that the command chose or, if
/// the list became empty, the node that was active before.
std::optional<HistoryOracle::ActiveNodes> HistoryOracle::activeNodesOf(const QString& name,
                                                                       const CommandFacts& facts,
                                                                       const DocumentState& now,
                                                                       const NodeID& activeNow) const {
  const bool isNewNode = name == QStringLiteral("Add Layer") || name == QStringLiteral("Add Folder") ||
                         name.startsWith(QStringLiteral("Duplicate "));
  if (isNewNode) return ActiveNodes{.afterUndo = active_, .afterRedo = activeNow};
  if (name == QStringLiteral("Move Layer")) {
    return ActiveNodes{.afterUndo = facts.movedNode, .afterRedo = facts.movedNode};
  }
  if (!name.startsWith(QStringLiteral("Delete "))) return std::nullopt;
  const std::optional<QUuid>& folder = states_.back()->parents.at(active_.value());
  const bool isListEmpty = std::none_of(now.parents.begin(), now.parents.end(),
                                        [&](const auto& entry) { return entry.second == folder; });
  return ActiveNodes{.afterUndo = active_, .afterRedo = isListEmpty ? active_ : activeNow};
}

bool HistoryOracle::recordCommand(const Document& document, const CommandFacts& facts) {
  const NodeID activeNow = document.selectedNodeID.value();
  const std::vector<UndoStack::Record>& records = document.undoStack.operations();
  const bool isSame =
      std::equal(records.begin(), records.end(), steps_.begin(), steps_.end(),
                 [](const auto& record, const Step& step) { return record == step.record.lock(); });
  if (isSame) {
    expectUnchanged(document);
    // The user activates nodes, selects targets, expands folders and switches masks without records.
    active_ = activeNow;
    unrecorded_.accept(document);
    return false;
  }
  steps_.resize(static_cast<std::size_t>(index_ + 1));
  states_.resize(static_cast<std::size_t>(index_ + 2));
  auto now = std::make_shared<const DocumentState>(DocumentState::of(document));
  Step step;
  step.record = records.back();
  step.name = records.back()->actionName();
  step.kind = kindOf(step.name);
  step.selectionBefore = selection_;
  step.selectionAfter = SelectionState::of(document);
  if (step.kind == RecordKind::selection) {
    EXPECT_EQ(now->outline, states_.back()->outline) << "a selection command changes nothing else";
    EXPECT_TRUE(now->pixels == states_.back()->pixels) << "a selection command changes nothing else";
  } else {
    const SelectionState expected = step.kind == RecordKind::canvas ? SelectionState{} : selection_;
    EXPECT_TRUE(step.selectionAfter == expected) << "the selection differs";
  }
  selection_ = step.selectionAfter;

  step.activeNodes = activeNodesOf(step.name, facts, *now, activeNow);
  if (step.name.endsWith(QStringLiteral("Layer Mask"))) step.maskedLayer = active_;
  if (step.activeNodes) active_ = activeNow;
  crossMask(step, Direction::redo);
  expectUnrecorded(document);

  step.opacityNode = facts.opacityNode;
  const bool hasMerged =
      facts.opacityNode && !steps_.empty() && steps_.back().opacityNode == facts.opacityNode;
  if (hasMerged) {
    steps_.back() = std::move(step);
    states_.back() = std::move(now);
  } else {
    steps_.push_back(std::move(step));
    states_.push_back(std::move(now));
  }
  while (steps_.size() > records.size()) {
    steps_.pop_front();
    states_.pop_front();
    ++evicted_;
  }
  index_ = std::ssize(steps_) - 1;
  expectPosition(document);
  return true;
}

void HistoryOracle::crossSelection(const Step& step, const SelectionState& target) {
  if (step.kind == RecordKind::selection) selection_ = target;
  if (step.kind == RecordKind::canvas) selection_ = {};
}

void HistoryOracle::crossMask(const Step& step, Direction direction) {
  const bool addsMask = step.name == QStringLiteral("Add Layer Mask");
  if (step.maskedLayer && addsMask == (direction == Direction::undo))
    unrecorded_.maskHasGone(*step.maskedLayer);
}

void HistoryOracle::crossActiveNode(const Step& step, Direction direction) {
  if (!step.activeNodes) return;
  active_ = direction == Direction::undo ? step.activeNodes->afterUndo : step.activeNodes->afterRedo;
}

void HistoryOracle::undo(const Document& document) {
  if (index_ >= 0) {
    const Step& step = steps_[static_cast<std::size_t>(index_)];
    crossSelection(step, step.selectionBefore);
    crossMask(step, Direction::undo);
    crossActiveNode(step, Direction::undo);
    --index_;
  }
  expectPosition(document);
  expectUnchanged(document);
  expectUnrecorded(document);
}

void HistoryOracle::redo(const Document& document) {
  if (index_ + 1 < std::ssize(steps_)) {
    ++index_;
    const Step& step = steps_[static_cast<std::size_t>(index_)];
    crossSelection(step, step.selectionAfter);
    crossMask(step, Direction::redo);
    crossActiveNode(step, Direction::redo);
  }
  expectPosition(document);
  expectUnchanged(document);
  expectUnrecorded(document);
}

}  // namespace orvanel::test
