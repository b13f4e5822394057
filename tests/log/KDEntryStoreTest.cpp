#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "log/KDEntryStore.h"
#include "log/LogWorld.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using testing::ThrowsMessage;

struct KDEntryStoreTest : testing::Test, LogWorld {
  KDEntryStore::Made make(double plogTime, double notBefore = 0) {
    return store.make(clock, log, notBefore, {0, plogTime, "a", 5, "bob@x", "eve@y"});
  }
};

std::string invalid(const std::string& condition) {
  return "Invalid parameter not satisfying: " + condition;
}

TEST(KDEntryStorePaths, haveOneRecordEachThroughAllGrowth) {
  KDEntryStore store;
  constexpr int Count = 100000;  // several chunks of records and many sizes of the table
  const auto name = [](int number) { return "folder/" + std::to_string(number * 7919) + ".txt"; };
  std::vector<KDPathRecord*> records;
  for (int number = 0; number < Count; ++number) records.push_back(&store.path(name(number)));
  EXPECT_EQ(store.pathCount(), static_cast<std::size_t>(Count));
  for (int number = 0; number < Count; ++number) {
    ASSERT_EQ(store.findPath(name(number)), records[number]);
    ASSERT_EQ(&store.path(name(number)), records[number]);
    ASSERT_EQ(records[number]->text, name(number));
  }
  EXPECT_EQ(store.findPath("folder"), nullptr);
  EXPECT_EQ(store.findPath(""), nullptr);
  const KDPathRecord* const nameless = &store.path("");
  EXPECT_EQ(store.findPath(""), nameless);

  std::size_t visited = 0;
  store.forEachPath([&](KDPathRecord& record) {
    if (visited == 0) store.path("added meanwhile");
    ASSERT_TRUE(visited >= records.size() || &record == records[visited]);
    ++visited;
  });
  EXPECT_EQ(visited, Count + 2U);
}

TEST(KDEntryStorePaths, differInAnyOneByte) {
  KDEntryStore store;
  const std::string text(41, 'p');
  for (std::size_t size = 0; size <= text.size(); ++size) {
    store.path(text.substr(0, size));
    for (std::size_t place = 0; place < size; ++place) {
      std::string other = text.substr(0, size);
      other[place] = 'q';
      store.path(other);
    }
  }
  EXPECT_EQ(store.pathCount(), 42U + 41U * 42U / 2U);
}

TEST_F(KDEntryStoreTest, requiresThatEntriesFollowTheirParents) {
  EXPECT_THAT([&] { entry(10, 10, "a", 1); },
              ThrowsMessage<InconsistencyError>(invalid("aLogTime > aPLogTime")));
}

TEST_F(KDEntryStoreTest, stampsOurEntriesWithWholeSeconds) {
  clock.advance(0.75);
  EXPECT_EQ(make(Now - 5).entry->logTime(), Now);
  EXPECT_EQ(make(Now - 5, Now - 1).entry->logTime(), Now);
  EXPECT_EQ(make(Now - 5, Now + 3).entry->logTime(), Now + 3);  // never behind our own last one
  EXPECT_EQ(make(Now + 2, Now + 3).entry->logTime(), Now + 3);
  EXPECT_EQ(clock.slept(), 0);
  EXPECT_FALSE(log.contains("Warning!"));
}

TEST_F(KDEntryStoreTest, waitsForAParentInTheFuture) {
  const struct {
    double ahead;  ///< seconds that the parent lies before us
    double slept;
    bool clockIsOff;
  } cases[] = {{0, 1, false},   {1, 2, false}, {9.5, 10, false}, {15, 16, false},
               {15.5, 0, true}, {16, 0, true}, {1e6, 0, true}};
  for (const auto& row : cases) {
    const double before = clock.slept();
    const double parent = wholeSeconds(clock.now()) + row.ahead;
    log.clear();
    const auto made = make(parent);
    EXPECT_EQ(made.clockIsOff, row.clockIsOff) << row.ahead;
    EXPECT_EQ(made.entry->logTime(), wholeSeconds(parent) + 1) << row.ahead;
    EXPECT_NEAR(clock.slept() - before, row.slept, 1) << row.ahead;
    EXPECT_EQ(log.contains("Warning! Trying to log event referencing an event in the future. "
                           "Hanging for " +
                           timeText(wholeSeconds(row.ahead + 1)) +
                           " seconds, until the future date has passed."),
              !row.clockIsOff)
        << row.ahead << log.text();
  }
}

TEST_F(KDEntryStoreTest, keepsTheEntryWhenTheWaitIsCutShort) {
  clock.shutDown();
  EXPECT_EQ(make(Now + 9).entry->logTime(), Now + 10);
  EXPECT_THAT([&] { make(KDEntryStore::TimesEnd - 1); },
              ThrowsMessage<InconsistencyError>(invalid("aLogTime < 2^40")));
}

TEST_F(KDEntryStoreTest, makesSelectionsAndDeletionsOfABranch) {
  KDLogFileEntry* const version = entry(Now - 9, 0, "a", 5, "eve@y");
  const auto choose = [&](KDLogFileEntry* chosen) {
    return store.branchSelectionEntryForUser(clock, log, 0, *chosen, "bob@x").entry;
  };
  const auto drop = [&](KDLogFileEntry* dropped) {
    return store.branchDeletionEntryForUser(clock, log, 0, *dropped, "eve@y").entry;
  };
  KDLogFileEntry* const selection = choose(version);
  EXPECT_EQ(selection->type(), KDLogFileEntry::KDBranchSelectionType);
  EXPECT_EQ(selection->parentEntry(), version);
  EXPECT_EQ(summaryOf(*selection), "1750000000 1749999991 a 5 eve@y");
  EXPECT_EQ(selection->userId(), "bob@x");

  KDLogFileEntry* const deletion = drop(version);
  EXPECT_EQ(deletion->type(), KDLogFileEntry::KDDeletionType);
  EXPECT_EQ(deletion->parentEntry(), version);
  EXPECT_EQ(deletion->components()[4], "");  // her own version
  EXPECT_EQ(deletion->puserId(), "eve@y");

  const auto notDeleted =
      ThrowsMessage<InconsistencyError>(invalid("[self type] != KDDeletionType"));
  EXPECT_THAT([&] { choose(deletion); }, notDeleted);
  EXPECT_THAT([&] { drop(deletion); }, notDeleted);
  EXPECT_THAT([&] { choose(selection); },
              ThrowsMessage<InconsistencyError>(invalid("[self type] != KDBranchSelectionType")));
}

}  // namespace
}  // namespace zolvar
