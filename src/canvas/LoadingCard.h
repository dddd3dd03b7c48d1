// The card over the preview of a document that is being read: what is read, how far it is, and a button that
// cancels. Owned by the loading view; main thread only.
#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace orvanel {

class LoadingCard : public QWidget {
  Q_OBJECT

 public:
  explicit LoadingCard(QWidget* parent = nullptr);

  void setFile(const QString& name, int others);
  void setProgress(double fraction);

  [[nodiscard]] const QString& title() const { return title_; }
  [[nodiscard]] QProgressBar& progressBar() const { return *progressBar_; }
  [[nodiscard]] QPushButton& cancelButton() const { return *cancelButton_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void elideTitle();

  QString title_;
  QLabel* titleLabel_;
  QProgressBar* progressBar_;
  QPushButton* cancelButton_;
};

}  // namespace orvanel
