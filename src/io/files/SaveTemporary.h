// The temporary files that saves write beside their destinations. A killed save leaves its own behind. Any
// thread.
#pragma once

#include <filesystem>
#include <string>

namespace orvanel {

/// A name that no other file has.
[[nodiscard]] std::string newTemporaryName();

/// Removes this user's temporary files in the folder that have not been written to for a day. Locks would
/// tell at once which of them are abandoned, but network file systems don't share them, or let nobody read
/// what is locked.
void removeAbandonedTemporaries(const std::filesystem::path& folder);

}  // namespace orvanel
