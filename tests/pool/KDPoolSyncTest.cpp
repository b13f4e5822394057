#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/Platform.h"
#include "pool/KDPoolSync.h"
#include "pool/ScriptedLauncher.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const ParticipantAddress Beta{"bob", "beta.local", 49999, "Docs"};
const ParticipantAddress Nowhere{"bob", "gamma.local", 49999, "Docs"};
const std::string Pool = "/home/user/Docs";

/// Answers from fields, and keeps what was called, in order.
struct ScriptedSteps : PoolSyncSteps {
  explicit ScriptedSteps(std::vector<std::string>* diary) : diary(diary) {}
  std::vector<std::string>* diary;
  bool detached = false;
  bool recovering = false;
  bool accessible = true;
  bool prepares = true;
  bool awaits = false;
  std::string throwsIn;
  std::string detachesIn;
  std::set<std::string> wanted, warped, loaded;
  std::set<std::string> leftOut;  ///< by prepareCopy
  std::map<std::string, std::uint64_t> sizes;
  std::vector<ListingEntry> listed;
  std::vector<ReplacedFile> settled;

  void note(const std::string& step) {
    diary->push_back(step);
    if (step == detachesIn) detached = true;
    if (step == throwsIn) throw std::runtime_error("trouble in " + step);
  }
  [[nodiscard]] bool isDetached() const override { return detached; }
  [[nodiscard]] bool isRecovering() const override { return recovering; }
  Result<std::string> accessibleFolderPath() override {
    if (!accessible) return fail(FailureKind::Absent, "find", Pool);
    return Pool;
  }
  void checkFileSystemChanges() override { note("scan"); }
  Result<> prepareLogLoad() override {
    note("prepare");
    if (!prepares) return fail(FailureKind::Transient, "link the logs");
    return {};
  }
  void finishLogLoad() override { note("finish"); }
  std::map<std::string, std::uint64_t> logSizesOnDisk() override { return sizes; }
  std::set<std::string> wantedFiles() override { return wanted; }
  CopyPlan decideListing(const std::vector<ListingEntry>& entries,
                         const ParticipantAddress&) override {
    note("decide");
    listed = entries;
    CopyPlan plan;
    for (const ListingEntry& entry : entries) plan.files.insert(entry.path);
    return plan;
  }
  std::set<std::string> prepareCopy(const std::set<std::string>& files) override {
    std::set<std::string> ready;
    std::set_difference(files.begin(), files.end(), leftOut.begin(), leftOut.end(),
                        std::inserter(ready, ready.end()));
    return ready;
  }
  std::set<std::string> timeWarpedFilesFromSet(const std::set<std::string>&) override {
    return warped;
  }
  bool settleReplacedFiles(const std::vector<ReplacedFile>& files) override {
    note("settle");
    settled.insert(settled.end(), files.begin(), files.end());
    return true;
  }
  std::set<std::string> checkTodoFiles() override {
    note("check");
    for (const std::string& path : loaded) wanted.erase(path);
    return loaded;
  }
  [[nodiscard]] bool awaitsDisk() const override { return awaits; }
  void filesAreOnDisk() override { awaits = false; }
  [[nodiscard]] std::set<std::string> todoFiles() const override { return wanted; }
};

/// The transfer tool of the script, which also writes what it is asked to into the diary.
class DiaryLauncher : public ScriptedLauncher {
 public:
  explicit DiaryLauncher(std::vector<std::string>& diary) : diary_(diary) {}
  Result<std::shared_ptr<Process>> start(const ProcessRequest& request) override {
    const auto has = [&request](const char* argument) {
      return std::find(request.arguments.begin(), request.arguments.end(), argument) !=
             request.arguments.end();
    };
    if (has("--recursive")) {
      diary_.push_back(request.arguments.back().ends_with("/.Zolvar") ? "list logs" : "list");
    } else if (has("--files-from")) {
      diary_.push_back(has("--update") ? "copy" : "copy over");
    } else {
      diary_.push_back("load");
    }
    return ScriptedLauncher::start(request);
  }

 private:
  std::vector<std::string>& diary_;
};

class KDPoolSyncTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(host_.files.makeFolder(Pool));
    settings_.poolName = "Docs";
    settings_.ownUserId = "user@alpha.local";
    settings_.keepsVersions = false;
  }
  SyncEnd sync(const ParticipantAddress& participant = Beta) {
    diary_.clear();
    launcher_.requests.clear();
    return sync_.performSyncWithParticipant(participant, settings_);
  }
  static std::string listing(const std::vector<std::string>& names) {
    std::string text = "drwxr-xr-x          4,096 2026/11/22 19:33:47 .\n";
    for (const std::string& name : names) {
      text += "-rw-r--r--             10 2026/11/22 19:33:47 " + name + "\n";
    }
    return text;
  }

  std::vector<std::string> diary_;
  SimulatedPlatform host_{"alpha"};
  SimulatedPlatform other_{host_.world, "beta"};
  DiaryLauncher launcher_{diary_};
  Platform platform_{host_.clock,    host_.random,   host_.loop,      host_.lanes,
                     host_.files,    launcher_,      host_.services,  host_.hosts,
                     host_.secrets,  host_.defaults, host_.workspace, host_.networkWatch,
                     host_.firewall, host_.log};
  std::shared_ptr<ScriptedSteps> steps_ = std::make_shared<ScriptedSteps>(&diary_);
  std::vector<std::optional<TransferProgress>> progress_;
  KDPoolSync sync_{
      platform_, host_.lanes.start("state"), steps_,
      [this](const std::optional<TransferProgress>& progress) { progress_.push_back(progress); }};
  KDPoolSync::Settings settings_;
};

TEST_F(KDPoolSyncTest, goesThroughItsPhasesAsFarAsTheyLead) {
  const std::string both = listing({"a", "sub/b", "unasked"});
  struct Row {
    const char* what;
    std::vector<ScriptedLauncher::Act> script;
    std::set<std::string> wanted, warped, leftOut;
    int status;
    std::vector<std::string> diary;
  };
  const Row rows[] = {
      {"nothing wanted", {{}}, {}, {}, {}, 0, {"scan", "prepare", "load", "finish", "check"}},
      {"log load failed", {{12}}, {"a"}, {}, {}, 12, {"scan", "prepare", "load", "finish"}},
      {"log load partial", {{23}}, {"a"}, {}, {}, 23, {"scan", "prepare", "load", "finish"}},
      {"everything",
       {{}, {0, both}, {}},
       {"a", "sub/b"},
       {},
       {},
       0,
       {"scan", "prepare", "load", "finish", "list", "decide", "copy", "check"}},
      {"time warped",
       {{}, {0, both}, {23}, {}},
       {"a", "sub/b"},
       {"a"},
       {},
       0,
       {"scan", "prepare", "load", "finish", "list", "decide", "copy", "copy over", "check"}},
      {"connection lost in the first copy",
       {{}, {0, both}, {12}},
       {"a"},
       {"a"},
       {},
       12,
       {"scan", "prepare", "load", "finish", "list", "decide", "copy", "check"}},
      {"changed here meanwhile",
       {{}, {0, both}},
       {"a", "sub/b"},
       {"a"},
       {"a", "sub/b"},
       0,
       {"scan", "prepare", "load", "finish", "list", "decide", "check"}},
      {"the participant has nothing",
       {{}, {0, ""}},
       {"a"},
       {},
       {},
       0,
       {"scan", "prepare", "load", "finish", "list", "decide", "check"}},
      {"listing failed",
       {{}, {5, ""}},
       {"a"},
       {},
       {},
       5,
       {"scan", "prepare", "load", "finish", "list", "check"}},
      {"listing cut off",
       {{}, {12, both}},
       {"a"},
       {},
       {},
       12,
       {"scan", "prepare", "load", "finish", "list", "check"}},
      {"part of the listing cannot be read",
       {{}, {23, both}, {}},
       {"a"},
       {},
       {},
       0,
       {"scan", "prepare", "load", "finish", "list", "decide", "copy", "check"}},
  };
  for (const Row& row : rows) {
    launcher_.script.assign(row.script.begin(), row.script.end());
    steps_->wanted = row.wanted;
    steps_->warped = row.warped;
    steps_->leftOut = row.leftOut;
    steps_->loaded = {"sub/b"};
    const SyncEnd end = sync();
    EXPECT_EQ(row.status, end.status) << row.what;
    EXPECT_EQ(row.diary, diary_) << row.what;
    EXPECT_FALSE(sync_.hasRunningTask()) << row.what;
    EXPECT_EQ(std::nullopt, progress_.back()) << row.what;
  }
}

