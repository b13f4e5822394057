#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

class Folder;

/// What two copies of one log have in common, and the log that loses no line of either.
///
/// The union holds the older copy's lines in their order, and the lines that only the newer copy
/// has, each text once, merged in by log time; the older copy's come first where times are equal. A
/// line that cannot be read takes the time of the line before it, so it stays in its place. A last
/// line without line feed is a write that was cut off: it is left out when the other copy has a
/// line that it is the beginning of, else it becomes a line.
///
/// The older copy is held in memory as a whole, the newer one is read in pieces. Caller
/// synchronises.
class LogUnion {
 public:
  enum class Relation {
    NewHasAll,  ///< the newer copy holds every line of the older one
    OldHasAll,  ///< the older copy holds every line of the newer one, and more
    Diverged,   ///< each has lines of its own
  };
  using Writer = std::function<Result<>(std::string_view bytes)>;

  LogUnion() = default;
  LogUnion(const LogUnion&) = delete;
  LogUnion& operator=(const LogUnion&) = delete;

  /// Reads both copies; once an object. Fails as the folder does.
  Result<> read(Folder& folder, const std::string& oldPath, const std::string& newPath);

  [[nodiscard]] Relation relation() const;
  /// The lines that only the newer copy has, in its order, without line feeds.
  [[nodiscard]] std::vector<std::string> linesNewToOld() const;
  /// Writes the union in pieces of some megabytes.
  Result<> write(const Writer& writer) const;

 private:
  struct Extra {
    double time = 0;
    std::string line;
  };

  void indexOld();
  void takeNew(std::string_view line, bool isWhole);

  std::string old_;               ///< the older copy's bytes; the views below point into it
  std::string_view oldFragment_;  ///< its last line when that has no line feed
  std::unordered_map<std::string_view, bool> oldLines_;  ///< line → the newer copy has it too
  std::size_t sharedLines_ = 0;                          ///< of oldLines_
  bool isFragmentShared_ = true;   ///< the newer copy has a line that oldFragment_ begins
  bool isFragmentInBoth_ = false;  ///< and no more of it than the older one
  double newTime_ = 0;             ///< time of the newer copy's line read last
  std::deque<Extra> extras_;
  std::unordered_set<std::string_view> extraLines_;  ///< of extras_
};

}  // namespace zolvar
