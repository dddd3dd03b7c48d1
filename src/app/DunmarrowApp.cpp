#include "app/DunmarrowApp.h"

#include <QIcon>
#include <QSessionManager>
#include <chrono>
#include <utility>

#include "app/BackgroundWork.h"
#include "app/StartArguments.h"
#include "app/Translations.h"
#include "look/LightStyle.h"
#include "panels/bars/StatusBarPane.h"

namespace orvanel {

namespace {

/// How long background work may take to end after the user has quit.
constexpr std::chrono::seconds patienceAtEnd{2};
/// How long running saves may take when the session ends without asking anybody.
constexpr std::chrono::seconds patienceOfSession{3};

}  // namespace

DunmarrowApp::DunmarrowApp(int& argc, char** argv) : QApplication(argc, argv) {
  setOrganizationName(QStringLiteral("Fennimoor"));
  setApplicationName(QStringLiteral("Orvanel"));
  setDesktopFileName(QStringLiteral("com.fennimoor.orvanel"));
  setWindowIcon(QIcon(QStringLiteral(":/app/orvanel.svg")));
  setQuitOnLastWindowClosed(false);
  look::applyLightAppearance(*this);
  installTranslations(*this, StartArguments::of(arguments().mid(1)).translation);
  makeRoomForHangingReads();

  AppState& state = AppState::shared();
  files_ = std::make_unique<DocumentFiles>(state, dialogs_);
  delegate_ = std::make_unique<AppDelegate>(state, *files_, arguments().mid(1));
  connect(this, &QGuiApplication::commitDataRequest, this, &DunmarrowApp::commitSession,
          Qt::DirectConnection);
}

DunmarrowApp::~DunmarrowApp() = default;

int DunmarrowApp::run(std::unique_ptr<InstanceClaim> claim) {
  window_ =
      std::make_unique<MainWindow>(AppState::shared(), *files_, dialogs_, [this] { requestTermination(); });
  dialogs_.setWindow(window_.get());
  window_->show();
  QMetaObject::invokeMethod(
      this, [this] { delegate_->applicationDidFinishLaunching(); }, Qt::QueuedConnection);
  beginRecovery();
  serve(std::move(claim));
  const int status = exec();
  // From now on a start opens a window of its own.
  instance_.reset();
  window_->hide();
  files_->abandonReading();
  files_->settleWrites();
  // Whatever is still open is saved, or the user doesn't want to save it.
  if (recovery_ != nullptr) recovery_->closeAll();
  recovery_.reset();
  AppState::shared().userDefaults.synchronize();
  endBackgroundWork(status, patienceAtEnd);
  return status;
}

void DunmarrowApp::beginRecovery() {
  AppState& state = AppState::shared();
  const StartArguments start = StartArguments::of(arguments().mid(1));
  if (!state.userDefaults.keepsRecovery() || start.isUITesting) return;
  recovery_ = std::make_unique<DocumentRecovery>(state, *files_, dialogs_);
  StatusBarPane& statusBar = window_->contentView().statusBar();
  recovery_->onSuspended = [&statusBar](const QString& note) { statusBar.setStandingNote(note); };
  recovery_->onNote = [&statusBar](const QString& note) { statusBar.showNote(note); };
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (recovery_ != nullptr) recovery_->offerOrphans();
      },
      Qt::QueuedConnection);
}

void DunmarrowApp::serve(std::unique_ptr<InstanceClaim> claim) {
  if (claim == nullptr) return;
  instance_ = std::make_unique<InstanceServer>(std::move(claim));
  instance_->mayOpen = [this] { return !isTerminating_; };
  instance_->open = [this](const OpenRequest& request) { openFromLaterStart(request); };
}

void DunmarrowApp::openFromLaterStart(const OpenRequest& request) {
  // The platform takes the token from here when the window asks to be active.
  if (!request.activationToken.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", request.activationToken.toUtf8());
  window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
  window_->raise();
  window_->activateWindow();
  files_->open(request.files);
}

void DunmarrowApp::requestTermination() {
  terminateIfAllowed([this] { return delegate_->applicationShouldTerminate(); });
}

void DunmarrowApp::terminateIfAllowed(const std::function<TerminationReply()>& ask) {
  // Ignore a second request while the first is still asking about unsaved documents.
  if (isTerminating_) return;
  isTerminating_ = true;
  if (ask() == TerminationReply::now) {
    exit(0);
    return;
  }
  isTerminating_ = false;
}

bool DunmarrowApp::event(QEvent* event) {
  if (event->type() != QEvent::Quit) return QApplication::event(event);
  event->ignore();
  // So ends a session, too, that has asked before.
  terminateIfAllowed([this] { return delegate_->sessionEnds(); });
  return true;
}

void DunmarrowApp::commitSession(QSessionManager& session) {
  if (!session.allowsInteraction()) {
    // The session may end the program as soon as this returns.
    dialogs_.holdWarnings();
    const auto recordNow = [this] {
      if (recovery_ != nullptr) recovery_->recordNow();
    };
    delegate_->keepUnsavedWork(recordNow, patienceOfSession);
    dialogs_.releaseWarnings();
    return;
  }
  // A termination in progress is already asking about unsaved documents.
  if (std::exchange(isTerminating_, true)) {
    session.cancel();
    session.release();
    return;
  }
  if (delegate_->sessionShouldEnd() == TerminationReply::cancel) session.cancel();
  isTerminating_ = false;
  session.release();
}

}  // namespace orvanel
