// Sockets between processes of one user. Any thread.
#pragma once

#include <string>

#include "io/files/Descriptor.h"

namespace orvanel {

// None of these sockets ever blocks.
/// A socket that listens at a path where nothing stands.
[[nodiscard]] SocketDescriptor listenAt(const std::string& path);
[[nodiscard]] SocketDescriptor connectTo(const std::string& path);
/// The next connection, if one waits.
[[nodiscard]] SocketDescriptor acceptFrom(const SocketDescriptor& listener);

/// Whether the process at the other end belongs to this user.
[[nodiscard]] bool isOwnUser(const SocketDescriptor& connection);

}  // namespace orvanel
