#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <thread>

#include "log/KDLogFileEntry.h"
#include "log/LogWorld.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

using Entry = KDLogFileEntry;
using testing::ElementsAre;
using testing::ThrowsMessage;

struct KDLogFileEntryTest : testing::Test, LogWorld {};

std::string invalid(const std::string& condition) {
  return "Invalid parameter not satisfying: " + condition;
}

TEST_F(KDLogFileEntryTest, tellsItsType) {
  Entry* const parent = entry(10, 0, "a", 5);
  EXPECT_EQ(parent->type(), Entry::KDCreationType);
  EXPECT_EQ(entry(10, 0, "a", 0)->type(), Entry::KDCreationType);
  Entry* const deletion = entry(11, 10, "a", 0);
  EXPECT_EQ(deletion->type(), Entry::KDDeletionType);
  EXPECT_FALSE(deletion->exists());
  Entry* const change = entry(11, 10, "a", 6);
  Entry* const selection = entry(11, 10, "a", 5);
  EXPECT_EQ(selection->type(), Entry::KDModificationType);  // not linked yet
  for (Entry* child : {deletion, change, selection}) child->setParentEntry(parent);
  EXPECT_EQ(deletion->type(), Entry::KDDeletionType);
  EXPECT_EQ(change->type(), Entry::KDModificationType);
  EXPECT_EQ(selection->type(), Entry::KDBranchSelectionType);
  EXPECT_THAT([&] { parent->setParentEntry(change); },
              ThrowsMessage<InconsistencyError>(invalid("[aParent logTime] == [self plogTime]")));
}

TEST_F(KDLogFileEntryTest, namesItsParentsUser) {
  EXPECT_EQ(entry(10, 0, "a", 5, "bob@x", "eve@y")->puserId(), "");
  EXPECT_EQ(entry(10, 9, "a", 5, "bob@x", "eve@y")->puserId(), "eve@y");
  const Entry* const own = entry(10, 9, "a", 5, "bob@x", "bob@x");
  EXPECT_EQ(own->puserId(), "bob@x");
  EXPECT_THAT(own->components(), ElementsAre("10", "9", "a", "5", "", ""));
  EXPECT_TRUE(own->isEqual(*entry(10, 9, "a", 5, "bob@x", "")));
}

TEST_F(KDLogFileEntryTest, equalsAllButTheParentLink) {
  Entry* const one = entry(10, 9, "a", 5);
  KDEntryStore other;
  Entry* const same = other.add({10, 9, "a", 5, "bob@beta.local", ""});
  EXPECT_TRUE(one->isEqual(*same));
  one->setParentEntry(entry(9, 0, "a", 4));
  EXPECT_TRUE(one->isEqual(*same));
  for (const Entry* different :
       {entry(11, 9, "a", 5), entry(10, 8, "a", 5), entry(10, 9, "b", 5), entry(10, 9, "a", 6),
        entry(10, 9, "a", 5, "eve@x"), entry(10, 9, "a", 5, "bob@beta.local", "eve@x")}) {
    EXPECT_FALSE(one->isEqual(*different)) << summaryOf(*different);
  }
  const Entry* const odd = entry(10, 9, "a", std::numeric_limits<double>::quiet_NaN());
  EXPECT_FALSE(odd->isEqual(*odd));
  EXPECT_EQ(one->compareLogTime(*same), 0);
  EXPECT_EQ(one->compareLogTime(*entry(11, 9, "a", 5)), -1);
  EXPECT_EQ(one->compareLogTime(*entry(9.5, 9, "a", 5)), 1);
}

