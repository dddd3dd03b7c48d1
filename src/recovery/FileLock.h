// Locks on files that belong to an open file, and so go with the process, however that ends. Any thread.
#pragma once

#include <string>
#include <tl/expected.hpp>

#include "io/files/Descriptor.h"

namespace orvanel {

enum class LockWait { none, forOthers };
/// Locks the open file against everybody else, in this process as well. False if somebody has the lock, or
/// the file system has no locks.
[[nodiscard]] bool lockFile(int descriptor, LockWait wait);
/// Why a file can't be locked now.
struct NotLocked {
  /// The system's number for what keeps the file from being opened; 0 if it is missing, just removed, no
  /// regular file, or locked by somebody.
  int error = 0;
};
/// Opens the regular file and locks it.
[[nodiscard]] tl::expected<Descriptor, NotLocked> openLocked(const std::string& path);

}  // namespace orvanel
