#include "recovery/JournalCompaction.h"

#include "io/files/FaultyDisk.h"
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
