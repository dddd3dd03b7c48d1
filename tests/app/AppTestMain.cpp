#include <gmock/gmock.h>

#include <QApplication>
#include <QTemporaryDir>
#include <QThreadPool>

#include "look/LightStyle.h"

// Settings and recent-file lists are kept in a temporary home directory.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleMock(&argc, argv);
  const QTemporaryDir home;
  for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"}) {
    qputenv(variable, home.path().toUtf8());
  }
  QApplication application(argc, argv);
  QApplication::setOrganizationName(QStringLiteral("Fennimoor"));
  QApplication::setApplicationName(QStringLiteral("Orvanel"));
  QApplication::setQuitOnLastWindowClosed(false);
  orvanel::look::applyLightAppearance(application);
  const int status = RUN_ALL_TESTS();
  QThreadPool::globalInstance()->waitForDone();
  return status;
}
