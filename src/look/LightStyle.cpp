#include "look/LightStyle.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QProxyStyle>
#include <utility>

#include "look/Look.h"

namespace orvanel::look {

namespace {

// Words with an "@" stand for values of the visual language.
constexpr auto styleSheet = R"(
QMenuBar { background: @pane; border-bottom: 1px solid @divider; padding: 2px 4px; }
QMenuBar::item { background: transparent; padding: 4px 8px; border-radius: @radius; }
QMenuBar::item:selected { background: @hover; }
QMenuBar::item:pressed { background: @accent; color: @onAccent; }
QMenu { background: @field; border: 1px solid @border; padding: 4px 0; }
QMenu::item { padding: 4px 28px 4px 24px; }
QMenu[hasPictures="true"]::item { padding-left: 8px; }
QMenu::item:selected { background: @accent; color: @onAccent; }
QMenu::item:disabled { color: @disabledText; background: transparent; }
QMenu::icon { padding-left: 8px; }
QMenu::right-arrow { image: url(:/icons/chevron.right.svg); width: 12px; height: 12px; right: 8px; }
QMenu::right-arrow:selected { image: url(:/icons/chevron.right.on.svg); }
QMenu::separator { height: 1px; background: @divider; margin: 4px 0; }
QToolTip { background: @field; color: @text; border: 1px solid @border; padding: 4px; }

QPushButton { background: @field; border: 1px solid @border; border-radius: @radius; padding: 0 12px;
  min-height: 26px; min-width: 64px; }
QPushButton:hover { background: @hover; }
QPushButton:pressed { background: @pressed; }
QPushButton:disabled { color: @disabledText; background: @pane; border-color: @divider; }
QPushButton:default { background: @accent; border-color: @accent; color: @onAccent; }
QPushButton:default:hover { background: @accentHover; border-color: @accentHover; }
QPushButton:default:pressed { background: @accentPressed; border-color: @accentPressed; }
QPushButton:focus { border: 2px solid @accent; padding: 0 11px; min-height: 24px; }
QPushButton:default:focus { border-color: @accentPressed; }

QLineEdit { background: @field; border: 1px solid @border; border-radius: @radius; padding: 0 4px;
  min-height: 22px; selection-background-color: @accent; selection-color: @onAccent; }
QLineEdit:focus { border: 2px solid @accent; padding: 0 3px; min-height: 20px; }
QLineEdit:disabled { background: @pane; color: @disabledText; border-color: @divider; }

QAbstractSpinBox { background: @field; border: 1px solid @border; border-radius: @radius; padding: 0 4px;
  min-height: 22px; selection-background-color: @accent; selection-color: @onAccent; }
QAbstractSpinBox:focus { border: 2px solid @accent; padding: 0 3px; min-height: 20px; }
QAbstractSpinBox:disabled { background: @pane; color: @disabledText; border-color: @divider; }
QAbstractSpinBox::up-button, QAbstractSpinBox::down-button { width: 0; border: none; }

QComboBox { background: @field; border: 1px solid @border; border-radius: @radius; padding: 0 4px 0 8px;
  min-height: 22px; combobox-popup: 0; }
QComboBox:hover { background: @hover; }
QComboBox:focus { border: 2px solid @accent; padding: 0 3px 0 7px; min-height: 20px; }
QComboBox:disabled { background: @pane; color: @disabledText; border-color: @divider; }
QComboBox::drop-down { border: none; width: 20px; subcontrol-position: right center; }
QComboBox::down-arrow { image: url(:/icons/chevron.down.svg); width: 12px; height: 12px; }
QComboBox QAbstractItemView { background: @field; border: 1px solid @border; outline: none;
  selection-background-color: @accent; selection-color: @onAccent; }
QComboBox QAbstractItemView::item { min-height: 24px; padding: 0 4px; }

QCheckBox { spacing: 8px; }
QCheckBox::indicator { width: 14px; height: 14px; background: @field; border: 1px solid @border;
  border-radius: 3px; }
QCheckBox::indicator:hover { background: @hover; }
QCheckBox::indicator:checked { background: @accent; border-color: @accent;
  image: url(:/icons/checkmark.on.svg); }
QCheckBox::indicator:focus { border: 2px solid @accent; width: 12px; height: 12px; }
QCheckBox::indicator:disabled { background: @pane; border-color: @divider; }
QCheckBox::indicator:checked:disabled { background: @border; border-color: @border; }
QCheckBox:disabled { color: @disabledText; }

QSlider::groove:horizontal { height: 4px; background: @divider; border-radius: 2px; }
QSlider::sub-page:horizontal { background: @accent; border-radius: 2px; }
QSlider::handle:horizontal { width: 14px; height: 14px; margin: -6px 0; background: @field;
  border: 1px solid @border; border-radius: 8px; }
QSlider::handle:horizontal:hover { border-color: @accent; }
QSlider::handle:horizontal:focus { border: 2px solid @accent; width: 12px; height: 12px; }
QSlider::sub-page:horizontal:disabled { background: @border; }

QScrollBar:vertical { width: 12px; background: transparent; margin: 0; }
QScrollBar:horizontal { height: 12px; background: transparent; margin: 0; }
QScrollBar::handle { background: @border; border-radius: 3px; margin: 3px; }
QScrollBar::handle:vertical { min-height: 28px; }
QScrollBar::handle:horizontal { min-width: 28px; }
QScrollBar::handle:hover { background: @bevelDark; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }

QGroupBox { border: 1px solid @divider; border-radius: @radius; margin-top: 8px; padding: 8px; }
QGroupBox::title { subcontrol-origin: margin; left: 8px; padding: 0 4px; }

QSplitter::handle { background: @divider; }
)";

QString filledIn(QString sheet) {
  const std::pair<const char*, QString> values[] = {
      {"@disabledText", color::disabledText.name()},
      {"@accentPressed", color::accentPressed.name()},
      {"@accentHover", color::accentHover.name()},
      {"@onAccent", color::onAccent.name()},
      {"@accent", color::accent.name()},
      {"@bevelDark", color::bevelDark.name()},
      {"@border", color::border.name()},
      {"@divider", color::divider.name()},
      {"@field", color::field.name()},
      {"@hover", color::hover.name()},
      {"@pane", color::pane.name()},
      {"@pressed", color::pressed.name()},
      {"@radius", QStringLiteral("%1px").arg(radius::control)},
      {"@text", color::text.name()},
  };
  for (const auto& [word, value] : values) sheet.replace(QLatin1String(word), value);
  return sheet;
}

/// Fusion without icons on buttons, and with one order of the buttons of dialogs on every desktop: the one
/// that accepts, others, Cancel. Alt on its own is a modifier for the wheel and the tools on the canvas, so
/// it doesn't activate the menu bar; Alt and a letter does.
class LightStyle : public QProxyStyle {
 public:
  LightStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returnData) const override {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons || hint == SH_MenuBar_AltKeyNavigation) return 0;
    if (hint == SH_DialogButtonLayout) return QDialogButtonBox::WinLayout;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
  }
};

}  // namespace

void applyLightAppearance(QApplication& application) {
  application.setStyle(new LightStyle);  // owned by the application
  application.setPalette(palette());
  application.setFont(font());
  application.setStyleSheet(filledIn(QString::fromLatin1(styleSheet)));
}

}  // namespace orvanel::look
