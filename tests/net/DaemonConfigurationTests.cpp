#include <gtest/gtest.h>

#include "net/DaemonConfiguration.h"

namespace zolvar {
namespace {

DaemonConfiguration configuration(std::vector<DaemonModule> modules = {}) {
  return {"/s/i.fppid",  "/s/i.fplog", "/s/i.fplck",
          "/s/i.passwd", std::nullopt, std::move(modules)};
}

constexpr const char* GlobalPart =
    "use chroot = no\n#syslog facility = local5\npid file = /s/i.fppid\nlog file = /s/i.fplog\n"
    "lock file = /s/i.fplck\ntransfer logging = yes\n\n";

TEST(DaemonConfiguration, isLetterForLetter) {
  EXPECT_EQ(configFileContent(configuration()), GlobalPart);
  auto two = configuration(
      {{"Docs", "/home/u/Docs", "0a0b0c0d", false}, {"My Music", "/m/My Music", "1a2b3c4d", true}});
  EXPECT_EQ(configFileContent(two),
            std::string(GlobalPart) +
                "[Docs]\npath = /home/u/Docs/\nmax connections = 2\nread only = yes\n"
                "comment = Zolvar Synced Folder Docs\n"
                "[My Music]\npath = /m/My Music/\nmax connections = 2\nread only = yes\n"
                "comment = Zolvar Synced Folder My Music\n"
                "auth users = 1a2b3c4d\nsecrets file = /s/i.passwd\n");
  two.owner = DaemonOwner{0, 7};
  EXPECT_NE(configFileContent(two).find("comment = Zolvar Synced Folder My Music\nuid = 0\n"
                                        "gid = 7\nauth users = 1a2b3c4d\n"),
            std::string::npos);
  EXPECT_TRUE(verifyDaemonConfiguration(configFileContent(two), two));
}

TEST(DaemonConfiguration, writesOnePasswordALine) {
  EXPECT_EQ(passwordFileContent({{"0a0b0c0d", "a: b#"}, {"1a2b3c4d", "x"}}),
            "#This file is generated automatically. Do not change its content.\n"
            "0a0b0c0d:a: b#\n1a2b3c4d:x\n");
}

TEST(DaemonConfiguration, isReadAsTheDaemonReadsIt) {
  const auto read = parseDaemonConfiguration(
      " Use  Chroot= no \n; note\n  # another = one\n[ A  b ]\npath = /x\\\ny/\n"
      "[GLOBAL]\nport = 1\n[aB]\nread only = yes\n");
  ASSERT_TRUE(read) << read.error().message();
  ASSERT_EQ(read->size(), 2U);
  EXPECT_EQ((*read)[0].parameters,
            (std::map<std::string, std::string>{{"usechroot", "no"}, {"port", "1"}}));
  EXPECT_EQ((*read)[1].name, "A  b");
  EXPECT_EQ((*read)[1].parameters,
            (std::map<std::string, std::string>{{"path", "/xy/"}, {"readonly", "yes"}}));
  for (const char* broken : {"no equals sign\n", "[open\npath = /\n", "[]\n", "&include /etc/x\n",
                             "[a]\npath = /%HOME%/\n", "[a]\npath = /1\npath = /2\n"}) {
    EXPECT_FALSE(parseDaemonConfiguration(broken)) << broken;
  }
}

TEST(DaemonConfiguration, refusesWhatWouldReadOtherwise) {
  struct Row {
    const char* what;
    std::vector<DaemonModule> modules;
  };
  const Row rows[] = {
      {"a line feed in a name", {{"x]\nlog format = y\n[z", "/a", "h", false}}},
      {"a line feed in a path", {{"x", "/a\npost-xfer exec = id", "h", false}}},
      {"a variable", {{"x", "/a/%HOME%", "h", false}}},
      {"a bracket in a name", {{"x]y", "/a", "h", false}}},
      {"the global section", {{"Global", "/a", "h", false}}},
      {"names that the daemon takes for one",
       {{"My Docs", "/a", "h", false}, {"mydocs", "/b", "i", false}}},
      {"outer blanks in a name", {{" x", "/a", "h", false}}},
      {"an empty name", {{"", "/a", "h", false}}},
  };
  for (const Row& row : rows) {
    const auto meant = configuration(row.modules);
    EXPECT_FALSE(verifyDaemonConfiguration(configFileContent(meant), meant)) << row.what;
  }
  auto files = configuration();
  files.pidFile = "/home/a\nb/pid";
  EXPECT_FALSE(verifyDaemonConfiguration(configFileContent(files), files));
  EXPECT_FALSE(verifyDaemonConfiguration(GlobalPart, configuration({{"x", "/a", "h", false}})));
}

}  // namespace
}  // namespace zolvar
