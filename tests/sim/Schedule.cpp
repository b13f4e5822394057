#include "sim/Schedule.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>

using namespace std::string_literals;

namespace zolvar {
namespace {

using Words = std::vector<std::string>;

constexpr std::array Names = {"alpha", "beta", "gamma", "delta", "epsilon", "zeta"};
/// Few paths, so that things meet; each can be a file, a directory or a link.
constexpr std::array Paths = {"a", "b", "c", "d", "d/x", "d/y", "d/e", "d/e/z"};
constexpr std::array Targets = {"a", "b", "d", "../other"};

/// Draws one schedule.
class Drawing {
 public:
  explicit Drawing(std::uint64_t seed) : random_(seed) {}

  Schedule draw() {
    const std::size_t count = std::max(2 + std::min(below(5), below(5)), isCrowded_ ? 3 : 0UL);
    peers_.assign(Names.begin(), Names.begin() + static_cast<std::ptrdiff_t>(count));
    paths_.assign(Paths.begin(), Paths.end());
    if (isCrowded_) {
      std::shuffle(paths_.begin(), paths_.end(), random_);
      paths_.resize(1 + below(3));
    }
    add(0, "-", {"apart"});  // the same goes for what is written where nobody looks
    add(0, "-", {"pace", below(2) == 0 ? "normal" : "quick"});
    if (below(4) != 0)
      add(0, "-", {"interleave", std::to_string(2 + below(below(2) == 0 ? 10 : 200))});
    for (const std::string& peer : peers_) {
      add(0, peer, {"start"});  // who has just come sees no folder yet
      if (below(3) == 0) add(0, peer, {"skew", fmt::format("{:.1f}", below(99) / 10.0 - 4.9)});
    }
    if (below(5) == 0) {
      add(0, "-", {"news", fmt::format("{}", below(9)), below(2) == 0 ? "0" : "0.4", "repeated"});
    }
    for (std::size_t i = 1 + below(4); i > 0; --i) file(0, peers_[0]);
    add(20, peers_[0], {"share"});
    for (std::size_t i = 1; i < count; ++i) {
      if (below(4) == 0) {
        if (below(2) == 0) {
          add(12, peers_[i], {"copyfolder", peers_[0]});
          copied_.insert(peers_[i]);
        }
        late_.push_back(peers_[i]);
      } else {
        add(2, peers_[i], {"subscribe"});
      }
    }
    if (below(4) != 0) add(90, "-", {"wait"});
    const std::size_t length = schedule_.operations.size() + 40 + below(50);
    std::vector<std::size_t> special;  // what every run has, somewhere
    for (int i = 0; i < 3; ++i) special.push_back(below(38) + schedule_.operations.size());
    while (schedule_.operations.size() < length) {
      const auto isHere = [&](std::size_t at) { return at <= schedule_.operations.size(); };
      const auto due = std::find_if(special.begin(), special.end(), isHere);
      if (due != special.end()) {
        special.erase(due);
        special.size() == 0 ? crash() : partition();
        continue;
      }
      step();
    }
    return std::move(schedule_);
  }

 private:
  std::size_t below(std::size_t end) { return random_() % end; }
  template <class Range>
  std::string one(const Range& range) {
    return range[below(range.size())];
  }
  double pause() {
    if (isCrowded_ && below(3) != 0) return 0;
    switch (below(8)) {
      case 0:
        return 0;
      case 1:
        return 1;
      case 2:
        return static_cast<double>(below(300));
      case 3:
        return static_cast<double>(below(80));
      default:
        return static_cast<double>(below(20));
    }
  }
  void add(double wait, const std::string& peer, Words words) {
    // Another file with a version's own time is a limit that is known: see what
    // docs/reliability.md says is not covered.
    if (copied_.contains(peer)) {
      std::replace(words.begin(), words.end(), "keep"s, "save"s);
      std::replace(words.begin(), words.end(), "move"s, "save"s);
      std::replace(words.begin(), words.end(), "touch"s, "save"s);
    }
    schedule_.operations.push_back({wait, peer, std::move(words)});
  }

