#include "model/DisplayColor.h"

#include <algorithm>
#include <cmath>

namespace orvanel {
namespace {

unsigned eightBits(float component) {
  return static_cast<unsigned>(std::lround(std::clamp(component, 0.0F, 1.0F) * 255.0F));
}

}  // namespace

QString DisplayColor::hexText() const {
  return QString::asprintf("%02X%02X%02X", eightBits(red), eightBits(green), eightBits(blue));
}

std::optional<DisplayColor> DisplayColor::fromHexText(const QString& text) {
  if (text.size() != 6) return std::nullopt;
  const bool isNegative = text.front() == u'-';
  const bool isSigned = isNegative || text.front() == u'+';
  int value = 0;
  for (qsizetype i = isSigned ? 1 : 0; i < text.size(); ++i) {
    const char16_t c = text[i].unicode();
    if (c >= u'0' && c <= u'9') {
      value = value * 16 + (c - u'0');
    } else if ((c | 0x20) >= u'a' && (c | 0x20) <= u'f') {
      value = value * 16 + ((c | 0x20) - u'a' + 10);
    } else {
      return std::nullopt;
    }
  }
  // A negative number yields the low bytes of its two's complement.
  const auto bits = static_cast<unsigned>(isNegative ? -value : value);
  const auto component = [bits](unsigned shift) {
    return static_cast<float>((bits >> shift) & 255U) / 255.0F;
  };
  return DisplayColor{component(16), component(8), component(0), 1.0F};
}

Color4 channelValues(const DisplayColor& color, ColorMode mode) {
  if (!isGrayscale(mode)) return {color.red, color.green, color.blue, color.alpha};
  // In double precision the three weights sum to exactly 1, so white stays white.
  const double weighted = 0.299 * static_cast<double>(color.red) + 0.587 * static_cast<double>(color.green) +
                          0.114 * static_cast<double>(color.blue);
  const auto grey = static_cast<float>(weighted);
  return {grey, grey, grey, color.alpha};
}

}  // namespace orvanel
