#include "app/MenuItems.h"

#include <utility>

#include "app/AppState.h"
#include "app/DocumentFiles.h"
#include "app/PixelPasteboard.h"
#include "tools/NotificationCenter.h"

namespace orvanel {
namespace {

/// Whether a selection can hold anything at all, by its tiles alone: one that was blank when it was made has
/// nothing but uniform ones.
bool maySelectPixels(const Selection& selection) {
  const Surface& mask = *selection.maskTexture->texture;
  for (int index = 0; index < mask.tileCount(); ++index) {
    if (mask.tile(index) != Tile::uniform(0)) return true;
  }
  return false;
}

}  // namespace

MenuFacts MenuFacts::of(const AppState& appState, const PixelPasteboard& pasteboard) {
  MenuFacts facts;
  const DocumentPtr document = appState.windowState.activeDocument();
  facts.hasOtherDocument = appState.windowState.documents.value().size() > (document != nullptr ? 1U : 0U);
  if (document == nullptr) return facts;
  const std::optional<LayerNode> node = document->activeNode();
  const std::shared_ptr<Layer> layer = node ? node->layer() : nullptr;
  facts.hasDocument = true;
  facts.canSave = DocumentFiles::canSave(*document);
  facts.canPaste = pasteboard.canPaste();
  facts.hasActiveNode = node.has_value();
  facts.hasActiveLayer = layer != nullptr && layer->texture.value() != nullptr;
  facts.isActiveLocked = node && node->isLocked().value();
  facts.canInvertSelection = document->selection.value() != nullptr;
  const std::shared_ptr<const Selection> selected = document->activeSelection();
  facts.hasSelection = selected != nullptr;
  facts.hasSelectedPixels = selected != nullptr && maySelectPixels(*selected);
  facts.isTransforming = appState.toolState.currentTool() == Tool::freeTransform;
  facts.undoName = document->undoActionName();
  facts.redoName = document->redoActionName();
  facts.colorMode = document->colorMode.value();
  return facts;
}

bool MenuFacts::areConcerned(const DocumentChanges& changes) {
  return contains<change::HistoryChanged>(changes) || contains<change::SelectionChanged>(changes) ||
         contains<change::ActiveNodeChanged>(changes) || contains<change::FileStateChanged>(changes) ||
         contains<change::CanvasChanged>(changes) || contains<change::NodeInserted>(changes) ||
         contains<change::NodeRemoved>(changes) || contains<change::EditRefused>(changes) ||
         contains<change::OpenEditChanged>(changes) ||
         containsAny<change::NodePropertyChanged>(changes, NodeProperty::isLocked);
}

QAction* MenuItems::add(QMenu& menu, const QString& title, const QList<QKeySequence>& keys, Action action,
                        const Rule& isEnabled) {
  QAction* item = menu.addAction(title);
  // The name that stays when the text tells what would be undone.
  item->setIconText(QString(title).remove(QStringLiteral("...")).remove(u'…').remove(u'&').trimmed());
  item->setShortcuts(keys);
  item->setShortcutContext(Qt::WindowShortcut);
  QObject::connect(item, &QAction::triggered, item, [action = std::move(action)] { action(); });
  if (isEnabled) {
    follow(*item,
           [isEnabled](QAction& followed, const MenuFacts& facts) { followed.setEnabled(isEnabled(facts)); });
  }
  return item;
}

QAction* MenuItems::addPosting(QMenu& menu, const QString& title, const QList<QKeySequence>& keys,
                               std::string_view name, const Rule& isEnabled) {
  return add(
      menu, title, keys, [name] { NotificationCenter::standard().post(name); }, isEnabled);
}

void MenuItems::follow(QAction& item, Update update) {
  followers_.push_back({&item, std::move(update)});
}

void MenuItems::update(const MenuFacts& facts) const {
  for (const Follower& follower : followers_) follower.update(*follower.item, facts);
}

}  // namespace orvanel
