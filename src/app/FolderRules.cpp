#include "app/FolderRules.h"

#include <fmt/format.h>

#include "net/KDPeer.h"
#include "platform/FileSystem.h"
#include "pool/KDFilePool.h"
#include "util/PathRules.h"
#include "util/PropertyList.h"

namespace zolvar {
namespace {

constexpr std::string_view WarnedPrefix = "*/";
constexpr std::uint64_t LargestBlacklist = 1 << 20;  // bytes

bool overlap(std::string_view a, std::string_view b) { return isWithin(a, b) || isWithin(b, a); }

/// By characters, not by components: so it is meant.
bool containEachOther(std::string_view a, std::string_view b) {
  return a.find(b) != std::string_view::npos || b.find(a) != std::string_view::npos;
}

/// Where the path, or the part of it that exists, leads to.
std::string withoutLinks(const std::string& path, FileSystem& fileSystem) {
  std::string rest;
  for (std::string folder = path; folder.size() > 1; folder = std::string(parentPath(folder))) {
    if (const auto opened = fileSystem.open(folder)) {
      const auto real = (*opened)->currentPath();
      return real ? *real + rest : path;
    }
    rest = "/" + std::string(lastPathComponent(folder)) + rest;
  }
  return path;
}

template <class Visit>
void eachComponent(std::string_view path, const Visit& visit) {
  std::size_t start = 0;
  while (start < path.size()) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    if (end > start) visit(path.substr(start, end - start));
    start = end + 1;
  }
}

}  // namespace

std::string tidyPath(std::string_view path) {
  std::string tidy;
  const bool isAbsolute = path.starts_with('/');
  eachComponent(path, [&](std::string_view component) {
    if (component == ".") return;
    if (isAbsolute || !tidy.empty()) tidy += '/';
    tidy += component;
  });
  return isAbsolute && tidy.empty() ? "/" : tidy;
}

bool isWithin(std::string_view inner, std::string_view outer) {
  if (outer == "/") return inner.starts_with('/');
  return inner.starts_with(outer) && (inner.size() == outer.size() || inner[outer.size()] == '/');
}

bool isInTrash(std::string_view path) {
  bool found = false;
  std::string_view previous;
  eachComponent(path, [&](std::string_view component) {
    found = found || component == ".Trash" || component.starts_with(".Trash-") ||
            (component == "Trash" && previous == "share");
    previous = component;
  });
  return found;
}

std::string completedPath(const std::string& path, const std::string& name) {
  return name.empty() || lastPathComponent(path) == name ? path : joinPath(path, name);
}

std::string abbreviateHome(const std::string& path, const std::string& homeFolder) {
  if (homeFolder.empty() || homeFolder == "/" || !isWithin(path, homeFolder)) return path;
  return "~" + path.substr(homeFolder.size());
}

std::string expandHome(const std::string& path, const std::string& homeFolder) {
  return path == "~" || path.starts_with("~/") ? homeFolder + path.substr(1) : path;
}

// The blacklist.

FolderBlacklist::FolderBlacklist(const std::vector<std::string>& entries) {
  for (const auto& entry : entries) {
    if (entry.starts_with(WarnedPrefix)) {
      warnedNames_.push_back(entry.substr(WarnedPrefix.size()));
    } else if (!entry.empty()) {
      places_.push_back(entry);
    }
  }
}

Result<FolderBlacklist> FolderBlacklist::load(const std::string& resourceFolder,
                                              FileSystem& fileSystem) {
  auto folder = fileSystem.open(resourceFolder);
  if (!folder) return tl::unexpected(folder.error());
  const auto bytes = (*folder)->read("FolderBlacklist.plist", 0, LargestBlacklist);
  if (!bytes) return tl::unexpected(bytes.error());
  const auto entries = stringsFromPropertyList(*bytes);
  if (!entries) return tl::unexpected(entries.error());
  return FolderBlacklist(*entries);
}

