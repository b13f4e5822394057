#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "log/KDEntryStore.h"
#include "platform/FileSystem.h"
#include "util/Failure.h"

namespace zolvar {

class KDVersionTree;
class Log;

/// What lay at one path of this disk when a scan or a fetch last confirmed it.
struct KDDiskState {
  FileKind kind = FileKind::Regular;
  std::uint64_t size = 0;
  std::int64_t modTime = 0;
  std::uint64_t inode = 0;          ///< 0: recorded in another folder than this one
  std::uint64_t device = 0;         ///< 0: not comparable
  KDLogFileEntry* entry = nullptr;  ///< the version it is; null: left by a copy run, not yet known
  bool isGuess = false;   ///< taken for that version by its time alone, until a listing tells more
  bool isUnseen = false;  ///< nobody saw it arrive: by its time, and perhaps its size, it is that

  static KDDiskState guess(const FileAttributes& attributes, KDLogFileEntry* entry);
  static KDDiskState of(const FileAttributes& attributes, KDLogFileEntry* entry);
  /// Whether a file with these attributes is still what was confirmed. Directories have no times.
  [[nodiscard]] bool isUnchanged(const FileAttributes& attributes) const;
};

/// The disk record of one pool: path → KDDiskState, hung on the store's path records, and kept in a
/// file of the support folder (never in the metadata folder, which peers overwrite). The file is a
/// journal: changes are appended at each flush; a load that finds mostly outdated lines writes it
/// anew. A lost record costs no content: without one, files are recognised by their times.
/// The pool's state lane; the folder outlives the record.
class KDDiskRecord {
 public:
  /// `changed` is told of each path whose state is set or forgotten.
  KDDiskRecord(Folder& supportFolder, std::string path, Log& log,
               std::function<void(std::string_view path)> changed = {});

  /// Reads the journal against a tree that is read already. Lines whose path or version is unknown
  /// are dropped. `root` is the pool folder's identity. With another device inodes are not
  /// compared: drives get new numbers. With another inode it is another folder, perhaps a copy:
  /// what lies in it as recorded is known, and nothing else in it descends from what was recorded.
  void load(KDVersionTree& tree, FileIdentity root);
  /// Whether a journal with this very root was loaded.
  [[nodiscard]] bool knowsRoot() const { return knowsRoot_; }

  void set(KDPathRecord& path, const KDDiskState& state);
  void forget(KDPathRecord& path);
  /// Appends what changed since the last flush.
  Result<> flush();

 private:
  std::string line(const KDPathRecord& path) const;
  Result<> rewrite();

  Folder& folder_;
  std::string path_;
  Log& log_;
  std::function<void(std::string_view)> changed_;
  KDEntryStore* store_ = nullptr;
  FileIdentity root_;
  bool knowsRoot_ = false;
  bool needsRewrite_ = true;
  std::string pending_;
  std::deque<KDDiskState> states_;  ///< stable addresses
  std::deque<KDDiskState*> free_;
};

}  // namespace zolvar
