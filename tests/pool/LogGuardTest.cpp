#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "pool/LogGuard.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

using testing::ElementsAre;

const std::string Pool = "/home/user/Docs";
const std::string Logs = Pool + "/.Zolvar/";
const std::string Aside = Pool + "/.zolvar-aside";
const std::string Own = "user@alpha.local.fplog";
const std::string Bobs = "bob@beta.local.fplog";

/// A log of entries "TIME NAME" as its lines.
std::string line(int time, const std::string& name) {
  const std::string text = std::to_string(time);
  return "\"" + text + "\",\"0\",\"" + name + "\",\"" + text + "\",\"\",\"\"\n";
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

class LogGuardTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(host_.files.makeFolder(Pool + "/.Zolvar"));
    folder_ = *host_.files.open(Pool);
    guard_.emplace(*folder_, host_.log);
  }
  GuardedLog settled(const std::string& name) {
    const GuardReport report = guard_->settle();
    EXPECT_FALSE(report.trouble) << report.trouble->message();
    EXPECT_FALSE(host_.files.exists(Aside));
    for (const GuardedLog& log : report.logs) {
      if (log.name == name) return log;
    }
    ADD_FAILURE() << name << " is not in the report";
    return {};
  }
  std::string content(const std::string& name) {
    return host_.files.readAll(Logs + name).value_or("(not there)");
  }

  SimulatedPlatform host_;
  std::unique_ptr<Folder> folder_;
  std::optional<LogGuard> guard_;
};

TEST_F(LogGuardTest, losesNoLineWhateverALoadBrings) {
  const std::string a = line(10, "a");
  const std::string b = line(20, "b");
  const std::string c = line(30, "c");
  const std::string d = line(40, "d");
  const std::string damaged = "\"2x\",rubbish\n";
  const struct {
    const char* what;
    std::string before;
    std::string brought;
    std::string after;
    bool rewritten;
    std::vector<std::string> newToUs;
    std::int64_t time;  ///< before 1000, brought 2000
  } rows[] = {
      {"grown", a + b, a + b + c, a + b + c, false, {}, 2000},
      {"was empty", "", a, a, false, {}, 2000},
      {"grown behind a cut-off write", a + b.substr(0, 9), a + b, a + b, false, {}, 2000},
      {"older", a + b + c, a + b, a + b + c, true, {}, 2001},
      {"emptied", a + b, "", a + b, true, {}, 2001},
      {"diverged", a + b + d, a + c, a + b + c + d, true, linesOf(c), 2001},
      {"nothing in common", b + d, a + c, a + b + c + d, true, linesOf(a + c), 2001},
      {"the same lines in another order", a + b, b + a, b + a, true, {}, 2000},
      {"all of ours and more, in another order", b + a, a + c + b, a + c + b, true, linesOf(c),
       2000},
      {"equal times: ours first", a + line(20, "ours"), a + line(20, "theirs"),
       a + line(20, "ours") + line(20, "theirs"), true, linesOf(line(20, "theirs")), 2001},
      {"a line twice there", a + b, a + c + c, a + b + c, true, linesOf(c), 2001},
      {"damaged lines keep their places", a + damaged + c, a + b + "x\n" + d,
       a + damaged + b + "x\n" + c + d, true, linesOf(b + "x\n" + d), 2001},
      {"our cut-off line has no other copy", a + b.substr(0, 9), a + c,
       a + b.substr(0, 9) + "\n" + c, true, linesOf(c), 2001},
      {"our cut-off line is whole there", a + c + b.substr(0, 9), a + b, a + b + c, true,
       linesOf(b), 2001},
      {"the same line is cut off in both", a + b + d.substr(0, 9), a + c + d.substr(0, 9),
       a + b + c + d.substr(0, 9) + "\n", true, linesOf(c), 2001},
      {"their cut-off line is whole here",
       a + b + c,
       a + b.substr(0, 9),
       a + b + c,
       true,
       {},
       2001},
      {"their cut-off line is new", a + b, a + c.substr(0, 9), a + b + c.substr(0, 9) + "\n", true,
       linesOf(c.substr(0, 9)), 2001},
  };
  for (const auto& row : rows) {
    host_.files.save(Logs + Own, row.before, 1000);
    ASSERT_TRUE(guard_->setAside());
    host_.files.save(Logs + Own, row.brought, 2000);
    const GuardedLog log = settled(Own);
    EXPECT_EQ(row.after, content(Own)) << row.what;
    EXPECT_TRUE(log.changed) << row.what;
    EXPECT_EQ(row.rewritten, log.rewritten) << row.what;
    EXPECT_EQ(row.newToUs, log.linesNewToUs) << row.what;
    // A union's time is later than both, and another one for another content.
    const std::int64_t sizeTells =
        row.time == 2001 ? static_cast<std::int64_t>(row.after.size()) % 31 : 0;
    EXPECT_EQ(row.time + sizeTells, host_.files.attributesOf(Logs + Own)->modTime) << row.what;

    // It stays so: a second load that brings nothing finds nothing to do.
    ASSERT_TRUE(guard_->setAside());
    EXPECT_FALSE(settled(Own).changed) << row.what;
  }
}

