#include "panels/options/ToolOptions.h"

namespace orvanel {

namespace {

using Display = SliderDropdown::Display;

constexpr double smallestTip = 1;
constexpr double largestTip = 500;
constexpr double weakestFlow = 0.01;
constexpr double widestFeather = 100;
constexpr double largestTolerance = 255;

}  // namespace

BrushOptions::BrushOptions(QProperty<BrushSettings>& settings, QWidget* parent) : OptionsRow(parent) {
  addSlider({tr("Size:"), tr("Diameter of the brush's tip, in pixels")}, smallestTip, largestTip,
            Display::integer, settings, &BrushSettings::size);
  addSlider({tr("Hardness:"), tr("How much of the tip is solid before its edge fades")}, 0, 1,
            Display::percent, settings, &BrushSettings::hardness);
  addSlider({tr("Flow:"), tr("How much color the brush lays down at each point")}, weakestFlow, 1,
            Display::percent, settings, &BrushSettings::flow);
}

EraserOptions::EraserOptions(QProperty<EraserSettings>& settings, QWidget* parent) : OptionsRow(parent) {
  addSlider({tr("Size:"), tr("Diameter of the eraser's tip, in pixels")}, smallestTip, largestTip,
            Display::integer, settings, &EraserSettings::size);
  addSlider({tr("Hardness:"), tr("How much of the tip is solid before its edge fades")}, 0, 1,
            Display::percent, settings, &EraserSettings::hardness);
}

SelectionOptions::SelectionOptions(QProperty<SelectionSettings>& settings, QWidget* parent)
    : OptionsRow(parent) {
  addSlider({tr("Feather:"), tr("How far the edge of a new selection fades, in pixels")}, 0, widestFeather,
            Display::integer, settings, &SelectionSettings::featherRadius);
}

MagicWandOptions::MagicWandOptions(QProperty<MagicWandSettings>& settings, QWidget* parent)
    : OptionsRow(parent) {
  addToggle({tr("Contiguous"), tr("Selects only pixels that are connected with the clicked one")}, settings,
            &MagicWandSettings::contiguous);
  addToggle({tr("Anti-aliased"), tr("Smooths the edge of a new selection")}, settings,
            &MagicWandSettings::antialiased);
  addToggle({tr("Sample All Layers"), tr("Looks at all visible layers together, not at the active one")},
            settings, &MagicWandSettings::sampleAllLayers);
  addSlider({tr("Tolerance:"), tr("How much a color may differ from that of the clicked pixel")}, 0,
            largestTolerance, Display::integer, settings, &MagicWandSettings::tolerance);
}

ZoomOptions::ZoomOptions(QProperty<ZoomSettings>& settings, QWidget* parent) : OptionsRow(parent) {
  addToggle({tr("Scrubby Zoom"), tr("Zooms in or out while the pointer is dragged to the right or left")},
            settings, &ZoomSettings::scrubbyZoom);
}

}  // namespace orvanel
