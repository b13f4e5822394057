#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zolvar {

class Folder;
class KDLogFileEntry;
struct ListingEntry;

/// What a participant can know: its listing names its copies of the logs with their sizes, and logs
/// only grow, so our longer copies tell which lines it had not got yet. A file over there is no
/// version, and a deletion was not carried out there, whose line is among these; a time that
/// happens to be the version's says nothing then.
class HeldLogs {
 public:
  /// `sizes` are those of our own copies, log file name → bytes; of a longer one the first line
  /// that the participant lacks is read. A listing that names no log tells nothing. `now` is in
  /// seconds since 1970.
  HeldLogs(const std::vector<ListingEntry>& listed, const std::string& participant,
           const std::map<std::string, std::uint64_t>& sizes, Folder& folder, double now);

  /// Whether the participant may have the line of this entry. Of lines of one second with the first
  /// that it lacks it counts as having none.
  [[nodiscard]] bool mayHold(const KDLogFileEntry& entry) const;
  /// Whether a deletion is carried out there by now: the line is there, and not just since.
  [[nodiscard]] bool hasCarriedOut(const KDLogFileEntry& deletion) const;

 private:
  double now_;
  std::map<std::string, double> lackedFrom_;  ///< user id → log time of the first line not there
};

}  // namespace zolvar