  Words change() {
    switch (below(16)) {
      case 0:
      case 1:
        return {"save", one(paths_)};
      case 2:
        return {"keep", one(paths_)};
      case 3:
        return {"lower", one(paths_), std::to_string(1 + below(60))};
      case 4:
        return {"samesize", one(paths_)};
      case 5:
      case 6:
        return {"erase", one(paths_)};
      case 7:
      case 8:
        return {"move", one(paths_), one(paths_)};
      case 9:
        return {"mkdir", one(paths_)};
      case 10:
        return {"link", one(paths_), one(Targets)};
      case 11:
        return {"recreate", one(paths_)};
      case 12:
        return {"revert", one(paths_)};
      case 13:
        return {"touch", one(paths_)};
      default:
        return {"write", one(paths_)};
    }
  }
  void file(double wait, const std::string& peer) { add(wait, peer, {"write", one(paths_)}); }

  void partition() {
    std::array<std::string, 2> sides;
    std::shuffle(peers_.begin() + 1, peers_.end(), random_);
    for (std::size_t i = 0; i < peers_.size(); ++i) {
      std::string& side = sides[i < 2 ? i : below(2)];
      side += (side.empty() ? "" : ",") + peers_[i];
    }
    add(pause(), "-", {"partition", sides[0] + "|" + sides[1]});
    // Something that meets: both sides change one path.
    const std::string path = one(paths_);
    for (std::size_t i = below(4); i > 0; --i) {
      Words words = change();
      words[1] = path;
      add(pause(), one(peers_), words);
    }
    if (below(2) == 0) add(static_cast<double>(20 + below(200)), "-", {"heal"});
  }
  void crash() {
    add(pause(), one(peers_),
        {below(3) == 0 ? "powercut" : "crash", std::to_string(1 + below(below(2) == 0 ? 60 : 600)),
         std::to_string(below(60))});
  }
  void decide() {
    const std::string verb = below(2) == 0 ? "use" : "drop";
    // Two people at once: what the one drops the other may choose, or drop in turn.
    for (std::size_t i = 1 + below(2); i > 0; --i) {
      add(pause(), one(peers_),
          {below(3) == 0 ? "use" : verb, std::to_string(below(3)), std::to_string(below(3))});
    }
  }

  /// A conflict of one second, which people decide at once while one of its authors is away.
  void meet() {
    const std::string path = one(paths_);
    std::shuffle(peers_.begin() + 1, peers_.end(), random_);
    constexpr std::array Verbs = {"write", "save", "samesize", "touch"};
    for (std::size_t i = 0; i < 2; ++i) add(0, peers_[i], {one(Verbs), path});
    add(static_cast<double>(below(120)), "-", {"wait"});
    if (below(2) == 0) add(0, peers_[below(2)], {"quit"});
    decide();
    decide();
  }

  void step() {
    if (isCrowded_ && below(8) == 0) return meet();
    const std::string peer = one(peers_);
    switch (below(40)) {
      case 0:
        return partition();
      case 1:
      case 2:
      case 3:
        return add(pause(), "-", {"heal"});
      case 4:
        return crash();
      case 5:
      case 6:
      case 7:
      case 8:
        return decide();
      case 9:
      case 10:
      case 11:
        return add(pause(), peer, {"answer", below(3) == 0 ? "reget" : "delete"});
      case 12:
        return add(pause(), peer, {"cut", std::to_string(below(5))});
      case 13:
        return add(pause(), peer, {"kill", std::to_string(below(5))});
      case 14:
        return add(pause(), peer, {below(2) == 0 ? "stall" : "slow", std::to_string(below(4))});
      case 15:
      case 16: {
        Words words = change();
        words.insert(words.begin(), {"at", std::to_string(1 + below(200))});
        return add(pause(), peer, words);
      }
      case 17: {
        Words words = change();
        words.insert(words.begin(), {"during"});
        return add(pause(), peer, words);
      }
      case 18:
        return add(pause(), peer, {below(2) == 0 ? "quit" : "off"});
      case 19:
      case 20:
        return add(pause(), peer, {"start"});
      case 21:
        if (late_.empty()) return add(pause(), peer, {"subscribe"});
        add(pause(), late_.back(), {"subscribe"});
        return late_.pop_back();
      case 22:
        return add(pause(), peer, {below(2) == 0 ? "unsubscribe" : "subscribe"});
      case 23:
        if (below(4) == 0 && peers_.size() > 2) return add(pause(), peer, {"leave"});
        return add(pause(), peer, {"password", below(2) == 0 ? "secret" : "-"});
      case 24:
        return add(pause(), peer, {"skew", fmt::format("{:.1f}", below(99) / 10.0 - 4.9)});
      case 25:
        return add(static_cast<double>(60 + below(600)), "-", {"wait"});
      case 26:
        return add(pause(), peer, {"deletemissing"});
      default:
        return add(pause(), peer, change());
    }
  }

