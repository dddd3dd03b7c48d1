#include "raster/FatalFault.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace orvanel {
namespace {

#ifdef NDEBUG
constinit std::atomic<bool> areMistakesFatal = false;
#else
constinit std::atomic<bool> areMistakesFatal = true;
#endif

constinit std::atomic<const char*> lastWords = nullptr;

}  // namespace

void fatalFault(std::string_view message) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
  if (const char* sentence = lastWords.load()) std::fprintf(stderr, "%s\n", sentence);
  std::fflush(stderr);
  std::abort();
}

void setLastWords(const char* sentence) noexcept {
  lastWords = sentence;
}

void endFaultsOnTerminate() noexcept {
  std::set_terminate([] { fatalFault("An unexpected error has ended the program."); });
}

void setMistakesFatal(bool areFatal) {
  areMistakesFatal = areFatal;
}

bool expectThat(bool holds, std::string_view message) {
  if (!holds && areMistakesFatal) fatalFault(message);
  return holds;
}

}  // namespace orvanel