TEST_F(KDLogFileEntryTest, findsItsParentAmongOlderEntries) {
  Entry* const root = entry(10, 0, "a", 5, "bob@x");
  Entry* const choice = entry(20, 10, "a", 5, "bob@x");
  choice->setParentEntry(root);
  Entry* const evesSameTime = entry(20, 10, "a", 6, "eve@y", "bob@x");
  Entry* const bobsSameTime = entry(20, 10, "a", 7, "bob@x");
  Entry* const child = entry(30, 20, "a", 8, "bob@x");
  const std::vector<Entry*> sorted = {root, bobsSameTime, evesSameTime, choice, child};

  EXPECT_EQ(child->parentEntryFromSortedEntries(sorted, 0), nullptr);
  EXPECT_EQ(child->parentEntryFromSortedEntries(sorted, 99),
            bobsSameTime);                                              // no selection, not Eve's
  EXPECT_EQ(child->parentEntryFromSortedEntries({}, 0), bobsSameTime);  // linked once and for all
  EXPECT_EQ(root->parentEntryFromSortedEntries(sorted, 4), nullptr);
  Entry* const evesChild = entry(30, 20, "a", 8, "bob@x", "eve@y");
  EXPECT_EQ(evesChild->parentEntryFromSortedEntries(sorted, 4), evesSameTime);
  EXPECT_EQ(evesSameTime->parentEntryFromSortedEntries(sorted, 1), root);

  EXPECT_TRUE(root->isParentOfEntry(root));
  EXPECT_TRUE(root->isParentOfEntry(evesChild));
  EXPECT_FALSE(evesChild->isParentOfEntry(root));
  EXPECT_FALSE(bobsSameTime->isParentOfEntry(evesChild));
  EXPECT_THAT([&] { (void)root->isParentOfEntry(nullptr); },
              ThrowsMessage<InconsistencyError>(invalid("anEntry!=nil")));
}

TEST_F(KDLogFileEntryTest, looksAtTheLastByteOfItsParentsTime) {
  const std::pair<double, bool> cases[] = {
      {0, false}, {255, true}, {256, false}, {257.9, true}, {0.9, false}};
  for (const auto& [modTime, expected] : cases) {
    Entry* const child = entry(20, 10, "a", 1);
    EXPECT_FALSE(child->haspmodTime(1));
    child->setParentEntry(entry(10, 0, "a", modTime));
    EXPECT_EQ(child->haspmodTime(1), expected) << modTime;
  }
}

TEST_F(KDLogFileEntryTest, takesOnlyEqualPaths) {
  KDEntryStore other;
  Entry* const one = entry(10, 0, "a", 5);
  one->replacePathWith(other.path("a"));
  EXPECT_EQ(&one->pathRecord(), other.findPath("a"));
  EXPECT_THAT([&] { one->replacePathWith(other.path("b")); },
              ThrowsMessage<InconsistencyError>("Only equal replacements allowed."));
}

TEST_F(KDLogFileEntryTest, describesItself) {
  const Entry* const one = entry(0x6842, 9, "a", 1e12, "bob@beta.local", "eve@y");
  EXPECT_EQ(
      one->shortDescription(),
      " by bob@beta (logTime:     6842, modTime: ffffffff) <KDLogFileEntry bob@beta.local:26690>");
  EXPECT_EQ(entry(10, 9, "a", 86400)->description(),
            " type '<KDLogFileEntry bob@beta.local:10>': with [\"10\", \"9\", \"a\", \"86400\", "
            "\"\", \"\"] "
            "(by 'bob@beta.local' mod date 1970-01-02 00:00:00 +0000)");
}

TEST(TimeText, readsBackToTheSameDouble) {
  EXPECT_EQ(timeText(0), "0");
  EXPECT_EQ(timeText(1750000000), "1750000000");
  EXPECT_EQ(timeText(1099511627775), "1099511627775");
  EXPECT_EQ(timeText(1750000000.5), "1750000000.5");
  EXPECT_EQ(timeText(0.1), "0.1");
  EXPECT_EQ(timeText(1e100).size(), 101U);
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> times(0, KDEntryStore::TimesEnd);
  for (int round = 0; round < 1000; ++round) {
    const VersionId id{"bob:x@beta.local", times(random)};
    ASSERT_EQ(VersionId::parse(id.text()), id);
  }
  for (const char* text : {"", "bob", ":5", "bob:", "bob:5x", "bob:-1", "bob:inf", "bob: 5"}) {
    EXPECT_FALSE(VersionId::parse(text)) << text;
  }
}

TEST(InternedUserId, isOneInstanceForAllThreads) {
  std::vector<std::vector<const std::string*>> found(4);
  {
    std::vector<std::jthread> threads;
    for (auto& ids : found) {
      threads.emplace_back([&ids] {
        for (int user = 0; user < 500; ++user) {
          ids.push_back(&internedUserId("user" + std::to_string(user) + "@host.local"));
        }
      });
    }
  }
  for (const auto& ids : found) EXPECT_EQ(ids, found[0]);
  EXPECT_EQ(*found[0][7], "user7@host.local");
}

}  // namespace
}  // namespace zolvar
