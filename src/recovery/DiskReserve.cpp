#include "recovery/DiskReserve.h"

#include <algorithm>

#include "io/files/FileOperations.h"

namespace orvanel {

bool leavesReserve(int file, std::int64_t bytes) {
  DiskSpace space;
  // A file system that can't tell has no known end.
  if (FileOperations::current().measureSpace(file, space) != 0 || space.total == 0) return true;
  const std::uint64_t reserve = std::min(space.total / 100 * reservedPercent, largestReserve);
  return space.free >= reserve + static_cast<std::uint64_t>(bytes);
}

}  // namespace orvanel
