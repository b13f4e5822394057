// The control socket: lines of requests, answered by the whole application on a simulated machine.

#include <algorithm>
#include <vector>

#include "app/AppHost.h"
#include "app/ControlProtocol.h"
#include "app/ControlRequest.h"
#include "fuzz/Fuzz.h"
#include "util/PathRules.h"

namespace zolvar::fuzz {
namespace {

using nlohmann::json;

constexpr std::size_t MostRequests = 6;

/// A machine that shares one folder and knows of a file in it.
struct Machine {
  SimulatedWorld world;
  AppHost host{world, "alpha", "ann"};
  std::size_t answers = 0;
  bool hasQuit = false;

  Machine() {
    host.platform.files.write("/home/user/Docs/a", "text", 1'700'000'000);
    host.platform.files.write("/home/user/Other/b", "text", 1'700'000'000);
    host.start();
    host.share("/home/user/Docs");
  }

  void take(const json& answer) {
    // What cannot be written as JSON would end the program, and a line feed would end the answer.
    expect(answer.dump().find('\n') == std::string::npos, "an answer is one line");
    if (answer.contains("event")) return;
    ++answers;
    expect(answer.contains("ok") && answer["ok"].is_boolean(), "an answer says yes or no");
    if (answer["ok"].get<bool>()) return;
    const auto sentence = answer.value("error", "");
    expect(sentence.size() > 5, "a refusal is a sentence");
  }

  void run(const std::vector<std::string_view>& lines) {
    ControlProtocol protocol(
        *host.app, *host.operations,
        {[this](const json& answer) { take(answer); }, {}, [this] { hasQuit = true; }});
    for (const std::string_view line : lines) {
      const std::size_t before = answers;
      protocol.handleLine(line);
      host.platform.loop.runUntil([&] { return !protocol.isBusy(); }, 600);
      expect(!protocol.isBusy() && answers == before + 1, "each request gets one answer");
      if (hasQuit) return;
    }
    host.advance(30);
  }
};

}  // namespace
}  // namespace zolvar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zolvar;
  using namespace zolvar::fuzz;
  std::string_view rest = textOf(data, size);
  std::vector<std::string_view> lines;
  bool hasRequest = false;
  while (!rest.empty() && lines.size() < MostRequests) {
    lines.push_back(takeUntil(rest, '\n'));
    const auto request = ControlRequest::parse(lines.back());
    hasRequest = hasRequest || request.has_value();
    if (request) {
      expect(isValidUtf8(lines.back()), "a request is UTF-8");
    } else {
      const std::string sentence = refusalText(request.error());
      expect(isValidUtf8(sentence) && !sentence.empty(), "a refusal can be shown");
    }
  }
  if (hasRequest) Machine().run(lines);
  return 0;
}
