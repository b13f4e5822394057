#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zolvar {

struct Platform;

using ToolVersion = std::array<unsigned, 3>;

/// Older versions of the transfer tool have holes that a stranger on the network can use.
inline constexpr ToolVersion LeastSafeToolVersion{3, 4, 3};

/// The version in the first line of the tool's "--version" output; none when there is no such line.
std::optional<ToolVersion> parseToolVersion(std::string_view output);

/// What is wrong with the installed transfer tool, as one sentence; none when it is in order. Runs
/// it: for lanes.
std::optional<std::string> transferToolProblem(Platform& platform);

}  // namespace zolvar
