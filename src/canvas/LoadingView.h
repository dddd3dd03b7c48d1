// The place of a document that is being read: its preview where the document will stand, and a card with the
// file's name, the progress and a way to cancel. Owned by the canvas pane; main thread only.
#pragma once

#include <QImage>
#include <QStringList>
#include <QWidget>
#include <functional>

#include "canvas/CanvasLayers.h"

class QProgressBar;
class QPushButton;

namespace orvanel {

class LoadingCard;

class LoadingView : public QWidget {
  Q_OBJECT

 public:
  /// `context` must outlive the view.
  explicit LoadingView(const MetalContext& context, QWidget* parent = nullptr);

  std::function<void()> onCancel;
  /// Opens dropped files and reports failures to the user.
  std::function<void(const QStringList&)> openFiles;

  /// What is read: the file shown, and how many others are opened with it.
  void setFile(const QString& name, int others);
  /// Shows the surround alone for an empty canvas, and an empty canvas without a picture.
  void setPreview(const QSize& canvas, const QImage& picture);
  /// From 0 to 1.
  void setProgress(double fraction);

  /// Where the picture stands, in device pixels.
  [[nodiscard]] QRect pictureRect() const;
  [[nodiscard]] bool showsPicture() const { return !picture_.isNull(); }
  [[nodiscard]] QPushButton& cancelButton() const;
  [[nodiscard]] QProgressBar& progressBar() const;
  /// The sentence on the card.
  [[nodiscard]] QString title() const;

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  [[nodiscard]] QSize drawablePixels() const;
  [[nodiscard]] CanvasViewContext viewContext() const;
  [[nodiscard]] QImage drawFrame() const;
  void paintPicture(QImage& frame) const;

  BackgroundLayer background_;
  CheckerboardLayer checkerboard_;
  QSize canvas_;
  QImage picture_;
  /// Drawn when it is needed; null until then.
  QImage frame_;
  LoadingCard* card_;
};

}  // namespace orvanel
