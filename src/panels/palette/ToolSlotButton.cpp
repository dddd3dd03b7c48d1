#include "panels/palette/ToolSlotButton.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <chrono>
#include <utility>

#include "look/Look.h"
#include "look/Symbol.h"
#include "look/TranslatedName.h"
#include "panels/palette/AccessibleToolSlot.h"

namespace orvanel {

namespace {

constexpr std::chrono::milliseconds holdTime{300};
/// How far the picture of a pressed button moves on both axes, in view points.
constexpr double pressedShift = 0.5;

QString nameOf(Tool tool) {
  return look::translatedName(displayName(tool));
}

QString toolTipOf(Tool tool) {
  const std::optional<QChar> letter = shortcutLetter(tool);
  return letter ? QStringLiteral("%1 (%2)").arg(nameOf(tool), *letter) : nameOf(tool);
}

/// Dark above and at the left, light below and at the right: the face lies deeper than the palette. The lines
/// are one point wide along the edges of `face`, with their centres half a point inside, and meet in the
/// middle of two corners.
void paintBevels(QPainter& painter, const QRectF& face) {
  const QRectF line = face.adjusted(0.5, 0.5, -0.5, -0.5);
  const double diameter = 2.0 * look::radius::control - 1.0;
  const QSizeF corner(diameter, diameter);
  const QRectF topLeft(line.topLeft(), corner);
  const QRectF topRight(line.topRight() - QPointF(diameter, 0), corner);
  const QRectF bottomRight(line.bottomRight() - QPointF(diameter, diameter), corner);
  const QRectF bottomLeft(line.bottomLeft() - QPointF(0, diameter), corner);
  QPainterPath dark;
  dark.arcMoveTo(bottomLeft, 225);
  dark.arcTo(bottomLeft, 225, -45);
  dark.arcTo(topLeft, 180, -90);
  dark.arcTo(topRight, 90, -45);
  QPainterPath light;
  light.arcMoveTo(topRight, 45);
  light.arcTo(topRight, 45, -45);
  light.arcTo(bottomRight, 0, -90);
  light.arcTo(bottomLeft, 270, -45);
  painter.setBrush(Qt::NoBrush);
  painter.strokePath(light, look::color::bevelLight);
  painter.strokePath(dark, look::color::bevelDark);
}

/// The mark in the lower right corner of a group's face.
QPolygonF variantTriangle(const QRectF& face) {
  constexpr double leg = 4.0;
  const QPointF corner = face.bottomRight() - QPointF(4.0, 4.0);
  return {corner, corner - QPointF(leg, 0), corner - QPointF(0, leg)};
}

}  // namespace

ToolSlotButton::ToolSlotButton(ToolSlot slot, ToolState& toolState, QWidget* parent)
    : QAbstractButton(parent), slot_(std::move(slot)), toolState_(toolState) {
  AccessibleToolSlot::install();
  setCheckable(true);
  // A click leaves the keyboard with the canvas.
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setFixedSize(look::size::toolButton, look::size::toolButton);
  if (slot_.isGroup()) makeMenu();
  holdTimer_.setSingleShot(true);
  holdTimer_.setInterval(holdTime);
  connect(&holdTimer_, &QTimer::timeout, this, &ToolSlotButton::openMenu);
  // Keys and assistive technology click; the mouse has rules of its own.
  connect(this, &QAbstractButton::clicked, this, [this] { toolState_.selectTool(shownTool()); });
  const auto changed = [this] { followToolState(); };
  notifiers_ = {toolState_.toolStack.addNotifier(changed), toolState_.selectedVariants.addNotifier(changed)};
  followToolState();
}

void ToolSlotButton::makeMenu() {
  menu_ = new QMenu(this);
  menu_->setProperty("hasPictures", true);
  for (const Tool tool : slot_.tools()) {
    QAction* action = menu_->addAction(look::symbolIcon(iconName(tool), look::IconPlace::menu), nameOf(tool));
    if (const auto letter = shortcutLetter(tool)) action->setShortcut(QKeySequence(*letter));
    // The key is shown here and acts elsewhere.
    action->setShortcutContext(Qt::WidgetShortcut);
    connect(action, &QAction::triggered, this, [this, tool] { toolState_.selectVariant(slot_, tool); });
  }
  connect(menu_, &QMenu::aboutToHide, this, &ToolSlotButton::dropPress);
}

void ToolSlotButton::openMenu() {
  didShowMenu_ = true;
  holdTimer_.stop();
  menu_->popup(mapToGlobal(QPoint(0, height())));
}

void ToolSlotButton::followToolState() {
  const std::vector<Tool> tools = slot_.tools();
  setChecked(std::ranges::count(tools, toolState_.currentTool()) > 0);
  setToolTip(toolTipOf(shownTool()));
  setAccessibleName(nameOf(shownTool()));
  update();
}

void ToolSlotButton::dropPress() {
  holdTimer_.stop();
  setDown(false);
}

QSize ToolSlotButton::sizeHint() const {
  return {look::size::toolButton, look::size::toolButton};
}

void ToolSlotButton::changeEvent(QEvent* event) {
  if (event->type() == QEvent::EnabledChange && !isEnabled()) {
    if (menu_ != nullptr) menu_->close();
    dropPress();
  }
  QAbstractButton::changeEvent(event);
}

void ToolSlotButton::mousePressEvent(QMouseEvent* event) {
  event->accept();
  if (event->button() != Qt::LeftButton) return;
  setDown(true);
  if (!slot_.isGroup()) return toolState_.selectTool(shownTool());
  didShowMenu_ = false;
  if (event->modifiers().testFlag(Qt::AltModifier)) return openMenu();
  holdTimer_.start();
}

void ToolSlotButton::mouseMoveEvent(QMouseEvent* event) {
  event->accept();  // a press holds wherever the pointer goes
}

void ToolSlotButton::mouseReleaseEvent(QMouseEvent* event) {
  event->accept();
  if (event->button() != Qt::LeftButton || !isDown()) return;
  dropPress();
  if (slot_.isGroup() && !didShowMenu_) toolState_.selectTool(shownTool());
}

void ToolSlotButton::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  if (menu_ == nullptr) return;
  dropPress();
  openMenu();
}

