#include "recovery/JournalLane.h"

#include <sys/resource.h>
#include <unistd.h>

#include <ctime>
#include <utility>

namespace orvanel {
namespace {

/// Everything that a user waits for comes first.
constexpr int niceness = 10;

std::int64_t threadTime() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

JournalLane::JournalLane() {
  pool_.setMaxThreadCount(1);
}

JournalLane::~JournalLane() {
  pool_.waitForDone();
}

void JournalLane::run(std::function<void()> work) {
  pool_.start([this, work = std::move(work)]() mutable {
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), niceness);
    const std::int64_t start = threadTime();
    std::exchange(work, {})();
    used_ += threadTime() - start;
  });
}

}  // namespace orvanel
