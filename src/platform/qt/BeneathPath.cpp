#include "platform/qt/BeneathPath.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

namespace zolvar {

namespace {

int openOnce(int root, const std::string& path, int flags, mode_t mode) {
  open_how how = {};
  how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
  how.mode = (flags & O_CREAT) != 0 ? mode : 0;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  for (int tries = 0;; ++tries) {
    const long number = syscall(SYS_openat2, root, path.c_str(), &how, sizeof how);
    // EAGAIN: something was renamed while the kernel looked; it asks to be asked again.
    const bool isWorthAnotherTry = errno == EINTR || (errno == EAGAIN && tries < 32);
    if (number >= 0 || !isWorthAnotherTry) return static_cast<int>(number);
  }
}

}  // namespace

bool isPlainRelativePath(std::string_view path) {
  if (path.find('\0') != std::string_view::npos) return false;
  for (std::size_t begin = 0; begin <= path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string_view step = path.substr(begin, end - begin);
    if (step.empty() || step == "." || step == "..") return false;
    begin = end + 1;
  }
  return true;
}

Result<Descriptor> openBeneath(int root, std::string_view path, int flags, const char* attempt,
                               mode_t mode) {
  const std::string_view whole = path;
  if (!path.empty() && !isPlainRelativePath(path)) {
    return tl::unexpected(posixFailure(EINVAL, attempt, whole));
  }
  Descriptor piece;
  while (path.size() >= PATH_MAX) {
    const std::size_t cut = path.rfind('/', PATH_MAX - 1);
    if (cut == std::string_view::npos) break;  // a step that long: the kernel refuses it
    Descriptor next(openOnce(root, std::string(path.substr(0, cut)), O_PATH | O_DIRECTORY, 0));
    if (!next) return tl::unexpected(posixFailure(errno, attempt, whole));
    path.remove_prefix(cut + 1);
    piece = std::move(next);
    root = piece.get();
  }
  Descriptor opened(openOnce(root, path.empty() ? "." : std::string(path), flags, mode));
  if (!opened) return tl::unexpected(posixFailure(errno, attempt, whole));
  return opened;
}

Result<ParentAndName> openParentBeneath(int root, std::string_view path, const char* attempt) {
  if (!isPlainRelativePath(path)) return tl::unexpected(posixFailure(EINVAL, attempt, path));
  const std::size_t slash = path.rfind('/');
  const bool isTop = slash == std::string_view::npos;
  auto parent =
      openBeneath(root, isTop ? "" : path.substr(0, slash), O_PATH | O_DIRECTORY, attempt);
  if (!parent) {
    parent.error().subject = path;
    return tl::unexpected(parent.error());
  }
  return ParentAndName{std::move(*parent), std::string(isTop ? path : path.substr(slash + 1))};
}

FileAttributes attributesFrom(const struct stat& status) {
  FileAttributes attributes;
  if (S_ISREG(status.st_mode)) attributes.kind = FileKind::Regular;
  if (S_ISDIR(status.st_mode)) attributes.kind = FileKind::Directory;
  if (S_ISLNK(status.st_mode)) attributes.kind = FileKind::Link;
  attributes.size = static_cast<std::uint64_t>(status.st_size);
  attributes.modTime = status.st_mtim.tv_sec;
  attributes.inode = status.st_ino;
  attributes.device = status.st_dev;
  attributes.mode = status.st_mode & 07777U;
  return attributes;
}

Failure posixFailure(int error, const char* attempt, std::string_view subject) {
  Failure failure = failureFromErrno(error, attempt, std::string(subject));
  if (error == EEXIST || error == ENOTEMPTY || error == EISDIR) failure.kind = FailureKind::Refused;
  return failure;
}

std::string pathOfDescriptor(int descriptor) {
  std::array<char, PATH_MAX> buffer;
  const ssize_t length =
      readlink(procPathOfDescriptor(descriptor).c_str(), buffer.data(), buffer.size());
  return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length)) : std::string();
}

std::string procPathOfDescriptor(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace zolvar
