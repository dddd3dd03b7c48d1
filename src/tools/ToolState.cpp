#include "tools/ToolState.h"

#include <algorithm>
#include <utility>

#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

void postToolChanged() {
  NotificationCenter::standard().post(notification::toolChanged);
}

}  // namespace

void ToolState::switchToDocument(const std::shared_ptr<Document>& document) {
  setActiveDocument(document);
  if (document == nullptr) return;
  selectedVariants = document->selectedVariants.value();
  selectTool(document->selectedTool.value());
}

Tool ToolState::currentTool() const {
  const std::vector<Tool>& stack = toolStack.value();
  return stack.empty() ? Tool::hand : stack.back();
}

void ToolState::selectTool(Tool tool) {
  setToolStack({tool});
  if (const DocumentPtr document = activeDocument()) document->rememberTool(tool, selectedVariants.value());
  postToolChanged();
}

void ToolState::pushTool(Tool tool) {
  std::vector<Tool> stack = toolStack.value();
  stack.push_back(tool);
  setToolStack(std::move(stack));
  postToolChanged();
}

void ToolState::popTool() {
  std::vector<Tool> stack = toolStack.value();
  if (stack.size() < 2) return;
  stack.pop_back();
  setToolStack(std::move(stack));
  postToolChanged();
}

void ToolState::activateSlot(const ToolSlot& slot) {
  const std::vector<Tool> tools = slot.tools();
  const auto current = std::find(tools.begin(), tools.end(), currentTool());
  if (current != tools.end() && tools.size() > 1) {
    const auto next = (static_cast<std::size_t>(current - tools.begin()) + 1) % tools.size();
    selectVariant(slot, tools[next]);
  } else {
    selectTool(shownTool(slot));
  }
}

void ToolState::selectVariant(const ToolSlot& slot, Tool tool) {
  QHash<QString, Tool> variants = selectedVariants.value();
  variants.insert(slot.identity(), tool);
  selectedVariants = std::move(variants);
  selectTool(tool);
}

Tool ToolState::shownTool(const ToolSlot& slot) const {
  const Tool first = slot.tools().front();
  return slot.isGroup() ? selectedVariants.value().value(slot.identity(), first) : first;
}

}  // namespace orvanel
