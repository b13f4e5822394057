#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "log/KDEntryStore.h"

namespace zolvar {

class HeldLogs;

/// All users' entries of a pool merged into one tree (or forest) per path, and who selected which
/// version. Says what is current, alive, chosen and in conflict; touches neither disk nor log, so
/// it can be read and tested alone. Leaves are kept up to date, never recomputed, and no operation
/// recurses along a chain. The pool's state lane; the store outlives the tree.
///
/// Directories do not conflict: all living directory versions of a path count as one branch, of
/// which the newest stands for all.
///
/// Invariants: selections are never stored; a leaf has no stored child; an active leaf is one that
/// exists; a user's selection of a path is dropped when its line of descent is deleted, the local
/// user's also when the conflict is over.
class KDVersionTree {
 public:
  KDVersionTree(KDEntryStore& store, std::string_view localUserId);

  enum class Kind { Duplicate, Selection, Version };
  struct Appended {
    Kind kind = Kind::Version;
    bool isFirstOfPath = false;
    std::uint32_t activeBefore = 0;
    std::uint32_t activeAfter = 0;
    bool selectionLost = false;  ///< a deletion took the local user's version, or there was none
    [[nodiscard]] bool grew() const { return !isFirstOfPath && activeAfter > activeBefore; }
  };
  /// Merges one entry; one that is stored already is left out. (Equal in all that its line says: a
  /// user can delete one branch and choose or delete another within the same second.)
  Appended append(KDLogFileEntry* entry);
  /// Sorts by log time (stable) and appends one by one.
  void appendAll(std::vector<KDLogFileEntry*>& entries);

  /// Sorts the path's entries and links parents anew where that is needed: an entry came late, or
  /// its parent was not there yet. True when the path's leaves may have changed.
  bool repair(KDPathRecord& path);
  void repairAll();

  [[nodiscard]] KDLogFileEntry* version(const KDPathRecord& path, const std::string& userId,
                                        double logTime) const;
  [[nodiscard]] KDLogFileEntry* version(const KDPathRecord& path, const VersionId& id) const;
  /// Newest first by log time, then by user id: the same on every peer.
  [[nodiscard]] std::vector<KDLogFileEntry*> leafEntries(const KDPathRecord& path) const;
  [[nodiscard]] std::vector<KDLogFileEntry*> activeLeafEntries(const KDPathRecord& path) const;
  /// The active leaf that is a directory, if there is one.
  [[nodiscard]] KDLogFileEntry* directoryLeaf(const KDPathRecord& path) const;
  /// The entry itself when it is a leaf, else a leaf on whose branch it lies: the local user's
  /// selected one if possible. Null for null. Throws "Did not find a leaf for entry ...".
  [[nodiscard]] KDLogFileEntry* leafForEntry(KDLogFileEntry* entry) const;

  /// A user's current version; `count` is 0 (none), 1 (leaf is set), or the number of active leaves
  /// when the user chose none of them.
  struct Selected {
    unsigned count = 0;
    KDLogFileEntry* leaf = nullptr;
  };
  [[nodiscard]] Selected selectedLeaf(const KDPathRecord& path, const std::string& userId) const;
  [[nodiscard]] Selected selectedLeaf(const KDPathRecord& path) const;  ///< the local user's
  [[nodiscard]] KDLogFileEntry* selectedEntry(const KDPathRecord& path,
                                              const std::string& userId) const;
  void selectLogEntry(KDLogFileEntry& entry, const std::string& userId);
  /// Whether the local user's selection, if there is need of one, names one branch and not several.
  [[nodiscard]] bool isSelectionClear(const KDPathRecord& path) const;
  void deselectLogEntry(const KDPathRecord& path, const std::string& userId);
  /// Drops every user's selection on the entry's line of descent.
  void deselectBranch(const KDLogFileEntry& entry);
  /// Who selected a version on this leaf's branch; sorted.
  [[nodiscard]] std::vector<std::string> usersWhoSelected(const KDLogFileEntry& leaf) const;

