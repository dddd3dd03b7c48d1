// A document under a fake canvas for tests of the selection tools.
#pragma once

#include <gtest/gtest.h>

#include "model/ModelSupport.h"
#include "raster/HalfFloat.h"
#include "tools/FakeCanvas.h"
#include "tools/ToolState.h"
#include "tools/selection/SelectionToolState.h"

namespace orvanel::test {

class SelectionToolFixture : public testing::Test {
 protected:
  [[nodiscard]] const Surface& mask() const { return *document->selection.value()->maskTexture->texture; }
  /// The bounds of what is selected; none if nothing is.
  [[nodiscard]] std::optional<PixelRect> bounds() const {
    if (document->activeSelection() == nullptr) return std::nullopt;
    return document->context().selectionBounds(mask());
  }
  [[nodiscard]] float valueAt(int x, int y) const {
    return halfToFloat(static_cast<std::uint16_t>(mask().pixelAt(x, y)));
  }
  [[nodiscard]] std::size_t records() const { return document->undoStack.operations().size(); }
  [[nodiscard]] QString undoName() const { return document->undoStack.undoActionName().value_or(QString()); }
  /// Selects a rectangle under a record.
  void selectRect(const PixelRect& rect) const {
    SelectionGesture gesture(document, QStringLiteral("Before"));
    gesture.selectShape(SelectionMode::replace,
                        [&](Selection& shape) { shape.setRect(rect, 0.0F, document->context()); });
    gesture.close();
  }
  [[nodiscard]] const DragPathOverlayLayer& overlay() const { return *state->dragPathLayer; }
  [[nodiscard]] bool isOverlayEmpty() const {
    return !overlay().dragPath && overlay().lassoPoints.empty() && !overlay().lassoScreenPoints;
  }
  void expectIdle() const {
    EXPECT_TRUE(isOverlayEmpty());
    EXPECT_EQ(document->dragSize.value(), std::nullopt);
    EXPECT_FALSE(state->isMoving());
  }

  DocumentPtr document = makeDocument(40, 30);
  FakeCanvas canvas{document};
  ToolState tools;
  std::shared_ptr<SelectionToolState> state = std::make_shared<SelectionToolState>(MetalContext::shared());
};

}  // namespace orvanel::test
