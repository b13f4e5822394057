#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "pool/KDPoolState.h"
#include "util/PathRules.h"

namespace zolvar {

/// One scan in progress.
struct KDPoolState::Scan {
  std::uint32_t number = 0;
  double now = 0;
  bool takesFresh = false;  ///< what changed was changed by ourselves
  ScanScope scope;
  std::set<std::string, std::less<>> listed;       ///< directories whose entries were visited
  std::set<std::string, std::less<>> walked;       ///< directories visited with all beneath them
  std::set<std::string, std::less<>> directories;  ///< found among what was listed
  std::vector<std::string> unseen;     ///< directories of which nothing may be called missing
  std::vector<std::string> leftovers;  ///< of copy runs that were cut off
  std::vector<std::string> shaped;     ///< called like such, and perhaps none
  std::set<std::string> toDelete;
  std::set<std::string> emptied;  ///< by a power failure
  std::set<std::string> toFetch;
  std::vector<KDLogFileEntry*> toSelect;  ///< own versions that made a branch
  std::set<std::string> reappeared;       ///< were in question

  /// Whether the scan would have met the item if it were there.
  [[nodiscard]] bool covers(std::string_view path) const {
    if (scope.isWhole || listed.contains(parentPath(path))) return true;
    for (std::string_view above = parentPath(path); !above.empty(); above = parentPath(above)) {
      if (walked.contains(above)) return true;
      if (listed.contains(parentPath(above))) return !directories.contains(above);
    }
    return false;
  }
};

}  // namespace zolvar
