// What copy runs and log loads bring, leave behind, and meet while they run.

#include "pool/KDPoolStateFixture.h"

namespace zolvar {
namespace {

class KDPoolStateSyncTest : public KDPoolStateTest {};

TEST_F(KDPoolStateSyncTest, anEditOfTheLastSecondsBecomesABranch) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  const ParticipantAddress bob{"bob", "beta.local", 50000, "Docs"};
  const auto plan = state->decideListing({{'-', 5, {190}, "f"}}, bob);
  EXPECT_EQ(state->prepareCopy(plan.files), std::set<std::string>{"f"});
  // The user saves, and then the tool replaces that and moves it aside.
  host.files.save("/home/user/.local/share/Zolvar/versions/run/f", "edit");
  host.files.save(path("f"), "bob's", 190);
  state->settleReplacedFiles({{"f", "/home/user/.local/share/Zolvar/versions/run/f"}});
  state->checkTodoFiles();
  EXPECT_EQ(*host.files.readAll(path("f")), "edit");
  EXPECT_TRUE(state->prepareCopy({"f"}).empty()) << "not replaced again";
  host.clock.advance(20);
  scan();
  ASSERT_EQ(heard.snapshot->conflicts->size(), 1U);
  state->checkTodoFiles();
  EXPECT_TRUE(missing().empty());
  EXPECT_EQ(*host.files.readAll(path("f")), "edit");
}

TEST_F(KDPoolStateSyncTest, aSavingThatWasCutOffIsNoEdit) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  const std::string saved = "/home/user/.local/share/Zolvar/versions/run/f";
  for (const char* beginning : {"", "fir", "first"}) {
    host.files.save(saved, beginning);
    state->settleReplacedFiles({{"f", saved}});
    EXPECT_EQ(host.files.readAll(path("f")).value_or(""), "first");
    EXPECT_FALSE(host.files.exists(saved));
  }
  host.clock.advance(20);
  scan();
  EXPECT_TRUE(heard.snapshot->conflicts->empty());
}

TEST_F(KDPoolStateSyncTest, fetchesAWantedFileThatWasErasedMeanwhile) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  host.files.remove(path("f"));
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  fetch("f", "first", 90);  // bob is away; carol has the older one only
  EXPECT_EQ(host.files.readAll(path("f")).value_or(""), "first");
  fetch("f", "second", 190);
  EXPECT_EQ(host.files.readAll(path("f")).value_or(""), "second");
  EXPECT_TRUE(missing().empty());
}

TEST_F(KDPoolStateSyncTest, anEditOfTheLastSecondsBecomesABranchAlsoAfterACrash) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  host.files.save("/home/user/.local/share/Zolvar/versions/run/f", "edit");
  host.files.save(path("f"), "bob's", 190);
  restart();  // the program ended before it looked at what the run had replaced
  state->settleReplacedFiles({{"f", "/home/user/.local/share/Zolvar/versions/run/f"}});
  host.clock.advance(20);
  scan();
  EXPECT_EQ(host.files.readAll(path("f")).value_or(""), "edit");
  EXPECT_EQ(heard.snapshot->conflicts->size(), 1U) << ownLog();
}

TEST_F(KDPoolStateSyncTest, readsALogThatCouldBeMadeWholeOnlyByTheNextLoad) {
  arrives("bob@beta.local", {line(100, 0, "f", 90), line(300, 0, "g", 91)});
  ASSERT_TRUE(state->prepareLogLoad());
  host.files.save(path(".Zolvar/bob@beta.local.fplog"),
                  line(100, 0, "f", 90) + "\n" + line(200, 0, "h", 92) + "\n", now() + 5);
  host.files.faults.failAlways("append");
  state->finishLogLoad();
  host.files.faults.clear();
  arrives("carol@gamma.local", {});
  EXPECT_EQ(missing(), (std::vector<std::string>{"f", "g", "h"}));
}

TEST_F(KDPoolStateSyncTest, readsOwnLinesThatALoadBringsBeforeAnEntryIsMade) {
  put("a", "one");
  scan();
  ASSERT_TRUE(state->prepareLogLoad());
  const std::string longer = ownLog() + line(200, 0, "lost", 190) + "\n";
  host.files.save(path(".Zolvar/me@alpha.local.fplog"), longer, now() + 5);
  put("b", "two");
  scan();  // a person's decision would do the same
  state->finishLogLoad();
  EXPECT_EQ(missing(), std::vector<std::string>{"lost"});
  EXPECT_EQ(heard.snapshot->fileCount, 3U);
  EXPECT_EQ(ownLines(), 3U) << ownLog();
}

TEST_F(KDPoolStateSyncTest, aPowerFailureAfterTheEndIsNoEdit) {
  for (const bool isDiskWell : {true, false}) {
    const std::string file = isDiskWell ? "f" : "g";
    arrives("bob@beta.local", {line(100, 0, file, 90)});
    fetch(file, "first", 90);
    if (!isDiskWell) host.files.faults.failAlways("flush");
    state->leave();
    host.files.faults.clear();
    host.files.powerLoss();
    const auto left = ownLines();
    start();
    host.clock.advance(20);
    scan();
    EXPECT_EQ(ownLines(), left) << "an emptied file is nobody's edit";
    EXPECT_EQ(host.files.readAll(path(file)).value_or(""), isDiskWell ? "first" : "");
    if (isDiskWell) continue;
    const ParticipantAddress bob{"bob", "beta.local", 50000, "Docs"};
    (void)state->decideListing({{'-', 5, {90}, file}}, bob);
    EXPECT_EQ(missing(), std::vector<std::string>{file});
  }
}

