#include "raster/FatalFault.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace orvanel {
namespace {

#ifdef NDEBUG
constinit std::atomic<bool> areMistakesFatal = false;
#else
constinit std::atomic<bool> areMistakesFatal = true;
#endif

/// A sanitizer has its own handlers, which tell more.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

constinit std::atomic<const char*> lastWords = nullptr;
constinit std::atomic<bool> haveBeenSaid = false;

/// Only what a signal handler may call.
void sayNow(const char* sentence) {
  constexpr char lineEnd = '\n';
  const bool isSaid = ::write(STDERR_FILENO, sentence, std::strlen(sentence)) >= 0 &&
                      ::write(STDERR_FILENO, &lineEnd, 1) >= 0;
  static_cast<void>(isSaid);
}

void handleFaultSignal(int signal) {
  const int error = errno;
  if (!haveBeenSaid.exchange(true)) {
    sayNow("The program has ended because of a fault.");
    if (const char* sentence = lastWords.load()) sayNow(sentence);
  }
  errno = error;
  // The handler has gone by now, so that this ends the process as soon as it returns.
  ::raise(signal);
}

}  // namespace

void fatalFault(std::string_view message) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
  if (const char* sentence = lastWords.load()) std::fprintf(stderr, "%s\n", sentence);
  std::fflush(stderr);
  haveBeenSaid = true;
  std::abort();
}

void setLastWords(const char* sentence) noexcept {
  lastWords = sentence;
}

void endFaultsOnTerminate() noexcept {
  std::set_terminate([] { fatalFault("An unexpected error has ended the program."); });
}

void speakBeforeFaultSignals() noexcept {
  if (isSanitized) return;
  // A stack that has overflowed is no place to speak from.
  constexpr std::size_t stackBytes = std::size_t{64} << 10U;
  alignas(16) static std::array<std::byte, stackBytes> place;
  const stack_t stack{.ss_sp = place.data(), .ss_flags = 0, .ss_size = place.size()};
  ::sigaltstack(&stack, nullptr);
  struct sigaction action {};
  action.sa_handler = handleFaultSignal;
  action.sa_flags = static_cast<int>(SA_ONSTACK | SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) ::sigaction(signal, &action, nullptr);
}

void setMistakesFatal(bool areFatal) {
  areMistakesFatal = areFatal;
}

bool expectThat(bool holds, std::string_view message) {
  if (!holds && areMistakesFatal) fatalFault(message);
  return holds;
}

}  // namespace orvanel
