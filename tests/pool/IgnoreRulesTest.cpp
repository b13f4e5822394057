#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "pool/IgnoreRules.h"

namespace zolvar {
namespace {

namespace fs = std::filesystem;

struct Case {
  const char* rules;
  const char* path;
  bool isDirectory;
  bool isIgnored;
};

class IgnoreRulesTest : public testing::TestWithParam<Case> {};

TEST_P(IgnoreRulesTest, followsTheSyntax) {
  const Case& example = GetParam();
  EXPECT_EQ(example.isIgnored,
            IgnoreRules(example.rules).ignores(example.path, example.isDirectory))
      << example.rules << " against " << example.path;
}

INSTANTIATE_TEST_SUITE_P(
    Table, IgnoreRulesTest,
    testing::Values(Case{"*.o", "a/b.o", false, true}, Case{"*.o", "b.ob", false, false},
                    Case{"/b.o", "a/b.o", false, false}, Case{"a/*.o", "a/c/b.o", false, false},
                    Case{"build/", "build", false, false}, Case{"build/", "x/build", true, true},
                    Case{"build/", "x/build/deep/file", false, true},
                    Case{"build\n!build/keep", "build/keep", false, true},
                    Case{"build/*\n!build/keep", "build/keep", false, false},
                    Case{"a/**/z", "a/z", false, true}, Case{"a/**/z", "a/b/c/z", false, true},
                    Case{"**/z", "q/z", false, true}, Case{"a/**", "a", true, false},
                    Case{"a/**", "a/b", false, true}, Case{"# no", "# no", false, false},
                    Case{"\\#yes", "#yes", false, true}, Case{"x  ", "x", false, true},
                    Case{"x\\ ", "x ", false, true}, Case{"[!a-c]1\r\n", "d1", false, true},
                    Case{"[[:digit:]x]", "x", false, true}, Case{"[a", "[a", false, false},
                    Case{"*", ".zolvarignore", false, false}, Case{"!", "!", false, false},
                    Case{"a?c", "a/c", false, false}, Case{"", "a", false, false}));

TEST(IgnoreRulesTest, staysQuickWithAStrangersPattern) {
  std::string pattern;
  for (int count = 0; count < 60; ++count) pattern += "*a";
  EXPECT_FALSE(IgnoreRules(pattern + "b").ignores(std::string(250, 'a'), false));
}

/// The tool whose syntax this is judges random rules and paths as we do.
TEST(IgnoreRulesTest, agreesWithGit) {
  if (std::system("git --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "git is not installed";
  std::string pattern = (fs::temp_directory_path() / "zolvar-ignore-XXXXXX").string();
  ASSERT_NE(nullptr, mkdtemp(pattern.data()));
  const fs::path folder = pattern;
  std::mt19937 random(std::random_device{}());
  const auto pick = [&](std::initializer_list<const char*> pieces) {
    return *(pieces.begin() + random() % pieces.size());
  };
  std::vector<std::string> paths;
  for (const char* first : {"a", "b", "ab", "a.o"}) {
    for (const char* second : {"a", "b", "c.o"}) {
      for (const char* third : {"a", "b!", "ab"}) {
        fs::create_directories(folder / first / second);
        paths.push_back(std::string(first) + "/" + second + "/" + third);
        std::ofstream(folder / paths.back()) << "x";
      }
    }
  }
  const std::string git = "git -C " + folder.string() + " ";
  ASSERT_EQ(0, std::system((git + "init -q").c_str()));
  for (int round = 0; round < 40; ++round) {
    std::string rules;
    for (int line = 0; line < 4; ++line) {
      if (random() % 4 == 0) rules += "!";
      for (unsigned piece = random() % 5 + 1; piece > 0; --piece) {
        rules += pick({"a", "b", "*", "**", "/", "/", "?", "[a-b]", "[!a]", ".o", "**/", "/**"});
      }
      rules += "\n";
    }
    // Empty components, and stars that only partly are a component, mean to the tool what its
    // short cuts happen to make of them.
    for (const auto& [odd, plain] :
         {std::pair("/(/|\\*\\*/)+", "/**/"), std::pair("([^/!\n])\\*{2,}", "$1*"),
          std::pair("\\*{2,}([^/\n*])", "*$1")}) {
      rules = std::regex_replace(rules, std::regex(odd), plain);
    }
    std::ofstream(folder / ".gitignore") << rules;
    {
      std::ofstream list(folder / ".git" / "list");
      for (const std::string& path : paths) list << path << "\n";
    }
    const int status =
        std::system((git + "check-ignore --no-index --stdin < " + (folder / ".git/list").string() +
                     " > " + (folder / ".git/found").string())
                        .c_str());
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) <= 1);
    std::set<std::string> expected;
    std::ifstream found(folder / ".git" / "found");
    for (std::string path; std::getline(found, path);) expected.insert(path);
    std::set<std::string> ours;
    const IgnoreRules parsed(rules);
    for (const std::string& path : paths) {
      if (parsed.ignores(path, false)) ours.insert(path);
    }
    EXPECT_EQ(expected, ours) << rules;
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace zolvar
