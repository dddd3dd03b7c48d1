#include "panels/controls/SliderDropdown.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>
#include <utility>

#include "look/Look.h"
#include "panels/controls/AccessibleSliderDropdown.h"
#include "panels/controls/DirectSlider.h"
#include "panels/controls/SliderPanel.h"
#include "panels/controls/SymbolButton.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

constexpr float percent = 100.0F;
/// What a whole number of percent may lose as a part of one: 0.53 is a little less than 53%.
constexpr float roundingLoss = 1e-4F;
constexpr int largeStep = 10;
constexpr double chevronSize = 12;

}  // namespace

/// The frame around the text and the button, which the field covers while it is open.
class SliderDropdown::Box : public QWidget {
 public:
  explicit Box(SliderDropdown* control) : QWidget(control) {
    setFixedHeight(look::size::control);
    setCursor(Qt::IBeamCursor);
  }
  QLineEdit* field = nullptr;

 protected:
  void resizeEvent(QResizeEvent* /*event*/) override { field->setGeometry(rect()); }
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool hasFocus = parentWidget()->hasFocus();
    const double line = hasFocus ? look::size::focusRing : 1.0;
    painter.setPen(QPen(hasFocus      ? look::color::accent
                        : isEnabled() ? look::color::border
                                      : look::color::divider,
                        line));
    painter.setBrush(isEnabled() ? look::color::field : look::color::pane);
    const double inset = line / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), look::radius::control,
                            look::radius::control);
  }
};

SliderDropdown::SliderDropdown(const QString& label, double lowest, double highest, Display display,
                               QWidget* parent)
    : QWidget(parent),
      label_(label),
      lowest_(static_cast<float>(lowest)),
      highest_(static_cast<float>(highest)),
      display_(display),
      value_(lowest_),
      labelText_(new QLabel(label, this)),
      box_(new Box(this)),
      text_(new QLabel(box_)),
      button_(new SymbolButton(QStringLiteral("chevron.down"), chevronSize, box_)),
      field_(new QLineEdit(box_)),
      slider_(new DirectSlider),
      panel_(new SliderPanel(slider_, button_)) {
  AccessibleSliderDropdown::install();
  QString name = label;
  while (name.endsWith(QLatin1Char(':'))) name.chop(1);
  setAccessibleName(name);
  setFocusPolicy(Qt::TabFocus);
  setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);

  labelText_->setTextFormat(Qt::PlainText);
  labelText_->setVisible(!label.isEmpty());
  // A role, because a colour of its own would be lost when the control changes its parent.
  labelText_->setForegroundRole(QPalette::PlaceholderText);
  text_->setTextFormat(Qt::PlainText);
  text_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  button_->setFocusPolicy(Qt::NoFocus);
  button_->setCursor(Qt::ArrowCursor);
  button_->setAccessibleName(tr("%1: slider").arg(name));
  button_->setToolTip(tr("Set %1 with a slider").arg(name));
  field_->setAccessibleName(name);
  field_->setAlignment(Qt::AlignRight);
  field_->hide();
  field_->installEventFilter(this);
  box_->field = field_;
  slider_->setAccessibleName(name);
  slider_->setRange(nearestUnit(lowest_), nearestUnit(highest_));

  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::space::normal);
  row->addWidget(labelText_);
  row->addWidget(box_, 1);
  auto* inBox = new QHBoxLayout(box_);
  inBox->setContentsMargins(look::space::normal, 0, 2, 0);
  inBox->setSpacing(2);
  inBox->addWidget(text_, 1);
  inBox->addWidget(button_);

  connect(button_, &QAbstractButton::clicked, this, &SliderDropdown::openPanel);
  connect(field_, &QLineEdit::editingFinished, this, &SliderDropdown::commitText);
  connect(slider_, &QSlider::valueChanged, this, [this](int position) { userSet(valueOf(position)); });
  slider_->onEditingChanged = [this](bool isEditing) { setEditing(isEditing); };
  reserveWidth();
  showValue();
}

SliderDropdown::~SliderDropdown() {
  // The field loses the keyboard when it is destroyed, after this object has ceased to be a control.
  field_->disconnect(this);
  slider_->onEditingChanged = nullptr;
}

float SliderDropdown::valueOf(double shownUnits) const {
  const auto value =
      static_cast<float>(display_ == Display::percent ? shownUnits / double{percent} : shownUnits);
  return std::clamp(value, lowest_, highest_);
}

int SliderDropdown::nearestUnit(float value) const {
  return static_cast<int>(std::lround(display_ == Display::percent ? value * percent : value));
}

int SliderDropdown::shownValue() const {
  return static_cast<int>(display_ == Display::percent ? value_ * percent + roundingLoss : value_);
}

