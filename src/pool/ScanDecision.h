#pragma once

#include <cstdint>

#include "log/KDEntryStore.h"
#include "platform/FileSystem.h"

namespace zolvar {

class KDVersionTree;

/// What the scan knows about one walked file besides the tree.
struct ScanFacts {
  FileAttributes attributes;
  bool isTodo = false;      ///< on the to-do list
  bool isFirstRun = false;  ///< the first scan since the activation
  double now = 0;
  double freshFiles = 10;          ///< seconds, see Pace
  std::int64_t parentModTime = 0;  ///< time of the folder that holds the file
  bool isResumed = false;          ///< the folder was active here before
  bool mayHaveArrived = false;     ///< by a copy run that the end of the program cut off
};

enum class ScanAction {
  Nothing,
  TooFresh,         ///< may still be written: a later scan looks again
  Confirm,          ///< it is `version`: remember so
  Guess,            ///< it has the time of `version`, and nothing else is known of it
  LogModification,  ///< a new version, child of `parent` (or none)
  LogLaterTime,     ///< the same, but its time is a known version's: log and set a later time
  LogRecreation,    ///< it was deleted according to the logs, and is wanted here
  Delete,           ///< it is `version`, which a peer deleted: carry that out
  Reget,            ///< it is `version`, which is not the current one any more: fetch
  Emptied,          ///< it was `version` until a power failure: out of the way, and fetch
};

struct ScanDecision {
  ScanAction action = ScanAction::Nothing;
  KDLogFileEntry* version = nullptr;
  KDLogFileEntry* parent = nullptr;
};

/// The time by which a file on disk is compared with versions: 0 for directories, else its own,
/// at least 1 (0 means deleted).
[[nodiscard]] double comparedTime(const FileAttributes& attributes);

/// Whether two people dropped each other's versions before either knew, so that none is left alive,
/// and this one, which a peer deleted, is what the local user kept. Only for who was the later one,
/// so that one of the two comes back.
[[nodiscard]] bool wasKeptInCrossedDrops(const KDVersionTree& tree, const KDLogFileEntry& version);

/// A file that a copy run left and whose version stays unknown counts as an edit of ours when it is
/// older than this (seconds): by then the log of whoever wrote it would have come.
inline constexpr double UnknownCopyPatience = 600;

/// What a scan does with one file that exists. Pure. `path` is null for a path that no log names.
///
/// What is on disk is told by the disk record while it is unchanged, else by its time. A local
/// change descends from the version that the record names, never from one that was not here;
/// without a record, or with one of another folder, it has no parent.
[[nodiscard]] ScanDecision decideScan(const KDVersionTree& tree, const KDPathRecord* path,
                                      const ScanFacts& facts);

}  // namespace zolvar
