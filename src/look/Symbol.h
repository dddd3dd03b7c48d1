// The program's symbols: one family of line drawings on a grid of 16 points, in any colour. Main thread only.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QRectF>
#include <QString>

class QPainter;

namespace orvanel::look {

/// Draws the symbol of that name within `box`, at the device's resolution. A name that isn't there draws
/// nothing.
void paintSymbol(QPainter& painter, const QString& name, const QRectF& box, const QColor& color);

enum class IconPlace { control, menu };

/// The symbol for the toolkit's own controls; it has a disabled look and is sharp at every scale. In a menu
/// it is light on the highlighted item.
[[nodiscard]] QIcon symbolIcon(const QString& name, IconPlace place = IconPlace::control);

}  // namespace orvanel::look
