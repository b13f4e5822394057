// Orders of events in which work would be lost, or named wrongly, without the guard against each.

#include "pool/KDPoolStateFixture.h"

namespace zolvar {
namespace {

class KDPoolStateGuardTest : public KDPoolStateTest {
 protected:
  static constexpr const char* Saved = "/home/user/.local/share/Zolvar/versions/run/f";
  const std::string bob = "bob@beta.local";
  const std::string carol = "carol@gamma.local";

  /// Bob lists the file; what may be copied then.
  std::set<std::string> ready(const std::string& relative, std::uint64_t size, std::int64_t modTime,
                              char kind = '-') {
    const ParticipantAddress address{"bob", "beta.local", 50000, "Docs"};
    return state->prepareCopy(
        state->decideListing({{kind, size, {modTime}, relative}}, address).files);
  }
  void crash() {
    state.reset();
    start();
  }
  std::string read(const std::string& relative) {
    return host.files.readAll(path(relative)).value_or("(none)");
  }
  std::string chosen() {
    for (const auto& conflict : *heard.snapshot->conflicts) {
      for (const auto& version : conflict.versions) {
        if (version.isLocal) return version.id.text();
      }
    }
    return "none";
  }
};

using Paths = std::vector<std::string>;

TEST_F(KDPoolStateGuardTest, whatIsSavedWhileACopyRunReplacesItStays) {
  arrives(bob, {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  arrives(bob, {line(200, 100, "f", 190), line(300, 0, "d", 300)});
  ASSERT_EQ(ready("f", 6, 190).size(), 1U);
  host.files.save(Saved, "edit", 90);  // the editor kept the old version's time
  host.files.save(path("f"), "second", 190);
  EXPECT_TRUE(state->settleReplacedFiles({{"f", Saved}}));
  EXPECT_EQ(read("f"), "edit");
  host.files.save(Saved, "an earlier edit");
  host.files.save(path("f"), "and another");
  EXPECT_TRUE(state->settleReplacedFiles({{"f", Saved}}));
  EXPECT_EQ(read("f"), "and another");
  arrives(bob, {line(310, 0, "g", 80), line(320, 310, "g", 180)});
  ASSERT_EQ(ready("g", 6, 180).size(), 1U);
  host.files.save(Saved, "put where nothing lay", 80);  // with a known time
  host.files.save(path("g"), "second", 180);
  EXPECT_TRUE(state->settleReplacedFiles({{"g", Saved}}));
  EXPECT_EQ(read("g"), "put where nothing lay");
  ASSERT_EQ(ready("d", 0, 300, 'd').size(), 1U);
  host.files.save(Saved, "put there");
  ASSERT_TRUE(host.files.makeFolder(path("d")));
  EXPECT_TRUE(state->settleReplacedFiles({{"d", Saved}}));
  EXPECT_TRUE(host.files.wasTrashed("put there"));
}

TEST_F(KDPoolStateGuardTest, ofTwoEditsThatNobodyLoggedNoneIsOverwritten) {
  arrives(bob, {line(100, 0, "f", 90)});
  ASSERT_EQ(ready("f", 6, 90).size(), 1U);
  host.files.save(Saved, "replaced");
  host.files.save(path("f"), "edited as it came", 90);  // the listing told another size
  EXPECT_TRUE(state->settleReplacedFiles({{"f", Saved}}));
  EXPECT_EQ(read("f"), "edited as it came");
  EXPECT_TRUE(host.files.wasTrashed("replaced"));

  arrives(bob, {line(200, 0, "g", 80)});
  ASSERT_EQ(ready("g", 6, 80).size(), 1U);
  crash();  // and so no listing is known
  host.files.save(Saved, "was replaced");
  host.files.save(path("g"), "edited then", 80);
  scan();
  EXPECT_TRUE(state->settleReplacedFiles({{"g", Saved}}));
  EXPECT_EQ(read("g"), "was replaced");
  EXPECT_TRUE(host.files.wasTrashed("edited then"));

  arrives(bob, {line(300, 0, "h", 70)});
  ASSERT_EQ(ready("h", 4, 70).size(), 1U);
  host.files.save(path("h"), "bobs", 70);
  host.files.save(Saved, "saved before");
  host.files.faults.beforeCall = [&](std::string_view operation, std::string_view) {
    if (operation != "moveIn") return;
    host.files.faults.beforeCall = {};
    host.clock.advance(1);
    host.files.save(path("h"), "saved once more");
  };
  EXPECT_FALSE(state->settleReplacedFiles({{"h", Saved}}));
  EXPECT_EQ(read("h"), "saved once more");
  EXPECT_TRUE(host.files.exists(Saved)) << "looked at again by the next sync";
  host.clock.advance(20);
  scan();  // logged meanwhile
  EXPECT_TRUE(state->settleReplacedFiles({{"h", Saved}}));
  EXPECT_EQ(read("h"), "saved once more");
  EXPECT_TRUE(host.files.wasTrashed("saved before"));
}

TEST_F(KDPoolStateGuardTest, aRunThatStaysOpenDoesNotBringBackWhatItReplaced) {
  const std::string known = Saved + std::string("-known");
  arrives(bob, {line(100, 0, "f", 90), line(110, 0, "d/g", 80)});
  fetch("f", "first", 90);
  fetch("d/g", "first", 80);
  arrives(bob, {line(200, 100, "f", 190), line(210, 110, "d/g", 180)});
  ASSERT_EQ(ready("f", 6, 190).size(), 1U);
  host.files.save(known, "first", 90);
  host.files.save(Saved, "edit of d/g", 85);
  const std::vector<ReplacedFile> replaced = {{"f", known}, {"d/g", Saved}};
  host.files.faults.failAlways("moveIn");
  EXPECT_FALSE(state->settleReplacedFiles(replaced));
  host.files.faults.clear();
  host.files.save(path("f"), "second", 190);
  state->checkTodoFiles();
  arrives(bob, {line(300, 200, "f", 290)});
  ASSERT_EQ(ready("f", 5, 290).size(), 1U);
  host.files.save(path("f"), "third", 290);  // copied, and not on record yet
  host.files.remove(path("d"));
  EXPECT_TRUE(state->settleReplacedFiles(replaced));
  EXPECT_EQ(read("f"), "third");
  EXPECT_TRUE(host.files.wasTrashed("edit of d/g")) << "its directory is gone";
}

TEST_F(KDPoolStateGuardTest, whatCameBeforeItsAuthorLoggedItIsFetchedAgain) {
  arrives(bob, {line(100, 0, "f", 90)});
  ASSERT_EQ(ready("f", 5, 90).size(), 1U);
  host.files.save(path("f"), "half done", 95);
  state->checkTodoFiles();
  arrives(bob, {line(110, 100, "f", 95)});  // of that second, and perhaps saved again since
  EXPECT_EQ(missing(), Paths{"f"});
  EXPECT_EQ(ready("f", 9, 95).size(), 1U);
  EXPECT_TRUE(host.files.wasTrashed("half done")) << "the tool leaves what has the time and size";

  host.files.save(path("f"), "once more", 96);
  state->checkTodoFiles();
  arrives(bob, {line(120, 110, "f", 96), line(130, 120, "f", 0)});  // saved, and deleted
  for (int i = 0; i < 3; ++i) scan();
  EXPECT_FALSE(host.files.exists(path("f")));
  const int before = heard.fullSyncs;
  scan();
  EXPECT_EQ(heard.fullSyncs, before);
}

TEST_F(KDPoolStateGuardTest, aListingIsReadWithWhatItsLogsCanTell) {
  const ParticipantAddress address{"bob", "beta.local", 50000, "Docs"};
  const auto wants = [&](std::uint64_t size) {
    const ListingEntry log{'-', size, {1}, ".Zolvar/" + carol + ".fplog"};
    return state->decideListing({log, {'-', 5, {90}, "f"}}, address).files.size();
  };
  const std::string first = line(100, 0, "e", 80) + "\n";
  const std::string second = line(110, 0, "f", 90) + "\n";
  arrives(carol, {line(100, 0, "e", 80), line(110, 0, "f", 90)});
  EXPECT_EQ(wants(first.size()), 0U) << "bob's file cannot be carol's version yet";
  EXPECT_EQ(wants(first.size() + second.size()), 1U);
}

TEST_F(KDPoolStateGuardTest, whatIsKeptOutAsAFolderIsNeitherMissingNorAskedAbout) {
  arrives(bob, {line(100, 0, "x", 90), line(100, 0, "c", 91), line(200, 0, "build", 200)});
  fetch("x", "a file", 90);
  arrives(carol, {line(300, 0, "c", 92)});
  put(".zolvarignore", "build/\nx/\nc/\n");
  host.files.remove(path("x"));
  host.files.write(path("x/inner"), "kept out");
  host.files.write(path("c/inner"), "kept out");
  scan();
  const int before = heard.fullSyncs;
  for (int i = 0; i < 4; ++i) scan();
  EXPECT_EQ(heard.fullSyncs, before) << "nobody is asked for what is kept out";
  EXPECT_FALSE(heard.question);
  EXPECT_EQ(missing(), Paths{"c"});
  EXPECT_TRUE(state->deleteBranch("c", leafOf(bob))) << "and a conflict can be decided";
}

TEST_F(KDPoolStateGuardTest, whatIsSavedAsSoonAsItArrivedIsNotReplaced) {
  arrives(bob, {line(100, 0, "f", 90)});
  ASSERT_EQ(ready("f", 5, 90).size(), 1U);
  host.files.save(path("f"), "edit");  // over what the run has just brought
  state->checkTodoFiles();
  EXPECT_TRUE(ready("f", 5, 90).empty());
  host.clock.advance(20);
  scan();
  EXPECT_EQ(read("f"), "edit");
  EXPECT_EQ(heard.snapshot->conflicts->size(), 1U) << ownLog();
}

TEST_F(KDPoolStateGuardTest, anEditWithItsOldTimeDuringARunIsNotTheOldVersion) {
  arrives(bob, {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  arrives(bob, {line(200, 100, "f", 190)});
  ASSERT_EQ(ready("f", 6, 190).size(), 1U);
  host.files.save(path("f"), "edit with its old time", 90);
  state->checkTodoFiles();  // the run was cut off and brought nothing
  host.clock.advance(20);
  scan();
  EXPECT_EQ(read("f"), "edit with its old time");
  EXPECT_EQ(heard.snapshot->conflicts->size(), 1U) << ownLog();
}

TEST_F(KDPoolStateGuardTest, onlyWhatWasLoggedMakesWay) {
  arrives(bob, {line(100, 0, "f", 90), line(200, 100, "f", 190)});
  ASSERT_EQ(ready("f", 5, 190).size(), 1U);
  const auto time = now() - 60;
  host.files.save(path("f"), "newer", time);  // its author has not logged it yet
  state->checkTodoFiles();
  scan();
  EXPECT_EQ(ownLines(), 0U) << ownLog();
  arrives(bob, {line(250, 200, "f", static_cast<double>(time))});
  fetch("f", "newer", time);
  arrives(bob, {line(300, 250, "f", 290)});
  EXPECT_TRUE(ready("f", 5, 90).empty()) << "older than what lies here";
  put("d", "mine");
  scan();
  host.files.save(path("d"), "an edit");
  arrives(bob, {line(400, 0, "d", 400), line(401, 0, "d/x", 390)});
  (void)state->wantedFiles();
  EXPECT_EQ(read("d"), "an edit") << "no directory takes its place before it is logged";
}

TEST_F(KDPoolStateGuardTest, whatABreakdownEmptiedIsNobodysEdit) {
  put("f", "mine");
  scan();
  const auto time = host.files.attributesOf(path("f"))->modTime;
  host.files.write(path("f"), "", time);
  scan();
  arrives(bob, {line(100, 0, "g", 90)});
  host.files.save(path("g"), "", 90);  // arrived, and not recorded before the power failed
  crash();
  for (const char* name : {"f", "g"}) EXPECT_FALSE(host.files.exists(path(name))) << name;
  EXPECT_EQ(missing(), (Paths{"f", "g"}));
  EXPECT_EQ(ownLines(), 1U) << ownLog();
  arrives(bob, {line(101, 0, "h", 91)});
  fetch("h", "bob's", 91);
  host.files.remove("/home/user/.local/share/Zolvar/records");  // lost as well
  host.files.save(path("h"), "", 91);
  crash();
  EXPECT_EQ(ready("h", 5, 91).size(), 1U) << "a listing tells that it should not be empty";
}

TEST_F(KDPoolStateGuardTest, nothingDescendsFromWhatThePowerFailureTook) {
  arrives(bob, {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  host.files.powerLoss();
  put("f", "written anew");
  crash();
  EXPECT_EQ(heard.snapshot->conflicts->size(), 1U) << ownLog();
}

TEST_F(KDPoolStateGuardTest, aFileIsNotWhatItsTimeSays) {
  arrives(bob, {line(100, 0, "f", 90), line(101, 0, "g", 91), line(102, 0, "l", 92)});
  host.files.save(path("f"), "another", 90);
  state->checkTodoFiles();
  EXPECT_EQ(missing(), (Paths{"f", "g", "l"})) << "nobody saw it arrive";
  host.files.makeLink(path("g"), "there", 91);
  host.files.makeLink(path("l"), "there", 92);
  const int asked = heard.fullSyncs;
  scan();
  EXPECT_GT(heard.fullSyncs, asked) << "listings can tell";
  EXPECT_TRUE(ready("f", 5, 90).empty());
  EXPECT_TRUE(ready("g", 5, 91).empty()) << "a file there, a link here";
  EXPECT_EQ(ready("l", 5, 92, 'l').size(), 1U);
  EXPECT_TRUE(host.files.exists(path("l"))) << "the tool compares targets";
  scan();
  EXPECT_EQ(heard.conflicts, (Paths{"f", "g"}));
  arrives(bob, {line(200, 0, "h", 95)});
  host.files.save(path("h"), "guess", 95);
  scan();
  put("h", "an edit");
  (void)ready("h", 5, 95);
  scan();
  EXPECT_EQ(heard.conflicts.back(), "h") << "what was listed is not the edit";
}

TEST_F(KDPoolStateGuardTest, aChoiceIsFinishedWhereverTheProgramEnds) {
  bool hasEnded = true;
  for (std::size_t call = 1; hasEnded; ++call) {
    const std::string file(call, 'f');
    const VersionId theirs{bob, 99 + static_cast<double>(call)};
    put(file, "mine");
    scan();
    arrives(bob, {line(theirs.logTime, 0, file, 90)});
    host.files.faults.crashAt(call);
    try {
      hasEnded = false;
      (void)state->selectBranch(file, theirs);
      host.files.write(path(".Zolvar/todos.plist"), "");  // the power fails afterwards
    } catch (const SimulatedCrash&) {
      hasEnded = true;
    }
    state.reset();
    host.files.faults.clear();
    start();
    const auto versions = heard.snapshot->conflicts->back().versions;
    const bool isChosen = versions[versions[0].id == theirs ? 0 : 1].isLocal;
    const bool isWanted = std::find(missing().begin(), missing().end(), file) != missing().end();
    EXPECT_TRUE(isChosen || hasEnded);
    EXPECT_TRUE(isWanted || !isChosen) << "after call " << call;
  }
}

TEST_F(KDPoolStateGuardTest, whatArrivedIsTheVersionThatWasListed) {
  const auto log = [](const std::string& user) { return path(".Zolvar/" + user + ".fplog"); };
  host.files.save(log(bob), line(100, 0, "f", 90) + "\n" + line(150, 100, "f", 90) + "\n");
  host.files.save(log(carol), line(110, 0, "f", 90) + "\n");
  restart();  // bob chose his, we have none
  fetch("f", "bob's", 90);
  EXPECT_EQ(chosen(), leafOf(bob).text());
}

TEST_F(KDPoolStateGuardTest, aCopyThatACrashCutOffIsNoEdit) {
  put("f", "mine");
  scan();
  arrives(bob, {line(100, 0, "f", 90)});
  ASSERT_TRUE(state->selectBranch("f", leafOf(bob)));
  const auto lines = ownLines();
  ASSERT_EQ(ready("f", 5, 90).size(), 1U);
  host.files.save(path("f"), "bob's", 90);
  crash();
  EXPECT_EQ(ownLines(), lines) << ownLog();
}

TEST_F(KDPoolStateGuardTest, aChoiceThatFitsTwoBranchesIsMadeAnew) {
  arrives(bob, {line(100, 0, "f", 90)});
  arrives(carol, {line(110, 0, "f", 95)});
  fetch("f", "bob's", 90);
  arrives(bob, {line(200, 100, "f", 190)});
  put("f", "mine");
  scan();
  state->leave();
  const std::string log = path(".Zolvar/" + bob + ".fplog");
  host.files.save(log, *host.files.readAll(log) + line(leafTimeOf("f") + 5, 200, "f", 290) + "\n");
  start();
  state->checkTodoFiles();
  EXPECT_EQ(missing(), Paths()) << "bob's newest is not what was chosen";
  EXPECT_EQ(read("f"), "mine");
}

TEST_F(KDPoolStateGuardTest, whatWasDeletedGoesToTheTrashAlsoWhenAnotherComesInItsPlace) {
  arrives(bob, {line(100, 0, "f", 90)});
  arrives(carol, {line(110, 0, "f", 95)});
  arrives("dave@delta.local", {line(120, 0, "f", 97)});
  fetch("f", "bob's", 90);
  arrives(bob, {line(200, 100, "f", 0), line(210, 110, "f", 205, carol)});
  EXPECT_EQ(ready("f", 5, 205).size(), 1U);
  EXPECT_TRUE(host.files.wasTrashed("bob's"));
}

TEST_F(KDPoolStateGuardTest, filesAndDirectoriesTakeEachOthersPlace) {
  arrives(bob, {line(100, 0, "f", 90)});
  fetch("f", "first", 90);
  arrives(bob, {line(200, 100, "f", 200)});
  EXPECT_EQ(ready("f", 0, 200, 'd').size(), 1U);
  EXPECT_TRUE(host.files.wasTrashed("first"));

  arrives(bob, {line(300, 0, "d", 300), line(301, 0, "d/x", 290)});
  ASSERT_TRUE(host.files.makeFolder(path("d")));
  state->checkTodoFiles();
  arrives(carol, {line(310, 300, "d", 305, bob)});
  EXPECT_TRUE(ready("d", 5, 305).empty()) << "d/x lives, though not here yet";

  put("p", "mine");
  scan();
  arrives(carol, {line(320, 0, "p", 320)});
  const double mine = leafTimeOf("p");
  host.files.remove(path("p"));
  ASSERT_TRUE(host.files.makeFolder(path("p")));
  scan();
  EXPECT_GT(leafTimeOf("p"), mine) << "our own directory took the file's place: " << ownLog();
}

TEST_F(KDPoolStateGuardTest, directoriesOfOneNameGoTogether) {
  for (const char* name : {"d", "e"}) {
    arrives(bob, {line(100, 0, name, 100)});
    arrives(carol, {line(110, 0, name, 110)});
    ASSERT_TRUE(host.files.makeFolder(path(name)));
  }
  state->checkTodoFiles();
  host.files.remove(path("d"));
  host.files.remove(path("e"));
  put("d", "a file now");
  scan();
  scan();
  EXPECT_TRUE(heard.snapshot->conflicts->empty()) << ownLog();
  ASSERT_TRUE(heard.question);
  ASSERT_TRUE(state->answerQuestion(heard.question->id, 1001));
  state->checkTodoFiles();
  EXPECT_EQ(missing(), Paths());
  EXPECT_EQ(heard.snapshot->fileCount, 1U) << ownLog();
}

}  // namespace
}  // namespace zolvar
