#include "raster/TileMemory.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cassert>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "raster/FatalFault.h"
#include "raster/MemoryBudget.h"

namespace orvanel::tileMemory {
namespace {

constexpr std::size_t slabBytes = std::size_t{2} << 20U;
constexpr std::size_t smallestBlock = std::size_t{16} << 10U;
constexpr std::size_t sizeClasses = 5;  // 16, 32, 64, 128, 256 KiB
// The reserve keeps empty slabs for the next edit, which needs about as much memory as the last one released.
// Fresh memory has to be cleared by the system first, and that takes longer than most edits.
constexpr std::size_t fewestSpareBytes = std::size_t{8} << 20U;
constexpr std::size_t mostSpareBytes = std::size_t{4} << 30U;
constexpr std::size_t reserveShare = 16;  // of the available memory
constexpr std::size_t warmUpShare = 32;
constexpr std::chrono::seconds defaultIdleTime{30};

using Clock = std::chrono::steady_clock;

/// Maps a slab aligned to its own size, so that masking a block's address yields its slab. Null on failure.
std::byte* mapSlab() {
  void* raw = mmap(nullptr, 2 * slabBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (raw == MAP_FAILED) return nullptr;
  const auto address = reinterpret_cast<std::uintptr_t>(raw);
  const std::uintptr_t aligned = (address + slabBytes - 1) & ~(slabBytes - 1);
  if (aligned > address) munmap(raw, aligned - address);
  const std::uintptr_t end = address + 2 * slabBytes;
  if (end > aligned + slabBytes) {
    munmap(reinterpret_cast<void*>(aligned + slabBytes), end - aligned - slabBytes);
  }
  auto* slab = reinterpret_cast<std::byte*>(aligned);
  madvise(slab, slabBytes, MADV_HUGEPAGE);
  return slab;
}

/// The reserve: empty slabs backed by memory, for the next pool that needs one.
class SpareSlabs {
 public:
  /// Null when there is none.
  std::byte* take() {
    const std::lock_guard guard(mutex_);
    lastUse_ = Clock::now();
    if (slabs_.empty()) {
      ++missedSlabs_;
      return nullptr;
    }
    std::byte* slab = slabs_.back();
    slabs_.pop_back();
    return slab;
  }

  /// Takes the slab over. False when the reserve was full, and a slab was returned to the system.
  bool keep(std::byte* slab, std::size_t bytesInUse) {
    const std::lock_guard guard(mutex_);
    lastUse_ = Clock::now();
    slabs_.push_back(slab);
    const std::size_t before = slabs_.size();
    shrinkTo(mostSlabs(bytesInUse));
    armTimer();
    return slabs_.size() == before;
  }

  /// Limits the reserve to its share of the memory now available, and adds the slabs that were missing since
  /// the last call.
  void adjust(std::size_t bytesInUse) {
    const std::uint64_t available = availableMemory();
    std::size_t missing = 0;
    {
      const std::lock_guard guard(mutex_);
      limit_ = limitFor(available);
      const std::size_t most = mostSlabs(bytesInUse);
      shrinkTo(most);
      const std::uint64_t affordable = available / warmUpShare / slabBytes;
      const std::size_t wanted =
          std::min({std::exchange(missedSlabs_, 0), static_cast<std::size_t>(affordable), most});
      missing = wanted - std::min(wanted, slabs_.size());
    }
    for (; missing > 0; --missing) {
      std::byte* slab = warmSlab();
      if (slab == nullptr || !keep(slab, bytesInUse)) return;
    }
  }

  [[nodiscard]] std::size_t bytes() {
    const std::lock_guard guard(mutex_);
    return slabs_.size() * slabBytes;
  }

  void giveBack() {
    const std::lock_guard guard(mutex_);
    shrinkTo(0);
  }

  void setIdleTime(Clock::duration time) {
    const std::lock_guard guard(mutex_);
    idleTime_ = time;
    idleTimeChanged_.notify_all();
  }

 private:
  static std::size_t limitFor(std::uint64_t available) {
    return std::clamp<std::uint64_t>(available / reserveShare, fewestSpareBytes, mostSpareBytes);
  }

  /// A slab with memory behind every page; null when none can be mapped.
  static std::byte* warmSlab() {
    constexpr std::size_t pageBytes = 4096;
    std::byte* slab = mapSlab();
    if (slab == nullptr) return nullptr;
    for (std::size_t offset = 0; offset < slabBytes; offset += pageBytes) slab[offset] = std::byte{0};
    return slab;
  }

  [[nodiscard]] std::size_t mostSlabs(std::size_t bytesInUse) const {
    return std::clamp(bytesInUse, fewestSpareBytes, limit_) / slabBytes;
  }

  void shrinkTo(std::size_t slabs) {
    while (slabs_.size() > slabs) {
      munmap(slabs_.back(), slabBytes);
      slabs_.pop_back();
    }
  }

  /// Starts a thread that gives the reserve back once it has been idle for long enough. An empty reserve has
  /// no such thread.
  void armTimer() {
    if (slabs_.empty() || isTimerArmed_) return;
    try {
      std::thread([this] { giveBackWhenIdle(); }).detach();
      isTimerArmed_ = true;
    } catch (const std::system_error&) {
      // Without a thread the reserve stays; the next slab kept tries again.
    }
  }

  void giveBackWhenIdle() {
    std::unique_lock guard(mutex_);
    while (Clock::now() < lastUse_ + idleTime_) idleTimeChanged_.wait_until(guard, lastUse_ + idleTime_);
    shrinkTo(0);
    isTimerArmed_ = false;
  }

  std::mutex mutex_;
  std::vector<std::byte*> slabs_;
  std::size_t limit_ = limitFor(availableMemory());
  std::size_t missedSlabs_ = 0;
  Clock::time_point lastUse_{};
  Clock::duration idleTime_ = defaultIdleTime;
  std::condition_variable idleTimeChanged_;
  bool isTimerArmed_ = false;
};

/// Hands out blocks of one size. `open_` lists the slabs with a free block; a full slab is listed again when
/// one of its blocks is released.
class Pool {
 public:
  void setBlockBytes(std::size_t bytes) { blockBytes_ = bytes; }

  std::byte* allocate(SpareSlabs& spares) {
    const std::lock_guard guard(mutex_);
    if (open_.empty()) openSlab(spares);
    Slab& slab = slabs_.at(open_.back());
    const unsigned index = static_cast<unsigned>(std::countr_zero(slab.freeBlocks[slab.firstWord()]));
    const std::size_t word = slab.firstWord();
    slab.freeBlocks[word] &= ~(std::uint64_t{1} << index);
    std::byte* block = open_.back() + (word * 64 + index) * blockBytes_;
    if (++slab.used == blocksPerSlab()) open_.pop_back();
    return block;
  }

  /// Gives the memory of free blocks in used slabs back to the system. Locks for one slab at a time.
  void trim() {
    for (std::size_t place = 0;; ++place) {
      const std::lock_guard guard(mutex_);
      if (place >= open_.size()) return;
      Slab& slab = slabs_.at(open_[place]);
      for (std::size_t index = 0; index < blocksPerSlab(); ++index) {
        const std::uint64_t bit = std::uint64_t{1} << (index % 64);
        if ((slab.freeBlocks[index / 64] & bit) == 0 || (slab.coldBlocks[index / 64] & bit) != 0) continue;
        madvise(open_[place] + index * blockBytes_, blockBytes_, MADV_DONTNEED);
        slab.coldBlocks[index / 64] |= bit;
      }
    }
  }

  /// Frees the block. Returns its slab, now the caller's, if that was the last block in use; null otherwise.
  [[nodiscard]] std::byte* release(std::byte* block) {
    const std::lock_guard guard(mutex_);
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    auto* base = reinterpret_cast<std::byte*>(address & ~(slabBytes - 1));
    Slab& slab = slabs_.at(base);
    const std::size_t index = static_cast<std::size_t>(block - base) / blockBytes_;
    const std::uint64_t bit = std::uint64_t{1} << (index % 64);
    slab.freeBlocks[index / 64] |= bit;
    slab.coldBlocks[index / 64] &= ~bit;
    if (slab.used-- == blocksPerSlab()) open_.push_back(base);
    if (slab.used != 0) return nullptr;
    std::erase(open_, base);
    slabs_.erase(base);
    return base;
  }

 private:
  struct Slab {
    std::array<std::uint64_t, 2> freeBlocks{};
    std::array<std::uint64_t, 2> coldBlocks{};  ///< free blocks without memory behind them
    std::size_t used = 0;
    [[nodiscard]] std::size_t firstWord() const { return freeBlocks[0] != 0 ? 0 : 1; }
  };

  [[nodiscard]] std::size_t blocksPerSlab() const { return slabBytes / blockBytes_; }

  void openSlab(SpareSlabs& spares) {
    Slab slab;
    const std::size_t count = blocksPerSlab();
    slab.freeBlocks[0] = count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
    slab.freeBlocks[1] = count >= 128 ? ~std::uint64_t{0} : 0;
    std::byte* base = spares.take();
    if (base == nullptr) {
      base = mapSlab();
      if (base == nullptr) fatalFault("Out of memory for pixels");
      slab.coldBlocks = slab.freeBlocks;
    }
    slabs_.emplace(base, slab);
    open_.push_back(base);
  }

  std::mutex mutex_;
  std::size_t blockBytes_ = 0;
  std::unordered_map<std::byte*, Slab> slabs_;
  std::vector<std::byte*> open_;
};

struct Arena {
  std::array<Pool, sizeClasses> pools;
  SpareSlabs spares;
  std::atomic<std::size_t> bytesInUse{0};
  std::atomic<int> surfacesAllowed{std::numeric_limits<int>::max()};
  std::atomic<int> surfacesRefused{0};

  Arena() {
    for (std::size_t i = 0; i < sizeClasses; ++i) pools[i].setBlockBytes(smallestBlock << i);
  }
  Pool& poolFor(std::size_t bytes) {
    assert(std::has_single_bit(bytes) && bytes >= smallestBlock &&
           bytes <= smallestBlock << (sizeClasses - 1));
    return pools[static_cast<std::size_t>(std::countr_zero(bytes) - std::countr_zero(smallestBlock))];
  }
};

// Never destroyed: background work may release tiles after main has returned.
Arena& arena() {
  static auto* instance = new Arena;
  return *instance;
}

}  // namespace

std::byte* allocate(std::size_t bytes) {
  std::byte* block = arena().poolFor(bytes).allocate(arena().spares);
  arena().bytesInUse.fetch_add(bytes, std::memory_order_relaxed);
  return block;
}

void release(std::byte* block, std::size_t bytes) noexcept {
  const std::size_t inUse = arena().bytesInUse.fetch_sub(bytes, std::memory_order_relaxed) - bytes;
  if (std::byte* emptied = arena().poolFor(bytes).release(block)) arena().spares.keep(emptied, inUse);
}

void trim() {
  for (Pool& pool : arena().pools) pool.trim();
  arena().spares.adjust(bytesInUse());
}

void giveBackReserve() {
  arena().spares.giveBack();
}

void giveBackAll() {
  for (Pool& pool : arena().pools) pool.trim();
  giveBackReserve();
}

std::size_t spareBytes() {
  return arena().spares.bytes();
}

std::size_t bytesInUse() noexcept {
  return arena().bytesInUse.load(std::memory_order_relaxed);
}

ScopedSurfaceFailure::ScopedSurfaceFailure(int surfacesAllowed, int surfacesRefused) {
  arena().surfacesRefused = surfacesRefused;
  arena().surfacesAllowed = surfacesAllowed;
}
ScopedSurfaceFailure::~ScopedSurfaceFailure() {
  arena().surfacesAllowed = std::numeric_limits<int>::max();
}

ScopedIdleTime::ScopedIdleTime(std::chrono::milliseconds time) {
  arena().spares.setIdleTime(time);
}
ScopedIdleTime::~ScopedIdleTime() {
  arena().spares.setIdleTime(defaultIdleTime);
}

bool admitSurface() noexcept {
  std::atomic<int>& allowed = arena().surfacesAllowed;
  if (allowed.load(std::memory_order_relaxed) == std::numeric_limits<int>::max()) return true;
  if (allowed.fetch_sub(1, std::memory_order_relaxed) > 0) return true;
  return arena().surfacesRefused.fetch_sub(1, std::memory_order_relaxed) <= 0;
}

}  // namespace orvanel::tileMemory
