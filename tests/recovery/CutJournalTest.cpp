// Journals of which a part is missing or damaged: what is whole before it counts.
#include "io/files/FaultyDisk.h"
#include "recovery/JournalChild.h"
#include "recovery/JournalWriterFixture.h"

namespace orvanel {
namespace {

using testing::changePixels;
using testing::fingerprintOf;
using testing::firstDifference;
using testing::richDocument;

class CutJournalTest : public testing::JournalWriterTest {
 protected:
  /// One for each kind of record.
  using Edit = std::function<void()>;
  [[nodiscard]] std::vector<Edit> edits() const {
    return {[this] { document->rename(document->activeLayer()->id, QStringLiteral("After")); },
            [this] { changePixels(*document); },
            [this] { document->duplicateNode(document->activeLayer()->id); },
            [this] { document->removeNode(document->rootNodes.value().front().id()); },
            [this] { document->resizeCanvas(40, 150, 0, 0); }};
  }
  static std::span<const std::byte> spanOf(const QByteArray& bytes, qsizetype length) {
    return std::as_bytes(std::span(bytes.constData(), static_cast<std::size_t>(length)));
  }
  [[nodiscard]] DocumentPtr builtFrom(const QByteArray& journal) const {
    const auto contents = restoreFrom(journal);
    return contents ? buildRestored(*contents, MetalContext::shared()) : nullptr;
  }
};

TEST_F(CutJournalTest, aRecordCutOffAnywhereLeavesTheOneBefore) {
  follow(richDocument(ColorMode::rgb8, 20, 14));
  std::vector<qsizetype> ends{0};
  std::vector<QByteArray> states{QByteArray()};
  const auto note = [&] {
    record();
    ends.push_back(bytesOf(journalPath()).size());
    states.push_back(fingerprintOf(*document));
  };
  note();
  for (const Edit& edit : edits()) {
    edit();
    note();
    ASSERT_NE(states.back(), states[states.size() - 2]);
  }
  const QByteArray journal = bytesOf(journalPath());
  ASSERT_EQ(journal.size(), ends.back()) << "it is one file";
  std::size_t whole = 0;
  for (qsizetype length = 0; length <= journal.size(); ++length) {
    const bool endsRecord = whole + 1 < ends.size() && length == ends[whole + 1];
    if (endsRecord) ++whole;
    const auto state = readJournalState(JournalInput::ofBytes(spanOf(journal, length)), TileCheck::all);
    ASSERT_EQ(state ? state->records : 0, whole) << length;
    if (state) {
      ASSERT_EQ(state->end, static_cast<std::uint64_t>(ends[whole])) << length;
    }
    if (!endsRecord) continue;
    // At its end, and in the middle of the next.
    const qsizetype next = whole + 1 < ends.size() ? ends[whole + 1] : journal.size();
    for (const qsizetype cut : {length, (length + next) / 2}) {
      const DocumentPtr back = builtFrom(journal.left(cut));
      ASSERT_NE(back, nullptr);
      EXPECT_EQ(fingerprintOf(*back), states[whole]) << whole;
    }
  }
  EXPECT_EQ(whole, states.size() - 1);
}

TEST_F(CutJournalTest, aDiskThatIsFullAtAnyWriteLeavesTheRecordBefore) {
  // Large enough for several writes of tiles.
  follow(richDocument(ColorMode::rgb16, 600, 540));
  record();
  int most = 0;
  for (const Edit& edit : edits()) {
    const QByteArray before = fingerprintOf(*document);
    edit();
    const QByteArray after = fingerprintOf(*document);
    for (int failing = 0;; ++failing) {
      testing::FailingDisk disk(failing);
      const ScopedFileOperations scope(disk);
      const auto outcome = writer->write(testing::captured(*capture));
      const DocumentPtr back = builtFrom(bytesOf(journalPath()));
      ASSERT_NE(back, nullptr);
      if (outcome.result == JournalWriter::Result::written) {
        EXPECT_EQ(fingerprintOf(*back), after);
        most = std::max(most, failing);
        break;
      }
      ASSERT_EQ(outcome.result, JournalWriter::Result::failed);
      EXPECT_FALSE(outcome.reason.isEmpty());
      EXPECT_EQ(fingerprintOf(*back), before) << failing;
      EXPECT_EQ(files().size(), 1);
      capture->forgetAll();
    }
  }
  EXPECT_GE(most, 4) << "tiles, contents, the header, and the disk's word";
}

TEST_F(CutJournalTest, damageInTheMiddleLeavesWhatCameBefore) {
  record();
  const auto firstEnd = bytesOf(journalPath()).size();
  for (const char* name : {"Second", "Third"}) {
    document->rename(document->activeLayer()->id, QString::fromLatin1(name));
    changePixels(*document);
    record();
  }
  QByteArray journal = bytesOf(journalPath());
  EXPECT_EQ(nameOfMasked(journal), QStringLiteral("Third"));
  // In a tile of the second record.
  journal[firstEnd + 1000] = static_cast<char>(journal[firstEnd + 1000] ^ 1);
  EXPECT_EQ(nameOfMasked(journal), QString::fromUtf8("Masked é"));
  const auto restoredPart = restoreFrom(journal);
  ASSERT_TRUE(restoredPart);
  EXPECT_EQ(
      restoredPart->loss,
      QStringLiteral("Some of the recovery data is damaged, so the last changes could not be restored."));
  // What was cut off while it was written was never promised.
  const auto restoredCut = restoreFrom(bytesOf(journalPath()).left(firstEnd + 1000));
  ASSERT_TRUE(restoredCut);
  EXPECT_EQ(restoredCut->loss, QString());
}

}  // namespace
}  // namespace orvanel
