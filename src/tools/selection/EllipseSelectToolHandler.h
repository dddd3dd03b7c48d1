// Selects ellipses. Owned by the canvas view; main thread only.
#pragma once

#include "tools/selection/BoxSelectToolHandler.h"

namespace orvanel {

class EllipseSelectToolHandler final : public BoxSelectToolHandler {
 public:
  using BoxSelectToolHandler::BoxSelectToolHandler;
  [[nodiscard]] std::set<Tool> supportedTools() const override { return {Tool::ellipseSelect}; }

 protected:
  [[nodiscard]] QString actionName() const override { return QStringLiteral("Ellipse Select"); }
  [[nodiscard]] SelectionPath pathOf(const QRectF& box) const override;
  [[nodiscard]] std::uint64_t cost(const Document& document, const PixelRect& box,
                                   float feather) const override;
  void fill(Selection& selection, const PixelRect& box, float feather,
            const MetalContext& context) const override;
};

}  // namespace orvanel
