// What a save shares with the old file is believed by its place on the disk; everything else is read back.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fiemap.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <algorithm>
#include <string>
#include <vector>

#include "io/document/ResavingFixture.h"
#include "io/document/SaveSnapshot.h"
#include "io/document/SavedFile.h"

namespace orvanel {
namespace {

using testing::CountingDisk;
using testing::ResavingTest;

ino_t inodeOf(int file) {
  struct stat status {};
  EXPECT_EQ(::fstat(file, &status), 0);
  return status.st_ino;
}

/// Writes into a file whatever it was opened for.
void spoil(int file, std::int64_t offset) {
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  const int writable = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(writable, 0);
  EXPECT_EQ(::pwrite(writable, "spoilt", 6, offset), 6);
  ::close(writable);
}

/// What a disk tells of the places of shared ranges.
enum class Map { same, elsewhere, partlyElsewhere, uncertain, unshared, missing };

/// A disk whose file system shares blocks; here they are copied, and the map is made up.
class SharingDisk final : public CountingDisk {
 public:
  explicit SharingDisk(Map map) : map_(map) {}

  std::int64_t shared = 0;
  /// Whether the first range that is shared comes out otherwise.
  bool spoilsShared = false;
  /// Whether what is written comes out otherwise.
  bool spoilsWritten = false;

  int shareRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                 std::size_t count) override {
    if (!copyInstead(from, fromOffset, to, toOffset, count)) return -1;
    if (spoilsShared && shared == 0) spoil(to, toOffset + 1000);
    shared += static_cast<std::int64_t>(count);
    target_ = inodeOf(to);
    pieces_.push_back({static_cast<std::uint64_t>(toOffset), base + static_cast<std::uint64_t>(fromOffset),
                       count, FIEMAP_EXTENT_SHARED});
    return 0;
  }

  ssize_t writeAt(int file, const void* bytes, std::size_t count, std::int64_t offset) override {
    const ssize_t result = CountingDisk::writeAt(file, bytes, count, offset);
    if (spoilsWritten && count > 10'000) spoil(file, offset + 5000);
    return result;
  }

  int mapExtents(int file, std::uint64_t offset, std::span<FileExtent> extents) override {
    if (map_ == Map::missing) {
      errno = EOPNOTSUPP;
      return -1;
    }
    const bool isTarget = inodeOf(file) == target_;
    const std::vector<FileExtent> all =
        isTarget ? targetMap()
                 : std::vector<FileExtent>{{0, base, std::uint64_t{1} << 40U, FIEMAP_EXTENT_SHARED}};
    std::size_t count = 0;
    for (const FileExtent& extent : all) {
      if (extent.offset >= offset && count < extents.size()) extents[count++] = extent;
    }
    return static_cast<int>(count);
  }

 private:
  static constexpr std::uint64_t base = std::uint64_t{1} << 41U;

  [[nodiscard]] std::vector<FileExtent> targetMap() const {
    std::vector<FileExtent> extents;
    for (FileExtent piece : pieces_) {
      if (map_ == Map::elsewhere) piece.physical += base;
      if (map_ == Map::uncertain) piece.flags |= FIEMAP_EXTENT_ENCODED;
      if (map_ == Map::unshared) piece.flags = 0;
      if (map_ == Map::partlyElsewhere) {
        // As if the first block had been written anew.
        constexpr std::uint64_t block = 4096;
        extents.push_back({piece.offset, piece.physical + base, block, 0});
        piece = {piece.offset + block, piece.physical + block, piece.length - block, piece.flags};
      }
      extents.push_back(piece);
    }
    return extents;
  }

  Map map_;
  ino_t target_ = 0;
  std::vector<FileExtent> pieces_;
};

class SharedSaveTest : public ResavingTest {
 protected:
  bool saveOn(FileOperations& disk) {
    const ScopedFileOperations scope(disk);
    return DocumentIO::saveSynchronously(document_, path(), MetalContext::shared()).has_value();
  }
  /// In the pixels of a layer.
  std::int64_t placeOfAChunk() const {
    const auto saved = std::dynamic_pointer_cast<const SavedFile>(document_->fileMemory());
    const auto surface = saved->surfaces.find(layerEntryPath(uuidText(layer(2)->id)).toStdString());
    return static_cast<std::int64_t>(surface->second.chunks.front().offset) + 1000;
  }
  QString differenceOfFile() const {
    const auto loaded = DocumentIO::loadSynchronously(path(), MetalContext::shared());
    return loaded ? testing::firstDifference(*document_, **loaded) : loaded.error().message;
  }
};

TEST_F(SharedSaveTest, whatStandsWhereItStoodIsNotReadBack) {
  save(path());
  edit(1, 10, 10);
  SharingDisk disk(Map::same);
  // Nothing but reading it could tell.
  disk.spoilsShared = true;
  EXPECT_TRUE(saveOn(disk));
  EXPECT_GT(disk.shared, 3'000'000);
  EXPECT_LT(disk.written, 2'000'000);
  EXPECT_NE(differenceOfFile(), QString());
}

TEST_F(SharedSaveTest, whatWasWrittenIsReadBack) {
  save(path());
  const QByteArray old = testing::contentsOf(path());
  edit(1, 10, 10);
  SharingDisk disk(Map::same);
  disk.spoilsWritten = true;
  EXPECT_FALSE(saveOn(disk));
  EXPECT_GT(disk.shared, 3'000'000);
  EXPECT_EQ(testing::contentsOf(path()), old);
  EXPECT_EQ(testing::filesIn(directory_.path()), QStringList{QStringLiteral("layers.tessel")});
}

class DoubtfulMapTest : public SharedSaveTest, public ::testing::WithParamInterface<Map> {};

TEST_P(DoubtfulMapTest, whatMayStandElsewhereIsReadBack) {
  save(path());
  edit(1, 10, 10);
  SharingDisk whole(GetParam());
  EXPECT_TRUE(saveOn(whole));
  EXPECT_LT(whole.written, 2'000'000) << "it is believed once it has been read";
  edit(1, 400, 300);
  SharingDisk disk(GetParam());
  disk.spoilsShared = true;
  EXPECT_TRUE(saveOn(disk));
  EXPECT_GT(disk.shared, 3'000'000);
  EXPECT_GT(disk.written, 4'000'000) << "everything is made anew";
  EXPECT_EQ(differenceOfFile(), QString());
}

INSTANTIATE_TEST_SUITE_P(Maps, DoubtfulMapTest,
                         ::testing::Values(Map::elsewhere, Map::partlyElsewhere, Map::uncertain,
                                           Map::unshared, Map::missing));

TEST_F(SharedSaveTest, aFileThatWasWrittenUnderItsOldTimeIsReadBack) {
  save(path());
  struct stat before {};
  const QByteArray name = QFile::encodeName(path());
  ASSERT_EQ(::stat(name.constData(), &before), 0);
  const int file = ::open(name.constData(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(file, 0);
  spoil(file, placeOfAChunk());
  ::close(file);
  // The clock of a file system may be coarse.
  struct stat after = before;
  while (after.st_ctim.tv_sec == before.st_ctim.tv_sec && after.st_ctim.tv_nsec == before.st_ctim.tv_nsec) {
    const timespec times[] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, name.constData(), times, 0), 0);
    ASSERT_EQ(::stat(name.constData(), &after), 0);
  }
  SharingDisk disk(Map::same);
  EXPECT_TRUE(saveOn(disk));
  EXPECT_GT(disk.shared, 3'000'000);
  EXPECT_GT(disk.written, 4'000'000) << "everything is made anew";
  EXPECT_EQ(differenceOfFile(), QString());
}

/// The file system that temporary files stand on, if it shares blocks.
class RealSharing : public CountingDisk {
 public:
  std::int64_t shared = 0;

