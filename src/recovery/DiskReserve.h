// Room on the disk that journals leave to the user's files: a save must not fail because recovery data has
// taken the rest. Any thread.
#pragma once

#include <cstdint>

namespace orvanel {

/// The smaller of these two stays free.
inline constexpr std::uint64_t largestReserve = std::uint64_t{1} << 30U;
inline constexpr std::uint64_t reservedPercent = 5;

/// Whether the reserve stays if so many bytes more are written to the disk on which the open file stands.
[[nodiscard]] bool leavesReserve(int file, std::int64_t bytes);

}  // namespace orvanel
