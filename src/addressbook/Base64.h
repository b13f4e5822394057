#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zolvar {

/// Standard Base64 text; with newlines on, lines of 64 characters, each ended by a line feed.
std::string encodeBase64WithNewlines(std::string_view bytes, bool newlines);
inline std::string encodeBase64(std::string_view bytes) {
  return encodeBase64WithNewlines(bytes, true);
}

/// Appends Base64 without line breaks in pieces of 76 characters, each after the prefix (if any).
void appendBase64ToString(std::string& text, std::string_view bytes,
                          const std::optional<std::string>& linePrefix);

}  // namespace zolvar
