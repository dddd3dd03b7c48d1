#include "app/Appearance.h"

#include <QApplication>
#include <QProxyStyle>

#include "panels/PanelStyle.h"

namespace orvanel {

namespace {

constexpr auto styleSheet = R"(
QMenuBar { background: #f5f5f7; border-bottom: 1px solid #cdcdd2; padding: 2px 4px; }
QMenuBar::item { background: transparent; padding: 4px 9px; border-radius: 4px; }
QMenuBar::item:selected { background: #e2e2e6; }
QMenuBar::item:pressed { background: #2f6fd0; color: white; }
QMenu { background: #ffffff; border: 1px solid #c6c6cc; padding: 4px 0; }
QMenu::item { padding: 5px 28px 5px 22px; }
QMenu::item:selected { background: #2f6fd0; color: white; }
QMenu::item:disabled { color: #a5a5ab; background: transparent; }
QMenu::separator { height: 1px; background: #e2e2e6; margin: 4px 0; }
QToolTip { background: #ffffff; color: #1d1d1f; border: 1px solid #c6c6cc; padding: 3px; }
)";

/// Fusion without icons on buttons. Alt on its own is a modifier for the wheel and the tools on the canvas,
/// so it doesn't activate the menu bar; Alt and a letter does.
class PlainStyle : public QProxyStyle {
 public:
  PlainStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* returnData) const override {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons || hint == SH_MenuBar_AltKeyNavigation) return 0;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
  }
};

}  // namespace

void applyLightAppearance(QApplication& application) {
  application.setStyle(new PlainStyle);  // owned by the application
  application.setPalette(panelStyle::lightPalette());
  application.setStyleSheet(QString::fromLatin1(styleSheet));
}

}  // namespace orvanel
