#include "platform/qt/FolderWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/qt/BeneathPath.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr const char* Attempt = "read the folder";
constexpr std::size_t EntriesSize = 32768;
/// Beyond this no directory is entered: such a path cannot be named in a log, and re-walking it
/// from the root for every step would take for ever.
constexpr std::size_t DeepestPath = 65536;

bool isDotOrDotDot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

FolderWalk::FolderWalk(int root, const Folder::Visitor& visit, const Folder::WalkErrors& errors)
    : root_(root), visit_(visit), errors_(errors), entries_(EntriesSize) {
  path_.reserve(LongestPath);
}

void FolderWalk::run(std::string_view start) {
  path_ = start;
  if (!readDirectory()) return;
  while (!pending_.empty()) {
    const Pending next = pending_.back();
    pending_.pop_back();
    path_.resize(next.parentLength);
    if (!path_.empty()) path_ += '/';
    path_.append(names_, names_.size() - next.nameLength);
    names_.resize(names_.size() - next.nameLength);
    if (!readDirectory()) return;
  }
}

/// Visits what is directly in path_ and queues its directories; false when the visitor said Stop.
bool FolderWalk::readDirectory() {
  if (path_.size() > DeepestPath) {
    report(path_, ENAMETOOLONG);
    return true;
  }
  const auto directory = openBeneath(root_, path_, O_RDONLY | O_DIRECTORY, Attempt);
  if (!directory) {
    if (errors_) errors_(path_, directory.error());
    return true;
  }
  const std::size_t parentLength = path_.size();
  for (;;) {
    const long count = syscall(SYS_getdents64, directory->get(), entries_.data(), entries_.size());
    if (count < 0) report(path_, errno);
    if (count <= 0) return true;
    for (long offset = 0; offset < count;) {
      // The kernel's record is glibc's dirent64.
      const auto* entry = reinterpret_cast<const dirent64*>(entries_.data() + offset);
      offset += entry->d_reclen;
      if (isDotOrDotDot(entry->d_name)) continue;
      const bool goesOn = visitEntry(directory->get(), entry->d_name, parentLength);
      path_.resize(parentLength);
      if (!goesOn) return false;
    }
  }
}

bool FolderWalk::visitEntry(int directory, const char* name, std::size_t parentLength) {
  struct stat status;
  if (fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno != ENOENT) report(path_, errno);  // gone since it was listed: as if never there
    return true;
  }
  const std::size_t nameLength = std::strlen(name);
  if (parentLength > 0) path_ += '/';
  path_.append(name, nameLength);
  const FileAttributes attributes = attributesFrom(status);
  const Folder::Visit answer = visit_(path_, attributes);
  if (answer == Folder::Visit::Enter && attributes.kind == FileKind::Directory) {
    names_.append(name, nameLength);
    pending_.push_back({parentLength, nameLength});
  }
  return answer != Folder::Visit::Stop;
}

void FolderWalk::report(std::string_view directory, int error) {
  if (errors_) errors_(directory, posixFailure(error, Attempt, directory));
}

}  // namespace zolvar