  std::mt19937_64 random_;
  /// Very few paths, and much in one second: versions that only their time would tell apart.
  bool isCrowded_ = below(3) == 0;
  std::vector<std::string> paths_;
  std::vector<std::string> peers_;
  std::vector<std::string> late_;
  std::set<std::string> copied_;  ///< whose folder was copied by hand
  Schedule schedule_;
};

/// All schedules without one of `pieces` pieces, and one by one what may be simpler in the rest.
bool shrinkOnce(std::vector<Operation>& operations,
                const std::function<bool(const Schedule&)>& fails) {
  bool hasShrunk = false;
  for (std::size_t size = std::max<std::size_t>(operations.size() / 2, 1); size > 0; size /= 2) {
    for (std::size_t end = operations.size(); end > 0;) {
      const std::size_t begin = end > size ? end - size : 0;
      auto fewer = operations;
      const auto first = fewer.begin() + static_cast<std::ptrdiff_t>(begin);
      double lostTime = 0;
      for (std::size_t i = begin; i < end; ++i) lostTime += operations[i].wait;
      // Without it, what is known and left would be found in the place of the fault.
      const auto isKept = [](const Operation& operation) { return operation.words[0] == "apart"; };
      const auto last = fewer.begin() + static_cast<std::ptrdiff_t>(end);
      if (std::any_of(first, last, isKept)) {
        end = begin;
        continue;
      }
      fewer.erase(first, last);
      auto later = fewer;
      if (begin < later.size()) later[begin].wait += lostTime;
      if (fails({fewer})) {
        operations = std::move(fewer);
        hasShrunk = true;
      } else if (lostTime > 0 && begin < later.size() && fails({later})) {
        operations = std::move(later);
        hasShrunk = true;
      }
      end = begin;
    }
  }
  return hasShrunk;
}

}  // namespace

std::string Schedule::text() const {
  std::string text;
  for (const Operation& operation : operations) {
    text +=
        fmt::format("{} {} {}\n", operation.wait, operation.peer, fmt::join(operation.words, " "));
  }
  return text;
}

Schedule Schedule::parse(const std::string& text) {
  Schedule schedule;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line.substr(0, line.find('#')));
    Operation operation;
    std::string wait;
    if (!(words >> wait)) continue;
    operation.wait = std::stod(wait);
    words >> operation.peer;
    for (std::string word; words >> word;) operation.words.push_back(word);
    if (operation.words.empty()) throw std::invalid_argument("No operation: " + line);
    schedule.operations.push_back(std::move(operation));
  }
  return schedule;
}

Schedule Schedule::random(std::uint64_t seed) { return Drawing(seed).draw(); }

Schedule Schedule::shrunk(const std::function<bool(const Schedule&)>& fails) const {
  Schedule smallest = *this;
  while (shrinkOnce(smallest.operations, fails)) {
  }
  for (std::size_t i = 0; i < smallest.operations.size(); ++i) {
    for (const double wait : {0.0, 10.0, 60.0}) {
      Schedule simpler = smallest;
      simpler.operations[i].wait = wait;
      if (smallest.operations[i].wait <= wait || !fails(simpler)) continue;
      smallest = simpler;
      break;
    }
  }
  return smallest;
}

}  // namespace zolvar
