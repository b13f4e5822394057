#include "addressbook/CardFolder.h"

#include <algorithm>
#include <deque>

#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr const char* FolderKey = "AddressBookFolder";
constexpr const char* KnownKey = "KnownAddressBookFolder";  // what was there when it was read last
constexpr const char* DefaultName = "contacts";
constexpr const char* DefaultOwnCard = "me.vcf";

// Seconds.
constexpr double Gathering = 0.3;    ///< from the first sign of a change to reading
constexpr double BetweenTries = 30;  ///< of what could not be reached or written
constexpr double UntilMade = 5;      ///< between looks whether somebody made the folder
constexpr double BetweenLooks = 60;  ///< where the folder cannot be observed

}  // namespace

struct CardFolder::Inside {
  std::unique_ptr<CardFiles> files;
  std::deque<CardWrite> writes;
};

struct CardFolder::Outcome {
  std::optional<KeptCards> all;  ///< the folder was opened
  bool isUnmade = false;         ///< it does not exist yet, so it holds nothing
  std::optional<CardFiles::Changes> changes;
  std::optional<Failure> lost;    ///< the folder is not there
  std::vector<Failure> failures;  ///< of writes
  bool isWriteWaiting = false;    ///< to be tried again
  std::size_t written = 0;
  bool hasCards = false;
  std::uint64_t device = 0;
  std::map<std::string, std::string> idsByFile;
};

