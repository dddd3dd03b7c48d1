// The column of tool buttons at the left of the main window, with the colour swatches under them. Owned by
// the window, which sets the active document; without one everything is disabled. Main thread only.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "model/Document.h"
#include "panels/palette/ColorSwatches.h"
#include "panels/palette/ToolSlotButton.h"

namespace orvanel {

class ActiveTooltip;

class ToolPalettePane : public QWidget {
  Q_OBJECT

 public:
  /// `toolState` must outlive the pane.
  explicit ToolPalettePane(ToolState& toolState, QWidget* parent = nullptr);

  /// A swatch was clicked.
  std::function<void(Swatch)> onChooseColor;

  [[nodiscard]] DocumentPtr document() const { return document_.lock(); }
  void setDocument(const DocumentPtr& document);

  /// One for each slot, in order.
  [[nodiscard]] const std::vector<ToolSlotButton*>& buttons() const { return buttons_; }
  [[nodiscard]] ColorSwatches& swatches() const { return *swatches_; }
  [[nodiscard]] const ActiveTooltip& tooltip() const { return *tooltip_; }

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::weak_ptr<Document> document_;
  std::vector<ToolSlotButton*> buttons_;
  ColorSwatches* swatches_;
  ActiveTooltip* tooltip_;
};

}  // namespace orvanel
