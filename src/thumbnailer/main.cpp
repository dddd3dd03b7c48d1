#include <QCoreApplication>

#include "thumbnailer/Thumbnailer.h"

namespace {

/// Drops messages from libraries: the one line that says why there is no thumbnail is enough.
void keepQuiet(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& /*message*/) {}

}  // namespace

int main(int argc, char** argv) {
  qInstallMessageHandler(keepQuiet);
  const QCoreApplication application(argc, argv);
  return orvanel::runThumbnailer(QCoreApplication::arguments().mid(1));
}
