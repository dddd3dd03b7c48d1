#include "app/AppDelegate.h"

#include <QUrl>

#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

constexpr auto uiTestingArgument = "--uitesting";

/// File managers pass paths or file URLs.
QString pathFromArgument(const QString& argument) {
  if (argument.startsWith(QStringLiteral("file://"))) return QUrl(argument).toLocalFile();
  return argument;
}

}  // namespace

AppDelegate::AppDelegate(AppState& appState, DocumentFiles& files, QStringList arguments)
    : appState_(appState), files_(files), arguments_(std::move(arguments)) {}

bool AppDelegate::isUITesting() const {
  return arguments_.contains(QLatin1String(uiTestingArgument));
}

void AppDelegate::applicationDidFinishLaunching() {
  if (isUITesting()) {
    const DocumentPtr document =
        Document::create(QStringLiteral("Test"), 256, 256, ColorMode::rgb16, appState_.metalContext);
    NotificationCenter::standard().post(notification::createdNewDocument, document);
  }
  QStringList paths;
  for (const QString& argument : arguments_) {
    if (argument != QLatin1String(uiTestingArgument)) paths << pathFromArgument(argument);
  }
  files_.open(paths);
}

TerminationReply AppDelegate::applicationShouldTerminate() {
  if (isUITesting()) return TerminationReply::now;
  // Writes finish even when their document has been closed since.
  files_.settleWrites();
  return appState_.windowState.confirmAll() ? TerminationReply::now : TerminationReply::cancel;
}

}  // namespace orvanel
