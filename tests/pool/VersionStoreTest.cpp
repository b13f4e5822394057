#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "pool/VersionStore.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t Day = 24LL * 60 * 60;
constexpr std::uint64_t Megabyte = 1U << 20;

TEST(VersionsToRemove, goByAgeAndThenByTheRoomThatIsLeft) {
  const std::int64_t now = 100 * Day;
  const std::vector<KeptVersion> versions = {
      {"oldest", now - 31 * Day, 1},         {"old", now - 30 * Day, 5 * Megabyte},
      {"big", now - 2 * Day, 10 * Megabyte}, {"new b", now - 1, 3 * Megabyte},
      {"new a", now - 1, 3 * Megabyte},      {"future", now + Day, 1},
  };
  const struct {
    const char* what;
    VersionLimits limits;
    std::set<std::string> removed;
  } rows[] = {
      {"by default a month", {}, {"oldest"}},
      {"room for all but the oldest", {30, 22}, {"oldest"}},
      {"the older ones make room, small ones too", {30, 16}, {"oldest", "old", "big"}},
      {"of equal age the first stay", {30, 4}, {"oldest", "old", "big", "new b"}},
      {"days alone", {1, 1024}, {"oldest", "old", "big"}},
      {"no days", {0, 1024}, {"oldest", "old", "big", "new a", "new b", "future"}},
      {"no megabytes", {30, 0}, {"oldest", "old", "big", "new a", "new b", "future"}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.removed, versionsToRemove(versions, now, row.limits)) << row.what;
  }
}

TEST(VersionLimits, areThirtyDaysAndAGigabyteUnlessSet) {
  MemoryDefaults defaults;
  EXPECT_EQ(30U, VersionLimits::fromDefaults(defaults).days);
  EXPECT_EQ(1024U, VersionLimits::fromDefaults(defaults).megabytes);
  defaults.setString("VersionsDays", "0");
  defaults.setString("VersionsMegabytes", "7");
  EXPECT_EQ(7U, VersionLimits::fromDefaults(defaults).megabytes);
  EXPECT_FALSE(VersionLimits::fromDefaults(defaults).keepsAny());
}

TEST(VersionStoreTest, keepsRunsApartUntilTheyAreLookedThroughAndGrowOld) {
  SimulatedPlatform host;
  VersionStore store(host.platform());
  EXPECT_THAT(*store.openRuns("h"), IsEmpty());
  const std::string first = *store.startRun("h");
  const std::string second = *store.startRun("h");
  const std::string other = *store.startRun("i");
  EXPECT_NE(first, second);
  EXPECT_TRUE(first.starts_with(*host.files.supportFolder() + "/versions/h/")) << first;

  host.files.write(first + "/sub/a", "old a");
  host.files.makeLink(first + "/b", "target");
  EXPECT_THAT(*store.openRuns("h"), ElementsAre(first, second));
  const auto replaced = *store.replacedFiles(first);
  ASSERT_EQ(2U, replaced.size());
  EXPECT_EQ("b", replaced[0].path);
  EXPECT_EQ("sub/a", replaced[1].path);
  EXPECT_EQ(first + "/sub/a", replaced[1].savedPath);

  host.clock.advance(40 * Day);
  EXPECT_TRUE(store.prune({}));
  EXPECT_EQ("old a", host.files.readAll(first + "/sub/a")) << "nobody has looked through it yet";

  EXPECT_TRUE(store.closeRun(first));
  EXPECT_TRUE(store.closeRun(second));
  EXPECT_FALSE(host.files.exists(second)) << "nothing was replaced";
  EXPECT_THAT(*store.openRuns("h"), IsEmpty());
  const std::string closed = first.substr(0, first.size() - std::string(".open").size());
  EXPECT_EQ("old a", host.files.readAll(closed + "/sub/a"));

  EXPECT_TRUE(store.prune({50, 1}));
  EXPECT_TRUE(host.files.exists(closed + "/sub/a"));
  EXPECT_TRUE(store.prune({}));
  EXPECT_FALSE(host.files.exists(closed));
  EXPECT_TRUE(host.files.exists(other));
}

TEST(VersionStore, boundsEachPoolByItselfAndGivesVersionsBack) {
  SimulatedPlatform host;
  VersionStore store(host);
  const std::string big(700 << 10, 'x');
  std::vector<std::string> runs;
  for (const char* pool : {"one", "two"}) {
    runs.push_back(*store.startRun(pool));
    host.files.write(runs.back() + "/d/a", big, 1000);
    ASSERT_TRUE(store.closeRun(runs.back()));
  }
  ASSERT_TRUE(store.prune({30, 1}));
  ASSERT_EQ(1U, store.versionsOf("one", "d/a")->size());
  const auto kept = *store.versionsOf("two", "d/a");
  ASSERT_EQ(1U, kept.size()) << "another pool's versions count";
  EXPECT_EQ(1000, kept[0].modTime);
  EXPECT_TRUE(store.versionsOf("two", "d")->empty()) << "a folder is no version";

  ASSERT_TRUE(host.files.makeFolder("/pool/.Zolvar"));
  const auto folder = *host.files.open("/pool");
  EXPECT_EQ(FailureKind::Absent, store.restore("two", "d/a", "1-0", *folder).error().kind);
  ASSERT_TRUE(host.files.makeFolder("/pool/d/a"));
  EXPECT_EQ(FailureKind::Refused, store.restore("two", "d/a", kept[0].id, *folder).error().kind);
  host.files.remove("/pool/d/a");
  // What lies there is dated in the future, and the restored file must still be newer.
  const auto future = static_cast<std::int64_t>(host.clock.now()) + 500;
  host.files.write("/pool/d/a", "present", future);
  host.files.faults.beforeCall = [&](std::string_view operation, std::string_view subject) {
    if (operation != "moveIn" || subject != "d/a") return;
    host.files.faults.beforeCall = {};
    host.files.write("/pool/d/a", "saved meanwhile", future);
  };
  EXPECT_EQ(FailureKind::Transient, store.restore("two", "d/a", kept[0].id, *folder).error().kind);
  EXPECT_EQ("saved meanwhile", host.files.readAll("/pool/d/a"));
  ASSERT_TRUE(store.restore("two", "d/a", kept[0].id, *folder));
  EXPECT_EQ(big, host.files.readAll("/pool/d/a"));
  EXPECT_EQ(future + 1, host.files.attributesOf("/pool/d/a")->modTime);
  const auto now = *store.versionsOf("two", "d/a");
  ASSERT_EQ(2U, now.size()) << "the one of the refused attempt, too";
  EXPECT_EQ(future, now[0].modTime);
  const auto lies = store.keep("two", "d/a", *folder);  // a second name for what still lies there
  ASSERT_TRUE(store.restore("two", "d/a", *lies, *folder));
  EXPECT_EQ(big, host.files.readAll("/pool/d/a"));
  EXPECT_EQ(future + 2, host.files.attributesOf("/pool/d/a")->modTime);
  EXPECT_TRUE(store.openRuns("two")->empty()) << "no sync may take it for its own";
  EXPECT_TRUE(folder->list(".Zolvar")->empty()) << "something is left aside";
}

}  // namespace
}  // namespace zolvar
