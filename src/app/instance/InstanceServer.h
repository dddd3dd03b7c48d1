// Serves the processes that hand over their files. Trusts no more of a message than its sender's user. Owned
// by the application object; main thread only.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "app/instance/InstanceHandover.h"
#include "app/instance/OpenRequest.h"

namespace orvanel {

class InstanceServer : public QObject {
  Q_OBJECT

 public:
  /// Senders served at a time; further ones wait.
  static constexpr std::size_t mostSenders = 16;
  /// How long a sender may take for its message.
  static constexpr std::chrono::seconds senderPatience{5};

  explicit InstanceServer(std::unique_ptr<InstanceClaim> claim);
  ~InstanceServer() override;

  /// Whether requests are taken now; otherwise senders are told to open their own window.
  std::function<bool()> mayOpen;
  /// Called once for each request, after its sender has been told that it is taken.
  std::function<void(const OpenRequest&)> open;

 private:
  class Sender;

  void admitSenders();
  void senderReady(Sender& sender);
  void senderDone(Sender& sender);

  std::unique_ptr<InstanceClaim> claim_;
  QSocketNotifier arrivals_;
  std::vector<std::unique_ptr<Sender>> senders_;
};

}  // namespace orvanel
