// The window that lists all keys, and what the mouse does with keys held. It doesn't block the main window.
// Main thread only.
#pragma once

#include <QDialog>
#include <vector>

class QMenuBar;

namespace orvanel {

struct ShortcutGroup {
  struct Row {
    QString meaning;
    QString keys;
  };
  QString title;
  std::vector<Row> rows;
};

/// The keys of the menus, the single keys, and the gestures, from the tables that the program itself uses.
[[nodiscard]] std::vector<ShortcutGroup> shortcutGroups(const QMenuBar& menuBar);

class ShortcutsWindow : public QDialog {
  Q_OBJECT

 public:
  explicit ShortcutsWindow(const std::vector<ShortcutGroup>& groups, QWidget* parent = nullptr);
};

}  // namespace orvanel
