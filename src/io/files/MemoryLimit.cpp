#include "io/files/MemoryLimit.h"

#include <unistd.h>

#include <atomic>

#include "raster/TileMemory.h"

namespace orvanel {
namespace {

std::uint64_t limitOfMachine() {
  static const auto physical =
      static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  return physical / 4 * 3;
}

std::atomic<std::uint64_t>& limit() {
  static std::atomic<std::uint64_t> bytes{limitOfMachine()};
  return bytes;
}

}  // namespace

bool pixelsFitInMemory(std::uint64_t additionalBytes) {
  const std::uint64_t used = tileMemory::bytesInUse();
  const std::uint64_t allowed = limit().load();
  return used <= allowed && additionalBytes <= allowed - used;
}

ScopedMemoryLimit::ScopedMemoryLimit(std::uint64_t additionalBytes) {
  limit() = tileMemory::bytesInUse() + additionalBytes;
}

ScopedMemoryLimit::~ScopedMemoryLimit() {
  limit() = limitOfMachine();
}

}  // namespace orvanel
