#include "app/FolderRules.h"

#include <fmt/format.h>

#include "net/KDPeer.h"
#include "platform/FileSystem.h"
#include "pool/KDFilePool.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

bool overlap(std::string_view a, std::string_view b) { return isWithin(a, b) || isWithin(b, a); }

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

std::optional<std::string> folderProblem(const std::string& path, const std::string& poolName,
                                         const KDPeer& peer, FileSystem& fileSystem) {
  if (!path.starts_with('/')) return "The folder's path must be a full one, beginning with '/'.";
  if (auto problem = poolNameProblem(poolName)) return problem;
  if (auto problem = poolPathProblem(path)) return problem;
  if (isInTrash(path)) return fmt::format("'{}' lies in the Trash.", path);
  if (const auto support = fileSystem.supportFolder(); support && overlap(path, *support)) {
    return fmt::format("'{}' holds Zolvar's own files, which must not be shared.", path);
  }
  for (const auto& pool : peer.filePools()) {
    if (pool->name() == poolName || !pool->hasFullFolderPath()) continue;
    if (overlap(path, pool->folderPath())) {
      return fmt::format("The folder overlaps with the existing shared folder '{}'.",
                         pool->folderPath());
    }
  }
  return std::nullopt;
}

}  // namespace zolvar
