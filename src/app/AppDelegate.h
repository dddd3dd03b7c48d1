// The program's answers to the system: what happens once it has started, and whether it may end.
// Main thread only.
#pragma once

#include <QStringList>

#include "app/AppState.h"
#include "app/DocumentFiles.h"

namespace orvanel {

enum class TerminationReply { now, cancel };

class AppDelegate {
 public:
  /// `arguments` are those behind the program's name. All must outlive the delegate.
  AppDelegate(AppState& appState, DocumentFiles& files, QStringList arguments);

  /// Opens what was named at the start.
  void applicationDidFinishLaunching();
  /// Asks about every unsaved document; the first refusal cancels.
  [[nodiscard]] TerminationReply applicationShouldTerminate();

 private:
  [[nodiscard]] bool isUITesting() const;

  AppState& appState_;
  DocumentFiles& files_;
  QStringList arguments_;
};

}  // namespace orvanel
