#include "app/instance/InstanceServer.h"

#include <sys/socket.h>

#include <QTimer>
#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace orvanel {

/// A connection, and what has come over it.
class InstanceServer::Sender {
 public:
  enum class Progress { waiting, complete, failed };

  Sender(Descriptor connection, InstanceServer& server)
      : connection_(std::move(connection)), readable_(connection_.number(), QSocketNotifier::Read) {
    connect(&readable_, &QSocketNotifier::activated, &server, [&server, this] { server.senderReady(*this); });
    connect(&patience_, &QTimer::timeout, &server, [&server, this] { server.senderDone(*this); });
    patience_.setSingleShot(true);
    patience_.start(senderPatience);
  }

  /// Reads what is there. The message is complete when the sender has nothing more to say.
  Progress read() {
    std::array<char, 65536> buffer;
    while (message_.size() <= OpenRequest::maximumBytes) {
      const ssize_t count = ::recv(connection_.number(), buffer.data(), buffer.size(), 0);
      if (count == 0) return Progress::complete;
      if (count > 0) {
        message_.append(buffer.data(), count);
      } else if (errno != EINTR) {
        return errno == EAGAIN ? Progress::waiting : Progress::failed;
      }
    }
    return Progress::failed;
  }
  [[nodiscard]] const QByteArray& message() const { return message_; }

  /// Nothing more is heard from it.
  void rest() {
    readable_.setEnabled(false);
    patience_.stop();
  }
  /// False if the sender hasn't waited for the answer, and so has helped itself.
  [[nodiscard]] bool answer() const {
    return ::send(connection_.number(), &requestTaken, 1, MSG_NOSIGNAL) == 1;
  }

 private:
  Descriptor connection_;
  QSocketNotifier readable_;
  QTimer patience_;
  QByteArray message_;
};

InstanceServer::InstanceServer(std::unique_ptr<InstanceClaim> claim)
    : claim_(std::move(claim)), arrivals_(claim_->listener().number(), QSocketNotifier::Read) {
  connect(&arrivals_, &QSocketNotifier::activated, this, [this] { admitSenders(); });
}

InstanceServer::~InstanceServer() = default;

void InstanceServer::admitSenders() {
  while (senders_.size() < mostSenders) {
    Descriptor connection = acceptFrom(claim_->listener());
    if (!connection.isOpen()) break;
    if (isOwnUser(connection)) senders_.push_back(std::make_unique<Sender>(std::move(connection), *this));
  }
  arrivals_.setEnabled(senders_.size() < mostSenders);
}

void InstanceServer::senderReady(Sender& sender) {
  const Sender::Progress progress = sender.read();
  if (progress == Sender::Progress::waiting) return;
  std::optional<OpenRequest> request;
  if (progress == Sender::Progress::complete) request = OpenRequest::decode(sender.message());
  const bool isTaken = request && mayOpen() && sender.answer();
  senderDone(sender);
  if (isTaken) open(*request);
}

void InstanceServer::senderDone(Sender& sender) {
  const auto found = std::find_if(senders_.begin(), senders_.end(),
                                  [&sender](const auto& candidate) { return candidate.get() == &sender; });
  sender.rest();
  // Its own notifier or timer is what has called.
  QMetaObject::invokeMethod(
      this, [ended = std::shared_ptr<Sender>(std::move(*found))] {}, Qt::QueuedConnection);
  senders_.erase(found);
  arrivals_.setEnabled(true);
}

}  // namespace orvanel
