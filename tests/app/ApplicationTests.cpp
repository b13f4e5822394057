#include <gmock/gmock.h>

#include "app/TwoHosts.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

class ApplicationTest : public TwoHosts {
 protected:
  ApplicationTest() { start(2); }
  void settle(double seconds) { world.loop.advance(seconds); }
  /// Ann shares, bob subscribes, the letter arrives.
  void pair() {
    settle(20);
    ASSERT_EQ(ann.share("/home/user/Docs"), "");
    ASSERT_TRUE(sees(bob, "Docs"));
    ASSERT_EQ(bob.subscribe("Docs", "/home/user/Docs"), "");
    ASSERT_TRUE(until([&] { return arrived("letter") == "dear bob"; })) << bob.platform.log.text();
    ASSERT_TRUE(bob.isActive("Docs"));
  }
  bool remembersSubscription(AppHost& host) {
    return host.platform.defaults.dictionary("activePools").contains("Docs");
  }
};

TEST_F(ApplicationTest, carriesAFolderAndItsChangesFromOneToTheOther) {
  pair();
  bob.platform.files.write("/home/user/Docs/answer", "dear ann");
  EXPECT_TRUE(until([&] {
    return ann.platform.files.readAll("/home/user/Docs/answer") == "dear ann";
  })) << ann.platform.log.text();
  EXPECT_EQ(ann.operations->list().at(0).participants, 1U);
  EXPECT_GE(bob.observer.count("end 0"), 1U);
}

TEST_F(ApplicationTest, waitsForItsOwnLogAndSaysWhenNobodyCanGiveIt) {
  ASSERT_EQ(ann.share("/home/user/Docs"), "");
  ASSERT_TRUE(sees(bob, "Docs"));
  world.network.setUp("alpha", false);
  settle(300);  // ann's announcement is gone by now
  ASSERT_EQ(bob.subscribe("Docs"), "");
  EXPECT_EQ(bob.pool("Docs").phase(), PoolPhase::Recovering);
  EXPECT_FALSE(remembersSubscription(bob));
  EXPECT_TRUE(bob.platform.log.contains(
      "Warning: Local log file not present! Trying to recover local log file from network."));
  EXPECT_TRUE(
      bob.platform.log.contains("Unable to activate pool. Needs at least one participant "
                                "to recover local log from network."));
  world.network.setUp("alpha", true);
  EXPECT_TRUE(until([&] { return bob.isActive("Docs"); })) << bob.platform.log.text();
  EXPECT_TRUE(remembersSubscription(bob));
  EXPECT_EQ(bob.pool("Docs").folderPath(), "/home/user/Public/Zolvar/Docs");
}

TEST_F(ApplicationTest, bringsItsFoldersBackWhereverTheyLieNow) {
  pair();
  bob.restart();
  EXPECT_TRUE(until([&] { return bob.isActive("Docs") && bob.app->peer().isServerRunning(); }));

  bob.stop();
  bob.platform.files.move("/home/user/Docs", "/home/user/Desk/Docs");
  bob.restart();
  EXPECT_TRUE(until([&] { return bob.isActive("Docs"); })) << bob.platform.log.text();
  EXPECT_EQ(bob.pool("Docs").folderPath(), "/home/user/Desk/Docs");

  bob.stop();
  bob.platform.files.move("/home/user/Desk/Docs", "/home/user/Desk/Papers");
  bob.restart();
  settle(10);
  EXPECT_FALSE(bob.isActive("Docs"));
  EXPECT_TRUE(
      bob.platform.log.contains("Warning! Synced Folder 'Docs' has been renamed to "
                                "'Papers'. Illegal. Deactivating folder."));
}

TEST_F(ApplicationTest, takesAnEmptyPlaceForADiskThatIsNotThereYet) {
  pair();
  bob.stop();
  bob.platform.files.move("/home/user/Docs", "/srv/elsewhere/Docs");  // out of sight
  ASSERT_TRUE(bob.platform.files.makeFolder("/home/user/Docs"));      // the mount point
  bob.restart();
  settle(30);
  EXPECT_FALSE(bob.isActive("Docs"));
  EXPECT_FALSE(bob.platform.files.exists("/home/user/Docs/.Zolvar"));
  EXPECT_EQ(ann.platform.files.readAll("/home/user/Docs/letter"), "dear bob");
  bob.platform.files.remove("/home/user/Docs");
  bob.platform.files.move("/srv/elsewhere/Docs", "/home/user/Docs");
  EXPECT_TRUE(until([&] { return bob.isActive("Docs"); }, 130)) << bob.platform.log.text();
}

