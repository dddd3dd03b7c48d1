// Linked into every test program that uses the engine. Surfaces that don't fit a kernel end the program, and
// background work ends before it does, or what is still queued would count as leaked.
#include <gtest/gtest.h>

#include "raster/Background.h"
#include "raster/FatalFault.h"

#ifdef __SANITIZE_ADDRESS__
// What is recorded of the thread-local memory of libraries that are loaded late may be wrong, and the leak
// check crashes where it follows that.
extern "C" const char* __asan_default_options() {
  return "intercept_tls_get_addr=0";
}

// The C library keeps the last result of loading a library for each thread, and never frees that of a thread
// that is still alive when the process ends.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:_dlerror_run\n";
}
#endif

namespace orvanel {
namespace {

class BackgroundWork : public testing::Environment {
 public:
  void SetUp() override { setMistakesFatal(true); }
  void TearDown() override { waitForBackgroundWork(); }
};

[[maybe_unused]] const testing::Environment* const registered =
    testing::AddGlobalTestEnvironment(new BackgroundWork);

}  // namespace
}  // namespace orvanel
