// Finds texts that a window has no room for.
#pragma once

#include <QString>
#include <QWidget>

namespace orvanel {

/// A visible child that is smaller than its text needs; empty if all fit.
inline QString clippedText(const QWidget& window) {
  for (const QWidget* child : window.findChildren<QWidget*>()) {
    if (!child->isVisibleTo(&window)) continue;
    const QSize needed = child->minimumSizeHint();
    if (child->width() < needed.width() || child->height() < needed.height()) {
      return QStringLiteral("%1 %2").arg(child->metaObject()->className(), child->accessibleName());
    }
  }
  return {};
}

}  // namespace orvanel