std::string CardFolder::pathFor(Platform& platform) {
  std::string path = platform.defaults.string(FolderKey).value_or("");
  if (path.starts_with("~/")) path = joinPath(platform.fileSystem.homeFolder(), path.substr(2));
  if (!path.starts_with('/')) {
    const auto support = platform.fileSystem.supportFolder();
    path = joinPath(support ? parentPath(*support) : platform.fileSystem.homeFolder(), DefaultName);
  }
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

CardFolder::CardFolder(Platform& platform, std::string path)
    : platform_(platform),
      path_(std::move(path)),
      lane_(platform.lanes.start("contacts")),
      inside_(std::make_shared<Inside>()) {}

CardFolder::~CardFolder() {
  *isAlive_ = false;
  for (const auto timer : {openTimer_, lookTimer_, writeTimer_}) platform_.runLoop.cancel(timer);
}

void CardFolder::start(Events events) {
  events_ = std::move(events);
  open();
}

/// Runs the job on the lane and takes what it brings about on the main thread.
void CardFolder::post(std::function<Outcome(Inside&)> job) {
  lane_->post([this, job = std::move(job), inside = inside_, &runLoop = platform_.runLoop,
               alive = std::weak_ptr(isAlive_)] {
    auto outcome = std::make_shared<Outcome>(job(*inside));
    if (inside->files) {
      outcome->hasCards = !inside->files->cards().empty();
      outcome->device = inside->files->identity().device;
      outcome->idsByFile = inside->files->idsByFile();
    }
    runLoop.post([this, outcome, alive] {
      if (const auto is = alive.lock(); is && *is) take(std::move(*outcome));
    });
  });
}

void CardFolder::after(double seconds, RunLoop::Id& timer, void (CardFolder::*task)()) {
  if (timer != 0) return;
  timer = platform_.runLoop.after(seconds, [this, &timer, task] {
    timer = 0;
    (this->*task)();
  });
}

void CardFolder::open() {
  const auto known = platform_.defaults.dictionary(KnownKey);
  const auto value = [&](const char* key) {
    const auto found = known.find(key);
    return found == known.end() ? std::string() : found->second;
  };
  const bool wasSeen = value("path") == path_;
  const bool hadCards = wasSeen && value("hasCards") == "yes";
  post([&fileSystem = platform_.fileSystem, path = path_, wasSeen, hadCards,
        device = value("device")](Inside& inside) {
    Outcome outcome;
    inside.files.reset();
    const auto away = [&](const Failure& failure) {
      inside.files.reset();
      outcome.lost = failure;
      return std::move(outcome);
    };
    if (!wasSeen && !fileSystem.isFolder(path)) {
      outcome.all.emplace();
      outcome.isUnmade = true;
      return outcome;
    }
    auto folder = fileSystem.open(path);
    if (!folder) return away(folder.error());
    inside.files = std::make_unique<CardFiles>(std::move(*folder), path);
    auto scanned = inside.files->scan({});
    if (!scanned) return away(scanned.error());
    if (hadCards && inside.files->cards().empty() &&
        device != std::to_string(inside.files->identity().device)) {
      return away({FailureKind::Transient, "read the contacts", path,
                   "it is empty and on another disk than before"});
    }
    outcome.all = inside.files->cards();
    return outcome;
  });
}

void CardFolder::look() {
  if (!isOpen_) return;
  if (isPolling_) after(BetweenLooks, lookTimer_, &CardFolder::look);
  post([&fileSystem = platform_.fileSystem, path = path_,
        suspects = std::exchange(suspects_, {})](Inside& inside) {
    Outcome outcome;
    if (!inside.files) return outcome;
    const auto there = fileSystem.identity(path);
    if (!there || *there != inside.files->identity()) {
      outcome.lost = there ? Failure{FailureKind::Absent, "read the contacts", path,
                                     "another folder has taken its place"}
                           : there.error();
    } else if (auto scanned = inside.files->scan(suspects)) {
      outcome.changes = std::move(*scanned);
    } else {
      outcome.lost = scanned.error();
    }
    if (outcome.lost) inside.files.reset();
    return outcome;
  });
}

void CardFolder::write(std::vector<CardWrite> writes) {
  post([writes = std::make_shared<std::vector<CardWrite>>(std::move(writes))](Inside& inside) {
    std::move(writes->begin(), writes->end(), std::back_inserter(inside.writes));
    return Outcome();
  });
  writeQueued();
}

/// In their order: one that may work later keeps those behind it waiting.
void CardFolder::writeQueued() {
  post([&fileSystem = platform_.fileSystem, path = path_, isUnmade = isUnmade_](Inside& inside) {
    Outcome outcome;
    outcome.changes.emplace();
    if (isUnmade && !inside.files && !inside.writes.empty()) {
      const auto made = fileSystem.makeFolder(path);
      auto folder = fileSystem.open(path);
      if (made && folder) {
        inside.files = std::make_unique<CardFiles>(std::move(*folder), path);
        (void)inside.files->scan({});
        outcome.all.emplace();
      } else {
        outcome.failures.push_back(made ? folder.error() : made.error());
      }
    }
    while (!inside.writes.empty()) {
      outcome.isWriteWaiting = !inside.files;
      if (!inside.files) break;
      const auto written = inside.files->write(inside.writes.front(), *outcome.changes);
      if (!written) {
        outcome.failures.push_back(written.error());
        outcome.isWriteWaiting = written.error().kind == FailureKind::Transient;
        if (outcome.isWriteWaiting) break;
      }
      inside.writes.pop_front();
      ++outcome.written;
    }
    if (outcome.all) outcome.all = inside.files->cards();
    return outcome;
  });
}

void CardFolder::take(Outcome outcome) {
  for (const auto& failure : outcome.failures) platform_.log.warning("{}", failure.message());
  if (outcome.isWriteWaiting) after(BetweenTries, writeTimer_, &CardFolder::writeQueued);
  if (outcome.lost) {
    isOpen_ = false;
    observation_.reset();
    if (!std::exchange(isTold_, true)) platform_.log.warning("{}", outcome.lost->message());
    after(BetweenTries, openTimer_, &CardFolder::open);
    events_.lost(*outcome.lost);
    return;
  }
  if (!isOpen_ && !outcome.all) return;  // what was on its way when the folder was lost
  idsByFile_ = std::move(outcome.idsByFile);
  if (outcome.all) isUnmade_ = outcome.isUnmade;
  if (!isUnmade_) remember(outcome);
  if (outcome.written > 0) events_.written(outcome.written);
  if (outcome.all) {
    isOpen_ = true;
    isTold_ = false;
    if (isUnmade_) {
      after(UntilMade, openTimer_, &CardFolder::open);
    } else {
      observe();
      after(1, lookTimer_, &CardFolder::look);  // for what changed before it was observed
    }
    events_.read(std::move(*outcome.all));
  } else if (outcome.changes &&
             (!outcome.changes->changed.empty() || !outcome.changes->removed.empty())) {
    events_.changed(std::move(outcome.changes->changed), std::move(outcome.changes->removed));
  }
}

void CardFolder::remember(const Outcome& outcome) {
  const std::map<std::string, std::string> seen = {{"path", path_},
                                                   {"device", std::to_string(outcome.device)},
                                                   {"hasCards", outcome.hasCards ? "yes" : "no"}};
  if (platform_.defaults.dictionary(KnownKey) != seen) {
    platform_.defaults.setDictionary(KnownKey, seen);
  }
}

void CardFolder::observe() {
  const auto poll = [this](const Failure& failure) {
    platform_.log.debug("{}", failure.message());
    isPolling_ = true;
    after(BetweenLooks, lookTimer_, &CardFolder::look);
  };
  isPolling_ = false;
  auto observation = platform_.fileSystem.observe(
      path_,
      [this](const FileEvent& event) {
        for (const auto& path : {event.path1, event.path2}) {
          suspects_.emplace(lastPathComponent(path));
        }
        after(Gathering, lookTimer_, &CardFolder::look);
      },
      poll);
  if (observation) {
    observation_ = std::move(*observation);
  } else {
    poll(observation.error());
  }
}

std::string CardFolder::ownCard(const std::string& setting) const {
  const auto found = idsByFile_.find(setting.empty() ? DefaultOwnCard : setting);
  return found == idsByFile_.end() ? std::string() : found->second;
}

}  // namespace zolvar
