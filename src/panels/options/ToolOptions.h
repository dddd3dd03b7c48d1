// The rows of settings of the tools that have any, and the texts of those that have none. Owned by the tool
// options; main thread only.
#pragma once

#include "panels/options/OptionsRow.h"
#include "tools/ToolState.h"

namespace orvanel {

class BrushOptions : public OptionsRow {
  Q_OBJECT

 public:
  explicit BrushOptions(QProperty<BrushSettings>& settings, QWidget* parent = nullptr);
};

class EraserOptions : public OptionsRow {
  Q_OBJECT

 public:
  explicit EraserOptions(QProperty<EraserSettings>& settings, QWidget* parent = nullptr);
};

class SelectionOptions : public OptionsRow {
  Q_OBJECT

 public:
  explicit SelectionOptions(QProperty<SelectionSettings>& settings, QWidget* parent = nullptr);
};

class MagicWandOptions : public OptionsRow {
  Q_OBJECT

 public:
  explicit MagicWandOptions(QProperty<MagicWandSettings>& settings, QWidget* parent = nullptr);
};

class ZoomOptions : public OptionsRow {
  Q_OBJECT

 public:
  explicit ZoomOptions(QProperty<ZoomSettings>& settings, QWidget* parent = nullptr);
};

/// A row with nothing but a text.
class OptionsHint : public OptionsRow {
  Q_OBJECT

 public:
  explicit OptionsHint(const QString& text, QWidget* parent = nullptr) : OptionsRow(parent) { addText(text); }
};

}  // namespace orvanel
