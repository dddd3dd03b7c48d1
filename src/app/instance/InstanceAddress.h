// Where the running program of this user and this screen can be found: a socket in the session's private
// folder, and a lock that tells whether somebody listens there. Plain values, any thread.
#pragma once

#include <optional>
#include <string>

namespace orvanel {

struct InstanceAddress {
  std::string socket;
  std::string lock;

  /// Nothing where the session has no folder that only this user can enter; every start is then one of its
  /// own.
  [[nodiscard]] static std::optional<InstanceAddress> ofSession();
};

}  // namespace orvanel
