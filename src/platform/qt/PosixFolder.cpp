#include "platform/qt/PosixFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <limits>

#include "platform/qt/BeneathPath.h"
#include "platform/qt/FileEmblems.h"
#include "platform/qt/FolderWalk.h"
#include "platform/qt/PosixTrash.h"
#include "platform/qt/PosixTree.h"

namespace zolvar {

namespace {

constexpr const char* LabelAttribute = "user.zolvar.label";
constexpr int RegularMode = 0644;

tl::unexpected<Failure> failed(const char* attempt, std::string_view subject) {
  return tl::unexpected(posixFailure(errno, attempt, subject));
}

bool isLinkUnsupported(int error) {
  return error == EPERM || error == EXDEV || error == EOPNOTSUPP || error == ENOSYS ||
         error == EMLINK;
}

}  // namespace

PosixFolder::PosixFolder(Descriptor root, FileIdentity identity, const PosixTrash& trash,
                         const FileEmblems& emblems)
    : root_(std::move(root)), identity_(identity), trash_(trash), emblems_(emblems) {}

Result<std::string> PosixFolder::currentPath() const {
  const std::string path = pathOfDescriptor(root_.get());
  struct stat status;
  // A removed folder's path ends in " (deleted)", which a real one may do too: ask what lies there.
  if (path.empty() || ::stat(path.c_str(), &status) != 0 ||
      FileIdentity{status.st_dev, status.st_ino} != identity_) {
    return fail(FailureKind::Absent, "find the folder", path, "it was removed");
  }
  return path;
}

void PosixFolder::walk(std::string_view start, const Visitor& visit, const WalkErrors& errors) {
  FolderWalk(root_.get(), visit, errors).run(start);
}

Result<std::vector<std::pair<std::string, FileAttributes>>> PosixFolder::list(
    std::string_view directory) {
  std::vector<std::pair<std::string, FileAttributes>> found;
  Result<> whole;
  const std::size_t nameBegin = directory.empty() ? 0 : directory.size() + 1;
  const auto visit = [&](std::string_view path, const FileAttributes& attributes) {
    found.emplace_back(path.substr(nameBegin), attributes);
    return Visit::Skip;
  };
  const auto noteFailure = [&](std::string_view, const Failure& failure) {
    if (whole) whole = tl::unexpected(failure);
  };
  walk(directory, visit, noteFailure);
  if (!whole) return tl::unexpected(whole.error());
  std::sort(found.begin(), found.end(),
            [](const auto& one, const auto& other) { return one.first < other.first; });
  return found;
}

Result<FileAttributes> PosixFolder::attributes(std::string_view path) {
  constexpr const char* Attempt = "look at";
  const auto item = openBeneath(root_.get(), path, O_PATH | O_NOFOLLOW, Attempt);
  if (!item) return tl::unexpected(item.error());
  struct stat status;
  if (fstat(item->get(), &status) != 0) return failed(Attempt, path);
  return attributesFrom(status);
}

Result<Descriptor> PosixFolder::openRegular(std::string_view path, int flags,
                                            const char* attempt) const {
  // Without O_NONBLOCK, opening a named pipe would wait for its other end.
  auto file = openBeneath(root_.get(), path, flags | O_NOCTTY | O_NONBLOCK, attempt, RegularMode);
  if (!file) return file;
  struct stat status;
  if (fstat(file->get(), &status) != 0) return failed(attempt, path);
  if (!S_ISREG(status.st_mode)) {
    return fail(FailureKind::Refused, attempt, std::string(path), "it is no regular file");
  }
  return file;
}

Result<std::string> PosixFolder::read(std::string_view path, std::uint64_t offset,
                                      std::uint64_t limit) {
  const auto reader = open(path, offset);
  if (!reader) return tl::unexpected(reader.error());
  std::string bytes;
  std::array<char, 65536> buffer;
  for (;;) {
    const auto count = (*reader)(buffer.data(), buffer.size());
    if (!count) return tl::unexpected(count.error());
    if (*count == 0) return bytes;
    if (bytes.size() + *count > limit) {
      return fail(FailureKind::Damaged, "read", std::string(path),
                  "it has more than " + std::to_string(limit) + " bytes");
    }
    bytes.append(buffer.data(), *count);
  }
}

Result<Folder::Reader> PosixFolder::open(std::string_view path, std::uint64_t offset) {
  auto opened = openRegular(path, O_RDONLY, "read");
  if (!opened) return tl::unexpected(opened.error());
  const auto file = std::make_shared<const Descriptor>(std::move(*opened));
  if (lseek(file->get(), static_cast<off_t>(offset), SEEK_SET) < 0) return failed("read", path);
  posix_fadvise(file->get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  return Reader(
      [file, subject = std::string(path)](char* buffer, std::size_t size) -> Result<std::size_t> {
        for (;;) {
          const ssize_t count = ::read(file->get(), buffer, size);
          if (count >= 0) return static_cast<std::size_t>(count);
          if (errno != EINTR) return failed("read", subject);
        }
      });
}

Result<> PosixFolder::append(std::string_view path, std::string_view bytes) {
  constexpr const char* Attempt = "append to";
  auto file = openRegular(path, O_WRONLY | O_APPEND, Attempt);
  const bool isNew = !file && file.error().kind == FailureKind::Absent;
  if (isNew) file = openRegular(path, O_WRONLY | O_APPEND | O_CREAT, Attempt);
  if (!file) return tl::unexpected(file.error());
  struct stat before;
  if (fstat(file->get(), &before) != 0) return failed(Attempt, path);
  ssize_t count = 0;
  do {
    count = write(file->get(), bytes.data(), bytes.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) return failed(Attempt, path);
  if (static_cast<std::size_t>(count) < bytes.size()) {
    // The disk is full: take back the part that went through, so that no broken line stays.
    struct stat after;
    if (fstat(file->get(), &after) == 0 && after.st_size == before.st_size + count) {
      (void)!ftruncate(file->get(), before.st_size);
    }
    return tl::unexpected(posixFailure(ENOSPC, Attempt, path));
  }
  if (fdatasync(file->get()) != 0) return failed(Attempt, path);
  if (!isNew) return {};
  const auto item = openParentBeneath(root_.get(), path, Attempt);
  return item ? syncDirectory(item->parent.get(), path) : tl::unexpected(item.error());
}

Result<> PosixFolder::replace(std::string_view path, std::string_view bytes, std::uint32_t mode,
                              const Check& check) {
  constexpr const char* Attempt = "write";
  const auto item = openParentBeneath(root_.get(), path, Attempt);
  if (!item) return tl::unexpected(item.error());
  const int parent = item->parent.get();
  const std::string aside = temporaryName();
  const auto file =
      openBeneath(parent, aside, O_WRONLY | O_CREAT | O_EXCL, Attempt, S_IRUSR | S_IWUSR);
  if (!file) return tl::unexpected(file.error());
  auto done = writeAll(file->get(), bytes, path);
  if (done && (fchmod(file->get(), mode & 07777U) != 0 || fsync(file->get()) != 0)) {
    done = failed(Attempt, path);
  }
  if (done && check) done = check();  // flushing takes its time
  if (done && renameat(parent, aside.c_str(), parent, item->name.c_str()) != 0) {
    done = failed(Attempt, path);
  }
  if (!done) {
    unlinkat(parent, aside.c_str(), 0);
    return done;
  }
  return syncDirectory(parent, path);
}

Result<> PosixFolder::flush() {
  constexpr const char* Attempt = "flush";
  const Descriptor root(openat(root_.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (root.get() < 0 || syncfs(root.get()) != 0) return failed(Attempt, "");
  return {};
}

Result<> PosixFolder::clear(std::string_view path) {
  constexpr const char* Attempt = "empty";
  const auto file = openRegular(path, O_WRONLY, Attempt);
  if (!file) return tl::unexpected(file.error());
  if (ftruncate(file->get(), 0) != 0) return failed(Attempt, path);
  return {};
}

Result<> PosixFolder::link(std::string_view from, std::string_view to) {
  constexpr const char* Attempt = "link";
  const auto source = openParentBeneath(root_.get(), from, Attempt);
  if (!source) return tl::unexpected(source.error());
  const auto target = openParentBeneath(root_.get(), to, Attempt);
  if (!target) return tl::unexpected(target.error());
  if (linkat(source->parent.get(), source->name.c_str(), target->parent.get(), target->name.c_str(),
             0) == 0) {
    return {};
  }
  if (!isLinkUnsupported(errno)) return failed(Attempt, errno == EEXIST ? to : from);
  return copyFile(source->parent.get(), source->name, target->parent.get(), target->name);
}

Result<> PosixFolder::makeSymbolicLink(std::string_view path, std::string_view target) {
  constexpr const char* Attempt = "make the link";
  const auto item = openParentBeneath(root_.get(), path, Attempt);
  if (!item) return tl::unexpected(item.error());
  if (symlinkat(std::string(target).c_str(), item->parent.get(), item->name.c_str()) != 0) {
    return failed(Attempt, path);
  }
  return {};
}

Result<> PosixFolder::rename(std::string_view from, std::string_view to) {
  constexpr const char* Attempt = "rename";
  const auto source = openParentBeneath(root_.get(), from, Attempt);
  if (!source) return tl::unexpected(source.error());
  const auto target = openParentBeneath(root_.get(), to, Attempt);
  if (!target) return tl::unexpected(target.error());
  if (renameat(source->parent.get(), source->name.c_str(), target->parent.get(),
               target->name.c_str()) != 0) {
    return failed(Attempt, from);
  }
  return {};
}

Result<> PosixFolder::moveIn(const std::string& absoluteSource, std::string_view path,
                             const std::optional<FileAttributes>& replaced) {
  constexpr const char* Attempt = "move into place";
  const auto target = openParentBeneath(root_.get(), path, Attempt);
  if (!target) return tl::unexpected(target.error());
  struct stat status;
  if (lstat(absoluteSource.c_str(), &status) != 0) return failed(Attempt, absoluteSource);
  if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) {
    return fail(FailureKind::Refused, Attempt, absoluteSource, "it is no file and no link");
  }
  const int parent = target->parent.get();
  const auto check = [&]() -> Result<> {
    const auto there = attributes(path);
    if (!there && there.error().kind != FailureKind::Absent) return tl::unexpected(there.error());
    if (there.has_value() == replaced.has_value() && (!there || there->isSameAs(*replaced))) {
      return {};
    }
    const std::string place(path);
    return fail(FailureKind::Transient, Attempt, place, "another file was put there meanwhile");
  };
  if (auto checked = check(); !checked) return checked;
  if (renameat(AT_FDCWD, absoluteSource.c_str(), parent, target->name.c_str()) == 0) return {};
  if (errno != EXDEV) return failed(Attempt, path);

  const std::size_t slash = absoluteSource.rfind('/');
  const Descriptor sourceParent(
      ::open(absoluteSource.substr(0, slash + 1).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!sourceParent) return failed(Attempt, absoluteSource);
  const std::string aside = temporaryName();
  auto done = copyFile(sourceParent.get(), absoluteSource.substr(slash + 1), parent, aside);
  if (done) done = check();  // copying takes its time
  if (done && renameat(parent, aside.c_str(), parent, target->name.c_str()) != 0) {
    done = failed(Attempt, path);
  }
  if (!done) unlinkat(parent, aside.c_str(), 0);
  if (done) done = syncDirectory(parent, path);
  if (done && unlink(absoluteSource.c_str()) != 0) done = failed("remove", absoluteSource);
  return done;
}

Result<> PosixFolder::removeFile(std::string_view path) {
  constexpr const char* Attempt = "remove";
  const auto item = openParentBeneath(root_.get(), path, Attempt);
  if (!item) return tl::unexpected(item.error());
  if (unlinkat(item->parent.get(), item->name.c_str(), 0) != 0) return failed(Attempt, path);
  return {};
}

Result<> PosixFolder::removeTree(std::string_view path) {
  const auto item = openParentBeneath(root_.get(), path, "remove");
  if (item) return removeTreeAt(item->parent.get(), item->name);
  if (item.error().kind == FailureKind::Absent) return {};
  return tl::unexpected(item.error());
}

Result<> PosixFolder::makeDirectories(std::string_view path) {
  return makeDirectoriesBeneath(root_.get(), path);
}

Result<std::string> PosixFolder::readLink(std::string_view path) {
  constexpr const char* Attempt = "read the link";
  const auto item = openParentBeneath(root_.get(), path, Attempt);
  if (!item) return tl::unexpected(item.error());
  std::array<char, PATH_MAX> target;
  const ssize_t length =
      readlinkat(item->parent.get(), item->name.c_str(), target.data(), target.size());
  if (length < 0) return failed(Attempt, path);
  return std::string(target.data(), static_cast<std::size_t>(length));
}

Result<> PosixFolder::setModTime(std::string_view path, std::int64_t seconds) {
  constexpr const char* Attempt = "set the time of";
  const auto item = openParentBeneath(root_.get(), path, Attempt);
  if (!item) return tl::unexpected(item.error());
  const std::array<timespec, 2> times = {{{0, UTIME_OMIT}, {seconds, 0}}};
  if (utimensat(item->parent.get(), item->name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) != 0) {
    return failed(Attempt, path);
  }
  return {};
}

Result<std::uint64_t> PosixFolder::freeSpace() {
  struct statvfs status;
  if (fstatvfs(root_.get(), &status) != 0) return failed("ask for the free space of", "");
  return static_cast<std::uint64_t>(status.f_bavail) * status.f_frsize;
}

Result<> PosixFolder::trash(std::string_view path) {
  const auto item = openParentBeneath(root_.get(), path, "move to the Trash");
  if (!item) return tl::unexpected(item.error());
  const std::string root = pathOfDescriptor(root_.get());
  const std::string kept = root.substr(root.rfind('/') + 1) + "/" + std::string(path);
  return trash_.trash(item->parent.get(), item->name, kept.starts_with('/') ? path : kept);
}

Result<> PosixFolder::setLabel(std::string_view path, int number) {
  constexpr const char* Attempt = "label";
  const auto item = openBeneath(root_.get(), path, O_PATH | O_NOFOLLOW, Attempt);
  if (!item) return tl::unexpected(item.error());
  struct stat status;
  if (fstat(item->get(), &status) != 0) return failed(Attempt, path);
  if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) return {};  // links carry none
  const std::string target = procPathOfDescriptor(item->get());
  const char digit = static_cast<char>('0' + std::clamp(number, 0, 7));
  // The attribute goes with the file, the emblem stays at its path.
  emblems_.mark(pathOfDescriptor(item->get()), digit != '0');
  char known = '0';
  (void)getxattr(target.c_str(), LabelAttribute, &known, 1);
  if (known == digit) return {};
  const int done = digit == '0' ? removexattr(target.c_str(), LabelAttribute)
                                : setxattr(target.c_str(), LabelAttribute, &digit, 1, 0);
  if (done == 0 || errno == EOPNOTSUPP || errno == ENODATA) return {};
  return failed(Attempt, path);
}

}  // namespace zolvar
