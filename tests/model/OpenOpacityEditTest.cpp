// Opacity as a slider edits it: every step is seen, and the whole edit is one record or none.
#include "model/OpenOpacityEdit.h"

#include <gtest/gtest.h>

#include "model/records/RecordSupport.h"

namespace orvanel {
namespace {

using namespace test;

/// Layers and folders are edited alike.
class OpenOpacityEditTest : public testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    document->addFolder("Folder");
    document->addLayer("Layer");
    document->addFolder("Other");
    document->setDirty(false);
    id = idOf(*document, QString::fromLatin1(GetParam()));
    records = document->undoStack.operations().size();
  }
  [[nodiscard]] std::size_t newRecords() const { return document->undoStack.operations().size() - records; }
  [[nodiscard]] float opacity() const { return document->findNode(id)->opacity().value(); }
  std::unique_ptr<OpenOpacityEdit> begin() { return OpenOpacityEdit::begin(document, id); }

  DocumentPtr document = makeDocument();
  QUuid id;
  std::size_t records = 0;
};

INSTANTIATE_TEST_SUITE_P(Nodes, OpenOpacityEditTest, testing::Values("Folder", "Layer"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_P(OpenOpacityEditTest, EveryStepIsShownAndNoneRecorded) {
  const auto edit = begin();
  ChangeRecorder changes(*document);
  edit->show(0.75F);
  EXPECT_EQ(opacity(), 0.75F);
  edit->show(0.5F);
  edit->show(0.5F);
  EXPECT_EQ(opacity(), 0.5F);
  EXPECT_EQ(changes.count<change::NodePropertyChanged>(NodeProperty::opacity), 2U);
  EXPECT_EQ(newRecords(), 0U);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_TRUE(document->hasOpenUnsavedChange());
  EXPECT_EQ(document->undoActionName(), "Opacity");
}

TEST_P(OpenOpacityEditTest, KeepingLeavesOneRecordFromTheFirstValueToTheLast) {
  expectCycle(*document, [&] {
    const auto edit = begin();
    edit->show(0.75F);
    edit->show(0.5F);
    edit->keep();
    EXPECT_EQ(newRecords(), 1U);
    EXPECT_EQ(document->undoStack.undoActionName(), "Opacity");
    EXPECT_TRUE(document->isDirty.value());
    EXPECT_FALSE(edit->isOpen());
  });
  document->redo();
  EXPECT_EQ(opacity(), 0.5F);
}

TEST_P(OpenOpacityEditTest, AWayAndBackRecordsNothing) {
  const auto edit = begin();
  edit->show(0.5F);
  edit->show(1.0F);
  edit->keep();
  EXPECT_EQ(newRecords(), 0U);
  EXPECT_FALSE(document->isDirty.value());
  EXPECT_EQ(document->undoActionName(), document->undoStack.undoActionName());
}

TEST_P(OpenOpacityEditTest, TwoEditsOfOneNodeAreOneRecord) {
  for (const float value : {0.5F, 0.25F}) {
    const auto edit = begin();
    edit->show(value);
  }
  EXPECT_EQ(newRecords(), 1U);
  document->undo();
  EXPECT_EQ(opacity(), 1.0F);
}

TEST_P(OpenOpacityEditTest, TakingBackRestoresTheFirstValue) {
  const auto edit = begin();
  edit->show(0.5F);
  edit->takeBack();
  EXPECT_EQ(opacity(), 1.0F);
  EXPECT_EQ(newRecords(), 0U);
  EXPECT_FALSE(document->hasOpenUnsavedChange());
}

TEST_P(OpenOpacityEditTest, UndoTakesBackWhatIsShown) {
  const auto edit = begin();
  edit->show(0.5F);
  document->undo();
  EXPECT_FALSE(edit->isOpen());
  EXPECT_EQ(opacity(), 1.0F);
  EXPECT_EQ(document->redoActionName(), "Opacity");
  edit->show(0.25F);
  EXPECT_EQ(opacity(), 1.0F) << "a closed edit shows nothing more";
}

TEST_P(OpenOpacityEditTest, ACommandOnAnOpacityEndsIt) {
  const auto edit = begin();
  edit->show(0.5F);
  document->setOpacity(id, 0.25F);
  EXPECT_FALSE(edit->isOpen());
  EXPECT_EQ(newRecords(), 1U) << "both are one record";
  document->undo();
  EXPECT_EQ(opacity(), 1.0F);
}

TEST_P(OpenOpacityEditTest, AnEditOfAnotherNodeEndsIt) {
  const auto edit = begin();
  edit->show(0.5F);
  const auto other = OpenOpacityEdit::begin(document, idOf(*document, "Other"));
  EXPECT_FALSE(edit->isOpen());
  EXPECT_TRUE(other->isOpen());
  EXPECT_EQ(newRecords(), 1U);
}

TEST_P(OpenOpacityEditTest, RemovingTheNodeEndsItFirst) {
  const auto edit = begin();
  edit->show(0.5F);
  document->removeNode(id);
  EXPECT_FALSE(edit->isOpen());
  document->undo();
  EXPECT_EQ(opacity(), 0.5F);
  document->undo();
  EXPECT_EQ(opacity(), 1.0F);
}

TEST_P(OpenOpacityEditTest, ClosingTheDocumentClosesIt) {
  const auto edit = begin();
  document.reset();
  EXPECT_FALSE(edit->isOpen());
  edit->show(0.5F);
  edit->keep();
}

TEST_P(OpenOpacityEditTest, ThumbnailsWaitForItsEnd) {
  const auto edit = begin();
  EXPECT_EQ(document->thumbnailManager->continuousEditingCount(), 1);
  edit->keep();
  EXPECT_EQ(document->thumbnailManager->continuousEditingCount(), 0);
}

TEST_P(OpenOpacityEditTest, BeginsOnlyOnANode) {
  EXPECT_EQ(OpenOpacityEdit::begin(document, QUuid::createUuid()), nullptr);
}

}  // namespace
}  // namespace orvanel
