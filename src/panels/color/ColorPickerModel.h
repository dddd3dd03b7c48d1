// The colour that the picker edits: hue, saturation and brightness, seen also as 8-bit RGB. Owned by the
// picker's window; main thread only. Observers are notified only when a value really changes.
#pragma once

#include <QProperty>

#include "model/DisplayColor.h"

namespace orvanel {

class ColorPickerModel {
 public:
  /// 8-bit components.
  struct RGB {
    int red = 0;
    int green = 0;
    int blue = 0;
    friend bool operator==(const RGB&, const RGB&) = default;
  };

  // From 0 to 1.
  QProperty<double> hue{0.0};
  QProperty<double> saturation{0.0};
  QProperty<double> brightness{0.0};
  /// The colour that the picker was opened with.
  QProperty<DisplayColor> originalColor{DisplayColor::black()};

  void setColor(const DisplayColor& color);
  /// Components are clamped to 0 .. 255. Black, white and greys leave the hue as it was last seen.
  void setRGB(int red, int green, int blue);
  void setHue(double newHue);
  void setSaturationAndBrightness(double newSaturation, double newBrightness);

  [[nodiscard]] RGB rgb() const;
  /// Opaque, in steps of 8 bits, so that it is exactly what the fields show.
  [[nodiscard]] DisplayColor color() const;

 private:
  /// With the preserved hue; observers see all three at once.
  void set(double newSaturation, double newBrightness);

  /// The hue of the last colour that had one.
  double preservedHue_ = 0.0;
};

}  // namespace orvanel
