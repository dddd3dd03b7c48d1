// Where no thread can be started, a journal waits, and says so.
#include <pthread.h>

#include "recovery/Recovery.h"
#include "recovery/RecoveryFixture.h"

namespace orvanel {
namespace {

using testing::unsavedDocument;
using ThreadShortageTest = testing::RecoveryTest;

/// No thread can be started while it lives, because none gets a stack.
class ThreadShortage {
 public:
  ThreadShortage() {
    pthread_attr_t huge;
    ::pthread_attr_init(&huge);
    ::pthread_getattr_default_np(&before_);
    ::pthread_attr_setstacksize(&huge, std::size_t{1} << 50U);
    ::pthread_setattr_default_np(&huge);
    ::pthread_attr_destroy(&huge);
  }
  ~ThreadShortage() {
    ::pthread_setattr_default_np(&before_);
    ::pthread_attr_destroy(&before_);
  }
  ThreadShortage(const ThreadShortage&) = delete;
  ThreadShortage& operator=(const ThreadShortage&) = delete;

 private:
  pthread_attr_t before_{};
};

TEST_F(ThreadShortageTest, aRecordIsTriedAgain) {
  RecoverySettings quick = settings();
  quick.interval = quick.retryInterval = std::chrono::milliseconds(1);
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(quick);
  {
    const ThreadShortage shortage;
    recovery.follow(document);
    ASSERT_TRUE(waitUntil([&] { return recovery.status().state == RecoveryStatus::State::suspended; }));
    EXPECT_TRUE(recovery.status().reason.contains(QStringLiteral("no further threads")));
    recovery.recordNow();
    EXPECT_EQ(recovery.figures().records, 0) << "and nobody waits for it";
  }
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records >= 1; }));
  EXPECT_EQ(recovery.status().state, RecoveryStatus::State::recording);
}

}  // namespace
}  // namespace orvanel
