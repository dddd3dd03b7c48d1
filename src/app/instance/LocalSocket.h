// Sockets between processes of one user. Any thread.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace orvanel {

/// Owns a file descriptor.
class SocketDescriptor {
 public:
  SocketDescriptor() = default;
  explicit SocketDescriptor(int number) : number_(number) {}
  ~SocketDescriptor();
  SocketDescriptor(SocketDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  SocketDescriptor& operator=(SocketDescriptor&& other) noexcept;

  [[nodiscard]] int number() const { return number_; }
  [[nodiscard]] bool isValid() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

// None of these sockets ever blocks.
/// A socket that listens at a path where nothing stands.
[[nodiscard]] SocketDescriptor listenAt(const std::string& path);
[[nodiscard]] SocketDescriptor connectTo(const std::string& path);
/// The next connection, if one waits.
[[nodiscard]] SocketDescriptor acceptFrom(const SocketDescriptor& listener);

/// Whether the process at the other end belongs to this user.
[[nodiscard]] bool isOwnUser(const SocketDescriptor& connection);

}  // namespace orvanel
