#include "raster/TileMemory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <thread>
#include <vector>

namespace orvanel {
namespace {

constexpr std::size_t blockBytes = std::size_t{128} << 10U;
constexpr std::size_t mebibyte = std::size_t{1} << 20U;

std::vector<std::byte*> writtenBlocks(std::size_t bytes) {
  std::vector<std::byte*> blocks(bytes / blockBytes);
  for (std::byte*& block : blocks) {
    block = tileMemory::allocate(blockBytes);
    std::fill_n(block, blockBytes, std::byte{7});
  }
  return blocks;
}

void release(const std::vector<std::byte*>& blocks) {
  for (std::byte* block : blocks) tileMemory::release(block, blockBytes);
}

/// The number of resident bytes of these blocks.
std::size_t residentBytes(const std::vector<std::byte*>& blocks) {
  constexpr std::size_t pageBytes = 4096;
  std::size_t resident = 0;
  for (std::byte* block : blocks) {
    std::array<unsigned char, blockBytes / pageBytes> pages{};
    // Blocks of returned slabs are no longer mapped.
    if (mincore(block, blockBytes, pages.data()) != 0) continue;
    const auto present = [](unsigned char page) { return (page & 1U) != 0; };
    resident += static_cast<std::size_t>(std::count_if(pages.begin(), pages.end(), present)) * pageBytes;
  }
  return resident;
}

TEST(TileMemory, GivesBackWhatItHandedOut) {
  const std::size_t before = tileMemory::bytesInUse();
  std::vector<std::byte*> blocks;
  for (int i = 0; i < 1000; ++i) {
    blocks.push_back(tileMemory::allocate(blockBytes));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back()) % 64, 0U);
    blocks.back()[0] = blocks.back()[blockBytes - 1] = static_cast<std::byte>(i);
  }
  for (int i = 0; i < 1000; ++i)
    EXPECT_EQ(blocks[static_cast<std::size_t>(i)][blockBytes - 1], static_cast<std::byte>(i));
  release(blocks);
  EXPECT_EQ(tileMemory::bytesInUse(), before);
}

TEST(TileMemory, MemoryReleasedByOneEditIsReusedByTheNext) {
  const auto kept = writtenBlocks(32 * mebibyte);
  const auto given = writtenBlocks(32 * mebibyte);
  release(given);
  tileMemory::trim();
  EXPECT_EQ(residentBytes(given), 32 * mebibyte);
  auto next = writtenBlocks(32 * mebibyte);
  EXPECT_TRUE(std::is_permutation(next.begin(), next.end(), given.begin()));
  release(next);
  release(kept);
}

TEST(TileMemory, TheReserveIsNoLargerThanWhatIsInUse) {
  const auto kept = writtenBlocks(16 * mebibyte);
  const auto given = writtenBlocks(64 * mebibyte);
  release(given);
  EXPECT_LE(residentBytes(given), 16 * mebibyte);
  release(kept);
  tileMemory::trim();
  EXPECT_LE(residentBytes(given) + residentBytes(kept), 8 * mebibyte);
}

TEST(TileMemory, TheReserveGrowsByWhatAnEditMissed) {
  tileMemory::giveBackReserve();
  tileMemory::trim();
  const auto first = writtenBlocks(64 * mebibyte);
  tileMemory::trim();
  // Never written to, yet backed by memory.
  std::vector<std::byte*> next(64 * mebibyte / blockBytes);
  for (std::byte*& block : next) block = tileMemory::allocate(blockBytes);
  EXPECT_GE(residentBytes(next), 60 * mebibyte);
  release(next);
  release(first);
}

TEST(TileMemory, TheReserveGrowsByWholeSlabs) {
  tileMemory::giveBackReserve();
  tileMemory::trim();
  constexpr std::size_t smallBlock = std::size_t{64} << 10U;
  std::vector<std::byte*> blocks(270);  // not a multiple of a slab
  for (std::byte*& block : blocks) block = tileMemory::allocate(smallBlock);
  tileMemory::trim();
  EXPECT_GT(tileMemory::spareBytes(), 0U);
  EXPECT_LE(tileMemory::spareBytes(), tileMemory::bytesInUse());
  for (std::byte* block : blocks) tileMemory::release(block, smallBlock);
}

TEST(TileMemory, AFullAddressSpaceLeavesTheReserveEmpty) {
  const auto trimInFullAddressSpace = [] {
    tileMemory::giveBackReserve();
    tileMemory::trim();
    const auto blocks = writtenBlocks(64 * mebibyte);
    std::ifstream sizes("/proc/self/statm");
    rlim_t pages = 0;
    sizes >> pages;
    const rlim_t bytes = pages * static_cast<rlim_t>(getpagesize());
    const rlimit limit{bytes + mebibyte, bytes + mebibyte};
    setrlimit(RLIMIT_AS, &limit);
    tileMemory::trim();
    std::_Exit(blocks.empty() || tileMemory::spareBytes() > 0 ? 1 : 0);
  };
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(trimInFullAddressSpace(), ::testing::ExitedWithCode(0), "");
}

TEST(TileMemory, AnIdleReserveIsReturnedToTheSystem) {
  tileMemory::giveBackReserve();
  const tileMemory::ScopedIdleTime idle(std::chrono::milliseconds(1));
  const auto kept = writtenBlocks(16 * mebibyte);
  const auto given = writtenBlocks(16 * mebibyte);
  release(given);
  while (residentBytes(given) > 0) std::this_thread::yield();
  release(kept);
}

TEST(TileMemory, FreeBlocksInUsedSlabsReturnTheirMemory) {
  const auto blocks = writtenBlocks(8 * mebibyte);
  std::vector<std::byte*> used;
  std::vector<std::byte*> freed;
  for (std::size_t i = 0; i < blocks.size(); ++i) (i % 16 == 0 ? used : freed).push_back(blocks[i]);
  release(freed);
  tileMemory::trim();
  EXPECT_EQ(residentBytes(freed), 0U);
  EXPECT_EQ(residentBytes(used), used.size() * blockBytes);
  release(used);
}

}  // namespace
}  // namespace orvanel
