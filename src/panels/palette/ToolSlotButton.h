// The button of one slot of the tool palette. A press selects a single tool; a group's menu opens when the
// button is held, and a quick click selects the member that it shows. Owned by the palette; main thread only.
#pragma once

#include <QAbstractButton>
#include <QPropertyNotifier>
#include <QTimer>
#include <array>

#include "tools/ToolState.h"

class QMenu;

namespace orvanel {

class ToolSlotButton : public QAbstractButton {
  Q_OBJECT

 public:
  /// `toolState` must outlive the button.
  ToolSlotButton(ToolSlot slot, ToolState& toolState, QWidget* parent = nullptr);

  [[nodiscard]] const ToolSlot& slot() const { return slot_; }
  [[nodiscard]] Tool shownTool() const { return toolState_.shownTool(slot_); }
  /// Whether the current tool is one of the slot's.
  [[nodiscard]] bool isSelected() const { return isChecked(); }
  /// Runs while a group's button is held and its menu isn't open yet.
  [[nodiscard]] QTimer& holdTimer() { return holdTimer_; }
  /// The group's tools; null for a single tool.
  [[nodiscard]] QMenu* menu() const { return menu_; }
  /// For a group.
  void openMenu();

  [[nodiscard]] QSize sizeHint() const override;

 protected:
  /// Being selected is the tool state's business, not the click's.
  void nextCheckState() override {}
  void changeEvent(QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void makeMenu();
  void followToolState();
  /// Forgets a press whose release won't come or mustn't count.
  void dropPress();
  [[nodiscard]] bool looksPressed() const { return isEnabled() && (isDown() || isSelected()); }

  const ToolSlot slot_;
  ToolState& toolState_;
  QMenu* menu_ = nullptr;
  QTimer holdTimer_;
  bool didShowMenu_ = false;
  std::array<QPropertyNotifier, 2> notifiers_;
};

}  // namespace orvanel
