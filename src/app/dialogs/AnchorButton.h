// One cell of the grid that says where the old canvas stands on the new one. Owned by its dialog; main thread
// only.
#pragma once

#include <QAbstractButton>

namespace orvanel {

class AnchorButton : public QAbstractButton {
  Q_OBJECT

 public:
  explicit AnchorButton(const QString& placeName, QWidget* parent = nullptr);

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace orvanel
