#include "model/Tool.h"

#include <gtest/gtest.h>

#include <set>

#include "model/ModelSupport.h"

namespace orvanel {
namespace {

TEST(ToolTest, AreInPaletteOrder) {
  ASSERT_EQ(allTools.size(), 12U);
  for (std::size_t i = 0; i < allTools.size(); ++i) EXPECT_EQ(static_cast<std::size_t>(allTools[i]), i);
  EXPECT_EQ(rawValue(allTools.front()), "hand");
  EXPECT_EQ(rawValue(allTools.back()), "freeTransform");
}

TEST(ToolTest, HaveTheirOwnIdentityNameAndIcon) {
  std::set<QString> identities;
  std::set<QString> titles;
  std::set<QString> icons;
  for (const Tool tool : allTools) {
    identities.insert(rawValue(tool));
    titles.insert(displayName(tool));
    icons.insert(iconName(tool));
  }
  EXPECT_EQ(identities.size(), allTools.size());
  EXPECT_EQ(titles.size(), allTools.size());
  EXPECT_EQ(icons.size(), allTools.size());
  EXPECT_EQ(rawValue(Tool::polygonalLassoSelect), "polygonalLassoSelect");
  EXPECT_EQ(displayName(Tool::polygonalLassoSelect), "Polygonal Lasso Select");
  EXPECT_EQ(iconName(Tool::polygonalLassoSelect), "skew");
}

TEST(ToolTest, ToolTipShowsTheLetterInParentheses) {
  EXPECT_EQ(toolTip(Tool::move), "Move (V)");
  EXPECT_EQ(toolTip(Tool::ellipseSelect), "Ellipse Select (M)");
}

TEST(ToolTest, FreeTransformHasNoLetter) {
  EXPECT_EQ(shortcutLetter(Tool::freeTransform), std::nullopt);
  EXPECT_EQ(toolTip(Tool::freeTransform), "Free Transform");
}

}  // namespace
}  // namespace orvanel
