// What the rows of all lists in the panels have in common: their background, and small buttons that are drawn
// rather than being widgets, because a list may have thousands. Pure drawings; main thread only.
#pragma once

#include <QRect>
#include <QString>
#include <QStyle>

class QPainter;

namespace orvanel {

/// Opacity of the eye of something hidden.
inline constexpr double hiddenEyeOpacity = 0.3;

/// The background of a row: selected, hovered, and with the line beneath it.
void paintRowBackground(QPainter& painter, const QRect& row, QStyle::State state);
/// The ring of a row with the keyboard's focus; above everything else.
void paintRowFocus(QPainter& painter, const QRect& row);

enum class RowButtonState { plain, hovered, pressed };
/// A symbol of the usual size in the middle of `button`.
void paintRowButton(QPainter& painter, const QRect& button, const QString& symbol, const QColor& color,
                    RowButtonState state);

}  // namespace orvanel
