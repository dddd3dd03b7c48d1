#include "app/ProgressLine.h"

#include <QPainter>
#include <chrono>

#include "panels/PanelStyle.h"

namespace orvanel {

namespace {

constexpr std::chrono::milliseconds appearanceDelay{150};
/// A line that has not moved yet still shows that something runs.
constexpr double shortestFraction = 0.03;

}  // namespace

ProgressLine::ProgressLine(FileActivity& activity, QWidget* parent) : QWidget(parent), activity_(activity) {
  setObjectName(QStringLiteral("progressLine"));
  setAccessibleName(QStringLiteral("Progress"));
  setAttribute(Qt::WA_TransparentForMouseEvents);
  hide();
  appearance_.setSingleShot(true);
  appearance_.setInterval(appearanceDelay);
  connect(&appearance_, &QTimer::timeout, this, [this] {
    raise();
    show();
  });
  notifier_ = activity_.fraction.addNotifier([this] { activityChanged(); });
  activityChanged();
}

void ProgressLine::activityChanged() {
  const auto& fraction = activity_.fraction.value();
  if (!fraction) {
    appearance_.stop();
    hide();
    return;
  }
  if (isHidden() && !appearance_.isActive()) appearance_.start();
  update();
}

void ProgressLine::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const double fraction = std::max(shortestFraction, activity_.fraction.value().value_or(0.0));
  QColor track = panelStyle::accentColor;
  track.setAlpha(40);
  painter.fillRect(rect(), track);
  painter.fillRect(QRectF(0, 0, width() * fraction, height()), panelStyle::accentColor);
}

}  // namespace orvanel
