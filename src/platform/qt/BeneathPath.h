#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "platform/FileSystem.h"
#include "platform/qt/Descriptor.h"

namespace zolvar {

/// Steps from a root descriptor to what lies beneath it. No step leaves the root or passes through
/// a symbolic link: the kernel checks each (openat2). Free functions on the caller's descriptors;
/// any thread. Failures name `attempt` and the path.

/// The directory that holds an item, and the item's name in it.
struct ParentAndName {
  Descriptor parent;  ///< an O_PATH descriptor
  std::string name;
};

/// Opens `path` ("" is the root itself) beneath `root`. `flags` get O_CLOEXEC; `mode` counts with
/// O_CREAT. With O_PATH and O_NOFOLLOW a link as the last step is opened itself; otherwise a link
/// anywhere is Refused. Paths longer than the kernel takes at once are walked in pieces.
Result<Descriptor> openBeneath(int root, std::string_view path, int flags, const char* attempt,
                               mode_t mode = 0);
/// Opens the directory that holds `path`. Refused when `path` is no plain relative path ("", ".",
/// ".." or an empty step, a leading or trailing slash, a NUL).
Result<ParentAndName> openParentBeneath(int root, std::string_view path, const char* attempt);
/// Whether every step of `path` is a name.
bool isPlainRelativePath(std::string_view path);

/// What stat told, in our terms.
FileAttributes attributesFrom(const struct stat& status);
/// As failureFromErrno; a name that is taken, a directory that is not empty or a directory where a
/// file is wanted are Refused.
Failure posixFailure(int error, const char* attempt, std::string_view subject);
/// The path of what a descriptor refers to, as the kernel knows it now; empty when it does not.
std::string pathOfDescriptor(int descriptor);
/// A path that means the same item as the descriptor while that stays open, for calls that take
/// paths only.
std::string procPathOfDescriptor(int descriptor);

}  // namespace zolvar
