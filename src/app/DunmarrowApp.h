// The application object: owns the window and its services, and passes requests from the system to the
// delegate. Main thread only.
#pragma once

#include <QApplication>
#include <memory>

#include "app/AppDelegate.h"
#include "app/DocumentRecovery.h"
#include "app/MainWindow.h"
#include "app/dialogs/WindowDialogs.h"
#include "app/instance/InstanceServer.h"

class QSessionManager;

namespace orvanel {

class DunmarrowApp : public QApplication {
  Q_OBJECT

 public:
  DunmarrowApp(int& argc, char** argv);
  ~DunmarrowApp() override;

  /// Shows the window and runs until the user quits. Returns the exit status. With a claim, files of later
  /// starts open in this window.
  int run(std::unique_ptr<InstanceClaim> claim);
  /// The user wants to quit: ends the program unless an unsaved document is kept.
  void requestTermination();

 protected:
  bool event(QEvent* event) override;

 private:
  /// Ends the program if the question about unsaved documents, asked by `ask`, allows it.
  void terminateIfAllowed(const std::function<TerminationReply()>& ask);
  void commitSession(QSessionManager& session);
  void beginRecovery();
  void serve(std::unique_ptr<InstanceClaim> claim);
  void openFromLaterStart(const OpenRequest& request);

  WindowDialogs dialogs_;
  std::unique_ptr<DocumentFiles> files_;
  /// Null if the user has turned recovery off.
  std::unique_ptr<DocumentRecovery> recovery_;
  std::unique_ptr<AppDelegate> delegate_;
  std::unique_ptr<MainWindow> window_;
  /// Null if another process is the one that later starts find.
  std::unique_ptr<InstanceServer> instance_;
  bool isTerminating_ = false;
};

}  // namespace orvanel
