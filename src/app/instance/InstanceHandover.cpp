#include "app/instance/InstanceHandover.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <cerrno>
#include <thread>
#include <utility>

namespace orvanel {

namespace {

/// Waits until the connection is ready for `events`.
bool waitFor(const Descriptor& connection, short events, const QDeadlineTimer& deadline) {
  pollfd watched{connection.number(), events, 0};
  while (true) {
    const int count = ::poll(&watched, 1, static_cast<int>(deadline.remainingTime()));
    if (count < 0 && errno == EINTR) continue;
    return count > 0;
  }
}

/// The process that holds the lock may not listen yet, or may be about to end.
Descriptor connectBefore(const QDeadlineTimer& deadline, const std::string& path) {
  constexpr std::chrono::milliseconds pause{20};
  while (true) {
    Descriptor connection = connectTo(path);
    if (connection.isOpen() || deadline.hasExpired()) return connection;
    std::this_thread::sleep_for(pause);
  }
}

bool sendAll(const Descriptor& connection, QByteArrayView bytes, const QDeadlineTimer& deadline) {
  while (!bytes.isEmpty()) {
    const ssize_t sent =
        ::send(connection.number(), bytes.data(), static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL);
    if (sent >= 0) {
      bytes = bytes.sliced(sent);
    } else if (errno == EAGAIN) {
      if (!waitFor(connection, POLLOUT, deadline)) return false;
    } else if (errno != EINTR) {
      return false;
    }
  }
  return ::shutdown(connection.number(), SHUT_WR) == 0;
}

}  // namespace

InstanceClaim::InstanceClaim(std::string socketPath, Descriptor lock, Descriptor listener)
    : socketPath_(std::move(socketPath)), lock_(std::move(lock)), listener_(std::move(listener)) {}

std::unique_ptr<InstanceClaim> InstanceClaim::take(const InstanceAddress& address) {
  constexpr mode_t ownerOnly = 0600;
  Descriptor lock(::open(address.lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, ownerOnly));
  if (!lock.isOpen() || ::flock(lock.number(), LOCK_EX | LOCK_NB) != 0) return nullptr;
  // Whoever made a socket that stands here has ended without removing it: the lock was free.
  ::unlink(address.socket.c_str());
  Descriptor listener = listenAt(address.socket);
  if (!listener.isOpen()) return nullptr;
  return std::unique_ptr<InstanceClaim>(
      new InstanceClaim(address.socket, std::move(lock), std::move(listener)));
}

InstanceClaim::~InstanceClaim() {
  // While the lock is still held, the path can't be another process's.
  ::unlink(socketPath_.c_str());
}

bool handOver(const InstanceAddress& address, const OpenRequest& request,
              std::chrono::milliseconds patience) {
  const QByteArray message = request.encoded();
  if (message.size() > OpenRequest::maximumBytes) return false;
  const QDeadlineTimer deadline(patience);
  const Descriptor connection = connectBefore(deadline, address.socket);
  if (!connection.isOpen() || !isOwnUser(connection)) return false;
  if (!sendAll(connection, message, deadline) || !waitFor(connection, POLLIN, deadline)) return false;
  char answer = 0;
  return ::recv(connection.number(), &answer, 1, 0) == 1 && answer == requestTaken;
}

}  // namespace orvanel
