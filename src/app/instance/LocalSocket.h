// Sockets between processes of one user. Any thread.
#pragma once

#include <string>

#include "io/files/Descriptor.h"

namespace orvanel {

// None of these sockets ever blocks.
/// A socket that listens at a path where nothing stands.
[[nodiscard]] Descriptor listenAt(const std::string& path);
[[nodiscard]] Descriptor connectTo(const std::string& path);
/// The next connection, if one waits.
[[nodiscard]] Descriptor acceptFrom(const Descriptor& listener);

/// Whether the process at the other end belongs to this user.
[[nodiscard]] bool isOwnUser(const Descriptor& connection);

}  // namespace orvanel
