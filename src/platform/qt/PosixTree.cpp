#include "platform/qt/PosixTree.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>
#include <vector>

#include "platform/qt/BeneathPath.h"
#include "platform/qt/FolderWalk.h"

namespace zolvar {

namespace {

constexpr const char* CopyAttempt = "copy";
constexpr const char* RemoveAttempt = "remove";

tl::unexpected<Failure> failed(const char* attempt, std::string_view subject) {
  return tl::unexpected(posixFailure(errno, attempt, subject));
}

Result<> setTimesAndMode(int descriptor, const struct stat& status, std::string_view subject) {
  const std::array<timespec, 2> times = {status.st_atim, status.st_mtim};
  if (fchmod(descriptor, status.st_mode & 07777U) != 0 || futimens(descriptor, times.data()) != 0) {
    return failed(CopyAttempt, subject);
  }
  return {};
}

Result<> copyContent(int from, int to, std::string_view subject) {
  // The kernel copies by itself where both file systems allow it; else through our memory.
  for (;;) {
    const ssize_t count = copy_file_range(from, nullptr, to, nullptr, std::size_t{1} << 24, 0);
    if (count == 0) break;
    if (count < 0 && errno != EINTR) break;
  }
  std::vector<char> buffer(std::size_t{1} << 18);
  for (;;) {
    const ssize_t count = read(from, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failed(CopyAttempt, subject);
    if (count == 0) return {};
    auto written = writeAll(to, {buffer.data(), static_cast<std::size_t>(count)}, subject);
    if (!written) return written;
  }
}

Result<> copyRegular(int fromParent, const std::string& fromName, int toParent,
                     const std::string& toName) {
  const auto from =
      openBeneath(fromParent, fromName, O_RDONLY | O_NOCTTY | O_NONBLOCK, CopyAttempt);
  if (!from) return tl::unexpected(from.error());
  const auto to =
      openBeneath(toParent, toName, O_WRONLY | O_CREAT | O_EXCL, CopyAttempt, S_IRUSR | S_IWUSR);
  if (!to) return tl::unexpected(to.error());
  struct stat status;
  if (fstat(from->get(), &status) != 0) return failed(CopyAttempt, fromName);
  auto done = copyContent(from->get(), to->get(), fromName);
  if (done) done = setTimesAndMode(to->get(), status, toName);
  if (done && fsync(to->get()) != 0) done = failed(CopyAttempt, toName);
  if (!done) unlinkat(toParent, toName.c_str(), 0);
  return done;
}

Result<> copyLink(int fromParent, const std::string& fromName, const struct stat& status,
                  int toParent, const std::string& toName) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlinkat(fromParent, fromName.c_str(), target.data(), target.size() - 1);
  if (length < 0) return failed(CopyAttempt, fromName);
  target[static_cast<std::size_t>(length)] = '\0';
  if (symlinkat(target.data(), toParent, toName.c_str()) != 0) return failed(CopyAttempt, toName);
  const std::array<timespec, 2> times = {status.st_atim, status.st_mtim};
  if (utimensat(toParent, toName.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) {
    return failed(CopyAttempt, toName);
  }
  return {};
}

/// Copies what lies in one directory to another. Directories get their times last, since filling
/// them changes those.
Result<> copyDirectory(int from, int to) {
  std::vector<std::string> directories = {""};
  Result<> done;
  const auto noteFailure = [&](std::string_view, const Failure& failure) {
    if (done) done = tl::unexpected(failure);
  };
  const auto visit = [&](std::string_view path, const FileAttributes& attributes) {
    if (attributes.kind == FileKind::Directory) {
      directories.emplace_back(path);
      done = makeDirectoriesBeneath(to, path);
    } else {
      auto source = openParentBeneath(from, path, CopyAttempt);
      auto target = openParentBeneath(to, path, CopyAttempt);
      if (!source || !target) {
        done = tl::unexpected(source ? target.error() : source.error());
      } else {
        done = copyFile(source->parent.get(), source->name, target->parent.get(), target->name);
      }
    }
    return done ? Folder::Visit::Enter : Folder::Visit::Stop;
  };
  FolderWalk(from, visit, noteFailure).run("");
  for (auto path = directories.rbegin(); done && path != directories.rend(); ++path) {
    const auto source = openBeneath(from, *path, O_RDONLY | O_DIRECTORY, CopyAttempt);
    const auto target = openBeneath(to, *path, O_RDONLY | O_DIRECTORY, CopyAttempt);
    if (!source) return tl::unexpected(source.error());
    if (!target) return tl::unexpected(target.error());
    struct stat status;
    if (fstat(source->get(), &status) != 0) return failed(CopyAttempt, *path);
    done = setTimesAndMode(target->get(), status, *path);
  }
  return done;
}

}  // namespace

Result<> writeAll(int descriptor, std::string_view bytes, std::string_view subject) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failed("write", subject);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

Result<> syncDirectory(int pathDescriptor, std::string_view subject) {
  const auto directory = openBeneath(pathDescriptor, "", O_RDONLY | O_DIRECTORY, "flush");
  if (!directory) return tl::unexpected(directory.error());
  if (fsync(directory->get()) != 0 && errno != EINVAL) return failed("flush", subject);
  return {};
}

std::string temporaryName() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof number, 0) != sizeof number) {
    number = static_cast<std::uint64_t>(getpid());  // a name that is taken is refused, not reused
  }
  return fmt::format(".zolvar-tmp-{:012x}", number & 0xffffffffffffU);
}

