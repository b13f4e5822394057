#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileSystem.h"
#include "util/Failure.h"

namespace zolvar {

class Log;
class LogUnion;

/// What a load did to one log.
struct GuardedLog {
  std::string name;        ///< in the metadata folder
  bool changed = false;    ///< it is not the file that was set aside, or it is new
  bool rewritten = false;  ///< what lies there now does not begin with the bytes known before
  std::vector<std::string> linesNewToUs;  ///< of a rewritten log, without line feeds
};

struct GuardReport {
  std::vector<GuardedLog> logs;    ///< all logs on the disk that are settled, sorted by name
  std::optional<Failure> trouble;  ///< the first thing that could not be settled; the old copies
                                   ///< that are still needed stay set aside for the next time
};

/// Sees to it that logs only grow. The transfer tool replaces a log whenever the other side's copy
/// has the later time, whatever is in it. So every log is linked aside before a load, beneath the
/// pool's root in AsideFolder, and afterwards each old copy is compared with what lies there now:
///
/// - the old bytes begin the new ones: the log has grown, nothing to do;
/// - the new copy holds every old line, in another order: it is taken as it is, or two participants
///   with different orders would replace each other's copies for ever;
/// - it does not: the log becomes the union of both (LogUnion), with the later time + 1 s, so that
///   it travels on, and some more seconds that depend on its size;
/// - the log is gone or no file any more: the old copy comes back.
///
/// The list of missing files, which a load brings as well, comes back as it was written last.
/// Whatever else a load brought into the metadata folder is removed. A crash between the two steps
/// leaves the old copies aside; settle() then finishes from them alone. The state lane; folder and
/// log outlive the guard.
class LogGuard {
 public:
  static constexpr std::string_view AsideFolder = ".zolvar-aside";
  static constexpr std::string_view TodoFileName = "todos.plist";  ///< in the metadata folder
  static constexpr std::uint64_t LargestPicture = 1U << 20;        ///< bytes

  LogGuard(Folder& folder, Log& log) : folder_(folder), log_(log) {}

  /// Whether old copies wait for settle().
  [[nodiscard]] bool hasSetAside();
  /// Settles what an earlier load left, then links every log, and the list of missing files, aside.
  /// After a failure no load may run.
  Result<> setAside();
  /// Writes the list of missing files so that no load under way takes it away.
  Result<> replaceTodoFile(std::string_view bytes);
  /// Always of use: without old copies it reports the logs and removes what does not belong there.
  GuardReport settle();

 private:
  Result<GuardedLog> settleLog(const std::string& name, const std::optional<FileAttributes>& old,
                               const std::optional<FileAttributes>& now);
  [[nodiscard]] bool isSame(const std::string& name, const FileAttributes& old,
                            const FileAttributes& now) const;
  Result<bool> oldBeginsNew(const std::string& name);
  Result<> writeUnion(const std::string& name, std::int64_t later, bool oldHasAll,
                      const LogUnion& both);
  Result<> setTodoFileAside();
  Result<> bringBackTodoFile();
  void removeStrangers();
  /// Empty when the directory is not there.
  Result<std::map<std::string, FileAttributes>> filesIn(std::string_view directory);

  Folder& folder_;
  Log& log_;
  std::map<std::string, FileAttributes> before_;  ///< the logs as setAside() found them
  bool isOwnLoad_ = false;                        ///< set aside by this object, not before a crash
};

}  // namespace zolvar
