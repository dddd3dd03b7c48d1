// The contents of the levels panel: the histogram, a slider and a field for each value, and two buttons. It
// edits the model and reports what the user does; its owner acts. Main thread only.
#pragma once

#include <QDoubleSpinBox>
#include <QPropertyNotifier>
#include <QPushButton>
#include <QWidget>
#include <functional>
#include <vector>

#include "panels/levels/HistogramView.h"
#include "panels/levels/LevelsModel.h"

class QGridLayout;

namespace orvanel {

class DirectSlider;

class LevelsContentView : public QWidget {
  Q_OBJECT

 public:
  /// `model` must outlive the view.
  explicit LevelsContentView(LevelsModel& model, QWidget* parent = nullptr);

  /// A value was changed by the user.
  std::function<void()> onChanged;
  /// A slider's drag begins (true) or ends.
  std::function<void(bool)> onEditingChanged;
  std::function<void()> onOK;
  std::function<void()> onCancel;

  /// The controls of one value.
  struct Row {
    DirectSlider* slider = nullptr;
    QDoubleSpinBox* field = nullptr;
  };
  Row black;
  Row gamma;
  Row white;
  QPushButton* okButton = nullptr;
  QPushButton* cancelButton = nullptr;

 private:
  /// How the positions of a slider and the values of the model correspond.
  struct Scale {
    float smallest = 0.0F;
    float largest = 1.0F;
    int decimals = 0;
    int positions = 1;
    std::function<float(int)> valueAt;
    std::function<int(float)> positionOf;
  };
  [[nodiscard]] static Scale linearScale(float smallest, float largest);
  /// Equal steps of the slider multiply the value equally, so that 1 lies in the middle.
  [[nodiscard]] static Scale ratioScale(float smallest, float largest);

  [[nodiscard]] Row addRow(QGridLayout& grid, const QString& label, const QString& name,
                           QProperty<float>& value, const Scale& scale);
  void userSet(QProperty<float>& value, float chosen);

  std::vector<QPropertyNotifier> notifiers_;
};

}  // namespace orvanel