TEST_F(ApplicationTest, recoversALogThatSomebodyDeleted) {
  pair();
  bob.stop();
  bob.platform.files.remove("/home/user/Docs/.Zolvar/bob@beta.local.fplog");
  bob.restart();
  EXPECT_TRUE(until([&] { return bob.isActive("Docs"); })) << bob.platform.log.text();
  EXPECT_TRUE(bob.platform.log.contains("Trying to recover local log file from network."));
}

TEST_F(ApplicationTest, runsOnceAUser) {
  Application::Settings settings;
  const auto second = Application::make(std::move(settings), ann.platform);
  ASSERT_FALSE(second);
  EXPECT_EQ(refusalText(second.error()), "Zolvar is running already for this user.");
}

TEST_F(ApplicationTest, leavesAFolderWhileItSyncs) {
  pair();
  bob.platform.processes.troubles.secondsPerRun = 5;
  ASSERT_TRUE(bob.operations->sync("Docs"));
  ASSERT_TRUE(bob.app->scheduler().syncingParticipant());
  ASSERT_TRUE(bob.operations->unsubscribe("Docs"));
  EXPECT_FALSE(bob.app->scheduler().syncingParticipant());
  EXPECT_TRUE(
      bob.platform.log.contains("Warning: Deactivation of pool Docs resets syncingParticipant"));
  settle(60);
  EXPECT_FALSE(bob.isActive("Docs")) << "the end of a sync brought the folder back";
  EXPECT_FALSE(remembersSubscription(bob));
  EXPECT_EQ(bob.subscribe("Docs"), "");
  EXPECT_TRUE(until([&] { return bob.isActive("Docs"); }));
}

TEST_F(ApplicationTest, answersVanishedFilesAsTheSettingSays) {
  pair();
  const auto remove = [&] { ann.platform.files.remove("/home/user/Docs/letter"); };
  remove();
  ASSERT_TRUE(until([&] { return ann.observer.count("question 1") == 1; }));
  EXPECT_EQ(arrived("letter"), "dear bob");
  settle(1);
  EXPECT_EQ(ann.operations->questions().at(0).question.paths, std::vector<std::string>{"letter"});
  EXPECT_EQ(ann.outcome([&](auto done) { ann.operations->answer("Docs", false, done); }), "");
  ASSERT_TRUE(until([&] { return ann.platform.files.exists("/home/user/Docs/letter"); }))
      << ann.platform.log.text();
  EXPECT_EQ(ann.outcome([&](auto done) { ann.operations->answer("Docs", true, done); }),
            "There is no open question about 'Docs'.");

  settle(60);
  ASSERT_TRUE(ann.operations->set("HeadlessDeleteAnswer", "delete"));
  remove();
  EXPECT_TRUE(until([&] { return !arrived("letter"); })) << ann.platform.log.text();
  EXPECT_TRUE(bob.platform.files.wasTrashed("dear bob"));
  EXPECT_EQ(ann.observer.count("question 1"), 1U);
}

TEST_F(ApplicationTest, restartsTheDaemonWhenItsLimitChanges) {
  pair();
  const auto limits = [&] {
    const auto runs = ann.platform.log.count("--bwlimit=25");
    return runs;
  };
  ann.platform.log.setDebug(true);
  ASSERT_TRUE(ann.operations->set("BWLimitOut", "25"));
  settle(5);
  EXPECT_GE(limits(), 1U) << ann.platform.log.text();
}

TEST_F(ApplicationTest, warnsOfAnUnsafeTransferTool) {
  ann.stop();
  ann.platform.processes.toolVersion = "3.2.7";
  ann.restart();
  EXPECT_TRUE(ann.platform.log.contains("rsync 3.2.7 has known security holes"))
      << ann.platform.log.text();
}

TEST_F(ApplicationTest, removesAFolderWithItsData) {
  pair();
  EXPECT_EQ(bob.outcome([&](auto done) { bob.operations->remove("Docs", done); }), "");
  settle(60);
  EXPECT_TRUE(bob.platform.files.wasTrashed("dear bob"));
  EXPECT_FALSE(bob.platform.files.exists("/home/user/Docs"));
  EXPECT_FALSE(bob.platform.defaults.string("QMPool-Docs"));
  EXPECT_EQ(ann.platform.files.readAll("/home/user/Docs/letter"), "dear bob");
}

