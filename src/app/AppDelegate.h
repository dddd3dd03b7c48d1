// Handles the start of the program and requests to terminate it. Main thread only.
#pragma once

#include <QStringList>
#include <chrono>
#include <functional>

#include "app/AppState.h"
#include "app/DocumentFiles.h"
#include "app/GivenUpChanges.h"
#include "app/StartArguments.h"

namespace orvanel {

enum class TerminationReply { now, cancel };

class AppDelegate {
 public:
  /// `arguments` exclude the program name. `appState` and `files` must outlive the delegate.
  AppDelegate(AppState& appState, DocumentFiles& files, const QStringList& arguments);

  /// Opens the files given as arguments.
  void applicationDidFinishLaunching();
  /// Asks about every dirty document; the first refusal cancels.
  [[nodiscard]] TerminationReply applicationShouldTerminate();

  // The end of the session. It may come soon after the system has asked whether it may, or not at all because
  // another program refused.
  /// The same, and the answers stand for `sessionEnds`.
  [[nodiscard]] TerminationReply sessionShouldEnd();
  /// Asks only about documents that have changed since `sessionShouldEnd`.
  [[nodiscard]] TerminationReply sessionEnds();
  /// Without a question: has `recordNow` keep the unsaved work, and gives running saves a while.
  void keepUnsavedWork(const std::function<void()>& recordNow, std::chrono::milliseconds patience);

 private:
  [[nodiscard]] TerminationReply confirmAll();

  AppState& appState_;
  DocumentFiles& files_;
  StartArguments start_;
  GivenUpChanges givenUp_;
};

}  // namespace orvanel
