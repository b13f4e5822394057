// What a pool's state makes of scans, choices and what peers logged.

#include "pool/KDPoolStateFixture.h"
#include "util/PropertyList.h"

namespace zolvar {
namespace {

TEST_F(KDPoolStateTest, logsWhatChangesAndOnlyThat) {
  put("a b, \"c\".txt", "one");
  host.files.makeLink(path("link"), "a b, \"c\".txt", now() - 50);
  host.files.makeLink(path("outside"), "../../secret", now() - 50);
  host.files.makeLink(path("absolute"), "/etc/passwd", now() - 50);
  host.files.makeOther(path("socket"));
  host.files.save(path("bad\nname"), "x", now() - 50);
  host.files.save(path(".DS_Store"), "x", now() - 50);
  host.files.save(path(".Trash-1000/files/x"), "x", now() - 50);
  host.files.save(path("dir/inner"), "x", now() - 50);
  scan();
  EXPECT_EQ(ownLines(), 4U) << ownLog();
  EXPECT_EQ(heard.announcements, 1);
  scan();
  restart();
  EXPECT_EQ(ownLines(), 4U) << "nothing changed: " << ownLog();
  host.files.save(path("dir/inner"), "y");
  host.clock.advance(5);
  state->checkFileSystemChanges();
  EXPECT_EQ(ownLines(), 4U) << "too fresh";
  scan();
  EXPECT_EQ(ownLines(), 5U);
  const auto time = host.files.attributesOf(path("dir/inner"))->modTime;
  host.files.save(path("dir/inner"), "other", time);
  host.clock.advance(20);
  scan();
  EXPECT_EQ(ownLines(), 6U) << "same time, other content";
  EXPECT_EQ(host.files.attributesOf(path("dir/inner"))->modTime, time + 1);
}

TEST_F(KDPoolStateTest, asksBeforeAVanishedFileIsDeletedOnTheNetwork) {
  put("a", "one");
  put("b", "two");
  scan();
  host.files.remove(path("a"));
  scan();
  EXPECT_EQ(heard.questions, 0) << "one look is not enough";
  EXPECT_EQ(heard.scansWanted, 1);
  scan();
  ASSERT_EQ(heard.questions, 1);
  EXPECT_EQ(heard.question->paths, std::vector<std::string>{"a"});
  host.files.remove(path("b"));
  scan();
  scan();
  ASSERT_EQ(heard.questions, 2) << "a larger question replaces it";
  EXPECT_FALSE(state->answerQuestion(heard.question->id - 1, 1001));
  EXPECT_TRUE(state->wantedFiles().empty());
  host.files.save(path("b"), "two", now() - 100);  // it comes back
  ASSERT_TRUE(state->answerQuestion(heard.question->id, 1001));
  EXPECT_NE(ownLog().find("\"a\",\"0\""), std::string::npos) << ownLog();
  EXPECT_EQ(ownLog().find("\"b\",\"0\""), std::string::npos) << ownLog();
  EXPECT_EQ(heard.snapshot->question, nullptr);
}

TEST_F(KDPoolStateTest, anAnswerDoesNotReachVersionsThatCameAfterTheQuestion) {
  arrives("bob@beta.local", {line(100, 0, "f", 90), line(101, 0, "g", 91)});
  fetch("f", "first", 90);
  fetch("g", "second", 91);
  host.files.remove(path("f"));
  host.files.remove(path("g"));
  scan();
  scan();
  ASSERT_EQ(heard.questions, 1);
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  ASSERT_TRUE(state->answerQuestion(heard.question->id, 1001));
  EXPECT_EQ(missing(), std::vector<std::string>{"f"});
  EXPECT_EQ(ownLog().find("\"f\",\"0\""), std::string::npos) << ownLog();
  EXPECT_NE(ownLog().find("\"g\",\"0\""), std::string::npos) << ownLog();
}

TEST_F(KDPoolStateTest, fetchesWhatIsMissingAtTheStart) {
  put("a", "one");
  scan();
  state->leave();
  host.files.remove(path("a"));
  start();
  EXPECT_EQ(missing(), std::vector<std::string>{"a"});
  EXPECT_GE(heard.fullSyncs, 1);
  EXPECT_EQ(heard.questions, 0);
  const auto saved = stringsFromPropertyList(*host.files.readAll(path(".Zolvar/todos.plist")));
  EXPECT_EQ(*saved, std::vector<std::string>{"a"});
}

TEST_F(KDPoolStateTest, appliesWhatPeersLogged) {
  arrives("bob@beta.local",
          {line(100, 0, "f", 90), line(101, 0, "gone", 91), line(102, 101, "gone", 0)});
  EXPECT_EQ(missing(), std::vector<std::string>{"f"});
  fetch("f", "bob's", 90);
  EXPECT_TRUE(missing().empty());
  EXPECT_EQ(ownLines(), 0U);
  scan();
  EXPECT_EQ(ownLines(), 0U) << "what was fetched is no edit of ours: " << ownLog();
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  EXPECT_EQ(missing(), std::vector<std::string>{"f"});
  fetch("f", "bob's later", 190);
  arrives("bob@beta.local", {line(300, 200, "f", 0)});
  EXPECT_EQ(heard.deleted, std::set<std::string>{"f"});
  EXPECT_FALSE(host.files.exists(path("f")));
  EXPECT_TRUE(host.files.wasTrashed("bob's later"));
  EXPECT_TRUE(missing().empty());
}

TEST_F(KDPoolStateTest, keepsBothSidesOfAConcurrentEdit) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  put("f", "mine");
  scan();
  arrives("bob@beta.local", {line(200, 100, "f", 190), line(250, 200, "f", 240)});
  EXPECT_EQ(heard.conflicts, std::vector<std::string>{"f"});
  EXPECT_EQ(*host.files.readAll(path("f")), "mine");
  EXPECT_TRUE(missing().empty());
  EXPECT_EQ(host.files.label(path("f")), 6);

