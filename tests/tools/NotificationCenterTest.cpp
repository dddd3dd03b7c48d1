#include "tools/NotificationCenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace orvanel {
namespace {

using testing::ElementsAre;
using Subscription = NotificationCenter::Subscription;

class NotificationCenterTest : public testing::Test {
 protected:
  Subscription logging(std::string_view name, const std::string& entry) {
    return center.observe(name, [this, entry](const std::any&) { log.push_back(entry); });
  }

  NotificationCenter center;
  std::vector<std::string> log;
};

TEST_F(NotificationCenterTest, ObserversAreCalledForTheirNameInOrderOfSubscription) {
  const Subscription first = logging("zoomIn", "first");
  const Subscription other = logging("zoomOut", "other");
  const Subscription second = logging("zoomIn", "second");
  center.post("zoomIn");
  EXPECT_THAT(log, ElementsAre("first", "second"));
}

TEST_F(NotificationCenterTest, ThePostersObjectIsDelivered) {
  int received = 0;
  const Subscription subscription =
      center.observe("n", [&](const std::any& object) { received = std::any_cast<int>(object); });
  center.post("n", 7);
  EXPECT_EQ(received, 7);
}

TEST_F(NotificationCenterTest, AnEndedSubscriptionIsNotCalled) {
  { const Subscription ended = logging("n", "ended"); }
  Subscription replaced = logging("n", "replaced");
  replaced = logging("n", "replacement");
  center.post("n");
  EXPECT_THAT(log, ElementsAre("replacement"));
}

TEST_F(NotificationCenterTest, AMovedSubscriptionStaysActive) {
  Subscription from = logging("n", "moved");
  const Subscription to = std::move(from);
  center.post("n");
  EXPECT_THAT(log, ElementsAre("moved"));
}

TEST_F(NotificationCenterTest, AHandlerMayEndItselfAndOthersDuringAPost) {
  std::optional<Subscription> self;
  std::optional<Subscription> later;
  self = center.observe("n", [&](const std::any&) {
    log.emplace_back("self");
    later.reset();
    self.reset();
  });
  later = logging("n", "later");
  const Subscription last = logging("n", "last");
  center.post("n");
  center.post("n");
  EXPECT_THAT(log, ElementsAre("self", "last", "last"));
}

TEST_F(NotificationCenterTest, SubscribersAddedDuringAPostWaitForTheNext) {
  std::vector<Subscription> added;
  const Subscription adding =
      center.observe("n", [&](const std::any&) { added.push_back(logging("n", "new")); });
  center.post("n");
  EXPECT_TRUE(log.empty());
  center.post("n");
  EXPECT_THAT(log, ElementsAre("new"));
}

}  // namespace
}  // namespace orvanel
