#include "app/ContentView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

#include "app/KeyHandlerView.h"
#include "app/ProgressLine.h"
#include "app/RecentFilePictures.h"
#include "canvas/CanvasPaneView.h"
#include "io/files/FileName.h"
#include "model/DisplayText.h"
#include "panels/bars/DocumentTabBar.h"
#include "panels/bars/StatusBarPane.h"

namespace orvanel {

namespace {

DocumentPtr documentIn(const std::any& object) {
  const auto* document = std::any_cast<DocumentPtr>(&object);
  return document == nullptr ? nullptr : *document;
}

template <typename Layout>
Layout* tightLayout(QWidget* parent) {
  auto* layout = new Layout(parent);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  return layout;
}

/// Has the window make room for its parts when they need more, which the toolkit's doesn't.
class PartsSplitter : public QSplitter {
 public:
  PartsSplitter() : QSplitter(Qt::Horizontal) {}

 protected:
  bool event(QEvent* event) override {
    const bool isHandled = QSplitter::event(event);
    if (event->type() == QEvent::LayoutRequest) {
      updateGeometry();
      parentWidget()->layout()->activate();
    }
    return isHandled;
  }
};

/// The first widget inside that takes the focus by Tab.
QWidget* firstFocusable(QWidget& area) {
  for (QWidget* next = area.nextInFocusChain(); next != &area; next = next->nextInFocusChain()) {
    const bool takesFocus = (next->focusPolicy() & Qt::TabFocus) != 0;
    if (area.isAncestorOf(next) && takesFocus && next->isVisible() && next->isEnabled()) return next;
  }
  return nullptr;
}

}  // namespace

ContentView::ContentView(AppState& appState, DocumentFiles& files, QWidget* parent)
    : QWidget(parent), appState_(appState), files_(files), panels_(appState, this) {
  tabBar_ = new DocumentTabBar(this);
  canvasPane_ = new CanvasPaneView(appState.metalContext, appState.toolState, this);
  statusBar_ = new StatusBarPane(this);
  progressLine_ = new ProgressLine(files.activity, this);
  progressLine_->onCancel = [&files] { files.cancelAll(); };

  loadingPlace_ = new LoadingPlace(appState.windowState, files, this);
  keyHandler_ = new KeyHandlerView(appState, this);
  keyHandler_->offerToGesture = [this](const EventRecord& key) {
    if (loadingPlace_->isInFront() && key.key == keyCode::escape) {
      loadingPlace_->cancel();
      return true;
    }
    return canvasPane_->canvasView().container().mtkView().offerKey(key);
  };
  keyHandler_->isGestureOpen = [this] {
    return canvasPane_->canvasView().container().mtkView().hasOpenGesture();
  };

  layOut();
  canvasPane_->openFiles = [this](const QStringList& paths) { files_.openDropped(paths); };
  connectTabBar();
  connectPlaceholder();
  connectLoadingPlace();
  observeNotifications();
  observeWindowState();
  refresh();
}

ContentView::~ContentView() = default;

void ContentView::layOut() {
  auto* central = new QWidget;
  auto* column = tightLayout<QVBoxLayout>(central);
  column->addWidget(tabBar_);
  column->addWidget(canvasPane_, 1);
  column->addWidget(statusBar_);

  splitter_ = new PartsSplitter;
  splitter_->setHandleWidth(1);
  splitter_->setChildrenCollapsible(false);
  splitter_->addWidget(central);
  splitter_->addWidget(panels_.inspector);
  splitter_->setStretchFactor(0, 1);
  splitter_->setStretchFactor(1, 0);
  panels_.inspector->setMinimumWidth(UserDefaults::narrowestInspector);
  panels_.inspector->setMaximumWidth(UserDefaults::widestInspector);
  const int inspectorWidth = appState_.userDefaults.inspectorWidth();
  splitter_->setSizes({std::max(1, width() - inspectorWidth), inspectorWidth});
  connect(splitter_, &QSplitter::splitterMoved, this, [this] {
    appState_.userDefaults.setValue(UserDefaults::inspectorWidthKey, panels_.inspector->width());
  });

  auto* window = tightLayout<QVBoxLayout>(this);
  window->addWidget(panels_.options);
  auto* row = tightLayout<QHBoxLayout>(nullptr);
  row->addWidget(panels_.palette);
  row->addWidget(splitter_, 1);
  window->addLayout(row, 1);

  addFocusKeys();
}

/// Tab belongs to the documents, so the areas of the window and their controls have keys of their own.
void ContentView::addFocusKeys() {
  const auto addKey = [this](const QKeyCombination& key, const std::function<void()>& action) {
    connect(new QShortcut(QKeySequence(key), this), &QShortcut::activated, this, action);
  };
  addKey(Qt::Key_F6, [this] { focusNextArea(); });
  addKey(Qt::CTRL | Qt::Key_F6, [this] { focusNextChild(); });
  addKey(Qt::CTRL | Qt::SHIFT | Qt::Key_F6, [this] { focusPreviousChild(); });
  // The menu's item closes documents, and rests while none is active.
  cancelLoadingKey_ = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this);
  cancelLoadingKey_->setEnabled(false);
  connect(cancelLoadingKey_, &QShortcut::activated, this, [this] { loadingPlace_->cancel(); });
}

