// Thousands of random commands, undos and redos, each compared with a deep copy of the expected state.
#include <gtest/gtest.h>

#include <array>
#include <iostream>
#include <memory>

#include "model/ModelSupport.h"
#include "model/SourceMetadata.h"
#include "tools/DocumentMirror.h"
#include "tools/HistoryOracle.h"
#include "tools/RandomCommands.h"

namespace orvanel {
namespace {

using namespace test;

constexpr std::int64_t usualBudget = 524288000;
constexpr int stepsPerRun = 1500;

struct Plan {
  unsigned seed;
  ColorMode mode;
  std::int64_t maxOperations;
  std::int64_t memoryBudget;
};

// NOLINTNEXTLINE(readability-identifier-naming): found by this name.
void PrintTo(const Plan& plan, std::ostream* stream) {
  *stream << "seed " << plan.seed << ", " << displayName(plan.mode);
}

class RandomHistory : public testing::TestWithParam<Plan> {};

struct Counts {
  int records = 0;
  int undos = 0;
  int redos = 0;
};

void stepBack(Document& document, HistoryOracle& oracle, Counts& counts) {
  document.undo();
  oracle.undo(document);
  ++counts.undos;
  EXPECT_TRUE(document.isDirty.value());
}

void stepForward(Document& document, HistoryOracle& oracle, Counts& counts) {
  document.redo();
  oracle.redo(document);
  ++counts.redos;
  EXPECT_TRUE(document.isDirty.value());
}

void runCommand(RandomCommands& commands, HistoryOracle& oracle, Counts& counts) {
  Document& document = commands.document();
  document.setDirty(false);
  UndoStack& history = writableHistory(document);
  const std::uint64_t revision = history.revision.value();
  const std::string_view name = commands.runOne();
  SCOPED_TRACE(name);
  if (history.memoryBudget.value() < usualBudget && history.revision.value() != revision) {
    // Costs change while snapshots compress, so the limit is exact only afterwards. Undoing can raise costs
    // too, but nothing is evicted before the next push.
    TextureSnapshot::waitForCompression();
    history.enforceLimits();
    DocumentEdit(document, editKind::state).tell(change::HistoryChanged{});
  }
  const bool isRecorded = oracle.recordCommand(
      document, {.opacityNode = changesOpacity(name) ? document.selectedNodeID.value() : std::nullopt,
                 .movedNode = commands.movedNode});
  if (!isRecorded) return;
  ++counts.records;
  EXPECT_EQ(document.isDirty.value(), oracle.lastKind() != RecordKind::selection && !keepsClean(name));
  EXPECT_LE(std::ssize(history.operations()), history.maxOperations.value());
  EXPECT_TRUE(history.totalMemoryCost() <= history.memoryBudget.value() || history.operations().size() == 1);
}

class Metadata final : public SourceMetadata {};

/// As opening and saving do.
void changeFile(RandomCommands& commands) {
  Document& document = commands.document();
  const QString path = QStringLiteral("/%1.png").arg(commands.below(3));
  constexpr std::array formats{Document::ImageFileFormat::png, Document::ImageFileFormat::jpeg};
  switch (commands.below(3)) {
    case 0:
      return document.setName(path);
    case 1:
      return document.setSource(path, formats.at(static_cast<std::size_t>(commands.below(2))));
    default:
      return document.setSourceMetadata(std::make_shared<Metadata>());
  }
}

TEST_P(RandomHistory, EveryStepRestoresItsCopy) {
  const Plan& plan = GetParam();
  DocumentPtr document =
      Document::create(QStringLiteral("Random"), 300, 280, plan.mode, MetalContext::shared());
  writableHistory(*document).maxOperations = plan.maxOperations;
  writableHistory(*document).memoryBudget = plan.memoryBudget;
  RandomCommands commands(document, plan.seed);
  HistoryOracle oracle(*document);
  DocumentMirror mirror(*document);
  commands.onStep = [&] { EXPECT_EQ(mirror.difference(), "") << "a step of a gesture wasn't reported"; };
  Counts counts;
  for (int step = 0; step < stepsPerRun && !HasFailure(); ++step) {
    SCOPED_TRACE(step);
    const int choice = commands.below(100);
    if (choice < 9) {
      for (int i = 1 + commands.below(4); i > 0; --i) stepBack(*document, oracle, counts);
    } else if (choice < 16) {
      for (int i = 1 + commands.below(4); i > 0; --i) stepForward(*document, oracle, counts);
    } else if (choice < 18) {
      changeFile(commands);
    } else {
      runCommand(commands, oracle, counts);
    }
    EXPECT_EQ(mirror.difference(), "") << "the change wasn't reported";
    if (commands.below(12) == 0) TextureSnapshot::waitForCompression();
  }
  // Undo everything, then redo everything.
  const std::size_t length = document->undoStack.operations().size();
  for (std::size_t i = 0; i <= length && !HasFailure(); ++i) stepBack(*document, oracle, counts);
  for (std::size_t i = 0; i <= length && !HasFailure(); ++i) stepForward(*document, oracle, counts);
  EXPECT_EQ(mirror.difference(), "");
  EXPECT_EQ(mirror.historySteps(), counts.undos + counts.redos);
  std::cout << "seed " << plan.seed << ", " << displayName(plan.mode) << ": " << stepsPerRun << " steps, "
            << counts.records << " records, " << counts.undos << " undos, " << counts.redos << " redos, "
            << oracle.evicted() << " evicted, " << mirror.changes() << " changes reported and mirrored\n";
}

TEST_P(RandomHistory, RecordsMayOutliveTheirDocumentAndThenDoNothing) {
  const Plan& plan = GetParam();
  std::vector<UndoStack::Record> records;
  {
    DocumentPtr document =
        Document::create(QStringLiteral("Random"), 40, 30, plan.mode, MetalContext::shared());
    RandomCommands commands(document, plan.seed);
    for (int step = 0; step < 200; ++step) commands.runOne();
    records = document->undoStack.operations();
  }
  EXPECT_FALSE(records.empty());
  for (const UndoStack::Record& record : records) {
    record->undo();
    record->redo();
    EXPECT_GE(record->memoryCost(), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Seeds, RandomHistory,
    testing::Values(Plan{1, ColorMode::rgb8, 100, usualBudget}, Plan{2, ColorMode::rgb16, 100, usualBudget},
                    Plan{3, ColorMode::grayscale8, 100, usualBudget},
                    Plan{4, ColorMode::grayscale16, 100, usualBudget},
                    // Eviction by count.
                    Plan{5, ColorMode::rgb8, 9, usualBudget}, Plan{6, ColorMode::grayscale16, 4, usualBudget},
                    // Eviction by bytes.
                    Plan{7, ColorMode::rgb16, 100, 900'000}, Plan{8, ColorMode::grayscale8, 100, 150'000}));

}  // namespace
}  // namespace orvanel
