// The two ends of a start of the program: either the start becomes the running instance, or it hands its
// files to that one. Needs no application object, so that a start that hands over costs next to nothing.
#pragma once

#include <chrono>
#include <memory>

#include "app/instance/InstanceAddress.h"
#include "app/instance/LocalSocket.h"
#include "app/instance/OpenRequest.h"

namespace orvanel {

/// The right to be found at an address, held until the process ends, however that comes about.
class InstanceClaim {
 public:
  /// Nothing if another process holds it. Others can connect from now on, and wait until they are served.
  [[nodiscard]] static std::unique_ptr<InstanceClaim> take(const InstanceAddress& address);
  ~InstanceClaim();
  InstanceClaim(const InstanceClaim&) = delete;
  InstanceClaim& operator=(const InstanceClaim&) = delete;

  [[nodiscard]] const Descriptor& listener() const { return listener_; }

 private:
  InstanceClaim(std::string socketPath, Descriptor lock, Descriptor listener);

  std::string socketPath_;
  Descriptor lock_;
  Descriptor listener_;
};

/// How long a start waits for a program that may be hanging, before it opens a window of its own.
inline constexpr std::chrono::milliseconds handoverPatience{2500};

/// Sends the request to the process at the address. False unless that has taken it.
[[nodiscard]] bool handOver(const InstanceAddress& address, const OpenRequest& request,
                            std::chrono::milliseconds patience = handoverPatience);

/// What the process at the address answers when it takes a request.
inline constexpr char requestTaken = '+';

}  // namespace orvanel
