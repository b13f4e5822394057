#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "util/PathRules.h"

namespace zolvar {
namespace {

using testing::HasSubstr;

const std::string LongName(LongestComponent, 'n');

struct PathCase {
  const char* what;
  std::string path;
  bool isSafe;
};

TEST(PathRules, decidesWhichPathsMayNameSomethingInAFolder) {
  const PathCase cases[] = {
      {"one component", "a", true},
      {"several", "Projects/2026/plan.odt", true},
      {"UTF-8 across words", "abcdefgä/bcdefg€/abcdef😀/x", true},
      {"leading dots", ".hidden/...", true},
      {"control characters but the forbidden ones", "a\tb\x01", true},
      {"longest component", LongName + "/" + LongName, true},
      {"metadata name inside a folder", "a/.Zolvar", true},
      {"empty", "", false},
      {"absolute", "/etc/passwd", false},
      {"parent", "..", false},
      {"parent inside", "a/../b", false},
      {"parent at the end", "aaaaaaaa/..", false},
      {"itself", "a/./b", false},
      {"empty component", "aaaa//b", false},
      {"trailing slash", "a/", false},
      {"component too long", "a/" + LongName + "n", false},
      {"NUL", std::string("aaaaaaaaa\0b", 11), false},
      {"line feed", "0123456\n", false},
      {"carriage return in the tail", "01234567\r", false},
      {"metadata", ".Zolvar/bob@x.local.fplog", false},
      {"metadata in another case", ".zOLVARx", false},
      {"overlong UTF-8 slash", "a\xC0\xAF", false},
      {"surrogate", "\xED\xA0\x80", false},
      {"cut UTF-8", "abcdefg\xE2\x82", false},
      {"beyond Unicode", "\xF4\x90\x80\x80", false},
  };
  for (const PathCase& row : cases) {
    EXPECT_EQ(isSafeRelativePath(row.path), row.isSafe) << row.what;
  }
  std::string longest;
  while (longest.size() < LongestPath) longest += "abcdefg/";
  longest.back() = 'x';
  EXPECT_TRUE(isSafeRelativePath(longest));
  EXPECT_FALSE(isSafeRelativePath(longest + "x"));
}

/// The rule as one would write it without looking at eight bytes at a time.
bool isSafeBytewise(const std::string& path) {
  if (path.empty() || isMetadataPath(path) || !isValidUtf8(path)) return false;
  std::string component;
  for (const char character : path + "/") {
    if (character == '\0' || character == '\n' || character == '\r') return false;
    if (character != '/') {
      component += character;
      continue;
    }
    if (component.empty() || component == "." || component == "..") return false;
    component.clear();
  }
  return true;
}

TEST(PathRules, looksAtWordsAsAtBytes) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  const std::vector<std::string> pieces = {"a", "bc", ".", "/",   "..",
                                           "é", "€",  "😀", "x/y", "01234567"};
  const std::vector<std::string> bad = {"\n", "\r", std::string(1, '\0'), "\x80", "\xE2", "//"};
  int safe = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string path;
    for (unsigned count = random() % 12 + 1; count > 0; --count)
      path += pieces[random() % pieces.size()];
    if (random() % 4 == 0) path.insert(random() % (path.size() + 1), bad[random() % bad.size()]);
    ASSERT_EQ(isSafeRelativePath(path), isSafeBytewise(path)) << testing::PrintToString(path);
    safe += isSafeRelativePath(path) ? 1 : 0;
  }
  EXPECT_GT(safe, 1000);
}

TEST(PathRules, explainsWhichNamesTheDaemonCannotCarry) {
  const std::pair<std::string, const char*> cases[] = {
      {"Papers", nullptr},
      {"Größe & more (2026), v1.2", nullptr},
      {"globals", nullptr},
      {std::string(LongestPoolName, 'a'), nullptr},
      {"", "empty"},
      {std::string(LongestPoolName + 1, 'a'), "at most 120"},
      {"a\xFF", "UTF-8"},
      {"two\nlines", "control character"},
      {"next\xC2\x85line", "control character"},
      {"del\x7F", "control character"},
      {" a", "blank"},
      {"a ", "blank"},
      {"a  b", "blank"},
      {".", "another meaning"},
      {"..", "another meaning"},
      {"global", "another meaning"},
      {"Global", "another meaning"},
      {".ZOLVAR", "another meaning"},
      {"#list", "begins with"},
      {"-rf", "begins with"},
  };
  for (const auto& [name, problem] : cases) {
    const auto found = poolNameProblem(name);
    EXPECT_EQ(found.has_value(), problem != nullptr) << name;
    EXPECT_THAT(found.value_or(""), HasSubstr(problem != nullptr ? problem : ""));
  }
  for (const char special : std::string_view(":/[]%\\")) {
    EXPECT_TRUE(poolNameProblem(std::string("a") + special + "b")) << special;
  }
  EXPECT_FALSE(poolPathProblem("/home/bob/Public/Zolvar/Papers"));
  for (const char* path : {"", "/", "Papers", "/home/bob/", "/home//Papers", "/home/50%/Papers"}) {
    EXPECT_TRUE(poolPathProblem(path)) << path;
  }
}

TEST(PathRules, contactsOnlyHostsOfTheLocalNetwork) {
  for (const char* host : {"beta.local", "alpha-2.local", "nas", "a.b.lan", "my_pc.local"}) {
    EXPECT_TRUE(isLocalHostName(host)) << host;
  }
  for (const char* host :
       {"", "example.com", "10.0.0.1", "127", "0x7f000001", ".local", "a..lan", "-oProxy.local",
        "a b.local", "a/b.local", "beta.local.", "user@nas", "beta.local:22", "ä.local"}) {
    EXPECT_FALSE(isLocalHostName(host)) << host;
  }
}

TEST(PathRules, knowsLogsAndTakesPathsApart) {
  for (const char* name : {"bob@beta.local.fplog", "a@.fplog"}) EXPECT_TRUE(isLogFileName(name));
  for (const char* name : {".bob@beta.local.fplog", "bob.fplog", "bob@beta.local.fplog.X1",
                           "todos.plist", "a/b@c.fplog"}) {
    EXPECT_FALSE(isLogFileName(name)) << name;
  }
  EXPECT_EQ(withoutLocalSuffix("bob@beta.local"), "bob@beta");
  EXPECT_EQ(withoutLocalSuffix("bob@beta.lan.local"), "bob@beta.lan");
  EXPECT_EQ(withoutLocalSuffix("bob@beta.local.lan"), "bob@beta.local");
  EXPECT_EQ(withoutLocalSuffix("bob@beta"), "bob@beta");

  EXPECT_EQ(lastPathComponent("/a/b//"), "b");
  EXPECT_EQ(lastPathComponent("a"), "a");
  EXPECT_EQ(lastPathComponent("/"), "");
  EXPECT_EQ(parentPath("/a/b/"), "/a");
  EXPECT_EQ(parentPath("/a"), "/");
  EXPECT_EQ(parentPath("a"), "");
  EXPECT_EQ(joinPath("/", "a"), "/a");
  EXPECT_EQ(joinPath("/a", "b"), "/a/b");
  EXPECT_EQ(joinPath("", "b"), "b");
}

}  // namespace
}  // namespace zolvar
