#include "app/MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLoggingCategory>
#include <QMenuBar>
#include <QScreen>
#include <QStyle>
#include <utility>

#include "app/AccessLetters.h"
#include "app/dialogs/ShortcutsWindow.h"
#include "io/files/FileName.h"
#include "model/DisplayText.h"
#include "panels/levels/LevelsWindow.h"

namespace orvanel {

namespace {

constexpr QSize firstSize{1280, 800};

/// Start-up milestones for benchmarks; enable with QT_LOGGING_RULES=orvanel.start.debug=true.
Q_LOGGING_CATEGORY(startLog, "orvanel.start", QtInfoMsg)

}  // namespace

QSize MainWindow::firstSizeOn(const QSize& available) {
  // The window manager adds a title bar and a frame.
  const int titleBar = QApplication::style()->pixelMetric(QStyle::PM_TitleBarHeight);
  const int frame = QApplication::style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
  const QSize decoration(2 * frame, titleBar + 2 * frame);
  return firstSize.boundedTo(available - decoration);
}

MainWindow::MainWindow(AppState& appState, DocumentFiles& files, Dialogs& dialogs,
                       std::function<void()> requestQuit)
    : appState_(appState),
      requestQuit_(std::move(requestQuit)),
      accessor_(appState.windowState),
      pasteboard_(appState, dialogs),
      levels_(new LevelsWindow(this)) {
  setObjectName(QStringLiteral("mainWindow"));
  setAttribute(Qt::WA_QuitOnClose, false);
  setContextMenuPolicy(Qt::NoContextMenu);
  contentView_ = new ContentView(appState, files);
  setCentralWidget(contentView_);
  buildMenus({appState, files, dialogs, pasteboard_, *levels_, items_, requestQuit_,
              [this](const Document& document) { return contentView_->viewCentre(document); }});
  contentView_->onActiveDocumentChanged = [this] { activeDocumentChanged(); };
  followFacts();
  activeDocumentChanged();
  restoreSize();
}

MainWindow::~MainWindow() {
  // The levels panel, which goes with the window's widgets, may still change a document.
  contentView_->onDocumentChanges = nullptr;
  contentView_->onActiveDocumentChanged = nullptr;
}

void MainWindow::buildMenus(const CommandContext& context) {
  addMenu(tr("&File"), [&](QMenu& menu) {
    NewDocumentCommand::addTo(menu, context);
    OpenDocumentCommand::addTo(menu, context);
    openRecent_ = std::make_unique<OpenRecentCommand>(menu, appState_.recentDocuments, context.files);
    SaveDocumentCommand::addTo(menu, context);
    SaveAsDocumentCommand::addTo(menu, context);
    ExportImageCommand::addTo(menu, context);
    menu.addSeparator();
    CloseCommand::addTo(menu, context);
    QuitCommand::addTo(menu, context);
  });
  addMenu(tr("&Edit"), [&](QMenu& menu) {
    connect(&menu, &QMenu::aboutToShow, this, [this] { pasteboard_.look(); });
    EditMenuCommands::addTo(menu, context);
  });
  addMenu(tr("&Image"), [&](QMenu& menu) { ImageMenuCommands::addTo(menu, context); });
  addMenu(tr("&Layer"), [&](QMenu& menu) { LayerMenuCommands::addTo(menu, context); });
  addMenu(tr("&Select"), [&](QMenu& menu) { SelectMenuCommands::addTo(menu, context); });
  addMenu(tr("&View"), [&](QMenu& menu) {
    ViewMenuCommands::addTo(menu, context);
    addFullScreenItem(menu);
  });
  addMenu(tr("&Window"), [&](QMenu& menu) { WindowMenuCommands::addTo(menu, context); });
  addMenu(tr("&Help"), [&](QMenu& menu) {
    addShortcutsItem(menu, context.dialogs);
    AboutCommand::addTo(menu, context);
  });
}

void MainWindow::addMenu(const QString& title, const std::function<void(QMenu&)>& addItems) {
  QMenu& menu = *menuBar()->addMenu(title);
  addItems(menu);
  connect(&menu, &QMenu::aboutToShow, this, [this, &menu] {
    updateMenus();
    giveAccessLetters(menu);
  });
}

void MainWindow::addFullScreenItem(QMenu& menu) {
  menu.addSeparator();
  fullScreenItem_ = items_.add(menu, tr("Full Screen"), {QKeySequence(Qt::Key_F11)},
                               [this] { setWindowState(windowState() ^ Qt::WindowFullScreen); });
  fullScreenItem_->setCheckable(true);
}

void MainWindow::addShortcutsItem(QMenu& menu, Dialogs& dialogs) {
  items_.add(menu, tr("Keyboard Shortcuts"), {QKeySequence(Qt::Key_F1)},
             [this, &dialogs] { dialogs.showShortcuts(shortcutGroups(*menuBar())); });
}

void MainWindow::followFacts() {
  const auto changed = [this] { updateMenus(); };
  contentView_->onDocumentChanges = [this](const DocumentChanges& changes) {
    if (MenuFacts::areConcerned(changes)) updateMenus();
  };
  pasteboard_.onChanged = changed;
  menuNotifiers_.push_back(appState_.toolState.toolStack.addNotifier(changed));
  menuNotifiers_.push_back(appState_.pixelClipboard.addNotifier(changed));
}

void MainWindow::updateMenus() {
  items_.update(MenuFacts::of(appState_, pasteboard_));
}

void MainWindow::restoreSize() {
  if (const auto remembered = WindowAccessor::rememberedContentSize()) {
    resize(*remembered);
    return;
  }
  resize(firstSizeOn(screen()->availableSize()));
}

void MainWindow::activeDocumentChanged() {
  const DocumentPtr active = appState_.windowState.activeDocument();
  // Qt replaces "[*]" by the modified marker; doubling it in the name shows it literally.
  const QString name =
      active ? displayText(active->name.value()).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"))
             : QString();
  QString title = active ? name + QStringLiteral("[*]") : QString();
  if (const LoadingPlace& loading = contentView_->loadingPlace(); loading.isInFront()) {
    title = tr("Opening %1").arg(displayName(loading.file()->path));
  }
  setWindowTitle(title.isEmpty() ? QStringLiteral("Orvanel") : QStringLiteral("%1 — Orvanel").arg(title));
  setWindowModified(active && (active->isDirty.value() || active->hasOpenUnsavedChange()));
  setWindowFilePath(active ? active->sourceFileURL.value().value_or(QString()) : QString());
  updateMenus();
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange && fullScreenItem_ != nullptr) {
    fullScreenItem_->setChecked(isFullScreen());
  }
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // The button closes what is shown.
  if (LoadingPlace& loading = contentView_->loadingPlace(); loading.isInFront()) {
    loading.cancel();
    event->ignore();
    return;
  }
  if (!accessor_.closeDelegate.windowShouldClose()) {
    event->ignore();
    return;
  }
  event->accept();
  // There is no way to reopen the window, so closing it quits the program.
  if (requestQuit_)
    QMetaObject::invokeMethod(
        this, [this] { requestQuit_(); }, Qt::QueuedConnection);
}

void MainWindow::paintEvent(QPaintEvent* event) {
  QMainWindow::paintEvent(event);
  if (std::exchange(hasBeenPainted_, true)) return;
  // Queued, so that the rest of the window has been painted as well.
  QMetaObject::invokeMethod(
      this, [] { qCDebug(startLog, "first frame"); }, Qt::QueuedConnection);
}

void MainWindow::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  WindowAccessor::rememberContentSize(size());
}

}  // namespace orvanel
