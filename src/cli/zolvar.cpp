#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <iterator>

#include "cli/CommandLine.h"
#include "cli/ControlClient.h"
#include "cli/ControlSocketPath.h"
#include "cli/HumanOutput.h"

// The command line. It talks to whichever Zolvar runs for this user and holds no state of its own.

namespace zolvar {
namespace {

using nlohmann::json;

enum ExitCode { Done = 0, RefusedByZolvar = 1, NothingRunning = 3 };

constexpr std::chrono::seconds LongestQuit{30};

/// Reads the password; on a terminal one line without echo, else all of standard input.
std::string readPassword() {
  std::string password;
  if (::isatty(STDIN_FILENO) == 1) {
    std::cerr << "Password: " << std::flush;
    termios shown{};
    ::tcgetattr(STDIN_FILENO, &shown);
    termios hidden = shown;
    hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    std::getline(std::cin, password);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
    std::cerr << '\n';
  } else {
    password.assign(std::istreambuf_iterator<char>(std::cin), {});
    if (!password.empty() && password.back() == '\n') password.pop_back();
  }
  return password;
}

unsigned terminalColumns() {
  winsize size{};
  return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col - 1U : 79U;
}

std::string asLine(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

/// The events that come before a reply: a bar on a terminal, nothing elsewhere.
class ProgressLine {
 public:
  void show(const json& event) {
    if (::isatty(STDERR_FILENO) != 1 || event.value("event", "") != "progress") return;
    if (!event.contains("progress") || event["progress"].is_null()) return;
    std::cerr << '\r' << progressBar(event["progress"], terminalColumns()) << "\x1b[K"
              << std::flush;
    isShown_ = true;
  }
  void end() {
    if (isShown_) std::cerr << '\n';
    isShown_ = false;
  }

 private:
  bool isShown_ = false;
};

int endedEarly() {
  std::cerr << "Zolvar has ended.\n";
  return NothingRunning;
}

int watch(ControlClient& client) {
  while (const auto line = client.receive()) std::cout << *line << std::endl;
  return endedEarly();
}

int showReply(const Invocation& invocation, const json& reply) {
  if (!reply.value("ok", false)) {
    std::cerr << printable(reply.value("error", "Zolvar refused without a reason.")) << '\n';
    return RefusedByZolvar;
  }
  const json data = reply.contains("data") ? reply["data"] : json();
  if (invocation.json) {
    std::cout << data.dump(2, ' ', false, json::error_handler_t::replace) << '\n';
  } else {
    std::cout << humanText(invocation.command(), data);
  }
  return Done;
}

int run(Invocation invocation) {
  if (invocation.readsPassword) invocation.request["password"] = readPassword();
  ControlClient client;
  if (!client.connect(controlSocketPath())) {
    std::cerr << "Zolvar is not running. Start it with: zolvard\n";
    return NothingRunning;
  }
  if (const auto sent = client.send(asLine(invocation.request)); !sent) return endedEarly();

  ProgressLine progress;
  while (const auto line = client.receive()) {
    const json answer = json::parse(*line, nullptr, false);
    if (!answer.is_object()) {
      std::cerr << "Zolvar gave an answer that is not understood.\n";
      return RefusedByZolvar;
    }
    if (answer.contains("event")) {
      progress.show(answer);
      continue;
    }
    progress.end();
    const int code = showReply(invocation, answer);
    if (code == Done && invocation.command() == "watch") return watch(client);
    if (code == Done && invocation.command() == "quit" && !client.waitForClose(LongestQuit)) {
      std::cerr << "Zolvar is still ending.\n";
      return RefusedByZolvar;
    }
    return code;
  }
  progress.end();
  return endedEarly();
}

}  // namespace
}  // namespace zolvar

int main(int argc, char** argv) {
  auto parsed = zolvar::parseCommandLine(argc, argv);
  if (const auto* early = std::get_if<zolvar::EarlyExit>(&parsed)) return early->code;
  try {
    return zolvar::run(std::get<zolvar::Invocation>(std::move(parsed)));
  } catch (const nlohmann::json::exception& error) {
    std::cerr << "Zolvar gave an answer that is not understood (" << error.what() << ").\n";
    return 1;
  }
}