TEST_F(KDPoolSyncTest, asksForExactlyWhatIsWantedAndThere) {
  settings_.password = "secret";
  settings_.bandwidthLimit = 50;
  steps_->wanted = {"a", "sub/b", "nowhere"};
  steps_->loaded = {"a"};
  launcher_.script = {{}, {0, listing({"a", "sub/b", "unasked", "a"})}, {}};
  const SyncEnd end = sync();
  EXPECT_EQ(std::set<std::string>{"a"}, end.loadedFiles);
  ASSERT_THAT(launcher_.requests, SizeIs(3));
  EXPECT_EQ(Pool + "/.Zolvar/user@alpha.local.fplog", launcher_.requests[0].arguments[3]);
  EXPECT_EQ("--bwlimit=50", launcher_.requests[2].arguments[0]);
  EXPECT_EQ(Pool, launcher_.requests[2].arguments.back());
  EXPECT_EQ("a\nsub/b\n", launcher_.requests[2].input);
  for (const auto& request : launcher_.requests) {
    EXPECT_EQ("secret", request.environment.at("RSYNC_PASSWORD"));
  }
  ASSERT_THAT(steps_->listed, SizeIs(2));
  EXPECT_EQ(10U, steps_->listed[0].size);
  EXPECT_TRUE(host_.log.contains("Try to get files {nowhere, sub/b} from " + Beta.description() +
                                 " failed."))
      << host_.log.text();
  ASSERT_THAT(progress_, SizeIs(2));
  EXPECT_EQ(2U, progress_[0]->filesWanted);
  EXPECT_EQ(20U, progress_[0]->bytesWanted);
}

TEST_F(KDPoolSyncTest, asksForManyFilesInPieces) {
  std::vector<std::string> names;
  for (int number = 10'000; number < 17'000; ++number)
    names.push_back("f" + std::to_string(number));
  steps_->wanted.insert(names.begin(), names.end());
  launcher_.script = {{}, {0, listing(names)}, {23}, {}, {}};
  EXPECT_EQ(23, sync().status);
  ASSERT_THAT(launcher_.requests, SizeIs(5));
  std::string asked;
  for (std::size_t run = 2; run < 5; ++run) asked += launcher_.requests[run].input;
  EXPECT_EQ(fmt::format("{}\n", fmt::join(names, "\n")), asked);
  EXPECT_EQ(launcher_.requests[2].arguments, launcher_.requests[4].arguments);

  launcher_.script = {{}, {0, listing(names)}, {23}, {12}};
  EXPECT_EQ(12, sync().status);
  EXPECT_THAT(launcher_.requests, SizeIs(4)) << "the connection is gone";
}

TEST_F(KDPoolSyncTest, neverCallsATroubleSuccess) {
  const struct {
    const char* what;
    std::function<void()> arrange;
    int status;
    std::vector<std::string> diary;
  } rows[] = {
      {"detached", [&] { steps_->detached = true; }, 20, {}},
      {"folder away", [&] { steps_->accessible = false; }, 11, {}},
      {"logs cannot be guarded",
       [&] { steps_->prepares = false; },
       11,
       {"scan", "prepare", "finish"}},
      {"left while logs load",
       [&] { steps_->detachesIn = "finish"; },
       20,
       {"scan", "prepare", "load", "finish"}},
      {"left while listing",
       [&] {
         steps_->wanted = {"a"};
         launcher_.script = {{}, {0, listing({"a"}), "", false, [&] { steps_->detached = true; }}};
       },
       20,
       {"scan", "prepare", "load", "finish", "list"}},
      {"ended by us while logs load",
       [&] {
         launcher_.script = {{0, "", "", false, [&] { sync_.terminateTask(); }}};
       },
       20,
       {"scan", "prepare", "load", "finish"}},
      {"ended by us while listing",
       [&] {
         steps_->wanted = {"a"};
         launcher_.script = {{}, {0, listing({"a"}), "", false, [&] { sync_.terminateTask(); }}};
       },
       20,
       {"scan", "prepare", "load", "finish", "list", "check"}},
      {"silent",
       [&] {
         launcher_.script = {{20, "", "", true}};
       },
       30,
       {"scan", "prepare", "load", "finish"}},
  };
  for (const auto& row : rows) {
    *steps_ = ScriptedSteps(&diary_);
    launcher_.script.clear();
    row.arrange();
    EXPECT_EQ(row.status, sync().status) << row.what;
    EXPECT_EQ(row.diary, diary_) << row.what;
  }
}

