#include "io/files/SharedExtents.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fiemap.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <algorithm>
#include <cerrno>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "io/TestBytes.h"
#include "io/files/Descriptor.h"

namespace orvanel {
namespace {

using Extents = std::vector<FileExtent>;

constexpr std::uint32_t shared = FIEMAP_EXTENT_SHARED;
constexpr int oneFile = 1;
constexpr int otherFile = 2;

/// Tells of the files what it is told to; -1 in the place of an answer otherwise.
class MappedDisk final : public FileOperations {
 public:
  std::map<int, Extents> maps;

  int mapExtents(int file, std::uint64_t offset, std::span<FileExtent> extents) override {
    const auto found = maps.find(file);
    if (found == maps.end()) {
      errno = EOPNOTSUPP;
      return -1;
    }
    std::size_t count = 0;
    for (const FileExtent& extent : found->second) {
      if (isRepeating || (extent.offset + extent.length > offset && count < extents.size()))
        extents[count++] = extent;
    }
    return static_cast<int>(count);
  }

  /// Whether it answers the same wherever it is asked to begin.
  bool isRepeating = false;
};

bool areSame(const Extents& one, const Extents& other, std::uint64_t oneOffset, std::uint64_t otherOffset,
             std::uint64_t length) {
  MappedDisk disk;
  disk.maps = {{oneFile, one}, {otherFile, other}};
  const ScopedFileOperations scope(disk);
  return SharedExtents::between(oneFile, otherFile).areSame(oneOffset, otherOffset, length);
}

TEST(SharedExtentsTest, theSameAddressesAreTheSameBlocks) {
  const Extents one{{0, 500'000, 8192, shared}, {8192, 900'000, 4096, shared | FIEMAP_EXTENT_LAST}};
  // Cut in another way, and with something before and behind them.
  const Extents other{{0, 20'000, 4096, 0},
                      {4096, 500'000, 4096, shared | FIEMAP_EXTENT_MERGED},
                      {8192, 504'096, 4096, shared},
                      {12'288, 900'000, 8192, shared | FIEMAP_EXTENT_LAST}};
  EXPECT_TRUE(areSame(one, other, 0, 4096, 12'288));
  EXPECT_TRUE(areSame(one, other, 5000, 9096, 100));
  EXPECT_FALSE(areSame(one, other, 0, 4096, 12'289)) << "one ends before that";
  EXPECT_FALSE(areSame(one, other, 0, 0, 4096));
  EXPECT_FALSE(areSame(one, other, 4096, 4096, 4096));
}

TEST(SharedExtentsTest, oneByteThatStandsElsewhereMakesADifference) {
  const Extents one{{0, 500'000, 12'288, shared | FIEMAP_EXTENT_LAST}};
  const Extents moved{{0, 500'000, 8192, shared}, {8192, 600'000, 4096, shared | FIEMAP_EXTENT_LAST}};
  EXPECT_TRUE(areSame(one, moved, 0, 0, 8192));
  EXPECT_FALSE(areSame(one, moved, 0, 0, 8193));
}

TEST(SharedExtentsTest, holesAreNotShared) {
  const Extents one{{0, 500'000, 4096, shared}, {8192, 508'192, 4096, shared | FIEMAP_EXTENT_LAST}};
  EXPECT_TRUE(areSame(one, one, 8192, 8192, 4096));
  EXPECT_FALSE(areSame(one, one, 0, 0, 12'288));
}

TEST(SharedExtentsTest, addressesThatAreNotThoseOfTheBytesCountForNothing) {
  const Extents certain{{0, 500'000, 4096, shared | FIEMAP_EXTENT_LAST}};
  for (const std::uint32_t flag :
       {FIEMAP_EXTENT_UNKNOWN, FIEMAP_EXTENT_DELALLOC, FIEMAP_EXTENT_ENCODED, FIEMAP_EXTENT_DATA_ENCRYPTED,
        FIEMAP_EXTENT_NOT_ALIGNED, FIEMAP_EXTENT_DATA_INLINE, FIEMAP_EXTENT_DATA_TAIL,
        FIEMAP_EXTENT_UNWRITTEN, 1 << 20}) {
    const Extents unsure{{0, 500'000, 4096, shared | FIEMAP_EXTENT_LAST | flag}};
    EXPECT_FALSE(areSame(certain, unsure, 0, 0, 4096)) << flag;
    EXPECT_FALSE(areSame(unsure, certain, 0, 0, 4096)) << flag;
    EXPECT_FALSE(areSame(unsure, unsure, 0, 0, 4096)) << flag;
  }
}

TEST(SharedExtentsTest, blocksThatNobodySharesAreNotShared) {
  const Extents one{{0, 500'000, 4096, shared | FIEMAP_EXTENT_LAST}};
  const Extents alone{{0, 500'000, 4096, FIEMAP_EXTENT_LAST}};
  EXPECT_FALSE(areSame(one, alone, 0, 0, 4096));
}

TEST(SharedExtentsTest, aMapThatCantBeHadCountsForNothing) {
  MappedDisk disk;
  disk.maps = {{oneFile, {{0, 500'000, 4096, shared | FIEMAP_EXTENT_LAST}}}};
  const ScopedFileOperations scope(disk);
  EXPECT_TRUE(SharedExtents::between(oneFile, oneFile).areSame(0, 0, 4096));
  EXPECT_FALSE(SharedExtents::between(oneFile, otherFile).areSame(0, 0, 4096));
  EXPECT_FALSE(SharedExtents::between(otherFile, oneFile).areSame(0, 0, 4096));
}

TEST(SharedExtentsTest, aMapThatContradictsItselfCountsForNothing) {
  const FileExtent first{0, 500'000, 4096, shared};
  for (const Extents& map :
       {Extents{first, {2048, 700'000, 4096, shared}}, Extents{first, {4096, 0, 0, shared}},
        Extents{first, {4096, 0, UINT64_MAX, shared}}}) {
    EXPECT_FALSE(areSame(map, map, 0, 0, 4096));
  }
  MappedDisk disk;
  disk.maps = {{oneFile, {first}}};
  disk.isRepeating = true;
  const ScopedFileOperations scope(disk);
  EXPECT_FALSE(SharedExtents::between(oneFile, oneFile).areSame(0, 0, 4096));
}

TEST(SharedExtentsTest, mapsOfManyExtentsAreReadToTheirEnd) {
  Extents many;
  constexpr std::uint64_t count = 3000;
  for (std::uint64_t i = 0; i < count; ++i) many.push_back({i * 4096, (count - i) * 65'536, 4096, shared});
  EXPECT_TRUE(areSame(many, many, 0, 0, count * 4096));
}

/// The file system that temporary files stand on, if it shares blocks.
class RealExtentsTest : public ::testing::Test {
 protected:
  Descriptor create(const char* name) const {
    const std::string path = directory_.filePath(QString::fromLatin1(name)).toStdString();
    return Descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600));
  }

  QTemporaryDir directory_;
};

TEST_F(RealExtentsTest, whatIsWrittenIntoASharedRangeIsNoLongerShared) {
  const auto bytes = testing::noise(1 << 20, 3);
  const Descriptor one = create("one");
  const Descriptor other = create("other");
  FileOperations disk;
  ASSERT_EQ(disk.writeAt(one.number(), bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  ASSERT_EQ(disk.writeAt(other.number(), bytes.data(), 4096, 0), 4096);
  if (disk.shareRange(one.number(), 0, other.number(), 4096, bytes.size()) != 0)
    GTEST_SKIP() << "This file system shares no blocks.";
  ASSERT_EQ(disk.sync(other.number()), 0);
  const auto before = SharedExtents::between(other.number(), one.number());
  EXPECT_TRUE(before.areSame(4096, 0, bytes.size()));
  EXPECT_FALSE(before.areSame(0, 0, 4096));
  EXPECT_FALSE(before.areSame(4096, 4096, 4096));

  ASSERT_EQ(disk.writeAt(other.number(), bytes.data(), 10, 500'000), 10);
  const auto after = SharedExtents::between(other.number(), one.number());
  EXPECT_FALSE(after.areSame(4096, 0, bytes.size()));
  EXPECT_FALSE(after.areSame(500'000, 495'904, 10));
  EXPECT_TRUE(after.areSame(4096, 0, 400'000));
  EXPECT_TRUE(after.areSame(604'096, 600'000, 400'000));
}

}  // namespace
}  // namespace orvanel