  int shareRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                 std::size_t count) override {
    const int result = system_.shareRange(from, fromOffset, to, toOffset, count);
    if (result == 0) shared += static_cast<std::int64_t>(count);
    if (result == 0 && place_ == 0) place_ = toOffset + 1000;
    return result;
  }

 protected:
  /// In the first range that was shared; 0 if there is none.
  std::int64_t place_ = 0;

 private:
  FileOperations system_;
};

/// What this process has asked files for.
std::int64_t bytesRead() {
  QFile file(QStringLiteral("/proc/self/io"));
  if (!file.open(QIODevice::ReadOnly)) return 0;
  return file.readLine().trimmed().split(' ').back().toLongLong();
}

TEST_F(SharedSaveTest, onlyWhatWasWrittenIsReadFromTheDisk) {
  save(path());
  edit(1, 10, 10);
  static_cast<void>(document_->composite());
  RealSharing disk;
  const std::int64_t before = bytesRead();
  EXPECT_TRUE(saveOn(disk));
  const std::int64_t read = bytesRead() - before;
  if (disk.shared == 0) GTEST_SKIP() << "This file system shares no blocks.";
  EXPECT_GT(disk.shared, 3'000'000);
  // The archive's records are read as well, and its directory is looked for at the end.
  EXPECT_LT(read, disk.written + 500'000);
  EXPECT_EQ(differenceOfFile(), QString());
}

TEST_F(SharedSaveTest, whatAnotherProgramWritesIntoASharedRangeIsFound) {
  save(path());
  edit(1, 10, 10);
  class Spoiling final : public RealSharing {
    int sync(int file) override {
      if (place_ > 0) spoil(file, place_);
      place_ = -1;
      return FileOperations::sync(file);
    }
  } disk;
  EXPECT_TRUE(saveOn(disk));
  if (disk.shared == 0) GTEST_SKIP() << "This file system shares no blocks.";
  EXPECT_GT(disk.written, 4'000'000) << "everything is made anew";
  EXPECT_EQ(differenceOfFile(), QString());
}

}  // namespace
}  // namespace orvanel
