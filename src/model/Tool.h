// The tools by name, in palette order. Each document remembers its tool.
#pragma once

#include <QString>
#include <array>
#include <optional>

namespace orvanel {

enum class Tool {
  hand,
  move,
  rectangleSelect,
  ellipseSelect,
  lassoSelect,
  polygonalLassoSelect,
  magicWand,
  brush,
  eraser,
  eyedropper,
  zoom,
  freeTransform,
};

inline constexpr std::array allTools{Tool::hand,          Tool::move,        Tool::rectangleSelect,
                                     Tool::ellipseSelect, Tool::lassoSelect, Tool::polygonalLassoSelect,
                                     Tool::magicWand,     Tool::brush,       Tool::eraser,
                                     Tool::eyedropper,    Tool::zoom,        Tool::freeTransform};

/// The tool's identity as text: "hand", "move", ...
[[nodiscard]] QString rawValue(Tool tool);
[[nodiscard]] QString displayName(Tool tool);
/// Name of the tool's symbol.
[[nodiscard]] QString iconName(Tool tool);
/// The letter shown beside the name, if any.
[[nodiscard]] std::optional<QChar> shortcutLetter(Tool tool);
/// The display name, followed by the letter in parentheses if there is one.
[[nodiscard]] QString toolTip(Tool tool);

}  // namespace orvanel
