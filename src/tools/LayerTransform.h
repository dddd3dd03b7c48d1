// One transform of the active layer's content, or of its mask's while that is selected: shown as often as
// wanted, each time from the pixels of the beginning, then kept under one record or taken back. Owned by the
// tool or command that transforms; main thread only. Boxes and matrices are in document coordinates.
#pragma once

#include <QRectF>
#include <QString>
#include <QTransform>
#include <memory>
#include <optional>

#include "model/Document.h"

namespace orvanel {

class MoveLayerOperation;

class LayerTransform {
 public:
  /// Begins on the active layer; null when it is locked, a folder or without content.
  [[nodiscard]] static std::unique_ptr<LayerTransform> begin(const DocumentPtr& document,
                                                             const QString& actionName);
  /// An open transform stays as it is shown, without a record.
  ~LayerTransform();
  LayerTransform(const LayerTransform&) = delete;
  LayerTransform& operator=(const LayerTransform&) = delete;

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
  void commit();
  /// Puts back the pixels of the beginning; no record.
  void cancel();

 private:
  LayerTransform(const DocumentPtr& document, std::shared_ptr<Layer> layer, PixelRect contentRect,
                 std::shared_ptr<MoveLayerOperation> record);
  [[nodiscard]] Surface& live() const { return *target_; }

  DocumentPtr document_;
  std::shared_ptr<Layer> layer_;
  Texture target_;
  Surface originalTexture_;
  PixelRect contentRect_;
  std::shared_ptr<MoveLayerOperation> undoOp_;
};

}  // namespace orvanel
