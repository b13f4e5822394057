#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <deque>
#include <thread>

#include "ScriptedProcesses.h"
#include "net/ClockCheck.h"
#include "net/FirewallPreference.h"
#include "net/NetworkTime.h"

namespace zolvar {
namespace {

TEST(FirewallPreference, readsIndexSets) {
  const struct {
    const char* text;
    unsigned index;
    bool isContained;
  } rows[] = {
      {"548,49999", 49999, true},
      {"548,49999", 50000, false},
      {"10-13", 10, true},
      {"10-13", 12, true},
      {"10-13", 13, false},  // the length is the difference
      {"13-10", 10, true},
      {"13-10", 13, false},
      {"7-7", 7, false},
      {" 80 , 443", 443, true},
      {"", 0, true},
      {"", 1, false},
      {"any", 0, true},
      {"99999999999999999999", 1, false},
      {"1,2-4,9", 3, true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(indexSetContains(row.text, row.index), row.isContained)
        << row.text << " " << row.index;
  }
}

TEST(FirewallPreference, blocksWhatNoEntryOpens) {
  const std::string head = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>";
  const std::string ports = "<key>allports</key><array><string>548,49999</string></array>";
  const auto block = [&](const std::string& content, unsigned port) {
    return doesFirewallPreferenceBlock(head + content + "</dict></plist>", port);
  };
  for (const char* on : {"<key>state</key><true/>", "<key>state</key><integer>1</integer>"}) {
    EXPECT_FALSE(block(on + ports, 49999));
    EXPECT_TRUE(block(on + ports, 50000));
    EXPECT_TRUE(block(on, 49999));
    EXPECT_TRUE(block(std::string(on) + "<key>allports</key><array/>", 49999));
  }
  for (const char* off : {"", "<key>state</key><false/>", "<key>state</key><string>x</string>"}) {
    EXPECT_FALSE(block(off, 49999)) << off;
  }
  EXPECT_FALSE(doesFirewallPreferenceBlock("", 49999));
  EXPECT_FALSE(doesFirewallPreferenceBlock("<plist><array/></plist>", 49999));
  SimulatedPlatform host;
  EXPECT_FALSE(isFirewallBlockingTCPPort(host.files, 49999));
  host.files.write("/Library/Preferences/com.apple.sharing.firewall.plist",
                   head + "<key>state</key><true/></dict></plist>");
  EXPECT_TRUE(isFirewallBlockingTCPPort(host.files, 49999));
}

/// A time server on the loop-back address that sends these bytes to one client.
class TimeServer {
 public:
  explicit TimeServer(std::string bytes) {
    listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener_, 4), 0);
    socklen_t size = sizeof address;
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size);
    port_ = std::to_string(ntohs(address.sin_port));
    thread_ = std::thread([this, bytes = std::move(bytes)] {
      const int client = ::accept(listener_, nullptr, nullptr);
      if (client < 0) return;
      for (const char byte : bytes) (void)!::write(client, &byte, 1);  // in pieces
      ::close(client);
    });
  }
  ~TimeServer() {
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    ::close(listener_);
  }
  [[nodiscard]] const std::string& port() const { return port_; }

 private:
  int listener_ = -1;
  std::string port_;
  std::thread thread_;
};

TEST(NetworkTime, asksAServer) {
  std::string port;
  {
    const TimeServer server(std::string("\xE0\0\0\0", 4));
    port = server.port();
    const auto time = networkTimeFromServer("127.0.0.1", port);
    ASSERT_TRUE(time && *time);
    EXPECT_EQ(**time, 1549107584.0);
  }
  const auto refused = networkTimeFromServer("127.0.0.1", port);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ECONNREFUSED);
  EXPECT_EQ(refused.error().message,
            "Error: connect failed during ntp connect to 127.0.0.1: Connection refused");
  const auto unresolved = networkTimeFromServer("no host", port);
  EXPECT_TRUE(unresolved && !*unresolved);
  EXPECT_EQ(answerTimeQuery("no host", port), 1);
}

TEST(NetworkTimeDeathTest, endsTheProcessOnAShortAnswer) {
  // The server has a thread: a mere fork can leave a lock held for ever.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const TimeServer server("\xE0");
  EXPECT_EXIT((void)networkTimeFromServer("127.0.0.1", server.port()), testing::ExitedWithCode(1),
              "^Could not read data\n");
}

/// Answers the time queries of one check, in order.
class Answers : public ScriptedProcesses {
 public:
  struct Answer {
    int status;
    std::string output;
  };
  using ScriptedProcesses::ScriptedProcesses;
  Result<std::shared_ptr<Process>> start(const ProcessRequest& request) override {
    launches.push_back(request.arguments);
    if (answers.empty()) return fail(FailureKind::Absent, "start", request.program);
    const Answer answer = answers.front();
    answers.pop_front();
    return std::make_shared<Query>(answer);
  }
  std::deque<Answer> answers;

 private:
  struct Query : Process {
    explicit Query(Answer given) : answer(std::move(given)) {}
    [[nodiscard]] int pid() const override { return 1; }
    void terminate() override {}
    ProcessEnd wait(const SilenceLimits&, const ProcessSinks& sinks) override {
      sinks.output(answer.output);
      return {answer.status, false};
    }
    Answer answer;
  };
};

TEST(ClockCheck, believesTheFirstServerThatAnswers) {
  SimulatedPlatform host;
  const auto in = [&](double seconds) {
    return fmt::format("{:.0f}\n", host.clock.now() + seconds);
  };
  const struct {
    std::deque<Answers::Answer> answers;
    std::optional<double> badSeconds;
    std::size_t questions;
  } rows[] = {
      {{{0, in(20)}, {0, in(0)}}, 20, 1},
      {{{1, ""}, {0, in(-30)}}, -30, 2},
      {{{1, in(5)}, {143, in(5)}}, std::nullopt, 2},
      {{{0, "soon"}, {0, in(7).substr(0, 3)}}, std::nullopt, 2},  // cut off
      {{}, std::nullopt, 2},
  };
  for (const auto& row : rows) {
    Answers processes(host.files);
    processes.answers = row.answers;
    Platform platform{host.clock,     host.random,       host.loop,     host.lanes,   host.files,
                      processes,      host.services,     host.hosts,    host.secrets, host.defaults,
                      host.workspace, host.networkWatch, host.firewall, host.log};
    ClockCheck check(platform, "/usr/bin/zolvard");
    const auto found = check.badSeconds({"one", "two"});
    ASSERT_EQ(found.has_value(), row.badSeconds.has_value());
    EXPECT_NEAR(found.value_or(0), row.badSeconds.value_or(0), 1);
    EXPECT_EQ(processes.launches.size(), row.questions);
    EXPECT_EQ(processes.launches.at(0), std::vector<std::string>{"--time-query=one"});
    check.cancel();
    EXPECT_FALSE(check.badSeconds({"one"}));
    EXPECT_EQ(processes.launches.size(), row.questions);
  }
}

}  // namespace
}  // namespace zolvar
