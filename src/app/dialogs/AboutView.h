// The About window. Main thread only.
#pragma once

#include <QDialog>

namespace orvanel {

class AboutView : public QDialog {
  Q_OBJECT

 public:
  explicit AboutView(QWidget* parent = nullptr);
};

}  // namespace orvanel
