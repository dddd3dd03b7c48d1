#include "recovery/JournalCompaction.h"

#include "io/files/FaultyDisk.h"
#include "recovery/DiskReserve.h"
#include "recovery/JournalWriterFixture.h"

namespace orvanel {
namespace {

using testing::changePixels;
using testing::firstDifference;
using JournalCompactionTest = testing::JournalWriterTest;

TEST_F(JournalCompactionTest, keepsTheDocumentAndGivesSpaceBack) {
  const std::int64_t first = record().bytesWritten;
  std::int64_t written = first;
  std::int64_t largest = 0;
  for (int edit = 0; edit < 80; ++edit) {
    changePixels(*document);
    written += record().bytesWritten;
    largest = std::max(largest, writer->size());
    compact();
  }
  EXPECT_GT(written, 10'000'000);
  EXPECT_LT(largest, 7'000'000);
  EXPECT_EQ(files().size(), 1);
  // What is appended to the new file is found again as well.
  document->undo();
  record();
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalCompactionTest, recordsDontWaitForItAndGoAlong) {
  record();
  while (!writer->needsCompacting()) {
    changePixels(*document);
    record();
  }
  const std::int64_t before = writer->size();
  writer->compactPiece();
  EXPECT_EQ(files().size(), 2) << "the new file is being written";
  // New tiles, a surface more, and one that goes.
  changePixels(*document);
  document->duplicateNode(document->activeLayer()->id);
  document->removeNode(document->rootNodes.value().front().id());
  const std::int64_t bytes = record().bytesWritten;
  EXPECT_EQ(writer->size(), before + bytes) << "appended to the old file";
  ASSERT_TRUE(writer->needsCompacting());
  compact();
  EXPECT_LT(writer->size(), before / 2);
  EXPECT_EQ(files().size(), 1);
  document->undo();
  record();
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalCompactionTest, isGivenUpWhenTheJournalBeginsAnew) {
  record();
  while (!writer->needsCompacting()) {
    changePixels(*document);
    record();
  }
  writer->compactPiece();
  saveAndFollow();
  document->setDirty(true);
  record();
  EXPECT_FALSE(writer->needsCompacting());
  EXPECT_FALSE(files().join(u' ').contains(QStringLiteral(".part")));
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

/// A disk with room for so many bytes in this folder, beyond what is left to the user's files.
class SmallDisk final : public FileOperations {
 public:
  explicit SmallDisk(QString folder) : folder_(std::move(folder)) {}
  int measureSpace(int /*file*/, DiskSpace& space) override {
    const auto room = static_cast<std::uint64_t>(std::max<std::int64_t>(capacity - taken(), 0));
    space = {largestReserve + room, std::uint64_t{1} << 40U};
    return 0;
  }

  [[nodiscard]] std::int64_t taken() const {
    std::int64_t bytes = 0;
    for (const QFileInfo& file : QDir(folder_).entryInfoList(QDir::Files)) bytes += file.size();
    return bytes;
  }

  std::int64_t capacity = std::int64_t{1} << 40U;

 private:
  QString folder_;
};

TEST_F(JournalCompactionTest, makesRoomForRecordsOnAFullDisk) {
  SmallDisk disk(settings().folder);
  const ScopedFileOperations scope(disk);
  // So much that not all of the new file waits in memory.
  for (int layer = 0; layer < 8; ++layer) {
    document->duplicateNode(document->activeLayer()->id);
    changePixels(*document);
  }
  record();
  while (!writer->needsCompacting()) {
    changePixels(*document);
    record();
  }
  writer->compactPiece();
  ASSERT_GT(disk.taken(), writer->size() + 1'000'000);
  disk.capacity = disk.taken();
  changePixels(*document);
  record();
  EXPECT_EQ(files().size(), 1);
  EXPECT_FALSE(writer->needsCompacting()) << "it would only fill the disk again";
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalCompactionTest, makesRoomInAJournalThatHasReachedItsLimit) {
  constexpr std::int64_t limit = 16'000'000;
  writer = std::make_unique<JournalWriter>(store().newJournal(), limit);
  record();
  while (!writer->needsCompacting()) {
    changePixels(*document);
    record();
  }
  writer->compactPiece();
  JournalWriter::Outcome outcome;
  do {
    changePixels(*document);
    outcome = writer->write(testing::captured(*capture));
  } while (outcome.result == JournalWriter::Result::written);
  EXPECT_EQ(outcome.result, JournalWriter::Result::failed);
  EXPECT_TRUE(writer->needsCompacting()) << "nothing else can help";
  compact();
  EXPECT_LT(writer->size(), limit / 2);
  capture->forgetAll();
  record();
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

TEST_F(JournalCompactionTest, leavesTheJournalWhenItFails) {
  testing::FailingStep disk(testing::FailingStep::Step::rename);
  record();
  {
    const ScopedFileOperations scope(disk);
    for (int edit = 0; edit < 80; ++edit) {
      changePixels(*document);
      record();
      compact();
    }
    EXPECT_GT(writer->size(), 10'000'000);
  }
  EXPECT_EQ(files().size(), 1);
  EXPECT_EQ(firstDifference(*document, *readBack()), "");
}

}  // namespace
}  // namespace orvanel
