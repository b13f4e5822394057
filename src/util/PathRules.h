#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zolvar {

inline constexpr std::string_view MetadataFolderName = ".Zolvar";
inline constexpr std::string_view LogFileExtension = ".fplog";
inline constexpr std::size_t LongestPath = 4096;      ///< bytes; PATH_MAX of Linux
inline constexpr std::size_t LongestComponent = 255;  ///< bytes; NAME_MAX of Linux
inline constexpr std::size_t LongestPoolName = 120;   ///< bytes

/// True for valid UTF-8 (no surrogates, no overlong forms).
[[nodiscard]] bool isValidUtf8(std::string_view text);

/// Whether a path that came from a log, a to-do list or a listing may name something inside a pool
/// folder. Refused: empty, absolute, over LongestPath bytes, an empty, "." or ".." component or one
/// over LongestComponent bytes, a NUL, a line feed or carriage return, a trailing slash, a first
/// component that begins with ".zolvar" in any case (but IgnoreFileName), no valid UTF-8.
[[nodiscard]] bool isSafeRelativePath(std::string_view path);

/// The file at the top of a synced folder that tells what stays out of it. It is content.
inline constexpr std::string_view IgnoreFileName = ".zolvarignore";

/// True for what else begins with ".zolvar" in any case: our own metadata, never content.
[[nodiscard]] bool isMetadataPath(std::string_view path);

/// Why `name` cannot be a pool's name (or a component of a shared path), as one sentence; none when
/// it can. The rule: UTF-8, no control character, none of ": / [ ] % \", no outer or double blank,
/// not empty, "." or "..", not "global" and no metadata folder's name in any case, no leading "#"
/// or
/// "-" (a command and an option to the transfer tool), at most LongestPoolName bytes; it is what
/// the transfer daemon's configuration can carry without a second meaning.
[[nodiscard]] std::optional<std::string> poolNameProblem(std::string_view name);

/// The same for each component of an absolute folder path that is to be served; there "global", "#"
/// and "-" have no second meaning.
[[nodiscard]] std::optional<std::string> poolPathProblem(std::string_view absolutePath);

/// Whether a direct child of the metadata folder is a change log: ends in ".fplog", contains "@",
/// does not begin with ".".
[[nodiscard]] bool isLogFileName(std::string_view name);

/// Whether a host name may be contacted: ends in ".local" or ".lan" or is a single label; letters,
/// digits, "-", "." and "_" only.
[[nodiscard]] bool isLocalHostName(std::string_view host);

/// `text` without a trailing ".local" or, failing that, ".lan".
[[nodiscard]] std::string_view withoutLocalSuffix(std::string_view text);

/// The last component of a path ("" for "" or "/"); no normalisation beyond trailing slashes.
[[nodiscard]] std::string_view lastPathComponent(std::string_view path);

/// Everything before the last component, without a trailing slash; "" for a single component.
[[nodiscard]] std::string_view parentPath(std::string_view path);

/// `folder` + "/" + `component`, without doubling the slash.
[[nodiscard]] std::string joinPath(std::string_view folder, std::string_view component);

}  // namespace zolvar
