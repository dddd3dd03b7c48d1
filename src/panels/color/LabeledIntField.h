// A whole number within a range, with a label before it and a unit behind it. Owned by the colour picker;
// main thread only.
#pragma once

#include <QString>
#include <QWidget>
#include <functional>

class QLabel;

namespace orvanel {

class ValueField;

class LabeledIntField : public QWidget {
  Q_OBJECT

 public:
  struct Range {
    int lowest = 0;
    int highest = 255;
  };

  /// `name` is what the short label stands for.
  LabeledIntField(const QString& label, const QString& name, Range range, const QString& suffix,
                  QWidget* parent = nullptr);

  [[nodiscard]] int value() const { return value_; }
  /// Tells nobody.
  void setValue(int value);
  [[nodiscard]] ValueField& field() { return *field_; }
  [[nodiscard]] QLabel& label() { return *label_; }

  /// The user has chosen a value.
  std::function<void(int)> onValueChanged;

 private:
  void userSet(qint64 value);

  Range range_;
  QString suffix_;
  int value_ = 0;
  QLabel* label_;
  ValueField* field_;
};

}  // namespace orvanel
