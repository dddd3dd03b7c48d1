// Saving a document again writes what changed and copies the rest from its file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>
#include <zip.h>

#include <chrono>
#include <limits>
#include <thread>

#include "io/document/ResavingFixture.h"
#include "io/document/SavedFile.h"
#include "io/files/FaultyDisk.h"

namespace orvanel {
namespace {

using testing::CountingDisk;
using testing::ResavingTest;

/// A disk on which copied ranges come out as zeros.
class ForgetfulDisk final : public CountingDisk {
 public:
  ssize_t copyRange(int /*from*/, std::int64_t /*fromOffset*/, int to, std::int64_t toOffset,
                    std::size_t count) override {
    copied += static_cast<std::int64_t>(count);
    const std::vector<char> zeros(count);
    return CountingDisk::writeAt(to, zeros.data(), count, toOffset);
  }
};

/// A disk whose file system lets files share whole blocks; here they are copied.
class SharingDisk final : public CountingDisk {
 public:
  std::int64_t shared = 0;

  int shareRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                 std::size_t count) override {
    constexpr std::size_t block = 4096;
    EXPECT_EQ(fromOffset % block, 0U);
    EXPECT_EQ(toOffset % block, 0U);
    EXPECT_EQ(count % block, 0U);
    shared += static_cast<std::int64_t>(count);
    return copyInstead(from, fromOffset, to, toOffset, count) ? 0 : -1;
  }
};

TEST_F(ResavingTest, theFirstSaveWritesEverything) {
  CountingDisk disk;
  saveCounting(disk);
  EXPECT_EQ(disk.copied, 0);
  EXPECT_GT(disk.written, 4'000'000);
}

TEST_F(ResavingTest, aNewNameCopiesAllPixels) {
  CountingDisk first;
  saveCounting(first);
  document_->rename(layer(0)->id, QStringLiteral("Renamed"));
  CountingDisk disk;
  saveCounting(disk);
  EXPECT_GT(disk.copied, first.written * 95 / 100);
  EXPECT_LT(disk.written, 100'000);
}

TEST_F(ResavingTest, anEditWritesItsChunksAlone) {
  CountingDisk first;
  saveCounting(first);
  edit(1, 10, 10);
  CountingDisk disk;
  saveCounting(disk);
  EXPECT_GT(disk.copied, first.written * 6 / 10);
  // One chunk of a MiB at most, the preview and the archive's records.
  EXPECT_LT(disk.written, 2'000'000);
}

TEST_F(ResavingTest, theFirstSaveAfterOpeningCopiesToo) {
  save(path());
  const auto loaded = DocumentIO::loadSynchronously(path(), MetalContext::shared());
  ASSERT_TRUE(loaded.has_value());
  document_ = *loaded;
  static_cast<void>(document_->composite());
  edit(2, 500, 300);
  CountingDisk disk;
  saveCounting(disk);
  EXPECT_GT(disk.copied, 3'000'000);
  EXPECT_LT(disk.written, 2'000'000);
}

TEST_F(ResavingTest, anotherDestinationIsCopiedFromTheDocumentsFile) {
  save(path());
  CountingDisk disk;
  {
    const ScopedFileOperations counting(disk);
    save(directory_.filePath(QStringLiteral("copy.tessel")));
  }
  EXPECT_GT(disk.copied, 4'000'000);
  EXPECT_LT(disk.written, 100'000);
}

TEST_F(ResavingTest, manySavesAfterEachOtherStayWhole) {
  for (int round = 0; round < 8; ++round) {
    save(path());
    edit(round % 3, 120 * round, 100 * round);
    if (round == 4) document_->undo();
    if (round == 5) document_->addLayerMask(layer(0));
    if (round == 6) document_->removeNode(layer(2)->id);
    if (round == 6) document_->addLayer(QStringLiteral("New"));
  }
  save(path());
}

TEST_F(ResavingTest, anotherColorModeOrCanvasWritesEverything) {
  save(path());
  document_->changeColorMode(ColorMode::rgb8);
  CountingDisk disk;
  saveCounting(disk);
  EXPECT_LT(disk.copied, 1'000'000);  // the mask stays
}

/// What may happen to the file behind the document's back.
class ChangedBehindTest : public ResavingTest, public ::testing::WithParamInterface<int> {};

TEST_P(ChangedBehindTest, everythingIsMadeAnew) {
  save(path());
  switch (GetParam()) {
    case 0: {  // removed
      ASSERT_TRUE(QFile::remove(path()));
      break;
    }
    case 1: {  // replaced by an equal file
      const QByteArray bytes = testing::contentsOf(path());
      ASSERT_TRUE(QFile::remove(path()));
      QFile file(path());
      ASSERT_TRUE(file.open(QIODevice::WriteOnly));
      file.write(bytes);
      break;
    }
    default: {  // overwritten in place, under its old time
      struct stat before {};
      ASSERT_EQ(::stat(path().toLocal8Bit().constData(), &before), 0);
      QFile file(path());
      ASSERT_TRUE(file.open(QIODevice::ReadWrite));
      file.seek(100'000);
      file.write(QByteArray(5000, 'x'));
      file.close();
      const timespec times[] = {before.st_atim, before.st_mtim};
      ASSERT_EQ(::utimensat(AT_FDCWD, path().toLocal8Bit().constData(), times, 0), 0);
      break;
    }
  }
  CountingDisk disk;
  saveCounting(disk);
  // Only the sums tell what was written under the old time; what was copied by then is thrown away.
  const bool showsInTimes = GetParam() < 2;
  if (showsInTimes) {
    EXPECT_EQ(disk.copied, 0);
  }
  EXPECT_GT(disk.written, 4'000'000);
}

INSTANTIATE_TEST_SUITE_P(Ways, ChangedBehindTest, ::testing::Range(0, 3));

TEST_F(ResavingTest, bytesThatComeOutOtherwiseAreMadeAnew) {
  save(path());
  ForgetfulDisk disk;
  saveCounting(disk);
  EXPECT_GT(disk.copied, 1'000'000);
  EXPECT_GT(disk.written, 4'000'000);
}

TEST_F(ResavingTest, aDiskThatIsFullAtAnyCallLeavesTheOldFile) {
  save(path());
  edit(0, 200, 20);
  testing::FailingDisk none(std::numeric_limits<int>::max());
  {
    const ScopedFileOperations counting(none);
    save(path());
  }
  const QByteArray old = testing::contentsOf(path());
  edit(0, 300, 20);
  ASSERT_GT(none.calls, 10);
  // The last call brings the folder to the disk, when the new file stands in its place already.
  for (int failing = 0; failing < none.calls - 1; ++failing) {
    testing::FailingDisk disk(failing);
    const ScopedFileOperations full(disk);
    ASSERT_FALSE(DocumentIO::saveSynchronously(document_, path(), MetalContext::shared()).has_value())
        << failing;
    ASSERT_EQ(testing::contentsOf(path()), old) << failing;
    ASSERT_EQ(testing::filesIn(directory_.path()), QStringList{QStringLiteral("layers.tessel")});
  }
  save(path());
}

TEST_F(ResavingTest, whatAFileSystemSharesIsNeitherWrittenNorCopied) {
  SharingDisk first;
  saveCounting(first);
  edit(0, 200, 20);
  SharingDisk disk;
  saveCounting(disk);
  EXPECT_GT(disk.shared, first.written * 70 / 100);
  EXPECT_LT(disk.written + disk.copied, first.written * 30 / 100);
}

TEST_F(ResavingTest, aDiskThatFillsUpLeavesTheOldFile) {
  save(path());
  const QByteArray old = testing::contentsOf(path());
  edit(0, 200, 20);
  for (std::int64_t capacity = 0; capacity < old.size(); capacity += old.size() / 23) {
    testing::FullDisk disk(capacity);
    const ScopedFileOperations full(disk);
    ASSERT_FALSE(DocumentIO::saveSynchronously(document_, path(), MetalContext::shared()).has_value());
    ASSERT_EQ(testing::contentsOf(path()), old);
    ASSERT_EQ(testing::filesIn(directory_.path()), QStringList{QStringLiteral("layers.tessel")});
  }
  save(path());
}

TEST_F(ResavingTest, otherReadersFindTheArchiveConsistent) {
  save(path());
  edit(1, 700, 600);
  save(path());
  int error = 0;
  zip_t* archive = zip_open(QFile::encodeName(path()).constData(), ZIP_RDONLY | ZIP_CHECKCONS, &error);
  ASSERT_NE(archive, nullptr);
  EXPECT_EQ(zip_get_num_entries(archive, 0), 6);
  zip_discard(archive);
}

TEST_F(ResavingTest, chunksLieOnTheGridThatFileSystemsShare) {
  save(path());
  const auto saved = std::dynamic_pointer_cast<const SavedFile>(document_->fileMemory());
  ASSERT_NE(saved, nullptr);
  for (const auto& [entry, surface] : saved->surfaces) {
    if (entry == "preview.png") continue;
    for (const StoredChunk& chunk : surface.chunks) {
      EXPECT_EQ(chunk.offset % 4096, 0U) << entry;
      EXPECT_EQ(chunk.storedSize % 4096, 0U) << entry;
    }
  }
}

TEST_F(ResavingTest, thePreviewIsMadeAnewOnlyForAnotherPicture) {
  save(path());
  const auto saved = [this] {
    return std::dynamic_pointer_cast<const SavedFile>(document_->fileMemory())->surfaces.at("preview.png");
  };
  const auto previewOf = [&] { return saved().tiles; };
  const auto previewBytes = [&] { return static_cast<std::int64_t>(saved().chunks.front().storedSize); };
  const auto first = previewOf();
  document_->rename(layer(0)->id, QStringLiteral("Other"));
  CountingDisk disk;
  saveCounting(disk);
  EXPECT_EQ(previewOf(), first);
  EXPECT_LT(disk.written, previewBytes()) << "it is copied";
  edit(2, 0, 0);
  static_cast<void>(document_->composite());
  save(path());
  EXPECT_NE(previewOf(), first);
}

TEST_F(ResavingTest, copiesWhatStandsWhereALinkOnAnotherDeviceLeads) {
  const QTemporaryDir elsewhere(QStringLiteral("/dev/shm/orvanel-XXXXXX"));
  const auto deviceOf = [](const QTemporaryDir& folder) {
    struct stat found {};
    return ::stat(QFile::encodeName(folder.path()).constData(), &found) == 0 ? found.st_dev : 0;
  };
  if (!elsewhere.isValid() || deviceOf(elsewhere) == deviceOf(directory_)) GTEST_SKIP() << "no other device";
  save(path());
  const QString link = elsewhere.filePath(QStringLiteral("link.tessel"));
  ASSERT_TRUE(QFile::link(path(), link));
  document_->rename(layer(0)->id, QStringLiteral("Other"));
  CountingDisk disk;
  const ScopedFileOperations counting(disk);
  save(link);
  EXPECT_GT(disk.copied, 3'000'000);
}

TEST_F(ResavingTest, noticesWhatIsStoredInAMappingAfterLoading) {
  struct statfs system {};
  ASSERT_EQ(::statfs(QFile::encodeName(directory_.path()).constData(), &system), 0);
  if (system.f_type == TMPFS_MAGIC) GTEST_SKIP() << "a file system in memory has no pages to bring to a disk";
  save(path());
  const QByteArray name = QFile::encodeName(path());
  const int file = ::open(name.constData(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(file, 0);
  constexpr std::size_t mappedBytes = 4096;
  void* const mapping = ::mmap(nullptr, mappedBytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ASSERT_NE(mapping, MAP_FAILED);
  // The page waits for the disk from here on.
  auto* const bytes = static_cast<volatile char*>(mapping);
  bytes[0] = bytes[0];
  const auto loaded = DocumentIO::loadSynchronously(path(), MetalContext::shared());
  ASSERT_TRUE(loaded.has_value());
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  bytes[1000] = static_cast<char>(bytes[1000] + 1);
  const auto now = FileIdentity::of(file);
  ::munmap(mapping, mappedBytes);
  ::close(file);
  ASSERT_TRUE(now.has_value());
  const auto known = std::dynamic_pointer_cast<const SavedFile>((*loaded)->fileMemory());
  ASSERT_NE(known, nullptr);
  EXPECT_NE(*now, known->identity);
}

}  // namespace
}  // namespace orvanel