void ContentView::focusNextArea() {
  // One of the first three is shown.
  const std::array<QWidget*, 6> areas{&canvasPane_->canvasView().container().mtkView(),
                                      &canvasPane_->loadingView().cancelButton(),
                                      &canvasPane_->noDocumentView(),
                                      panels_.options,
                                      panels_.palette,
                                      panels_.inspector};
  const QWidget* focus = focusWidget();
  const auto current = std::find_if(areas.begin(), areas.end(), [&](const QWidget* area) {
    return area == focus || area->isAncestorOf(focus);
  });
  const auto index = static_cast<std::size_t>(current - areas.begin());
  for (std::size_t step = 1; step <= areas.size(); ++step) {
    QWidget* area = areas[(index + step) % areas.size()];
    QWidget* target = area->focusPolicy() != Qt::NoFocus ? area : firstFocusable(*area);
    if (target == nullptr || !target->isVisible() || !target->isEnabled()) continue;
    target->setFocus(Qt::TabFocusReason);
    return;
  }
}

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

void ContentView::connectLoadingPlace() {
  loadingPlace_->onChanged = [this] { scheduleRefresh(); };
  canvasPane_->loadingView().onCancel = [this] { loadingPlace_->cancel(); };
  tabBar_->onSelectLoading = [this] { loadingPlace_->bringForward(); };
  tabBar_->onCancelLoading = [this] { loadingPlace_->cancel(); };
  loadingProgress_ = files_.activity.changes.addNotifier([this] { showLoadingProgress(); });
}

void ContentView::showLoadingFile() {
  const LoadingFilePtr file = loadingPlace_->file();
  const bool isInFront = loadingPlace_->isInFront();
  cancelLoadingKey_->setEnabled(isInFront);
  tabBar_->setLoading(file == nullptr ? std::nullopt
                                      : std::optional(LoadingTabContent{displayText(documentName(file->path)),
                                                                        file->path, isInFront}));
  progressLine_->leaveOut(isInFront ? std::optional(file->work) : std::nullopt);
  if (file == nullptr) return;
  LoadingView& view = canvasPane_->loadingView();
  view.setFile(displayName(file->path), file->others);
  const LoadingPreview preview = file->preview.value_or(LoadingPreview());
  view.setPreview(preview.canvasSize, preview.picture);
  showLoadingProgress();
}

void ContentView::showLoadingProgress() {
  if (const LoadingFilePtr file = loadingPlace_->file()) {
    canvasPane_->loadingView().setProgress(files_.activity.fractionOf(file->work));
  }
}

void ContentView::on(std::string_view name, NotificationCenter::Handler handler) {
  subscriptions_.push_back(NotificationCenter::standard().observe(name, std::move(handler)));
}

void ContentView::observeNotifications() {
  WindowState& window = appState_.windowState;
  on(notification::openedImageDocument, [this](const std::any& object) {
    const DocumentPtr document = documentIn(object);
    if (!document) return;
    loadingPlace_->add(document);
    if (document->sourceFileURL.value()) files_.noteRecentDocument(*document->sourceFileURL.value());
  });
  on(notification::createdNewDocument, [&window](const std::any& object) {
    if (const DocumentPtr document = documentIn(object)) window.addDocument(document);
  });
  // From a file that is being read, Tab leads to the last document. Without tabs to go through, it goes
  // through the links of the empty window.
  on(notification::cycleNextTab, [this, &window](const std::any&) {
    if (loadingPlace_->leave() || window.cycleNextTab()) return;
    if (window.documents.value().empty()) focusNextChild();
  });
  on(notification::cyclePreviousTab, [this, &window](const std::any&) {
    if (loadingPlace_->leave() || window.cyclePreviousTab()) return;
    if (window.documents.value().empty()) focusPreviousChild();
  });
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
  showLoadingFile();
  tabBar_->setVisible(!documents.empty() || loadingPlace_->file() != nullptr);
  placeProgressLine();

  shownDocument_ = window.activeDocument();
  canvasPane_->setDocument(shownDocument_, loadingPlace_->isInFront() ? CanvasPaneView::Instead::loadingView
                                                                      : CanvasPaneView::Instead::placeholder);
  statusBar_->setDocument(shownDocument_);
  panels_.setDocument(shownDocument_);

  documentChanges_ = {};
  if (shownDocument_) {
    documentChanges_ = shownDocument_->changes().observe([this](const DocumentChanges& changes) {
      const bool concernsFile =
          contains<change::FileStateChanged>(changes) || contains<change::OpenEditChanged>(changes);
      if (concernsFile && onActiveDocumentChanged) onActiveDocumentChanged();
      if (contains<change::EditRefused>(changes)) files_.reportRefusedEdit();
      if (onDocumentChanges) onDocumentChanges(changes);
    });
  }
  if (onActiveDocumentChanged) onActiveDocumentChanged();
}

void ContentView::placeProgressLine() {
  layout()->activate();
  progressLine_->placeIn(QRect(canvasPane_->mapTo(this, QPoint()), canvasPane_->size()));
}

void ContentView::resizeEvent(QResizeEvent* /*event*/) {
  placeProgressLine();
}

}  // namespace orvanel
