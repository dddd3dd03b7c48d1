// A slot of the tool palette: one tool, or a group that shows one member. A plain value.
#pragma once

#include <QString>
#include <array>
#include <variant>
#include <vector>

#include "model/Tool.h"

namespace orvanel {

class ToolSlot {
 public:
  [[nodiscard]] static ToolSlot single(Tool tool) { return ToolSlot(tool); }
  /// `tools` must have at least one member.
  [[nodiscard]] static ToolSlot group(std::vector<Tool> tools) { return ToolSlot(std::move(tools)); }

  /// The tools' raw values, joined with hyphens.
  [[nodiscard]] QString identity() const;
  [[nodiscard]] bool isGroup() const { return std::holds_alternative<std::vector<Tool>>(content_); }
  /// The members of a group, or the single tool as a list of one.
  [[nodiscard]] std::vector<Tool> tools() const;

  friend bool operator==(const ToolSlot&, const ToolSlot&) = default;

 private:
  explicit ToolSlot(std::variant<Tool, std::vector<Tool>> content) : content_(std::move(content)) {}

  std::variant<Tool, std::vector<Tool>> content_;
};

/// The palette from top to bottom. Tools without a slot are reached by keys and menu commands.
[[nodiscard]] const std::array<ToolSlot, 7>& toolSlots();

}  // namespace orvanel
