#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "sim/Contents.h"
#include "sim/Schedule.h"
#include "sim/SimulatedPeer.h"

namespace zolvar {

/// How often something really happened, by name.
using Counters = std::map<std::string, std::size_t>;

/// Runs one schedule in a network of its own and checks what Zolvar promises: on the way that no
/// content is lost and nothing outside of the folder is touched; after all is healed that everybody
/// has the same, that nothing is left to do, and that an hour later nothing has changed. Used once.
class ScheduleRun {
 public:
  explicit ScheduleRun(Schedule schedule) : schedule_(std::move(schedule)) {}
  /// What went wrong, a sentence a line; empty when all is well.
  std::string problems();
  [[nodiscard]] const Counters& counters() const { return counters_; }
  Net net;

 private:
  using Words = std::vector<std::string>;
  void perform(const Operation& operation);
  bool performByNetwork(const Words& words);
  bool performByProgram(SimulatedPeer& peer, const Words& words);
  bool performByPerson(SimulatedPeer& peer, const Words& words);
  void change(SimulatedPeer& peer, const Words& words);
  void keepApart(SimulatedPeer& author, const std::string& path);
  void endsLooking(SimulatedPeer& peer);
  void make(SimulatedPeer& peer, const std::string& path, FileKind kind,
            const std::function<void(const std::string& path)>& making);
  void decide(SimulatedPeer& peer, bool uses, std::size_t conflict, std::size_t version);
  void copyFolder(SimulatedPeer& from, SimulatedPeer& to);

  /// Lets time pass; whoever reaches the end planned for it dies there.
  void pass(double seconds);
  void mayDie(const std::function<void()>& something);
  void restart(SimulatedPeer& peer);
  void endPlans();
  void check(const std::string& when);
  [[nodiscard]] bool isAnybodySyncing();
  void settle();
  bool answerAll(bool deletes);
  bool giveUpUnreachable();
  bool resolveOne();
  static std::optional<VersionId> choice(SimulatedPeer& peer, const std::string& path);
  void checkSame(const std::string& when);
  bool isConfused(SimulatedPeer& peer, const std::string& path, double time);
  std::set<std::string> unsharedPaths();
  std::vector<std::pair<std::string, std::string>> logsOf(SimulatedPeer& peer);
  void countCutLoads();
  [[nodiscard]] std::vector<SimulatedPeer*> active();
  [[nodiscard]] std::string fingerprint();
  SimulatedPeer& peer(const std::string& name);
  void furnish(SimulatedPeer& peer);
  void interleave(std::size_t oneIn);
  void note(const std::string& counter) { ++counters_[counter]; }

  const Schedule schedule_;
  Contents contents_{"Docs"};
  Counters counters_;
  std::string problems_;
  struct Plan {
    double downtime = 0;
    bool losesUnflushed = false;
  };
  std::map<std::string, Plan> plans_;         ///< how the next crash of a computer goes on
  std::map<std::string, double> restartsAt_;  ///< virtual time
  std::map<std::string, double> skews_;
  std::function<void(SimulatedPeer& peer)> interleaving_;  ///< what it takes on a computer
  std::shared_ptr<std::size_t> pauses_ = std::make_shared<std::size_t>(0);  ///< of lanes so far
  SimulatedPeer* quitting_ = nullptr;                                       ///< just now
  std::set<std::string> gone_;
  bool keepsApart_ = false;
  /// Path and time → who made a file of it, and whether nobody looked then.
  std::map<std::pair<std::string, std::int64_t>, std::map<std::string, bool>> timesOf_;
  std::set<std::string> furnished_;
  std::map<std::string, std::pair<std::string, std::string>> drops_;  ///< path → who, what
  std::string password_;
};

}  // namespace zolvar
