// Locks on files that belong to an open file, and so go with the process, however that ends. Any thread.
#pragma once

#include <string>

#include "io/files/Descriptor.h"

namespace orvanel {

enum class LockWait { none, forOthers };
/// Locks the open file against everybody else, in this process as well. False if somebody has the lock, or
/// the file system has no locks.
[[nodiscard]] bool lockFile(int descriptor, LockWait wait);
/// Opens the regular file and locks it; nothing if it is missing, locked by somebody, or just removed.
[[nodiscard]] Descriptor openLocked(const std::string& path);

}  // namespace orvanel
