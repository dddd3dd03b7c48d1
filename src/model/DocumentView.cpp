#include <algorithm>
#include <cmath>

#include "model/Document.h"

namespace orvanel {
namespace {

constexpr int lastZoomIndex = static_cast<int>(zoomTable.size()) - 1;
constexpr int actualSizeIndex = 14;
/// Zooms up to this one are shown as a percentage, larger ones as a factor.
constexpr double largestPercentZoom = 8.0;
/// View points that stay free around a fitted canvas, both sides together.
constexpr double fitMargin = 40.0;

bool hasFraction(double value) {
  return value != std::trunc(value);
}

/// Index of the last entry for which `isBelow` holds, 0 when there is none.
template <typename Predicate>
int lastIndexWhere(Predicate isBelow) {
  const auto after = std::partition_point(zoomTable.begin(), zoomTable.end(), isBelow);
  return std::max(static_cast<int>(after - zoomTable.begin()) - 1, 0);
}

}  // namespace

double Document::zoom() const {
  if (const std::optional<double>& custom = customZoomLevel.value()) return *custom;
  const int index = zoomLevelIndex.value();
  if (index < 0 || index > lastZoomIndex) fatalFault("Zoom level index out of range");
  return zoomTable[static_cast<std::size_t>(index)];
}

void Document::zoomIn() {
  const std::optional<double> custom = customZoomLevel.value();
  if (!custom) {
    if (zoomLevelIndex.value() < lastZoomIndex) zoomLevelIndex = zoomLevelIndex.value() + 1;
    return;
  }
  const auto above = std::upper_bound(zoomTable.begin(), zoomTable.end(), *custom);
  customZoomLevel = std::nullopt;
  zoomLevelIndex = std::min(static_cast<int>(above - zoomTable.begin()), lastZoomIndex);
}

void Document::zoomOut() {
  const std::optional<double> custom = customZoomLevel.value();
  if (!custom) {
    if (zoomLevelIndex.value() > 0) zoomLevelIndex = zoomLevelIndex.value() - 1;
    return;
  }
  customZoomLevel = std::nullopt;
  zoomLevelIndex = lastIndexWhere([&](double entry) { return entry < *custom; });
}

void Document::zoomActualSize() {
  customZoomLevel = std::nullopt;
  zoomLevelIndex = actualSizeIndex;
}

void Document::zoomFitOnScreen(double availableWidth, double availableHeight) {
  const double width = availableWidth - fitMargin;
  const double height = availableHeight - fitMargin;
  if (!(width > 0.0) || !(height > 0.0)) return;
  const double fit = std::min(width / canvasWidth.value(), height / canvasHeight.value());
  customZoomLevel = std::clamp(fit, minimumZoom, maximumZoom);
  viewportOffset = QPointF(0.0, 0.0);
}

void Document::applyInitialZoom(double viewWidth, double viewHeight) {
  const double fit = std::min({viewWidth / canvasWidth.value(), viewHeight / canvasHeight.value(), 1.0});
  customZoomLevel = std::nullopt;
  zoomLevelIndex = lastIndexWhere([&](double entry) { return entry <= fit; });
  viewportOffset = QPointF(0.0, 0.0);
  needsInitialZoom = false;
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
