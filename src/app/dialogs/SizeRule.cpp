#include "app/dialogs/SizeRule.h"

#include "raster/ColorMode.h"

namespace orvanel {

std::optional<std::int64_t> typedNumber(const QString& text) {
  bool isNumber = false;
  const int number = text.toInt(&isNumber);
  return isNumber ? std::optional<std::int64_t>(number) : std::nullopt;
}

std::optional<QSize> allowedSize(std::optional<std::int64_t> width, std::optional<std::int64_t> height) {
  const auto isAllowed = [](const std::optional<std::int64_t>& side) {
    return side && *side >= 1 && *side <= maximumCanvasSide;
  };
  if (!isAllowed(width) || !isAllowed(height)) return std::nullopt;
  return QSize(static_cast<int>(*width), static_cast<int>(*height));
}

}  // namespace orvanel
