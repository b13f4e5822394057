#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "log/KDLogFileEntry.h"

namespace zolvar {

class Clock;
class Log;
struct KDDiskState;

/// One path of a pool: its text, and the heads of the lists that the version tree threads through
/// the path's entries. Lives as long as its store; identity is pointer comparison.
struct KDPathRecord {
  std::string_view text;
  KDLogFileEntry* newest = nullptr;     ///< last stored entry; the others follow by previous()
  KDLogFileEntry* firstLeaf = nullptr;  ///< the leaves, linked by nextLeaf()
  KDDiskState* disk = nullptr;          ///< what lies on this disk; owned by the disk record
  std::uint32_t hash = 0;
  std::uint32_t entryCount = 0;
  std::uint32_t activeLeafCount = 0;
  std::uint32_t seenInScan = 0;  ///< number of the last scan that met the path
};

/// Raw facts of an entry, as read from a log line or made here.
struct KDEntryFields {
  double logTime = 0;
  double plogTime = 0;
  std::string_view path;
  double modTime = 0;
  std::string_view userId;
  std::string_view puserId;  ///< empty: no parent, or the same user
  bool isDirectory = false;  ///< of an entry to be made: its modification time is its log time
};

/// Owns the entries and paths of one version tree: an arena for the entries, one for the texts, and
/// a table that gives each path text its single record. Nothing is freed before the store is, which
/// takes no time proportional to a chain's length. Caller synchronises (the pool's state lane).
/// Sizes matter: 1,000,000 entries over 1,000,000 paths stay below 250 bytes each, texts included.
class KDEntryStore {
 public:
  KDEntryStore();
  ~KDEntryStore();
  KDEntryStore(const KDEntryStore&) = delete;
  KDEntryStore& operator=(const KDEntryStore&) = delete;

  /// Times of the log lie below this: no finite double beyond it is a date.
  static constexpr double TimesEnd = 1099511627776;  // 2^40 seconds
  /// Whether entries of our own can be dated after this one, a stranger's from the end of times.
  [[nodiscard]] static bool canBeFollowed(const KDLogFileEntry& entry) {
    constexpr double Reserve = 1 << 20;  // seconds
    return entry.logTime() < TimesEnd - Reserve;
  }

  KDPathRecord& path(std::string_view text);  ///< finds or adds
  [[nodiscard]] KDPathRecord* findPath(std::string_view text) const;
  [[nodiscard]] std::size_t pathCount() const;
  /// Visits every path in order of adding. Paths added meanwhile are visited too.
  void forEachPath(const std::function<void(KDPathRecord&)>& visit) const;

  /// Takes the fields as they are (a log line's). Requires: logTime > plogTime
  /// ("aLogTime > aPLogTime").
  KDLogFileEntry* add(const KDEntryFields& fields);

  /// Makes room in the table for `count` paths in all, so that it need not grow step by step.
  void expectPaths(std::size_t count);
  /// Where a path will be looked for; good for this store and this text only.
  struct PathHint {
    std::uint32_t hash;
  };
  /// Begins to fetch the path's place in the table from memory, for an `add` a moment later.
  [[nodiscard]] PathHint expectPath(std::string_view text) const;
  KDLogFileEntry* add(const KDEntryFields& fields, PathHint hint);

  /// Makes an entry of our own, with logTime from the clock in whole seconds, never below
  /// `notBefore` (our own last entry). A parent that lies in the future is waited for, up to
  /// LongestFutureWait seconds; beyond that the entry takes the parent's time + 1 and
  /// `clockIsOff` of the result is set. Blocks: the state lane only.
  /// Requires: a parent that can be followed.
  struct Made {
    KDLogFileEntry* entry = nullptr;
    bool clockIsOff = false;
  };
  static constexpr double LongestFutureWait = 15;  ///< seconds; clocks may differ by up to 9.9
  Made make(Clock& clock, Log& log, double notBefore, KDEntryFields fieldsWithoutLogTime);

  /// The entry by which `user` chooses the version of `entry`; its parent is linked.
  /// Requires: a version that is neither a deletion nor a selection.
  Made branchSelectionEntryForUser(Clock& clock, Log& log, double notBefore, KDLogFileEntry& entry,
                                   std::string_view user);
  /// The entry by which `user` deletes the branch of `entry`; its parent is linked.
  /// Requires: not a deletion.
  Made branchDeletionEntryForUser(Clock& clock, Log& log, double notBefore, KDLogFileEntry& entry,
                                  std::string_view user);

 private:
  struct Storage;
  std::unique_ptr<Storage> storage_;
};

}  // namespace zolvar
