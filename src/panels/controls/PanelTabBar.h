// A row of small tabs at the head of a panel, in the program's look; the toolkit gives it keys and roles.
// Main thread only.
#pragma once

#include <QTabBar>

namespace orvanel {

class PanelTabBar : public QTabBar {
  Q_OBJECT

 public:
  explicit PanelTabBar(QWidget* parent = nullptr);

 protected:
  [[nodiscard]] QSize tabSizeHint(int index) const override;
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace orvanel
