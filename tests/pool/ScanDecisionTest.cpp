#include <gtest/gtest.h>

#include "pool/KDDiskRecord.h"
#include "pool/KDVersionTree.h"
#include "pool/ScanDecision.h"

namespace zolvar {
namespace {

constexpr double Now = 10'000;

FileAttributes file(std::int64_t modTime, std::uint64_t size = 1, std::uint64_t inode = 7) {
  return {FileKind::Regular, size, modTime, inode, 1, 0644};
}

class ScanDecisionTest : public testing::Test {
 protected:
  KDLogFileEntry* add(const std::string& user, double time, KDLogFileEntry* parent,
                      double modTime) {
    KDEntryFields fields{time, parent ? parent->logTime() : 0, "f", modTime, user, {}};
    if (parent) fields.puserId = parent->userId();
    KDLogFileEntry* entry = store.add(fields);
    tree.append(entry);
    return entry;
  }
  void lies(const FileAttributes& attributes, KDLogFileEntry* entry) {
    disk = KDDiskState::of(attributes, entry);
    store.path("f").disk = &disk;
  }
  ScanDecision decide(const FileAttributes& attributes, bool isTodo = false,
                      bool isFirstRun = false, std::int64_t parentModTime = 0) {
    const KDPathRecord* path = store.findPath("f");
    return decideScan(tree, path && path->newest ? path : nullptr,
                      {attributes, isTodo, isFirstRun, Now, 10, parentModTime, false, isFirstRun});
  }

  KDEntryStore store;
  KDVersionTree tree{store, "me@x.local"};
  KDDiskState disk;
};

TEST_F(ScanDecisionTest, unknownFilesAreLoggedOnceTheyAreOld) {
  EXPECT_EQ(decide(file(9'995)).action, ScanAction::TooFresh);
  EXPECT_EQ(decide(file(10'005)).action, ScanAction::TooFresh) << "the clock is a little behind";
  EXPECT_EQ(decide(file(9'990)).action, ScanAction::LogModification);
  EXPECT_EQ(decide(file(20'000)).action, ScanAction::LogModification) << "dated in the future";
  EXPECT_EQ(decide({FileKind::Directory, 0, 9'999, 1, 1, 0}).action, ScanAction::LogModification);
}

TEST_F(ScanDecisionTest, withoutARecordFilesAreKnownByTheirTime) {
  KDLogFileEntry* first = add("a", 10, nullptr, 100);
  KDLogFileEntry* second = add("a", 20, first, 200);
  EXPECT_EQ(decide(file(200)).action, ScanAction::Guess);
  EXPECT_EQ(decide(file(100)).action, ScanAction::Reget);
  EXPECT_EQ(decide(file(100), true).action, ScanAction::Guess) << "wanted already";
  const ScanDecision strange = decide(file(150));
  EXPECT_EQ(strange.action, ScanAction::LogModification);
  EXPECT_EQ(strange.parent, nullptr) << "an edit descends from nothing that was never here";
  add("b", 30, second, 0);
  EXPECT_EQ(decide(file(200)).action, ScanAction::LogRecreation);
  EXPECT_EQ(decide(file(200), true).action, ScanAction::LogRecreation) << "put back";
  EXPECT_EQ(decide(file(200), false, true, 29).action, ScanAction::Delete);
  EXPECT_EQ(decide(file(200), false, true, 31).action, ScanAction::LogRecreation)
      << "the folder changed after the deletion";
}

TEST_F(ScanDecisionTest, aRecordTellsWhatAnEditDescendsFrom) {
  KDLogFileEntry* first = add("a", 10, nullptr, 100);
  lies(file(100), first);
  EXPECT_EQ(decide(file(100)).action, ScanAction::Nothing);
  KDLogFileEntry* second = add("a", 20, first, 200);
  EXPECT_EQ(decide(file(100)).action, ScanAction::Reget) << "unchanged, and a newer one is known";
  EXPECT_EQ(decide(file(100), true).action, ScanAction::Nothing);
  const ScanDecision edit = decide(file(300));
  EXPECT_EQ(edit.action, ScanAction::LogModification);
  EXPECT_EQ(edit.parent, first) << "the newer version never was here";
  EXPECT_EQ(decide(file(200), true, true).version, second) << "fetched, and not yet confirmed";
  const ScanDecision sameSecond = decide(file(200), true);
  EXPECT_EQ(sameSecond.action, ScanAction::LogLaterTime) << "written in the newer one's second";
  EXPECT_EQ(sameSecond.parent, first);

  struct Case {
    const char* what;
    FileAttributes now;
    ScanAction action;
  };
  lies(file(200), second);
  const Case cases[] = {
      {"an older version put back is new work", file(100), ScanAction::LogLaterTime},
      {"same time, other size", file(200, 2), ScanAction::LogLaterTime},
      {"same time and size, other file", file(200, 1, 8), ScanAction::LogLaterTime},
      {"a link in its place", {FileKind::Link, 1, 50, 9, 1, 0}, ScanAction::LogModification},
      {"a directory in its place",
       {FileKind::Directory, 1, 50, 9, 1, 0},
       ScanAction::LogModification},
      {"being written", file(9'999), ScanAction::TooFresh},
  };
  for (const Case& test : cases) {
    const ScanDecision decision = decide(test.now);
    EXPECT_EQ(decision.action, test.action) << test.what;
    if (decision.action != ScanAction::TooFresh) {
      EXPECT_EQ(decision.parent, second) << test.what;
    }
  }
}

TEST_F(ScanDecisionTest, aRecordedVersionThatAPeerDeletedGoes) {
  KDLogFileEntry* first = add("a", 10, nullptr, 100);
  lies(file(100), first);
  add("b", 20, first, 0);
  EXPECT_EQ(decide(file(100)).action, ScanAction::Delete);
  const ScanDecision edited = decide(file(150));
  EXPECT_EQ(edited.action, ScanAction::LogModification) << "an edit outlives the deletion";
  EXPECT_EQ(edited.parent, first);
}

TEST_F(ScanDecisionTest, whatACopyRunLeftIsNoEditUntilItChanges) {
  KDLogFileEntry* first = add("a", 10, nullptr, 100);
  lies(file(9'500), nullptr);
  EXPECT_EQ(decide(file(9'500)).action, ScanAction::Nothing);
  EXPECT_EQ(decide(file(9'600)).action, ScanAction::LogModification);
  KDLogFileEntry* late = add("a", 20, first, 9'500);
  EXPECT_EQ(decide(file(9'500)).version, late) << "its author's log has come";
  lies(file(9'000), nullptr);
  EXPECT_EQ(decide(file(9'000)).action, ScanAction::LogModification) << "nobody ever logged it";
}

}  // namespace
}  // namespace zolvar
