#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "util/Failure.h"

namespace zolvar {

class Folder;
struct FileAttributes;

/// Remembers that copy runs were begun, until a scan has looked at what they left. A run that is
/// cut off hard leaves the file that was just arriving, under a name of the tool's own; with this
/// record it is told from a user's file of such a name. Kept in a small file of the support folder,
/// since the program can end with the run: the time of the run's begin, and what was there before,
/// a line each. A record that cannot be written costs no content: the leftover is taken for a file
/// then. The pool's state lane; the folder outlives the record.
class CopyRunRecord {
 public:
  /// Takes up what an earlier run of the program left.
  CopyRunRecord(Folder& supportFolder, std::string path);

  /// A scan met a file of such a name that nobody has logged.
  void noteSeen(std::string_view path) { seen_.emplace(path); }
  /// A copy run begins now (seconds since 1970).
  Result<> begin(double now);
  [[nodiscard]] bool isOpen() const { return begunAt_ != 0; }
  /// Whether a file that nobody has logged is a run's leftover: it was not there before, it is as
  /// the tool makes it, changed since, and named for one of the wanted paths.
  [[nodiscard]] bool isLeftover(std::string_view path, const FileAttributes& attributes, double now,
                                const std::set<std::string, std::less<>>& wanted) const;
  /// What the runs left has been dealt with.
  Result<> end();

 private:
  Folder& folder_;
  std::string path_;
  double begunAt_ = 0;  ///< seconds since 1970; 0: there was no run since the last scan
  std::set<std::string, std::less<>> seen_;
};

}  // namespace zolvar
