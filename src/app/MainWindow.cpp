#include "app/MainWindow.h"

#include <QCloseEvent>
#include <QLoggingCategory>
#include <QMenuBar>
#include <QScreen>
#include <utility>

#include "model/DisplayText.h"

namespace orvanel {

namespace {

constexpr QSize firstSize{1280, 800};
constexpr QSize smallestSize{480, 320};

/// Start-up milestones for benchmarks; enable with QT_LOGGING_RULES=orvanel.start.debug=true.
Q_LOGGING_CATEGORY(startLog, "orvanel.start", QtInfoMsg)

}  // namespace

MainWindow::MainWindow(AppState& appState, DocumentFiles& files, Dialogs& dialogs,
                       std::function<void()> requestQuit)
    : appState_(appState), requestQuit_(std::move(requestQuit)), accessor_(appState.windowState) {
  setObjectName(QStringLiteral("mainWindow"));
  setAttribute(Qt::WA_QuitOnClose, false);
  setContextMenuPolicy(Qt::NoContextMenu);
  setMinimumSize(smallestSize);
  contentView_ = new ContentView(appState, files);
  setCentralWidget(contentView_);
  buildMenus({appState, files, dialogs, requestQuit_});
  contentView_->onActiveDocumentChanged = [this] { activeDocumentChanged(); };
  activeDocumentChanged();
  restoreSize();
}

void MainWindow::buildMenus(const CommandContext& context) {
  QMenu& file = *menuBar()->addMenu(QStringLiteral("&File"));
  NewDocumentCommand::addTo(file, context);
  OpenDocumentCommand::addTo(file, context);
  openRecent_ = std::make_unique<OpenRecentCommand>(file, appState_.recentDocuments, context.files);
  saveItem_ = SaveDocumentCommand::addTo(file, context);
  documentItems_.push_back(SaveAsDocumentCommand::addTo(file, context));
  documentItems_.push_back(ExportImageCommand::addTo(file, context));
  file.addSeparator();
  QuitCommand::addTo(file, context);

  const auto viewItems = ViewMenuCommands::addTo(*menuBar()->addMenu(QStringLiteral("&View")));
  documentItems_.insert(documentItems_.end(), viewItems.begin(), viewItems.end());
  tabItems_ = WindowMenuCommands::addTo(*menuBar()->addMenu(QStringLiteral("&Window")));
  AboutCommand::addTo(*menuBar()->addMenu(QStringLiteral("&Help")), context);
}

void MainWindow::restoreSize() {
  if (const auto remembered = WindowAccessor::rememberedContentSize()) {
    resize(*remembered);
    return;
  }
  const QSize available = screen()->availableSize();
  resize(firstSize.boundedTo(available));
}

void MainWindow::activeDocumentChanged() {
  const DocumentPtr active = appState_.windowState.activeDocument();
  // Qt replaces "[*]" by the modified marker; doubling it in the name shows it literally.
  const QString name =
      active ? displayText(active->name.value()).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"))
             : QString();
  setWindowTitle(active ? QStringLiteral("%1[*] — Orvanel").arg(name) : QStringLiteral("Orvanel"));
  setWindowModified(active && active->isDirty.value());
  setWindowFilePath(active ? active->sourceFileURL.value().value_or(QString()) : QString());
  saveItem_->setEnabled(active && DocumentFiles::canSave(*active));
  for (QAction* item : documentItems_) item->setEnabled(active != nullptr);
  for (QAction* item : tabItems_) item->setEnabled(appState_.windowState.documents.value().size() > 1);
}

void MainWindow::closeEvent(QCloseEvent* event) {
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
