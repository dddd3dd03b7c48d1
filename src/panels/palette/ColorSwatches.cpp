#include "panels/palette/ColorSwatches.h"

#include <QPainter>
#include <utility>

#include "look/Look.h"
#include "panels/controls/SymbolButton.h"

namespace orvanel {

namespace {

constexpr int swatchEdge = 24;
/// How far the background's swatch lies below and to the right of the foreground's.
constexpr int overlap = 12;
constexpr int buttonSymbol = look::size::symbol;
constexpr QSize buttonSize(20, 24);
constexpr int areaWidth = 2 * buttonSize.width();

QColor screenColor(const DisplayColor& color) {
  const auto component = [](float value) { return qBound(0.0F, value, 1.0F); };
  return QColor::fromRgbF(component(color.red), component(color.green), component(color.blue));
}

}  // namespace

ColorSwatch::ColorSwatch(QString name, QWidget* parent) : QAbstractButton(parent), name_(std::move(name)) {
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_Hover);
  setFixedSize(swatchEdge, swatchEdge);
  clearColor();
}

void ColorSwatch::setColor(const DisplayColor& color) {
  color_ = color;
  setAccessibleName(tr("%1: #%2").arg(name_, color.hexText()));
  setToolTip(tr("%1: #%2\nClick to choose another").arg(name_, color.hexText()));
  update();
}

void ColorSwatch::clearColor() {
  color_ = DisplayColor::black();
  setAccessibleName(name_);
  setToolTip(name_);
  update();
}

void ColorSwatch::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  // Between the colour and what surrounds it lies a line of either kind, so that no colour hides the edge.
  const bool isMarked = isEnabled() && (hasFocus() || underMouse());
  painter.fillRect(rect(), hasFocus() ? look::color::accent
                           : isMarked ? look::color::symbol
                                      : look::color::border);
  const int outer = hasFocus() ? look::size::focusRing : 1;
  const QRect inner = rect().adjusted(outer, outer, -outer, -outer);
  painter.fillRect(inner, isEnabled() ? look::color::field : look::color::pane);
  if (isEnabled()) painter.fillRect(inner.adjusted(1, 1, -1, -1), screenColor(color_));
}

ColorSwatches::ColorSwatches(QWidget* parent) : QWidget(parent) {
  setFixedSize(areaWidth, buttonSize.height() + swatchEdge + overlap);
  swapButton_ = makeButton(QStringLiteral("pixel/swap_colors"), tr("Swap Colors"), tr("Swap Colors (X)"),
                           &Document::swapColors);
  resetButton_ = makeButton(QStringLiteral("pixel/reset_colors"), tr("Reset Colors"), tr("Reset Colors (D)"),
                            &Document::resetColors);
  resetButton_->move(buttonSize.width(), 0);
  background_ = makeSwatch(Swatch::background, tr("Background Color"));
  foreground_ = makeSwatch(Swatch::foreground, tr("Foreground Color"));
  const QPoint corner((areaWidth - swatchEdge - overlap) / 2, buttonSize.height());
  foreground_->move(corner);
  background_->move(corner + QPoint(overlap, overlap));
  setTabOrder(foreground_, background_);
  setDocument(nullptr);
}

ColorSwatch* ColorSwatches::makeSwatch(Swatch which, const QString& name) {
  auto* swatch = new ColorSwatch(name, this);
  connect(swatch, &QAbstractButton::clicked, this, [this, which] {
    if (onChooseColor) onChooseColor(which);
  });
  return swatch;
}

SymbolButton* ColorSwatches::makeButton(const QString& symbolName, const QString& name, const QString& help,
                                        void (Document::*command)()) {
  auto* button = new SymbolButton(symbolName, buttonSymbol, this);
  button->setFixedSize(buttonSize);
  button->setAccessibleName(name);
  button->setToolTip(help);
  connect(button, &QAbstractButton::clicked, this, [this, command] {
    if (const DocumentPtr document = document_.lock()) (document.get()->*command)();
  });
  return button;
}

void ColorSwatches::setDocument(const DocumentPtr& document) {
  document_ = document;
  changes_ = {};
  setEnabled(document != nullptr);
  if (!document) {
    foreground_->clearColor();
    background_->clearColor();
    return;
  }
  changes_ = document->changes().observe([this](const DocumentChanges& changes) {
    if (containsAny<change::ViewChanged>(changes, ViewProperty::colors)) showColors();
  });
  showColors();
}

void ColorSwatches::showColors() {
  const DocumentPtr document = document_.lock();
  if (!document) return;
  foreground_->setColor(document->foregroundColor.value());
  background_->setColor(document->backgroundColor.value());
}

ColorSwatch& ColorSwatches::swatch(Swatch which) const {
  return which == Swatch::foreground ? *foreground_ : *background_;
}

QAbstractButton& ColorSwatches::swapButton() const {
  return *swapButton_;
}

QAbstractButton& ColorSwatches::resetButton() const {
  return *resetButton_;
}

}  // namespace orvanel
