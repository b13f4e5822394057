#include "platform/qt/PosixFileSystem.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "platform/qt/BeneathPath.h"
#include "platform/qt/InotifyObservation.h"
#include "platform/qt/PosixFolder.h"
#include "platform/qt/PosixTree.h"

namespace zolvar {

namespace {

namespace fs = std::filesystem;

/// Holds the descriptor that carries the lock; children do not inherit it.
class PosixFileLock : public FileLock {
 public:
  explicit PosixFileLock(Descriptor file) : file_(std::move(file)) {}

 private:
  const Descriptor file_;
};

tl::unexpected<Failure> failed(const char* attempt, const std::string& path) {
  return tl::unexpected(posixFailure(errno, attempt, path));
}

std::string withoutTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

PosixFileSystem::PosixFileSystem(RunLoop& runLoop)
    : runLoop_(runLoop), trash_([this] { return supportFolder(); }) {}

Result<std::unique_ptr<Folder>> PosixFileSystem::open(const std::string& absolutePath) {
  constexpr const char* Attempt = "open the folder";
  Descriptor root(::open(absolutePath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat status;
  if (!root || fstat(root.get(), &status) != 0) return failed(Attempt, absolutePath);
  return std::make_unique<PosixFolder>(std::move(root), FileIdentity{status.st_dev, status.st_ino},
                                       trash_, emblems_);
}

Result<> PosixFileSystem::makeFolder(const std::string& absolutePath) {
  for (std::size_t slash = absolutePath.find('/', 1);; slash = absolutePath.find('/', slash + 1)) {
    const std::string path = absolutePath.substr(0, slash);
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
      const int error = errno;  // looking for the folder changes it
      if (!isFolder(path)) {
        return tl::unexpected(posixFailure(error, "make the folder", absolutePath));
      }
    }
    if (slash == std::string::npos) break;
  }
  if (isFolder(absolutePath)) return {};
  return fail(FailureKind::Refused, "make the folder", absolutePath, "a file has this name");
}

bool PosixFileSystem::isFolder(const std::string& absolutePath) const {
  struct stat status;
  return ::stat(absolutePath.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

Result<FileIdentity> PosixFileSystem::identity(const std::string& absolutePath) const {
  struct stat status;
  if (::stat(absolutePath.c_str(), &status) != 0) return failed("look at", absolutePath);
  return FileIdentity{status.st_dev, status.st_ino};
}

std::vector<std::string> PosixFileSystem::subfolders(const std::string& absolutePath) const {
  std::vector<std::string> found;
  std::error_code error;
  for (fs::directory_iterator entry(absolutePath, error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (fs::is_directory(entry->symlink_status(ignored))) found.push_back(entry->path().string());
  }
  std::sort(found.begin(), found.end());
  return found;
}

Result<> PosixFileSystem::trashFolder(const std::string& absolutePath) {
  const std::string path = withoutTrailingSlashes(absolutePath);
  const std::size_t slash = path.rfind('/');
  const std::string name = path.substr(slash + 1);
  if (!path.starts_with('/') || !isPlainRelativePath(name)) {
    return fail(FailureKind::Refused, "move to the Trash", absolutePath, "it is no folder's path");
  }
  const Descriptor parent(
      ::open(path.substr(0, slash + 1).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!parent) return failed("move to the Trash", absolutePath);
  return trash_.trash(parent.get(), name, name);
}

Result<std::unique_ptr<FileLock>> PosixFileSystem::lock(const std::string& absolutePath) {
  constexpr const char* Attempt = "lock";
  Descriptor file(::open(absolutePath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file) return failed(Attempt, absolutePath);
  if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK) return failed(Attempt, absolutePath);
    return fail(FailureKind::Refused, Attempt, absolutePath, "another process holds it");
  }
  const std::string pid = std::to_string(getpid()) + "\n";
  if (ftruncate(file.get(), 0) != 0) return failed(Attempt, absolutePath);
  auto written = writeAll(file.get(), pid, absolutePath);
  if (!written) return tl::unexpected(written.error());
  return std::make_unique<PosixFileLock>(std::move(file));
}

Result<std::unique_ptr<FolderObservation>> PosixFileSystem::observe(
    const std::string& absolutePath, std::function<void(const FileEvent&)> changed,
    std::function<void(const Failure&)> lost) {
  return InotifyObservation::start(runLoop_, withoutTrailingSlashes(absolutePath),
                                   std::move(changed), std::move(lost));
}

std::string PosixFileSystem::homeFolder() const {
  if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') {
    return withoutTrailingSlashes(home);
  }
  passwd entry;
  passwd* found = nullptr;
  std::string buffer(16384, '\0');
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
    return found->pw_dir;
  }
  return "/";
}

Result<std::string> PosixFileSystem::supportFolder() {
  const char* data = std::getenv("XDG_DATA_HOME");
  const std::string above = data != nullptr && data[0] == '/'
                                ? withoutTrailingSlashes(data)
                                : withoutTrailingSlashes(homeFolder()) + "/.local/share";
  const std::string path = above + "/Zolvar";
  if (isFolder(path)) return path;
  auto made = makeFolder(above);
  if (!made) return tl::unexpected(made.error());
  if (mkdir(path.c_str(), S_IRWXU) != 0 && !isFolder(path)) return failed("make the folder", path);
  return path;
}

}  // namespace zolvar
