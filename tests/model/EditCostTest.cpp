// What edits ask for above an opaque photo, whose tiles the flattened image shares: never less than they
// take, and nothing for tiles that stay shared.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/DocumentCompositor.h"
#include "model/MemorySupport.h"
#include "model/OpenOpacityEdit.h"
#include "model/VisibilitySweep.h"

namespace orvanel {
namespace {

using namespace test;

class EditsAboveAPhoto : public testing::Test {
 protected:
  static constexpr int across = 6;
  static constexpr std::uint64_t wholeImage = std::uint64_t{across} * across * tileBytes;

  /// "Photo" covers everything; "Small" has one tile, and lies in the folder "Group".
  void SetUp() override {
    document->rename(document->activeLayer()->id, QStringLiteral("Photo"));
    paintAllTiles(writable(pixelsOf("Photo")), TileTrait::opaque);
    document->addFolder(QStringLiteral("Group"));
    document->addLayer(QStringLiteral("Small"));
    paintTile(writable(pixelsOf("Small")), smallTile, TileTrait::none);
    put(document->needsCompositing, true);
    ASSERT_EQ(document->composite()->tile(0), pixelsOf("Photo")->tile(0));
    TextureSnapshot::waitForCompression();
  }

  [[nodiscard]] QUuid id(const char* name) const { return idOf(*document, QString::fromUtf8(name)); }
  [[nodiscard]] ConstTexture pixelsOf(const char* name) const {
    return nodeNamed(*document, QString::fromUtf8(name)).layer()->texture.value();
  }

  /// Expects an edit to ask for at least what it takes, and at most for this much.
  void expectCost(const char* name, std::uint64_t most, const std::function<void()>& edit) {
    SCOPED_TRACE(name);
    const std::uint64_t asked = askedBy(*document, edit);
    EXPECT_LE(asked, most);
    if (asked == 0) return;
    EXPECT_LE(takenBy(*document, edit), static_cast<std::int64_t>(asked));
  }

