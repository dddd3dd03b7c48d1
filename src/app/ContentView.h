// The root view of the main window: lays out the panels around the canvas. Handles the notifications that
// concern open documents. Owned by the window; main thread only.
#pragma once

#include <QEvent>
#include <QPropertyNotifier>
#include <QWidget>
#include <memory>
#include <vector>

#include "app/AppState.h"
#include "app/DocumentFiles.h"
#include "app/LoadingPlace.h"
#include "app/SidePanels.h"
#include "tools/NotificationCenter.h"

class QShortcut;
class QSplitter;

namespace orvanel {

class CanvasPaneView;
class DocumentTabBar;
class KeyHandlerView;
class ProgressLine;
class RecentFilePictures;
class StatusBarPane;

class ContentView : public QWidget {
  Q_OBJECT

 public:
  /// Both must outlive the view.
  ContentView(AppState& appState, DocumentFiles& files, QWidget* parent = nullptr);
  ~ContentView() override;

  /// Called when another document becomes active, or when its name, file or modified state changes.
  std::function<void()> onActiveDocumentChanged;
  /// Called with everything that changes in the active document.
  std::function<void(const DocumentChanges&)> onDocumentChanges;

  /// The centre of the canvas's view, in coordinates of the document that it shows; of any other document the
  /// centre of its canvas.
  [[nodiscard]] QPointF viewCentre(const Document& document) const;

  [[nodiscard]] DocumentTabBar& tabBar() { return *tabBar_; }
  [[nodiscard]] CanvasPaneView& canvasPane() { return *canvasPane_; }
  [[nodiscard]] StatusBarPane& statusBar() { return *statusBar_; }
  [[nodiscard]] SidePanels& panels() { return panels_; }
  [[nodiscard]] ProgressLine& progressLine() { return *progressLine_; }
  [[nodiscard]] LoadingPlace& loadingPlace() { return *loadingPlace_; }

 protected:
  bool event(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void layOut();
  void addFocusKeys();
  void focusNextArea();
  void connectTabBar();
  void connectPlaceholder();
  void connectLoadingPlace();
  void showLoadingFile();
  void showLoadingProgress();
  void observeNotifications();
  void observeCommands();
  void on(std::string_view name, NotificationCenter::Handler handler);
  void observeWindowState();
  [[nodiscard]] static QEvent::Type refreshEventType();
  void scheduleRefresh();
  void refresh();
  void placeProgressLine();

  AppState& appState_;
  DocumentFiles& files_;
  SidePanels panels_;
  QSplitter* splitter_ = nullptr;
  DocumentTabBar* tabBar_;
  CanvasPaneView* canvasPane_;
  StatusBarPane* statusBar_;
  ProgressLine* progressLine_;
  LoadingPlace* loadingPlace_;
  QShortcut* cancelLoadingKey_ = nullptr;
  QPropertyNotifier loadingProgress_;
  KeyHandlerView* keyHandler_;
  std::unique_ptr<RecentFilePictures> recentFiles_;
  bool isRefreshScheduled_ = false;
  DocumentPtr shownDocument_;
  std::vector<QPropertyNotifier> windowNotifiers_;
  ChangeStream::Subscription documentChanges_;
  std::vector<NotificationCenter::Subscription> subscriptions_;
};

}  // namespace orvanel
