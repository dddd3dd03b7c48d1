// What the rows of the layer panel show: ink where a part is, its strength and its colour.
#include <QContextMenuEvent>
#include <QImage>
#include <QMenu>
#include <algorithm>
#include <cmath>

#include "look/Look.h"
#include "panels/layers/LayerPanelSupport.h"

namespace orvanel {
namespace {

using namespace test;

class LayerRowPaintingTest : public LayerPanelTest {
 protected:
  void SetUp() override {
    for (const char* name : {"other", "a"}) document->addLayer(name);
    document->addFolder("F");
    document->addLayer("inner");
    document->selectNode(idOf(*document, "Background"));
    showPanel();
    QApplication::sendEvent(outline.viewport(), std::make_unique<QEvent>(QEvent::Leave).get());
  }

  /// What the row shows there now.
  [[nodiscard]] QImage shown(const QString& name, Part part, int margin = 0) {
    const QPoint somewhere = center(name, part);
    EXPECT_TRUE(outline.viewport()->rect().contains(somewhere));
    const QRect place = outline.rectOf(at(name), part).adjusted(-margin, -margin, margin, margin);
    return outline.viewport()->grab(place).toImage().convertToFormat(QImage::Format_RGB32);
  }
  /// How far the darkest pixel is from the background in the corner.
  [[nodiscard]] static int strength(const QImage& image) {
    int darkest = 255;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) darkest = std::min(darkest, qGray(image.pixel(x, y)));
    }
    return qGray(image.pixel(0, 0)) - darkest;
  }
  [[nodiscard]] static int count(const QImage& image, const QColor& color) {
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) found += image.pixelColor(x, y).rgb() == color.rgb() ? 1 : 0;
    }
    return found;
  }
  /// Once those in the making have come, so that none replaces it.
  void give(Property<Thumbnail>& place, const std::optional<QColor>& color) {
    ASSERT_TRUE(waitUntil([this] {
      return std::ranges::none_of(document->allLayers(),
                                  [](const auto& each) { return each->thumbnailDirty.value(); });
    }));
    QImage picture(48, 48, QImage::Format_ARGB32_Premultiplied);
    if (color) picture.fill(*color);
    put(place, color ? std::make_shared<const QImage>(picture) : Thumbnail());
    outline.viewport()->update();
  }
};

TEST_F(LayerRowPaintingTest, TheEyeOfSomethingHiddenStandsAtThreeTenths) {
  const int visible = strength(shown("a", Part::visibility));
  EXPECT_GT(visible, 100);
  document->setVisible(idOf(*document, "a"), false);
  EXPECT_NEAR(strength(shown("a", Part::visibility)), visible * 0.3, 4);
  document->setVisible(idOf(*document, "F"), false);
  EXPECT_NEAR(strength(shown("F", Part::visibility)), visible * 0.3, 4) << "folders too";
  EXPECT_EQ(strength(shown("inner", Part::visibility)), visible)
      << "an eye tells of its own node, not of the folder around it";
}

TEST_F(LayerRowPaintingTest, AClosedLockIsStrongerThanAnOpenOne) {
  const QImage open = shown("a", Part::lock);
  document->setLocked(idOf(*document, "a"), true);
  const QImage closed = shown("a", Part::lock);
  EXPECT_NE(open, closed);
  EXPECT_GT(strength(open), 20) << "the button shows where to click";
  EXPECT_GT(strength(closed), strength(open) + 20);
  document->setLocked(idOf(*document, "a"), false);
  EXPECT_EQ(shown("a", Part::lock), open);
}

TEST_F(LayerRowPaintingTest, TheChainShowsOnlyBesideAMaskAndWhetherItIsLinked) {
  document->addLayerMask(layer("a"));
  const QImage linked = shown("a", Part::chain);
  document->setMaskLinked(idOf(*document, "a"), false);
  const QImage unlinked = shown("a", Part::chain);
  EXPECT_GT(strength(linked), 100);
  EXPECT_GT(strength(unlinked), 20);
  EXPECT_NE(linked, unlinked);
  const QRect place = outline.rectOf(at("a"), Part::chain);
  document->removeLayerMask(layer("a"));
  QApplication::processEvents();
  const QImage name = outline.viewport()->grab(place).toImage().convertToFormat(QImage::Format_RGB32);
  EXPECT_NE(name, linked);
  EXPECT_NE(name, unlinked);
}

