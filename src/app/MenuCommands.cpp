#include "app/MenuCommands.h"

#include <QKeySequence>
#include <utility>

#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

void addFileItem(QMenu& menu, const CommandContext& context, const QString& title, const QKeySequence& key,
                 void (DocumentFiles::*command)(const DocumentPtr&), const MenuItems::Rule& isEnabled) {
  context.items.add(
      menu, title, {key},
      onActiveDocument(context.appState, [&files = context.files, command](
                                             const DocumentPtr& document) { (files.*command)(document); }),
      isEnabled);
}

}  // namespace

MenuItems::Action onActiveDocument(AppState& appState, std::function<void(const DocumentPtr&)> action) {
  return [&appState, action = std::move(action)] {
    if (const DocumentPtr active = appState.windowState.activeDocument()) action(active);
  };
}

void NewDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  context.items.add(menu, tr("New..."), {QKeySequence(Qt::CTRL | Qt::Key_N)},
                    [&files = context.files] { files.newDocument(); });
}

void OpenDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  context.items.add(menu, tr("Open..."), {QKeySequence(Qt::CTRL | Qt::Key_O)},
                    [&files = context.files] { files.askAndOpen(); });
}

void SaveDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  addFileItem(menu, context, tr("Save"), QKeySequence(Qt::CTRL | Qt::Key_S), &DocumentFiles::save,
              [](const MenuFacts& facts) { return facts.canSave; });
}

void SaveAsDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  addFileItem(menu, context, tr("Save As..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
              &DocumentFiles::saveAs, hasDocument);
}

void ExportImageCommand::addTo(QMenu& menu, const CommandContext& context) {
  addFileItem(menu, context, tr("Export Image..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E),
              &DocumentFiles::exportImage, hasDocument);
}

void CloseCommand::addTo(QMenu& menu, const CommandContext& context) {
  WindowState& window = context.appState.windowState;
  context.items.add(
      menu, tr("Close"), {QKeySequence(Qt::CTRL | Qt::Key_W)},
      onActiveDocument(context.appState,
                       [&window](const DocumentPtr& active) { window.closeDocument(active->id); }),
      hasDocument);
}

void QuitCommand::addTo(QMenu& menu, const CommandContext& context) {
  context.items.add(menu, tr("Quit"), {QKeySequence(Qt::CTRL | Qt::Key_Q)}, context.requestQuit);
}

void LayerMenuCommands::addTo(QMenu& menu, const CommandContext& context) {
  context.items.add(menu, tr("Duplicate"), {QKeySequence(Qt::CTRL | Qt::Key_J)},
                    onActiveDocument(context.appState,
                                     [](const DocumentPtr& document) {
                                       if (const auto node = document->activeNode())
                                         document->duplicateNode(node->id());
                                     }),
                    [](const MenuFacts& facts) { return facts.hasActiveNode; });
}

void SelectMenuCommands::addTo(QMenu& menu, const CommandContext& context) {
  const auto add = [&](const QString& title, const QKeySequence& key, void (Document::*command)(),
                       const MenuItems::Rule& isEnabled) {
    context.items.add(menu, title, {key},
                      onActiveDocument(context.appState,
                                       [command](const DocumentPtr& document) { ((*document).*command)(); }),
                      isEnabled);
  };
  add(tr("All"), QKeySequence(Qt::CTRL | Qt::Key_A), &Document::selectAll, hasDocument);
  add(tr("Deselect"), QKeySequence(Qt::CTRL | Qt::Key_D), &Document::deselect,
      [](const MenuFacts& facts) { return facts.hasSelection; });
  menu.addSeparator();
  add(tr("Inverse"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I), &Document::invertSelection,
      [](const MenuFacts& facts) { return facts.canInvertSelection; });
}

void ViewMenuCommands::addTo(QMenu& menu, const CommandContext& context) {
  MenuItems& items = context.items;
  // Plus needs Shift on most keyboards; the same key without Shift zooms in as well.
  items.addPosting(menu, tr("Zoom In"),
                   {QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal),
                    QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Plus)},
                   notification::zoomIn, hasDocument);
  items.addPosting(menu, tr("Zoom Out"), {QKeySequence(Qt::CTRL | Qt::Key_Minus)}, notification::zoomOut,
                   hasDocument);
  items.addPosting(menu, tr("100%"), {QKeySequence(Qt::CTRL | Qt::Key_1)}, notification::zoomActualSize,
                   hasDocument);
  items.addPosting(menu, tr("Fit on Screen"), {QKeySequence(Qt::CTRL | Qt::Key_0)},
                   notification::zoomFitOnScreen, hasDocument);
}

void WindowMenuCommands::addTo(QMenu& menu, const CommandContext& context) {
  const MenuItems::Rule hasOtherTab = [](const MenuFacts& facts) { return facts.hasOtherDocument; };
  context.items.addPosting(menu, tr("Next Tab"), {QKeySequence(Qt::Key_Tab)}, notification::cycleNextTab,
                           hasOtherTab);
  context.items.addPosting(menu, tr("Previous Tab"), {QKeySequence(Qt::SHIFT | Qt::Key_Tab)},
                           notification::cyclePreviousTab, hasOtherTab);
}

void AboutCommand::addTo(QMenu& menu, const CommandContext& context) {
  context.items.add(menu, tr("About Orvanel"), {}, [&dialogs = context.dialogs] { dialogs.showAbout(); })
      ->setMenuRole(QAction::AboutRole);
}

}  // namespace orvanel
