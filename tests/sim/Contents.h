#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <unordered_map>

#include "sim/SimulatedPeer.h"

namespace zolvar {

/// Where every content is that a person wrote in a simulated network: tells whether one was lost.
/// A content may go only when a person wrote over it or erased it on some disk, and so saw it.
class Contents {
 public:
  explicit Contents(std::string folder) : folder_(std::move(folder)) {}

  /// A content that nobody wrote before, of its own size unless one is given.
  std::string make(std::size_t size = 0);
  void wrote(SimulatedPeer& author, const std::string& path, const std::string& content);
  void moved(SimulatedPeer& peer, const std::string& path);  ///< to this path
  /// Around what a person changes: what is gone afterwards was seen and replaced.
  void willChange(SimulatedPeer& peer);
  void changed(SimulatedPeer& peer);
  /// A content and its time that lay at the path here once; none: empty.
  [[nodiscard]] std::pair<std::string, std::int64_t> earlier(const SimulatedPeer& peer,
                                                             const std::string& path) const;

  /// Notes which versions the peer has logged since the last call, and what they hold.
  void noteLogged(const SimulatedPeer& peer);
  /// Whether the author wrote something there, with that time, and has neither logged nor replaced
  /// it.
  [[nodiscard]] bool isUnlogged(const std::string& author, const std::string& path,
                                std::int64_t time) const;
  /// From now on nobody can say which of the files of that path and time is the version.
  void confuse(const std::string& path, std::int64_t time) { confused_.emplace(path, time); }
  [[nodiscard]] bool isConfused(const std::string& path, std::int64_t time) const {
    return confused_.contains({path, time});
  }
  /// What the version holds: a file's content, "/" or "-> target"; empty when that was not seen.
  [[nodiscard]] std::string ofVersion(const std::string& path, const VersionId& version) const;
  /// Whether its author has changed or erased the content, and the other one has its second.
  [[nodiscard]] bool gaveWayTo(const std::string& content, const std::string& other) const;

  /// How many versions of the path with that time these logs (user id, text) tell of.
  static std::size_t versionCount(const std::vector<std::pair<std::string, std::string>>& logs,
                                  const std::string& path, double modTime);
  /// The paths that the author's log names, as the peer has it.
  static void addLoggedPaths(const std::string& log, std::set<std::string>& paths);

  /// A sentence about each loss on these computers' disks, and about each change outside of the
  /// folders that they share.
  [[nodiscard]] std::string losses(const std::vector<SimulatedPeer*>& peers) const;

 private:
  struct Written {
    std::string author;
    std::string path;
    std::int64_t time = 0;
    bool isLogged = false;
    bool isReplaced = false;
  };
  [[nodiscard]] std::multiset<std::string> inFolder(SimulatedPeer& peer) const;

  std::string folder_;
  std::size_t count_ = 0;
  std::unordered_map<std::string, Written> written_;
  std::map<std::pair<std::string, std::string>, std::vector<std::pair<std::string, std::int64_t>>>
      history_;  ///< peer and path → what was written there
  std::map<std::tuple<std::string, std::string, double>, std::string> versions_;
  std::map<std::string, std::size_t> logRead_;
  std::set<std::pair<std::string, std::int64_t>> confused_;
  std::multiset<std::string> before_;
};

}  // namespace zolvar
