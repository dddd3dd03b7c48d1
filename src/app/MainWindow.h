// The one window: menu bar and content view, the title with its mark of unsaved changes, and the close
// button's rule. Main thread only.
#pragma once

#include <QMainWindow>
#include <memory>
#include <vector>

#include "app/ContentView.h"
#include "app/MenuCommands.h"
#include "app/OpenRecentCommand.h"
#include "app/WindowAccessor.h"

namespace orvanel {

class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  /// All must outlive the window.
  MainWindow(AppState& appState, DocumentFiles& files, Dialogs& dialogs, std::function<void()> requestQuit);

  [[nodiscard]] ContentView& contentView() { return *contentView_; }
  [[nodiscard]] OpenRecentCommand& openRecent() { return *openRecent_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void buildMenus(const CommandContext& context);
  void restoreSize();
  void activeDocumentChanged();

  AppState& appState_;
  std::function<void()> requestQuit_;
  WindowAccessor accessor_;
  ContentView* contentView_;
  std::unique_ptr<OpenRecentCommand> openRecent_;
  bool hasBeenPainted_ = false;
  QAction* saveItem_ = nullptr;
  /// Items that are of no use without an active document, besides Save.
  std::vector<QAction*> documentItems_;
  /// Items that are of no use with fewer than two documents.
  std::vector<QAction*> tabItems_;
};

}  // namespace orvanel