TEST_F(LayerRowPaintingTest, FoldersHaveAChevronAndAFolderThatOpenAndClose) {
  const QImage openChevron = shown("F", Part::disclosure);
  const QImage openFolder = shown("F", Part::icon);
  EXPECT_GT(strength(openChevron), 50);
  EXPECT_GT(strength(openFolder), 50);
  document->setExpanded(idOf(*document, "F"), false);
  EXPECT_NE(shown("F", Part::disclosure), openChevron);
  EXPECT_NE(shown("F", Part::icon), openFolder);
  EXPECT_GT(strength(shown("F", Part::disclosure)), 50);
  EXPECT_GT(strength(shown("F", Part::icon)), 50);
}

TEST_F(LayerRowPaintingTest, AThumbnailIsDrawnWithinItsPlace) {
  give(layer("a")->thumbnailImage, Qt::red);
  const QImage picture = shown("a", Part::thumbnail);
  EXPECT_EQ(count(picture, Qt::red), 46 * 46) << "all of it but the line around it";
}

TEST_F(LayerRowPaintingTest, AMissingPictureLeavesAnEmptyPlace) {
  give(layer("a")->thumbnailImage, std::nullopt);
  const QImage empty = shown("a", Part::thumbnail);
  EXPECT_EQ(count(empty, look::color::bar), 46 * 46);
  EXPECT_EQ(empty.pixelColor(0, 24).rgb(), look::color::border.rgb());
}

TEST_F(LayerRowPaintingTest, TheBracketsStandAroundWhatIsEditedInTheActiveRow) {
  document->addLayerMask(layer("a"));
  give(layer("a")->thumbnailImage, Qt::white);
  give(layer("a")->maskThumbnailImage, Qt::white);
  constexpr int room = 3;
  const auto isMarked = [&](const char* name, Part part) {
    return count(shown(name, part, room), look::color::accent) > 0;
  };
  EXPECT_FALSE(isMarked("a", Part::thumbnail)) << "not the active one";
  document->selectNode(idOf(*document, "a"));
  document->setMaskSelected(idOf(*document, "a"), false);
  EXPECT_TRUE(isMarked("a", Part::thumbnail));
  EXPECT_FALSE(isMarked("a", Part::maskThumbnail));
  document->setMaskSelected(idOf(*document, "a"), true);
  EXPECT_FALSE(isMarked("a", Part::thumbnail));
  EXPECT_TRUE(isMarked("a", Part::maskThumbnail));
  document->removeLayerMask(layer("a"));
  EXPECT_TRUE(isMarked("a", Part::thumbnail)) << "without a mask, the pixels";
  EXPECT_FALSE(isMarked("Background", Part::thumbnail));
}

TEST_F(LayerRowPaintingTest, ADisabledMaskIsCrossedOut) {
  document->addLayerMask(layer("a"));
  give(layer("a")->maskThumbnailImage, Qt::white);
  EXPECT_EQ(count(shown("a", Part::maskThumbnail), look::color::alert), 0);
  put(layer("a")->mask.value()->isEnabled, false);
  outline.viewport()->update();
  EXPECT_GT(count(shown("a", Part::maskThumbnail), look::color::alert), 40);
}

TEST_F(LayerRowPaintingTest, TheRowOfAnOpenMenuHasARing) {
  const auto ring = [&] { return count(shown("other", Part::name, 4), look::color::accent); };
  ASSERT_EQ(ring(), 0);
  const QPoint point = center("other", Part::name);
  QContextMenuEvent event(QContextMenuEvent::Mouse, point, outline.viewport()->mapToGlobal(point));
  QApplication::sendEvent(outline.viewport(), &event);
  EXPECT_GT(ring(), 50);
  for (QMenu* menu : outline.findChildren<QMenu*>()) menu->close();
  EXPECT_EQ(ring(), 0);
}

}  // namespace
}  // namespace orvanel
