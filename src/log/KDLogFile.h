#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "log/KDEntryStore.h"
#include "util/Failure.h"

namespace zolvar {

class Folder;
class KDLogFile;
class Log;
class LogReader;

class KDLogFileDelegate {
 public:
  virtual ~KDLogFileDelegate() = default;
  virtual void logFileDidChange(KDLogFile& log) = 0;
};

/// What a read of a log found besides entries.
struct LogReadSummary {
  std::vector<KDLogFileEntry*> entries;  ///< in file order
  std::uint64_t endOffset = 0;           ///< just behind the last whole line (one with a line feed)
  std::uint64_t rowsSkipped = 0;         ///< malformed rows, and entries whose path was refused
  std::uint64_t bytesSkipped = 0;
};

/// One user's change log: buffers new entries, appends them on demand, reads entries from any
/// offset. The file's bytes are described in docs/file-formats.md. Caller synchronises.
class KDLogFile {
 public:
  /// `path` is relative to `folder`, which must outlive the log, as must the delegate (or null).
  /// Creates the file empty when absent, and opens it.
  KDLogFile(Folder& folder, std::string path, KDLogFileDelegate* delegate, Log& log);
  ~KDLogFile();

  bool open();   ///< false when already open or when it cannot be opened (a warning says so)
  bool close();  ///< always false

  /// Takes the entry for the next synchronizeFile; null is ignored.
  /// Requires: not older than the last one taken ("[entry logTime]>=lastLogTime").
  void appendEntry(const KDLogFileEntry* entry);
  [[nodiscard]] bool hasEntriesToAppend() const { return !entriesToAppend_.empty(); }
  /// Writes what was taken, flushes it, gives the file a time at least one second later than it
  /// had, and tells the delegate. Nothing taken: does nothing. A file that does not end in a line
  /// feed gets one first. On failure the entries stay taken.
  Result<> synchronizeFile();

  /// Reads from a line start, 0 or a remembered offset, to the end, in pieces. A malformed row
  /// throws InconsistencyError ("[components count] >= 5" and others).
  std::vector<KDLogFileEntry*> entriesFromOffset(std::uint64_t offset, KDEntryStore& store);
  std::vector<KDLogFileEntry*> allEntries(KDEntryStore& store) {
    return entriesFromOffset(0, store);
  }
  /// The same for logs that strangers wrote: a malformed row, a refused path or a last line without
  /// line feed costs only itself and is counted; a damaged line never swallows the next.
  Result<LogReadSummary> readTolerantly(std::uint64_t offset, KDEntryStore& store);

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] const std::string& userId() const { return userId_; }
  [[nodiscard]] double lastLogTime() const { return lastLogTime_; }
  [[nodiscard]] std::string description() const;

 private:
  Result<> readInto(LogReader& reader, std::uint64_t offset);
  Result<std::string> missingLineFeed(std::uint64_t size);
  void keepTimeGrowing(std::int64_t before);

  Folder& folder_;
  std::string path_;
  std::string userId_;
  KDLogFileDelegate* delegate_;
  Log& log_;
  bool isOpen_ = false;
  std::vector<const KDLogFileEntry*> entriesToAppend_;
  double lastLogTime_;
};

}  // namespace zolvar
