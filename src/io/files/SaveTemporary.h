// The temporary files that saves write, locked for as long as the process that writes them lives, so that
// those of killed processes can be told and removed. Any thread.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

#include "io/files/Descriptor.h"

namespace orvanel {

struct SaveTemporary {
  std::string path;
  /// For writing.
  int file = -1;
  /// Keeps the lock when the file is closed.
  Descriptor lock;

  /// Nothing if it can't be created; `errno` tells why.
  [[nodiscard]] static std::optional<SaveTemporary> create(const std::filesystem::path& folder, mode_t mode);
};

/// Removes this user's temporary files in the folder that no living process writes.
void removeAbandonedTemporaries(const std::filesystem::path& folder);

}  // namespace orvanel
