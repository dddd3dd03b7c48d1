// The eyedropper takes colours from what is seen.
#include <gtest/gtest.h>

#include "model/PixelSupport.h"
#include "tools/FakeCanvas.h"
#include "tools/navigation/EyedropperToolHandler.h"

namespace orvanel {
namespace {

using namespace test;

class EyedropperToolTest : public testing::TestWithParam<ColorMode> {
 protected:
  void press(QPointF at, std::uint32_t modifiers = 0) {
    eyedropper.mouseDown({.modifiers = modifiers, .characters = {}}, canvas.context(), at);
  }
  [[nodiscard]] DisplayColor foreground() const { return document->foregroundColor.value(); }
  [[nodiscard]] DisplayColor background() const { return document->backgroundColor.value(); }

  DocumentPtr document = makeDocument(40, 30, GetParam());
  FakeCanvas canvas{document};
  EyedropperToolHandler eyedropper;
};

TEST_P(EyedropperToolTest, TakesTheForegroundColourFromTheComposite) {
  // A white layer over grey ground, at half opacity.
  document->fillSelection({0.4F, 0.4F, 0.4F, 1.0F});
  document->addLayer(QStringLiteral("Veil"));
  document->fillSelection(DisplayColor::white());
  document->setOpacity(idOf(*document, QStringLiteral("Veil")), 0.5F);
  press({7.0, 9.0});
  EXPECT_NEAR(foreground().red, 0.7F, 0.003F);
  EXPECT_NEAR(foreground().green, 0.7F, 0.003F);
  EXPECT_NEAR(foreground().blue, 0.7F, 0.003F);
  EXPECT_EQ(foreground().alpha, 1.0F);
  EXPECT_EQ(background(), DisplayColor::white());
}

TEST_P(EyedropperToolTest, AltTakesTheBackgroundColour) {
  document->fillSelection({0.0F, 0.0F, 0.0F, 1.0F});
  document->setForegroundColor({0.1F, 0.2F, 0.3F, 1.0F});
  press({7.0, 9.0}, modifier::option);
  EXPECT_EQ(background(), DisplayColor::black());
  EXPECT_EQ(foreground(), (DisplayColor{0.1F, 0.2F, 0.3F, 1.0F}));
}

TEST_P(EyedropperToolTest, DraggingSamplesAsPressingDoes) {
  selectRect(*document, {20, 0, 20, 30});
  document->fillSelection(DisplayColor::black());
  writableSelection(*document).clear(document->context());
  press({5.0, 5.0});
  EXPECT_EQ(foreground(), DisplayColor::white());
  eyedropper.mouseDragged({}, canvas.context(), {20.0, 5.0});
  EXPECT_EQ(foreground(), DisplayColor::black());
}

TEST_P(EyedropperToolTest, SamplesTheWholePixelUnderThePointer) {
  selectRect(*document, {10, 10, 1, 1});
  document->fillSelection(DisplayColor::black());
  writableSelection(*document).clear(document->context());
  document->setForegroundColor({0.5F, 0.5F, 0.5F, 1.0F});
  document->setZoom(4.0);
  press({39.9, 41.0});
  EXPECT_EQ(foreground(), DisplayColor::white());
  press({40.0, 43.9});
  EXPECT_EQ(foreground(), DisplayColor::black());
}

TEST_P(EyedropperToolTest, OutsideTheCanvasNothingHappens) {
  for (const QPointF place :
       {QPointF(-0.1, 5.0), QPointF(5.0, -0.1), QPointF(40.0, 5.0), QPointF(5.0, 30.0)}) {
    press(place);
  }
  EXPECT_EQ(foreground(), DisplayColor::black());
  press({39.9, 29.9});
  EXPECT_EQ(foreground(), DisplayColor::white());
}

TEST_P(EyedropperToolTest, TransparencyIsTakenWithTheColour) {
  document->clearActive();
  press({5.0, 5.0});
  EXPECT_EQ(foreground(), (DisplayColor{0.0F, 0.0F, 0.0F, 0.0F}));
}

TEST_P(EyedropperToolTest, WithoutADocumentNothingHappens) {
  canvas.document.reset();
  press({5.0, 5.0});
  EXPECT_EQ(eyedropper.cursor(modifier::option, canvas.context()), CursorShape::crosshair);
}

INSTANTIATE_TEST_SUITE_P(Modes, EyedropperToolTest, testing::ValuesIn(allColorModes), modeName);

}  // namespace
}  // namespace orvanel
