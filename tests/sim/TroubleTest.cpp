// Networks in which disks, cables, programs and strangers misbehave: nobody's work may be lost.

#include <gtest/gtest.h>

#include "sim/SimulatedPeer.h"

namespace zolvar {
namespace {

using Paths = std::vector<std::string>;
using Files = std::map<std::string, std::string>;

class Trouble : public ::testing::Test {
 protected:
  Net net;
  SimulatedPeer& a = net.peer("alpha");
  SimulatedPeer& b = net.peer("beta");

  static bool has(const SimulatedPeer& peer, const std::string& content) {
    return peer.host.files.everyContent().contains(content);
  }
  std::string log(const SimulatedPeer& at, const SimulatedPeer& author) const {
    return at.host.files.readAll(at.logPath("Docs", author)).value_or("");
  }
};

TEST_F(Trouble, aLostLocalLogComesBackFromTheNetwork) {
  net.share(a, "Docs", {{"x", "one"}}, {&b});
  b.write("Docs/x", "two");
  b.write("Docs/y", "one");
  net.settle();
  const std::string before = log(b, b);
  b.quit();
  b.host.files.remove(b.logPath("Docs", b));
  b.write("Docs/x", "three");
  net.advance(60);
  b.start();
  net.expectSame("Docs", {{"x", "three"}, {"y", "one"}});
  EXPECT_TRUE(log(b, b).starts_with(before)) << log(b, b);
  EXPECT_EQ(log(a, b), log(b, b));
}

TEST_F(Trouble, anotherCopyOfOurLogNeverMakesItShorter) {
  struct Row {
    const char* what;
    std::function<std::string(const std::string&)> spoil;
  };
  const std::vector<Row> rows = {
      {"older", [](const std::string& text) { return text.substr(0, text.find('\n') + 1); }},
      {"cut inside a line",
       [](const std::string& text) { return text.substr(0, text.size() - 7); }},
      {"empty", [](const std::string&) { return std::string(); }},
      {"other bytes", [](const std::string& text) { return std::string(text.size(), 'x') + "\n"; }},
  };
  net.share(a, "Docs", {{"x", "one"}, {"y", "one"}}, {&b});
  int edits = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    b.write("Docs/x", "edit " + std::to_string(++edits));
    b.write("Docs/y", "edit " + std::to_string(edits));
    net.settle();
    const std::string before = log(b, b);
    // The copy at alpha is spoilt and looks newer; alpha then has something to tell.
    const auto time = static_cast<std::int64_t>(net.world.clock.now()) + 5;
    a.host.files.save(a.logPath("Docs", b), row.spoil(before), time);
    a.write("Docs/z", "edit " + std::to_string(edits));
    net.settle();
    for (std::size_t at = 0; at < before.size(); at = before.find('\n', at) + 1) {
      const std::string line = before.substr(at, before.find('\n', at) + 1 - at);
      EXPECT_NE(log(b, b).find(line), std::string::npos) << line << "is lost from\n" << log(b, b);
    }
    b.write("Docs/x", "edit " + std::to_string(edits) + " again");
    const std::string n = std::to_string(edits);
    net.expectSame("Docs", {{"x", "edit " + n + " again"}, {"y", "edit " + n}, {"z", "edit " + n}});
  }
}

TEST_F(Trouble, strangersLogsHarmNothing) {
  net.share(a, "Docs", {{"x", "one"}}, {&b});
  b.host.files.write("/home/user/precious", "mine");
  const auto now = static_cast<long long>(net.world.clock.now());
  const std::string time = std::to_string(now);
  const std::string year = std::to_string(now + 365LL * 86400);
  const std::string stranger = a.path("Docs") + "/.Zolvar/eve@evil.local.fplog";
  const std::string rows[] = {
      "\"" + time + "\",\"0\",\"../precious\",\"" + time + "\",\"\",\"\"\n",
      "\"" + time + "\",\"0\",\"/home/user/precious\",\"0\",\"\",\"\"\n",
      "\"" + time + "\",\"0\",\".Zolvar/user@beta.local.fplog\",\"0\",\"\",\"\"\n",
      "\"" + time + "\",\"x\"\n",
      std::string("\0\xff\"\"\",\n,,,,,,,,\n\"", 14),
      "\n\"" + year + "\",\"0\",\"x\",\"" + year + "\",\"\",\"\"\n",
      "\"" + std::to_string(now + 1) + "\",\"" + year + "\",\"x\",\"0\",\"\",\"\"\n",
      "\"1e300\",\"0\",\"x\",\"nan\",\"\",\"\"\n\"" + time + "\",\"0\",\"unfini",
  };
  std::string text;
  for (const std::string& row : rows) text += row;
  a.host.files.write(stranger, text);
  a.write("Docs/y", "one");
  net.settle();
  EXPECT_EQ(b.host.files.readAll("/home/user/precious"), "mine");
  EXPECT_EQ(b.read("Docs/y"), "one");
  EXPECT_FALSE(log(b, b).find("precious") != std::string::npos);
  const double before = net.world.clock.now();
  b.write("Docs/y", "two");
  net.advance(60);
  EXPECT_EQ(a.read("Docs/y"), "two") << "a time in the future holds nobody up";
  EXPECT_LT(net.world.clock.now() - before, 120);
  EXPECT_EQ(a.read("Docs/x"), "one");
  EXPECT_EQ(b.read("Docs/x"), "one");
}

TEST_F(Trouble, aFolderCopiedByHandBeforeSubscribingLosesNothing) {
  Files files;
  for (int i = 0; i < 20; ++i) files["file" + std::to_string(i)] = "content " + std::to_string(i);
  for (const auto& [path, content] : files) a.write("Docs/" + path, content);
  net.advance(60);
  a.host.files.copy(a.path("Docs"), b.host.files, b.path("Docs"));
  b.write("Docs/file3", "changed at beta");
  net.advance(60);
  a.share("Docs");
  net.advance(60);
  b.subscribe("Docs");
  net.settle();
  EXPECT_LE(a.conflicts("Docs").size(), 1U) << "only what differs is a conflict";
  EXPECT_LE(b.conflicts("Docs").size(), 1U);
  EXPECT_TRUE(has(a, "content 3") || has(b, "content 3"));
  EXPECT_TRUE(has(a, "changed at beta") || has(b, "changed at beta"));
}

TEST_F(Trouble, aFolderSharedTwiceWithTheSameFilesIsOneFolder) {
  for (const char* name : {"x", "y", "z"}) a.write(std::string("Docs/") + name, name);
  a.host.files.copy(a.path("Docs"), b.host.files, b.path("Docs"));
  b.write("Docs/z", "longer, with the same time");
  b.host.files.setTime(b.path("Docs/z"), a.host.files.attributesOf(a.path("Docs/z"))->modTime);
  net.world.network.partition({{"alpha"}, {"beta"}});
  net.advance(60);
  a.share("Docs");
  b.share("Docs");
  net.advance(60);
  net.world.network.heal();
  net.settle();
  EXPECT_EQ(a.conflicts("Docs"), Paths{"z"});
  EXPECT_EQ(b.conflicts("Docs"), Paths{"z"});
  EXPECT_TRUE(has(a, "z") && has(b, "longer, with the same time"));
}

TEST_F(Trouble, nothingNeedFollowAnEntryFromTheEndOfTimes) {
  net.share(a, "Docs", {{"x", "one"}, {"y", "one"}}, {&b});
  const auto now = static_cast<long long>(net.world.clock.now());
  a.write("Docs/x", "by eve");
  a.host.files.setTime(a.path("Docs/x"), now - 50);
  a.host.files.write(
      a.path("Docs") + "/.Zolvar/eve@evil.local.fplog",
      "\"1099511627775\",\"0\",\"x\",\"" + std::to_string(now - 50) + "\",\"\",\"\"\n");
  a.write("Docs/y", "two");
  net.settle();
  EXPECT_EQ(b.read("Docs/y"), "two");
  for (SimulatedPeer* peer : {&a, &b}) {
    peer->write("Docs/x", "edit by " + peer->name());
    peer->write("Docs/z by " + peer->name(), "one");
    net.settle();
    std::optional<Result<>> refused;
    peer->operations().dropVersion("Docs", "x", "eve@evil.local:1099511627775",
                                   [&](Result<> result) { refused = std::move(result); });
    net.advance(10);
    ASSERT_TRUE(refused.has_value());
    EXPECT_FALSE(refused->has_value());
  }
  EXPECT_EQ(a.read("Docs/z by beta"), "one");
  EXPECT_EQ(b.read("Docs/z by alpha"), "one");
  EXPECT_TRUE(has(a, "edit by alpha") && has(b, "edit by beta"));
  for (SimulatedPeer* peer : {&a, &b}) {
    EXPECT_FALSE(peer->host.log.contains("ended early")) << peer->host.log.text();
  }
}

TEST_F(Trouble, anEditSavedWhileTheNewerVersionArrivesIsKept) {
  for (const bool inPlace : {true, false}) {
    SCOPED_TRACE(inPlace ? "in place" : "saved aside");
    const std::string path = inPlace ? "Docs/x" : "Docs/y";
    if (inPlace) net.share(a, "Docs", {{"x", "one"}, {"y", "one"}}, {&b});
    b.host.processes.troubles.duringFile = [&](const std::string& /*file*/) {
      b.host.processes.troubles.duringFile = {};
      inPlace ? b.write(path, "last second " + path) : b.save(path, "last second " + path);
    };
    a.write(path, "newer " + path);
    net.settle();
    for (const char* content : {"last second ", "newer "}) {
      EXPECT_TRUE(has(a, content + path) || has(b, content + path)) << content;
    }
    EXPECT_EQ(a.conflicts("Docs"), b.conflicts("Docs"));
    EXPECT_FALSE(b.conflicts("Docs").empty());
    a.use(path, b);
    b.drop(path, a);
    net.settle();
    EXPECT_EQ(a.conflicts("Docs"), Paths{});
    EXPECT_EQ(a.read(path), "last second " + path);
    EXPECT_EQ(b.read(path), "last second " + path);
  }
}

TEST_F(Trouble, aFolderThatIsNotThereDeletesNothingElsewhere) {
  b.host.files.mount(b.path("Docs"), 7);
  net.share(a, "Docs", {{"x", "one"}, {"sub/y", "one"}}, {&b});
  ASSERT_EQ(b.read("Docs/sub/y"), "one");
  const Files all = {{"x", "one"}, {"sub", "/"}, {"sub/y", "one"}};

  b.host.files.unmount(b.path("Docs"));
  net.advance(300);
  a.write("Docs/x", "two");
  net.advance(600);
  EXPECT_EQ(a.contents("Docs").size(), 3U);
  EXPECT_EQ(b.contents("Docs"), Files{}) << "nothing is written into the bare mount point";
  EXPECT_EQ(b.questioned("Docs"), Paths{});
  b.host.files.mount(b.path("Docs"), 7);
  net.expectSame("Docs", {{"x", "two"}, {"sub", "/"}, {"sub/y", "one"}});

  // The same with the program off in between, and a sub-folder that gives I/O errors.
  b.quit();
  b.host.files.unmount(b.path("Docs"));
  b.start();
  net.advance(300);
  EXPECT_EQ(a.contents("Docs").size(), 3U);
  b.host.files.mount(b.path("Docs"), 7);
  b.host.files.setUnreadable(b.path("Docs/sub"), true);
  net.advance(300);
  EXPECT_EQ(b.questioned("Docs"), Paths{});
  b.host.files.setUnreadable(b.path("Docs/sub"), false);
  net.expectSame("Docs", {{"x", "two"}, {"sub", "/"}, {"sub/y", "one"}});
}

TEST_F(Trouble, aCutAStalledAndAKilledTransferAreMadeGood) {
  struct Row {
    const char* what;
    std::optional<std::size_t> TransferTroubles::*trouble;
  };
  const Row rows[] = {{"cut", &TransferTroubles::cutAfterFiles},
                      {"stalled", &TransferTroubles::stallAfterFiles},
                      {"killed", &TransferTroubles::killAfterFiles}};
  net.share(a, "Docs", {{"keep", "one"}}, {&b});
  Files expected = {{"keep", "one"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    b.host.processes.troubles.*row.trouble = 4;  // a log or two come first
    for (int i = 0; i < 8; ++i) {
      const std::string name = std::string(row.what) + std::to_string(i);
      a.write("Docs/" + name, name);
      expected[name] = name;
    }
    net.settle();
    for (const auto& [path, content] : expected) EXPECT_EQ(b.read("Docs/" + path), content) << path;
    EXPECT_EQ(b.missing("Docs"), Paths{});
    EXPECT_EQ(b.conflicts("Docs"), Paths{});
    net.expectSame("Docs", expected);  // and no leftover was shared
  }
  EXPECT_EQ(b.host.processes.troubles.cutAfterFiles, std::nullopt);
}

TEST_F(Trouble, aStalledPeerDoesNotHoldUpTheOthers) {
  auto& c = net.peer("gamma");
  net.share(a, "Docs", {{"x", "one"}}, {&b, &c});
  // gamma answers no more, but nobody has noticed: its announcement is still there.
  c.crash();
  c.host.processes.killAll();
  a.write("Docs/x", "two");
  net.advance(300);
  EXPECT_EQ(b.read("Docs/x"), "two");
}

TEST_F(Trouble, aCrashAtAnyCallOfTheDiskLosesNothing) {
  net.share(a, "Docs", {{"x", "one"}, {"sub/y", "one"}}, {&b});
  std::string content;
  std::size_t call = 0;
  for (bool hasCrashed = true; hasCrashed && call < 400; b.start()) {
    SCOPED_TRACE("crash at call " + std::to_string(++call));
    hasCrashed = false;
    content = "edit " + std::to_string(call);
    a.write("Docs/x", content + " a");
    b.write("Docs/sub/y", content + " b");
    b.host.files.faults.crashAt(call);
    try {
      net.advance(90);
    } catch (const SimulatedCrash&) {
      hasCrashed = true;
    }
    b.crash();
  }
  EXPECT_GT(call, 50U);
  net.expectSame("Docs", {{"x", content + " a"}, {"sub", "/"}, {"sub/y", content + " b"}});
}

TEST_F(Trouble, clocksThatDifferAndStepLoseNothing) {
  net.share(a, "Docs", {{"x", "one"}}, {&b});
  b.host.clock.step(-9);
  a.write("Docs/x", "by alpha");
  net.settle();
  b.write("Docs/x", "by beta, whose clock is behind");
  net.expectSame("Docs", {{"x", "by beta, whose clock is behind"}});
  b.host.clock.step(18);
  b.write("Docs/x", "by beta, whose clock is ahead");
  net.settle();
  a.write("Docs/x", "by alpha again");
  net.expectSame("Docs", {{"x", "by alpha again"}});
}

TEST_F(Trouble, aFullDiskIsNoLossAndNoDeletion) {
  net.share(a, "Docs", {{"x", "one"}}, {&b});
  for (const char* operation : {"append", "replace", "trash", "rename", "link"}) {
    SCOPED_TRACE(operation);
    b.host.files.faults.failAlways(operation);
    a.write("Docs/x", std::string("during ") + operation);
    b.write(std::string("Docs/new ") + operation, "one");
    net.advance(300);
    EXPECT_EQ(a.read("Docs/x"), std::string("during ") + operation);
    b.host.files.faults.clear();
    net.settle();
    EXPECT_EQ(b.read("Docs/x"), std::string("during ") + operation);
    EXPECT_EQ(a.read(std::string("Docs/new ") + operation), "one");
    EXPECT_EQ(a.conflicts("Docs"), Paths{});
  }
}

}  // namespace
}  // namespace zolvar
