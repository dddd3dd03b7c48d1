#include <algorithm>

#include "io/files/FaultyDisk.h"
#include "recovery/DiskReserve.h"
#include "recovery/JournalWriterFixture.h"
#include "tools/transform/LayerTransform.h"

namespace orvanel {
namespace {

using testing::captured;
using testing::changePixels;
using testing::firstDifference;
using testing::JournalWriterTest;
using testing::unsavedDocument;

TEST_F(JournalWriterTest, writesOnlyTilesThatHaveChanged) {
  const std::int64_t first = record().bytesWritten;
  document->setOpacity(document->activeLayer()->id, 0.25F);
  EXPECT_LT(record().bytesWritten, 4000) << "no tile";
  document->duplicateNode(document->activeLayer()->id);
  EXPECT_LT(record().bytesWritten, 4000) << "the copy shares all tiles";
  changePixels(*document);
  const std::int64_t changed = record().bytesWritten;
  EXPECT_GT(changed, 100'000);
  EXPECT_LT(changed, first / 2);
  document->undo();
  EXPECT_LT(record().bytesWritten, 4000) << "the tiles of before are still in the journal";
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalWriterTest, leavesToTheFileWhatStandsInIt) {
  saveAndFollow();
  EXPECT_LT(record().bytesWritten, 4000);
  changePixels(*document);
  record();
  EXPECT_TRUE(writer->isBaseIntact());
  const DocumentPtr back = readBack();
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(firstDifference(*document, *back), "");
  // The next save, and the next journal, know what the file holds.
  EXPECT_NE(back->fileMemory(), nullptr);
}

TEST_F(JournalWriterTest, storesWhatTheFileHasOnlyAPartOf) {
  // Cropping shares whole tiles, of which the file gets what is visible.
  document->resizeCanvas(200, 200, -1, -1);
  saveAndFollow();
  document->undo();
  record();
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalWriterTest, takesASharedTileFromWhereTheFileHasAllOfIt) {
  // Whichever of the two is met first in the file.
  for (const bool movesTheCopy : {true, false}) {
    follow(unsavedDocument());
    writer = std::make_unique<JournalWriter>(store().newJournal(), plenty);
    const QUuid original = document->activeLayer()->id;
    document->duplicateNode(original);
    if (!movesTheCopy) document->selectNode(original);
    const auto move = LayerTransform::begin(document, QStringLiteral("Move"));
    ASSERT_NE(move, nullptr);
    // A tile at the right edge then is one of those further left.
    move->translate(tileSide, 0);
    move->commit();
    saveAndFollow();
    document->setOpacity(original, 0.25F);
    record();
    EXPECT_EQ(firstDifference(*document, *readBack()), "") << movesTheCopy;
    discard();
  }
}

/// Another program replaces the file, as nearly all do it.
void replace(const QString& path, const QByteArray& bytes) {
  QFile::remove(path);
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_EQ(file.write(bytes), bytes.size());
}

TEST_F(JournalWriterTest, aLinkKeepsAFileThatIsReplacedOrRemoved) {
  for (const bool isReplaced : {true, false}) {
    const QString path = saveAndFollow();
    document->setDirty(true);
    record();
    EXPECT_TRUE(writer->dependsOnFile()) << "on what is written into it";
    EXPECT_FALSE(writer->needsCopying());
    isReplaced ? replace(path, "something else") : void(QFile::remove(path));
    EXPECT_TRUE(writer->isBaseIntact());
    document->setOpacity(document->activeLayer()->id, isReplaced ? 0.75F : 0.5F);
    EXPECT_LT(record().bytesWritten, 4000) << "nothing has gone";
    EXPECT_EQ(firstDifference(*document, *readBack()), "");
    writer = std::make_unique<JournalWriter>(store().newJournal(), plenty);
    discard();
    EXPECT_EQ(files(), QStringList());
    if (isReplaced) {
      EXPECT_EQ(bytesOf(path), "something else") << "nothing is written through the link";
    }
    capture->forgetAll();
  }
}

TEST_F(JournalWriterTest, aSaveCopiesFromTheFileInSpiteOfTheLink) {
  const QString path = saveAndFollow();
  record();
  EXPECT_EQ(files().size(), 2);
  const auto known = std::dynamic_pointer_cast<const SavedFile>(document->fileMemory());
  EXPECT_TRUE(known->open().has_value());
}

TEST_F(JournalWriterTest, noticesThatTheFileWasWrittenInto) {
  const QString path = saveAndFollow();
  record();
  put(path, "something else");
  EXPECT_FALSE(writer->isBaseIntact());
  EXPECT_GT(record().bytesWritten, 100'000);
  put(path, "and something else");
  EXPECT_TRUE(writer->isBaseIntact());
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

/// A disk that has no links to the user's files, as if these stood on another.
class OtherDisk : public FileOperations {
 public:
  int linkFile(const std::string& /*file*/, const std::string& /*to*/) override {
    errno = EXDEV;
    return -1;
  }
  ssize_t copyRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                    std::size_t count) override {
    if (copiesInKernel) return FileOperations::copyRange(from, fromOffset, to, toOffset, count);
    errno = EXDEV;
    return -1;
  }
  int measureSpace(int file, DiskSpace& space) override {
    if (room < 0) return FileOperations::measureSpace(file, space);
    space = {largestReserve + static_cast<std::uint64_t>(room), std::uint64_t{1} << 40U};
    return 0;
  }

  bool copiesInKernel = true;
  /// Beyond the reserve; negative for as much as there is.
  std::int64_t room = -1;
};

class JournalOfOtherDiskTest : public JournalWriterTest {
 protected:
  JournalOfOtherDiskTest() : scope(disk) {}

  void copyAll() {
    while (writer->needsCopying()) writer->copyPiece();
  }

  OtherDisk disk;
  ScopedFileOperations scope;
};

TEST_F(JournalOfOtherDiskTest, aCopyIsMadeAfterTheRecord) {
  for (const bool inKernel : {true, false}) {
    disk.copiesInKernel = inKernel;
    const QString path = saveAndFollow();
    document->setDirty(true);
    record();
    EXPECT_TRUE(writer->needsCopying());
    EXPECT_TRUE(writer->dependsOnFile());
    copyAll();
    EXPECT_FALSE(writer->dependsOnFile());
    EXPECT_EQ(files().size(), 2);
    put(path, "something else");
    document->setOpacity(document->activeLayer()->id, 0.75F);
    EXPECT_LT(record().bytesWritten, 4000);
    EXPECT_EQ(firstDifference(*document, *readBack()), "");
    writer = std::make_unique<JournalWriter>(store().newJournal(), plenty);
    discard();
    EXPECT_EQ(files(), QStringList());
    capture->forgetAll();
  }
}

TEST_F(JournalOfOtherDiskTest, noCopyIsMadeOfAFileThatChangesMeanwhile) {
  const QString path = saveAndFollow();
  record();
  put(path, bytesOf(path) + "more");
  copyAll();
  EXPECT_FALSE(writer->isBaseIntact());
  EXPECT_EQ(files().size(), 1);
}

TEST_F(JournalOfOtherDiskTest, aCopyNeverTakesTheLastOfTheDisk) {
  saveAndFollow();
  disk.room = 20'000;
  record();
  copyAll();
  EXPECT_TRUE(writer->dependsOnFile());
  EXPECT_TRUE(writer->isBaseIntact());
  EXPECT_EQ(files().size(), 1);
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalOfOtherDiskTest, aCopyTakesNoMoreSpaceThanItMay) {
  writer = std::make_unique<JournalWriter>(store().newJournal(), 100'000);
  saveAndFollow();
  record();
  copyAll();
  EXPECT_TRUE(writer->dependsOnFile());
  EXPECT_EQ(files().size(), 1);
}

TEST_F(JournalOfOtherDiskTest, writesEverythingOnceTheFileHasGone) {
  const QString path = saveAndFollow();
  record();
  QFile::remove(path);
  EXPECT_FALSE(writer->isBaseIntact());
  EXPECT_GT(record().bytesWritten, 100'000);
  EXPECT_TRUE(writer->isBaseIntact());
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalOfOtherDiskTest, restoresWhatThereIsOnceTheFileHasGone) {
  const QString path = saveAndFollow();
  changePixels(*document);
  record();
  const std::shared_ptr<Layer> changed = document->activeLayer();
  writer = nullptr;
  QFile::remove(path);
  const auto contents = contentsOfOrphan();
  ASSERT_TRUE(contents.has_value()) << contents.error().toStdString();
  EXPECT_TRUE(contents->loss.contains(QStringLiteral("\"image.tessel\" has been changed or removed")))
      << contents->loss.toStdString();
  const DocumentPtr back = buildRestored(*contents, MetalContext::shared());
  const auto pixelsOf = [&](const Document& of) {
    const ConstTexture surface = of.findNode(changed->id)->layer()->surface(SurfaceKind::pixels);
    const std::size_t rowBytes = static_cast<std::size_t>(surface->width() * surface->pixelBytes());
    std::vector<std::byte> pixels(rowBytes * static_cast<std::size_t>(surface->height()));
    surface->readRect({0, 0, surface->width(), surface->height()}, pixels.data(), rowBytes);
    return pixels;
  };
  EXPECT_EQ(pixelsOf(*back), pixelsOf(*document))
      << "the journal has all tiles of the layer that was changed";
  EXPECT_EQ(back->allLayers().size(), document->allLayers().size());
  EXPECT_EQ(store().orphans().size(), 1U);
}

TEST_F(JournalOfOtherDiskTest, aLaterSaveOfTheSameStateHoldsWhatIsMissing) {
  saveAndFollow();
  changePixels(*document);
  record();
  // As if the process died before it could tell the journal.
  saveAndFollow();
  const DocumentPtr back = readBack();
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(firstDifference(*document, *back), "");
}

TEST_F(JournalOfOtherDiskTest, aLaterSaveOfAnotherStateIsntMixedIn) {
  saveAndFollow();
  changePixels(*document);
  record();
  changePixels(*document);
  document->undo();
  document->undo();
  saveAndFollow();
  writer = nullptr;
  const auto contents = contentsOfOrphan();
  ASSERT_TRUE(contents.has_value());
  EXPECT_EQ(contents->loss, QString()) << "its surfaces are those of the file before";
  // Without what the journal holds, and with something that it doesn't.
  document->selectNode(document->allLayers().front()->id);
  document->invertActive();
  saveAndFollow();
  const auto mixed = contentsOfOrphan();
  ASSERT_TRUE(mixed.has_value());
  EXPECT_TRUE(mixed->loss.contains(QStringLiteral("\"image.tessel\" holds another version")))
      << mixed->loss.toStdString();
}

TEST_F(JournalOfOtherDiskTest, restoresWhatIsUnharmedOfADamagedFile) {
  const QString path = saveAndFollow();
  record();
  writer = nullptr;
  const auto known = std::dynamic_pointer_cast<const SavedFile>(document->fileMemory());
  const auto damagedSurface = std::ranges::find_if(known->surfaces, [](const auto& entry) {
    return entry.first.ends_with(".layerdata") && entry.second.chunks.size() > 0;
  });
  ASSERT_NE(damagedSurface, known->surfaces.end());
  QByteArray bytes = bytesOf(path);
  const StoredChunk& chunk = damagedSurface->second.chunks.front();
  const auto at = static_cast<qsizetype>(chunk.offset + chunk.storedSize / 2);
  bytes[at] = static_cast<char>(bytes[at] ^ 1);
  put(path, bytes);
  const auto contents = contentsOfOrphan();
  ASSERT_TRUE(contents.has_value());
  EXPECT_FALSE(contents->loss.isEmpty());
  EXPECT_EQ(contents->loss.count(QStringLiteral(", ")), 1) << "one layer: " << contents->loss.toStdString();
}

TEST_F(JournalOfOtherDiskTest, believesTheSameBytesWhereverTheyStand) {
  const QString path = saveAndFollow();
  record();
  writer = nullptr;
  // Restored from a backup: another inode, another time.
  const QByteArray bytes = bytesOf(path);
  QFile::remove(path);
  put(path, bytes);
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadWrite));
  ASSERT_TRUE(file.setFileTime(QDateTime(QDate(2001, 2, 3), QTime(4, 5)), QFileDevice::FileModificationTime));
  file.close();
  EXPECT_EQ(firstDifference(*document, *restored()), "");
}

/// A file system that can share blocks.
class SharingDisk final : public FileOperations {
 public:
  int shareRange(int from, std::int64_t fromOffset, int to, std::int64_t toOffset,
                 std::size_t count) override {
    // A count of zero means all that follows.
    std::size_t left = count == 0 ? std::size_t{1} << 30U : count;
    while (left > 0) {
      const ssize_t copied = FileOperations::copyRange(from, fromOffset, to, toOffset, left);
      if (copied <= 0) return static_cast<int>(copied);
      fromOffset += copied;
      toOffset += copied;
      left -= static_cast<std::size_t>(copied);
    }
    return 0;
  }
};

TEST_F(JournalWriterTest, keepsTheFileWhereThatCostsNothing) {
  SharingDisk disk;
  const ScopedFileOperations scope(disk);
  const QString path = saveAndFollow();
  record();
  EXPECT_FALSE(writer->dependsOnFile());
  EXPECT_EQ(files().size(), 2);
  put(path, "something else");
  changePixels(*document);
  record();
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalWriterTest, anotherSaveIsAnotherBase) {
  SharingDisk disk;
  const ScopedFileOperations scope(disk);
  saveAndFollow();
  record();
  changePixels(*document);
  saveAndFollow();
  document->setOpacity(document->activeLayer()->id, 0.75F);
  EXPECT_LT(record().bytesWritten, 4000);
  EXPECT_EQ(files().size(), 2) << "the copy of the file of before has gone";
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
  EXPECT_EQ(store().orphans().size(), 1U);
  discard();
  EXPECT_EQ(files(), QStringList());
}

TEST_F(JournalWriterTest, beginsAnewIfSomebodyHasEmptiedTheStore) {
  record();
  QFile::remove(journalPath());
  changePixels(*document);
  record();
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalWriterTest, takesNoMoreSpaceThanItMay) {
  writer = std::make_unique<JournalWriter>(store().newJournal(), 50'000);
  const auto outcome = writer->write(captured(*capture));
  EXPECT_EQ(outcome.result, JournalWriter::Result::failed);
  EXPECT_FALSE(outcome.reason.isEmpty());
  EXPECT_EQ(files(), QStringList());
}

}  // namespace
}  // namespace orvanel
