// The panels around the canvas: the tool's options, the palette, the inspector with the layer panel, and the
// colour picker. Connects them with the window's state. Owned by the content view; main thread only.
#pragma once

#include <QCoreApplication>
#include <memory>

#include "app/AppState.h"
#include "panels/color/ColorPickerWindow.h"
#include "panels/inspector/InspectorPane.h"
#include "panels/layers/LayerPanelView.h"
#include "panels/options/ToolOptionsPane.h"
#include "panels/palette/ToolPalettePane.h"

namespace orvanel {

class SidePanels {
  Q_DECLARE_TR_FUNCTIONS(orvanel::SidePanels)

 public:
  /// The panels become children of `parent`; `appState` must outlive them.
  SidePanels(AppState& appState, QWidget* parent);

  /// The panels' owner is `parent`, or whichever widget they are laid out in.
  ToolOptionsPane* const options;
  ToolPalettePane* const palette;
  InspectorPane* const inspector;
  LayerPanelView* const layers;

  void setDocument(const DocumentPtr& document);
  /// Made when a colour is first chosen.
  [[nodiscard]] ColorPickerWindow& colorPicker();

 private:
  void chooseColor(Swatch swatch);

  AppState& appState_;
  QWidget* parent_;
  ColorPickerWindow* colorPicker_ = nullptr;
  ChangeStream::Subscription colorChanges_;
};

}  // namespace orvanel
