#include <gmock/gmock.h>

#include <fstream>

#include "PlatformFixture.h"
#include "platform/qt/QSettingsDefaults.h"
#include "platform/qt/SystemLog.h"

namespace zolvar {
namespace {

using testing::ElementsAre;

class DefaultsTest : public LoopTest {
 protected:
  TemporaryFolder folder_{memoryFolder()};
  const std::string file_ = folder_.path("deep/settings.conf");
  QSettingsDefaults defaults_{log_, file_};
};

TEST_F(DefaultsTest, keepsEveryKeyAndValueAcrossRuns) {
  std::vector<std::string> texts = {std::string("nul\0in", 6)};
  for (const char* text :
       {"plain",  "with blank", "a/b",     "a\\b",    "%2F",        "%25%2F/%",
        "Grüße",  "日本",       "a=b;c#d", "[group]", "General",    "general",
        "x,y, z", "@Invalid()", "@tail",   "\"q\"",   "line\nfeed", "QMPool-Ünïcode/sub",
        " edge ", "/",          "\t",      "0"}) {
    texts.emplace_back(text);
  }
  for (const auto& text : texts) defaults_.setString(text, "value of " + text);
  for (const auto& text : texts) defaults_.setString("value " + text, text);
  defaults_.setString("bytes", "\xff\xfe");
  defaults_.setString("empty", "");
  const QSettingsDefaults again(log_, file_);
  for (const auto& text : texts) {
    EXPECT_EQ("value of " + text, again.string(text)) << text;
    EXPECT_EQ(text, again.string("value " + text)) << text;
  }
  EXPECT_EQ("\xff\xfe", again.string("bytes"));
  EXPECT_EQ("", again.string("empty"));
  EXPECT_EQ(std::nullopt, again.string("Plain")) << "case counts";
  EXPECT_EQ(std::nullopt, again.string(""));
  EXPECT_EQ(2 * texts.size() + 2, again.keys("").size());
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(DefaultsTest, keepsDictionariesAndListsKeys) {
  const std::map<std::string, std::string> places = {
      {"path", "/home/a \"b\"/ü"}, {"a/b", ""}, {"n", "12"}};
  defaults_.setDictionary("QMPool-b/c", places);
  defaults_.setDictionary("QMPool-a", {});
  defaults_.setString("other", "{broken");
  EXPECT_EQ(places, QSettingsDefaults(log_, file_).dictionary("QMPool-b/c"));
  EXPECT_THAT(defaults_.keys("QMPool-"), ElementsAre("QMPool-a", "QMPool-b/c"));
  EXPECT_TRUE(defaults_.dictionary("other").empty());
  EXPECT_TRUE(defaults_.dictionary("none").empty());
  defaults_.remove("QMPool-b/c");
  EXPECT_THAT(defaults_.keys("QMPool-"), ElementsAre("QMPool-a"));
}

TEST_F(DefaultsTest, tellsOfChangesFromInsideAndOutside) {
  std::vector<std::string> told;
  const auto pace =
      defaults_.observe("Pace", [&] { told.push_back(defaults_.string("Pace").value_or("none")); });
  auto other = defaults_.observe("Other", [&] { told.push_back("other"); });
  defaults_.setString("Pace", "quick");
  defaults_.setString("Pace", "quick");
  defaults_.setString("Unobserved", "x");
  EXPECT_THAT(told, ElementsAre("quick"));
  QSettingsDefaults(log_, file_).setString("Pace", "normal");
  ASSERT_TRUE(runUntil([&] { return told.size() == 2; }));
  other.reset();
  // As an editor writes: a new file in the old one's place, with a comma that nobody quoted.
  folder_.write("deep/new", "[General]\nPace=one, two\nOther=y\n");
  ASSERT_EQ(0, rename(folder_.path("deep/new").c_str(), file_.c_str()));
  ASSERT_TRUE(runUntil([&] { return told.size() == 3; }));
  QSettingsDefaults(log_, file_).remove("Pace");
  ASSERT_TRUE(runUntil([&] { return told.size() == 4; }));
  EXPECT_THAT(told, ElementsAre("quick", "normal", "one, two", "none"));
  EXPECT_EQ("y", defaults_.string("Other"));
}

TEST(SystemLogTest, letsNoNameFromTheNetworkForgeALine) {
  EXPECT_EQ("a b  c d", withoutControlCharacters("a\nb\r\tc\x1b"
                                                 "d"));
  EXPECT_EQ("x  31m \xc3\xa9 \xc2\xa0", withoutControlCharacters("x\xc2\x9b"
                                                                 "31m\x7f\xc3\xa9 \xc2\xa0"));
  EXPECT_EQ("\xc2", withoutControlCharacters("\xc2"));
}

}  // namespace
}  // namespace zolvar
