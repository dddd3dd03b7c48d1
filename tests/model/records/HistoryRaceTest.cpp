// Background compression racing against undo, redo, eviction and the destruction of records and documents.
// Nothing synchronises them, so every run interleaves differently, but the outcome must always be the same.
// Under ThreadSanitizer, the accesses themselves are checked.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <thread>

#include "model/PixelSupport.h"
#include "raster/TileMemory.h"

namespace orvanel {
namespace {

using namespace test;
using Bytes = std::vector<std::byte>;

Bytes bytesOf(const Surface& surface) {
  Bytes bytes(static_cast<std::size_t>(surface.byteSize()));
  surface.readRect(
      surface.bounds(), bytes.data(),
      static_cast<std::size_t>(surface.width()) * static_cast<std::size_t>(surface.pixelBytes()));
  return bytes;
}

/// A document with random edits, and the pixels on both sides of each record.
class EditedDocument {
 public:
  explicit EditedDocument(unsigned seed)
      : random_(seed), document_(makeRandomDocument(allColorModes[seed % allColorModes.size()], random_)) {
    first_ = pixels();
  }

  [[nodiscard]] Document& document() const { return *document_; }
  [[nodiscard]] UndoStack& history() const { return writableHistory(*document_); }
  [[nodiscard]] Surface& surface() const { return writable(document_->allLayers().front()->texture.value()); }
  /// Shares the pixels of another document, tiles and all.
  void sharePixelsOf(const EditedDocument& other) {
    surface() = other.surface();
    first_ = pixels();
  }

  void edit() {
    const Bytes before = pixels();
    // Leaves some tiles unchanged, so that many records share them.
    Surface weight = reference::randomMask(pixelWidth, pixelHeight, random_);
    weight.setUniform(static_cast<int>(random_() % 4), 0);
    select(*document_, weight);
    if (random_() % 2 == 0) {
      document_->invertActive();
    } else {
      document_->fillSelection({0.2F, 0.9F, 0.4F, 0.7F});
    }
    sides_[history().operations().back().get()] = {before, pixels()};
  }

  /// An edit, an undo or a redo, and sometimes a pause for the other threads.
  void step() {
    const auto choice = random_() % 8;
    if (choice < 4) {
      edit();
    } else if (choice < 6) {
      document_->undo();
    } else {
      document_->redo();
    }
    if (random_() % 3 == 0) std::this_thread::yield();
    expectPlace();
  }

  void walkBackAndForth() {
    const std::size_t length = history().operations().size();
    for (std::size_t i = 0; i < length; ++i) {
      document_->undo();
      expectPlace();
    }
    for (std::size_t i = 0; i < length; ++i) {
      document_->redo();
      expectPlace();
    }
  }

 private:
  struct Sides {
    Bytes before;
    Bytes after;
  };

  [[nodiscard]] Bytes pixels() const { return bytesOf(surface()); }
  /// Expects the pixels at the history's current position.
  void expectPlace() const {
    const std::vector<UndoStack::Record>& records = history().operations();
    const std::int64_t index = history().currentIndex.value();
    ASSERT_LT(index, std::ssize(records));
    const Bytes& expected = records.empty() ? first_
                            : index < 0     ? sides_.at(records.front().get()).before
                                            : sides_.at(records[static_cast<std::size_t>(index)].get()).after;
    EXPECT_TRUE(pixels() == expected) << "at " << index << " of " << records.size();
  }

  std::mt19937 random_;
  DocumentPtr document_;
  Bytes first_;
  std::map<const UndoableOperation*, Sides> sides_;
};

class HistoryRace : public testing::Test {
 protected:
  /// Expects all pixel memory to be released in the end.
  void TearDown() override {
    TextureSnapshot::waitForCompression();
    EXPECT_EQ(tileMemory::bytesInUse(), bytesBefore_);
  }

 private:
  void SetUp() override {
    // Allocations that the program makes once and keeps.
    EditedDocument(0).edit();
    TextureSnapshot::waitForCompression();
    bytesBefore_ = tileMemory::bytesInUse();
  }

  std::size_t bytesBefore_ = 0;
};

TEST_F(HistoryRace, UndoAndRedoRestoreTheirPixelsAtAnyMoment) {
  for (unsigned round = 0; round < 60 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    EditedDocument edited(round);
    for (int step = 0; step < 20; ++step) edited.step();
    if (round % 2 == 0) edited.walkBackAndForth();
  }
}

TEST_F(HistoryRace, EvictionByBytesLeavesAValidHistory) {
  for (unsigned round = 0; round < 60 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    EditedDocument edited(round);
    UndoStack& history = edited.history();
    // From less than one record to a few: costs during compression determine which records remain.
    history.memoryBudget = edited.surface().byteSize() * (1 + round % 7) / 2;
    for (int step = 0; step < 20; ++step) {
      edited.step();
      if (step % 5 == 0) history.enforceLimits();
    }
    edited.edit();
    EXPECT_EQ(history.currentIndex.value(), std::ssize(history.operations()) - 1);
    if (round % 2 == 0) TextureSnapshot::waitForCompression();
    edited.walkBackAndForth();
    TextureSnapshot::waitForCompression();
    history.enforceLimits();
    EXPECT_TRUE(history.totalMemoryCost() <= history.memoryBudget.value() ||
                history.operations().size() == 1);
    edited.walkBackAndForth();
  }
}

TEST_F(HistoryRace, RecordsMayEndInAnyOrderDuringCompression) {
  std::mt19937 random(97);
  for (unsigned round = 0; round < 60; ++round) {
    std::vector<UndoStack::Record> records;
    {
      EditedDocument edited(round);
      for (int step = 0; step < 8; ++step) edited.edit();
      for (unsigned steps = round % 4; steps > 0; --steps) edited.document().undo();
      records = edited.history().operations();
    }
    std::shuffle(records.begin(), records.end(), random);
    while (!records.empty()) {
      // The document is gone: a step does nothing, but cost and readiness are still available.
      const UndoStack::Record& record = records.back();
      record->undo();
      record->redo();
      record->setReady(random() % 2 == 0);
      EXPECT_GE(record->memoryCost(), 0);
      records.pop_back();
    }
  }
}

TEST_F(HistoryRace, DocumentsThatShareTilesMayEndInAnyOrder) {
  for (unsigned round = 0; round < 40 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    // Both have the same colour mode, so that they can share tiles.
    auto one = std::make_unique<EditedDocument>(round);
    auto other = std::make_unique<EditedDocument>(round + static_cast<unsigned>(allColorModes.size()));
    other->sharePixelsOf(*one);
    for (int step = 0; step < 8; ++step) {
      one->step();
      other->step();
    }
    (round % 2 == 0 ? one : other).reset();
    EditedDocument& left = one != nullptr ? *one : *other;
    for (int step = 0; step < 8; ++step) left.step();
    left.walkBackAndForth();
  }
}

}  // namespace
}  // namespace orvanel
