#include "app/ConflictDecisions.h"

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

#include "app/Operations.h"

namespace zolvar {

std::optional<VersionId> chosenVersion(const Conflict& conflict, const ConflictChoice& choice) {
  using enum ConflictChoice::Kind;
  const auto fits = [&](const ConflictVersion& version) {
    switch (choice.kind) {
      case KeepMine:
        return version.isLocal;
      case UseTheirs:
        return !version.isLocal;
      case FromPerson:
        return version.id.userId == choice.userId;
    }
    return false;
  };
  const auto& versions = conflict.versions;  // newest first
  auto found = std::find_if(versions.begin(), versions.end(), fits);
  if (found == versions.end() && choice.kind == FromPerson) {
    found = std::find_if(versions.begin(), versions.end(), [&](const auto& version) {
      return std::binary_search(version.selectedBy.begin(), version.selectedBy.end(),
                                choice.userId);
    });
  }
  if (found == versions.end()) return std::nullopt;
  return found->id;
}

std::vector<std::string> peopleIn(const std::vector<Conflict>& conflicts) {
  std::set<std::string> people;
  for (const auto& conflict : conflicts) {
    for (const auto& version : conflict.versions) {
      people.insert(version.id.userId);
      people.insert(version.selectedBy.begin(), version.selectedBy.end());
    }
  }
  return {people.begin(), people.end()};
}

/// One call of an operation. The steps of a file follow each other; after one that failed the
/// file's others are left out.
struct ConflictDecisions::Step {
  enum class Kind { Keep, Use, Drop, Restore } kind = Kind::Keep;
  std::string path;
  std::string version;  ///< an id; of Restore: of the kept one
};

struct ConflictDecisions::Run {
  std::string poolName;
  std::deque<Step> steps;
  std::optional<std::string> keptId;  ///< of the file whose steps run
  Report report;
  Done done;
  bool isLooping = false;  ///< outcomes that come at once must not nest
};

namespace {

const ConflictVersion* localVersion(const Conflict& conflict) {
  const auto found = std::find_if(conflict.versions.begin(), conflict.versions.end(),
                                  [](const auto& version) { return version.isLocal; });
  return found == conflict.versions.end() ? nullptr : &*found;
}

}  // namespace

void ConflictDecisions::settle(const std::string& poolName, const std::vector<Conflict>& conflicts,
                               const ConflictChoice& choice, Done done) {
  std::vector<Step> steps;
  for (const auto& conflict : conflicts) {
    const auto wanted = chosenVersion(conflict, choice);
    if (!wanted) continue;
    const ConflictVersion* local = localVersion(conflict);
    if (local == nullptr || local->id != *wanted) {
      if (local != nullptr) steps.push_back({Step::Kind::Keep, conflict.path, {}});
      steps.push_back({Step::Kind::Use, conflict.path, wanted->text()});
    }
    for (const auto& version : conflict.versions) {
      if (version.id == *wanted) continue;
      steps.push_back({Step::Kind::Drop, conflict.path, version.id.text()});
    }
  }
  start(poolName, std::move(steps), std::move(done));
}

void ConflictDecisions::use(const std::string& poolName, const Conflict& conflict,
                            const VersionId& version, Done done) {
  std::vector<Step> steps;
  if (localVersion(conflict) != nullptr) steps.push_back({Step::Kind::Keep, conflict.path, {}});
  steps.push_back({Step::Kind::Use, conflict.path, version.text()});
  start(poolName, std::move(steps), std::move(done));
}

void ConflictDecisions::drop(const std::string& poolName, const Conflict& conflict,
                             const VersionId& version, Done done) {
  std::vector<Step> steps;
  const ConflictVersion* local = localVersion(conflict);
  if (local != nullptr && local->id == version) {
    steps.push_back({Step::Kind::Keep, conflict.path, {}});
  }
  steps.push_back({Step::Kind::Drop, conflict.path, version.text()});
  start(poolName, std::move(steps), std::move(done));
}

void ConflictDecisions::undo(const Undo& undo, Done done) {
  std::vector<Step> steps;
  for (const auto& file : undo.files) {
    steps.push_back({Step::Kind::Restore, file.path, file.keptId});
  }
  start(undo.poolName, std::move(steps), std::move(done));
}

void ConflictDecisions::start(const std::string& poolName, std::vector<Step> steps, Done done) {
  auto run = std::make_shared<Run>();
  run->poolName = run->report.undo.poolName = poolName;
  run->steps.assign(steps.begin(), steps.end());
  run->done = std::move(done);
  next(run);
}

void ConflictDecisions::next(const std::shared_ptr<Run>& run) {
  if (std::exchange(run->isLooping, true)) return;
  while (!run->steps.empty()) {
    const std::size_t left = run->steps.size();
    take(run);
    if (run->steps.size() == left) {  // its outcome comes later
      run->isLooping = false;
      return;
    }
  }
  run->done(run->report);
}

void ConflictDecisions::take(const std::shared_ptr<Run>& run) {
  const Step step = run->steps.front();
  const auto told = [this, alive = std::weak_ptr<bool>(alive_), run](const Result<>& outcome) {
    if (!alive.expired()) ended(run, outcome);
  };
  switch (step.kind) {
    case Step::Kind::Keep:
      // Where nothing lies, or nothing can be kept, the content still goes to the Trash.
      return operations_.keep(run->poolName, step.path, [run, told](const auto& kept) {
        run->keptId = kept ? std::optional(*kept) : std::nullopt;
        told({});
      });
    case Step::Kind::Use:
      return operations_.useVersion(run->poolName, step.path, step.version, told);
    case Step::Kind::Drop:
      return operations_.dropVersion(run->poolName, step.path, step.version, told);
    case Step::Kind::Restore:
      return operations_.restore(run->poolName, step.path, step.version, told);
  }
}

void ConflictDecisions::ended(const std::shared_ptr<Run>& run, const Result<>& outcome) {
  const Step step = run->steps.front();
  run->steps.pop_front();
  const bool isTaken = outcome && (step.kind == Step::Kind::Use || step.kind == Step::Kind::Drop);
  if (isTaken && run->keptId) {
    run->report.undo.files.push_back({step.path, *run->keptId});
    run->keptId.reset();
  }
  if (!outcome) {
    ++run->report.problems;
    if (!run->report.firstProblem) run->report.firstProblem = outcome.error();
    while (!run->steps.empty() && run->steps.front().path == step.path) run->steps.pop_front();
    run->keptId.reset();
  } else if (run->steps.empty() || run->steps.front().path != step.path) {
    ++run->report.settled;
  }
  next(run);
}

}  // namespace zolvar
