#include <gtest/gtest.h>

#include "app/AppHost.h"
#include "app/SyncScheduler.h"
#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "util/InconsistencyError.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

/// Ann shares a folder; the others are announcements without a machine behind them, and the ends of
/// syncs with them are told by the test.
class SchedulerTest : public testing::Test {
 protected:
  SchedulerTest() {
    EXPECT_TRUE(ann.platform.files.makeFolder("/home/user/Docs"));
    ann.start();
    EXPECT_EQ(ann.share("/home/user/Docs"), "");
    world.loop.advance(10);
    bob = announce("bob", 51000);
    world.loop.advance(1);
  }

  struct Announced {
    std::unique_ptr<Publication> publication;
    std::shared_ptr<KDParticipant> participant;
  };
  Announced announce(const std::string& user, std::uint16_t port) {
    // Our own digest: there is nothing to fetch, so nothing is queued by itself.
    TxtRecord record{{txt::FullName, "Docs"},
                     {txt::LogDigest, ann.pool("Docs").snapshot()->logFilesHash}};
    encodeUnsignedIntValue(record, txt::Version, ProtocolVersion);
    const std::string id = user + "@" + user + "host.local";
    Announced announced;
    announced.publication = std::move(*others.services.publish(
        makeServiceName(id, port, hexHash("Docs")), "_zolvar._tcp", port, record, {}));
    world.loop.advance(1);
    announced.participant = ann.participant("Docs", user + "host");
    EXPECT_TRUE(announced.participant) << ann.platform.log.text();
    return announced;
  }
  SyncScheduler& scheduler() { return ann.app->scheduler(); }
  long queued(const Announced& who) {
    const auto& all = scheduler().queue().participants();
    return std::count(all.begin(), all.end(), who.participant);
  }
  /// Starts a sync and lets it end with the status at once.
  void sync(const Announced& who, int status) {
    scheduler().syncWithParticipant(who.participant);
    ASSERT_EQ(scheduler().syncingParticipant(), who.participant);
    end(who, status);
  }
  void end(const Announced& who, int status) {
    KDSyncDidEndNotification ended;
    ended.pool = &ann.pool("Docs");
    ended.KDTerminationStatus = status;
    ended.KDParticipant = who.participant->address();
    ended.KDErrorMessage = status == 0 ? "" : "it broke";
    ann.app->center().post(ended);
  }

  SimulatedWorld world;
  SimulatedPlatform others{world, "gamma"};
  AppHost ann{world, "alpha", "ann"};
  Announced bob;
};

TEST_F(SchedulerTest, reactsToHowASyncEnded) {
  struct Row {
    int status;
    long stillQueued;
    bool unignored;
    const char* logged;  ///< empty: nothing of these
  };
  const Row rows[] = {
      {0, 0, true, ""},
      {23, 0, true, ""},
      {37, 1, false, "Auth failed syncing"},
      {5, 1, false, "Protocol error detected. Ignored - probably max connections exceeded."},
      {12, 1, false, "Socket error detected. Ignored."},
      {30, 1, false, "Sync Error: it broke"},
      {-1, 1, false, "Sync Error: it broke"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.status);
    ann.platform.log.clear();
    bob.participant->setIsIgnored(true);
    sync(bob, row.status);
    EXPECT_EQ(queued(bob), row.stillQueued);
    EXPECT_EQ(bob.participant->isIgnored(), !row.unignored);
    if (*row.logged != '\0') {
      EXPECT_TRUE(ann.platform.log.contains(row.logged)) << ann.platform.log.text();
    }
    EXPECT_EQ(ann.platform.log.contains("Sync Error"),
              row.status != 0 && row.status != 23 && row.status != 37 && row.status != 5);
    EXPECT_FALSE(scheduler().syncingParticipant());
    scheduler().removeFromQueue(bob.participant);
  }
  EXPECT_EQ(ann.observer.count("password bob@bobhost.local"), 0U) << "ignored ones are not told";
}

TEST_F(SchedulerTest, tellsAWrongPasswordOnceUntilItWorks) {
  const auto told = [&] { return ann.observer.count("password bob@bobhost.local"); };
  sync(bob, 37);
  sync(bob, 37);
  EXPECT_EQ(told(), 1U);
  sync(bob, 0);
  sync(bob, 37);
  EXPECT_EQ(told(), 2U);
}

TEST_F(SchedulerTest, runsOneSyncAtATimeAndTheNextTwoSecondsLater) {
  const auto cem = announce("cem", 51001);
  scheduler().syncWithParticipant(bob.participant);
  scheduler().syncWithParticipant(cem.participant);
  scheduler().syncWithParticipant(cem.participant);
  EXPECT_EQ(scheduler().syncingParticipant(), bob.participant);
  end(bob, 0);
  EXPECT_FALSE(scheduler().syncingParticipant());
  world.loop.advance(1.9);
  EXPECT_FALSE(scheduler().syncingParticipant());
  world.loop.runUntil([&] { return scheduler().syncingParticipant() != nullptr; }, 0.2);
  EXPECT_EQ(scheduler().syncingParticipant(), cem.participant);
  end(bob, 0);  // one that is not running any more
  EXPECT_EQ(scheduler().syncingParticipant(), cem.participant);
  EXPECT_TRUE(ann.platform.log.contains("SyncingParticipant not set in notification userInfo:"));
  EXPECT_THROW(scheduler().syncWithParticipant(nullptr), InconsistencyError);
}

TEST_F(SchedulerTest, triesAgainNoSoonerThanThePause) {
  sync(bob, 30);
  world.loop.advance(29);
  EXPECT_EQ(ann.observer.count("end 30"), 1U);
  world.loop.runUntil([&] { return scheduler().syncingParticipant() != nullptr; }, 45);
  EXPECT_EQ(scheduler().syncingParticipant(), bob.participant);
}

TEST_F(SchedulerTest, givesUpOnWhoHasLeft) {
  scheduler().syncWithParticipant(bob.participant);
  bob.publication.reset();
  world.loop.advance(90);
  EXPECT_FALSE(ann.participant("Docs", "bobhost"));
  EXPECT_EQ(queued(bob), 0) << ann.platform.log.text();
}

TEST_F(SchedulerTest, queuesWhoAnnouncesSomethingNew) {
  auto txt = std::move(bob.publication);
  TxtRecord record{{txt::FullName, "Docs"}, {txt::LogDigest, std::string(16, 'n')}};
  encodeUnsignedIntValue(record, txt::Version, ProtocolVersion);
  ASSERT_TRUE(txt->updateTxt(record));
  EXPECT_TRUE(
      world.loop.runUntil([&] { return scheduler().syncingParticipant() == bob.participant; }, 10));
  world.loop.advance(10);
  scheduler().removeFromQueue(bob.participant);

  encodeUnsignedIntValue(record, txt::Version, ProtocolVersion + 1);
  ASSERT_TRUE(txt->updateTxt(record));
  world.loop.advance(10);
  EXPECT_EQ(queued(bob), 0) << "another version of the protocol";
}

}  // namespace
}  // namespace zolvar
