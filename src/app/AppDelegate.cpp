#include "app/AppDelegate.h"

#include "tools/NotificationCenter.h"

namespace orvanel {

AppDelegate::AppDelegate(AppState& appState, DocumentFiles& files, const QStringList& arguments)
    : appState_(appState), files_(files), start_(StartArguments::of(arguments)) {}

void AppDelegate::applicationDidFinishLaunching() {
  if (start_.isUITesting) {
    const DocumentPtr document =
        Document::create(QStringLiteral("Test"), 256, 256, ColorMode::rgb16, appState_.metalContext);
    NotificationCenter::standard().post(notification::createdNewDocument, document);
  }
  files_.open(start_.files);
}

TerminationReply AppDelegate::applicationShouldTerminate() {
  if (start_.isUITesting) return TerminationReply::now;
  // Writes finish even when their document has been closed since.
  files_.settleWrites();
  return appState_.windowState.confirmAll() ? TerminationReply::now : TerminationReply::cancel;
}

}  // namespace orvanel
