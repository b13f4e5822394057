#pragma once

#include <string>
#include <string_view>

#include "platform/FileSystem.h"

namespace zolvar {

/// Copies and removes files and whole trees between directory descriptors. Links are copied as
/// links and never followed. Free functions; any thread. Failures as Folder tells them.

/// Writes all bytes to the descriptor, from where it stands.
Result<> writeAll(int descriptor, std::string_view bytes, std::string_view subject);
/// Flushes a directory, so that names made or changed in it survive a power cut. File systems that
/// cannot are left alone.
Result<> syncDirectory(int pathDescriptor, std::string_view subject);
/// A name that nobody uses yet, for a file written aside and renamed.
std::string temporaryName();

/// Copies one regular file or symbolic link to a name that does not exist, synced, with its mode
/// and times. A copy that fails half-way is removed. Refused for other kinds.
Result<> copyFile(int fromParent, const std::string& fromName, int toParent,
                  const std::string& toName);
/// Copies a file, a link or a directory with all in it to a name that does not exist, with modes
/// and times. What was copied before a failure is removed.
Result<> copyTree(int fromParent, const std::string& fromName, int toParent,
                  const std::string& toName);
/// Removes a file, a link or a directory with all in it; absent is success. A failure leaves the
/// rest in place.
Result<> removeTreeAt(int parent, const std::string& name);
/// Makes the directories of a relative path beneath `root` that are missing.
Result<> makeDirectoriesBeneath(int root, std::string_view path);

}  // namespace zolvar
