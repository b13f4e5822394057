#include "pool/ArrivingName.h"

#include <algorithm>

#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::size_t SuffixLength = 7;  // ".XXXXXX"
constexpr std::size_t LongestKept = LongestComponent - 1 - SuffixLength - 1;

bool isLetterOrDigit(char character) {
  return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
         (character >= 'a' && character <= 'z');
}

bool isPartOfLonger(char character) { return (static_cast<unsigned char>(character) & 0x80U) != 0; }

}  // namespace

bool isShapedAsArriving(std::string_view name) {
  if (name.size() < SuffixLength || name.front() != '.') return false;
  const std::string_view suffix = name.substr(name.size() - SuffixLength);
  return suffix.front() == '.' && std::all_of(suffix.begin() + 1, suffix.end(), isLetterOrDigit);
}

bool isArriving(std::string_view name, std::string_view target) {
  if (!isShapedAsArriving(name)) return false;
  if (target.starts_with('.')) target.remove_prefix(1);
  std::string_view kept = target.substr(0, LongestKept);
  if (kept.size() < target.size() && isPartOfLonger(target[kept.size()])) {
    while (!kept.empty() && isPartOfLonger(kept.back())) kept.remove_suffix(1);
  }
  std::string_view core = name.substr(0, name.size() - SuffixLength);
  if (kept.empty() || kept == ".") return core.empty();  // the suffix's dot is the only one
  if (kept.ends_with('.')) kept.remove_suffix(1);
  if (!core.starts_with('.')) return false;
  core.remove_prefix(1);
  return core == kept;
}

}  // namespace zolvar
