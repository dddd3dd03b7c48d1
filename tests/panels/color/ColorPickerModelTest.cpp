#include "panels/color/ColorPickerModel.h"

#include <gtest/gtest.h>

namespace orvanel {
namespace {

using RGB = ColorPickerModel::RGB;

TEST(ColorPickerModelTest, PureColorsHaveTheirHues) {
  ColorPickerModel model;
  const std::pair<RGB, double> colors[]{{{255, 0, 0}, 0.0},     {{255, 255, 0}, 1.0 / 6},
                                        {{0, 255, 0}, 2.0 / 6}, {{0, 255, 255}, 0.5},
                                        {{0, 0, 255}, 4.0 / 6}, {{255, 0, 255}, 5.0 / 6}};
  for (const auto& [rgb, hue] : colors) {
    model.setRGB(rgb.red, rgb.green, rgb.blue);
    EXPECT_NEAR(model.hue.value(), hue, 1e-12);
    EXPECT_EQ(model.saturation.value(), 1.0);
    EXPECT_EQ(model.brightness.value(), 1.0);
  }
}

TEST(ColorPickerModelTest, EveryColorComesBackExactly) {
  ColorPickerModel model;
  for (int red = 0; red <= 255; red += 5) {
    for (int green = 0; green <= 255; green += 3) {
      for (int blue = 0; blue <= 255; blue += 5) {
        model.setRGB(red, green, blue);
        ASSERT_EQ(model.rgb(), (RGB{red, green, blue})) << red << ' ' << green << ' ' << blue;
      }
    }
  }
}

TEST(ColorPickerModelTest, ComponentsAreClamped) {
  ColorPickerModel model;
  model.setRGB(300, -5, 1000);
  EXPECT_EQ(model.rgb(), (RGB{255, 0, 255}));
}

TEST(ColorPickerModelTest, AColorIsRoundedToEightBits) {
  ColorPickerModel model;
  model.setColor({0.5F, 0.2501F, 1.0F, 0.5F});
  EXPECT_EQ(model.rgb(), (RGB{128, 64, 255}));
  EXPECT_EQ(model.color(), (DisplayColor{128.0F / 255.0F, 64.0F / 255.0F, 1.0F, 1.0F}));
}

TEST(ColorPickerModelTest, ColorsWithoutAHueKeepTheLastOne) {
  ColorPickerModel model;
  model.setRGB(0, 255, 255);
  for (const RGB& grey : {RGB{0, 0, 0}, RGB{255, 255, 255}, RGB{128, 128, 128}}) {
    model.setRGB(grey.red, grey.green, grey.blue);
    EXPECT_EQ(model.hue.value(), 0.5);
    EXPECT_EQ(model.saturation.value(), 0.0);
  }
}

TEST(ColorPickerModelTest, AHueThatWasChosenForAGreyIsKeptToo) {
  ColorPickerModel model;
  model.setRGB(128, 128, 128);
  model.setHue(0.25);
  model.setRGB(64, 64, 64);
  EXPECT_EQ(model.hue.value(), 0.25);
}

TEST(ColorPickerModelTest, BrightnessToNothingAndBackKeepsTheHue) {
  ColorPickerModel model;
  model.setHue(0.5);
  model.setSaturationAndBrightness(0.8, 0.9);
  model.setSaturationAndBrightness(0.8, 0.0);
  EXPECT_EQ(model.rgb(), (RGB{0, 0, 0}));
  model.setSaturationAndBrightness(0.8, 0.9);
  EXPECT_EQ(model.hue.value(), 0.5);
}

TEST(ColorPickerModelTest, EqualValuesNotifyNobody) {
  ColorPickerModel model;
  model.setRGB(10, 20, 30);
  int notified = 0;
  const auto count = [&] { ++notified; };
  const auto hue = model.hue.addNotifier(count);
  const auto saturation = model.saturation.addNotifier(count);
  const auto brightness = model.brightness.addNotifier(count);
  model.setRGB(10, 20, 30);
  EXPECT_EQ(notified, 0);
  model.setRGB(20, 40, 60);
  EXPECT_EQ(notified, 1) << "only the brightness differs";
}

TEST(ColorPickerModelTest, ObserversSeeAWholeChange) {
  ColorPickerModel model;
  std::vector<RGB> seen;
  const auto hue = model.hue.addNotifier([&] { seen.push_back(model.rgb()); });
  model.setRGB(0, 0, 255);
  EXPECT_EQ(seen, std::vector<RGB>({RGB{0, 0, 255}}));
}

}  // namespace
}  // namespace orvanel
