#pragma once

#include <optional>
#include <string>

namespace zolvar {

/// Why a person cannot give a setting this value, as one sentence; none when she can. Keys that the
/// program keeps for itself (where folders lie, which are active) are refused, values of the
/// settings that it knows are checked; an empty value removes a setting and is always in order.
std::optional<std::string> settingProblem(const std::string& key, const std::string& value);

}  // namespace zolvar