  /// The version with this modification time: the newest on the user's selected branch, else the
  /// newest on a living branch (one of two equal versions may have been deleted), else the newest.
  /// 0 (a directory, whose time is not compared) gives the active leaf that is one.
  [[nodiscard]] KDLogFileEntry* versionWithModTime(const KDPathRecord& path, double modTime,
                                                   const std::string& userId) const;
  /// Whether a file of this version's time that the user has may as well be a version of another
  /// branch: only its author surely has this one where another has its second, whatever others have
  /// chosen, and only while we know what the author has logged, and the author never chose the
  /// other one. A branch that is deleted counts until the user has surely carried that out.
  [[nodiscard]] bool isAmbiguous(const KDLogFileEntry& version, const std::string& userId,
                                 const HeldLogs& held) const;
  /// Whether another living branch has a version of this one's time.
  [[nodiscard]] bool sharesSecond(const KDLogFileEntry& version) const;
  /// All authors on the active branches that hold the entry, except the local user.
  [[nodiscard]] std::set<std::string> usersIdsForBranch(const KDLogFileEntry& entry) const;
  /// True when the way from the local user's leaf to the version with `fileTime` passes a parent
  /// that is dated later than its child: such a file looks newer than what is wanted.
  [[nodiscard]] bool isTimeWarped(const KDPathRecord& path, double fileTime) const;
  [[nodiscard]] std::string treeDescription(std::string_view path) const;

  [[nodiscard]] KDEntryStore& store() const { return store_; }
  [[nodiscard]] const std::string& localUserId() const { return localUserId_; }
  /// Entries whose parent was not found, since the last call; for one warning a reading.
  std::uint64_t takeOrphanCount();
  /// Paths with an active leaf.
  [[nodiscard]] std::uint64_t liveCount() const { return liveCount_; }

 private:
  struct VersionKey {
    const std::string* user;
    double logTime;
    bool operator==(const VersionKey&) const = default;
  };
  struct VersionKeyHash {
    std::size_t operator()(const VersionKey& key) const;
  };
  struct Index {
    std::unordered_multimap<VersionKey, KDLogFileEntry*, VersionKeyHash> versions;
    std::uint32_t covered = 0;  ///< so many of the path's oldest entries are in it
  };

  void link(KDLogFileEntry& entry);
  void takeSelection(const KDLogFileEntry& selection);
  void store(KDLogFileEntry& entry);
  static bool hasAnotherOfSecond(const KDLogFileEntry& version, const KDLogFileEntry& leaf);
  /// Whether a living leaf of the path besides this one is a directory.
  [[nodiscard]] static bool hasOtherDirectory(const KDPathRecord& path, const KDLogFileEntry& leaf);
  void removeLeaf(KDPathRecord& path, KDLogFileEntry& leaf);
  void setActive(KDPathRecord& path, std::uint32_t count);
  /// Calls `visit` with the stored entries of this user and time until it answers true.
  template <class Visit>
  void findAll(const KDPathRecord& path, const std::string* user, double logTime,
               const Visit& visit) const;
  [[nodiscard]] KDLogFileEntry* find(const KDPathRecord& path, const std::string* user,
                                     double logTime) const;
  [[nodiscard]] bool isStored(const KDLogFileEntry& entry) const;

  KDEntryStore& store_;
  const std::string& localUserId_;
  std::unordered_map<const KDPathRecord*,
                     std::vector<std::pair<const std::string*, KDLogFileEntry*>>>
      selectedBranches_;
  /// Versions whose authors chose another one of their second. Who comes back to the own one may
  /// not have it yet, and a file of its time may be the other one.
  std::unordered_set<const KDLogFileEntry*> left_;
  /// Of paths where a search had to go far back; brought up to date by the next such search.
  mutable std::unordered_map<const KDPathRecord*, Index> indexes_;
  std::unordered_set<KDPathRecord*> needsRepair_;
  std::uint64_t orphans_ = 0;
  std::uint64_t liveCount_ = 0;
};

}  // namespace zolvar