void ToolSlotButton::keyPressEvent(QKeyEvent* event) {
  const bool opens = event->key() == Qt::Key_Right ||
                     (event->key() == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier));
  if (menu_ == nullptr || !opens) return QAbstractButton::keyPressEvent(event);
  openMenu();
  const auto tools = slot_.tools();
  const auto shown = std::ranges::find(tools, shownTool()) - tools.begin();
  menu_->setActiveAction(menu_->actions()[shown]);
}

void ToolSlotButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRectF face = QRectF(rect()).adjusted(1, 1, -1, -1);
  if (looksPressed() || (isEnabled() && underMouse())) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(looksPressed() ? look::color::pressed : look::color::hover);
    painter.drawRoundedRect(face, look::radius::control, look::radius::control);
  }
  if (looksPressed()) paintBevels(painter, face);
  if (hasFocus()) {
    painter.setPen(QPen(look::color::accent, look::size::focusRing));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(face, look::radius::control, look::radius::control);
  }
  if (looksPressed()) painter.translate(pressedShift, pressedShift);
  const QColor ink = isEnabled() ? look::color::symbol : look::color::disabledText;
  QRectF box(0, 0, look::size::symbol, look::size::symbol);
  box.moveCenter(face.center());
  look::paintSymbol(painter, iconName(shownTool()), box, ink);
  if (!slot_.isGroup()) return;
  painter.setPen(Qt::NoPen);
  painter.setBrush(ink);
  painter.drawPolygon(variantTriangle(face));
}

}  // namespace orvanel