  ASSERT_TRUE(state->selectBranch("f", leafOf("bob@beta.local")));
  EXPECT_EQ(*host.files.readAll(path("f")), "mine") << "bob may be away";
  EXPECT_EQ(missing(), std::vector<std::string>{"f"});
  EXPECT_FALSE(state->selectBranch("f", leafOf("bob@beta.local"))) << "chosen already";
  scan();
  fetch("f", "bob's older", 190);
  EXPECT_EQ(*host.files.readAll(path("f")), "mine") << "only the chosen one takes its place";
  fetch("f", "bob's", 240);
  EXPECT_TRUE(host.files.wasTrashed("mine"));
  EXPECT_EQ(*host.files.readAll(path("f")), "bob's");
  EXPECT_FALSE(state->deleteBranch("f", {"me@alpha.local", 1})) << "no such version";
  ASSERT_TRUE(state->deleteBranch("f", leafOf("me@alpha.local")));
  EXPECT_TRUE(heard.snapshot->conflicts->empty());
  EXPECT_EQ(*host.files.readAll(path("f")), "bob's");
  const std::size_t lines = ownLines();
  scan();
  restart();
  scan();
  EXPECT_EQ(ownLines(), lines) << ownLog();
  EXPECT_TRUE(missing().empty());
}

TEST_F(KDPoolStateTest, anEditHereOutlivesADeletionThere) {
  arrives("bob@beta.local",
          {line(100, 0, "d", 100), line(100, 0, "d/f", 90), line(100, 0, "d/g", 91)});
  host.files.save(path("d/x"), "x", 80);
  host.files.remove(path("d/x"));
  fetch("d/f", "first", 90);
  fetch("d/g", "second", 91);
  state->checkTodoFiles();
  host.files.save(path("d/f"), "edited");
  host.files.save(path("d/new"), "added");
  arrives("bob@beta.local",
          {line(200, 100, "d", 0), line(201, 100, "d/f", 0), line(202, 100, "d/g", 0)});
  EXPECT_EQ(*host.files.readAll(path("d/f")), "edited");
  EXPECT_EQ(*host.files.readAll(path("d/new")), "added");
  EXPECT_FALSE(host.files.exists(path("d/g")));
  host.clock.advance(20);
  scan();
  EXPECT_EQ(*host.files.readAll(path("d/f")), "edited");
  EXPECT_NE(ownLog().find("\"d/f\""), std::string::npos);
  EXPECT_NE(ownLog().find("\"d/new\""), std::string::npos);
  EXPECT_NE(ownLog().find("\"d\",\"1"), std::string::npos) << "the directory is wanted again";
}

TEST_F(KDPoolStateTest, aDirectoryGoesAsOneItem) {
  arrives("bob@beta.local", {line(100, 0, "d", 100), line(100, 0, "d/f", 90)});
  fetch("d/f", "first", 90);
  state->checkTodoFiles();
  arrives("bob@beta.local", {line(200, 100, "d", 0), line(200, 100, "d/f", 0)});
  EXPECT_FALSE(host.files.exists(path("d")));
  ASSERT_EQ(host.files.trashed().size(), 1U);
  EXPECT_EQ(host.files.trashed()[0].path, path("d/f"));
}

TEST_F(KDPoolStateTest, aDeletionThatFailedIsTriedAgainAndNeverLoggedAsARecreation) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  host.files.faults.failAlways("trash");
  arrives("bob@beta.local", {line(200, 100, "f", 0)});
  EXPECT_TRUE(host.files.exists(path("f")));
  scan();
  scan();
  EXPECT_NE(heard.snapshot->trouble.find("'f' in /home/user/Docs"), std::string::npos);
  EXPECT_EQ(host.log.count("Will delete file"), 1U) << "said once";
  restart();
  EXPECT_EQ(ownLines(), 0U) << ownLog();
  EXPECT_TRUE(host.files.exists(path("f")));
  host.files.faults.clear();
  scan();
  EXPECT_EQ(heard.snapshot->trouble, "");
  EXPECT_FALSE(host.files.exists(path("f")));
  EXPECT_TRUE(host.files.wasTrashed("first"));
}

