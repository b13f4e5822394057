#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zolvar {

class Folder;
class KDLogFileEntry;
struct ListingEntry;

/// How far a participant's logs went as its listings told, and as they told a while before: a log
/// lies there before it is merged, and a deletion is carried out when it is.
class ToldLogs {
 public:
  using Sizes = std::map<std::string, std::uint64_t, std::less<>>;  ///< log file name → bytes

  /// A listing told these; `now` is in seconds since 1970.
  void add(const Sizes& sizes, double now);
  /// Those of some earlier listing, which are merged by now; null while there is none.
  [[nodiscard]] const Sizes* merged() const { return merged_ ? &*merged_ : nullptr; }

 private:
  std::optional<Sizes> merged_;
  std::optional<Sizes> waiting_;
  double waitingSince_ = 0;
};

/// What a participant can know: its listing names its copies of the logs with their sizes, and logs
/// only grow, so our longer copies tell which lines it had not got yet. A file over there is no
/// version, and a deletion was not carried out there, whose line is among these; a time that
/// happens to be the version's says nothing then.
class HeldLogs {
 public:
  /// `sizes` are those of our own copies, log file name → bytes; of a longer one the first line
  /// that the participant lacks is read. A listing that names no log tells nothing; what others
  /// tell is noted in `told`. `now` is in seconds since 1970.
  HeldLogs(const std::vector<ListingEntry>& listed, const std::string& participant,
           const std::map<std::string, std::uint64_t>& sizes, Folder& folder, ToldLogs& told,
           double now);

  /// Whether the participant may have the line of this entry. Of lines of one second with the first
  /// that it lacks it counts as having none.
  [[nodiscard]] bool mayHold(const KDLogFileEntry& entry) const;
  /// Whether the participant's own log goes on where our copy ends.
  [[nodiscard]] bool hasLoggedMore() const { return hasLoggedMore_; }
  /// Whether a deletion is carried out there by now: the line is there, and not just since.
  [[nodiscard]] bool hasCarriedOut(const KDLogFileEntry& deletion) const;

 private:
  using FirstLines = std::map<std::string, double>;  ///< user id → log time of the first one
  static FirstLines lacked(const ToldLogs::Sizes& there, const std::string& participant,
                           const std::map<std::string, std::uint64_t>& sizes, Folder& folder);
  static bool isLacked(const FirstLines& lacked, const KDLogFileEntry& entry);

  FirstLines lacked_;                    ///< lines that are not there
  std::optional<FirstLines> notMerged_;  ///< lines that were not there a while ago; none: unknown
  bool hasLoggedMore_ = false;
};

}  // namespace zolvar
