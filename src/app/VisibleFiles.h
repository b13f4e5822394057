#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zolvar {

/// A folder that people take for one document: its extension is one of the known ones, such as
/// "app" or "photoslibrary".
[[nodiscard]] bool isBundlePath(std::string_view path);

/// What of `paths` a list for people shows, sorted: nothing hidden (a component that begins with a
/// dot), and of a bundle only the bundle itself when it is among the paths.
[[nodiscard]] std::vector<std::string> visibleFiles(const std::set<std::string>& paths);
/// The same of paths that are sorted already, without duplicates, and which outlive what is
/// returned.
[[nodiscard]] std::vector<std::string_view> visibleOfSorted(const std::vector<std::string>& paths);

/// The components of a path joined by " ▸ ".
[[nodiscard]] std::string pathForDisplay(std::string_view path);

}  // namespace zolvar
