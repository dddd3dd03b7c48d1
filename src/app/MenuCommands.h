// The menu commands, one structure per command or menu; each adds its items to a menu. Commands find the
// active document when they are clicked, and do nothing without one. Main thread only.
#pragma once

#include <QCoreApplication>
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
  Q_DECLARE_TR_FUNCTIONS(orvanel::NewDocumentCommand)
};
struct OpenDocumentCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::OpenDocumentCommand)
};
struct SaveDocumentCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::SaveDocumentCommand)
};
struct SaveAsDocumentCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::SaveAsDocumentCommand)
};
struct ExportImageCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::ExportImageCommand)
};
struct CloseCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::CloseCommand)
};
struct QuitCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::QuitCommand)
};
struct EditMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::EditMenuCommands)
};
struct ImageMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::ImageMenuCommands)
};
struct LayerMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::LayerMenuCommands)
};
struct SelectMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::SelectMenuCommands)
};
struct ViewMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::ViewMenuCommands)
};
struct WindowMenuCommands {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::WindowMenuCommands)
};
struct AboutCommand {
  static void addTo(QMenu& menu, const CommandContext& context);
  Q_DECLARE_TR_FUNCTIONS(orvanel::AboutCommand)
};

}  // namespace orvanel
