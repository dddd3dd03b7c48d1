// The application's style and light palette, independent of the desktop's colour scheme. Main thread only.
#pragma once

class QApplication;

namespace orvanel {

void applyLightAppearance(QApplication& application);

}  // namespace orvanel
