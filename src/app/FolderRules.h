#pragma once

#include <optional>
#include <string>
#include <string_view>

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

/// Why a folder cannot become the place of the pool `poolName`, as one sentence; none when it can.
/// Refused: relative paths, names that cannot be served, a Trash, what overlaps with another pool's
/// folder or with our own files.
std::optional<std::string> folderProblem(const std::string& path, const std::string& poolName,
                                         const KDPeer& peer, FileSystem& fileSystem);

}  // namespace zolvar