TEST_F(KDPoolSyncTest, reportsAHostThatIsNotFound) {
  EXPECT_EQ(10, sync(Nowhere).status);
  EXPECT_THAT(diary_, ElementsAre("scan"));
  EXPECT_TRUE(host_.log.contains("Host gamma.local not (no longer?) found."));
}

TEST_F(KDPoolSyncTest, endsWithTheTextOfAnException) {
  steps_->throwsIn = "check";
  const SyncEnd end = sync();
  EXPECT_EQ(-1, end.status);
  EXPECT_EQ("trouble in check", end.exceptionText);
  steps_->throwsIn.clear();
  launcher_.isInstalled = false;
  EXPECT_EQ("Could not find included zolvar tool.", sync().exceptionText);
  EXPECT_THAT(diary_, ElementsAre("scan", "prepare", "finish")) << "the logs stay guarded";
  launcher_.isInstalled = true;
  EXPECT_EQ(0, sync().status);
}

TEST_F(KDPoolSyncTest, recoversOnlyWithEveryLogThatTheParticipantHas) {
  const std::string listed =
      "drwxr-xr-x          4,096 2026/11/22 19:33:47 .Zolvar\n"
      "-rw-r--r--          1,000 2026/11/22 19:33:47 .Zolvar/user@alpha.local.fplog\n"
      "-rw-r--r--             20 2026/11/22 19:33:47 .Zolvar/bob@beta.local.fplog\n"
      "-rw-r--r--             20 2026/11/22 19:33:47 .Zolvar/todos.plist\n"
      "-rw-r--r--             20 2026/11/22 19:33:47 .Zolvar/sub/x@y.fplog\n";
  const struct {
    const char* what;
    std::vector<ScriptedLauncher::Act> script;
    std::map<std::string, std::uint64_t> sizes;
    int status;
  } rows[] = {
      {"all",
       {{0, listed}, {}},
       {{"user@alpha.local.fplog", 1000}, {"bob@beta.local.fplog", 21}},
       0},
      {"one is short",
       {{0, listed}, {}},
       {{"user@alpha.local.fplog", 999}, {"bob@beta.local.fplog", 20}},
       12},
      {"one is missing", {{0, listed}, {}}, {{"user@alpha.local.fplog", 1000}}, 12},
      {"partial load",
       {{0, listed}, {23}},
       {{"user@alpha.local.fplog", 1000}, {"bob@beta.local.fplog", 20}},
       23},
      {"partial listing",
       {{23, listed}, {}},
       {{"user@alpha.local.fplog", 1000}, {"bob@beta.local.fplog", 20}},
       23},
      {"nothing there", {{0, ""}, {}}, {}, 12},
  };
  steps_->recovering = true;
  steps_->wanted = {"a"};
  for (const auto& row : rows) {
    launcher_.script.assign(row.script.begin(), row.script.end());
    steps_->sizes = row.sizes;
    EXPECT_EQ(row.status, sync().status) << row.what;
    EXPECT_EQ("--recursive", launcher_.requests[0].arguments[0]);
    EXPECT_THAT(launcher_.requests[0].arguments, SizeIs(2));
    EXPECT_EQ(0, std::count(diary_.begin(), diary_.end(), "copy")) << row.what;
  }
  EXPECT_EQ(10, sync(Nowhere).status);
}

