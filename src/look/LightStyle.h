// How the toolkit's own controls are drawn: the visual language applied to buttons, fields, menus and the
// rest. Main thread only.
#pragma once

class QApplication;

namespace orvanel::look {

/// Gives the whole program its light appearance, whatever the desktop's theme.
void applyLightAppearance(QApplication& application);

}  // namespace orvanel::look
