// Settings that are not persistent. A plain value.
#pragma once

namespace orvanel {

struct AppPreferences {
  float checkerboardSize = 8.0F;
  int defaultCanvasWidth = 1024;
  int defaultCanvasHeight = 768;
  friend bool operator==(const AppPreferences&, const AppPreferences&) = default;
};

}  // namespace orvanel
