#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <map>

#include "cli/HumanOutput.h"

namespace zolvar {
namespace {

using nlohmann::json;
using testing::HasSubstr;

struct Ended {
  int status = -1;
  std::string output;
};

/// Runs the command line where no Zolvar can be running.
Ended run(const std::string& arguments) {
  const std::string command =
      "XDG_RUNTIME_DIR=/nonexistent " ZOLVAR_CLI " " + arguments + " 2>&1 </dev/null";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return {};
  Ended ended;
  char buffer[4096];
  for (std::size_t count; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    ended.output.append(buffer, count);
  }
  const int status = ::pclose(pipe);
  if (WIFEXITED(status)) ended.status = WEXITSTATUS(status);
  return ended;
}

TEST(CommandLine, exitsWithTheAgreedStatus) {
  const std::map<int, std::vector<const char*>> rows = {
      {0, {"--help", "--version", "share --help"}},
      {2,
       {"", "bogus", "share", "share . --addresses Friends", "list extra", "list --yes",
        "unsubscribe X --json", "remove X", "answer X maybe", "sync --wait", "use X path",
        "set KEY", "restore X path", "pause --for", "give-up"}},
      {3,
       {"list", "list --json", "share --addresses Friends", "remove X --yes",
        "subscribe X . --password-stdin", "password X", "sync", "sync --wait X", "set KEY ''",
        "fetch X path a@b:1 to", "watch", "quit", "versions X path --json", "pause X --for 1h",
        "resume", "ignore X a@b --undo"}}};
  for (const auto& [status, commands] : rows) {
    for (const std::string arguments : commands) {
      const Ended ended = run(arguments);
      EXPECT_EQ(ended.status, status) << arguments << ": " << ended.output;
      EXPECT_FALSE(ended.output.empty()) << arguments;
    }
  }
}

TEST(CommandLine, namesTheWordThatIsNoCommand) {
  EXPECT_EQ(run("lits --json").output,
            "There is no command 'lits'. Run with --help for more information.\n");
}

TEST(CommandLine, helpsWithEveryCommand) {
  const std::string help = run("--help").output;
  for (const char* command :
       {"share",    "subscribe", "unsubscribe", "remove", "password", "list",  "participants",
        "missing",  "conflicts", "tree",        "use",    "drop",     "fetch", "sync",
        "question", "answer",    "get",         "set",    "status",   "watch", "quit",
        "versions", "restore",   "give-up",     "ignore", "pause",    "resume"}) {
    EXPECT_THAT(help, HasSubstr(command));
    EXPECT_EQ(run(std::string(command) + " --help").status, 0) << command;
  }
}

TEST(HumanOutput, keepsStrangersOffTheTerminal) {
  EXPECT_EQ(printable("a\x1b[2Jb\n\x7f"), "a?[2Jb??");
  EXPECT_EQ(printable("\xc2\x9b"
                      "c"),
            "?c");
  EXPECT_EQ(printable("Döcs ✓"), "Döcs ✓");
  const json conflicts = json::parse(R"([{"path":"a\u001b[1m","versions":[{"id":"x@y:1",
      "userId":"x@y","logTime":1,"modTime":1,"local":true,"selectedBy":["p","q"]}]}])");
  const std::string text = humanText("conflicts", conflicts);
  EXPECT_EQ(text.find('\x1b'), std::string::npos);
  EXPECT_THAT(text, HasSubstr("p, q"));
}

TEST(HumanOutput, alignsColumnsAndFitsTheTerminal) {
  const json people = json::parse(R"([
      {"userId":"ü@a","host":"h","port":1,"local":true,"ignored":false,"lastSync":0,
       "passwordRequired":false,"contact":"seen","reason":""},
      {"userId":"longer@a","host":"h","port":2,"local":false,"ignored":true,"lastSync":0,
       "passwordRequired":true,"contact":"unreachable","reason":"It is off."}])");
  EXPECT_THAT(
      humanText("participants", people),
      HasSubstr("ü@a       h     1     never      -         this computer\n"
                "longer@a  h     2     never      yes       unreachable: It is off. (ignored)\n"));
  const json progress = json::parse(R"({"participant":"x@y","filesDone":1,"filesWanted":2,
      "bytesDone":5,"bytesWanted":0,"bytesPerSecond":1.5e9})");
  EXPECT_THAT(progressBar(progress, 200), HasSubstr("0 %  1 of 2 files, 5 B of 0 B, 1.5 GB/s"));
  EXPECT_EQ(progressBar(progress, 20).size(), 20U);
  const json pools = json::parse(R"([{"name":"Docs","state":"in step","pausedUntil":null,
      "participants":1,"missing":0,"conflicts":0,"passwordRequired":false,"folder":"/d",
      "trouble":""}])");
  EXPECT_THAT(humanText("list", pools), HasSubstr("Docs  in step  1"));
}

}  // namespace
}  // namespace zolvar