TEST_F(LogGuardTest, theListOfMissingFilesComesBack) {
  for (const bool crashes : {false, true}) {
    host_.files.save(Logs + "todos.plist", "ours");
    ASSERT_TRUE(guard_->setAside());
    host_.files.save(Logs + "todos.plist", "theirs");
    if (crashes) guard_.emplace(*folder_, host_.log);
    EXPECT_FALSE(guard_->settle().trouble);
    EXPECT_EQ(content("todos.plist"), "ours");

    ASSERT_TRUE(guard_->setAside());
    ASSERT_TRUE(guard_->replaceTodoFile("ours, later"));
    host_.files.save(Logs + "todos.plist", "theirs");
    if (crashes) guard_.emplace(*folder_, host_.log);
    EXPECT_FALSE(guard_->settle().trouble);
    EXPECT_EQ(content("todos.plist"), "ours, later");
  }
}

TEST_F(LogGuardTest, bringsBackALogThatIsNoLongerOne) {
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"gone", [&] { host_.files.remove(Logs + Own); }},
      {"a directory",
       [&] {
         host_.files.remove(Logs + Own);
         host_.files.write(Logs + Own + "/x", "x");
       }},
      {"a link",
       [&] {
         host_.files.remove(Logs + Own);
         host_.files.makeLink(Logs + Own, "/etc/passwd");
       }},
      {"all gone", [&] { host_.files.remove(Pool + "/.Zolvar"); }},
  };
  for (const auto& [what, happen] : rows) {
    host_.files.save(Logs + Own, line(10, "a"), 1000);
    ASSERT_TRUE(guard_->setAside());
    happen();
    const GuardedLog log = settled(Own);
    EXPECT_TRUE(log.changed && !log.rewritten) << what;
    EXPECT_EQ(line(10, "a"), content(Own)) << what;
  }
}

TEST_F(LogGuardTest, removesWhatElseArrived) {
  for (const char* kept : {"bob@beta.local.fplog", "bob@beta.local.tiff", "todos.plist"}) {
    host_.files.write(Logs + kept, "");
  }
  ASSERT_TRUE(guard_->setAside());
  host_.files.write(Logs + "new@gamma.local.fplog", line(10, "a"));
  host_.files.write(Logs + "huge@beta.local.tiff", std::string(LogGuard::LargestPicture + 1, 'x'));
  host_.files.write(Logs + "evil.sh", "#!");
  host_.files.write(Logs + "noauthor.fplog", "x");
  host_.files.write(Logs + ".hidden@beta.local.fplog", "x");
  host_.files.write(Logs + "sub/deep@beta.local.fplog", "x");
  host_.files.write(Logs + "dir@beta.local.fplog/x", "x");
  host_.files.makeLink(Logs + "link@beta.local.fplog", "/etc/passwd");
  host_.files.makeLink(Logs + "link@beta.local.tiff", "/etc/passwd");

  const GuardReport report = guard_->settle();
  ASSERT_EQ(2U, report.logs.size());
  EXPECT_FALSE(report.logs[0].changed);
  EXPECT_EQ("new@gamma.local.fplog", report.logs[1].name);
  EXPECT_TRUE(report.logs[1].changed);
  std::vector<std::string> names;
  const auto listed = folder_->list(".Zolvar");
  ASSERT_TRUE(listed);
  for (const auto& [name, unused] : *listed) names.push_back(name);
  EXPECT_THAT(names, ElementsAre("bob@beta.local.fplog", "bob@beta.local.tiff",
                                 "new@gamma.local.fplog", "todos.plist"));
  EXPECT_EQ(1U, host_.log.count("do not belong"));
}

