#include "tools/ToolSlot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace orvanel {
namespace {

using testing::ElementsAre;

TEST(ToolSlotTest, IdentityJoinsRawValues) {
  EXPECT_EQ(ToolSlot::single(Tool::hand).identity().toStdString(), "hand");
  EXPECT_EQ(ToolSlot::group({Tool::lassoSelect, Tool::polygonalLassoSelect}).identity().toStdString(),
            "lassoSelect-polygonalLassoSelect");
}

TEST(ToolSlotTest, AGroupOfOneIsStillAGroup) {
  const ToolSlot slot = ToolSlot::group({Tool::brush});
  EXPECT_TRUE(slot.isGroup());
  EXPECT_THAT(slot.tools(), ElementsAre(Tool::brush));
  EXPECT_FALSE(slot == ToolSlot::single(Tool::brush));
}

TEST(ToolSlotTest, ThePaletteHasSevenSlotsInOrder) {
  std::vector<std::string> identities;
  for (const ToolSlot& slot : toolSlots()) identities.push_back(slot.identity().toStdString());
  EXPECT_THAT(identities, ElementsAre("hand", "move", "rectangleSelect-ellipseSelect",
                                      "lassoSelect-polygonalLassoSelect", "magicWand", "eyedropper", "zoom"));
}

TEST(ToolSlotTest, SomeToolsHaveNoSlot) {
  for (const Tool tool : {Tool::brush, Tool::eraser, Tool::freeTransform}) {
    EXPECT_TRUE(std::none_of(toolSlots().begin(), toolSlots().end(), [&](const ToolSlot& slot) {
      const std::vector<Tool> tools = slot.tools();
      return std::find(tools.begin(), tools.end(), tool) != tools.end();
    }));
  }
}

}  // namespace
}  // namespace orvanel
