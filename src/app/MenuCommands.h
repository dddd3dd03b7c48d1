// The menu commands, one structure per command or group of commands. Each adds its items to a menu and
// returns those that need an active document. Main thread only.
#pragma once

#include <QAction>
#include <QMenu>
#include <functional>
#include <vector>

#include "app/AppState.h"
#include "app/Dialogs.h"
#include "app/DocumentFiles.h"

namespace orvanel {

/// The objects that the commands work on. All outlive the menus.
struct CommandContext {
  AppState& appState;
  DocumentFiles& files;
  Dialogs& dialogs;
  std::function<void()> requestQuit;
};

struct NewDocumentCommand {
  static QAction* addTo(QMenu& menu, const CommandContext& context);
};
struct OpenDocumentCommand {
  static QAction* addTo(QMenu& menu, const CommandContext& context);
};
struct SaveDocumentCommand {
  static QAction* addTo(QMenu& menu, const CommandContext& context);
};
struct SaveAsDocumentCommand {
  static QAction* addTo(QMenu& menu, const CommandContext& context);
};
struct ExportImageCommand {
  static QAction* addTo(QMenu& menu, const CommandContext& context);
};
struct QuitCommand {
  static QAction* addTo(QMenu& menu, const CommandContext& context);
};
struct ViewMenuCommands {
  static std::vector<QAction*> addTo(QMenu& menu);
};
struct WindowMenuCommands {
  static std::vector<QAction*> addTo(QMenu& menu);
};
struct AboutCommand {
  static QAction* addTo(QMenu& menu, const CommandContext& context);
};

}  // namespace orvanel
