// How the process ends when it can't go on, and how our own mistakes come to light. Any thread.
#pragma once

#include <string_view>

namespace orvanel {

/// Prints the message to standard error and aborts the process.
[[noreturn]] void fatalFault(std::string_view message);

/// Whether `expectThat` ends the process. On in debug builds, off otherwise; test programs turn it on.
void setMistakesFatal(bool areFatal);

/// For conditions that only a mistake in this program can break. Returns `holds`: where mistakes aren't fatal
/// the caller ends quietly when it is false.
[[nodiscard]] bool expectThat(bool holds, std::string_view message);

}  // namespace orvanel
