#include "look/Look.h"

#include <QFontDatabase>
#include <QWidget>
#include <algorithm>
#include <cmath>

namespace orvanel::look {

namespace {

double linear(double component) {
  return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double relativeLuminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

}  // namespace

QFont font(double viewPoints, QFont::Weight weight) {
  // A view point is a logical pixel: 96 to the inch, against 72 typographic points.
  constexpr double pointsPerViewPoint = 72.0 / 96.0;
  QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  font.setPointSizeF(viewPoints * pointsPerViewPoint);
  font.setWeight(weight);
  return font;
}

QPalette palette() {
  QPalette palette(color::pane);
  palette.setColor(QPalette::Window, color::pane);
  palette.setColor(QPalette::WindowText, color::text);
  palette.setColor(QPalette::Base, color::field);
  palette.setColor(QPalette::AlternateBase, color::pane);
  palette.setColor(QPalette::Text, color::text);
  palette.setColor(QPalette::Button, color::field);
  palette.setColor(QPalette::ButtonText, color::text);
  palette.setColor(QPalette::BrightText, color::onAccent);
  palette.setColor(QPalette::ToolTipBase, color::field);
  palette.setColor(QPalette::ToolTipText, color::text);
  palette.setColor(QPalette::PlaceholderText, color::secondaryText);
  palette.setColor(QPalette::Light, color::field);
  palette.setColor(QPalette::Midlight, color::bar);
  palette.setColor(QPalette::Mid, color::border);
  palette.setColor(QPalette::Dark, color::bevelDark);
  palette.setColor(QPalette::Shadow, color::secondaryText);
  palette.setColor(QPalette::Highlight, color::accent);
  palette.setColor(QPalette::HighlightedText, color::onAccent);
  palette.setColor(QPalette::Link, color::accent);
  palette.setColor(QPalette::LinkVisited, color::accent);
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText}) {
    palette.setColor(QPalette::Disabled, role, color::disabledText);
  }
  palette.setColor(QPalette::Disabled, QPalette::Highlight, color::divider);
  palette.setColor(QPalette::Disabled, QPalette::HighlightedText, color::disabledText);
  return palette;
}

void setTextColor(QWidget& widget, const QColor& color) {
  QPalette palette = widget.palette();
  palette.setColor(QPalette::WindowText, color);
  widget.setPalette(palette);
}

double hairline(const QWidget& widget) {
  return 1.0 / widget.devicePixelRatioF();
}

double contrast(const QColor& first, const QColor& second) {
  const auto [darker, lighter] = std::minmax({relativeLuminance(first), relativeLuminance(second)});
  return (lighter + 0.05) / (darker + 0.05);
}

}  // namespace orvanel::look
