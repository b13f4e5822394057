// Whole networks of two and three computers through ordinary days.

#include <gtest/gtest.h>

#include "sim/SimulatedPeer.h"

namespace zolvar {
namespace {

using Paths = std::vector<std::string>;
using Files = std::map<std::string, std::string>;

/// alpha has shared "Docs" with some files; beta has it, and so has gamma when wanted.
class Scenario : public ::testing::Test {
 protected:
  Net net;
  SimulatedPeer& a = net.peer("alpha");
  SimulatedPeer& b = net.peer("beta");

  std::size_t clientRuns() {
    std::size_t runs = 0;
    for (SimulatedPeer* peer : net.peers()) runs += peer->host.processes.runs.size();
    return runs;
  }
};

TEST_F(Scenario, everyKindOfFileReachesASubscriber) {
  a.host.files.makeFolder(a.path("Docs/empty"));
  a.host.files.makeLink(a.path("Docs/link"), "sub/y");
  a.host.files.makeLink(a.path("Docs/away"), "/etc/passwd");
  a.host.files.makeOther(a.path("Docs/socket"));
  net.share(a, "Docs",
            {{"x", "one"}, {"sub/y", "two"}, {"#odd; \"na\",me", "three"}, {" \xc3\xa9 ", ""}},
            {&b});
  const Files expected = {
      {"x", "one"},       {"sub", "/"},   {"sub/y", "two"},    {"#odd; \"na\",me", "three"},
      {" \xc3\xa9 ", ""}, {"empty", "/"}, {"link", "-> sub/y"}};
  EXPECT_EQ(b.contents("Docs"), expected);
  EXPECT_EQ(b.host.files.attributesOf(b.path("Docs/x"))->modTime,
            a.host.files.attributesOf(a.path("Docs/x"))->modTime);
}

TEST_F(Scenario, editsTravelBothWaysAndThenNothingRuns) {
  net.share(a, "Docs", {{"x", "one"}, {"y", "one"}}, {&b});
  a.write("Docs/x", "two");
  b.save("Docs/y", "two");
  b.write("Docs/new/z", "one");
  net.expectSame("Docs", {{"x", "two"}, {"y", "two"}, {"new", "/"}, {"new/z", "one"}});
  b.write("Docs/x", "three");
  net.settle();
  a.write("Docs/x", "four");
  net.expectSame("Docs", {{"x", "four"}, {"y", "two"}, {"new", "/"}, {"new/z", "one"}});
  const std::size_t runs = clientRuns();
  net.advance(3600);
  EXPECT_EQ(clientRuns(), runs) << "an idle network starts the transfer tool";
}

TEST_F(Scenario, filesVanishedHereAreFetchedAgainOrDeletedEverywhere) {
  for (const bool deletes : {false, true}) {
    const std::string name = deletes ? "gone" : "back";
    if (!deletes)
      net.share(a, "Docs", {{"back", "one"}, {"gone", "two"}, {"stays", "three"}}, {&b});
    b.erase("Docs/" + name);
    net.settle();
    EXPECT_EQ(b.questioned("Docs"), Paths{name});
    EXPECT_EQ(a.read("Docs/" + name), deletes ? "two" : "one") << "nobody has answered yet";
    b.answer("Docs", deletes);
    net.expectSame("Docs", deletes ? Files{{"back", "one"}, {"stays", "three"}}
                                   : Files{{"back", "one"}, {"gone", "two"}, {"stays", "three"}});
  }
  EXPECT_TRUE(a.host.files.wasTrashed("two"));
}

TEST_F(Scenario, aRenamedAndARecreatedFileArrive) {
  net.share(a, "Docs", {{"old", "one"}, {"other", "two"}}, {&b});
  b.move("Docs/old", "Docs/new");
  net.settle();
  EXPECT_EQ(b.questioned("Docs"), Paths{"old"});
  b.answer("Docs", true);
  net.expectSame("Docs", {{"new", "one"}, {"other", "two"}});
  a.write("Docs/old", "again");
  net.expectSame("Docs", {{"new", "one"}, {"other", "two"}, {"old", "again"}});
}

TEST_F(Scenario, editsAtOnceBranchAndAPersonChooses) {
  for (const char* choice : {"use", "drop"}) {
    SCOPED_TRACE(choice);
    const std::string name = std::string("file to ") + choice;
    const std::string path = "Docs/" + name;
    if (name.ends_with("use")) {
      net.share(a, "Docs", {{"file to use", "one"}, {"file to drop", "one"}}, {&b});
    }
    net.world.network.partition({{"alpha"}, {"beta"}});
    net.advance(300);
    a.write(path, "by alpha");
    net.advance(30);
    b.write(path, "by beta");
    net.advance(60);
    net.world.network.heal();
    net.settle();
    EXPECT_EQ(a.conflicts("Docs"), Paths{name});
    EXPECT_EQ(b.conflicts("Docs"), Paths{name});
    EXPECT_EQ(a.read(path), "by alpha");
    EXPECT_EQ(b.read(path), "by beta");
    if (name.ends_with("use")) {
      a.use(path, b);
      net.settle();
      EXPECT_EQ(a.read(path), "by beta");
      b.drop(path, a);
    } else {
      a.drop(path, b);
    }
    net.settle();
    EXPECT_EQ(a.conflicts("Docs"), Paths{});
    EXPECT_EQ(b.conflicts("Docs"), Paths{});
    EXPECT_EQ(a.read(path), name.ends_with("use") ? "by beta" : "by alpha");
    EXPECT_EQ(b.read(path), a.read(path));
    const auto everything = [](SimulatedPeer& peer) { return peer.host.files.everyContent(); };
    for (const char* content : {"by alpha", "by beta"}) {
      EXPECT_TRUE(everything(a).contains(content) || everything(b).contains(content)) << content;
    }
  }
}

TEST_F(Scenario, choicesThatCrossLeaveAVersionInTheFolder) {
  net.share(a, "Docs", {{"x", "one"}, {"y", "one"}}, {&b});
  const auto apart = [this] { net.world.network.partition({{"alpha"}, {"beta"}}); };
  apart();
  for (const char* path : {"Docs/x", "Docs/y"}) {
    a.write(path, "by alpha");
    b.write(path, "by beta");
  }
  net.advance(60);
  net.world.network.heal();
  net.settle();
  apart();
  a.drop("Docs/x", b);
  a.use("Docs/y", b);
  net.advance(60);
  b.drop("Docs/x", a);
  b.use("Docs/y", a);
  net.advance(60);
  EXPECT_EQ(a.read("Docs/y"), "by alpha") << "nothing else can be had yet";
  EXPECT_EQ(b.read("Docs/y"), "by beta");
  net.world.network.heal();
  net.settle();
  EXPECT_EQ(a.conflicts("Docs"), Paths{"y"});
  for (SimulatedPeer* peer : {&a, &b}) {
    EXPECT_EQ(peer->read("Docs/x"), "by beta") << "the later one's wish";
    EXPECT_NE(peer->read("Docs/y"), "(none)");
  }
  // Who knows what the other has dropped deletes what is left.
  a.write("Docs/x", "by alpha again");
  b.write("Docs/x", "by beta again");
  net.settle();
  if (a.conflicts("Docs").front() == "x") a.drop("Docs/x", b);
  net.settle();
  b.erase("Docs/x");
  net.advance(60);
  b.answer("Docs", true);
  net.settle();
  EXPECT_EQ(a.read("Docs/x"), "(none)");
  EXPECT_EQ(b.read("Docs/x"), "(none)");
}

TEST_F(Scenario, anEditTravelsThroughASecondPeerAfterItsAuthorLeft) {
  auto& c = net.peer("gamma");
  net.share(a, "Docs", {{"x", "one"}}, {&b, &c});
  c.setIsOn(false);
  net.advance(300);
  a.write("Docs/x", "two");
  a.write("Docs/late", "one");
  net.settle();
  ASSERT_EQ(b.read("Docs/x"), "two");
  a.setIsOn(false);
  net.advance(300);
  c.setIsOn(true);
  net.expectSame("Docs", {{"x", "two"}, {"late", "one"}});
  a.setIsOn(true);
  c.write("Docs/x", "three");
  net.expectSame("Docs", {{"x", "three"}, {"late", "one"}});
}

TEST_F(Scenario, partsOfANetworkWorkOnAndComeTogether) {
  auto& c = net.peer("gamma");
  net.share(a, "Docs", {{"x", "one"}, {"y", "one"}, {"z", "one"}}, {&b, &c});
  net.world.network.partition({{"alpha", "beta"}, {"gamma"}});
  a.write("Docs/x", "two");
  c.write("Docs/z", "two");
  net.settle();
  EXPECT_EQ(b.read("Docs/x"), "two");
  EXPECT_EQ(c.read("Docs/x"), "one");
  b.write("Docs/x", "three");
  net.settle();
  net.world.network.heal();
  net.expectSame("Docs", {{"x", "three"}, {"y", "one"}, {"z", "two"}});
}

TEST_F(Scenario, whatHappenedWhileTheProgramWasOffIsLoggedAtItsStart) {
  net.share(a, "Docs", {{"x", "one"}, {"y", "one"}}, {&b});
  b.quit();
  b.write("Docs/x", "two");
  b.write("Docs/new", "one");
  a.write("Docs/y", "two");
  net.advance(120);
  b.start();
  net.expectSame("Docs", {{"x", "two"}, {"y", "two"}, {"new", "one"}});
  EXPECT_EQ(b.questioned("Docs"), Paths{});
}

TEST_F(Scenario, leavingKeepsTheFilesAndComingBackMergesWhatWasDoneMeanwhile) {
  net.share(a, "Docs", {{"x", "one"}, {"y", "one"}}, {&b});
  b.unsubscribe("Docs");
  net.advance(60);
  a.write("Docs/x", "two");
  b.write("Docs/y", "two");
  net.settle();
  EXPECT_EQ(b.read("Docs/x"), "one");
  b.subscribe("Docs");
  net.expectSame("Docs", {{"x", "two"}, {"y", "two"}});
}

TEST_F(Scenario, onlyTheRightPasswordOpensAFolder) {
  auto& c = net.peer("gamma");
  a.write("Docs/x", "secret");
  net.advance(60);
  a.share("Docs", "open");
  b.subscribe("Docs", "wrong");
  c.subscribe("Docs");
  net.advance(600);
  for (SimulatedPeer* peer : {&b, &c}) {
    EXPECT_EQ(peer->read("Docs/x"), "(none)") << peer->name();
    for (const auto& run : peer->host.processes.runs) EXPECT_EQ(run.status, 5);
    EXPECT_FALSE(peer->host.processes.runs.empty());
    EXPECT_TRUE(peer->host.log.contains("Auth failed syncing"));
  }
  b.setPassword("Docs", "open");
  c.setPassword("Docs", "open");
  net.expectSame("Docs", {{"x", "secret"}});
}

}  // namespace
}  // namespace zolvar
