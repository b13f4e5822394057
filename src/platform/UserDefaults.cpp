#include "platform/UserDefaults.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace zolvar {

bool UserDefaults::boolean(const std::string& key) const {
  std::string value = string(key).value_or("");
  std::transform(value.begin(), value.end(), value.begin(),
                 [](unsigned char character) { return std::tolower(character); });
  return value == "1" || value == "true" || value == "yes";
}

unsigned long UserDefaults::number(const std::string& key) const {
  const std::string value = string(key).value_or("");
  unsigned long parsed = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), parsed);
  return error == std::errc() && end == value.data() + value.size() ? parsed : 0;
}

}  // namespace zolvar
