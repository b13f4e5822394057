#include "app/TransferToolCheck.h"

#include <fmt/format.h>

#include <charconv>

#include "platform/Platform.h"
#include "platform/ProcessLauncher.h"

namespace zolvar {

std::optional<ToolVersion> parseToolVersion(std::string_view output) {
  constexpr std::string_view Mark = " version ";
  const std::string_view line = output.substr(0, output.find('\n'));
  const auto mark = line.find(Mark);
  if (mark == std::string_view::npos) return std::nullopt;
  const char* position = line.data() + mark + Mark.size();
  const char* const end = line.data() + line.size();
  ToolVersion version{};
  for (std::size_t i = 0; i < version.size(); ++i) {
    const auto [next, error] = std::from_chars(position, end, version[i]);
    if (error != std::errc()) return std::nullopt;
    position = next;
    if (i + 1 == version.size()) break;
    if (position == end || *position != '.') return std::nullopt;
    ++position;
  }
  return version;
}

std::optional<std::string> transferToolProblem(Platform& platform) {
  const auto path = platform.processes.clientToolPath();
  if (!path) return path.error().message();
  ProcessRequest request;
  request.program = *path;
  request.arguments = {"--version"};
  request.wantsOutput = true;
  const auto process = platform.processes.start(request);
  if (!process) return process.error().message();
  std::string output;
  ProcessSinks sinks;
  sinks.output = [&](std::string_view bytes) { output += bytes; };
  (*process)->wait({10, 10}, sinks);
  const auto version = parseToolVersion(output);
  if (!version) return fmt::format("The transfer tool '{}' does not tell its version.", *path);
  if (*version >= LeastSafeToolVersion) return std::nullopt;
  return fmt::format(
      "The transfer tool rsync {}.{}.{} has known security holes. Please update it to 3.4.3 or "
      "later.",
      (*version)[0], (*version)[1], (*version)[2]);
}

}  // namespace zolvar
