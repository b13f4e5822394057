#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zolvar {

struct KDPathRecord;

/// Names one version of one file: its author and the time of its logging.
struct VersionId {
  std::string userId;
  double logTime = 0;
  auto operator<=>(const VersionId&) const = default;
  /// "userId:logTime", the form that the command line shows and takes.
  [[nodiscard]] std::string text() const;
  static std::optional<VersionId> parse(std::string_view text);
};

/// A time of the change log as decimal text that reads back to the same double; whole numbers
/// without a fraction.
std::string timeText(double seconds);

/// One line of a user's change log: user U saw at log time T the file F with modification time M,
/// and this version follows the one that user P logged at time P-T. Lives in a KDEntryStore's arena
/// and is handled by plain pointer; immutable but for its links. The pool's state lane.
class KDLogFileEntry {
 public:
  enum Type {
    KDCreationType = 0,        ///< no parent
    KDDeletionType = 1,        ///< modTime 0
    KDModificationType = 2,    ///< another modification time than the parent's, or parent unlinked
    KDBranchSelectionType = 3  ///< the parent's modification time: its user chose that version
  };

  [[nodiscard]] std::string_view path() const;
  [[nodiscard]] KDPathRecord& pathRecord() const { return *path_; }
  [[nodiscard]] double logTime() const { return logTime_; }
  [[nodiscard]] double plogTime() const { return plogTime_; }
  [[nodiscard]] double modTime() const { return modTime_; }
  /// Interned: equal ids are the same instance.
  [[nodiscard]] const std::string& userId() const { return *userId_; }
  /// The parent's user; empty without a parent, our own when the parent has the same author.
  [[nodiscard]] const std::string& puserId() const;
  [[nodiscard]] std::string_view userIdForDisplay() const;
  [[nodiscard]] KDLogFileEntry* parentEntry() const { return parent_; }
  [[nodiscard]] bool exists() const { return modTime_ != 0; }
  /// Directories have no times of their own: such an entry has the time at which it was logged, and
  /// no file's has.
  [[nodiscard]] bool isDirectory() const { return modTime_ == logTime_; }
  /// While a parent is not linked, a selection looks like a modification: link parents first.
  [[nodiscard]] Type type() const;
  [[nodiscard]] std::string_view comment() const { return {}; }
  [[nodiscard]] VersionId id() const { return {*userId_, logTime_}; }
  /// The six fields of the log line.
  [[nodiscard]] std::array<std::string, 6> components() const;

  /// Requires: parent.logTime() == plogTime() ("[aParent logTime] == [self plogTime]").
  void setParentEntry(KDLogFileEntry* parent);
  /// Finds and links the parent, walking down from `startIndex`; selections are never parents.
  /// Returns null without a parent; an unknown parent is logged by the caller.
  KDLogFileEntry* parentEntryFromSortedEntries(std::span<KDLogFileEntry* const> sorted,
                                               std::size_t startIndex);
  /// True for the entry itself and every entry that has us among its ancestors.
  /// Requires: not null ("anEntry!=nil").
  [[nodiscard]] bool isParentOfEntry(const KDLogFileEntry* entry) const;
  /// False without a linked parent, else the lowest 8 bits of the parent's whole modification time
  /// taken as a truth value; the argument is ignored. Kept as is: intended.
  [[nodiscard]] bool haspmodTime(double ignored) const;
  /// Requires: equal text ("Only equal replacements allowed.").
  void replacePathWith(KDPathRecord& path);
  /// -1, 0, +1 by logTime.
  [[nodiscard]] int compareLogTime(const KDLogFileEntry& other) const;
  /// All but the parent link.
  [[nodiscard]] bool isEqual(const KDLogFileEntry& other) const;
  [[nodiscard]] std::string description() const;
  [[nodiscard]] std::string shortDescription() const;

  // Links of the version tree.
  [[nodiscard]] KDLogFileEntry* previous() const { return previous_; }
  [[nodiscard]] KDLogFileEntry* nextLeaf() const { return nextLeaf_; }
  void setPrevious(KDLogFileEntry* entry) { previous_ = entry; }
  void setNextLeaf(KDLogFileEntry* entry) { nextLeaf_ = entry; }
  [[nodiscard]] std::uint32_t childCount() const { return childCount_; }
  void setChildCount(std::uint32_t count) { childCount_ = count; }

 private:
  friend class KDEntryStore;
  KDLogFileEntry() = default;

  double logTime_ = 0;
  double plogTime_ = 0;
  double modTime_ = 0;
  KDPathRecord* path_ = nullptr;
  const std::string* userId_ = nullptr;
  const std::string* puserId_ = nullptr;  ///< null unless it differs from userId_
  KDLogFileEntry* parent_ = nullptr;
  KDLogFileEntry* previous_ = nullptr;
  KDLogFileEntry* nextLeaf_ = nullptr;
  std::uint32_t childCount_ = 0;
};

/// The single instance of a user id; kept for the life of the process. Any thread.
const std::string& internedUserId(std::string_view userId);

}  // namespace zolvar
