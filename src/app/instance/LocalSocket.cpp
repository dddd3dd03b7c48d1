#include "app/instance/LocalSocket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <optional>

namespace orvanel {

namespace {

constexpr int socketKind = SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC;
/// Starts that may wait while the program is busy.
constexpr int longestQueue = 64;

/// Nothing for a path that an address can't hold.
std::optional<sockaddr_un> addressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

}  // namespace

Descriptor listenAt(const std::string& path) {
  const auto address = addressOf(path);
  Descriptor listener(::socket(AF_UNIX, socketKind, 0));
  if (!address || !listener.isOpen()) return {};
  const auto* where = reinterpret_cast<const sockaddr*>(&*address);
  constexpr mode_t ownerOnly = 0600;
  const bool listens = ::bind(listener.number(), where, sizeof *address) == 0 &&
                       ::chmod(path.c_str(), ownerOnly) == 0 &&
                       ::listen(listener.number(), longestQueue) == 0;
  return listens ? std::move(listener) : Descriptor();
}

Descriptor connectTo(const std::string& path) {
  const auto address = addressOf(path);
  Descriptor connection(::socket(AF_UNIX, socketKind, 0));
  if (!address || !connection.isOpen()) return {};
  const auto* where = reinterpret_cast<const sockaddr*>(&*address);
  return ::connect(connection.number(), where, sizeof *address) == 0 ? std::move(connection) : Descriptor();
}

Descriptor acceptFrom(const Descriptor& listener) {
  return Descriptor(::accept4(listener.number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
}

bool isOwnUser(const Descriptor& connection) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(connection.number(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
         peer.uid == ::geteuid();
}

}  // namespace orvanel
