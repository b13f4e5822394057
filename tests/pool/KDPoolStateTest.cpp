#include <fmt/format.h>
#include <gtest/gtest.h>

#include <sstream>

#include "pool/KDPoolState.h"
#include "support/SimulatedPlatform.h"
#include "util/PropertyList.h"

namespace zolvar {
namespace {

struct Heard {
  std::shared_ptr<const PoolSnapshot> snapshot;
  std::vector<std::string> conflicts;
  std::set<std::string> deleted;
  std::shared_ptr<const DeleteQuestion> question;
  int questions = 0, announcements = 0, fullSyncs = 0, inaccessible = 0, scansWanted = 0;
  std::string movedTo;
};

class HearingListener final : public PoolStateListener {
 public:
  explicit HearingListener(Heard& heard) : heard_(heard) {}
  void stateDidChange(std::shared_ptr<const PoolSnapshot> snapshot) override {
    heard_.snapshot = std::move(snapshot);
  }
  void conflictDidOccur(const std::string& path) override { heard_.conflicts.push_back(path); }
  void willDeleteFiles(const std::set<std::string>& paths) override { heard_.deleted = paths; }
  void announcementNeeded() override { ++heard_.announcements; }
  void fullSyncNeeded() override { ++heard_.fullSyncs; }
  void questionRaised(std::shared_ptr<const DeleteQuestion> question) override {
    heard_.question = std::move(question);
    ++heard_.questions;
  }
  void pathsNotAccessible() override { ++heard_.inaccessible; }
  void folderMoved(const std::string& newPath) override { heard_.movedTo = newPath; }
  void scanWanted() override { ++heard_.scansWanted; }
  void warn(const std::string&) override {}

 private:
  Heard& heard_;
};

/// One pool "Docs" of me@alpha.local; what peers write is put into their logs by hand.
class KDPoolStateTest : public testing::Test {
 protected:
  static constexpr const char* Root = "/home/user/Docs/";

  void SetUp() override {
    host.files.write(path(".Zolvar/me@alpha.local.fplog"), "");
    start();
  }
  void start() {
    state = std::make_unique<KDPoolState>(
        KDPoolState::Settings{"Docs", "/home/user/Docs", "me@alpha.local", Pace::normal()},
        host.platform(), std::make_unique<HearingListener>(heard));
    const auto activated = state->activate();
    ASSERT_TRUE(activated) << activated.error().message();
  }
  void restart() {
    state->leave();
    start();
  }
  static std::string path(const std::string& relative) { return Root + relative; }
  /// A save by the user, long enough ago to be logged.
  void put(const std::string& relative, const std::string& content) {
    host.files.save(path(relative), content);
    host.clock.advance(20);
  }
  void scan() {
    host.clock.advance(10);
    state->checkFileSystemChanges();
  }
  /// What `author` logged arrives with a log load.
  void arrives(const std::string& author, const std::vector<std::string>& lines) {
    ASSERT_TRUE(state->prepareLogLoad());
    const std::string log = path(".Zolvar/" + author + ".fplog");
    std::string text = host.files.readAll(log).value_or("");
    for (const auto& line : lines) text += line + "\n";
    host.files.save(log, text);
    state->finishLogLoad();
  }
  static std::string line(double time, double parent, const std::string& file, double modTime,
                          const std::string& parentUser = "") {
    return fmt::format("\"{}\",\"{}\",\"{}\",\"{}\",\"{}\",\"\"", time, parent, file, modTime,
                       parentUser);
  }
  /// The listing shows the file with this time, and the copy run brings it.
  void fetch(const std::string& relative, const std::string& content, std::int64_t modTime) {
    const ParticipantAddress bob{"bob", "beta.local", 50000, "Docs"};
    const CopyPlan plan = state->decideListing({{'-', content.size(), {modTime}, relative}}, bob);
    for (const auto& ready : state->prepareCopy(plan.files)) {
      host.files.save(path(ready), content, modTime);
    }
    state->checkTodoFiles();
  }
  std::int64_t now() { return static_cast<std::int64_t>(host.clock.now()); }
  std::string ownLog() {
    return host.files.readAll(path(".Zolvar/me@alpha.local.fplog")).value_or("");
  }
  std::size_t ownLines() {
    const std::string log = ownLog();
    return static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n'));
  }
  /// When our last entry of a path was logged.
  double leafTimeOf(const std::string& relative) {
    std::istringstream lines(ownLog());
    double time = 0;
    for (std::string line; std::getline(lines, line);) {
      if (line.find(",\"" + relative + "\",") != std::string::npos)
        time = std::stod(line.substr(1));
    }
    return time;
  }
  const std::vector<std::string>& missing() { return *heard.snapshot->missing; }
  VersionId leafOf(const std::string& user) {
    for (const auto& conflict : *heard.snapshot->conflicts) {
      for (const auto& version : conflict.versions) {
        if (version.id.userId == user) return version.id;
      }
    }
    return {};
  }

  Heard heard;
  SimulatedPlatform host{"alpha", "me"};
  std::unique_ptr<KDPoolState> state;
};

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

TEST_F(KDPoolStateTest, anEditOfTheLastSecondsBecomesABranch) {
  arrives("bob@beta.local", {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  arrives("bob@beta.local", {line(200, 100, "f", 190)});
  const ParticipantAddress bob{"bob", "beta.local", 50000, "Docs"};
  const auto plan = state->decideListing({{'-', 3, {190}, "f"}}, bob);
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

TEST_F(KDPoolStateTest, aSavingThatWasCutOffIsNoEdit) {
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

TEST_F(KDPoolStateTest, fetchesAWantedFileThatWasErasedMeanwhile) {
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

TEST_F(KDPoolStateTest, anEditOfTheLastSecondsBecomesABranchAlsoAfterACrash) {
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

TEST_F(KDPoolStateTest, readsALogThatCouldBeMadeWholeOnlyByTheNextLoad) {
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

TEST_F(KDPoolStateTest, readsOwnLinesThatALoadBringsBeforeAnEntryIsMade) {
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

TEST_F(KDPoolStateTest, putsAwayWhatACutOffTransferLeft) {
  const auto lies = [this](const std::string& name, std::uint32_t mode) {
    host.files.write(path(name), "half");
    host.files.setMode(path(name), mode);
  };
  arrives("bob@beta.local",
          {line(99, 0, "d", 99), line(100, 0, "d/env", 90), line(101, 0, "d/.rc", 91)});
  lies("d/.env.before", 0600);
  state->checkFileSystemChanges();  // too fresh to be logged
  ASSERT_EQ(state->prepareCopy({"d/env", "d/.rc"}).size(), 2U);
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

TEST_F(KDPoolStateTest, whatLiesInAnotherFolderDescendsFromNothingRecorded) {
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
