#include "panels/controls/SliderPanel.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <algorithm>

#include "look/Look.h"
#include "panels/controls/DirectSlider.h"

namespace orvanel {

namespace {

constexpr int smallestWidth = 160;
/// Between the control and its panel.
constexpr int gap = 2;

}  // namespace

SliderPanel::SliderPanel(DirectSlider* slider, QWidget* opener)
    : QWidget(opener, Qt::Popup | Qt::FramelessWindowHint), slider_(slider), opener_(opener) {
  setObjectName(QStringLiteral("sliderPanel"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(look::space::wide, look::space::tight, look::space::wide, look::space::tight);
  row->addWidget(slider);
  setFocusProxy(slider);
}

void SliderPanel::openUnder(const QWidget& anchor) {
  setAttribute(Qt::WA_NoMouseReplay, false);
  resize(std::max(anchor.width(), smallestWidth), sizeHint().height());
  const QRect box(anchor.mapToGlobal(QPoint()), anchor.size());
  const QRect room = anchor.screen()->availableGeometry();
  const bool fitsBelow = box.bottom() + gap + height() <= room.bottom();
  const int left = std::clamp(box.right() + 1 - width(), room.left(), room.right() + 1 - width());
  move(left, fitsBelow ? box.bottom() + 1 + gap : box.top() - gap - height());
  show();
  slider_->setFocus(Qt::PopupFocusReason);
}

void SliderPanel::mousePressEvent(QMouseEvent* event) {
  if (rect().contains(event->position().toPoint())) return;
  // Elsewhere the press goes on to what is there; at the opener it would open the panel again.
  const QPoint inOpener = opener_->mapFromGlobal(event->globalPosition().toPoint());
  setAttribute(Qt::WA_NoMouseReplay, opener_->rect().contains(inOpener));
  close();
}

void SliderPanel::keyPressEvent(QKeyEvent* event) {
  const int key = event->key();
  if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) close();
}

void SliderPanel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), look::color::border);
  const double line = look::hairline(*this);
  painter.fillRect(QRectF(rect()).adjusted(line, line, -line, -line), look::color::field);
}

}  // namespace orvanel
