// The tab of a file that is being opened, in the place that its document's tab will have. Owned by the tab
// bar; main thread only.
#pragma once

#include <QAbstractButton>

namespace orvanel {

/// What the tab shows.
struct LoadingTabContent {
  /// The name that the document will have.
  QString name;
  QString path;
  bool isSelected = false;
};

class LoadingTab : public QAbstractButton {
  Q_OBJECT

 public:
  explicit LoadingTab(QWidget* parent = nullptr);

  void setContent(const LoadingTabContent& content);
  [[nodiscard]] const LoadingTabContent& content() const { return content_; }
  /// Cancels the opening.
  [[nodiscard]] QAbstractButton* closeButton() const { return closeButton_; }

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  /// A click only requests the selection; the window decides.
  void nextCheckState() override {}
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  LoadingTabContent content_;
  QAbstractButton* closeButton_;
};

}  // namespace orvanel
