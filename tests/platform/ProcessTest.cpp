#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <thread>

#include "platform/qt/Descriptor.h"
#include "platform/qt/PosixProcessLauncher.h"

namespace zolvar {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ProcessTest : public testing::Test {
 protected:
  struct Run {
    ProcessEnd end;
    std::string output;
    std::string errors;
    double seconds = 0;
  };

  static ProcessRequest shell(const std::string& script) {
    ProcessRequest request;
    request.program = "/bin/bash";
    request.arguments = {"-c", script};
    request.wantsOutput = true;
    return request;
  }
  Run run(const ProcessRequest& request, const SilenceLimits& limits = {}) {
    const auto begin = std::chrono::steady_clock::now();
    Run run;
    auto process = launcher_.start(request);
    if (!process) {
      ADD_FAILURE() << process.error().message();
      return run;
    }
    run.end = (*process)->wait(limits, {[&](std::string_view bytes) { run.output += bytes; },
                                        [&](std::string_view bytes) { run.errors += bytes; },
                                        {}});
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return run;
  }

  PosixProcessLauncher launcher_{ProcessPace{0.02, 0.1}};
};

TEST_F(ProcessTest, tellsHowItEnded) {
  for (const auto& [script, status] : std::map<std::string, int>{
           {"exit 0", 0}, {"exit 23", 23}, {"kill -TERM $$", 143}, {"kill -KILL $$", 137}}) {
    EXPECT_EQ(status, run(shell(script)).end.status) << script;
  }
  ProcessRequest missing;
  missing.program = "/nowhere/tool";
  EXPECT_EQ(FailureKind::Absent, launcher_.start(missing).error().kind);
  missing.program = "/etc/passwd";
  EXPECT_EQ(FailureKind::Refused, launcher_.start(missing).error().kind);
}

TEST_F(ProcessTest, carriesEveryByteBothWays) {
  ProcessRequest request =
      shell("tee /dev/stderr; echo \"$WHO in $PWD, $(ls /proc/self/fd | wc -l)\"");
  request.environment = {{"WHO", "someone"}};
  for (int index = 0; index < 200'000; ++index) request.input += std::to_string(index) + "\n";
  const auto both = run(request);
  EXPECT_EQ(request.input, both.errors);
  ASSERT_TRUE(both.output.starts_with(request.input));
  // Standard input, output, error and the listed folder: nothing of ours is inherited.
  EXPECT_EQ("someone in /, 4\n", both.output.substr(request.input.size()));

  request.program = "/bin/true";  // reads nothing: neither a signal nor a hang
  EXPECT_EQ(0, run(request).end.status);
  EXPECT_EQ("", run(shell("cat")).output) << "no input ends at once";
}

TEST_F(ProcessTest, waitsForNoGrandchildThatKeepsThePipes) {
  const auto quick = run(shell("sleep 5 & echo done"));
  EXPECT_EQ("done\n", quick.output);
  EXPECT_LT(quick.seconds, 3);
}

TEST_F(ProcessTest, endsTheWholeGroupWhenAskedAndKillsTheStubborn) {
  for (const auto& [script, status] :
       std::map<std::string, int>{{"sleep 60 & echo $!; wait", 143},
                                  {"trap '' TERM; sleep 60 & echo $!; wait; wait", 137}}) {
    SCOPED_TRACE(script);
    const auto process = launcher_.start(shell(script));
    ASSERT_TRUE(process);
    std::string child;
    const auto end = (*process)->wait({}, {[&](std::string_view bytes) {
                                             child = bytes;
                                             (*process)->terminate();
                                           },
                                           {},
                                           {}});
    EXPECT_EQ(status, end.status);
    EXPECT_FALSE(end.silenced);
    EXPECT_TRUE(launcher_.waitGone(std::stoi(child), 2));
  }
  int pid = 0;
  {
    const auto dropped = launcher_.start(shell("sleep 60"));
    pid = (*dropped)->pid();
  }
  EXPECT_TRUE(launcher_.waitGone(pid, 2)) << "nobody holds it any more";
}

TEST_F(ProcessTest, endsWhatIsSilentForTooLong) {
  const auto hung = run(shell("sleep 60"), {0.1, 0});
  EXPECT_TRUE(hung.end.silenced);
  EXPECT_EQ(143, hung.end.status);
  EXPECT_LT(hung.seconds, 5);
  EXPECT_TRUE(run(shell("echo begun; sleep 60"), {0, 0.1}).end.silenced);
  // Begun, so the limit for connecting is no longer meant.
  EXPECT_FALSE(run(shell("echo begun; sleep 0.3"), {0.1, 0}).end.silenced);
  // Silent on its pipes, but a child of it moves bytes.
  const auto busy = run(
      shell("(for i in {1..25}; do echo > /dev/null; read -t 0.02 < <(:); sleep 0.02; done); true"),
      {0.3, 0.3});
  EXPECT_FALSE(busy.end.silenced);
}

/// A TCP port on loopback.
class Port {
 public:
  explicit Port(int backlog) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address_;
    EXPECT_EQ(bind(socket_.get(), generic(), size), 0);
    listen(socket_.get(), backlog);
    getsockname(socket_.get(), generic(), &size);
  }
  [[nodiscard]] unsigned number() const { return ntohs(address_.sin_port); }
  /// Fills the queue of connections, so that the next gets no answer.
  void fill() {
    for (int index = 0; index < 3; ++index) {
      queued_.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
      (void)!connect(queued_.back().get(), generic(), sizeof address_);
    }
  }

 private:
  sockaddr* generic() { return reinterpret_cast<sockaddr*>(&address_); }

  sockaddr_in address_ = {};
  Descriptor socket_;
  std::vector<Descriptor> queued_;
};

TEST_F(ProcessTest, tellsAConnectionThatIsNotAnsweredFromASlowPeer) {
  Port answering(5);
  Port full(0);
  full.fill();
  // Both have moved bytes before: looking up a name does.
  const auto script = [](const Port& port) {
    return shell("echo asking > /dev/null; exec 3<>/dev/tcp/127.0.0.1/" +
                 std::to_string(port.number()) + "; sleep 0.4");
  };
  EXPECT_TRUE(run(script(full), {0.15, 30}).end.silenced);
  EXPECT_FALSE(run(script(answering), {0.15, 30}).end.silenced);
}

TEST_F(ProcessTest, outlivesTheThreadThatStartedItButNotTheProgram) {
  constexpr const char* Role = "ZOLVAR_TEST_IS_THE_PROGRAM_THAT_DIES";
  if (getenv(Role) != nullptr) {
    const auto child = launcher_.start(shell("trap '' TERM HUP; sleep 60"));
    std::cout << "child " << (*child)->pid() << std::endl;
    kill(getpid(), SIGKILL);
  }
  std::shared_ptr<Process> process;
  std::thread([&] { process = *launcher_.start(shell("sleep 0.2; echo alive")); }).join();
  std::string output;
  process->wait({}, {[&](std::string_view bytes) { output += bytes; }, {}, {}});
  EXPECT_EQ("alive\n", output);

  ProcessRequest again;  // this very test, in the other role
  again.program = std::filesystem::read_symlink("/proc/self/exe");
  again.arguments = {"--gtest_filter=ProcessTest.outlives*"};
  again.environment = {{Role, "1"}};
  again.wantsOutput = true;
  const auto program = run(again);
  EXPECT_EQ(137, program.end.status);
  const auto word = program.output.rfind("child ");
  ASSERT_NE(std::string::npos, word) << program.output << program.errors;
  EXPECT_TRUE(launcher_.waitGone(std::stoi(program.output.substr(word + 6)), 5));
}

TEST_F(ProcessTest, leavesADaemonAloneThatWentItsOwnWay) {
  const auto started = run(shell("setsid sleep 60 > /dev/null 2>&1 & echo $!"));
  const int daemon = std::stoi(started.output);
  EXPECT_FALSE(launcher_.waitGone(daemon, 0.02));
  EXPECT_TRUE(launcher_.signal(daemon, SIGKILL));
}

TEST_F(ProcessTest, looksAtProcessesAndPorts) {
  const auto process = launcher_.start(shell("exec sleep 60"));
  const int pid = (*process)->pid();
  const auto isExecuted = [&] {
    const auto line = launcher_.commandLine(pid);  // empty for a moment in between
    return !line.empty() && line.front() == "sleep";
  };
  for (int tries = 0; tries < 200 && !isExecuted(); ++tries) usleep(5000);
  EXPECT_THAT(launcher_.commandLine(pid), ElementsAre("sleep", "60"));
  EXPECT_FALSE(launcher_.waitGone(pid, 0.01));
  EXPECT_TRUE(launcher_.signal(pid, SIGKILL));
  EXPECT_EQ(137, (*process)->wait({}, {}).status);
  EXPECT_TRUE(launcher_.waitGone(pid, 0));
  EXPECT_TRUE(launcher_.commandLine(pid).empty());
  EXPECT_FALSE(launcher_.signal(pid, SIGTERM));
  for (const int nobody : {0, -1}) {
    EXPECT_FALSE(launcher_.signal(nobody, 0)) << "would mean groups";
    EXPECT_TRUE(launcher_.commandLine(nobody).empty());
  }
  unsigned number = 0;
  {
    const Port taken(1);
    number = taken.number();
    EXPECT_FALSE(launcher_.canBind(number));
  }
  EXPECT_TRUE(launcher_.canBind(number));
  EXPECT_FALSE(launcher_.canBind(0));
  EXPECT_FALSE(launcher_.canBind(65536));
}

TEST_F(ProcessTest, findsTheTransferTool) {
  const auto tool = launcher_.clientToolPath();
  ASSERT_TRUE(tool);
  ProcessRequest request;
  request.program = *tool;
  request.arguments = {"--version"};
  request.wantsOutput = true;
  EXPECT_THAT(run(request).output, HasSubstr("protocol version"));
}

}  // namespace
}  // namespace zolvar
