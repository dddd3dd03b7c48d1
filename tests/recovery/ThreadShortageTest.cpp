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

TEST_F(ThreadShortageTest, aRecordThatOnlyBeginsIsNotTheDisksFault) {
  RecoverySettings quick = settings();
  quick.retryInterval = std::chrono::milliseconds(1);
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(quick);
  QStringList reasons;
  const Subscription observed =
      recovery.observeStatus([&](const RecoveryStatus& status) { reasons << status.reason; });
  {
    const ThreadShortage shortage;
    recovery.follow(document);
    recovery.recordNow();
    ASSERT_EQ(recovery.status().state, RecoveryStatus::State::suspended);
  }
  ASSERT_TRUE(waitUntil([&] { return recovery.figures().records >= 1; }));
  EXPECT_EQ(
      reasons,
      (QStringList{QStringLiteral("Recovery data can't be written: the system allows no further threads."),
                   {}}));
}

TEST_F(ThreadShortageTest, whatWasLeftIsOfferedAsSoonAsItCanBeLookedFor) {
  crashWith(unsavedDocument());
  RecoverySettings quick = settings();
  quick.retryInterval = std::chrono::milliseconds(1);
  Recovery recovery(quick);
  QObject receiver;
  std::optional<OrphanList> found;
  {
    const ThreadShortage shortage;
    recovery.findOrphans(&receiver, [&](const OrphanList& list) { found = list; });
    QThread::msleep(5);
    QCoreApplication::processEvents();
    ASSERT_FALSE(found);
  }
  ASSERT_TRUE(waitUntil([&] { return found.has_value(); }));
  ASSERT_EQ(found->size(), 1U);
  {
    const ThreadShortage shortage;
    recovery.discard(found->at(0).id, &receiver, notDiscarded);
  }
  EXPECT_TRUE(waitUntil([&] { return files().isEmpty(); }));
}

TEST_F(ThreadShortageTest, theJournalOfAClosedDocumentIsRemovedLater) {
  RecoverySettings quick = settings();
  quick.retryInterval = std::chrono::milliseconds(1);
  const DocumentPtr document = unsavedDocument();
  Recovery recovery(quick);
  recovery.follow(document);
  recovery.recordNow();
  ASSERT_FALSE(files().isEmpty());
  {
    const ThreadShortage shortage;
    recovery.closed(*document);
  }
  EXPECT_TRUE(waitUntil([&] { return files().isEmpty(); }));
}

}  // namespace
}  // namespace orvanel
