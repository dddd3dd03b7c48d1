#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>

#include "cli/CommandLine.h"
#include "raster/Background.h"

namespace {

/// Drops messages from libraries, which would obscure our one-line error; only fatal ones are printed.
void keepQuiet(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(message));
}

}  // namespace

int main(int argc, char** argv) {
  qInstallMessageHandler(keepQuiet);
  const QCoreApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("orvanel-cli"));
  const auto exitCode = orvanel::runCommandLine(QCoreApplication::arguments().mid(1));
  // Tasks still queued hold memory that would count as leaked.
  orvanel::waitForBackgroundWork();
  return static_cast<int>(exitCode);
}
