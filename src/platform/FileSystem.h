#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

enum class FileKind : std::uint8_t { Regular, Directory, Link, Other };

/// What one stat tells. Times are whole seconds since 1970 (floor).
struct FileAttributes {
  FileKind kind = FileKind::Other;
  std::uint64_t size = 0;
  std::int64_t modTime = 0;
  std::uint64_t inode = 0;
  std::uint64_t device = 0;
  std::uint32_t mode = 0;  ///< permission bits

  /// Nobody has written to the file or replaced it between two looks, as far as whole seconds tell.
  [[nodiscard]] bool isSameAs(const FileAttributes& other) const {
    return kind == other.kind && size == other.size && modTime == other.modTime &&
           inode == other.inode && device == other.device;
  }
};

/// Identity of a file across renames, for as long as it exists.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

/// Everything beneath one root folder, held by descriptor: it follows the folder when it is moved.
/// No operation leaves the root: paths are relative, and no step of a path may be a symbolic link
/// (a link as the last component is itself the subject). Caller synchronises; one Folder is used by
/// one lane at a time. Failures: Absent, Refused (a link in the way, permission, read-only),
/// Transient (disk full, I/O error).
class Folder {
 public:
  enum class Visit { Enter, Skip, Stop };
  using Visitor = std::function<Visit(std::string_view path, const FileAttributes& attributes)>;
  /// Told of each directory that could not be read to its end ("" is the root itself).
  using WalkErrors = std::function<void(std::string_view directory, const Failure& failure)>;
  /// Fills `bytes` with up to its size and returns the count; 0 at the end of the file.
  using Reader = std::function<Result<std::size_t>(char* buffer, std::size_t size)>;
  /// Tells whether what is about to be replaced may be.
  using Check = std::function<Result<>()>;

  virtual ~Folder() = default;

  /// Where the folder lies now; Absent when it was removed.
  [[nodiscard]] virtual Result<std::string> currentPath() const = 0;
  [[nodiscard]] virtual FileIdentity identity() const = 0;

  /// Visits everything beneath `start` ("" is the root) once, parents before children, one stat a
  /// file, no allocation a file; siblings in no order. The path and attributes are valid during the
  /// call only. Skip on a directory leaves out what is beneath it.
  virtual void walk(std::string_view start, const Visitor& visit, const WalkErrors& errors) = 0;
  /// Names and attributes directly in a directory, sorted by name.
  virtual Result<std::vector<std::pair<std::string, FileAttributes>>> list(
      std::string_view directory) = 0;
  /// "" asks for the root itself.
  virtual Result<FileAttributes> attributes(std::string_view path) = 0;

  /// The bytes from `offset` to the end. Fails with Damaged when more than `limit` bytes.
  virtual Result<std::string> read(std::string_view path, std::uint64_t offset,
                                   std::uint64_t limit) = 0;
  /// A sequential reader from `offset`; holds the file open as long as the function object lives.
  virtual Result<Reader> open(std::string_view path, std::uint64_t offset) = 0;
  /// Appends in one write, flushes to disk; creates the file when absent (mode 0644).
  virtual Result<> append(std::string_view path, std::string_view bytes) = 0;
  /// Replaces the file as a whole: written aside, synced, renamed, directory synced. `check`,
  /// unless empty, is asked directly before the rename; its failure is returned, and replaces
  /// nothing.
  virtual Result<> replace(std::string_view path, std::string_view bytes, std::uint32_t mode,
                           const Check& check) = 0;
  Result<> replace(std::string_view path, std::string_view bytes, std::uint32_t mode) {
    return replace(path, bytes, mode, {});
  }

  /// Whatever was written beneath the root, by whomever, is on the disk afterwards. Takes as long
  /// as the disk does, perhaps with what others have written there.
  virtual Result<> flush() = 0;
  /// Empties a file that another process may be appending to.
  virtual Result<> clear(std::string_view path) = 0;

