#include "raster/MemoryBudget.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <mutex>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "raster/TileMemory.h"

namespace orvanel {
namespace {

constexpr std::uint64_t unlimited = MemorySources::unlimited;

std::uint64_t difference(std::uint64_t limit, std::uint64_t used) {
  return limit > used ? limit - used : 0;
}

/// The number at the start of a file. Nothing if the file doesn't exist or holds "max".
std::optional<std::uint64_t> numberIn(const std::string& path) {
  std::ifstream file(path);
  std::uint64_t number = 0;
  if (file >> number) return number;
  return std::nullopt;
}

/// The number that follows `word` at the start of a line.
std::optional<std::uint64_t> numberAfter(const std::string& path, std::string_view word) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream parts(line);
    std::string name;
    std::uint64_t number = 0;
    if (parts >> name && name == word && parts >> number) return number;
  }
  return std::nullopt;
}

std::uint64_t availableOnMachine(const MemorySources& sources) {
  const auto kibibytes = numberAfter(sources.processFolder + "/meminfo", "MemAvailable:");
  return kibibytes ? *kibibytes * 1024 : unlimited;
}

/// File names, which differ between the two versions of control groups.
struct GroupFiles {
  const char* limit;
  const char* use;
  const char* reclaimable;
};
constexpr GroupFiles filesOfVersion2{"/memory.max", "/memory.current", "inactive_file"};
constexpr GroupFiles filesOfVersion1{"/memory.limit_in_bytes", "/memory.usage_in_bytes",
                                     "total_inactive_file"};

/// What one group may still use. Cached file contents count as used, but are reclaimed on demand.
std::uint64_t leftInGroup(const std::string& folder, const GroupFiles& files) {
  const auto limit = numberIn(folder + files.limit);
  const auto use = numberIn(folder + files.use);
  if (!limit || !use) return unlimited;
  const std::uint64_t cached = numberAfter(folder + "/memory.stat", files.reclaimable).value_or(0);
  return difference(*limit, difference(*use, cached));
}

/// What a group may still use within its own limit and those of all its ancestors.
std::uint64_t leftInGroups(const std::string& root, std::string path, const GroupFiles& files) {
  std::uint64_t least = unlimited;
  while (true) {
    least = std::min(least, leftInGroup(root + path, files));
    const std::size_t parent = path.rfind('/');
    if (parent == std::string::npos) return least;
    path.resize(parent);
  }
}

std::uint64_t leftInControlGroups(const MemorySources& sources) {
  std::uint64_t least = unlimited;
  std::ifstream groups(sources.processFolder + "/self/cgroup");
  // Each line is "number:controllers:path"; version 2 names no controllers.
  for (std::string line; std::getline(groups, line);) {
    const std::size_t first = line.find(':');
    const std::size_t second = first == std::string::npos ? first : line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    const std::string path = line.substr(second + 1);
    if (controllers == ",,") {
      least = std::min(least, leftInGroups(sources.controlGroupFolder, path, filesOfVersion2));
    } else if (controllers.find(",memory,") != std::string::npos) {
      least = std::min(least, leftInGroups(sources.controlGroupFolder + "/memory", path, filesOfVersion1));
    }
  }
  return least;
}

std::uint64_t leftToProcess(const MemorySources& sources) {
  const std::string status = sources.processFolder + "/self/status";
  const auto left = [&](std::uint64_t limit, std::string_view use) {
    return limit == unlimited ? unlimited : difference(limit, numberAfter(status, use).value_or(0) * 1024);
  };
  return std::min(left(sources.addressSpaceLimit, "VmSize:"), left(sources.dataLimit, "VmData:"));
}

std::uint64_t limitOf(__rlimit_resource resource) {
  rlimit limit{};
  if (getrlimit(resource, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return unlimited;
  return limit.rlim_cur;
}

/// A short-lived estimate of the memory available for pixels.
class Estimate {
 public:
  bool holds(std::uint64_t bytes) {
    const std::lock_guard lock(mutex_);
    const auto now = std::chrono::steady_clock::now();
    constexpr auto lifetime = std::chrono::milliseconds(50);
    if (now - takenAt_ > lifetime || bytes > left()) {
      takenAt_ = now;
      const std::uint64_t free = availableMemory();
      const std::uint64_t spare = tileMemory::spareBytes();
      available_ = difference(free + std::min(spare, unlimited - free), reserve);
      inUse_ = tileMemory::bytesInUse();
    }
    return bytes <= left();
  }

 private:
  /// Left to libraries, threads and everything else that isn't pixels.
  static constexpr std::uint64_t reserve = std::uint64_t{128} << 20U;

  [[nodiscard]] std::uint64_t left() const {
    return difference(available_, difference(tileMemory::bytesInUse(), inUse_));
  }

  std::mutex mutex_;
  std::chrono::steady_clock::time_point takenAt_;
  std::uint64_t available_ = 0;
  std::uint64_t inUse_ = 0;
};

/// The largest number of pixel bytes while a test limits them.
std::atomic<std::uint64_t>& scopedLimit() {
  static std::atomic<std::uint64_t> bytes{unlimited};
  return bytes;
}

std::vector<SpareMemory*>& spareMemories() {
  static std::vector<SpareMemory*> spares;
  return spares;
}

}  // namespace

MemorySources MemorySources::ofThisProcess() {
  MemorySources sources;
  sources.addressSpaceLimit = limitOf(RLIMIT_AS);
  sources.dataLimit = limitOf(RLIMIT_DATA);
  return sources;
}

std::uint64_t availableMemory(const MemorySources& sources) {
  return std::min({availableOnMachine(sources), leftInControlGroups(sources), leftToProcess(sources)});
}

bool pixelsFitInMemory(std::uint64_t additionalBytes) {
  if (const std::uint64_t limit = scopedLimit().load(); limit != unlimited) {
    return additionalBytes <= difference(limit, tileMemory::bytesInUse());
  }
  static Estimate estimate;
  return estimate.holds(additionalBytes);
}

SpareMemory::SpareMemory(std::function<void()> letGo) : letGo_(std::move(letGo)) {
  spareMemories().push_back(this);
}

SpareMemory::~SpareMemory() {
  std::erase(spareMemories(), this);
}

bool pixelsFitWithoutSpares(std::uint64_t additionalBytes) {
  if (pixelsFitInMemory(additionalBytes)) return true;
  for (const SpareMemory* spare : spareMemories()) spare->letGo_();
  tileMemory::giveBackAll();
#ifdef __GLIBC__
  // What was freed in small pieces still belongs to the process.
  malloc_trim(0);
#endif
  return pixelsFitInMemory(additionalBytes);
}

ScopedMemoryLimit::ScopedMemoryLimit(std::uint64_t additionalBytes) {
  scopedLimit() = tileMemory::bytesInUse() + additionalBytes;
}

ScopedMemoryLimit::~ScopedMemoryLimit() {
  scopedLimit() = unlimited;
}

}  // namespace orvanel