TEST_F(KDPoolStateTest, aMissingFolderIsNotAnEmptyFolder) {
  put("a", "one");
  put("drive/b", "two");
  scan();
  const std::size_t lines = ownLines();
  host.files.mount(path("drive"), 99);
  scan();
  scan();
  EXPECT_EQ(heard.questions, 0) << "another drive is there";
  host.files.unmount(path("drive"));
  host.files.mount("/home/user/Docs", 98);
  scan();
  scan();
  EXPECT_EQ(heard.inaccessible, 1) << "told once";
  EXPECT_FALSE(state->accessibleFolderPath());
  host.files.unmount("/home/user/Docs");
  scan();
  EXPECT_TRUE(state->accessibleFolderPath());
  host.files.setUnreadable(path("drive"), true);
  scan();
  scan();
  EXPECT_EQ(heard.questions, 0) << "what cannot be read is not missing";
  EXPECT_EQ(ownLines(), lines);
  EXPECT_TRUE(missing().empty());
  host.files.move("/home/user/Docs", "/home/user/elsewhere/Docs");
  scan();
  EXPECT_EQ(heard.movedTo, "/home/user/elsewhere/Docs");
  EXPECT_EQ(heard.questions, 0);
}

TEST_F(KDPoolStateTest, versionsOfOursHaveTimesOfTheirOwn) {
  put("f", "one");
  scan();
  host.clock.step(-3600);  // our last entry lies ahead now
  host.files.remove(path("f"));
  scan();
  scan();
  ASSERT_TRUE(state->answerQuestion(heard.question->id, 1000));
  put("f", "two");
  scan();
  ASSERT_EQ(heard.snapshot->conflicts->size(), 1U) << ownLog();
  const auto versions = heard.snapshot->conflicts->front().versions;
  ASSERT_EQ(versions.size(), 2U);
  EXPECT_NE(versions[0].id, versions[1].id);
  ASSERT_TRUE(state->deleteBranch("f", (versions[0].isLocal ? versions[1] : versions[0]).id));
  EXPECT_EQ(host.files.readAll(path("f")).value_or(""), "two") << "the other one was dropped";
}

TEST_F(KDPoolStateTest, aDeletionIsDatedAfterThoseThatItsAuthorKnows) {
  put("f", "mine");
  scan();
  const double mine = leafTimeOf("f");
  arrives("bob@beta.local", {line(200, 0, "f", 190)});
  const double ahead = static_cast<double>(now()) + 9;  // bob's clock is
  arrives("bob@beta.local", {line(ahead, mine, "f", 0, "me@alpha.local")});
  fetch("f", "bob's", 190);
  ASSERT_TRUE(state->deleteBranch("f", {"bob@beta.local", 200}));
  EXPECT_GT(leafTimeOf("f"), ahead) << ownLog();
}

TEST_F(KDPoolStateTest, finishesAChoiceThatWasLeftHalfDone) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  put("f", "mine");
  scan();
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  host.files.faults.failAlways("trash");  // as if the program ended after the choice was logged
  ASSERT_TRUE(state->selectBranch("f", leafOf("bob@beta.local")));
  restart();
  EXPECT_EQ(missing(), std::vector<std::string>{"f"});
  EXPECT_EQ(state->timeWarpedFilesFromSet({"f"}), std::set<std::string>{"f"})
      << "the later time of what lies here must not keep the chosen version away";
  const ParticipantAddress address{"bob", "beta.local", 50000, "Docs"};
  EXPECT_TRUE(
      state->prepareCopy(state->decideListing({{'-', 5, {190}, "f"}}, address).files).empty())
      << "no Trash takes what lies here, and nobody else may have it";
  host.files.faults.clear();
  fetch("f", "bob's", 190);
  EXPECT_TRUE(missing().empty());
}

