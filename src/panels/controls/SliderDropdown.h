// A compact control for one number: a label, the value as a text that turns into a field when it is clicked,
// and a button that opens a slider. It edits its own value and reports what the user does. Main thread only.
#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>
#include <functional>

class QLabel;
class QLineEdit;

namespace orvanel {

class DirectSlider;
class SliderPanel;
class SymbolButton;

class SliderDropdown : public QWidget {
  Q_OBJECT

 public:
  /// Percent: the value is a part of one, and 0.5 is shown and typed as 50%.
  enum class Display { integer, percent };

  SliderDropdown(const QString& label, double lowest, double highest, Display display,
                 QWidget* parent = nullptr);
  ~SliderDropdown() override;

  [[nodiscard]] float value() const { return value_; }
  /// Tells nobody, and leaves a text that is being typed as it is.
  void setValue(float value);
  [[nodiscard]] float lowest() const { return lowest_; }
  [[nodiscard]] float highest() const { return highest_; }

  /// The user has changed the value; between the two calls of `onEditingChanged`.
  std::function<void(float)> onValueChanged;
  /// The user begins (true) and ends an edit: a drag, a typed number, a step by key or wheel.
  std::function<void(bool)> onEditingChanged;

  /// A width for the label, which is then right-aligned, so that it lines up with those of other rows.
  void setLabelWidth(int width);
  /// The room that the label needs.
  [[nodiscard]] int labelWidth() const;
  [[nodiscard]] const QString& label() const { return label_; }
  /// The value as it is shown, truncated, without what is being typed.
  [[nodiscard]] int shownValue() const;
  [[nodiscard]] QString valueText() const;

  [[nodiscard]] bool isEditingText() const;
  [[nodiscard]] bool isShowingPopover() const;
  void beginTextEditing();
  /// Takes over what was typed and closes the field and the panel.
  void endEditing();
  void openPanel();
  /// Sets the value as one edit of the user's.
  void edit(double shownUnits);

  [[nodiscard]] QLineEdit& field() { return *field_; }
  [[nodiscard]] SymbolButton& button() { return *button_; }
  [[nodiscard]] DirectSlider& slider() { return *slider_; }
  [[nodiscard]] SliderPanel& panel() { return *panel_; }

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  class Box;

  [[nodiscard]] int nearestUnit(float value) const;
  /// Kept within the range.
  [[nodiscard]] float valueOf(double shownUnits) const;
  void commitText();
  void closeField();
  void userSet(float value);
  void setEditing(bool isEditing);
  void showValue();
  /// For the widest value, so that the control doesn't change its width.
  void reserveWidth();

  QString label_;
  float lowest_;
  float highest_;
  Display display_;
  float value_;
  QLabel* labelText_;
  Box* box_;
  QLabel* text_;
  SymbolButton* button_;
  QLineEdit* field_;
  DirectSlider* slider_;
  SliderPanel* panel_;
  /// Who had the keyboard before the field.
  QPointer<QWidget> previousFocus_;
};

}  // namespace orvanel
