// A document with a writer of its journal, and no thread between them.
#pragma once

#include <algorithm>
#include <memory>

#include "recovery/JournalReader.h"
#include "recovery/JournalWriter.h"
#include "recovery/RecoveryFixture.h"

namespace orvanel::testing {

/// The document as a writer is given it: what has changed since the call before.
inline Capture captured(DocumentCapture& capture) {
  return *capture.advance(std::chrono::hours(1));
}

class JournalWriterTest : public RecoveryTest {
 protected:
  static constexpr std::int64_t plenty = std::int64_t{1} << 30U;

  JournalWriterTest() : document(unsavedDocument()) {}

  void SetUp() override {
    RecoveryTest::SetUp();
    writer = std::make_unique<JournalWriter>(store().newJournal(), plenty);
    follow(document);
  }
  void follow(const DocumentPtr& next) {
    document = next;
    capture = std::make_unique<DocumentCapture>(*document);
    subscription =
        document->changes().observe([this](const DocumentChanges& changes) { capture->note(changes); });
  }
  JournalWriter::Outcome record() {
    auto outcome = writer->write(captured(*capture));
    if (outcome.result == JournalWriter::Result::needsEverything) {
      capture->forgetAll();
      outcome = writer->write(captured(*capture));
    }
    EXPECT_EQ(outcome.result, JournalWriter::Result::written) << outcome.reason.toStdString();
    return outcome;
  }
  /// A saved document with an edit in memory.
  QString saveAndFollow() {
    const QString path = directory.filePath(QStringLiteral("image.tessel"));
    EXPECT_TRUE(DocumentIO::saveSynchronously(document, path, MetalContext::shared()).has_value());
    document->setSource(path, std::nullopt);
    return path;
  }
  DocumentPtr readBack() {
    writer = nullptr;
    return restored();
  }
  /// As a lane does that has nothing else to do.
  void compact() {
    while (writer->needsCompacting()) writer->compactPiece();
  }

  static Described<RestoredContents> restoreFrom(const QByteArray& journal) {
    const auto bytes =
        std::as_bytes(std::span(journal.constData(), static_cast<std::size_t>(journal.size())));
    return restoreContents(JournalInput::ofBytes(bytes), MetalContext::shared(),
                           [](std::uint32_t) { return std::string(); }, {});
  }
  /// The name of the layer that the tests change, as a journal with these bytes has it.
  static QString nameOfMasked(const QByteArray& journal) {
    const auto contents = restoreFrom(journal);
    return contents ? contents->plan.manifest.nodes.at(2).name : contents.error();
  }

  DocumentPtr document;
  std::unique_ptr<DocumentCapture> capture;
  Subscription subscription;
  std::unique_ptr<JournalWriter> writer;
};

}  // namespace orvanel::testing
