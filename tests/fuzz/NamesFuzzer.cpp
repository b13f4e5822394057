// Names and paths, three a case and one a line: what the rules let pass can do no harm, compared
// with slow and simple forms of the same rules; and the daemon's configuration that holds them.

#include <algorithm>
#include <cctype>
#include <vector>

#include "fuzz/Fuzz.h"
#include "log/KDLogFileEntry.h"
#include "net/DaemonConfiguration.h"
#include "pool/LinkTarget.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar::fuzz {
namespace {

/// By decoding each character.
bool isPlainUtf8(std::string_view text) {
  for (std::size_t index = 0; index < text.size();) {
    const auto lead = static_cast<unsigned char>(text[index++]);
    if (lead < 0x80) continue;
    const int following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC0 || lead > 0xF7) return false;
    std::uint32_t character = lead & (0x3FU >> following);
    for (int step = 0; step < following; ++step, ++index) {
      if (index == text.size() || (static_cast<unsigned char>(text[index]) & 0xC0) != 0x80) {
        return false;
      }
      character = character << 6U | (static_cast<unsigned char>(text[index]) & 0x3FU);
    }
    const std::uint32_t lowest = following == 1 ? 0x80 : following == 2 ? 0x800 : 0x10000;
    if (character < lowest || character > 0x10FFFF) return false;
    if (character >= 0xD800 && character <= 0xDFFF) return false;
  }
  return true;
}

bool isPlainlySafe(std::string_view path) {
  if (path.empty() || path.size() > 4096 || !isPlainUtf8(path)) return false;
  if (path.find_first_of(std::string_view("\0\n\r", 3)) != std::string_view::npos) return false;
  std::string start(path.substr(0, 7));
  std::transform(start.begin(), start.end(), start.begin(), [](unsigned char letter) {
    return letter < 0x80 ? std::tolower(letter) : letter;
  });
  if (start == ".zolvar") return false;
  std::string all(path);
  all += '/';
  for (std::string_view rest = all; !rest.empty();) {
    const std::string_view step = takeUntil(rest, '/');
    if (step.empty() || step == "." || step == ".." || step.size() > 255) return false;
  }
  return true;
}

void checkPath(std::string_view path) {
  expect(isValidUtf8(path) == isPlainUtf8(path), "UTF-8 is what it should be");
  expect(isSafeRelativePath(path) == isPlainlySafe(path), "safe paths are what they should be");
  if (isSafeRelativePath(path)) {
    expect(joinPath(parentPath(path), lastPathComponent(path)) == path, "a path has two ends");
  }
}

void checkLink(std::string_view path, std::string_view target) {
  if (!isSafeRelativePath(path) || !isInnerLinkTarget(path, target)) return;
  expect(!target.starts_with('/'), "no absolute target is inside");
  std::vector<std::string_view> place;
  for (std::string_view rest = parentPath(path); !rest.empty();) {
    place.push_back(takeUntil(rest, '/'));
  }
  for (std::string_view rest = target; !rest.empty();) {
    const std::string_view step = takeUntil(rest, '/');
    if (step.empty() || step == ".") continue;
    if (step != "..") {
      place.push_back(step);
      continue;
    }
    expect(!place.empty(), "no target is above the top on its way");
    place.pop_back();
  }
}

void checkConfiguration(const std::vector<std::string_view>& names) {
  DaemonConfiguration configuration{"/run/p", "/run/l", "/run/k", "/run/w", {}, {}};
  for (const std::string_view name : names) {
    if (poolNameProblem(name)) continue;
    expect(!hasControl(name) && isSafeRelativePath(name), "a folder's name is a plain component");
    const bool isTaken =
        std::any_of(configuration.modules.begin(), configuration.modules.end(),
                    [name](const DaemonModule& module) { return isSameModule(module.name, name); });
    if (isTaken) continue;
    std::string path = "/srv/" + std::string(names.back());
    if (poolPathProblem(path)) path = "/srv/" + std::string(name);
    expect(!poolPathProblem(path), "a folder's name can be part of its path");
    configuration.modules.push_back({std::string(name), path, hexHash(name), name.size() % 2 == 0});
  }
  std::sort(
      configuration.modules.begin(), configuration.modules.end(),
      [](const DaemonModule& left, const DaemonModule& right) { return left.name < right.name; });
  const std::string text = configFileContent(configuration);
  expect(verifyDaemonConfiguration(text, configuration).has_value(),
         "the daemon reads what was meant");
  const auto sections = parseDaemonConfiguration(text);
  expect(sections && sections->size() == configuration.modules.size() + 1,
         "each folder is one section, and nothing else is");
}

}  // namespace
}  // namespace zolvar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zolvar::fuzz;
  const std::string_view text = textOf(data, size);
  checkPath(text);
  (void)zolvar::parseDaemonConfiguration(text);
  if (const auto id = zolvar::VersionId::parse(text)) {
    expect(zolvar::VersionId::parse(id->text()) == id, "a version's id survives being shown");
  }
  std::vector<std::string_view> lines;
  std::string_view rest = text;
  for (int line = 0; line < 3; ++line) lines.push_back(takeUntil(rest, '\n'));
  for (const std::string_view line : lines) checkPath(line);
  checkLink(lines[0], lines[1]);
  checkConfiguration(lines);
  return 0;
}
