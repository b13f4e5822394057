#pragma once

#include <string>

#include "util/Failure.h"

namespace zolvar {

class FileSystem;

/// Moves one file or symbolic link, both paths absolute, from anywhere to anywhere, its time kept.
/// Nothing is ever replaced: fails with Refused when there is something at `to`. The folder of `to`
/// must be there. Where no link can lead from one place to the other the bytes are copied beside
/// `to`, synced, and only then given their name. After a failure `from` is still there. Blocks:
/// lanes only.
Result<> moveFile(FileSystem& files, const std::string& from, const std::string& to);

}  // namespace zolvar
