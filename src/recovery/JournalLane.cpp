#include "recovery/JournalLane.h"

#include <sys/resource.h>
#include <unistd.h>

#include <ctime>
#include <utility>

namespace orvanel {
namespace {

/// Everything that a user waits for comes first.
constexpr int niceness = 10;

}  // namespace

std::chrono::nanoseconds threadTime() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

JournalLane::JournalLane() {
  pool_.setMaxThreadCount(1);
}

JournalLane::~JournalLane() {
  pool_.waitForDone();
}

void JournalLane::run(std::function<void()> work) {
  pool_.start([this, work = std::move(work)]() mutable {
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), niceness);
    const auto start = threadTime();
    std::exchange(work, {})();
    used_ += (threadTime() - start).count();
  });
}

}  // namespace orvanel
