// One transform of the active layer's content, or of its mask's while that is selected: shown as often as
// wanted, each time from the pixels of the beginning, then kept under one record or taken back. Owned by the
// tool or command that transforms; main thread only. Boxes and matrices are in document coordinates.
#pragma once

#include <QRectF>
#include <QString>
#include <QTransform>
#include <memory>
#include <utility>

#include "model/OpenSurfaceEdit.h"

namespace orvanel {

class LayerTransform {
 public:
  /// Begins on the active layer; null when it is locked, a folder or without content, and
  /// when the memory that it may need is not there.
  [[nodiscard]] static std::unique_ptr<LayerTransform> begin(const DocumentPtr& document,
                                                             const QString& actionName);
  LayerTransform(const LayerTransform&) = delete;
  LayerTransform& operator=(const LayerTransform&) = delete;

  /// False once it was kept, taken back or ended by the document. Then showing, keeping and taking back do
  /// nothing.
  [[nodiscard]] bool isOpen() const { return edit_->isOpen(); }

  /// The bounds of the content at the beginning.
  [[nodiscard]] const PixelRect& contentRect() const { return contentRect_; }

  /// Whole pixels; what leaves the canvas is lost at the end.
  void translate(int dx, int dy);
  /// From the content box into `box`, whose sides are at least 1.
  void scaleTo(const QRectF& box);
  /// Radians about the centre of the content box; positive turns clockwise on the screen.
  void rotate(float angle);
  /// Whether the matrix has an inverse whose entries 32-bit floats can hold.
  [[nodiscard]] static bool canInvert(const QTransform& matrix);
  /// An affine matrix that can be inverted, applied to row vectors.
  void transform(const QTransform& matrix);

  /// Keeps what is shown, under one record.
  void commit() { edit_->keep(); }
  /// Puts back the pixels of the beginning; no record.
  void cancel() { edit_->takeBack(); }

 private:
  LayerTransform(std::unique_ptr<OpenSurfaceEdit> edit, const PixelRect& contentRect)
      : edit_(std::move(edit)), contentRect_(contentRect) {}

  std::unique_ptr<OpenSurfaceEdit> edit_;
  PixelRect contentRect_;
};

}  // namespace orvanel
