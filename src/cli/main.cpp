#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

#include "cli/CommandLine.h"
#include "raster/Background.h"

namespace {

/// Libraries' remarks would blur the one line that says what went wrong; only a fatal one is passed on.
void keepQuiet(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(message));
}

}  // namespace

int main(int argc, char** argv) {
  qInstallMessageHandler(keepQuiet);
  const QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("orvanel-cli"));
  const auto exitCode = orvanel::runCommandLine(QCoreApplication::arguments().mid(1));
  // Nothing of use is left to do, but a task still queued holds memory that would count as leaked.
  orvanel::waitForBackgroundWork();
  return static_cast<int>(exitCode);
}
