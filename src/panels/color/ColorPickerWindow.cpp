#include "panels/color/ColorPickerWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QVBoxLayout>
#include <utility>

namespace orvanel {

ColorPickerWindow::ColorPickerWindow(QWidget* parent)
    : QDialog(parent, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      content_(new ColorPickerContentView(model_, this)) {
  setObjectName(QStringLiteral("colorPicker"));
  setWindowTitle(tr("Color Picker"));
  // The keys stay with the canvas until the user turns to the panel.
  setAttribute(Qt::WA_ShowWithoutActivating);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(content_);
  column->setSizeConstraint(QLayout::SetFixedSize);
  content_->onChange = [this](const DisplayColor& color) { changed(color); };
  content_->onOK = [this] { accept(); };
  content_->onCancel = [this] { reject(); };
}

ColorPickerWindow::~ColorPickerWindow() {
  // A field that loses the keyboard takes over what was typed, so it must go before the model.
  delete content_;
}

void ColorPickerWindow::open(const QString& name, const DisplayColor& color,
                             std::function<void(const DisplayColor&)> onChange) {
  // What is being typed is meant for the colour before.
  if (QWidget* field = focusWidget()) field->clearFocus();
  onChange_ = nullptr;
  hasChanged_ = false;
  initialColor_ = color;
  model_.originalColor = color;
  model_.setColor(color);
  lastColor_ = model_.color();
  content_->setName(name);
  onChange_ = std::move(onChange);
  show();
  raise();
  // Whoever opens it from a swatch by keys goes on with them here.
  if (qobject_cast<QAbstractButton*>(QApplication::focusWidget()) != nullptr) activateWindow();
}

void ColorPickerWindow::follow(const DisplayColor& color) {
  if (!onChange_ || color == lastColor_) return;
  const auto onChange = std::exchange(onChange_, nullptr);
  model_.setColor(color);
  onChange_ = onChange;
  lastColor_ = model_.color();
  hasChanged_ = true;
}

void ColorPickerWindow::changed(const DisplayColor& color) {
  if (!onChange_ || color == lastColor_) return;
  lastColor_ = color;
  hasChanged_ = true;
  onChange_(color);
}

void ColorPickerWindow::accept() {
  closePanel();
}

void ColorPickerWindow::reject() {
  if (hasChanged_ && onChange_) onChange_(initialColor_);
  closePanel();
}

void ColorPickerWindow::closePanel() {
  onChange_ = nullptr;
  hide();
}

}  // namespace orvanel
