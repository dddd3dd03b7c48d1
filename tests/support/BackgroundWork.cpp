// Linked into every test program that uses the engine. Surfaces that don't fit a kernel end the program, and
// background work ends before it does, or what is still queued would count as leaked.
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <thread>
#include <utility>

#include "raster/Background.h"
#include "raster/FatalFault.h"

#ifdef __SANITIZE_ADDRESS__
namespace {

/// Threads of Qt's pool are detached when they end. The leak check, which comes last of all, crashes now and
/// then when it meets one on its last steps.
class LastSteps {
 public:
  LastSteps() = default;
  LastSteps(const LastSteps&) = delete;
  LastSteps& operator=(const LastSteps&) = delete;
  ~LastSteps() {
    constexpr int mostRounds = 100;
    std::ptrdiff_t before = 0;
    for (int round = 0; round < mostRounds; ++round) {
      std::error_code failure;
      const std::filesystem::directory_iterator threads("/proc/self/task", failure);
      const std::ptrdiff_t now = std::distance(begin(threads), end(threads));
      if (std::exchange(before, now) == now) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
};

const LastSteps lastSteps;

}  // namespace

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
