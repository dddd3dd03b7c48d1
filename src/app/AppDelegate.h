// Handles the start of the program and requests to terminate it. Main thread only.
#pragma once

#include <QStringList>

#include "app/AppState.h"
#include "app/DocumentFiles.h"
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

 private:
  AppState& appState_;
  DocumentFiles& files_;
  StartArguments start_;
};

}  // namespace orvanel
