// The menu commands, one structure per command or menu; each adds its items to a menu. Commands find the
// active document when they are clicked, and do nothing without one. Main thread only.
#pragma once

#include <QMenu>
#include <functional>

#include "app/AppState.h"
#include "app/DocumentFiles.h"
#include "app/MenuItems.h"
#include "app/PixelPasteboard.h"
#include "app/dialogs/Dialogs.h"

namespace orvanel {

class LevelsWindow;

/// The objects that the commands work on. All outlive the menus.
struct CommandContext {
  AppState& appState;
  DocumentFiles& files;
  Dialogs& dialogs;
  PixelPasteboard& pasteboard;
  LevelsWindow& levels;
  MenuItems& items;
  std::function<void()> requestQuit;
  /// The centre of the view of a document, in document coordinates.
  std::function<QPointF(const Document&)> viewCentre;
};

/// A rule for items that call the active document.
[[nodiscard]] inline bool hasDocument(const MenuFacts& facts) {
  return facts.hasDocument;
}

/// An action on whichever document is active when it is carried out.
[[nodiscard]] MenuItems::Action onActiveDocument(AppState& appState,
                                                 std::function<void(const DocumentPtr&)> action);

struct NewDocumentCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct OpenDocumentCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct SaveDocumentCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct SaveAsDocumentCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct ExportImageCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct CloseCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct QuitCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct EditMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct ImageMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct LayerMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct SelectMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct ViewMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct WindowMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
};
struct AboutCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
};

}  // namespace orvanel
