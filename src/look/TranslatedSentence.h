// What the engine says about a failure, in the user's language. Main thread only.
#pragma once

#include <QString>

namespace orvanel::look {

/// The translation of one or several sentences. What they tell of the file stays as it is, and so does a
/// sentence that isn't known, such as one of the system or of a decoder.
[[nodiscard]] QString translatedSentence(const QString& text);

}  // namespace orvanel::look
