#include "app/MenuCommands.h"
#include "look/TranslatedName.h"
#include "tools/NotificationCenter.h"

namespace orvanel {

namespace {

using Name = std::optional<QString> MenuFacts::*;

struct HistoryWords {
  QString alone;
  /// %1 is what would be undone or redone.
  QString withName;
};

/// Undo or Redo: the title says what it does, and without anything to do the item is disabled.
void addHistoryItem(QMenu& menu, const CommandContext& context, const HistoryWords& words,
                    const QKeySequence& key, void (Document::*step)(), Name name) {
  QAction* item = context.items.add(
      menu, words.alone, {key},
      onActiveDocument(context.appState, [step](const DocumentPtr& document) { ((*document).*step)(); }),
      [name](const MenuFacts& facts) { return (facts.*name).has_value(); });
  context.items.follow(*item, [words, name](QAction& followed, const MenuFacts& facts) {
    const std::optional<QString>& action = facts.*name;
    const QString text = action ? words.withName.arg(look::translatedName(*action)) : words.alone;
    // An open menu keeps its letters.
    if (followed.text().remove(u'&') != text) followed.setText(text);
  });
}

bool canCopy(const MenuFacts& facts) {
  return facts.hasActiveLayer && facts.hasSelectedPixels;
}

}  // namespace

void EditMenuCommands::addTo(QMenu& menu, const CommandContext& context) {
  const auto add = [&](const QString& title, const QKeySequence& key,
                       std::function<void(const DocumentPtr&)> action, const MenuItems::Rule& isEnabled) {
    context.items.add(menu, title, {key}, onActiveDocument(context.appState, std::move(action)), isEnabled);
  };
  PixelPasteboard& pasteboard = context.pasteboard;
  addHistoryItem(menu, context, {tr("Undo"), tr("Undo %1")}, QKeySequence(Qt::CTRL | Qt::Key_Z),
                 &Document::undo, &MenuFacts::undoName);
  addHistoryItem(menu, context, {tr("Redo"), tr("Redo %1")}, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z),
                 &Document::redo, &MenuFacts::redoName);
  add(
      tr("Cut"), QKeySequence(Qt::CTRL | Qt::Key_X),
      [&pasteboard](const DocumentPtr& document) { pasteboard.cut(document); }, canCopy);
  add(
      tr("Copy"), QKeySequence(Qt::CTRL | Qt::Key_C),
      [&pasteboard](const DocumentPtr& document) { pasteboard.copy(document); }, canCopy);
  add(
      tr("Paste"), QKeySequence(Qt::CTRL | Qt::Key_V),
      [&pasteboard, viewCentre = context.viewCentre](const DocumentPtr& document) {
        pasteboard.paste(document, viewCentre(*document));
      },
      [](const MenuFacts& facts) { return facts.hasDocument && facts.canPaste; });
  menu.addSeparator();
  add(
      tr("Clear"), QKeySequence(Qt::Key_Delete), [](const DocumentPtr& document) { document->clearActive(); },
      [](const MenuFacts& facts) { return facts.hasActiveLayer; });
  context.items.addPosting(menu, tr("Free Transform"), {QKeySequence(Qt::CTRL | Qt::Key_T)},
                           notification::freeTransform, [](const MenuFacts& facts) {
                             return facts.hasActiveLayer && !facts.isActiveLocked && !facts.isTransforming;
                           });
}

}  // namespace orvanel
