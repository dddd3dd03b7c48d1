// What the program was started with. Plain values, any thread; needs no application object.
#pragma once

#include <QStringList>

namespace orvanel {

struct StartArguments {
  bool wantsHelp = false;
  bool wantsVersion = false;
  /// Whether to open a window of its own even if there is one already.
  bool wantsNewWindow = false;
  bool isUITesting = false;
  /// A compiled translation to show instead of the installed ones; empty if none was given.
  QString translation;
  /// Whether there are options that aren't ours. Those of the toolkit concern this process alone.
  bool hasOtherOptions = false;
  /// Paths as they were given, relative ones included. File managers may pass file URLs instead.
  QStringList files;

  /// `arguments` excludes the program's name; "--" ends the options.
  [[nodiscard]] static StartArguments of(const QStringList& arguments);
};

}  // namespace orvanel
