// A transform of the active layer's content, or of its mask's if that is selected: previewed any number of
// times, each time from the original pixels, then committed under one record or cancelled. A linked mask is
// carried along with the layer's content; what comes from outside the canvas hides. Owned by the tool
// or command that transforms; main thread only. Boxes and matrices are in document coordinates.
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
  /// Begins on the active layer; null if it is locked, a folder or empty, or if there isn't the memory for
  /// moving it by whole pixels.
  [[nodiscard]] static std::unique_ptr<LayerTransform> begin(const DocumentPtr& document,
                                                             const QString& actionName);
  LayerTransform(const LayerTransform&) = delete;
  LayerTransform& operator=(const LayerTransform&) = delete;

  /// False once committed, cancelled or ended by the document; previewing, committing and cancelling then do
  /// nothing.
  [[nodiscard]] bool isOpen() const { return edit_->isOpen(); }

  /// The bounds of the original content.
  [[nodiscard]] const PixelRect& contentRect() const { return contentRect_; }

  // Each shows the original content anew. False if it isn't open, or if there isn't the memory for the
  // result: the document then goes on showing what it did.

  /// In whole pixels; never refused for lack of memory. Content that leaves the canvas is lost at the end.
  bool translate(int dx, int dy);
  /// Maps the content box to `box`, whose sides are at least 1.
  bool scaleTo(const QRectF& box);
  /// Radians about the centre of the content box; positive is clockwise on the screen.
  bool rotate(float angle);
  /// Whether the matrix has an inverse whose entries 32-bit floats can hold.
  [[nodiscard]] static bool canInvert(const QTransform& matrix);
  /// Applies an invertible affine matrix to row vectors.
  bool transform(const QTransform& matrix);

  /// Keeps the preview under one record.
  void commit() { edit_->keep(); }
  /// Restores the original pixels; leaves no record.
  void cancel() { edit_->takeBack(); }

 private:
  LayerTransform(std::unique_ptr<OpenSurfaceEdit> edit, const PixelRect& contentRect)
      : edit_(std::move(edit)), contentRect_(contentRect) {}

  std::unique_ptr<OpenSurfaceEdit> edit_;
  PixelRect contentRect_;
};

}  // namespace orvanel