TEST_F(KDPoolStateSyncTest, anEmptyFileThatSomebodyMadeStays) {
  arrives("bob@beta.local", {line(100, 0, "e", 90)});
  fetch("e", "", 90);
  state->filesAreOnDisk();
  scan();
  arrives("bob@beta.local", {line(200, 100, "e", 0)});
  state->leave();
  host.clock.advance(1000);
  host.files.save(path("e"), "", 90);  // taken out of the Trash
  start();
  EXPECT_TRUE(host.files.exists(path("e")));
  arrives("bob@beta.local", {line(300, 0, "g", 290)});
  fetch("g", "x", 290);
  ASSERT_TRUE(state->awaitsDisk());
  put("own", "");
  scan();
  start();  // the program was killed while the disk was awaited
  EXPECT_TRUE(host.files.exists(path("own")));
  EXPECT_TRUE(missing().empty());
}

TEST_F(KDPoolStateSyncTest, aFilePutBackWithItsOldTimeIsFetchedFromAnybody) {
  arrives("bob@beta.local", {line(100, 0, "f", 90), line(200, 100, "f", 0), line(300, 0, "f", 90)});
  const ParticipantAddress carol{"carol", "gamma.local", 50000, "Docs"};
  const std::vector<ListingEntry> listed = {{'-', 5, {90}, "f"},
                                            {'-', 9999, {}, ".Zolvar/bob@beta.local.fplog"}};
  EXPECT_TRUE(state->decideListing(listed, carol).files.empty()) << "it may be the deleted one";
  host.clock.advance(60);
  EXPECT_EQ(state->decideListing(listed, carol).files.size(), 1U);
}

TEST_F(KDPoolStateSyncTest, noLoadLeavesAnothersListOfMissingFiles) {
  put("a", "1");
  scan();
  host.files.remove(path(".Zolvar/todos.plist"));
  host.files.faults.failAlways("replace");
  EXPECT_FALSE(state->prepareLogLoad()) << "a full disk";
  host.files.faults.clear();
  ASSERT_TRUE(state->prepareLogLoad());
  host.files.remove(path(".Zolvar/todos.plist"));
  host.files.write(path(".Zolvar/todos.plist/x"), "");
  state->finishLogLoad();
  EXPECT_TRUE(host.files.readAll(path(".Zolvar/todos.plist")).has_value());
  EXPECT_FALSE(host.files.exists(path(".zolvar-aside")));
}

TEST_F(KDPoolStateSyncTest, putsAwayWhatACutOffTransferLeft) {
  const auto lies = [this](const std::string& name, std::uint32_t mode) {
    host.files.write(path(name), "half");
    host.files.setMode(path(name), mode);
  };
  arrives("bob@beta.local",
          {line(99, 0, "d", 99), line(100, 0, "d/env", 90), line(101, 0, "d/.rc", 91)});
  lies("d/.env.before", 0600);
  state->checkFileSystemChanges();  // too fresh to be logged
  const ParticipantAddress bob{"bob", "beta.local", 50000, "Docs"};
  const CopyPlan plan =
      state->decideListing({{'-', 4, {90}, "d/env"}, {'-', 4, {91}, "d/.rc"}}, bob);
  ASSERT_EQ(state->prepareCopy(plan.files).size(), 2U);
  host.clock.advance(5);
  for (const char* name : {"d/.env.aB3xYz", "d/.rc.000000"}) lies(name, 0600);
  lies("d/.env.sample", 0644);
  lies("d/.env.before", 0600);
  lies("d/.env.oldone", 0600);
  host.files.setTime(path("d/.env.oldone"), now() - 100);
  for (const char* name : {"d/.env.samples", "d/.env.sam+le", "d/.other.aB3xYz", ".env.aB3xYz"}) {
    lies(name, 0600);
  }
  restart();
  host.clock.advance(20);
  scan();
  EXPECT_FALSE(host.files.exists(path("d/.env.aB3xYz")));
  EXPECT_FALSE(host.files.exists(path("d/.rc.000000")));
  EXPECT_TRUE(host.files.wasTrashed("half"));
  EXPECT_EQ(ownLog().find("d/.env.aB3xYz"), std::string::npos) << ownLog();
  EXPECT_EQ(ownLines(), 7U) << ownLog();
  lies("d/.env.aB3xYz", 0600);  // no run was cut off since
  host.clock.advance(20);
  scan();
  EXPECT_EQ(ownLines(), 8U) << ownLog();
}

TEST_F(KDPoolStateSyncTest, whatLiesInAnotherFolderDescendsFromNothingRecorded) {
  arrives("bob@beta.local", {line(100, 0, "f", 90), line(101, 0, "g", 91)});
  fetch("f", "first", 90);
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  fetch("f", "second", 190);
  fetch("g", "same", 91);
  scan();
  state->leave();
  host.files.move("/home/user/Docs", "/home/user/old/Docs");
  host.files.copy("/home/user/old/Docs/.Zolvar", host.files, path(".Zolvar"));
  host.files.save(path("f"), "from an old drive", 50);
  host.files.save(path("g"), "same", 91);
  start();
  EXPECT_EQ(heard.snapshot->conflicts->size(), 1U) << ownLog();
  EXPECT_EQ(ownLog().find("\"g\""), std::string::npos) << ownLog();
}

}  // namespace
}  // namespace zolvar
