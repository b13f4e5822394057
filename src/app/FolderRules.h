#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

class KDPeer;
class FileSystem;

/// `path` without trailing slashes and "." components; ".." stays and is refused by
/// poolPathProblem.
std::string tidyPath(std::string_view path);

/// Whether `inner` is `outer` or lies somewhere in it, by whole components.
[[nodiscard]] bool isWithin(std::string_view inner, std::string_view outer);

/// Whether a path lies in a Trash of the desktop.
[[nodiscard]] bool isInTrash(std::string_view path);

/// `path`, with `name` added unless that is its last component already or empty.
std::string completedPath(const std::string& path, const std::string& name);

/// The home folder at a path's beginning becomes "~".
std::string abbreviateHome(const std::string& path, const std::string& homeFolder);
/// A "~" at a path's beginning, as people type it, becomes the home folder.
std::string expandHome(const std::string& path, const std::string& homeFolder);

/// Places that hold files of other applications' own, read from the resource "FolderBlacklist".
/// Immutable.
class FolderBlacklist {
 public:
  FolderBlacklist() = default;
  /// `entries`: places in "~" notation; those that begin with "*/" are names, and a folder that
  /// holds one, or lies in one that does, is only warned about.
  explicit FolderBlacklist(const std::vector<std::string>& entries);
  /// Reads "FolderBlacklist.plist" in the program's folder of resources. Fails: Absent, Damaged.
  static Result<FolderBlacklist> load(const std::string& resourceFolder, FileSystem& fileSystem);

  /// The first entry that is a substring of the abbreviated path, or of which it is one.
  [[nodiscard]] std::optional<std::string> blacklistedComponentOfPath(
      const std::string& path, const std::string& homeFolder) const;
  /// Where one of the names is found: in the folder or in one above it, below the home folder.
  [[nodiscard]] std::optional<std::string> warnedNameNear(const std::string& path,
                                                          FileSystem& fileSystem) const;
  [[nodiscard]] const std::vector<std::string>& places() const { return places_; }

 private:
  std::vector<std::string> places_;
  std::vector<std::string> warnedNames_;
};

/// The folder of the first other pool that contains the path as a substring or is contained in it
/// (so "~/Work" conflicts with "~/Workshop"; intended), abbreviated with "~".
std::optional<std::string> conflictingPoolPathOfPath(const std::string& path,
                                                     const std::string& poolName,
                                                     const KDPeer& peer,
                                                     const std::string& homeFolder);

/// Why a folder cannot become the place of a pool.
struct FolderProblem {
  enum class Kind { Path, Blacklisted, Overlap } kind = Kind::Path;
  std::string text;  ///< as a sheet shows it, with line breaks

  [[nodiscard]] std::string oneLine() const;
};

/// Refused: relative paths, names that cannot be served, a Trash, our own files, blacklisted
/// places, what overlaps with another pool's folder. Where the path leads through links, the place
/// that it leads to is looked at too.
std::optional<FolderProblem> folderProblem(const std::string& path, const std::string& poolName,
                                           const KDPeer& peer, FileSystem& fileSystem,
                                           const FolderBlacklist& blacklist);

/// What one should know of a folder that can be shared all the same; none for nothing.
std::optional<std::string> folderWarning(const std::string& path, FileSystem& fileSystem,
                                         const FolderBlacklist& blacklist);

}  // namespace zolvar
