// The items of the menu bar, each with the rule that says when it can act. A rule reads a few facts about the
// active document, which are gathered once for all items. Owned by the main window; main thread only.
#pragma once

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "model/DocumentChange.h"
#include "raster/ColorMode.h"

namespace orvanel {

class AppState;
class PixelPasteboard;

/// What the items' states depend on. Gathering it takes no look at pixels.
struct MenuFacts {
  bool hasDocument = false;
  /// Open beside the active one, if one is active.
  bool hasOtherDocument = false;
  bool canSave = false;
  bool canPaste = false;
  bool hasActiveNode = false;
  /// The active node is a layer with pixels.
  bool hasActiveLayer = false;
  bool isActiveLocked = false;
  /// There is a selection object, even if nothing is selected.
  bool canInvertSelection = false;
  bool hasSelection = false;
  /// The selection isn't blank, as that of an empty layer's transparency is.
  bool hasSelectedPixels = false;
  bool isTransforming = false;
  /// Names of what would be undone and redone.
  std::optional<QString> undoName;
  std::optional<QString> redoName;
  std::optional<ColorMode> colorMode;

  [[nodiscard]] static MenuFacts of(const AppState& appState, const PixelPasteboard& pasteboard);
  /// Whether changes of the active document change any fact.
  [[nodiscard]] static bool areConcerned(const DocumentChanges& changes);
};

class MenuItems {
 public:
  using Action = std::function<void()>;
  using Rule = std::function<bool(const MenuFacts&)>;
  using Update = std::function<void(QAction&, const MenuFacts&)>;

  /// Adds an item; without a rule it is always enabled. Its shortcuts work in the main window and in
  /// the panels that float above it, where they act on the active document; dialogs keep their own.
  QAction* add(QMenu& menu, const QString& title, const QList<QKeySequence>& keys, Action action,
               const Rule& isEnabled = nullptr);
  /// The same for an item that posts a notification.
  QAction* addPosting(QMenu& menu, const QString& title, const QList<QKeySequence>& keys,
                      std::string_view name, const Rule& isEnabled = nullptr);
  /// Has the item follow the facts in another way than by its rule.
  void follow(QAction& item, Update update);

  void update(const MenuFacts& facts) const;

 private:
  struct Follower {
    QAction* item = nullptr;
    Update update;
  };
  std::vector<Follower> followers_;
};

}  // namespace orvanel
