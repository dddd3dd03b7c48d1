#include "raster/MemoryBudget.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include "raster/TileMemory.h"

namespace orvanel {
namespace {

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20U;

/// A system of files that say what a test wants.
class MemoryBudget : public ::testing::Test {
 protected:
  MemoryBudget() {
    write("proc/meminfo", "MemTotal: 8192000 kB\nMemFree: 1024 kB\nMemAvailable: 4096000 kB\n");
    write("proc/self/status", "Name:\tprogram\nVmSize:\t  1048576 kB\nVmData:\t   524288 kB\n");
    write("proc/self/cgroup", "0::/\n");
    sources.processFolder = folder_ / "proc";
    sources.controlGroupFolder = folder_ / "groups";
  }
  ~MemoryBudget() override { std::filesystem::remove_all(folder_); }

  void write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name) << text;
  }

  MemorySources sources;

 private:
  std::filesystem::path folder_ =
      std::filesystem::temp_directory_path() / ("memory_budget_" + std::to_string(::getpid()));
};

TEST_F(MemoryBudget, isWhatTheMachineHasAvailable) {
  EXPECT_EQ(availableMemory(sources), 4000 * mebibyte);
}

TEST_F(MemoryBudget, isLimitedByTheControlGroup) {
  write("proc/self/cgroup", "0::/user/session\n");
  write("groups/user/session/memory.max", std::to_string(1000 * mebibyte) + "\n");
  write("groups/user/session/memory.current", std::to_string(700 * mebibyte) + "\n");
  EXPECT_EQ(availableMemory(sources), 300 * mebibyte);
  write("groups/user/session/memory.stat",
        "active_file 5\ninactive_file " + std::to_string(200 * mebibyte) + "\n");
  EXPECT_EQ(availableMemory(sources), 500 * mebibyte) << "cached files make room";
  write("groups/user/session/memory.max", "max\n");
  EXPECT_EQ(availableMemory(sources), 4000 * mebibyte);
}

TEST_F(MemoryBudget, isLimitedByParentGroups) {
  write("proc/self/cgroup", "0::/user/session\n");
  write("groups/user/session/memory.max", "max\n");
  write("groups/user/session/memory.current", "0\n");
  write("groups/user/memory.max", std::to_string(100 * mebibyte) + "\n");
  write("groups/user/memory.current", std::to_string(99 * mebibyte) + "\n");
  EXPECT_EQ(availableMemory(sources), mebibyte);
  write("groups/memory.max", std::to_string(100 * mebibyte) + "\n");
  write("groups/memory.current", std::to_string(120 * mebibyte) + "\n");
  EXPECT_EQ(availableMemory(sources), 0U);
}

TEST_F(MemoryBudget, knowsTheFirstVersionOfControlGroups) {
  write("proc/self/cgroup", "12:pids:/a\n4:cpu,memory:/box\n");
  write("groups/memory/box/memory.limit_in_bytes", std::to_string(64 * mebibyte) + "\n");
  write("groups/memory/box/memory.usage_in_bytes", std::to_string(60 * mebibyte) + "\n");
  write("groups/memory/box/memory.stat", "total_inactive_file " + std::to_string(8 * mebibyte) + "\n");
  EXPECT_EQ(availableMemory(sources), 12 * mebibyte);
}

TEST_F(MemoryBudget, isLimitedByTheProcessItself) {
  sources.addressSpaceLimit = 1500 * mebibyte;
  EXPECT_EQ(availableMemory(sources), 476 * mebibyte);
  sources.dataLimit = 600 * mebibyte;
  EXPECT_EQ(availableMemory(sources), 88 * mebibyte);
  sources.addressSpaceLimit = 1000 * mebibyte;
  EXPECT_EQ(availableMemory(sources), 0U);
}

TEST_F(MemoryBudget, missingSourcesDoNotLimit) {
  sources.processFolder += "/missing";
  EXPECT_EQ(availableMemory(sources), MemorySources::unlimited);
}

TEST_F(MemoryBudget, thisProcessCanHaveSomeMemory) {
  EXPECT_GT(availableMemory(), 0U);
  EXPECT_LT(availableMemory(), MemorySources::unlimited);
}

TEST_F(MemoryBudget, pixelsFitUpToTheLimit) {
  const ScopedMemoryLimit limit(10 * mebibyte);
  EXPECT_TRUE(pixelsFitInMemory(10 * mebibyte));
  EXPECT_FALSE(pixelsFitInMemory(10 * mebibyte + 1));
}

TEST_F(MemoryBudget, spareMemoryIsLetGoOfBeforePixelsAreRefused) {
  constexpr std::size_t blockBytes = std::size_t{64} << 10U;
  std::byte* block = tileMemory::allocate(blockBytes);
  int asked = 0;
  std::optional<SpareMemory> spare(std::in_place, [&] {
    ++asked;
    if (block != nullptr) tileMemory::release(std::exchange(block, nullptr), blockBytes);
  });
  const ScopedMemoryLimit limit(10 * mebibyte);
  EXPECT_TRUE(pixelsFitWithoutSpares(10 * mebibyte));
  EXPECT_EQ(asked, 0) << "it was not needed";
  EXPECT_FALSE(pixelsFitInMemory(10 * mebibyte + blockBytes));
  EXPECT_NE(block, nullptr);
  EXPECT_TRUE(pixelsFitWithoutSpares(10 * mebibyte + blockBytes));
  EXPECT_EQ(asked, 1);
  EXPECT_FALSE(pixelsFitWithoutSpares(10 * mebibyte + blockBytes + 1));
  EXPECT_EQ(asked, 2);
  EXPECT_EQ(tileMemory::spareBytes(), 0U) << "nor is a reserve kept";
  spare.reset();
  EXPECT_FALSE(pixelsFitWithoutSpares(11 * mebibyte));
  EXPECT_EQ(asked, 2);
}

}  // namespace
}  // namespace orvanel