TEST_F(KDPoolStateTest, neverCopiesThroughALink) {
  arrives("bob@beta.local", {line(100, 0, "d", 100), line(100, 0, "d/f", 90)});
  host.files.makeLink(path("d"), "/etc", 40);
  EXPECT_TRUE(state->prepareCopy({"d/f"}).empty());
}

TEST_F(KDPoolStateTest, survivesAnOlderCopyOfItsOwnLog) {
  put("a", "one");
  scan();
  const std::string before = ownLog();
  put("b", "two");
  scan();
  const std::string whole = ownLog();
  ASSERT_TRUE(state->prepareLogLoad());
  host.files.save(path(".Zolvar/me@alpha.local.fplog"), before, now() + 5);
  host.files.save(path(".Zolvar/evil.sh"), "rm", now());
  state->finishLogLoad();
  EXPECT_EQ(ownLog(), whole);
  EXPECT_FALSE(host.files.exists(path(".Zolvar/evil.sh")));
  restart();
  EXPECT_EQ(heard.snapshot->fileCount, 2U);
}

TEST_F(KDPoolStateTest, refusesPathsThatLeaveTheFolder) {
  arrives("bob@beta.local",
          {line(100, 0, "../x", 90), line(101, 0, "/etc/x", 90), line(102, 0, ".Zolvar/x", 90),
           "\"103\",\"0\"", line(104, 0, "good", 90), line(105, 99999999999.0, "ahead", 90)});
  EXPECT_EQ(missing(), std::vector<std::string>{"good"});
}

TEST_F(KDPoolStateTest, leavesAloneWhatTheRulesName) {
  put("shared.tmp", "mine");
  scan();
  const double logged = leafTimeOf("shared.tmp");
  put(".zolvarignore", "*.tmp\nbuild/\n");
  put("own.tmp", "mine");
  put("build/deep/made", "made");
  scan();
  scan();
  EXPECT_EQ(ownLog().find("own.tmp"), std::string::npos);
  EXPECT_EQ(ownLog().find("build"), std::string::npos);
  EXPECT_NE(ownLog().find(".zolvarignore"), std::string::npos) << "the rules travel";

  arrives("bob@beta.local",
          {line(logged + 50, logged, "shared.tmp", 0, "me@alpha.local"),
           line(logged + 51, 0, "theirs.tmp", 90), line(logged + 52, 0, "theirs", 90)});
  EXPECT_TRUE(host.files.exists(path("shared.tmp"))) << "a peer deleted it";
  EXPECT_EQ(missing(), std::vector<std::string>{"theirs"});
  const std::size_t lines = ownLines();
  host.files.remove(path("shared.tmp"));
  for (int count = 0; count < 3; ++count) scan();
  EXPECT_EQ(ownLines(), lines);
  EXPECT_FALSE(heard.question) << "an ignored file is nobody's question";

  put(".zolvarignore", "");
  for (int count = 0; count < 3; ++count) scan();
  EXPECT_NE(ownLog().find("build/deep/made"), std::string::npos);
  EXPECT_EQ(missing(), (std::vector<std::string>{"theirs", "theirs.tmp"}));
}

TEST_F(KDPoolStateTest, keepsTheFolderAroundIgnoredFiles) {
  put(".zolvarignore", "*.tmp\n");
  put("work/file", "shared");
  put("work/own.tmp", "mine");
  scan();
  const double folder = leafTimeOf("work");
  const double file = leafTimeOf("work/file");
  arrives("bob@beta.local", {line(file + 50, file, "work/file", 0, "me@alpha.local"),
                             line(file + 51, folder, "work", 0, "me@alpha.local")});
  const std::size_t lines = ownLines();
  for (int count = 0; count < 3; ++count) scan();
  EXPECT_FALSE(host.files.exists(path("work/file")));
  EXPECT_TRUE(host.files.exists(path("work/own.tmp")));
  EXPECT_EQ(ownLines(), lines) << "the folder stays, and nobody is told";
}

}  // namespace
}  // namespace zolvar