std::optional<std::string> FolderBlacklist::blacklistedComponentOfPath(
    const std::string& path, const std::string& homeFolder) const {
  const std::string abbreviated = abbreviateHome(path, homeFolder);
  for (const auto& place : places_) {
    if (containEachOther(abbreviated, place)) return place;
  }
  return std::nullopt;
}

std::optional<std::string> FolderBlacklist::warnedNameNear(const std::string& path,
                                                           FileSystem& fileSystem) const {
  const std::string home = fileSystem.homeFolder();
  for (std::string folder = path; folder.size() > 1 && folder != home;
       folder = std::string(parentPath(folder))) {
    for (const auto& name : warnedNames_) {
      if (fileSystem.identity(joinPath(folder, name))) return joinPath(folder, name);
    }
  }
  return std::nullopt;
}

// The rules.

std::optional<std::string> conflictingPoolPathOfPath(const std::string& path,
                                                     const std::string& poolName,
                                                     const KDPeer& peer,
                                                     const std::string& homeFolder) {
  for (const auto& pool : peer.filePools()) {
    if (pool->name() == poolName || !pool->hasFullFolderPath()) continue;
    if (containEachOther(path, pool->folderPath())) {
      return abbreviateHome(pool->folderPath(), homeFolder);
    }
  }
  return std::nullopt;
}

std::string FolderProblem::oneLine() const {
  std::string line;
  for (const char character : text) {
    if (character != '\n') {
      line += character;
    } else if (!line.ends_with(' ')) {
      line += ' ';
    }
  }
  return line;
}

std::optional<FolderProblem> folderProblem(const std::string& path, const std::string& poolName,
                                           const KDPeer& peer, FileSystem& fileSystem,
                                           const FolderBlacklist& blacklist) {
  const auto problem = [](std::string text) { return FolderProblem{{}, std::move(text)}; };
  if (!path.starts_with('/')) {
    return problem("The folder's path must be a full one, beginning with '/'.");
  }
  if (auto text = poolNameProblem(poolName)) return problem(std::move(*text));
  if (auto text = poolPathProblem(path)) return problem(std::move(*text));
  const std::string home = fileSystem.homeFolder();
  const std::string places[] = {path, withoutLinks(path, fileSystem)};
  for (const auto& place : places) {
    if (isInTrash(place)) return problem(fmt::format("'{}' lies in the Trash.", place));
    if (const auto support = fileSystem.supportFolder(); support && overlap(place, *support)) {
      return problem(
          fmt::format("'{}' holds Zolvar's own files, which must not be shared.", place));
    }
    if (const auto entry = blacklist.blacklistedComponentOfPath(place, home)) {
      return FolderProblem{
          FolderProblem::Kind::Blacklisted,
          fmt::format("The folder you selected is not suitable for sharing. It contains database "
                      "files (in '{}') which are not designed to be changed by any application "
                      "other than its creator. If you try anyway, you are asking for touble.\n\n"
                      "Please select or create another folder to share.",
                      *entry)};
    }
    if (const auto other = conflictingPoolPathOfPath(place, poolName, peer, home)) {
      return FolderProblem{
          FolderProblem::Kind::Overlap,
          fmt::format("The folder you selected is not suitable for sharing. It overlaps with the "
                      "existing shared folder '{}'.\n\n"
                      "Please select or create another folder to share.",
                      *other)};
    }
  }
  return std::nullopt;
}

std::optional<std::string> folderWarning(const std::string& path, FileSystem& fileSystem,
                                         const FolderBlacklist& blacklist) {
  const auto found = blacklist.warnedNameNear(path, fileSystem);
  if (!found) return std::nullopt;
  return fmt::format(
      "The folder is a work area of version control ('{}'). Files of it that change together may "
      "arrive one by one on other computers; better let version control carry them.",
      *found);
}

}  // namespace zolvar
