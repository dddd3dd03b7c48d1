// A row of controls for one of the tools' records of settings. Each control shows one field of the record and
// writes it, and follows changes made elsewhere. Owned by the tool options; main thread only.
#pragma once

#include <QCheckBox>
#include <QProperty>
#include <QPropertyNotifier>
#include <QSignalBlocker>
#include <QWidget>
#include <vector>

#include "panels/controls/SliderDropdown.h"

namespace orvanel {

/// What a control is called, and what it does.
struct OptionText {
  QString label;
  QString help;
};

class OptionsRow : public QWidget {
  Q_OBJECT

 public:
  explicit OptionsRow(QWidget* parent = nullptr);

  /// Takes over what is being typed and closes fields and sliders.
  void endEditing();

 protected:
  /// `settings` must outlive the row.
  template <typename Settings>
  void addSlider(const OptionText& text, double lowest, double highest, SliderDropdown::Display display,
                 QProperty<Settings>& settings, float Settings::*field) {
    auto* slider = makeSlider(text, lowest, highest, display);
    slider->onValueChanged = [&settings, field](float value) { write(settings, field, value); };
    follow(settings, [slider, &settings, field] { slider->setValue(settings.value().*field); });
  }

  template <typename Settings>
  void addToggle(const OptionText& text, QProperty<Settings>& settings, bool Settings::*field) {
    auto* toggle = makeToggle(text);
    connect(toggle, &QCheckBox::toggled, this,
            [&settings, field](bool isOn) { write(settings, field, isOn); });
    follow(settings, [toggle, &settings, field] {
      const QSignalBlocker silent(toggle);
      toggle->setChecked(settings.value().*field);
    });
  }

  void addText(const QString& text);

 private:
  template <typename Settings, typename Value>
  static void write(QProperty<Settings>& settings, Value Settings::*field, Value value) {
    Settings changed = settings.value();
    changed.*field = value;
    settings = changed;
  }
  template <typename Settings, typename Show>
  void follow(QProperty<Settings>& settings, Show show) {
    show();
    notifiers_.push_back(settings.addNotifier(show));
  }
  [[nodiscard]] SliderDropdown* makeSlider(const OptionText& text, double lowest, double highest,
                                           SliderDropdown::Display display);
  [[nodiscard]] QCheckBox* makeToggle(const OptionText& text);
  /// After the controls that are there, before the free space.
  void append(QWidget* control);

  std::vector<QPropertyNotifier> notifiers_;
};

}  // namespace orvanel
