// Shows what a file looks like, beside the list of a file panel. Owned by the panel; main thread only.
#pragma once

#include <QImage>
#include <QWidget>

#include "app/FilePreviews.h"

namespace orvanel {

class PreviewPane : public QWidget {
  Q_OBJECT

 public:
  explicit PreviewPane(QWidget* parent = nullptr);

  /// Shows the picture of the file as soon as there is one.
  void showFile(const QString& path);
  [[nodiscard]] const QImage& picture() const { return picture_; }

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  FilePreviews previews_;
  QString path_;
  QImage picture_;
  QString message_;
};

}  // namespace orvanel
