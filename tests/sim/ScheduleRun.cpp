#include "sim/ScheduleRun.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest-spi.h>

#include <algorithm>
#include <array>
#include <exception>
#include <random>

#include "support/LaneThread.h"
#include "support/TransferTool.h"

namespace zolvar {
namespace {

const std::string Docs = "Docs";
constexpr double Hour = 3600;
constexpr double Start = 1'750'000'000;

double number(const std::string& word) { return std::stod(word); }
std::size_t whole(const std::string& word) { return std::stoul(word); }

}  // namespace

SimulatedPeer& ScheduleRun::peer(const std::string& name) {
  SimulatedPeer& peer = net.peer(name);
  furnish(peer);
  return peer;
}

/// What a computer has outside of the folder.
void ScheduleRun::furnish(SimulatedPeer& peer) {
  if (!furnished_.insert(peer.name()).second) return;
  peer.host.files.write("/home/user/other/x", "precious");
  peer.host.files.flush();
  if (interleaving_) interleaving_(peer);
}

/// From now on every so many file calls of a lane let others work first, for some time or none.
void ScheduleRun::interleave(std::size_t oneIn) {
  const auto random = std::make_shared<std::minstd_rand>(oneIn);
  interleaving_ = [random, oneIn, count = pauses_](SimulatedPeer& peer) {
    peer.host.files.faults.inBetween = [random, oneIn, count, &lanes = peer.host.lanes] {
      constexpr std::array Pauses = {0.0, 0.0, 0.02, 0.3, 1.0, 4.0};
      const bool isUnwinding = std::uncaught_exceptions() > 0;
      if (LaneThread::current() == nullptr || isUnwinding || (*random)() % oneIn != 0) return;
      ++*count;
      lanes.pause(Pauses[(*random)() % Pauses.size()]);
    };
  };
  for (SimulatedPeer* peer : net.peers()) interleaving_(*peer);
}

std::vector<SimulatedPeer*> ScheduleRun::active() {
  std::vector<SimulatedPeer*> found;
  for (SimulatedPeer* peer : net.peers()) {
    if (peer->isRunning() && peer->snapshot(Docs)->phase == PoolPhase::Active) {
      found.push_back(peer);
    }
  }
  return found;
}

// Time and ends.

void ScheduleRun::restart(SimulatedPeer& peer) {
  restartsAt_.erase(peer.name());
  if (peer.isRunning() || gone_.contains(peer.name())) return;
  net.world.network.setUp(peer.name(), true);
  peer.start();
}

/// Does something in which a computer may reach the end that is planned for it.
void ScheduleRun::mayDie(const std::function<void()>& something) {
  try {
    something();
    return;
  } catch (const SimulatedCrash&) {
    note("crash");
  }
  for (SimulatedPeer* dead : net.peers()) {
    furnish(*dead);  // another one may have died while this one was being made
    auto& files = dead->host.files;
    if (!files.faults.isFrozen() && !dead->host.processes.faults.isFrozen()) continue;
    const Plan plan = plans_[dead->name()];
    endsLooking(*dead);
    dead->crash();
    files.faults.beforeCall = {};
    if (plan.losesUnflushed) {
      files.powerLoss();
      dead->setIsOn(false);
      note("power cut");
    }
    restartsAt_[dead->name()] = net.world.clock.now() + plan.downtime;
  }
  // The end of another must not leave a program between on and off.
  SimulatedPeer* const quitting = std::exchange(quitting_, nullptr);
  if (quitting != nullptr && quitting->isRunning()) {
    endsLooking(*quitting);
    quitting->crash();
  }
}

void ScheduleRun::pass(double seconds) {
  const double end = net.world.clock.now() + seconds;
  do {
    double until = end;
    for (const auto& [name, time] : restartsAt_) until = std::min(until, time);
    mayDie([&] {
      net.advance(std::max(0.0, until - net.world.clock.now()));
      const auto due = restartsAt_;
      for (const auto& [name, time] : due) {
        if (time <= net.world.clock.now()) restart(peer(name));
      }
    });
  } while (net.world.clock.now() < end);
  for (SimulatedPeer* peer : net.peers()) contents_.noteLogged(*peer);
}

void ScheduleRun::endPlans() {
  net.world.network.heal();
  net.world.network.loss = 0;
  net.world.network.delay = 0.2;
  net.world.network.repeatsNews = false;
  for (SimulatedPeer* peer : net.peers()) {
    peer->host.processes.troubles = {};
    peer->host.files.faults.clear();
    peer->host.files.faults.beforeCall = {};
    peer->host.processes.faults.clear();
  }
}

// Operations.

void ScheduleRun::perform(const Operation& operation) {
  const bool isDone = operation.peer == "-"
                          ? performByNetwork(operation.words)
                          : performByProgram(peer(operation.peer), operation.words) ||
                                performByPerson(peer(operation.peer), operation.words);
  if (!isDone) throw std::invalid_argument("Unknown operation: " + operation.words[0]);
}

bool ScheduleRun::performByNetwork(const Words& words) {
  SimulatedNetwork& network = net.world.network;
  const std::string& verb = words[0];
  if (verb == "pace") {
    net.pace = words[1] == "quick" ? Pace::quick() : Pace::normal();
  } else if (verb == "apart") {
    keepsApart_ = true;
  } else if (verb == "interleave") {
    interleave(whole(words[1]));
  } else if (verb == "partition") {
    std::vector<std::set<std::string>> groups(1);
    std::string name;
    for (const char letter : words[1] + "|") {
      if (letter != ',' && letter != '|') {
        name += letter;
        continue;
      }
      groups.back().insert(std::exchange(name, {}));
      if (letter == '|') groups.emplace_back();
    }
    groups.pop_back();
    network.partition(groups);
    note("partition");
  } else if (verb == "heal") {
    network.heal();
    drops_.clear();
  } else if (verb == "news") {
    network.delay = number(words[1]);
    network.loss = number(words[2]);
    network.repeatsNews = words.size() > 3;
  } else {
    return verb == "wait";
  }
  return true;
}

bool ScheduleRun::performByProgram(SimulatedPeer& peer, const Words& words) {
  const std::string& verb = words[0];
  auto& troubles = peer.host.processes.troubles;
  if (verb == "skew") {
    double& skew = skews_[peer.name()];
    peer.host.clock.step(number(words[1]) - std::exchange(skew, number(words[1])));
  } else if (verb == "quit") {
    if (!peer.isRunning()) return true;
    endsLooking(peer);
    quitting_ = &peer;
    peer.quit();
    quitting_ = nullptr;
  } else if (verb == "off") {
    endsLooking(peer);
    if (peer.isRunning()) peer.setIsOn(false);
  } else if (verb == "start") {
    restart(peer);
  } else if (verb == "leave") {
    endsLooking(peer);
    if (peer.isRunning()) peer.setIsOn(false);
    gone_.insert(peer.name());
    note("left for ever");
  } else if (verb == "crash" || verb == "powercut") {
    plans_[peer.name()] = {number(words[2]), verb == "powercut"};
    // Process calls are few: some of the numbers mean these.
    const std::size_t nth = whole(words[1]);
    auto& faults = nth % 8 == 0 ? peer.host.processes.faults : peer.host.files.faults;
    if (peer.isRunning()) faults.crashAt(nth % 8 == 0 ? nth / 64 + 1 : nth);
  } else if (verb == "cut") {
    troubles.cutAfterFiles = whole(words[1]);
  } else if (verb == "kill") {
    troubles.killAfterFiles = whole(words[1]);
  } else if (verb == "stall") {
    troubles.stallAfterFiles = whole(words[1]);
  } else if (verb == "slow") {
    troubles.secondsPerFile = number(words[1]);
  } else {
    return false;
  }
  return true;
}

bool ScheduleRun::performByPerson(SimulatedPeer& peer, const Words& words) {
  const std::string& verb = words[0];
  if (verb == "at" || verb == "during") {
    if (!peer.isRunning()) return true;
    const Words later(words.begin() + (verb == "at" ? 2 : 1), words.end());
    if (verb == "during") {
      peer.host.processes.troubles.duringFile = [this, &peer, later](const std::string&) {
        peer.host.processes.troubles.duringFile = {};
        change(peer, later);
      };
      return true;
    }
    auto countdown = std::make_shared<std::size_t>(whole(words[1]));
    peer.host.files.faults.beforeCall = [this, &peer, later, countdown](auto, auto) {
      if (*countdown == 0 || --*countdown > 0) return;
      change(peer, later);
    };
    return true;
  }
  if (gone_.contains(peer.name()) || !net.world.network.isUp(peer.name())) return true;
  if (verb == "copyfolder") {
    copyFolder(this->peer(words[1]), peer);
    return true;
  }
  constexpr std::array Programs = {"share",  "subscribe",     "unsubscribe", "password",
                                   "answer", "deletemissing", "use",         "drop"};
  if (std::find(Programs.begin(), Programs.end(), verb) == Programs.end()) {
    change(peer, words);
    return true;
  }
  if (!peer.isRunning()) return true;
  const auto outcome = std::make_shared<std::optional<Result<>>>();
  const auto done = [outcome](Result<> result) { *outcome = std::move(result); };
  Operations& operations = peer.operations();
  const auto pool = peer.application().peer().poolNamed(Docs);
  const bool isActive = pool && pool->isActive();
  const auto password = password_.empty() ? std::nullopt : std::optional(password_);
  if (verb == "share") {
    peer.host.files.makeFolder(peer.path(Docs));
    operations.share(peer.path(Docs), password, done);
  } else if (verb == "subscribe") {
    if (isActive || peer.application().peer().presence(Docs) == nullptr) return true;
    note("subscribed");
    if (net.world.clock.now() > Start + 150) note("late subscription");
    operations.subscribe(Docs, peer.path(Docs), password, done);
  } else if (verb == "unsubscribe") {
    if (!isActive) return true;
    note("unsubscribed");
    endsLooking(peer);
    (void)operations.unsubscribe(Docs);
  } else if (verb == "password") {
    password_ = words[1] == "-" ? "" : words[1];
    if (isActive) operations.setPassword(Docs, password_, done);
  } else if (verb == "answer") {
    if (!isActive || peer.questioned(Docs).empty()) return true;
    note("answer " + words[1]);
    operations.answer(Docs, words[1] == "delete", done);
  } else if (verb == "deletemissing") {
    const auto missing = peer.missing(Docs);
    if (isActive && !missing.empty()) pool->deleteMissing({missing[0]}, done);
  } else if (isActive) {
    decide(peer, verb == "use", whole(words[1]), whole(words[2]));
  }
  return true;
}

void ScheduleRun::decide(SimulatedPeer& peer, bool uses, std::size_t conflict,
                         std::size_t version) {
  const auto snapshot = peer.snapshot(Docs);
  const auto& conflicts = *snapshot->conflicts;
  if (conflicts.empty()) return;
  const Conflict& chosen = conflicts[conflict % conflicts.size()];
  const VersionId id = chosen.versions[version % chosen.versions.size()].id;
  note(uses ? "use" : "drop");
  if (!uses) {
    const auto [last, isNew] = drops_.try_emplace(chosen.path, peer.name(), id.text());
    if (!isNew && last->second.first != peer.name() && last->second.second != id.text()) {
      note("crossed drops");
    }
  }
  const auto done = [](const Result<>&) {};
  if (uses) {
    peer.operations().useVersion(Docs, chosen.path, id.text(), done);
  } else {
    peer.operations().dropVersion(Docs, chosen.path, id.text(), done);
  }
}

void ScheduleRun::copyFolder(SimulatedPeer& from, SimulatedPeer& to) {
  if (to.host.files.exists(to.path(Docs)) || !from.host.files.exists(from.path(Docs))) return;
  from.host.files.copy(from.path(Docs), to.host.files, to.path(Docs));
  to.host.files.remove(to.path(Docs) + "/.Zolvar");
  to.host.files.remove(to.path(Docs) + "/.zolvar-aside");
  to.host.files.flush();
  note("copied by hand");
}

/// Makes something at the path, where nothing of another kind may lie, in a folder.
void ScheduleRun::make(SimulatedPeer& peer, const std::string& path, FileKind kind,
                       const std::function<void(const std::string& path)>& making) {
  auto& files = peer.host.files;
  const std::string absolute = peer.path(path);
  std::string inWay;
  for (std::size_t at = peer.path(Docs).size() + 1; at < absolute.size(); ++at) {
    if (absolute[at] != '/') continue;
    const auto above = files.attributesOf(absolute.substr(0, at));
    if (above && above->kind != FileKind::Directory) {
      inWay = absolute.substr(0, at);
      break;
    }
  }
  const auto here = files.attributesOf(absolute);
  if (inWay.empty() && here && here->kind != kind) inWay = absolute;
  if (!inWay.empty()) {
    if (kind != FileKind::Other) note("kind change");
    files.remove(inWay);
  }
  making(absolute);
}

/// Gives a file a time of its own when nobody looks at it or at the other one of its second, since
/// the program does not run there or the folder is not subscribed to.
void ScheduleRun::keepApart(SimulatedPeer& author, const std::string& path) {
  auto& files = author.host.files;
  const std::string place = author.path(path);
  const auto made = files.attributesOf(place);
  if (!made) return;
  const std::string relative = path.substr(Docs.size() + 1);
  const auto isUnseenAt = [&relative](SimulatedPeer& peer) {
    if (!peer.isRunning() || peer.snapshot(Docs)->phase != PoolPhase::Active) return true;
    const auto missing = peer.missing(Docs);  // there it counts as what is wanted
    return std::find(missing.begin(), missing.end(), relative) != missing.end();
  };
  std::int64_t time = made->modTime;
  const auto isTaken = [&] {
    // The program itself gives the next second to one of two versions of one.
    for (std::int64_t near = time - 1; near <= time + 1; ++near) {
      const auto authors = timesOf_.find({path, near});
      if (authors == timesOf_.end()) continue;
      for (const auto& [name, wasUnseen] : authors->second) {
        const bool isUnseen =
            wasUnseen && (isUnseenAt(peer(name)) || contents_.isUnlogged(name, path, near));
        if (name != author.name() && (isUnseen || isUnseenAt(author))) return true;
      }
    }
    return false;
  };
  constexpr std::int64_t Step = 1009;
  while (isTaken() && made->kind != FileKind::Directory) time -= Step;
  timesOf_[{path, time}].try_emplace(author.name(), isUnseenAt(author));
  (*files.tree().resolve(place, false))->modTime = time;
  files.flush();
}

/// What was written here and not logged before the program ended, or the folder was left, may have
/// gone to others as another author's version of its second.
void ScheduleRun::endsLooking(SimulatedPeer& peer) {
  if (!keepsApart_) return;
  contents_.noteLogged(peer);
  for (auto& [file, authors] : timesOf_) {
    const auto author = authors.find(peer.name());
    const auto& [path, time] = file;
    if (author == authors.end() || !contents_.isUnlogged(peer.name(), path, time)) continue;
    author->second = true;
    if (authors.size() < 2 || contents_.isConfused(path, time)) continue;
    contents_.confuse(path, time);
    note("seconds left out");
  }
}

void ScheduleRun::change(SimulatedPeer& peer, const Words& words) {
  const std::string& verb = words[0];
  const std::string path = Docs + "/" + words[1];
  auto& files = peer.host.files;
  const std::string absolute = peer.path(path);
  const auto makeFolder = [&](const std::string& place) {
    (void)files.tree().makeDirectories(files.tree().root(), place.substr(1));
  };
  makeFolder(peer.path(Docs));
  for (auto slash = absolute.find('/', peer.path(Docs).size() + 1); slash != std::string::npos;
       slash = absolute.find('/', slash + 1)) {
    const auto above = files.attributesOf(absolute.substr(0, slash));
    const bool makes = verb == "write" || verb == "save" || verb == "mkdir" || verb == "link";
    if (above && above->kind == FileKind::Link && !makes) return;  // it would be elsewhere
  }
  contents_.willChange(peer);
  const auto old = files.attributesOf(absolute);
  const bool isFile = old && old->kind == FileKind::Regular;
  const auto write = [&](bool isSafe, std::int64_t time, const std::string& content) {
    make(peer, path, FileKind::Regular, [&](const std::string& place) {
      isSafe ? files.save(place, content, time) : files.write(place, content, time);
      files.flush();
      if (keepsApart_) keepApart(peer, path);
      contents_.wrote(peer, path, content);
    });
  };
  if (verb == "write" || verb == "save") {
    write(verb == "save", -1, contents_.make());
  } else if (verb == "keep" || verb == "lower") {
    const std::int64_t before = old ? old->modTime : peer.host.clock.now();
    const auto later = static_cast<std::int64_t>(words.size() > 2 ? whole(words[2]) : 0);
    write(words.size() > 2, before - later, contents_.make());
  } else if (verb == "samesize") {
    write(true, -1, contents_.make(isFile ? old->size : 0));
  } else if (verb == "recreate") {
    files.remove(absolute);
    write(false, -1, contents_.make());
    note("re-created at once");
  } else if (verb == "revert") {
    const auto [content, time] = contents_.earlier(peer, path);
    if (!content.empty()) write(true, time, content);
  } else if (verb == "touch") {
    if (isFile) write(false, -1, *files.readAll(absolute));
  } else if (verb == "erase") {
    files.remove(absolute);
  } else if (verb == "mkdir") {
    make(peer, path, FileKind::Directory, makeFolder);
  } else if (verb == "link") {
    make(peer, path, FileKind::Link, [&](const auto& place) {
      files.makeLink(place, words[2]);
      if (keepsApart_) keepApart(peer, path);
    });
  } else if (verb == "move") {
    const std::string to = Docs + "/" + words[2];
    const bool isInside = (to + "/").starts_with(path + "/") || (path + "/").starts_with(to + "/");
    if (!old || isInside) return;
    // Until it is logged there it would count as the version whose time it has.
    if (keepsApart_ && timesOf_.contains({to, old->modTime})) return;
    make(peer, to, FileKind::Other, [&](const auto& place) {
      if (!files.exists(absolute)) return;  // it was in the way itself
      files.move(absolute, place);
    });
    if (old->kind == FileKind::Regular && files.exists(peer.path(to))) {
      contents_.moved(peer, to);
    }
  } else {
    throw std::invalid_argument("Unknown operation: " + verb);
  }
  contents_.changed(peer);
}

std::string ScheduleRun::problems() {
  testing::TestPartResultArray parts;
  const testing::ScopedFakeTestPartResultReporter reporter(
      testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &parts);
  try {
    for (const Operation& operation : schedule_.operations) {
      pass(operation.wait);
      if (getenv("ZOLVAR_TEST_LOG") != nullptr) {
        fmt::print(stderr, ">> {:.1f} {} {}\n", net.world.clock.now() - 1'750'000'000,
                   operation.peer, fmt::join(operation.words, " "));
      }
      mayDie([&] { perform(operation); });
      check("After " + fmt::format("{}", fmt::join(operation.words, " ")));
      if (!problems_.empty()) return problems_;
    }
    endPlans();
    for (SimulatedPeer* peer : net.peers()) restart(*peer);
    pass(120);
    for (SimulatedPeer* peer : net.peers()) {
      if (!peer->isRunning() || peer->snapshot(Docs)->phase == PoolPhase::Inactive) continue;
      peer->operations().setPassword(Docs, password_, [](const Result<>&) {});
    }
    // First with the conflicts that are there, then with all of them decided.
    for (const bool isDecided : {false, true}) {
      int rounds = 0;
      do {
        settle();
        const auto isMissing = [](auto* peer) { return !peer->missing(Docs).empty(); };
        const auto peers = active();
        if (std::any_of(peers.begin(), peers.end(), isMissing)) {
          pass(1000);  // the longest pause before what is missing is looked for again
          settle();
        }
        if (++rounds > 60) problems_ += "Questions and decisions never end.\n";
        if (!problems_.empty()) return problems_;
      } while (answerAll(counters_["answer delete"] % 2 == 1) || giveUpUnreachable() ||
               (isDecided && resolveOne()));
      const std::string when = isDecided ? "In the end" : "Before conflicts are decided";
      check(when);
      checkSame(when);
      if (!isDecided) {
        for (SimulatedPeer* peer : active()) {
          if (!peer->conflicts(Docs).empty()) note("conflict in the end");
        }
      }
    }
    const std::string before = fingerprint();
    pass(Hour);
    if (problems_.empty() && fingerprint() != before) {
      problems_ =
          "An hour later something has changed:\n" + before + "\nand then\n" + fingerprint();
    }
  } catch (const std::exception& exception) {
    problems_ += std::string("Exception: ") + exception.what() + "\n";
  }
  countCutLoads();
  counters_["worked meanwhile"] = *pauses_;
  for (int i = 0; i < parts.size(); ++i) {
    problems_ += std::string(parts.GetTestPartResult(i).message()) + "\n";
  }
  return problems_;
}

}  // namespace zolvar
