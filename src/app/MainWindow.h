// The main window: menu bar, content view, title with the modified marker, and the behaviour of the close
// button. Main thread only.
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
  /// Items that need an active document, except for Save.
  std::vector<QAction*> documentItems_;
  /// Items that need at least two documents.
  std::vector<QAction*> tabItems_;
};

}  // namespace orvanel
