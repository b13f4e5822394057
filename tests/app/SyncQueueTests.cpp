#include <gtest/gtest.h>

#include "app/SyncQueue.h"
#include "net/KDParticipants.h"
#include "support/RecordingLog.h"

namespace zolvar {
namespace {

using Indices = std::vector<std::size_t>;

TEST(ChooseNext, takesTheFirstOneThatIsDue) {
  constexpr double Now = 1000;
  constexpr double Pause = 30;
  const QueuedSync local{true, 0, true}, never{false, 0, true}, unready{false, 0, false},
      justNow{false, 990, true}, atLimit{false, 970, true}, due{false, 969.9, true},
      future{false, 1001, true};
  struct Row {
    const char* description;
    std::vector<QueuedSync> queue;
    std::optional<std::size_t> next;
    Indices dropped, postponed;
  };
  const Row rows[] = {
      {"an empty queue", {}, {}, {}, {}},
      {"never synced is due", {never}, 0, {}, {}},
      {"exactly the pause ago is not due", {atLimit}, {}, {}, {0}},
      {"longer ago is due", {justNow, due}, 1, {}, {0}},
      {"our own is dropped on the way, not behind the choice", {local, never, local}, 1, {0}, {}},
      {"who cannot sync now waits without a word", {unready, never}, 1, {}, {}},
      {"a clock that was set back holds nobody up", {future}, 0, {}, {}},
      {"nobody is due", {local, justNow, unready, local}, {}, {0, 3}, {1}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.description);
    const QueueChoice choice = chooseNext(row.queue, Now, Pause);
    EXPECT_EQ(choice.next, row.next);
    EXPECT_EQ(choice.dropped, row.dropped);
    EXPECT_EQ(choice.postponed, row.postponed);
  }
}

class SyncQueueTest : public testing::Test {
 protected:
  SyncQueue::Participant named(const std::string& user, double lastSync = 0) {
    auto participant = table.participant({user, "beta.local", 49999, "Docs"});
    participant->setLastSyncDate(lastSync);
    return participant;
  }
  SyncQueue::Participant take(double now) {
    return queue.takeNext(
        now, 30, [](const auto&) { return true; }, [](const auto&) {});
  }
  RecordingLog log;
  KDParticipants table{"me@alpha.local", log};
  SyncQueue queue;
};

TEST_F(SyncQueueTest, movesTheChosenToTheEndInOneOccurrence) {
  const auto ann = named("ann", 10), bob = named("bob", 20);
  for (const auto& each : {bob, ann, bob, ann}) queue.append(each);
  EXPECT_EQ(take(1000), ann) << "the one that waits longest";
  EXPECT_EQ(queue.participants(), (std::vector{bob, bob, ann}));
  ann->setLastSyncDate(1000);
  EXPECT_EQ(take(1000), bob);
  bob->setLastSyncDate(1000);
  EXPECT_EQ(queue.participants(), (std::vector{ann, bob}));
  EXPECT_EQ(take(1010), nullptr);
  EXPECT_EQ(take(1031), ann);
}

TEST_F(SyncQueueTest, forgetsParticipantsAndPools) {
  const auto ann = named("ann"), bob = named("bob");
  const auto other = table.participant({"ann", "beta.local", 49999, "Music"});
  const auto local = table.participant({"me", "alpha.local", 49999, "Docs"});
  for (const auto& each : {ann, bob, ann, other, local}) queue.append(each);
  queue.removeFirst(ann);
  EXPECT_EQ(queue.participants(), (std::vector{bob, ann, other, local}));
  queue.removeAll(ann);
  queue.removePool("Docs");
  EXPECT_EQ(queue.participants(), std::vector{other});
}

}  // namespace
}  // namespace zolvar
