#include "app/MenuCommands.h"

#include <QKeySequence>

#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

QAction* addItem(QMenu& menu, const QString& title, const QList<QKeySequence>& keys,
                 std::function<void()> action) {
  QAction* item = menu.addAction(title);
  item->setShortcuts(keys);
  // Shortcuts work in the main window only, so that dialogs keep their own.
  item->setShortcutContext(Qt::WindowShortcut);
  QObject::connect(item, &QAction::triggered, item, [action = std::move(action)] { action(); });
  return item;
}

QAction* addPosting(QMenu& menu, const QString& title, const QList<QKeySequence>& keys,
                    std::string_view name) {
  return addItem(menu, title, keys, [name] { NotificationCenter::standard().post(name); });
}

/// An item that acts on whichever document is active when it is triggered.
QAction* addDocumentItem(QMenu& menu, const QString& title, const QKeySequence& key,
                         const CommandContext& context, void (DocumentFiles::*command)(const DocumentPtr&)) {
  return addItem(menu, title, {key}, [&state = context.appState, &files = context.files, command] {
    if (const DocumentPtr active = state.windowState.activeDocument()) (files.*command)(active);
  });
}

}  // namespace

QAction* NewDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  return addItem(menu, QStringLiteral("New..."), {QKeySequence(Qt::CTRL | Qt::Key_N)},
                 [&files = context.files] { files.newDocument(); });
}

QAction* OpenDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  return addItem(menu, QStringLiteral("Open..."), {QKeySequence(Qt::CTRL | Qt::Key_O)},
                 [&files = context.files] { files.askAndOpen(); });
}

QAction* SaveDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  return addDocumentItem(menu, QStringLiteral("Save"), QKeySequence(Qt::CTRL | Qt::Key_S), context,
                         &DocumentFiles::save);
}

QAction* SaveAsDocumentCommand::addTo(QMenu& menu, const CommandContext& context) {
  return addDocumentItem(menu, QStringLiteral("Save As..."), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
                         context, &DocumentFiles::saveAs);
}

QAction* ExportImageCommand::addTo(QMenu& menu, const CommandContext& context) {
  return addDocumentItem(menu, QStringLiteral("Export Image..."),
                         QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E), context,
                         &DocumentFiles::exportImage);
}

QAction* QuitCommand::addTo(QMenu& menu, const CommandContext& context) {
  return addItem(menu, QStringLiteral("Quit"), {QKeySequence(Qt::CTRL | Qt::Key_Q)}, context.requestQuit);
}

std::vector<QAction*> ViewMenuCommands::addTo(QMenu& menu) {
  // Plus needs Shift on most keyboards; the same key without Shift zooms in as well.
  return {
      addPosting(menu, QStringLiteral("Zoom In"),
                 {QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal),
                  QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Plus)},
                 notification::zoomIn),
      addPosting(menu, QStringLiteral("Zoom Out"), {QKeySequence(Qt::CTRL | Qt::Key_Minus)},
                 notification::zoomOut),
      addPosting(menu, QStringLiteral("100%"), {QKeySequence(Qt::CTRL | Qt::Key_1)},
                 notification::zoomActualSize),
      addPosting(menu, QStringLiteral("Fit on Screen"), {QKeySequence(Qt::CTRL | Qt::Key_0)},
                 notification::zoomFitOnScreen),
  };
}

std::vector<QAction*> WindowMenuCommands::addTo(QMenu& menu) {
  return {
      addPosting(menu, QStringLiteral("Next Tab"), {QKeySequence(Qt::Key_Tab)}, notification::cycleNextTab),
      addPosting(menu, QStringLiteral("Previous Tab"), {QKeySequence(Qt::SHIFT | Qt::Key_Tab)},
                 notification::cyclePreviousTab),
  };
}

QAction* AboutCommand::addTo(QMenu& menu, const CommandContext& context) {
  QAction* item = addItem(menu, QStringLiteral("About Orvanel"), {},
                          [&dialogs = context.dialogs] { dialogs.showAbout(); });
  item->setMenuRole(QAction::AboutRole);
  return item;
}

}  // namespace orvanel
