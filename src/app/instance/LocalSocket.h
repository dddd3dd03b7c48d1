// Sockets between processes of one user. Any thread.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace orvanel {

/// Owns a file descriptor.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept;

  [[nodiscard]] int number() const { return number_; }
  [[nodiscard]] bool isValid() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

// None of these sockets ever blocks.
/// A socket that listens at a path where nothing stands.
[[nodiscard]] Descriptor listenAt(const std::string& path);
[[nodiscard]] Descriptor connectTo(const std::string& path);
/// The next connection, if one waits.
[[nodiscard]] Descriptor acceptFrom(const Descriptor& listener);

/// Whether the process at the other end belongs to this user.
[[nodiscard]] bool isOwnUser(const Descriptor& connection);

}  // namespace orvanel