  /// Hard link (a copy, times included, where the file system has none).
  virtual Result<> link(std::string_view from, std::string_view to) = 0;
  /// Symbolic link at `path`.
  virtual Result<> makeSymbolicLink(std::string_view path, std::string_view target) = 0;
  virtual Result<> rename(std::string_view from, std::string_view to) = 0;
  /// Moves a regular file or link from elsewhere to `path`: rename, or across file systems copied
  /// aside with its time, synced, renamed, and the source removed. Replaces what looks like
  /// `replaced` directly before the rename; none: nothing lies there. Fails with Transient, and
  /// moves nothing, when something else does.
  virtual Result<> moveIn(const std::string& absoluteSource, std::string_view path,
                          const std::optional<FileAttributes>& replaced) = 0;
  virtual Result<> removeFile(std::string_view path) = 0;
  /// Removes a directory with all in it, or a file; absent is success.
  virtual Result<> removeTree(std::string_view path) = 0;
  /// Makes the directory and its missing parents (beneath the root).
  virtual Result<> makeDirectories(std::string_view path) = 0;
  virtual Result<std::string> readLink(std::string_view path) = 0;
  virtual Result<> setModTime(std::string_view path, std::int64_t seconds) = 0;
  /// Bytes free to an ordinary user on the root's file system.
  virtual Result<std::uint64_t> freeSpace() = 0;

  /// Moves the item to the desktop's Trash; where that refuses, to the support folder's own
  /// "Trash/", keeping the relative path and a date. Never removes anything outright.
  virtual Result<> trash(std::string_view path) = 0;
  /// Colour label 0 (none) … 7 as extended attribute "user.zolvar.label", any but 0 also as an
  /// emblem in file managers; quietly nothing where these are not supported.
  virtual Result<> setLabel(std::string_view path, int number) = 0;
};

/// Holds an advisory lock on a file; released on destruction and when the process dies.
class FileLock {
 public:
  virtual ~FileLock() = default;
};

/// One change below an observed folder.
struct FileEvent {
  enum class Type { CreateFile, Delete, StatChanged, Rename, ContentModified, CreateDir };
  Type type = Type::ContentModified;
  std::string path1;    ///< absolute
  std::string path2;    ///< absolute; the new path of a rename, else empty
  bool closed = false;  ///< a writer closed the file
};

/// Observes one folder tree; ends when destroyed. Callbacks come on the main thread.
class FolderObservation {
 public:
  virtual ~FolderObservation() = default;
  /// Whether every directory is observed by now and nothing was lost. Until then, and for what
  /// changed before, only a scan of everything tells.
  [[nodiscard]] virtual bool isComplete() const { return true; }
};

/// The doors to files. Any thread.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  /// Opens an existing folder. The path itself may lead through links.
  virtual Result<std::unique_ptr<Folder>> open(const std::string& absolutePath) = 0;
  /// Makes a folder and its missing parents; fine when it is there already.
  virtual Result<> makeFolder(const std::string& absolutePath) = 0;
  [[nodiscard]] virtual bool isFolder(const std::string& absolutePath) const = 0;
  [[nodiscard]] virtual Result<FileIdentity> identity(const std::string& absolutePath) const = 0;
  /// The sub-folders directly in a folder, absolute paths, sorted; empty when it cannot be read.
  [[nodiscard]] virtual std::vector<std::string> subfolders(
      const std::string& absolutePath) const = 0;
  /// Moves a whole folder to the Trash.
  virtual Result<> trashFolder(const std::string& absolutePath) = 0;
  /// Takes the lock and writes our pid into the file. Fails: Refused when another process holds it.
  virtual Result<std::unique_ptr<FileLock>> lock(const std::string& absolutePath) = 0;

  /// Reports changes beneath a folder. `lost` is called once when the observation is not whole:
  /// watches ran out, events were dropped, or the file system reports none.
  virtual Result<std::unique_ptr<FolderObservation>> observe(
      const std::string& absolutePath, std::function<void(const FileEvent&)> changed,
      std::function<void(const Failure&)> lost) = 0;

  [[nodiscard]] virtual std::string homeFolder() const = 0;
  /// The user's application-support folder plus "Zolvar" (made on demand, mode 0700).
  virtual Result<std::string> supportFolder() = 0;
};

}  // namespace zolvar
