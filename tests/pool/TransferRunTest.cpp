#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "pool/KDPoolSync.h"
#include "pool/ScriptedLauncher.h"
#include "pool/TransferRun.h"
#include "support/SimulatedPlatform.h"
#include "util/InconsistencyError.h"
#include "util/hexHash.h"

namespace zolvar {
namespace {

using testing::ElementsAre;

const ParticipantAddress Beta{"bob", "beta.local", 49999, "Docs"};

TEST(TransferArguments, standInTheToolsOrder) {
  const std::string url = transferUrl(Beta, "Docs", false);
  EXPECT_EQ("rsync://" + hexHash("Docs") + "@beta.local:49999/Docs", url);
  EXPECT_EQ(url + "/.Zolvar", transferUrl(Beta, "Docs", true));

  EXPECT_THAT(logLoadArguments("/home/a/Docs/.Zolvar/a@alpha.local.fplog", "URL", "/home/a/Docs"),
              ElementsAre("-r", "--times", "--exclude", "/home/a/Docs/.Zolvar/a@alpha.local.fplog",
                          "--include", "*.fplog", "--update", "URL", "/home/a/Docs"));
  EXPECT_THAT(listingArguments("URL"), ElementsAre("--recursive", "URL"));
  EXPECT_THAT(copyArguments({}, "URL", "/f"),
              ElementsAre("--files-from", "-", "--times", "--links", "--safe-links", "-E",
                          "--update", "URL", "/f"));
  EXPECT_THAT(
      copyArguments({50, "/s/versions/h/1-0.open", true}, "URL", "/f"),
      ElementsAre("--bwlimit=50", "--files-from", "-", "--times", "--links", "--safe-links", "-E",
                  "--update", "--backup", "--backup-dir=/s/versions/h/1-0.open", "URL", "/f"));
  EXPECT_THAT(copyArguments({0, "/b", false}, "URL", "/f"),
              ElementsAre("--files-from", "-", "--times", "--links", "--safe-links", "-E",
                          "--backup", "--backup-dir=/b", "URL", "/f"));
}

TEST(StatusText, namesWhatPeopleMeet) {
  const std::pair<int, const char*> rows[] = {
      {0, "ok"},
      {5, "Error starting client-server protocol. Too many clients?"},
      {10, "socket connection failed."},
      {12, "error in rsync protocol data stream"},
      {23, "some files could not be transferred"},
      {37, "authentication failed"},
      {11, "a file could not be read or written; perhaps a disk is full, or its drive gone"},
      {30, "nothing came for too long"},
      {99, "the transfer tool ended with status 99"},
      {137, "the transfer tool was ended by signal 9"},
  };
  for (const auto& [status, text] : rows) EXPECT_EQ(text, statusText(status));
}

class TransferRunTest : public testing::Test {
 protected:
  SimulatedPlatform host_{"alpha"};
  SimulatedPlatform other_{host_.world, "beta"};
  ScriptedLauncher launcher_;
  Platform platform_{host_.clock,    host_.random,   host_.loop,      host_.lanes,
                     host_.files,    launcher_,      host_.services,  host_.hosts,
                     host_.secrets,  host_.defaults, host_.workspace, host_.networkWatch,
                     host_.firewall, host_.log};
  TransferRun run_{platform_};
};

TEST_F(TransferRunTest, tellsHowARunEnded) {
  const struct {
    const char* what;
    ScriptedLauncher::Act act;
    int status;
  } rows[] = {
      {"well", {}, 0},
      {"wrong password", {5, "", "@ERROR: auth failed on module Docs\nrsync error: x\n"}, 37},
      {"full", {5, "", "@ERROR: max connections (2) reached -- try again later\n"}, 5},
      {"the tool's own word", {37}, 37},
      {"authentication only with status 5", {23, "", "auth failed, says a file name"}, 23},
      {"silenced", {20, "", "", true}, 30},
      {"silenced with success", {0, "", "", true}, 30},
      {"killed", {137}, 137},
  };
  for (const auto& row : rows) {
    launcher_.script = {row.act};
    EXPECT_EQ(row.status, run_.run({})) << row.what;
  }
  EXPECT_TRUE(host_.log.contains("@ERROR: auth failed on module Docs")) << host_.log.text();
  EXPECT_EQ(10, launcher_.limits.front().connecting);
  EXPECT_EQ(60, launcher_.limits.front().silent);

  launcher_.canStart = false;
  EXPECT_EQ(10, run_.run({}));
  launcher_.isInstalled = false;
  EXPECT_THROW(run_.run({}), InconsistencyError);
}

TEST_F(TransferRunTest, boundsWhatTheOtherSideCanWriteToOurLog) {
  std::string flood = "bell \a and escape \x1b[2J\n" + std::string(100'000, 'x') + "\n";
  for (int line = 0; line < 5000; ++line) flood += "noise\n";
  launcher_.script = {{1, "", flood}};
  run_.run({});
  EXPECT_EQ(198, host_.log.count("noise"));
  EXPECT_TRUE(host_.log.contains("4802 more lines")) << host_.log.lines().back().text;
  for (const auto& line : host_.log.lines()) {
    EXPECT_LT(line.text.size(), 600U);
    EXPECT_EQ(std::string::npos, line.text.find_first_of("\a\x1b"));
  }
}

TEST_F(TransferRunTest, handsOverPasswordInputAndLines) {
  std::vector<std::string> lines;
  const auto keep = [&lines](std::string_view line) { lines.emplace_back(line); };
  launcher_.script = {{0, "first line\nsecond\r\nlast, without end"}};
  run_.run({{"-x"}, "", "a\nb\n", keep, {}});
  EXPECT_THAT(lines, ElementsAre("first line", "second", "last, without end"));
  run_.run({{}, "secret", "", {}, {}});
  ASSERT_EQ(2U, launcher_.requests.size());
  EXPECT_EQ("guestpass", launcher_.requests[0].environment.at("RSYNC_PASSWORD"));
  EXPECT_EQ("a\nb\n", launcher_.requests[0].input);
  EXPECT_TRUE(launcher_.requests[0].wantsOutput);
  EXPECT_EQ("secret", launcher_.requests[1].environment.at("RSYNC_PASSWORD"));
  EXPECT_EQ(1U, launcher_.requests[1].environment.size());
  EXPECT_FALSE(launcher_.requests[1].wantsOutput);
}

TEST_F(TransferRunTest, startsNothingOnceTerminated) {
  launcher_.script = {{0, "", "", false, [this] { run_.terminate(); }}};
  EXPECT_EQ(20, run_.run({}));
  EXPECT_EQ(20, run_.run({}));
  EXPECT_EQ(1U, launcher_.requests.size());
  run_.allow();
  EXPECT_EQ(0, run_.run({}));
}

TEST_F(TransferRunTest, saysWhichHostIsNotFound) {
  EXPECT_TRUE(run_.canFind(Beta));
  EXPECT_FALSE(run_.canFind({"bob", "gamma.local", 49999, "Docs"}));
  EXPECT_TRUE(host_.log.contains("Host gamma.local not (no longer?) found.")) << host_.log.text();
}

}  // namespace
}  // namespace zolvar
