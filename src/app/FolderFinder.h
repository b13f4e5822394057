#pragma once

#include <string>

#include "app/PoolPlaces.h"

namespace zolvar {

enum class Finding {
  Found,            ///< the folder, with our own log inside
  FoundWithoutLog,  ///< the folder as it was stored, our own log is not in it
  Renamed,          ///< the folder, under a name that is not the pool's: it cannot be used
  Missing,  ///< nowhere we look, or something else lies in its place (a disk is not mounted)
};

struct FoundPlace {
  StoredPlace place;
  Finding finding = Finding::Missing;
  std::string path;  ///< where it lies now; the stored path when it is missing
};

/// Looks for a pool's folder: at its stored path, else by the stored identity in the old parent
/// folder and the home folder's first two levels. A folder found elsewhere, or of another identity,
/// counts only with our own log inside: an empty mount point is not the folder. Reads directories;
/// for lanes.
FoundPlace findFolder(const StoredPlace& place, FileSystem& fileSystem, const std::string& userId);

/// Whether the folder holds the log of `userId`.
bool holdsLog(FileSystem& fileSystem, const std::string& folder, const std::string& userId);

}  // namespace zolvar
