#include "tools/ToolSlot.h"

#include <QStringList>

namespace orvanel {

QString ToolSlot::identity() const {
  QStringList parts;
  for (const Tool tool : tools()) parts.append(rawValue(tool));
  return parts.join(QChar(u'-'));
}

std::vector<Tool> ToolSlot::tools() const {
  if (const auto* tool = std::get_if<Tool>(&content_)) return {*tool};
  return std::get<std::vector<Tool>>(content_);
}

const std::array<ToolSlot, 7>& toolSlots() {
  static const std::array<ToolSlot, 7> table{
      ToolSlot::single(Tool::hand),
      ToolSlot::single(Tool::move),
      ToolSlot::group({Tool::rectangleSelect, Tool::ellipseSelect}),
      ToolSlot::group({Tool::lassoSelect, Tool::polygonalLassoSelect}),
      ToolSlot::single(Tool::magicWand),
      ToolSlot::single(Tool::eyedropper),
      ToolSlot::single(Tool::zoom),
  };
  return table;
}

}  // namespace orvanel
