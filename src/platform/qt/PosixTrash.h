#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "util/Failure.h"

namespace zolvar {

/// Moves items to the desktop's Trash, or where that refuses (some mounts, no home) to the folder
/// "Trash" in our support folder, as "Trash/DATE TIME/KEPT-PATH". Nothing is ever removed before it
/// lies elsewhere. Owned by the file system; any thread.
class PosixTrash {
 public:
  /// `supportFolder` is asked when it is needed.
  explicit PosixTrash(std::function<Result<std::string>()> supportFolder);

  /// Trashes the item `name` of the directory `parent` (an O_PATH descriptor). `keptPath` is the
  /// relative path that our own Trash keeps it under. Fails: Absent, Refused, Transient; the item
  /// then lies where it lay.
  Result<> trash(int parent, const std::string& name, std::string_view keptPath) const;

 private:
  Result<> moveToOwnTrash(int parent, const std::string& name, std::string_view keptPath) const;

  const std::function<Result<std::string>()> supportFolder_;
};

}  // namespace zolvar
