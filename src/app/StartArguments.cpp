#include "app/StartArguments.h"

#include <QUrl>

namespace orvanel {

namespace {

QString pathFromArgument(const QString& argument) {
  if (argument.startsWith(QStringLiteral("file://"))) return QUrl(argument).toLocalFile();
  return argument;
}

}  // namespace

StartArguments StartArguments::of(const QStringList& arguments) {
  StartArguments start;
  bool takesOptions = true;
  for (qsizetype index = 0; index < arguments.size(); ++index) {
    const QString& argument = arguments.at(index);
    if (!takesOptions || !argument.startsWith(u'-')) {
      start.files << pathFromArgument(argument);
    } else if (argument == QStringLiteral("--")) {
      takesOptions = false;
    } else if (argument == QStringLiteral("--help")) {
      start.wantsHelp = true;
    } else if (argument == QStringLiteral("--version")) {
      start.wantsVersion = true;
    } else if (argument == QStringLiteral("--new-window")) {
      start.wantsNewWindow = true;
    } else if (argument == QStringLiteral("--translation")) {
      start.translation = arguments.value(++index);
    } else if (argument == QStringLiteral("--uitesting")) {
      start.isUITesting = true;
    } else {
      // The toolkit takes out what it knows; the rest must be the names of files.
      start.hasOtherOptions = true;
      start.files << argument;
    }
  }
  return start;
}

}  // namespace orvanel
