// Which file, in which state: tells whether it is still the file that was read or written. Plain values, any
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvanel {

/// Changes whenever the file's bytes or its inode do. Times are in nanoseconds since 1970.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified = 0;
  std::int64_t changed = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;

  /// Whether the file's contents are most likely the same: size and time of the last writing. Other values
  /// change with its name and its permissions, and some file systems make them up anew.
  [[nodiscard]] bool isSameVersionAs(const FileIdentity& other) const {
    return size == other.size && modified == other.modified;
  }

  /// Empty if there is no such file, or it isn't a regular one.
  [[nodiscard]] static std::optional<FileIdentity> of(const std::string& path);
  [[nodiscard]] static std::optional<FileIdentity> of(int descriptor);
};

}  // namespace orvanel
