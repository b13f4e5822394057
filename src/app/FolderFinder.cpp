#include "app/FolderFinder.h"

#include <vector>

#include "util/PathRules.h"

namespace zolvar {
namespace {

bool hasIdentity(FileSystem& fileSystem, const std::string& path, const FileIdentity& wanted) {
  const auto identity = fileSystem.identity(path);
  return identity && *identity == wanted;
}

Finding lookAtStoredPath(const StoredPlace& place, FileSystem& fileSystem,
                         const std::string& userId) {
  if (!fileSystem.isFolder(place.path)) return Finding::Missing;
  // Device numbers may change from one start of the machine to the next, so the log decides first.
  if (holdsLog(fileSystem, place.path, userId)) return Finding::Found;
  const bool isSameFolder = !place.identity || hasIdentity(fileSystem, place.path, *place.identity);
  return isSameFolder ? Finding::FoundWithoutLog : Finding::Missing;
}

std::vector<std::string> foldersToSearch(const StoredPlace& place, FileSystem& fileSystem) {
  std::vector<std::string> folders = fileSystem.subfolders(std::string(parentPath(place.path)));
  const auto firstLevel = fileSystem.subfolders(fileSystem.homeFolder());
  folders.insert(folders.end(), firstLevel.begin(), firstLevel.end());
  for (const auto& folder : firstLevel) {
    const auto secondLevel = fileSystem.subfolders(folder);
    folders.insert(folders.end(), secondLevel.begin(), secondLevel.end());
  }
  return folders;
}

}  // namespace

bool holdsLog(FileSystem& fileSystem, const std::string& folder, const std::string& userId) {
  const auto opened = fileSystem.open(folder);
  if (!opened) return false;
  const std::string log = joinPath(MetadataFolderName, userId + std::string(LogFileExtension));
  const auto attributes = (*opened)->attributes(log);
  return attributes && attributes->kind == FileKind::Regular;
}

FoundPlace findFolder(const StoredPlace& place, FileSystem& fileSystem, const std::string& userId) {
  FoundPlace found{place, lookAtStoredPath(place, fileSystem, userId), place.path};
  if (found.finding != Finding::Missing || !place.identity) {
    if (found.finding != Finding::Missing && lastPathComponent(place.path) != place.name) {
      found.finding = Finding::Renamed;
    }
    return found;
  }
  for (const auto& folder : foldersToSearch(place, fileSystem)) {
    if (!hasIdentity(fileSystem, folder, *place.identity)) continue;
    if (!holdsLog(fileSystem, folder, userId)) continue;
    found.path = folder;
    found.finding = lastPathComponent(folder) == place.name ? Finding::Found : Finding::Renamed;
    break;
  }
  return found;
}

}  // namespace zolvar
