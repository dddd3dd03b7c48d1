#include "app/ProgressLine.h"

#include <QKeyEvent>
#include <QPainter>
#include <chrono>
#include <utility>

#include "look/Look.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

constexpr std::chrono::milliseconds lineAppearance{150};
constexpr std::chrono::milliseconds buttonAppearance{600};
/// Shown even before any progress has been made.
constexpr double shortestFraction = 0.03;
constexpr double cancelSymbolSize = 9.0;
constexpr int cancelButtonEdge = look::size::control;
constexpr int cancelButtonMargin = look::space::normal;

}  // namespace

CancelButton::CancelButton(QWidget* parent)
    : SymbolButton(QStringLiteral("xmark"), cancelSymbolSize, parent) {
  setObjectName(QStringLiteral("cancelFileWork"));
  setAccessibleName(tr("Cancel reading and writing files"));
  setToolTip(tr("Cancel reading and writing files"));
  setFocusPolicy(Qt::TabFocus);
}

bool CancelButton::event(QEvent* event) {
  // While the button has the focus, Escape must not trigger a shortcut elsewhere.
  if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    event->accept();
    return true;
  }
  return SymbolButton::event(event);
}

void CancelButton::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    click();
  } else {
    SymbolButton::keyPressEvent(event);
  }
}

void CancelButton::paintEvent(QPaintEvent* event) {
  // An opaque background keeps the symbol legible over any image.
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(
      QPen(hasFocus() ? look::color::accent : look::color::divider, hasFocus() ? look::size::focusRing : 1));
  painter.setBrush(look::color::pane);
  painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), look::radius::control,
                          look::radius::control);
  painter.end();
  SymbolButton::paintEvent(event);
}

ProgressLine::ProgressLine(FileActivity& activity, QWidget* parent)
    : QWidget(parent), activity_(activity), cancelButton_(new CancelButton(parent)) {
  setObjectName(QStringLiteral("progressLine"));
  setAccessibleName(tr("Progress"));
  setAttribute(Qt::WA_TransparentForMouseEvents);
  hideAll();
  for (const auto& [timer, widget, delay] :
       {std::tuple<QTimer&, QWidget*, std::chrono::milliseconds>{lineDelay_, this, lineAppearance},
        {buttonDelay_, cancelButton_, buttonAppearance}}) {
    timer.setSingleShot(true);
    timer.setInterval(delay);
    connect(&timer, &QTimer::timeout, widget, [widget = widget] {
      widget->raise();
      widget->show();
    });
  }
  connect(cancelButton_, &QAbstractButton::clicked, this, [this] {
    if (onCancel) onCancel();
  });
  notifier_ = activity_.changes.addNotifier([this] { activityChanged(); });
  activityChanged();
}

void ProgressLine::placeIn(const QRect& area) {
  setGeometry(area.left(), area.top(), area.width(), thickness);
  cancelButton_->setGeometry(area.right() + 1 - cancelButtonMargin - cancelButtonEdge,
                             area.top() + thickness + cancelButtonMargin, cancelButtonEdge, cancelButtonEdge);
}

void ProgressLine::hideAll() {
  // Return the focus to the canvas rather than to the next widget in the tab order.
  if (cancelButton_->hasFocus()) NotificationCenter::standard().post(notification::focusCanvas);
  cancelButton_->hide();
  hide();
}

void ProgressLine::leaveOut(std::optional<FileActivity::Work> work) {
  if (std::exchange(leftOut_, work) != work) activityChanged();
}

void ProgressLine::activityChanged() {
  if (!activity_.fractionWithout(leftOut_)) {
    lineDelay_.stop();
    buttonDelay_.stop();
    hideAll();
    return;
  }
  if (isHidden() && !lineDelay_.isActive()) lineDelay_.start();
  if (cancelButton_->isHidden() && !buttonDelay_.isActive()) buttonDelay_.start();
  update();
}

void ProgressLine::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const double fraction = std::max(shortestFraction, activity_.fractionWithout(leftOut_).value_or(0.0));
  painter.fillRect(rect(), look::color::progressTrack);
  painter.fillRect(QRectF(0, 0, width() * fraction, height()), look::color::accent);
}

}  // namespace orvanel
