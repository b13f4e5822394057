#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace zolvar {

/// The data of a reply as text for a person: tables for listings, sentences for the rest; "" when
/// there is nothing to say. `data` is what the running program answered to `command`.
std::string humanText(const std::string& command, const nlohmann::json& data);

/// One line of a progress bar, without a line feed; `columns` is the terminal's width.
std::string progressBar(const nlohmann::json& progress, unsigned columns);

/// `text` without control characters: names come from strangers and go to a terminal.
std::string printable(std::string_view text);

}  // namespace zolvar
