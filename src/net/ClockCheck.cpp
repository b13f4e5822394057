#include "net/ClockCheck.h"

#include <algorithm>
#include <charconv>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/ProcessLauncher.h"

namespace zolvar {
namespace {

constexpr SilenceLimits Patience{10, 10};
constexpr std::size_t LongestOutput = 100;  // bytes of either stream that are looked at

}  // namespace

ClockCheck::ClockCheck(Platform& platform, std::string ownProgram)
    : platform_(platform), ownProgram_(std::move(ownProgram)) {}

std::optional<double> ClockCheck::badSeconds(const std::vector<std::string>& servers) {
  for (const std::string& server : servers) {
    const auto time = ask(server);
    if (time) return *time - platform_.clock.now();
  }
  return std::nullopt;
}

void ClockCheck::cancel() {
  const std::lock_guard lock(mutex_);
  isCancelled_ = true;
  if (process_) process_->terminate();
}

std::optional<double> ClockCheck::ask(const std::string& server) {
  ProcessRequest request;
  request.program = ownProgram_;
  request.arguments = {"--time-query=" + server};
  request.wantsOutput = true;
  std::shared_ptr<Process> process;
  {
    const std::lock_guard lock(mutex_);
    if (isCancelled_) return std::nullopt;
    auto started = platform_.processes.start(request);
    if (!started) {
      platform_.log.debug("The clock is not checked. {}", started.error().message());
      return std::nullopt;
    }
    process = process_ = std::move(*started);
  }
  std::string output;
  std::string errors;
  const auto keep = [](std::string& text) {
    return [&text](std::string_view bytes) {
      text += bytes.substr(0, LongestOutput - std::min(LongestOutput, text.size()));
    };
  };
  const ProcessEnd end = process->wait(Patience, {keep(output), keep(errors), {}});
  {
    const std::lock_guard lock(mutex_);
    process_.reset();
  }
  double time = 0;
  const auto [rest, error] = std::from_chars(output.data(), output.data() + output.size(), time);
  if (end.status == 0 && !end.silenced && error == std::errc() && *rest == '\n') return time;
  while (errors.ends_with('\n')) errors.pop_back();
  platform_.log.debug("The time server '{}' gave no answer. {}", server, errors);
  return std::nullopt;
}

}  // namespace zolvar