  static constexpr int smallTile = 8;
  DocumentPtr document = makeDocument(across * tileSide, across* tileSide);
};

TEST_F(EditsAboveAPhoto, OfTheTreeNeedMemoryForTheTilesThatAreNotShared) {
  expectCost("hide", 0, [&] { document->setVisible(id("Small"), false); });
  expectCost("show", tileBytes, [&] { document->setVisible(id("Small"), true); });
  expectCost("opacity", tileBytes, [&] { document->setOpacity(id("Small"), 0.5F); });
  expectCost("isolate", tileBytes, [&] { document->setOpacity(id("Group"), 0.5F); });
  expectCost("another opacity", 0, [&] { document->setOpacity(id("Group"), 0.7F); });
  expectCost("move", tileBytes, [&] { document->moveNode(id("Small"), std::nullopt, 1); });
  expectCost("move back", 2 * tileBytes, [&] { document->moveNode(id("Small"), id("Group")); });
  expectCost("duplicate", 2 * tileBytes, [&] { document->duplicateNode(id("Small")); });
  expectCost("remove", tileBytes, [&] { document->removeNode(id("Small")); });
  for (int i = 0; i < 7; ++i) expectCost("undo", 2 * tileBytes, [&] { document->undo(); });
  for (int i = 0; i < 7; ++i) expectCost("redo", 2 * tileBytes, [&] { document->redo(); });
}

TEST_F(EditsAboveAPhoto, NeedTheWholeImageWhereThePhotoNoLongerCovers) {
  document->duplicateNode(id("Photo"));
  const QUuid upper = id("Photo Copy");
  expectCost("shared by both", 0, [&] { document->moveNode(upper, std::nullopt, 2); });
  expectCost("hide the upper", tileBytes, [&] { document->setVisible(upper, false); });
  paintAllTiles(writable(pixelsOf("Photo")), TileTrait::none);
  put(document->needsCompositing, true);
  document->setVisible(upper, true);
  static_cast<void>(document->composite());
  const auto hide = [&] { document->setVisible(upper, false); };
  EXPECT_EQ(askedBy(*document, hide), wholeImage);
  EXPECT_EQ(takenBy(*document, hide), static_cast<std::int64_t>(wholeImage));
  const auto show = [&] { document->setVisible(upper, true); };
  EXPECT_EQ(askedBy(*document, show), 0U);
  show();
  static_cast<void>(document->composite());
  EXPECT_EQ(askedBy(*document, [&] { document->setOpacity(upper, 0.5F); }), wholeImage);
  EXPECT_EQ(askedBy(*document, [&] { document->setBlendMode(upper, BlendMode::multiply); }), wholeImage);
  EXPECT_EQ(askedBy(*document, [&] { document->removeNode(upper); }), wholeImage);
  EXPECT_EQ(askedBy(*document, [&] { document->moveNode(upper, std::nullopt, 0); }), wholeImage);
  EXPECT_NE(OpenOpacityEdit::begin(document, upper), nullptr);
}

TEST_F(EditsAboveAPhoto, OfPixelsNeedMemoryForTheTilesThatTheyChange) {
  activate(*document, QStringLiteral("Small"));
  expectCost("invert", 2 * tileBytes, [&] { document->invertActive(); });
  expectCost("undo", 2 * tileBytes, [&] { document->undo(); });
  expectCost("clear", tileBytes, [&] { document->clearActive(); });
  expectCost("undo", 2 * tileBytes, [&] { document->undo(); });
  const auto fill = [&] { document->fillSelection({0.5F, 0.5F, 0.5F, 0.5F}); };
  EXPECT_EQ(askedBy(*document, fill), wholeImage - tileBytes) << "the photo shows through everywhere";
  EXPECT_EQ(takenBy(*document, fill), static_cast<std::int64_t>(wholeImage - tileBytes));
}

TEST_F(EditsAboveAPhoto, OfMasksNeedMemoryWhereTheLayerHasPixels) {
  activate(*document, QStringLiteral("Small"));
  const std::shared_ptr<Layer> small = document->activeLayer();
  document->ensureSelection();
  writableSelection(*document).setRect({100, 100, 400, 400}, 20.0F, document->context());
  expectCost("add", tileBytes, [&] { document->addLayerMask(small); });
  expectCost("disable", tileBytes, [&] { document->setMaskEnabled(small->id, false); });
  expectCost("enable", tileBytes, [&] { document->setMaskEnabled(small->id, true); });
  expectCost("apply", 2 * tileBytes, [&] { document->applyLayerMask(small); });
  expectCost("undo", 2 * tileBytes, [&] { document->undo(); });
  expectCost("remove", tileBytes, [&] { document->removeLayerMask(small); });
  expectCost("undo", tileBytes, [&] { document->undo(); });
}

TEST_F(EditsAboveAPhoto, AFrozenImageNeedsMemoryForTheTilesThatAreNotShared) {
  put(document->needsCompositing, true);
  document->setOpacity(id("Small"), 0.5F);
  const auto frozen = document->freezeComposite();
  EXPECT_EQ(frozen->bytesToFinish(), tileBytes);
  const std::uint64_t before = tileMemory::bytesInUse();
  ASSERT_NE(frozen->surface(), nullptr);
  EXPECT_EQ(tileMemory::bytesInUse(), before + tileBytes);
}

TEST_F(EditsAboveAPhoto, ATemporaryThatIsNoLongerUsedIsNotWrittenTo) {
  document->setOpacity(id("Group"), 0.5F);
  document->addFolder(QStringLiteral("Other"));
  const QUuid other = id("Other");
  document->setOpacity(other, 0.5F);
  document->addLayer(QStringLiteral("Second"));
  paintTile(writable(pixelsOf("Second")), 20, TileTrait::none);
  put(document->needsCompositing, true);
  static_cast<void>(document->composite());
  expectCost("pass through", tileBytes, [&] { document->setOpacity(other, 1.0F); });
  // The folder's temporary stands, but nothing uses it.
  const auto fade = [&] { document->setOpacity(id("Photo"), 0.5F); };
  const std::uint64_t asked = askedBy(*document, fade);
  EXPECT_EQ(asked, wholeImage - 2 * tileBytes);
  EXPECT_EQ(takenBy(*document, fade), static_cast<std::int64_t>(asked));
}

TEST_F(EditsAboveAPhoto, EqualValuesAskForNothingAndTellNobody) {
  const std::shared_ptr<Layer> photo = nodeNamed(*document, QStringLiteral("Photo")).layer();
  addMask(*photo);
  put(photo->mask.value()->isEnabled, false);
  put(document->needsCompositing, true);
  static_cast<void>(document->composite());
  const std::size_t records = document->undoStack.operations().size();
  document->setDirty(false);
  const ChangeRecorder changes(*document);
  const ScopedMemoryLimit limit(0);
  document->setMaskEnabled(photo->id, false);
  document->setMaskEnabled(id("Small"), true);
  document->setVisible(std::vector{id("Photo"), id("Group"), id("Photo")}, true);
  document->setVisible(std::vector<QUuid>{}, false);
  VisibilitySweep sweep(document, true);
  sweep.add(id("Photo"));
  sweep.add(id("Group"));
  EXPECT_TRUE(sweep.isOpen());
  sweep.end();
  EXPECT_EQ(changes.batches, 0);
  EXPECT_EQ(document->undoStack.operations().size(), records);
  EXPECT_FALSE(document->isDirty.value());
}

}  // namespace
}  // namespace orvanel