QString SliderDropdown::valueText() const {
  const QString number = QString::number(shownValue());
  return display_ == Display::percent ? number + QLatin1Char('%') : number;
}

void SliderDropdown::setValue(float value) {
  if (value == value_) return;
  value_ = value;
  showValue();
  QAccessibleValueChangeEvent changed(this, valueText());
  QAccessible::updateAccessibility(&changed);
}

void SliderDropdown::showValue() {
  text_->setText(valueText());
  const QSignalBlocker silent(slider_);
  slider_->setValue(nearestUnit(value_));
}

void SliderDropdown::setEditing(bool isEditing) {
  if (onEditingChanged) onEditingChanged(isEditing);
}

void SliderDropdown::userSet(float value) {
  if (value == value_) return;
  setValue(value);
  if (onValueChanged) onValueChanged(value_);
}

void SliderDropdown::edit(double shownUnits) {
  setEditing(true);
  userSet(valueOf(shownUnits));
  setEditing(false);
}

void SliderDropdown::reserveWidth() {
  const QString unit = display_ == Display::percent ? QStringLiteral("%") : QString();
  const auto widthOf = [&](int bound) {
    return text_->fontMetrics().horizontalAdvance(QString::number(bound) + unit);
  };
  text_->setMinimumWidth(std::max(widthOf(slider_->minimum()), widthOf(slider_->maximum())));
}

void SliderDropdown::setLabelWidth(int width) {
  labelText_->setFixedWidth(width);
  labelText_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

int SliderDropdown::labelWidth() const {
  return labelText_->fontMetrics().horizontalAdvance(label_);
}

// The field.

bool SliderDropdown::isEditingText() const {
  return !field_->isHidden();
}

void SliderDropdown::beginTextEditing() {
  if (isEditingText() || !isEnabled()) return;
  previousFocus_ = window()->focusWidget();
  field_->setText(QString::number(shownValue()));
  field_->show();
  field_->raise();
  field_->setFocus(Qt::OtherFocusReason);
  field_->selectAll();
}

void SliderDropdown::commitText() {
  if (!isEditingText()) return;
  // The text that nobody touched is only the whole part of the value.
  if (!field_->isModified()) return closeField();
  QString typed = field_->text().trimmed();
  if (display_ == Display::percent && typed.endsWith(QLatin1Char('%'))) typed = typed.chopped(1).trimmed();
  closeField();
  bool isNumber = false;
  const qint64 number = typed.toLongLong(&isNumber);
  setEditing(true);
  if (isNumber) userSet(valueOf(static_cast<double>(number)));
  setEditing(false);
}

void SliderDropdown::closeField() {
  // Nobody has the keyboard after it has been taken from the field.
  const QWidget* focus = window()->focusWidget();
  const bool hadFocus = focus == field_ || focus == nullptr;
  field_->hide();
  const QPointer<QWidget> previous = std::exchange(previousFocus_, nullptr);
  if (!hadFocus) return;
  // The field of another control may have closed meanwhile.
  if (previous != nullptr && previous->isVisible()) previous->setFocus(Qt::OtherFocusReason);
  // Who works with keys stays at the control; a click has only borrowed the canvas's keyboard.
  if (previous != this) NotificationCenter::standard().post(notification::focusCanvas);
}

void SliderDropdown::endEditing() {
  commitText();
  panel_->close();
}

bool SliderDropdown::eventFilter(QObject* watched, QEvent* event) {
  if (watched != field_ || event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
  switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      commitText();
      return true;
    case Qt::Key_Escape:
      closeField();
      return true;
    default:
      return false;
  }
}

// The panel.

bool SliderDropdown::isShowingPopover() const {
  return panel_->isVisible();
}

void SliderDropdown::openPanel() {
  if (isShowingPopover() || !isEnabled()) return;
  commitText();
  showValue();
  panel_->openUnder(*box_);
}

// Events.

void SliderDropdown::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && box_->geometry().contains(event->position().toPoint())) {
    beginTextEditing();
  } else {
    event->ignore();
  }
}

void SliderDropdown::keyPressEvent(QKeyEvent* event) {
  const int units = event->modifiers().testFlag(Qt::ShiftModifier) ? largeStep : 1;
  switch (event->key()) {
    case Qt::Key_Up:
      return edit(shownValue() + units);
    case Qt::Key_Down:
      if (event->modifiers().testFlag(Qt::AltModifier)) return openPanel();
      return edit(shownValue() - units);
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return beginTextEditing();
    default:
      event->ignore();
  }
}

void SliderDropdown::changeEvent(QEvent* event) {
  if (event->type() == QEvent::EnabledChange && !isEnabled()) endEditing();
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) reserveWidth();
  QWidget::changeEvent(event);
}

}  // namespace orvanel