TEST_F(ApplicationTest, refusesFoldersThatCannotBeShared) {
  pair();
  ASSERT_TRUE(ann.platform.files.makeFolder("/data/Docs"));
  ASSERT_TRUE(ann.platform.files.makeFolder("/data/.Trash-0/files/Old"));
  ASSERT_TRUE(ann.platform.files.makeFolder("/home/user/Docs/inner"));
  const std::pair<const char*, const char*> rows[] = {
      {"Docs", "must be a full one"},
      {"", "must be a full one"},
      {"/data/none", "There is no folder at '/data/none'."},
      {"/home/user/Docs/inner", "overlaps with the existing shared folder '~/Docs'"},
      {"/home/user", "Zolvar's own files"},
      {"/data/.Trash-0/files/Old", "lies in the Trash"},
      {"/data/Docs", "There is already a Sync Folder with the same name present."},
      {"/data/a:b", "':'"},
  };
  for (const auto& [folder, sentence] : rows) EXPECT_THAT(ann.share(folder), HasSubstr(sentence));
  EXPECT_THAT(bob.subscribe("Docs"), HasSubstr("already"));
  EXPECT_EQ(bob.subscribe("Nope"), "There is no folder named 'Nope'.");
  EXPECT_EQ(ann.app->peer().filePools().size(), 1U);
}

TEST_F(ApplicationTest, servesAFolderOnlyWithItsPassword) {
  ASSERT_EQ(ann.share("/home/user/Docs", "right"), "");
  ASSERT_TRUE(sees(bob, "Docs"));
  ASSERT_EQ(bob.subscribe("Docs", "/home/user/Docs", "wrong"), "");
  ASSERT_TRUE(until([&] { return bob.observer.count("password ann@alpha.local") == 1; }))
      << bob.platform.log.text();
  settle(120);
  EXPECT_EQ(bob.observer.count("password ann@alpha.local"), 1U) << "told again and again";
  EXPECT_GE(bob.platform.log.count("Auth failed syncing"), 2U) << "not tried again";
  EXPECT_FALSE(arrived("letter"));
  EXPECT_EQ(bob.outcome([&](auto done) { bob.operations->setPassword("Docs", "right", done); }),
            "");
  EXPECT_TRUE(until([&] { return arrived("letter") == "dear bob"; })) << bob.platform.log.text();

  // Without a password there, nothing is even tried.
  EXPECT_EQ(bob.outcome([&](auto done) { bob.operations->setPassword("Docs", "", done); }), "");
  settle(10);
  const auto runs = ann.platform.processes.runs.size();
  ASSERT_TRUE(ann.operations->sync("Docs"));
  settle(1);
  EXPECT_EQ(ann.platform.processes.runs.size(), runs);
  EXPECT_EQ(ann.observer.count("password bob@beta.local"), 1U);
  EXPECT_GE(ann.observer.count("end 37"), 1U);
}

TEST_F(ApplicationTest, waitsForASyncWithEverybody) {
  pair();
  std::optional<Result<SyncOutcome>> outcome;
  const auto wait = [&] {
    outcome.reset();
    ASSERT_TRUE(bob.operations->syncAndWait("Docs", {}, [&](auto ended) { outcome = ended; }));
    until([&] { return outcome.has_value(); });
    ASSERT_TRUE(outcome.has_value() && outcome->has_value());
  };
  bob.platform.processes.troubles.nextStatus = 5;  // too many connections: tried again
  wait();
  EXPECT_EQ((*outcome)->synced, std::vector<std::string>{"ann@alpha.local"});
  bob.platform.processes.troubles.nextStatus = 11;
  wait();
  ASSERT_EQ((*outcome)->failed.size(), 1U);
  EXPECT_THAT((*outcome)->failed[0].error, HasSubstr("Error syncing folder 'Docs'"));

  ASSERT_TRUE(bob.operations->syncAndWait("Docs", {}, [&](auto ended) { outcome = ended; }));
  outcome.reset();
  ASSERT_TRUE(bob.operations->unsubscribe("Docs"));
  ASSERT_TRUE(outcome.has_value());
  EXPECT_FALSE(outcome->has_value());
}

}  // namespace
}  // namespace zolvar
