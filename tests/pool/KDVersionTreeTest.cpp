#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>

#include "pool/KDVersionTree.h"

namespace zolvar {
namespace {

/// A tree told in lines "user time parentUser parentTime modTime", all of the path "f".
class Story {
 public:
  explicit Story(const std::string& local = "me@here.local") : tree(store, local) {}

  KDLogFileEntry* entry(const std::string& line) {
    std::istringstream words(line);
    std::string user, parentUser;
    KDEntryFields fields;
    words >> user >> fields.logTime >> parentUser >> fields.plogTime >> fields.modTime;
    if (parentUser == "-") parentUser.clear();
    fields.path = "f";
    fields.userId = user;
    fields.puserId = parentUser;
    return store.add(fields);
  }
  KDVersionTree::Appended add(const std::string& line) { return tree.append(entry(line)); }
  KDPathRecord& path() { return store.path("f"); }
  /// Leaves as "user:time", newest first, deleted ones with a "-".
  std::string leaves() {
    std::string text;
    for (const auto* leaf : tree.leafEntries(path())) {
      text += (text.empty() ? "" : " ") + leaf->id().text() + (leaf->exists() ? "" : "-");
    }
    return text;
  }
  std::string selected(const std::string& user) {
    const auto found = tree.selectedLeaf(path(), user);
    return found.leaf ? found.leaf->id().text() : std::to_string(found.count);
  }