TEST_F(LogGuardTest, readsOnlyLogsThatALoadReplaced) {
  host_.files.write(Logs + Own, line(10, "a"));
  host_.files.write(Logs + Bobs, line(10, "b"));
  ASSERT_TRUE(guard_->setAside());
  host_.files.write(Logs + Own,
                    line(10, "a") + line(20, "c"));  // appended to by ourselves meanwhile
  host_.files.faults.failAlways("open");
  host_.files.faults.failAlways("read");
  const GuardReport report = guard_->settle();
  EXPECT_FALSE(report.trouble);
  ASSERT_EQ(2U, report.logs.size());
  EXPECT_FALSE(report.logs[0].changed);
  EXPECT_TRUE(report.logs[1].changed);
}

/// Whatever fails, and wherever the program dies, the old lines stay on the disk, and a later
/// settle() ends with all of them.
TEST_F(LogGuardTest, survivesFailuresAndCrashesAtEveryCall) {
  const std::string before = line(10, "a") + line(20, "b");
  const std::string brought = line(10, "a") + line(30, "c");
  for (const bool dies : {false, true}) {
    for (std::size_t call = 1; call < 60; ++call) {
      host_.files.faults.clear();
      host_.files.remove(Aside);
      host_.files.save(Logs + Own, before, 1000);
      host_.files.save(Logs + Bobs, before, 1000);
      ASSERT_TRUE(guard_->setAside());
      host_.files.save(Logs + Own, brought, 2000);
      host_.files.remove(Logs + Bobs);
      bool isOver = false;
      try {
        if (dies) host_.files.faults.crashAt(call);
        if (!dies) host_.files.faults.failAt(call);
        const std::size_t callsBefore = host_.files.faults.calls();
        static_cast<void>(guard_->settle());
        isOver = host_.files.faults.calls() - callsBefore < call;
      } catch (const SimulatedCrash&) {
      }
      host_.files.faults.clear();
      if (dies)
        guard_.emplace(*folder_, host_.log);  // a new program knows only what the disk shows
      ASSERT_TRUE(guard_->setAside()) << call;
      ASSERT_FALSE(guard_->settle().trouble) << call;
      EXPECT_EQ(before + line(30, "c"), content(Own)) << call << dies;
      EXPECT_EQ(before, content(Bobs)) << call << dies;
      if (isOver) break;
    }
  }
}

TEST_F(LogGuardTest, acceptsTheEmptyLogOfAnEmptyFolder) {
  ASSERT_TRUE(guard_->setAside());  // of the first load there is nothing to set aside
  host_.files.write(Logs + Bobs, "");
  (void)settled(Bobs);
  EXPECT_EQ(content(Bobs), "");
}

TEST_F(LogGuardTest, refusesALoadWhenALogCannotBeSetAside) {
  host_.files.write(Logs + Own, line(10, "a"));
  for (const char* operation : {"list", "link", "makeDirectories"}) {
    host_.files.faults.failAt(1, operation);
    EXPECT_FALSE(guard_->setAside()) << operation;
    host_.files.faults.clear();
    EXPECT_FALSE(guard_->settle().trouble);
  }
  EXPECT_EQ(line(10, "a"), content(Own));
}

/// Two participants load one log from each other, in any state: both end with every line, and
/// with nothing more to do.
TEST_F(LogGuardTest, endsWithEveryLineOnBothSides) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
    std::string sides[2];
    std::multiset<std::string> all;
    for (std::string& side : sides) {
      int time = 1;
      for (int count = below(12); count > 0; --count) {
        time += below(3);
        const std::string text =
            below(10) == 0 ? "damaged " + std::to_string(below(4)) + "\n"
                           : line(time, std::string(1, static_cast<char>('a' + below(3))));
        side += text;
        all.insert(text);
      }
    }
    std::int64_t times[2] = {1000 + below(3), 1000 + below(3)};
    if (times[0] == times[1]) ++times[1];
    // The side with the earlier time loads the other's copy, until both times are equal.
    for (int round = 0; times[0] != times[1] && round < 10; ++round) {
      const int loader = times[0] < times[1] ? 0 : 1;
      host_.files.save(Logs + Own, sides[loader], times[loader]);
      ASSERT_TRUE(guard_->setAside());
      host_.files.save(Logs + Own, sides[1 - loader], times[1 - loader]);
      ASSERT_FALSE(guard_->settle().trouble);
      sides[loader] = content(Own);
      times[loader] = host_.files.attributesOf(Logs + Own)->modTime;
    }
    ASSERT_EQ(times[0], times[1]) << "the copies replace each other for ever";
    EXPECT_EQ(sides[0], sides[1]);
    for (const std::string& text : all) EXPECT_NE(std::string::npos, sides[0].find(text)) << text;
  }
}

}  // namespace
}  // namespace zolvar
