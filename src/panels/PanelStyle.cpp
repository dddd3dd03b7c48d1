#include "panels/PanelStyle.h"

#include <QFontDatabase>
#include <QWidget>

namespace orvanel::panelStyle {

QFont systemFont(double viewPoints, QFont::Weight weight) {
  // A view point is a logical pixel: 96 to the inch, against 72 typographic points.
  constexpr double pointsPerViewPoint = 72.0 / 96.0;
  QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  font.setPointSizeF(viewPoints * pointsPerViewPoint);
  font.setWeight(weight);
  return font;
}

QPalette lightPalette() {
  QPalette palette(paneColor);
  palette.setColor(QPalette::Window, paneColor);
  palette.setColor(QPalette::WindowText, primaryText);
  palette.setColor(QPalette::Base, Qt::white);
  palette.setColor(QPalette::AlternateBase, hoverColor);
  palette.setColor(QPalette::Text, primaryText);
  palette.setColor(QPalette::Button, QColor(0xfb, 0xfb, 0xfc));
  palette.setColor(QPalette::ButtonText, primaryText);
  palette.setColor(QPalette::BrightText, Qt::white);
  palette.setColor(QPalette::ToolTipBase, Qt::white);
  palette.setColor(QPalette::ToolTipText, primaryText);
  palette.setColor(QPalette::PlaceholderText, QColor(0x8e, 0x8e, 0x93));
  palette.setColor(QPalette::Light, Qt::white);
  palette.setColor(QPalette::Midlight, QColor(0xe9, 0xe9, 0xec));
  palette.setColor(QPalette::Mid, QColor(0xb8, 0xb8, 0xbe));
  palette.setColor(QPalette::Dark, QColor(0x9a, 0x9a, 0xa0));
  palette.setColor(QPalette::Shadow, QColor(0x6e, 0x6e, 0x73));
  palette.setColor(QPalette::Highlight, accentColor);
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, accentColor);
  palette.setColor(QPalette::LinkVisited, accentColor);
  const QColor disabledText(0xa5, 0xa5, 0xab);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    palette.setColor(QPalette::Disabled, role, disabledText);
  }
  palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0xd5, 0xd5, 0xda));
  palette.setColor(QPalette::Disabled, QPalette::HighlightedText, disabledText);
  return palette;
}

double hairline(const QWidget& widget) {
  return 1.0 / widget.devicePixelRatioF();
}

}  // namespace orvanel::panelStyle
