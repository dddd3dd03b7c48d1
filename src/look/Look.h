// The visual language of the program: its colours, spacing, sizes, radii and type. Widgets take every one of
// them from here. Lengths are in view points. Main thread only.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

class QWidget;

namespace orvanel::look {

/// Neutral greys and one accent, so that the image is the only thing with colour.
namespace color {
/// Surfaces, from the darkest: around the image, bars, panels, fields.
inline const QColor surround{0xcb, 0xcb, 0xcb};
inline const QColor bar{0xe6, 0xe6, 0xe6};
inline const QColor pane{0xf4, 0xf4, 0xf4};
inline const QColor field{0xff, 0xff, 0xff};
/// What the pointer is over or presses, on bars and panels.
inline const QColor hover{0xe2, 0xe2, 0xe2};
inline const QColor pressed{0xd2, 0xd2, 0xd2};
/// Hairlines between panels, and the borders of controls.
inline const QColor divider{0xcc, 0xcc, 0xcc};
inline const QColor border{0xb0, 0xb0, 0xb0};
/// Bevels of a pressed tool button.
inline const QColor bevelLight{0xff, 0xff, 0xff};
inline const QColor bevelDark{0xa0, 0xa0, 0xa0};
inline const QColor text{0x1e, 0x1e, 0x1e};
inline const QColor secondaryText{0x58, 0x58, 0x58};
inline const QColor disabledText{0x9c, 0x9c, 0x9c};
inline const QColor symbol{0x3a, 0x3a, 0x3a};
/// Selection and focus.
inline const QColor accent{0x27, 0x64, 0xc6};
inline const QColor accentHover = accent.darker(110);
inline const QColor accentPressed = accent.darker(125);
inline const QColor onAccent{0xff, 0xff, 0xff};
/// A selected row that holds controls of its own.
inline const QColor selectedRow{0xd3, 0xe0, 0xf4};
/// Translucent indicators over the image, with a rim that keeps them visible on a dark one.
inline const QColor indicator{0x2c, 0x2c, 0x2c, 0x82};
inline const QColor indicatorHover{0x1e, 0x1e, 0x1e, 0xbe};
inline const QColor indicatorRim{0xff, 0xff, 0xff, 0x6e};
/// Beneath the part of a progress line that is done, over the image.
inline const QColor progressTrack{0x27, 0x64, 0xc6, 0x28};
/// How opaque a dragged row is: the rows beneath and the line between them shine through.
inline const QColor draggedRow{0x00, 0x00, 0x00, 0xbe};
/// The bars of a histogram, and the lines at its black and its white point.
inline const QColor histogramBars = QColor::fromRgbF(0.0F, 0.0F, 0.0F, 0.7F);
inline const QColor blackPoint{0x00, 0x00, 0xff};
inline const QColor whitePoint{0xff, 0x00, 0x00};
inline const QColor alert{0xb4, 0x23, 0x18};
}  // namespace color

/// Distances lie on a grid of 4 points.
namespace space {
inline constexpr int tight = 4;
inline constexpr int normal = 8;
inline constexpr int wide = 12;
inline constexpr int section = 16;
inline constexpr int dialogMargin = 20;
}  // namespace space

namespace size {
/// Heights of controls in bars and panels, and in dialogs.
inline constexpr int control = 24;
inline constexpr int dialogControl = 28;
inline constexpr int symbol = 16;
inline constexpr int bar = 32;
inline constexpr int toolButton = 32;
inline constexpr int focusRing = 2;
}  // namespace size

namespace radius {
inline constexpr int control = 4;
inline constexpr int panel = 6;
}  // namespace radius

namespace type {
inline constexpr double small = 11;
inline constexpr double normal = 12;
inline constexpr double heading = 13;
inline constexpr double title = 20;
}  // namespace type

/// The interface font at a size in view points; it follows the desktop's text scale.
[[nodiscard]] QFont font(double viewPoints = type::normal, QFont::Weight weight = QFont::Normal);

/// A light palette that doesn't follow the desktop's colour scheme.
[[nodiscard]] QPalette palette();

/// `widget`'s text in `color`.
void setTextColor(QWidget& widget, const QColor& color);

/// One device pixel of this widget, in view points.
[[nodiscard]] double hairline(const QWidget& widget);

/// The contrast ratio of two opaque colours, 1 to 21 (WCAG 2.1, "contrast ratio").
[[nodiscard]] double contrast(const QColor& first, const QColor& second);

}  // namespace orvanel::look
