// Commands on the view of the document. None of them is recorded.
#include <algorithm>
#include <cmath>

#include "model/Document.h"
#include "model/edit/DocumentEdit.h"

namespace orvanel {
namespace {

constexpr int lastZoomIndex = static_cast<int>(zoomTable.size()) - 1;
constexpr int actualSizeIndex = 14;
/// Zooms up to this value are shown as a percentage, larger ones as a factor.
constexpr double largestPercentZoom = 8.0;
/// Total margin around a fitted canvas, both sides together, in view points.
constexpr double fitMargin = 40.0;

bool hasFraction(double value) {
  return value != std::trunc(value);
}

/// Index of the last entry for which `isBelow` holds, or 0.
template <typename Predicate>
int lastIndexWhere(Predicate isBelow) {
  const auto after = std::partition_point(zoomTable.begin(), zoomTable.end(), isBelow);
  return std::max(static_cast<int>(after - zoomTable.begin()) - 1, 0);
}

int initialZoomIndex(const QSizeF& canvas, const QSizeF& view) {
  const double fit = std::min({view.width() / canvas.width(), view.height() / canvas.height(), 1.0});
  return lastIndexWhere([&](double entry) { return entry <= fit; });
}

}  // namespace

double initialZoom(const QSizeF& canvas, const QSizeF& view) {
  return zoomTable[static_cast<std::size_t>(initialZoomIndex(canvas, view))];
}

double Document::zoom() const {
  if (const std::optional<double>& custom = customZoomLevel.value()) return *custom;
  const int index = zoomLevelIndex.value();
  if (index < 0 || index > lastZoomIndex) fatalFault("Zoom level index out of range");
  return zoomTable[static_cast<std::size_t>(index)];
}

void Document::zoomIn() {
  DocumentEdit edit(*this, editKind::state);
  const std::optional<double> custom = customZoomLevel.value();
  if (!custom) {
    const int next = std::min(zoomLevelIndex.value() + 1, lastZoomIndex);
    return edit.set(&Document::zoomLevelIndex, next, ViewProperty::zoom);
  }
  const auto above = std::upper_bound(zoomTable.begin(), zoomTable.end(), *custom);
  edit.set(&Document::customZoomLevel, std::nullopt, ViewProperty::zoom);
  edit.set(&Document::zoomLevelIndex, std::min(static_cast<int>(above - zoomTable.begin()), lastZoomIndex),
           ViewProperty::zoom);
}

void Document::zoomOut() {
  DocumentEdit edit(*this, editKind::state);
  const std::optional<double> custom = customZoomLevel.value();
  if (!custom) {
    const int next = std::max(zoomLevelIndex.value() - 1, 0);
    return edit.set(&Document::zoomLevelIndex, next, ViewProperty::zoom);
  }
  edit.set(&Document::customZoomLevel, std::nullopt, ViewProperty::zoom);
  edit.set(&Document::zoomLevelIndex, lastIndexWhere([&](double entry) { return entry < *custom; }),
           ViewProperty::zoom);
}

void Document::zoomActualSize() {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::customZoomLevel, std::nullopt, ViewProperty::zoom);
  edit.set(&Document::zoomLevelIndex, actualSizeIndex, ViewProperty::zoom);
}

void Document::setZoom(double factor) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::customZoomLevel, std::clamp(factor, minimumZoom, maximumZoom), ViewProperty::zoom);
}

void Document::zoomFitOnScreen(double availableWidth, double availableHeight) {
  const double width = availableWidth - fitMargin;
  const double height = availableHeight - fitMargin;
  if (!(width > 0.0) || !(height > 0.0)) return;
  const double fit = std::min(width / canvasWidth.value(), height / canvasHeight.value());
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::customZoomLevel, std::clamp(fit, minimumZoom, maximumZoom), ViewProperty::zoom);
  edit.set(&Document::viewportOffset, QPointF(0.0, 0.0), ViewProperty::viewportOffset);
}

void Document::applyInitialZoom(double viewWidth, double viewHeight) {
  const QSizeF canvas(canvasWidth.value(), canvasHeight.value());
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::customZoomLevel, std::nullopt, ViewProperty::zoom);
  edit.set(&Document::zoomLevelIndex, initialZoomIndex(canvas, {viewWidth, viewHeight}), ViewProperty::zoom);
  edit.set(&Document::viewportOffset, QPointF(0.0, 0.0), ViewProperty::viewportOffset);
  edit.set(&Document::needsInitialZoom, false, ViewProperty::needsInitialZoom);
}

void Document::setViewportOffset(QPointF offset) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::viewportOffset, offset, ViewProperty::viewportOffset);
}

void Document::setCursorDocumentPosition(const std::optional<QPointF>& position) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::cursorDocumentPosition, position, ViewProperty::cursorDocumentPosition);
}

void Document::setDragSize(const std::optional<DragSize>& size) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::dragSize, size, ViewProperty::dragSize);
}

void Document::setChannelVisibility(const ChannelVisibility& visibility) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::channelVisibility, visibility, ViewProperty::channelVisibility);
}

void Document::setForegroundColor(const DisplayColor& color) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::foregroundColor, color, ViewProperty::colors);
}

void Document::setBackgroundColor(const DisplayColor& color) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::backgroundColor, color, ViewProperty::colors);
}

void Document::swapColors() {
  DocumentEdit edit(*this, editKind::state);
  const DisplayColor foreground = foregroundColor.value();
  edit.set(&Document::foregroundColor, backgroundColor.value(), ViewProperty::colors);
  edit.set(&Document::backgroundColor, foreground, ViewProperty::colors);
}

void Document::resetColors() {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::foregroundColor, DisplayColor::black(), ViewProperty::colors);
  edit.set(&Document::backgroundColor, DisplayColor::white(), ViewProperty::colors);
}

void Document::rememberTool(Tool tool, const QHash<QString, Tool>& variants) {
  DocumentEdit edit(*this, editKind::state);
  edit.set(&Document::selectedTool, tool, ViewProperty::selectedTool);
  edit.set(&Document::selectedVariants, variants, ViewProperty::selectedTool);
}

QString Document::zoomDisplayString() const {
  const double factor = zoom();
  if (factor > largestPercentZoom) {
    if (hasFraction(factor)) return QString::asprintf("%gx", factor);
    return QString::number(static_cast<qint64>(factor)) + QChar(u'x');
  }
  const double percent = factor * 100.0;
  if (!hasFraction(percent)) return QString::number(static_cast<qint64>(percent)) + QChar(u'%');
  return QString::asprintf("%g%%", std::trunc(percent * 100.0) / 100.0);
}

}  // namespace orvanel
