#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "log/KDLogFileEntry.h"

namespace zolvar {

class KDVersionTree;
struct KDPathRecord;

/// One version of a file, or its deletion.
struct HistoryVersion {
  VersionId id;
  double modTime = 0;  ///< seconds since 1970; 0: a deletion
  int parent = -1;     ///< index of the version that this one continues; -1: none, or left out
  bool isContinued = false;             ///< has a version after it
  bool isHere = false;                  ///< its content lies on this disk
  std::vector<std::string> selectedBy;  ///< of a current version: user ids, sorted
  std::optional<std::uint64_t> size;    ///< bytes, of the one that is here

  [[nodiscard]] bool isDeletion() const { return modTime == 0; }
  /// One that can be used or deleted.
  [[nodiscard]] bool isCurrent() const { return !isContinued && !isDeletion(); }
  bool operator==(const HistoryVersion&) const = default;
};

/// The versions of one file with their descent: what a picture of its tree is drawn from. A value;
/// any thread.
struct FileHistory {
  std::string path;
  std::vector<HistoryVersion> versions;  ///< by log time, parents before children
  std::size_t omitted = 0;               ///< older ones that are not among them

  bool operator==(const FileHistory&) const = default;
};

/// The newest versions of a file, `most` of them and all current ones. The pool's state lane.
FileHistory fileHistory(const KDVersionTree& tree, const KDPathRecord& path, std::size_t most);

}  // namespace zolvar
