#include "app/ContentView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QVBoxLayout>

#include "app/KeyHandlerView.h"
#include "app/ProgressLine.h"
#include "app/RecentFilePictures.h"
#include "canvas/CanvasPaneView.h"
#include "panels/bars/DocumentTabBar.h"
#include "panels/bars/StatusBarPane.h"

namespace orvanel {

namespace {

DocumentPtr documentIn(const std::any& object) {
  const auto* document = std::any_cast<DocumentPtr>(&object);
  return document == nullptr ? nullptr : *document;
}

}  // namespace

ContentView::ContentView(AppState& appState, DocumentFiles& files, QWidget* parent)
    : QWidget(parent), appState_(appState), files_(files) {
  tabBar_ = new DocumentTabBar(this);
  canvasPane_ = new CanvasPaneView(appState.metalContext, appState.toolState, this);
  statusBar_ = new StatusBarPane(this);
  progressLine_ = new ProgressLine(files.activity, this);
  progressLine_->onCancel = [&files] { files.cancelAll(); };

  keyHandler_ = new KeyHandlerView(appState, this);
  keyHandler_->offerToGesture = [this](const EventRecord& key) {
    return canvasPane_->canvasView().container().mtkView().offerKey(key);
  };
  keyHandler_->isGestureOpen = [this] {
    return canvasPane_->canvasView().container().mtkView().hasOpenGesture();
  };

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(tabBar_);
  column->addWidget(canvasPane_, 1);
  column->addWidget(statusBar_);

  canvasPane_->openFiles = [this](const QStringList& paths) { files_.openDropped(paths); };
  connectTabBar();
  connectPlaceholder();
  observeNotifications();
  observeWindowState();
  refresh();
}

ContentView::~ContentView() = default;

void ContentView::connectTabBar() {
  WindowState& window = appState_.windowState;
  tabBar_->onSelect = [&window](const QUuid& id) { window.switchToDocument(id); };
  tabBar_->onClose = [&window](const QUuid& id) { window.closeDocument(id); };
  tabBar_->onCloseOthers = [&window](const QUuid& id) { window.closeOtherDocuments(id); };
  tabBar_->onCloseAll = [&window] { window.closeAllDocuments(); };
  tabBar_->onNewDocument = [&window] { window.createUntitledDocument(); };
}

void ContentView::connectPlaceholder() {
  NoDocumentView& placeholder = canvasPane_->noDocumentView();
  placeholder.onNew = [this] { files_.newDocument(); };
  placeholder.onOpen = [this] { files_.askAndOpen(); };
  placeholder.onOpenRecent = [this](const QString& path) { files_.open({path}); };
  recentFiles_ = std::make_unique<RecentFilePictures>(appState_.recentDocuments, placeholder);
}

void ContentView::on(std::string_view name, NotificationCenter::Handler handler) {
  subscriptions_.push_back(NotificationCenter::standard().observe(name, std::move(handler)));
}

void ContentView::observeNotifications() {
  WindowState& window = appState_.windowState;
  on(notification::openedImageDocument, [this](const std::any& object) {
    const DocumentPtr document = documentIn(object);
    if (!document) return;
    appState_.windowState.addDocument(document);
    if (document->sourceFileURL.value()) files_.noteRecentDocument(*document->sourceFileURL.value());
  });
  on(notification::createdNewDocument, [&window](const std::any& object) {
    if (const DocumentPtr document = documentIn(object)) window.addDocument(document);
  });
  on(notification::cycleNextTab, [&window](const std::any&) { window.cycleNextTab(); });
  on(notification::cyclePreviousTab, [&window](const std::any&) { window.cyclePreviousTab(); });
  on(notification::cycleNextDocument, [&window](const std::any&) { window.cycleNextDocument(); });
  on(notification::cyclePreviousDocument, [&window](const std::any&) { window.cyclePreviousDocument(); });
  on(notification::commitMRUCycle, [&window](const std::any&) {
    if (const DocumentPtr active = window.activeDocument()) window.promoteToMRUFront(active->id);
  });
  on(notification::saveAsDocument, [this](const std::any&) {
    if (const DocumentPtr active = appState_.windowState.activeDocument()) files_.saveAs(active);
  });
  observeCommands();
}

void ContentView::observeCommands() {
  const auto onActive = [this](std::string_view name, std::function<void(Document&)> command) {
    on(name, [this, command = std::move(command)](const std::any&) {
      if (const DocumentPtr active = appState_.windowState.activeDocument()) command(*active);
    });
  };
  onActive(notification::deselect, [](Document& document) { document.deselect(); });
  onActive(notification::clearSelection, [](Document& document) { document.clearActive(); });
  onActive(notification::fillWithBackgroundColor,
           [](Document& document) { document.fillSelection(document.backgroundColor.value()); });
  onActive(notification::fillWithForegroundColor,
           [](Document& document) { document.fillSelection(document.foregroundColor.value()); });
  onActive(notification::freeTransform, [&tools = appState_.toolState](Document&) {
    if (tools.currentTool() != Tool::freeTransform) tools.pushTool(Tool::freeTransform);
  });
}

QPointF ContentView::viewCentre(const Document& document) const {
  const ScrollableMTKView& view = canvasPane_->canvasView().container().mtkView();
  const auto shown = view.document().get() == &document
                         ? view.viewToDocument(QRectF(QPointF(), view.viewSize()).center())
                         : std::nullopt;
  return shown.value_or(QPointF(document.canvasWidth.value() / 2.0, document.canvasHeight.value() / 2.0));
}

void ContentView::observeWindowState() {
  const auto changed = [this] { scheduleRefresh(); };
  windowNotifiers_.push_back(appState_.windowState.documents.addNotifier(changed));
  windowNotifiers_.push_back(appState_.windowState.activeDocumentID.addNotifier(changed));
}

QEvent::Type ContentView::refreshEventType() {
  static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
  return type;
}

void ContentView::scheduleRefresh() {
  // One operation may change several properties; the views are updated once, after the last change.
  if (isRefreshScheduled_) return;
  isRefreshScheduled_ = true;
  QCoreApplication::postEvent(this, new QEvent(refreshEventType()), Qt::HighEventPriority);
}

bool ContentView::event(QEvent* event) {
  if (event->type() != refreshEventType()) return QWidget::event(event);
  refresh();
  return true;
}

void ContentView::refresh() {
  isRefreshScheduled_ = false;
  const WindowState& window = appState_.windowState;
  const auto& documents = window.documents.value();
  tabBar_->setDocuments(documents, window.activeDocumentID.value());
  tabBar_->setVisible(!documents.empty());
  placeProgressLine();

  shownDocument_ = window.activeDocument();
  canvasPane_->setDocument(shownDocument_);
  statusBar_->setDocument(shownDocument_);

  documentChanges_ = {};
  if (shownDocument_) {
    documentChanges_ = shownDocument_->changes().observe([this](const DocumentChanges& changes) {
      if (contains<change::FileStateChanged>(changes) && onActiveDocumentChanged) onActiveDocumentChanged();
      if (contains<change::EditRefused>(changes)) files_.reportRefusedEdit();
      if (onDocumentChanges) onDocumentChanges(changes);
    });
  }
  if (onActiveDocumentChanged) onActiveDocumentChanged();
}

void ContentView::placeProgressLine() {
  layout()->activate();
  progressLine_->placeIn(canvasPane_->geometry());
}

void ContentView::resizeEvent(QResizeEvent* /*event*/) {
  placeProgressLine();
}

}  // namespace orvanel
