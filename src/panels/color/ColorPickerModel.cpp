#include "panels/color/ColorPickerModel.h"

#include <algorithm>
#include <cmath>

namespace orvanel {

namespace {

constexpr int largest = 255;
/// Below this a colour is taken as black, white or grey.
constexpr double colorless = 0.001;

int eightBits(double component) {
  return static_cast<int>(std::lround(std::clamp(component, 0.0, 1.0) * largest));
}

/// The hue of a colour whose components aren't all equal.
double hueOf(double red, double green, double blue, double range) {
  constexpr double sixth = 1.0 / 6.0;
  const double strongest = std::max({red, green, blue});
  double sixths = 0.0;
  if (strongest == red) {
    sixths = (green - blue) / range;
  } else if (strongest == green) {
    sixths = (blue - red) / range + 2.0;
  } else {
    sixths = (red - green) / range + 4.0;
  }
  return sixths < 0.0 ? sixths * sixth + 1.0 : sixths * sixth;
}

}  // namespace

void ColorPickerModel::setColor(const DisplayColor& color) {
  setRGB(eightBits(double{color.red}), eightBits(double{color.green}), eightBits(double{color.blue}));
}

void ColorPickerModel::setRGB(int red, int green, int blue) {
  const auto part = [](int component) { return std::clamp(component, 0, largest) / double{largest}; };
  const double r = part(red);
  const double g = part(green);
  const double b = part(blue);
  const double strongest = std::max({r, g, b});
  const double range = strongest - std::min({r, g, b});
  const double newSaturation = strongest > 0.0 ? range / strongest : 0.0;
  if (newSaturation > colorless && strongest > colorless) preservedHue_ = hueOf(r, g, b, range);
  set(newSaturation, strongest);
}

void ColorPickerModel::setHue(double newHue) {
  preservedHue_ = std::clamp(newHue, 0.0, 1.0);
  hue = preservedHue_;
}

void ColorPickerModel::setSaturationAndBrightness(double newSaturation, double newBrightness) {
  set(std::clamp(newSaturation, 0.0, 1.0), std::clamp(newBrightness, 0.0, 1.0));
}

void ColorPickerModel::set(double newSaturation, double newBrightness) {
  Qt::beginPropertyUpdateGroup();
  hue = preservedHue_;
  saturation = newSaturation;
  brightness = newBrightness;
  Qt::endPropertyUpdateGroup();
}

ColorPickerModel::RGB ColorPickerModel::rgb() const {
  // Each component falls and rises along the circle of hues, a third of it after the one before.
  const auto component = [this](double sixthsBefore) {
    constexpr double circle = 6.0;
    const double place = std::fmod(sixthsBefore + hue.value() * circle, circle);
    const double missing = std::clamp(std::min(place, 4.0 - place), 0.0, 1.0);
    return eightBits(brightness.value() * (1.0 - saturation.value() * missing));
  };
  return {component(5.0), component(3.0), component(1.0)};
}

DisplayColor ColorPickerModel::color() const {
  const auto part = [](int component) { return static_cast<float>(component) / float{largest}; };
  const RGB now = rgb();
  return {part(now.red), part(now.green), part(now.blue), 1.0F};
}

}  // namespace orvanel
