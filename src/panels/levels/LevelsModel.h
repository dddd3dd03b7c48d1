// What the levels panel shows and edits: the levels, and the histogram of the layer as it was opened. Owned
// by the panel's window; main thread only. Observers are notified only when a value really changes.
#pragma once

#include <QProperty>

#include "model/LevelsAdjustment.h"

namespace orvanel {

class LevelsModel {
 public:
  static constexpr float smallestBlack = 0.0F;
  static constexpr float largestBlack = 254.0F;
  static constexpr float smallestWhite = 1.0F;
  static constexpr float largestWhite = 255.0F;
  static constexpr float smallestGamma = 0.1F;
  static constexpr float largestGamma = 9.99F;

  QProperty<float> blackPoint{Levels{}.blackPoint};
  QProperty<float> whitePoint{Levels{}.whitePoint};
  QProperty<float> gamma{Levels{}.gamma};
  QProperty<LevelsHistogram> histogram{LevelsHistogram{}};

  [[nodiscard]] Levels levels() const { return {blackPoint.value(), whitePoint.value(), gamma.value()}; }
  void reset() {
    blackPoint = Levels{}.blackPoint;
    whitePoint = Levels{}.whitePoint;
    gamma = Levels{}.gamma;
    histogram = LevelsHistogram{};
  }
};

}  // namespace orvanel