Result<> copyFile(int fromParent, const std::string& fromName, int toParent,
                  const std::string& toName) {
  struct stat status;
  if (fstatat(fromParent, fromName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return failed(CopyAttempt, fromName);
  }
  if (S_ISREG(status.st_mode)) return copyRegular(fromParent, fromName, toParent, toName);
  if (S_ISLNK(status.st_mode)) return copyLink(fromParent, fromName, status, toParent, toName);
  return fail(FailureKind::Refused, CopyAttempt, fromName, "it is no file and no link");
}

Result<> copyTree(int fromParent, const std::string& fromName, int toParent,
                  const std::string& toName) {
  const auto source = openBeneath(fromParent, fromName, O_PATH | O_NOFOLLOW, CopyAttempt);
  if (!source) return tl::unexpected(source.error());
  struct stat status;
  if (fstat(source->get(), &status) != 0) return failed(CopyAttempt, fromName);
  if (!S_ISDIR(status.st_mode)) return copyFile(fromParent, fromName, toParent, toName);
  if (mkdirat(toParent, toName.c_str(), S_IRWXU) != 0) return failed(CopyAttempt, toName);
  const auto target = openBeneath(toParent, toName, O_PATH | O_DIRECTORY, CopyAttempt);
  auto done = target ? copyDirectory(source->get(), target->get())
                     : Result<>(tl::unexpected(target.error()));
  if (!done) (void)removeTreeAt(toParent, toName);
  return done;
}

Result<> removeTreeAt(int parent, const std::string& name) {
  if (unlinkat(parent, name.c_str(), 0) == 0 || errno == ENOENT) return {};
  const int error = errno;
  const auto top = openBeneath(parent, name, O_PATH | O_DIRECTORY, RemoveAttempt);
  if (!top) return tl::unexpected(posixFailure(error, RemoveAttempt, name));
  // Files go while walking, directories afterwards: the walk lists parents before their children.
  std::vector<std::string> directories;
  Result<> done;
  const auto noteFailure = [&](std::string_view, const Failure& failure) {
    if (done) done = tl::unexpected(failure);
  };
  const auto removeOne = [&](std::string_view path, int flags) -> Result<> {
    const auto item = openParentBeneath(top->get(), path, RemoveAttempt);
    if (!item) return tl::unexpected(item.error());
    if (unlinkat(item->parent.get(), item->name.c_str(), flags) != 0 && errno != ENOENT) {
      return failed(RemoveAttempt, path);
    }
    return {};
  };
  const auto visit = [&](std::string_view path, const FileAttributes& attributes) {
    if (attributes.kind == FileKind::Directory) {
      directories.emplace_back(path);
    } else if (auto removed = removeOne(path, 0); !removed && done) {
      done = removed;
    }
    return Folder::Visit::Enter;
  };
  FolderWalk(top->get(), visit, noteFailure).run("");
  for (auto path = directories.rbegin(); done && path != directories.rend(); ++path) {
    done = removeOne(*path, AT_REMOVEDIR);
  }
  if (done && unlinkat(parent, name.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
    done = failed(RemoveAttempt, name);
  }
  return done;
}

Result<> makeDirectoriesBeneath(int root, std::string_view path) {
  constexpr const char* Attempt = "make the folder";
  if (path.empty() || openBeneath(root, path, O_PATH | O_DIRECTORY, Attempt)) return {};
  if (!isPlainRelativePath(path)) return tl::unexpected(posixFailure(EINVAL, Attempt, path));
  Descriptor current;
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string step(path.substr(begin, end - begin));
    begin = end + 1;
    const int from = current ? current.get() : root;
    if (mkdirat(from, step.c_str(), 0777) != 0 && errno != EEXIST) return failed(Attempt, path);
    auto next = openBeneath(from, step, O_PATH | O_DIRECTORY, Attempt);
    if (!next) {
      next.error().subject = path;
      // A file has the name: nothing is absent, someone must move it away.
      if (next.error().kind == FailureKind::Absent) next.error().kind = FailureKind::Refused;
      return tl::unexpected(next.error());
    }
    current = std::move(*next);
  }
  return {};
}

}  // namespace zolvar
