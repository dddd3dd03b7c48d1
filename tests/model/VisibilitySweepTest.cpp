#include "model/VisibilitySweep.h"

#include <gtest/gtest.h>

#include "model/OpenSelectionEdit.h"
#include "model/PixelSupport.h"
#include "raster/MemoryBudget.h"

namespace orvanel {
namespace {

using namespace test;

class VisibilitySweepTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"a", "b", "c"}) document->addLayer(name);
    document->setVisible(idOf(*document, "b"), false);
    document->setDirty(false);
    records = document->undoStack.operations().size();
  }
  [[nodiscard]] bool isVisible(const QString& name) const {
    return nodeNamed(*document, name).isVisible().value();
  }
  [[nodiscard]] std::size_t newRecords() const { return document->undoStack.operations().size() - records; }

  DocumentPtr document = makeDocument();
  std::size_t records = 0;
};

TEST_F(VisibilitySweepTest, ShowsAtOnceAndIsKeptAsOneStep) {
  {
    VisibilitySweep sweep(document, false);
    sweep.add(idOf(*document, "c"));
    EXPECT_FALSE(isVisible("c"));
    EXPECT_EQ(newRecords(), 0U);
    EXPECT_TRUE(document->hasOpenUnsavedChange());
    EXPECT_EQ(document->undoActionName(), "Visibility");
    sweep.add(idOf(*document, "b"));
    sweep.add(idOf(*document, "a"));
    sweep.add(idOf(*document, "c"));
  }
  EXPECT_EQ(newRecords(), 1U);
  EXPECT_EQ(document->undoStack.undoActionName(), "Visibility");
  EXPECT_TRUE(document->isDirty.value());
  EXPECT_EQ(document->undoStack.operations().back()->memoryCost(), 64 + 24 * 3);

  document->undo();
  EXPECT_TRUE(isVisible("c"));
  EXPECT_FALSE(isVisible("b")) << "each node gets its own old value back";
  EXPECT_TRUE(isVisible("a"));
  document->redo();
  EXPECT_FALSE(isVisible("a"));
  EXPECT_FALSE(isVisible("c"));
}

TEST_F(VisibilitySweepTest, EndsBeforeAnotherChangeOfVisibility) {
  VisibilitySweep sweep(document, false);
  sweep.add(idOf(*document, "a"));
  document->setVisible(idOf(*document, "a"), true);
  sweep.end();
  EXPECT_EQ(newRecords(), 2U);
  document->undo();
  EXPECT_FALSE(isVisible("a"));
  document->undo();
  EXPECT_TRUE(isVisible("a"));
}

TEST_F(VisibilitySweepTest, OfASingleNodeIsAChangeOfThatNode) {
  VisibilitySweep sweep(document, true);
  sweep.add(idOf(*document, "b"));
  sweep.end();
  sweep.end();
  EXPECT_EQ(newRecords(), 1U);
  EXPECT_EQ(document->undoStack.operations().back()->memoryCost(), 64);
  document->undo();
  EXPECT_FALSE(isVisible("b"));
}

TEST_F(VisibilitySweepTest, WithoutAChangeLeavesNoTrace) {
  VisibilitySweep sweep(document, true);
  sweep.add(idOf(*document, "a"));
  sweep.add(QUuid::createUuid());
  EXPECT_FALSE(document->hasOpenUnsavedChange());
  sweep.end();
  EXPECT_EQ(newRecords(), 0U);
  EXPECT_FALSE(document->isDirty.value());
}

TEST_F(VisibilitySweepTest, AnUndoInItsMiddleTakesItBack) {
  VisibilitySweep sweep(document, false);
  sweep.add(idOf(*document, "a"));
  document->undo();
  EXPECT_FALSE(sweep.isOpen());
  EXPECT_TRUE(isVisible("a"));
  sweep.add(idOf(*document, "c"));
  EXPECT_TRUE(isVisible("c")) << "a sweep that has ended does nothing";
}

TEST_F(VisibilitySweepTest, LeavesOtherOpenEditsOpen) {
  const OpenSelectionEdit selecting(document, QStringLiteral("Select"));
  VisibilitySweep sweep(document, false);
  sweep.add(idOf(*document, "a"));
  sweep.end();
  EXPECT_TRUE(selecting.isOpen());
}

TEST_F(VisibilitySweepTest, ARefusalIsToldOnceAndEndsTheSweep) {
  std::mt19937 random{5};
  document = makeRandomDocument(ColorMode::rgb8, random);
  for (const char* name : {"a", "b"}) document->addLayer(name);
  const std::size_t before = document->undoStack.operations().size();
  const ChangeRecorder changes(*document);
  VisibilitySweep sweep(document, false);
  {
    const ScopedMemoryLimit limit(0);
    for (const char* name : {"b", "a", "Background"}) sweep.add(idOf(*document, name));
  }
  EXPECT_EQ(changes.count<change::EditRefused>(), 1U);
  EXPECT_FALSE(sweep.isOpen());
  for (const char* name : {"b", "a", "Background"}) EXPECT_TRUE(isVisible(name)) << name;
  EXPECT_EQ(document->undoStack.operations().size(), before);
}

TEST_F(VisibilitySweepTest, MayOutliveItsDocument) {
  VisibilitySweep sweep(document, false);
  sweep.add(idOf(*document, "a"));
  document.reset();
  sweep.end();
  EXPECT_FALSE(sweep.isOpen());
}

}  // namespace
}  // namespace orvanel
