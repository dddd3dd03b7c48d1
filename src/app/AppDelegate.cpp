#include "app/AppDelegate.h"

#include "app/TypedText.h"
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

TerminationReply AppDelegate::confirmAll() {
  if (start_.isUITesting) return TerminationReply::now;
  // Writes finish even when their document has been closed since.
  files_.settleWrites();
  const auto isGivenUp = [this](const Document& document) { return givenUp_.contains(document); };
  return appState_.windowState.confirmAll(isGivenUp) ? TerminationReply::now : TerminationReply::cancel;
}

TerminationReply AppDelegate::applicationShouldTerminate() {
  givenUp_.forget();
  return confirmAll();
}

TerminationReply AppDelegate::sessionShouldEnd() {
  givenUp_.forget();
  const TerminationReply reply = confirmAll();
  if (reply == TerminationReply::now) givenUp_.remember(appState_.windowState.documents.value());
  return reply;
}

TerminationReply AppDelegate::sessionEnds() {
  // What has been typed since the answers is a change that they weren't about.
  keepTypedText();
  return confirmAll();
}

void AppDelegate::keepUnsavedWork(const std::function<void()>& recordNow,
                                  std::chrono::milliseconds patience) {
  keepTypedText();
  for (const DocumentPtr& document : appState_.windowState.documents.value()) document->endOpenEdits();
  // Storage may be slow, so what is unsaved comes first.
  recordNow();
  files_.settleWritesFor(patience);
  // A save that has ended makes a journal superfluous, or has failed and made it necessary.
  recordNow();
}

}  // namespace orvanel
