// The main window: menu bar, content view, title with the modified marker, and the behaviour of the close
// button. Main thread only.
#pragma once

#include <QMainWindow>
#include <QPropertyNotifier>
#include <memory>
#include <vector>

#include "app/ContentView.h"
#include "app/MenuCommands.h"
#include "app/OpenRecentCommand.h"
#include "app/PixelPasteboard.h"
#include "app/WindowAccessor.h"

namespace orvanel {

class LevelsWindow;

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// All must outlive the window.
  MainWindow(AppState& appState, DocumentFiles& files, Dialogs& dialogs, std::function<void()> requestQuit);
  ~MainWindow() override;

  /// The size of a first window on a screen with this much room, title bar and frame included.
  [[nodiscard]] static QSize firstSizeOn(const QSize& available);

  [[nodiscard]] ContentView& contentView() { return *contentView_; }
  [[nodiscard]] LevelsWindow& levels() { return *levels_; }
  [[nodiscard]] OpenRecentCommand& openRecent() { return *openRecent_; }

 protected:
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void buildMenus(const CommandContext& context);
  void addMenu(const QString& title, const std::function<void(QMenu&)>& addItems);
  void addFullScreenItem(QMenu& menu);
  void addShortcutsItem(QMenu& menu, Dialogs& dialogs);
  void followFacts();
  void updateMenus();
  void restoreSize();
  void activeDocumentChanged();

  AppState& appState_;
  std::function<void()> requestQuit_;
  WindowAccessor accessor_;
  ContentView* contentView_;
  std::unique_ptr<OpenRecentCommand> openRecent_;
  bool hasBeenPainted_ = false;
  PixelPasteboard pasteboard_;
  LevelsWindow* levels_;
  MenuItems items_;
  QAction* fullScreenItem_ = nullptr;
  std::vector<QPropertyNotifier> menuNotifiers_;
};

}  // namespace orvanel
