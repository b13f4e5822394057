// What is checked of a schedule, and how its open questions are answered in the end.

#include <fmt/format.h>

#include <algorithm>
#include <sstream>

#include "sim/ScheduleRun.h"

namespace zolvar {
namespace {

const std::string Docs = "Docs";
constexpr double Hour = 3600;
constexpr double LongestAnswer = 120;  ///< seconds
constexpr int LongestSync = 900;       ///< seconds, of one that gives way at every other call

bool isOneOrBeneath(const std::string& path, const std::set<std::string>& places) {
  return std::any_of(places.begin(), places.end(), [&](const std::string& place) {
    return (path + "/").starts_with(place + "/");
  });
}

}  // namespace

/// The version of a path in conflict that the computer's user has chosen.
std::optional<VersionId> ScheduleRun::choice(SimulatedPeer& peer, const std::string& path) {
  for (const Conflict& conflict : *peer.snapshot(Docs)->conflicts) {
    if (conflict.path != path) continue;
    for (const ConflictVersion& version : conflict.versions) {
      if (version.isLocal) return version.id;
    }
  }
  return std::nullopt;
}

void ScheduleRun::check(const std::string& when) {
  const std::string losses = contents_.losses(net.peers());
  if (!losses.empty() && problems_.empty()) problems_ = when + ":\n" + losses;
}

std::string ScheduleRun::fingerprint() {
  std::string text;
  for (SimulatedPeer* peer : net.peers()) text += peer->fingerprint() + "\n--\n";
  return text;
}

bool ScheduleRun::isAnybodySyncing() {
  const auto peers = active();
  return std::any_of(peers.begin(), peers.end(), [](SimulatedPeer* peer) {
    return peer->application().scheduler().syncingParticipant() != nullptr;
  });
}

void ScheduleRun::settle() {
  std::string last = fingerprint();
  for (double passed = 0; passed < 3 * Hour; passed += 600) {
    pass(600);
    const std::string now = fingerprint();
    if (now == last) {
      // Who looks again for what nobody has may be at it just now.
      for (int second = 0; second < LongestSync && isAnybodySyncing(); ++second) pass(1);
      return;
    }
    last = now;
  }
  problems_ += "It never settles:\n" + last;
}

bool ScheduleRun::answerAll(bool deletes) {
  bool isAny = false;
  for (SimulatedPeer* peer : active()) {
    if (peer->questioned(Docs).empty()) continue;
    peer->operations().answer(Docs, deletes, [](const Result<>&) {});
    isAny = true;
  }
  return isAny;
}

/// What nobody within reach has is given up by a person.
bool ScheduleRun::giveUpUnreachable() {
  const auto peers = active();
  const auto unshared = unsharedPaths();
  for (SimulatedPeer* peer : peers) {
    for (const std::string& path : peer->missing(Docs)) {
      if (isOneOrBeneath(path, unshared)) continue;
      const bool nobodyHasIt = std::all_of(peers.begin(), peers.end(), [&](SimulatedPeer* other) {
        const auto missing = other->missing(Docs);
        return std::find(missing.begin(), missing.end(), path) != missing.end();
      });
      if (!nobodyHasIt) continue;
      note("given up");
      const auto conflicts = peer->conflicts(Docs);
      const auto conflict = std::find(conflicts.begin(), conflicts.end(), path);
      if (conflict != conflicts.end()) {
        decide(*peer, false, static_cast<std::size_t>(conflict - conflicts.begin()), 0);
        return true;
      }
      peer->application().peer().poolNamed(Docs)->deleteMissing({path}, [](const Result<>&) {});
      return true;
    }
  }
  return false;
}

bool ScheduleRun::resolveOne() {
  const auto peers = active();
  const auto unshared = unsharedPaths();
  for (std::size_t i = 0; i < peers.size(); ++i) {
    SimulatedPeer& peer = *peers[(i + counters_["drop"]) % peers.size()];
    const auto conflicts = peer.conflicts(Docs);
    for (std::size_t conflict = 0; conflict < conflicts.size(); ++conflict) {
      if (isOneOrBeneath(conflicts[conflict], unshared)) continue;
      decide(peer, false, conflict, counters_["drop"] / 2);
      return true;
    }
  }
  return false;
}

/// Where a link lies that leads out of the folder: such a one is not shared.
std::set<std::string> ScheduleRun::unsharedPaths() {
  std::set<std::string> unshared;
  for (SimulatedPeer* peer : active()) {
    for (const auto& [path, content] : peer->contents(Docs)) {
      if (content == "-> ../other") unshared.insert(path);
    }
  }
  return unshared;
}

/// Everybody's user id and log, as the peer has it.
std::vector<std::pair<std::string, std::string>> ScheduleRun::logsOf(SimulatedPeer& peer) {
  std::vector<std::pair<std::string, std::string>> logs;
  for (SimulatedPeer* author : net.peers()) {
    const auto log = peer.host.files.readAll(peer.logPath(Docs, *author));
    logs.emplace_back(author->userId(), log.value_or(""));
  }
  return logs;
}

/// Whether the peer's file has that time, and nobody can say whether it is what that tells.
bool ScheduleRun::isConfused(SimulatedPeer& peer, const std::string& path, double time) {
  const std::string place = Docs + "/" + path;
  const auto attributes = peer.host.files.attributesOf(peer.path(place));
  return attributes && static_cast<double>(attributes->modTime) == time &&
         contents_.isConfused(place, attributes->modTime);
}

void ScheduleRun::checkSame(const std::string& when) {
  std::string found;
  const auto peers = active();
  std::map<std::string, std::string> trees;
  std::set<std::string> conflicts;
  const std::set<std::string> unshared = unsharedPaths();
  for (SimulatedPeer* peer : peers) {
    for (const std::string& path : peer->conflicts(Docs)) conflicts.insert(path);
  }
  conflicts.insert(unshared.begin(), unshared.end());
  const auto inConflict = [&](const std::string& path) { return isOneOrBeneath(path, conflicts); };
  const auto isUnshared = [&](const std::string& path) { return isOneOrBeneath(path, unshared); };
  // Then nobody is there to tell that a file of the version's time is another one.
  const auto isNowhere = [&](const std::string& content) {
    return std::none_of(peers.begin(), peers.end(), [&](SimulatedPeer* peer) {
      const auto files = peer->contents(Docs);
      return std::any_of(files.begin(), files.end(),
                         [&](const auto& file) { return file.second == content; });
    });
  };
  const auto isWithLeaverOnly = [&](const VersionId& version, const std::string& content) {
    const bool hasLeft = std::any_of(gone_.begin(), gone_.end(), [&](const std::string& name) {
      return peer(name).userId() == version.userId;
    });
    return hasLeft && isNowhere(content);
  };
  // Erased by its author, who put another file of its second in its place before anybody looked.
  const auto isGivenAway = [&](const std::string& content, const std::string& path,
                               const std::string& here) {
    return contents_.gaveWayTo(content, here) && isNowhere(content) &&
           std::all_of(peers.begin(), peers.end(), [&](SimulatedPeer* peer) {
             const auto files = peer->contents(Docs);
             const auto file = files.find(path);
             return file == files.end() || file->second == here;
           });
  };
  std::map<std::string, std::string> expected;
  for (SimulatedPeer* peer : peers) {
    const auto say = [&](const std::string& text) { found += peer->name() + text + "\n"; };
    auto contents = peer->contents(Docs);
    const auto listed = peer->missing(Docs);
    std::set<std::string> missing(listed.begin(), listed.end());
    std::erase_if(missing, isUnshared);
    for (const Conflict& conflict : *peer->snapshot(Docs)->conflicts) {
      if (isUnshared(conflict.path)) continue;
      // What only somebody who has left has stays on the list of missing files. So does what others
      // only have together with another version of its second.
      const auto isWithinReach = [&](const ConflictVersion& version) {
        const bool isShared =
            Contents::versionCount(logsOf(*peer), conflict.path, version.modTime) > 1;
        return std::any_of(peers.begin(), peers.end(), [&](auto* other) {
          const auto theirs = other->missing(Docs);
          const bool isSure = !isShared || version.id.userId == other->userId();
          return other != peer && isSure && choice(*other, conflict.path) == version.id &&
                 std::find(theirs.begin(), theirs.end(), conflict.path) == theirs.end();
        });
      };
      std::size_t chosen = 0;
      for (const ConflictVersion& version : conflict.versions) {
        if (!version.isLocal) continue;
        ++chosen;
        const std::string wanted = contents_.ofVersion(conflict.path, version.id);
        const std::string& here = contents[conflict.path];
        if (!isWithinReach(version) && missing.contains(conflict.path)) {
          missing.erase(conflict.path);
        } else if (!wanted.empty() && here != wanted && !isWithLeaverOnly(version.id, wanted) &&
                   !isGivenAway(wanted, conflict.path, here) &&
                   !isConfused(*peer, conflict.path, version.modTime)) {
          say(" has " + here + " at " + conflict.path + ", and chose " + wanted);
        }
      }
      if (chosen == 0 && missing.contains(conflict.path) &&
          std::none_of(conflict.versions.begin(), conflict.versions.end(), isWithinReach)) {
        missing.erase(conflict.path);  // the first that arrives would be taken
      } else if (chosen != 1) {
        say(" has chosen no version of " + conflict.path);
      }
    }
    std::erase_if(contents, [&](const auto& file) { return inConflict(file.first); });
    if (peer == peers.front()) expected = contents;
    const auto isSameConfusion = [&](const std::string& path) {
      const auto first =
          peers.front()->host.files.attributesOf(peers.front()->path(Docs + "/" + path));
      return first && isConfused(*peer, path, static_cast<double>(first->modTime));
    };
    for (const auto& [path, content] : contents) {
      const auto other = expected.find(path);
      if (other != expected.end() && (other->second == content || isSameConfusion(path))) continue;
      say(" has " + content + " at " + path + ", " + peers.front()->name() + " has " +
          (other == expected.end() ? "nothing" : other->second));
    }
    for (const auto& [path, content] : expected) {
      if (!contents.contains(path)) say(" lacks " + path + " with " + content);
    }
    for (const std::string& path : missing) say(" misses " + path);
    for (const std::string& path : peer->questioned(Docs)) say(" asks about " + path);
    if (!peer->snapshot(Docs)->trouble.empty()) say(": " + peer->snapshot(Docs)->trouble);
    if (peer->application().scheduler().syncingParticipant()) say(" is still syncing");
  }
  for (SimulatedPeer* peer : net.peers()) {
    if (!peer->isRunning() || peers.empty()) continue;
    const PoolPhase phase = peer->snapshot(Docs)->phase;
    if (phase == PoolPhase::Active || phase == PoolPhase::Inactive) continue;
    found += peer->name() + " is still " + phaseName(phase) + "\n";
  }
  std::set<std::string> paths;
  for (SimulatedPeer* peer : peers) {
    for (const auto& [author, log] : logsOf(*peer)) Contents::addLoggedPaths(log, paths);
  }
  for (const std::string& path : paths) {
    for (SimulatedPeer* peer : peers) {
      std::vector<std::string> lines;
      const auto answer = std::make_shared<std::string>();
      peer->operations().tree(Docs, path, [answer](const Result<std::string>& tree) {
        *answer = (tree ? *tree : refusalText(tree.error())) + "\n";
      });
      net.world.loop.runUntil([&] { return !answer->empty(); }, LongestAnswer);
      std::istringstream text(*answer);
      for (std::string line; std::getline(text, line);) {
        lines.push_back(line.substr(0, line.find(" <-- selected")));
      }
      std::sort(lines.begin(), lines.end());
      std::string tree;
      for (const std::string& line : lines) tree += line + "\n";
      std::string& first = trees[path];
      if (first.empty()) first = tree;
      if (first != tree) {
        found += fmt::format("The trees of {} differ at {} and {}:\n{}{}", path,
                             peers.front()->name(), peer->name(), first, tree);
      }
    }
  }
  if (!found.empty() && problems_.empty()) problems_ = when + ":\n" + found;
}

void ScheduleRun::countCutLoads() {
  for (SimulatedPeer* peer : net.peers()) {
    for (const auto& run : peer->host.processes.runs) {
      const bool isCut = run.status == 12 || run.status == 20 || run.status > 128;
      if (isCut && run.arguments[0] == "-r") note("cut load");
    }
  }
}

}  // namespace zolvar
