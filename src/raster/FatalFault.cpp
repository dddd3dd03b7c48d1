#include "raster/FatalFault.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace orvanel {
namespace {

#ifdef NDEBUG
constinit std::atomic<bool> areMistakesFatal = false;
#else
constinit std::atomic<bool> areMistakesFatal = true;
#endif

}  // namespace

void fatalFault(std::string_view message) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
  std::fflush(stderr);
  std::abort();
}

void setMistakesFatal(bool areFatal) {
  areMistakesFatal = areFatal;
}

bool expectThat(bool holds, std::string_view message) {
  if (!holds && areMistakesFatal) fatalFault(message);
  return holds;
}

}  // namespace orvanel
