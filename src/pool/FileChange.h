#pragma once

#include <optional>
#include <string>

namespace zolvar {

/// A file that a pool writes or removes in its own folder, in place of a person.
struct FileChange {
  std::string path;
  std::optional<std::string> expected;  ///< what lies there; nothing for no file
  std::optional<std::string> content;   ///< what is to lie there; nothing to have it deleted
};

}  // namespace zolvar
