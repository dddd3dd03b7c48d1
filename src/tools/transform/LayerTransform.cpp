#include "tools/transform/LayerTransform.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <optional>
#include <utility>

namespace orvanel {
namespace {

/// a, b, c, d, tx and ty of the inverse; not all finite if there is none. Qt's own inverse rejects
/// determinants below 1e-12, which two strong reductions reach.
std::array<float, 6> inverseOf(const QTransform& m) {
  const double determinant = m.m11() * m.m22() - m.m12() * m.m21();
  const auto entry = [determinant](double cofactor) { return static_cast<float>(cofactor / determinant); };
  return {entry(m.m22()),
          entry(-m.m12()),
          entry(-m.m21()),
          entry(m.m11()),
          entry(m.m21() * m.dy() - m.m22() * m.dx()),
          entry(m.m12() * m.dx() - m.m11() * m.dy())};
}

AffineParams affineOf(const QTransform& matrix) {
  AffineParams params;
  params.matrix = inverseOf(matrix);
  return params;
}

}  // namespace

std::unique_ptr<LayerTransform> LayerTransform::begin(const DocumentPtr& document,
                                                      const QString& actionName) {
  document->settle();
  const std::shared_ptr<Layer> layer = document->activeLayer();
  if (layer == nullptr || layer->isLocked.value()) return nullptr;
  const ConstTexture target = layer->activeEditTexture();
  if (target == nullptr) return nullptr;
  const SurfaceKind kind = layer->editsMask() ? SurfaceKind::mask : SurfaceKind::pixels;
  const std::optional<PixelRect> content =
      document->context().layerContentBounds(*target, document->colorMode.value(), kind == SurfaceKind::mask);
  if (!content) return nullptr;
  auto edit = OpenSurfaceEdit::begin(document, layer, kind, OpenSurfaceEdit::Purpose::transform, actionName);
  if (edit == nullptr) return nullptr;
  return std::unique_ptr<LayerTransform>(new LayerTransform(std::move(edit), *content));
}

bool LayerTransform::translate(int dx, int dy) {
  return edit_->show({OffsetParams{dx, dy}});
}

bool LayerTransform::scaleTo(const QRectF& box) {
  ScaleParams scale;
  scale.source = {static_cast<float>(contentRect_.x), static_cast<float>(contentRect_.y),
                  static_cast<float>(contentRect_.width), static_cast<float>(contentRect_.height)};
  scale.destination = {static_cast<float>(box.x()), static_cast<float>(box.y()),
                       static_cast<float>(box.width()), static_cast<float>(box.height())};
  // The content fades out at the edges of its box; a mask goes on beyond them.
  const QTransform matrix =
      QTransform::fromTranslate(-contentRect_.x, -contentRect_.y) *
      QTransform::fromScale(box.width() / contentRect_.width, box.height() / contentRect_.height) *
      QTransform::fromTranslate(box.x(), box.y());
  return edit_->show({scale}, {affineOf(matrix)});
}

bool LayerTransform::rotate(float angle) {
  RotateParams turn;
  turn.centerX = static_cast<float>(contentRect_.x) + static_cast<float>(contentRect_.width) * 0.5F;
  turn.centerY = static_cast<float>(contentRect_.y) + static_cast<float>(contentRect_.height) * 0.5F;
  turn.angle = angle;
  return edit_->show({turn});
}

bool LayerTransform::canInvert(const QTransform& matrix) {
  return std::ranges::all_of(inverseOf(matrix), [](float entry) { return std::isfinite(entry); });
}

bool LayerTransform::transform(const QTransform& matrix) {
  assert(canInvert(matrix));
  return edit_->show({affineOf(matrix)});
}

}  // namespace orvanel
