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
  for (const std::shared_ptr<Layer>& layer : document.allLayers()) {
    state.pixels.push_back(bytesOf(*layer->texture.value()));
    if (const std::shared_ptr<LayerMask>& mask = layer->mask.value()) {
      state.pixels.push_back(bytesOf(*mask->maskTexture->texture));
    }
  }
  return state;
}

SelectionState SelectionState::of(const Document& document) {
  const std::shared_ptr<Selection>& selection = document.selection.value();
  if (selection == nullptr) return {};
  std::vector<std::byte> mask = bytesOf(*selection->maskTexture->texture);
  if (std::all_of(mask.begin(), mask.end(), [](std::byte b) { return b == std::byte{0}; })) mask.clear();
  return {selection->hasSelection.value(), selection->isFullSelection.value(), std::move(mask)};
}

HistoryOracle::HistoryOracle(const Document& document) : selection_(SelectionState::of(document)) {
  states_.push_back(std::make_shared<const DocumentState>(DocumentState::of(document)));
}

void HistoryOracle::expectUnchanged(const Document& document) const {
  const DocumentState now = DocumentState::of(document);
  const DocumentState& expected = *states_[static_cast<std::size_t>(index_ + 1)];
  EXPECT_EQ(now.outline, expected.outline);
  EXPECT_TRUE(now.pixels == expected.pixels) << "pixels differ";
  EXPECT_TRUE(SelectionState::of(document) == selection_) << "the selection differs";
}

void HistoryOracle::expectPosition(const Document& document) const {
  const UndoStack& history = document.undoStack;
  EXPECT_EQ(history.currentIndex.value(), index_);
  ASSERT_EQ(history.operations().size(), steps_.size());
  for (std::size_t i = 0; i < steps_.size(); ++i) EXPECT_EQ(history.operations()[i], steps_[i].record);
  const auto nameAt = [this](std::ptrdiff_t index) -> std::optional<QString> {
    if (index < 0 || index >= std::ssize(steps_)) return std::nullopt;
    return steps_[static_cast<std::size_t>(index)].name;
  };
  EXPECT_EQ(history.undoActionName(), nameAt(index_));
  EXPECT_EQ(history.redoActionName(), nameAt(index_ + 1));
}

bool HistoryOracle::recordCommand(const Document& document, const std::optional<QUuid>& opacityNode) {
  const std::vector<UndoStack::Record>& records = document.undoStack.operations();
  const bool isSame = std::equal(records.begin(), records.end(), steps_.begin(), steps_.end(),
                                 [](const auto& record, const Step& step) { return record == step.record; });
  if (isSame) {
    expectUnchanged(document);
    return false;
  }
  steps_.resize(static_cast<std::size_t>(index_ + 1));
  states_.resize(static_cast<std::size_t>(index_ + 2));
  auto now = std::make_shared<const DocumentState>(DocumentState::of(document));
  Step step;
  step.record = records.back();
  step.name = step.record->actionName();
  step.kind = kindOf(step.name);
  step.selectionBefore = selection_;
  step.selectionAfter = SelectionState::of(document);
  if (step.kind == RecordKind::selection) {
    EXPECT_EQ(now->outline, states_.back()->outline) << "a selection changes nothing else";
    EXPECT_TRUE(now->pixels == states_.back()->pixels) << "a selection changes nothing else";
  } else {
    const SelectionState expected = step.kind == RecordKind::canvas ? SelectionState{} : selection_;
    EXPECT_TRUE(step.selectionAfter == expected) << "the selection differs";
  }
  selection_ = step.selectionAfter;

  step.opacityNode = opacityNode;
  const bool hasMerged = opacityNode && !steps_.empty() && steps_.back().opacityNode == opacityNode;
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

void HistoryOracle::undo(const Document& document) {
  if (index_ >= 0) {
    const Step& step = steps_[static_cast<std::size_t>(index_)];
    crossSelection(step, step.selectionBefore);
    --index_;
  }
  expectPosition(document);
  expectUnchanged(document);
}

void HistoryOracle::redo(const Document& document) {
  if (index_ + 1 < std::ssize(steps_)) {
    ++index_;
    const Step& step = steps_[static_cast<std::size_t>(index_)];
    crossSelection(step, step.selectionAfter);
  }
  expectPosition(document);
  expectUnchanged(document);
}

}  // namespace orvanel::test
