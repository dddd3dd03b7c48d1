// How the process ends when it can't go on, and how our own mistakes come to light. Any thread.
#pragma once

#include <string_view>

namespace orvanel {

/// Prints the message to standard error and aborts the process.
[[noreturn]] void fatalFault(std::string_view message);

/// A sentence that follows the message of any fault from now on, and must live as long as the process; null
/// for none. For what a user should know when the program has ended.
void setLastWords(const char* sentence) noexcept;

/// Lets an exception that nobody catches end the process as a fault does.
void endFaultsOnTerminate() noexcept;

/// Lets the signals of faults (SIGSEGV, SIGBUS, SIGILL, SIGFPE and SIGABRT) say the last words before they
/// end the process as ever, with a core dump where the user has them. Does nothing in sanitized builds, which
/// have words of their own. Main thread, once.
void speakBeforeFaultSignals() noexcept;

/// Whether `expectThat` ends the process. On in debug builds, off otherwise; test programs turn it on.
void setMistakesFatal(bool areFatal);

/// For conditions that only a mistake in this program can break. Returns `holds`: where mistakes aren't fatal
/// the caller ends quietly when it is false.
[[nodiscard]] bool expectThat(bool holds, std::string_view message);

}  // namespace orvanel
