// Colours, fonts and measures shared by the window's bars and panels. Main thread only.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QPainter;
class QWidget;

namespace orvanel::panelStyle {

/// Background of the tab bar.
inline const QColor barColor{0xe4, 0xe4, 0xe7};
/// Background of panels, the active tab and the status bar.
inline const QColor paneColor{0xf5, 0xf5, 0xf7};
inline const QColor hoverColor{0xec, 0xec, 0xef};
inline const QColor dividerColor{0xcd, 0xcd, 0xd2};
inline const QColor primaryText{0x1d, 0x1d, 0x1f};
inline const QColor secondaryText{0x5c, 0x5c, 0x63};
inline const QColor accentColor{0x2f, 0x6f, 0xd0};

/// The interface font at a size in view points; it follows the desktop's text scale.
[[nodiscard]] QFont systemFont(double viewPoints, QFont::Weight weight = QFont::Normal);

/// A light palette that doesn't follow the desktop's colour scheme.
[[nodiscard]] QPalette lightPalette();

/// One device pixel of this widget, in view points.
[[nodiscard]] double hairline(const QWidget& widget);

}  // namespace orvanel::panelStyle
