#include <gtest/gtest.h>

#include "app/FolderRules.h"
#include "app/PoolPlaces.h"
#include "app/SettingRules.h"
#include "app/TodoRetries.h"
#include "app/TransferToolCheck.h"
#include "support/MemoryDefaults.h"
#include "support/SimulatedFileSystem.h"

namespace zolvar {
namespace {

TEST(FolderRules, compareWholeComponents) {
  EXPECT_EQ(tidyPath("//home/./ann//Docs/"), "/home/ann/Docs");
  EXPECT_EQ(tidyPath("/"), "/");
  EXPECT_EQ(tidyPath("a/./b/"), "a/b");
  EXPECT_EQ(tidyPath(""), "");
  EXPECT_TRUE(isWithin("/a/b", "/a"));
  EXPECT_TRUE(isWithin("/a", "/a"));
  EXPECT_TRUE(isWithin("/a", "/"));
  EXPECT_FALSE(isWithin("/ab", "/a"));
  EXPECT_FALSE(isWithin("/a", "/a/b"));
  for (const char* path :
       {"/home/ann/.local/share/Trash/files/x", "/mnt/.Trash-1000/files", "/mnt/.Trash/1000"}) {
    EXPECT_TRUE(isInTrash(path)) << path;
  }
  EXPECT_FALSE(isInTrash("/home/ann/Trash/share"));
}

TEST(SettingRules, protectOurOwnAndCheckWhatIsKnown) {
  const auto problem = [](const std::string& row) {
    return settingProblem(row.substr(0, row.find('=')), row.substr(row.find('=') + 1));
  };
  for (const char* refused :
       {"=x", "a/b=x", "pausedFolders=", "PausedUntil=0", "ShowOnlyActivePools=2",
        "DontUseGrowl-Docs=on", "Pace=fast", "HeadlessDeleteAnswer=yes", "BWLimitOut=-1",
        "BWLimitIn=1e3", "QMPoolIdentity-Docs=1:2", "HasPassword-Docs=1", "BWLimitout=250"}) {
    EXPECT_TRUE(problem(refused)) << refused;
  }
  for (const char* fine : {"Pace=quick", "Pace=", "HeadlessDeleteAnswer=delete", "BWLimitOut=250",
                           "DontUseGrowl-Docs=1"}) {
    EXPECT_FALSE(problem(fine)) << fine;
  }
}

TEST(TransferToolCheck, readsTheVersion) {
  const std::pair<const char*, std::optional<ToolVersion>> rows[] = {
      {"rsync  version 3.5.0  protocol version 32\n", ToolVersion{3, 5, 0}},
      {"rsync version v3.2.7", std::nullopt},
      {"rsync  version 3.4.2pre1  protocol version 31", ToolVersion{3, 4, 2}},
      {"rsync  version 3.4\n", std::nullopt},
      {"no such thing\nrsync  version 3.5.0", std::nullopt},
      {"", std::nullopt}};
  for (const auto& [output, version] : rows) EXPECT_EQ(parseToolVersion(output), version) << output;
  EXPECT_LT((ToolVersion{3, 4, 2}), LeastSafeToolVersion);
  EXPECT_GE((ToolVersion{3, 10, 0}), LeastSafeToolVersion);
}

TEST(PoolPlaces, rememberFoldersAndSubscriptions) {
  SimulatedClock clock;
  SimulatedRunLoop loop(clock);
  SimulatedFileSystem files(clock, loop);
  MemoryDefaults defaults;
  PoolPlaces places(defaults, files, "/home/user/Public/Zolvar");
  EXPECT_EQ(places.trackedPathForPoolName("Docs"), "/home/user/Public/Zolvar/Docs");
  ASSERT_TRUE(files.makeFolder("/data/Music"));
  places.setPath("Music", "/data/Music");
  places.setSubscribed("Music", true);
  places.setSubscribed("Docs", true);
  places.setSubscribed("Docs", false);
  defaults.setString("QMPool-Odd", "not absolute");
  const auto stored = places.storedPlaces();
  ASSERT_EQ(stored.size(), 2U);
  EXPECT_EQ(stored[0].name, "Docs");
  EXPECT_FALSE(stored[0].identity || stored[0].isSubscribed);
  EXPECT_EQ(stored[1].path, "/data/Music");
  EXPECT_EQ(stored[1].identity, *files.identity("/data/Music"));
  EXPECT_TRUE(stored[1].isSubscribed);
  places.forget("Music");
  EXPECT_EQ(places.storedPlaces().size(), 1U);
  for (const char* text : {"", ":", "1", "1:", ":2", "1:2x", "-1:2", "1:2:3"}) {
    EXPECT_FALSE(PoolPlaces::parseIdentity(text)) << text;
  }
}

TEST(TodoRetries, askLessAndLessOften) {
  SimulatedClock clock;
  SimulatedRunLoop loop(clock);
  std::vector<double> minutes;
  const double start = clock.now();
  TodoRetries retries(loop,
                      [&](const std::string&) { minutes.push_back((clock.now() - start) / 60); });
  retries.note("Docs", true);
  retries.note("Docs", true);
  loop.advance(46 * 60);
  EXPECT_EQ(minutes, (std::vector<double>{1, 3, 7, 15, 30, 45}));
  minutes.clear();
  retries.noteProgress("Docs");
  loop.advance(3 * 60);
  EXPECT_EQ(minutes, (std::vector<double>{47, 49}));
  retries.note("Docs", false);
  loop.advance(60 * 60);
  EXPECT_EQ(minutes.size(), 2U);
}

}  // namespace
}  // namespace zolvar
