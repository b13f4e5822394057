#pragma once

#include <string_view>

namespace zolvar {

class Folder;

/// Whether the first file's bytes are the beginning of the second's, or all of it: so with a copy
/// that was cut off. False when one of them cannot be read. Reads both in pieces; any thread.
[[nodiscard]] bool isBeginningOf(Folder& folder, std::string_view path, Folder& otherFolder,
                                 std::string_view otherPath);

}  // namespace zolvar