  KDEntryStore store;
  KDVersionTree tree;
};

TEST(KDVersionTree, followsEditsForksAndDeletions) {
  struct Step {
    const char* what;
    const char* line;
    bool grew;
    const char* leaves;
    unsigned active;
  };
  const Step steps[] = {
      {"creation", "a 10 - 0 5", false, "a:10", 1},
      {"edit by another", "b 20 a 10 15", false, "b:20", 1},
      {"concurrent edit forks", "a 21 - 10 16", true, "a:21 b:20", 2},
      {"the same entry again", "a 21 - 10 16", false, "a:21 b:20", 2},
      {"a third branch", "c 22 a 10 17", true, "c:22 a:21 b:20", 3},
      {"one branch goes on", "b 30 - 20 25", false, "b:30 c:22 a:21", 3},
      {"one is deleted", "c 31 - 22 0", false, "c:31- b:30 a:21", 2},
      {"another is deleted", "c 32 a 21 0", false, "c:32- c:31- b:30", 1},
      {"the last is deleted", "b 40 - 30 0", false, "b:40- c:32- c:31-", 0},
      {"created anew", "a 50 - 0 45", true, "a:50 b:40- c:32- c:31-", 1},
  };
  Story story;
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    EXPECT_EQ(story.add(step.line).grew(), step.grew);
    EXPECT_EQ(story.leaves(), step.leaves);
    EXPECT_EQ(story.path().activeLeafCount, step.active);
  }
}

TEST(KDVersionTree, keepsSelectionsUntilTheirBranchIsGone) {
  Story story;
  for (const char* line : {"a 10 - 0 5", "b 20 a 10 15", "a 21 - 10 16"}) story.add(line);
  EXPECT_EQ(story.selected("me@here.local"), "2") << "none chosen";
  EXPECT_EQ(story.add("me@here.local 30 b 20 15").kind, KDVersionTree::Kind::Selection);
  EXPECT_EQ(story.path().entryCount, 3U) << "selections are not stored";
  EXPECT_EQ(story.selected("me@here.local"), "b:20");
  story.add("b 40 - 20 35");
  EXPECT_EQ(story.selected("me@here.local"), "b:40") << "the choice follows its branch";
  EXPECT_EQ(story.tree.usersWhoSelected(*story.tree.activeLeafEntries(story.path())[0]),
            std::vector<std::string>{"me@here.local"});
  const auto deleted = story.add("a 50 b 40 0");
  EXPECT_TRUE(deleted.selectionLost);
  EXPECT_EQ(deleted.activeAfter, 1U);
  EXPECT_EQ(story.selected("me@here.local"), "a:21");
  EXPECT_EQ(story.tree.selectedEntry(story.path(), "me@here.local"), nullptr);
}

TEST(KDVersionTree, prefersTheChosenBranchAmongVersionsOfOneTime) {
  Story story;
  for (const char* line : {"a 10 - 0 5", "b 20 a 10 7", "a 21 - 10 8", "a 30 - 21 7"})
    story.add(line);
  EXPECT_EQ(story.tree.versionWithModTime(story.path(), 7, "x")->id().text(), "a:30") << "newest";
  story.add("me@here.local 40 b 20 7");
  EXPECT_EQ(story.tree.versionWithModTime(story.path(), 7, "me@here.local")->id().text(), "b:20");
  EXPECT_EQ(story.tree.versionWithModTime(story.path(), 8, "me@here.local")->id().text(), "a:21")
      << "a match elsewhere is better than none";
  EXPECT_EQ(story.tree.versionWithModTime(story.path(), 9, "me@here.local"), nullptr);
}

TEST(KDVersionTree, tellsTimeWarpedFiles) {
  Story story;
  for (const char* line : {"a 1 - 0 100", "a 2 - 1 300", "a 3 - 2 200"}) story.add(line);
  EXPECT_TRUE(story.tree.isTimeWarped(story.path(), 150));
  EXPECT_FALSE(story.tree.isTimeWarped(story.path(), 200));
  Story single;
  single.add("a 1 - 0 100");
  EXPECT_FALSE(single.tree.isTimeWarped(single.path(), 300)) << "no parent, no warp";
}

TEST(KDVersionTree, describesItsBranches) {
  Story story;
  EXPECT_EQ(story.tree.treeDescription("f"), "Tree Description for 'f'\nNo entries present.");
  for (const char* line : {"a 10 - 0 5", "b 20 a 10 15", "b 30 - 20 25"}) story.add(line);
  const std::string text = story.tree.treeDescription("f");
  EXPECT_NE(text.find("\n++ "), std::string::npos) << text;
  EXPECT_NE(text.find("<-- selected\n"), std::string::npos) << text;
}

TEST(KDVersionTree, takesTwoDecisionsOfOneSecond) {
  Story story;
  for (const char* line : {"a 10 - 0 5", "b 20 a 10 15", "c 21 a 10 16", "d 22 a 10 17"}) {
    story.add(line);
  }
  story.add("me@here.local 30 b 20 0");
  story.add("me@here.local 30 c 21 0");
  story.add("d 30 - 22 18");
  EXPECT_EQ(story.add("me@here.local 30 d 22 17").kind, KDVersionTree::Kind::Selection);
  EXPECT_EQ(story.leaves(), "d:30 me@here.local:30- me@here.local:30-");
  EXPECT_EQ(story.add("me@here.local 30 c 21 0").kind, KDVersionTree::Kind::Duplicate);
}

TEST(KDVersionTree, prefersTheLivingOneOfEqualVersions) {
  Story story;
  for (const char* line : {"a 10 - 0 5", "b 20 - 0 5", "b 30 - 20 0"}) story.add(line);
  EXPECT_EQ(story.tree.versionWithModTime(story.path(), 5, "x")->id().text(), "a:10");
}

// Whatever the order in which entries arrive, a repaired tree is the one that sorted entries give.
TEST(KDVersionTree, isTheSameInEveryOrderOfArrival) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<std::string> lines;
    std::vector<std::pair<std::string, int>> versions;
    const int count = 2 + static_cast<int>(random() % (seed % 10 == 0 ? 200 : 30));
    for (int time = 1; time <= count; ++time) {
      const std::string user(1, static_cast<char>('a' + random() % 3));
      const bool isRoot = versions.empty() || random() % 12 == 0;
      const auto parent =
          isRoot ? std::pair<std::string, int>{"-", 0} : versions[random() % versions.size()];
      const int modTime = random() % 5 == 0 && !isRoot ? 0 : time + 1000;
      lines.push_back(user + " " + std::to_string(time) + " " +
                      (parent.first == user ? "-" : parent.first) + " " +
                      std::to_string(parent.second) + " " + std::to_string(modTime));
      versions.emplace_back(user, time);
    }
    Story sorted;
    for (const auto& line : lines) sorted.add(line);
    Story shuffled;
    std::shuffle(lines.begin(), lines.end(), random);
    for (const auto& line : lines) shuffled.add(line);
    shuffled.tree.repairAll();
    EXPECT_EQ(shuffled.leaves(), sorted.leaves());
    EXPECT_EQ(shuffled.path().activeLeafCount, sorted.path().activeLeafCount);
    EXPECT_EQ(shuffled.path().entryCount, sorted.path().entryCount);
  }
}

TEST(KDVersionTree, bearsALongChain) {
  Story story;
  for (int time = 1; time <= 100'000; ++time) {
    story.add("a " + std::to_string(time) + " - " + std::to_string(time - 1) + " " +
              std::to_string(time + 7));
  }
  EXPECT_EQ(story.leaves(), "a:100000");
  EXPECT_TRUE(story.add("b 100001 a 5 9").grew()) << "a parent far back is found";
}

}  // namespace
}  // namespace zolvar
