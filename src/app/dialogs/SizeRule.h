// What may be typed as the size of a canvas: the one rule of all dialogs that ask for it. Any thread.
#pragma once

#include <QSize>
#include <QString>
#include <cstdint>
#include <optional>

namespace orvanel {

/// The decimal integer that was typed; nothing for any other text.
[[nodiscard]] std::optional<std::int64_t> typedNumber(const QString& text);

/// The size, if both sides are numbers from 1 to `maximumCanvasSide`.
[[nodiscard]] std::optional<QSize> allowedSize(std::optional<std::int64_t> width,
                                               std::optional<std::int64_t> height);

}  // namespace orvanel
