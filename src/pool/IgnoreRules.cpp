#include "pool/IgnoreRules.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::size_t LongestPattern = 4096;  ///< bytes; as long as a path may be
constexpr std::size_t MostPatterns = 10'000;  ///< rules come from others, too
constexpr std::size_t MostSteps = 1'000'000;  ///< for one pattern against one path
constexpr std::size_t EndlessStars = 2;       ///< so many stand for any number of directories

/// Whether the character belongs to the set that `glob` begins with after its "["; the length of
/// the set with its "]". None when the set is not closed: then nothing fits.
struct SetMatch {
  bool fits = false;
  std::size_t length = 0;
};

bool isInClass(std::string_view name, unsigned char character) {
  struct Class {
    std::string_view name;
    int (*contains)(int);
  };
  static constexpr Class Classes[] = {
      {"alnum", std::isalnum}, {"alpha", std::isalpha}, {"blank", std::isblank},
      {"cntrl", std::iscntrl}, {"digit", std::isdigit}, {"graph", std::isgraph},
      {"lower", std::islower}, {"print", std::isprint}, {"punct", std::ispunct},
      {"space", std::isspace}, {"upper", std::isupper}, {"xdigit", std::isxdigit},
  };
  for (const Class& known : Classes) {
    if (known.name == name) return known.contains(character) != 0;
  }
  return false;
}

std::optional<SetMatch> matchSet(std::string_view glob, char character) {
  const auto wanted = static_cast<unsigned char>(character);
  std::size_t at = 0;
  const auto take = [&]() -> std::optional<unsigned char> {
    if (at < glob.size() && glob[at] == '\\') ++at;
    if (at >= glob.size()) return std::nullopt;
    return static_cast<unsigned char>(glob[at++]);
  };
  const bool isNegated = !glob.empty() && (glob[0] == '!' || glob[0] == '^');
  if (isNegated) ++at;
  bool fits = false;
  for (bool isFirst = true;; isFirst = false) {
    if (at >= glob.size()) return std::nullopt;
    if (glob[at] == ']' && !isFirst) break;
    if (glob.substr(at).starts_with("[:")) {
      const std::size_t end = glob.find(":]", at + 2);
      if (end == std::string_view::npos) return std::nullopt;
      if (isInClass(glob.substr(at + 2, end - at - 2), wanted)) fits = true;
      at = end + 2;
      continue;
    }
    const auto low = take();
    if (!low) return std::nullopt;
    auto high = low;
    if (at + 1 < glob.size() && glob[at] == '-' && glob[at + 1] != ']') {
      ++at;
      high = take();
      if (!high) return std::nullopt;
    }
    if (*low <= wanted && wanted <= *high) fits = true;
  }
  return SetMatch{fits != isNegated, at + 1};
}

/// A glob against a path, piece by piece. Stars are tried by going on and coming back; the steps
/// are counted, since a stranger may have written the pattern.
class Matcher {
 public:
  [[nodiscard]] bool fits(std::string_view glob, std::string_view text, bool isComponentStart) {
    for (;;) {
      if (++steps_ > MostSteps) return false;
      if (glob.empty()) return text.empty();
      if (glob[0] == '*') return fitsStar(glob, text, isComponentStart);
      if (text.empty()) return false;
      if (glob[0] == '?') {
        if (text[0] == '/') return false;
        glob.remove_prefix(1);
      } else if (glob[0] == '[') {
        const auto set = matchSet(glob.substr(1), text[0]);
        if (!set || !set->fits || text[0] == '/') return false;
        glob.remove_prefix(1 + set->length);
      } else {
        if (glob[0] == '\\') glob.remove_prefix(1);
        if (glob.empty() || glob[0] != text[0]) return false;
        glob.remove_prefix(1);
      }
      isComponentStart = text[0] == '/';
      text.remove_prefix(1);
    }
  }

 private:
  bool fitsStar(std::string_view glob, std::string_view text, bool isComponentStart) {
    const std::size_t stars = std::min(glob.find_first_not_of('*'), glob.size());
    const std::string_view rest = glob.substr(stars);
    const bool isEndless =
        stars >= EndlessStars && isComponentStart && (rest.empty() || rest[0] == '/');
    if (isEndless) {
      if (rest.empty()) return !text.empty();
      const std::string_view after = rest.substr(1);
      for (;;) {  // "**/": after any number of whole components, none included
        if (fits(after, text, true)) return true;
        const std::size_t slash = text.find('/');
        if (slash == std::string_view::npos) return false;
        text.remove_prefix(slash + 1);
      }
    }
    for (;;) {
      if (fits(rest, text, false)) return true;
      if (text.empty() || text[0] == '/' || steps_ > MostSteps) return false;
      text.remove_prefix(1);
    }
  }

  std::size_t steps_ = 0;
};

/// Takes off blanks at the end, but for one that a backslash keeps.
std::string_view withoutTrailingBlanks(std::string_view line) {
  while (line.ends_with(' ')) {
    std::size_t backslashes = 0;
    while (backslashes + 1 < line.size() && line[line.size() - 2 - backslashes] == '\\') {
      ++backslashes;
    }
    if (backslashes % 2 == 1) break;
    line.remove_suffix(1);
  }
  return line;
}

}  // namespace

IgnoreRules::IgnoreRules(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  while (!text.empty() && patterns_.size() < MostPatterns) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    addLine(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void IgnoreRules::addLine(std::string_view line) {
  line = withoutTrailingBlanks(line);
  if (line.empty() || line[0] == '#' || line.size() > LongestPattern) return;
  Pattern pattern;
  if (line[0] == '!') {
    pattern.takesOut = true;
    line.remove_prefix(1);
  }
  if (line.ends_with('/')) {
    pattern.onlyFolders = true;
    line.remove_suffix(1);
  }
  pattern.isAnchored = line.find('/') != std::string_view::npos;
  if (line.starts_with('/')) line.remove_prefix(1);
  if (line.empty()) return;
  pattern.glob = line;
  patterns_.push_back(std::move(pattern));
}

bool IgnoreRules::ignores(std::string_view path, bool isDirectory) const {
  if (patterns_.empty()) return false;
  for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
       slash = path.find('/', slash + 1)) {
    if (ignoresItem(path.substr(0, slash), true)) return true;
  }
  return ignoresItem(path, isDirectory);
}

bool IgnoreRules::ignoresItem(std::string_view path, bool isDirectory) const {
  if (path == IgnoreFileName) return false;
  const std::string_view name = lastPathComponent(path);
  for (auto pattern = patterns_.rbegin(); pattern != patterns_.rend(); ++pattern) {
    if (pattern->onlyFolders && !isDirectory) continue;
    if (Matcher().fits(pattern->glob, pattern->isAnchored ? path : name, true)) {
      return !pattern->takesOut;
    }
  }
  return false;
}

}  // namespace zolvar
