#include "model/Selection.h"

#include <gtest/gtest.h>

#include "raster/TileMemory.h"

namespace orvanel {
namespace {

TEST(SelectionTest, BeginsWithNothingSelected) {
  const auto selection = Selection::create(30, 20, MetalContext::shared());
  ASSERT_NE(selection, nullptr);
  EXPECT_EQ(selection->maskTexture->width, 30);
  EXPECT_EQ(selection->maskTexture->height, 20);
  EXPECT_EQ(selection->maskTexture->texture->format(), maskPixelFormat);
  EXPECT_TRUE(selection->maskTexture->texture->equals(Surface(maskPixelFormat, 30, 20)));
  EXPECT_EQ(selection->flags(), (Selection::Flags{false, false}));
}

TEST(SelectionTest, IsNotMadeWithoutASurface) {
  const tileMemory::ScopedSurfaceFailure failure(0);
  EXPECT_EQ(Selection::create(30, 20, MetalContext::shared()), nullptr);
}

TEST(SelectionTest, RestoresBothFlags) {
  const auto selection = Selection::create(3, 2, MetalContext::shared());
  selection->restoreFlags({true, true});
  EXPECT_TRUE(selection->hasSelection.value());
  EXPECT_TRUE(selection->isFullSelection.value());
  selection->restoreFlags({true, false});
  EXPECT_EQ(selection->flags(), (Selection::Flags{true, false}));
}

}  // namespace
}  // namespace orvanel
