#include "model/Tool.h"

namespace orvanel {
namespace {

struct ToolNames {
  const char* rawValue;
  const char* displayName;
  const char* iconName;
  char letter;  ///< 0: none
};

constexpr std::array<ToolNames, allTools.size()> toolNames{{
    {"hand", "Hand", "hand.raised", 'H'},
    {"move", "Move", "arrow.up.and.down.and.arrow.left.and.right", 'V'},
    {"rectangleSelect", "Rectangle Select", "rectangle.dashed", 'M'},
    {"ellipseSelect", "Ellipse Select", "circle.dashed", 'M'},
    {"lassoSelect", "Lasso Select", "lasso", 'L'},
    {"polygonalLassoSelect", "Polygonal Lasso Select", "skew", 'L'},
    {"magicWand", "Magic Wand", "wand.and.stars", 'W'},
    {"brush", "Brush", "paintbrush", 'B'},
    {"eraser", "Eraser", "eraser", 'E'},
    {"eyedropper", "Eyedropper", "eyedropper", 'I'},
    {"zoom", "Zoom", "magnifyingglass", 'Z'},
    {"freeTransform", "Free Transform", "arrow.up.left.and.arrow.down.right", '\0'},
}};

const ToolNames& names(Tool tool) {
  return toolNames[static_cast<std::size_t>(tool)];
}

}  // namespace

QString rawValue(Tool tool) {
  return QString::fromLatin1(names(tool).rawValue);
}

QString displayName(Tool tool) {
  return QString::fromLatin1(names(tool).displayName);
}

QString iconName(Tool tool) {
  return QString::fromLatin1(names(tool).iconName);
}

std::optional<QChar> shortcutLetter(Tool tool) {
  const char letter = names(tool).letter;
  if (letter == '\0') return std::nullopt;
  return QChar::fromLatin1(letter);
}

QString toolTip(Tool tool) {
  const std::optional<QChar> letter = shortcutLetter(tool);
  if (!letter) return displayName(tool);
  return displayName(tool) + QStringLiteral(" (") + *letter + QChar(u')');
}

}  // namespace orvanel
