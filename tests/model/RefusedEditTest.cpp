// Edits refused for lack of memory: they don't begin, report the refusal, and leave everything unchanged.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "model/LevelsAdjustment.h"
#include "model/PixelSupport.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using namespace test;

struct Command {
  std::string name;
  std::function<void(Document&)> run;
};

const std::vector<Command> commands{
    {"invert", [](Document& d) { d.invertActive(); }},
    {"fillUnderASelection", [](Document& d) { d.fillSelection(DisplayColor::black()); }},
    {"imageSize", [](Document& d) { d.resizeImage(300, 260, ResampleMethod::bicubic); }},
    {"canvasSize", [](Document& d) { d.resizeCanvas(300, 260, 0, 0); }},
    {"crop",
     [](Document& d) {
       d.crop({1, 2, 90, 80}, QStringLiteral("Crop"));
     }},
    {"colorMode", [](Document& d) { d.changeColorMode(ColorMode::rgb8); }},
    {"applyMask", [](Document& d) { d.applyLayerMask(d.activeLayer()); }},
    {"paste", [](Document& d) { d.pastePixels(d.copyPixels().value()); }},
    {"undo", [](Document& d) { d.undo(); }},
    {"levels", [](Document& d) { EXPECT_FALSE(LevelsAdjustment::begin(d.shared_from_this()).has_value()); }},
};

class RefusedEditTest : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override {
    addRandomMask(*document->activeLayer(), random);
    document->invertActive();
    selectRandomly(*document, random);
    static_cast<void>(document->composite());
  }

  std::mt19937 random{3};
  DocumentPtr document = makeRandomDocument(ColorMode::rgb16, random);
};

TEST_P(RefusedEditTest, LeavesEverythingUnchangedAndReportsTheRefusal) {
  TextureSnapshot::waitForCompression();
  const PixelState before = pixelState(*document);
  const SelectionState selectionBefore = selectionState(*document);
  const std::int64_t records = recordCount(*document);
  const ChangeRecorder changes(*document);
  EXPECT_FALSE(marksEdited(*document, [&] {
    const ScopedMemoryLimit limit(0);
    commands[GetParam()].run(*document);
  }));
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  EXPECT_EQ(difference(pixelState(*document), before), "");
  EXPECT_EQ(difference(selectionState(*document), selectionBefore), "");
  EXPECT_EQ(recordCount(*document), records);
}

INSTANTIATE_TEST_SUITE_P(Commands, RefusedEditTest, testing::Range<std::size_t>(0, commands.size()),
                         [](const auto& tested) { return commands[tested.param].name; });

TEST(RefusedEdits, EditsThatNeedNoMemoryAreNeverRefused) {
  const DocumentPtr document = makeDocument(2000, 1500);
  const ScopedMemoryLimit limit(0);
  const ChangeRecorder changes(*document);
  document->fillSelection(DisplayColor::black());
  document->invertActive();
  document->addLayer("L");
  document->selectAll();
  document->undo();
  document->redo();
  EXPECT_EQ(changes.count<change::EditRefused>(), 0U);
  EXPECT_EQ(recordCount(*document), 4);
}

}  // namespace
}  // namespace orvanel
