// The look of the whole program: light, whatever scheme the desktop has. Main thread only.
#pragma once

class QApplication;

namespace orvanel {

void applyLightAppearance(QApplication& application);

}  // namespace orvanel