TEST_F(KDPoolSyncTest, handsOverWhatACopyRunReplaced) {
  settings_.keepsVersions = true;
  steps_->wanted = {"a"};
  steps_->warped = {"a"};
  // The tool saves what it replaces; the program dies before anyone looks at the second run's.
  const auto saves = [&](const std::string& content) {
    return ScriptedLauncher::Act{
        0, "", "", false, [this, content] {
          for (const std::string& argument : launcher_.requests.back().arguments) {
            const std::string option = "--backup-dir=";
            if (argument.starts_with(option)) {
              host_.files.write(argument.substr(option.size()) + "/a", content);
            }
          }
        }};
  };
  launcher_.script = {{}, {0, listing({"a"})}, saves("first"), saves("second")};
  EXPECT_EQ(0, sync().status);
  EXPECT_THAT(diary_, ElementsAre("scan", "prepare", "load", "finish", "list", "decide", "copy",
                                  "copy over", "settle", "settle", "check"));
  ASSERT_THAT(steps_->settled, SizeIs(2));
  EXPECT_EQ("a", steps_->settled[0].path);
  EXPECT_NE(steps_->settled[0].savedPath, steps_->settled[1].savedPath);

  steps_->settled.clear();
  steps_->warped.clear();
  steps_->throwsIn = "settle";
  launcher_.script = {{}, {0, listing({"a"})}, saves("third")};
  EXPECT_EQ(-1, sync().status);
  steps_->throwsIn.clear();
  steps_->wanted.clear();
  EXPECT_EQ(0, sync().status);
  ASSERT_THAT(steps_->settled, SizeIs(1)) << "the next sync finds what was left";
  EXPECT_EQ("third", host_.files.readAll(steps_->settled[0].savedPath)
                         .value_or(host_.files
                                       .readAll([&] {
                                         std::string closed = steps_->settled[0].savedPath;
                                         return closed.erase(closed.find(".open"), 5);
                                       }())
                                       .value_or("")));

  host_.files.faults.failAlways("makeDirectories");
  steps_->wanted = {"a"};
  launcher_.script = {{}, {0, listing({"a"})}};
  EXPECT_EQ(11, sync().status) << "nothing is replaced without a place for it";
  EXPECT_EQ(0, std::count(diary_.begin(), diary_.end(), "copy"));
}

TEST_F(KDPoolSyncTest, fetchesOneVersionFromWhoeverHasIt) {
  const std::string target = "/home/user/Desktop/a (old)";
  ASSERT_TRUE(host_.files.makeFolder("/home/user/Desktop"));
  const std::string line = "-rw-r--r--             10 1970/01/02 00:00:00 sub/a\n";
  const auto fetch = [&](std::vector<ScriptedLauncher::Act> script,
                         const std::string& path = "sub/a") {
    launcher_.script.assign(script.begin(), script.end());
    return sync_.fetchVersion(path, 86400, target, {Nowhere, Beta, Beta}, settings_);
  };
  const auto brings = [&](std::int64_t time) {
    return ScriptedLauncher::Act{
        0, "", "", false, [this, time] {
          host_.files.write(launcher_.requests.back().arguments.back() + "/sub/a", "content", time);
        }};
  };
  EXPECT_EQ(FailureKind::Transient, fetch({{10}, {10}}).error().kind);
  EXPECT_EQ(FailureKind::Transient, fetch({{0, listing({"sub/a"})}, {0, ""}}).error().kind)
      << "the host that was not found may have it";
  EXPECT_EQ(FailureKind::Refused, fetch({}, "../a").error().kind);
  EXPECT_FALSE(host_.files.exists(target));

  // The first one has it no longer when the copy run comes.
  EXPECT_TRUE(fetch({{0, line}, brings(99999), {0, line}, brings(86400)}));
  EXPECT_EQ("content", host_.files.readAll(target));
  EXPECT_EQ(86400, host_.files.attributesOf(target)->modTime);
  EXPECT_TRUE(host_.files.subfolders(*host_.files.supportFolder()).empty());

  launcher_.requests.clear();
  EXPECT_EQ(FailureKind::Refused, fetch({{0, line}, brings(86400)}).error().kind);
  EXPECT_THAT(launcher_.requests, IsEmpty()) << "nothing is ever replaced";
}

}  // namespace
}  // namespace zolvar
