#include "app/SyncWait.h"

#include <set>

#include "app/Application.h"
#include "app/Contacts.h"
#include "app/Pauses.h"
#include "net/KDParticipant.h"

namespace zolvar {
namespace {

constexpr int TooManyConnections = 5;

}  // namespace

SyncWait::SyncWait(Application& application, std::string poolName, Callbacks callbacks)
    : application_(application), poolName_(std::move(poolName)), callbacks_(std::move(callbacks)) {
  application_.addObserver(*this);
}

SyncWait::~SyncWait() { application_.removeObserver(*this); }

void SyncWait::start() {
  const KDPoolPresence* presence = application_.peer().presence(poolName_);
  if (presence == nullptr) return finish(refusal("The folder is gone."));
  for (const auto& participant : presence->participants()) {
    if (participant->isLocalParticipant()) continue;
    if (!participant->speaksOurProtocol()) {  // it is never synced with
      outcome_.failed.push_back(
          {participant->userId(), application_.contacts().of(*participant).reason});
      continue;
    }
    // A sync that runs already may have begun before the change that its caller waits for.
    const bool runs = application_.scheduler().isSyncing(participant->address());
    endsToCome_[participant->address().description()] = runs ? 2 : 1;
  }
  application_.scheduler().syncWithAllParticipantsInPool(*presence);
  finishWhenDone();
}

void SyncWait::syncDidEnd(const SyncReport& report) {
  if (report.pool.name() != poolName_ || report.status == TooManyConnections) return;
  const auto waited = endsToCome_.find(report.participant.description());
  if (waited == endsToCome_.end() || --waited->second > 0) return;
  endsToCome_.erase(waited);
  if (report.isSuccess()) {
    outcome_.synced.push_back(report.participant.userId());
  } else {
    outcome_.failed.push_back({report.participant.userId(), report.errorMessage});
  }
  finishWhenDone();
}

void SyncWait::poolDidChange(KDFilePool& pool) {
  if (pool.name() != poolName_ || isFinished_) return;
  if (const auto progress = pool.progress(); progress && callbacks_.progressed) {
    callbacks_.progressed(*progress);
  }
  if (application_.pauses().isPaused(poolName_)) {
    return finish(refusal("The folder was paused before the sync had ended."));
  }
  const KDPoolPresence* presence = application_.peer().presence(poolName_);
  if (presence == nullptr) return;
  std::set<std::string> present;
  for (const auto& participant : presence->participants()) {
    present.insert(participant->address().description());
  }
  std::erase_if(endsToCome_, [&](const auto& waited) { return !present.contains(waited.first); });
  finishWhenDone();
}

void SyncWait::poolListDidChange() {
  const auto pool = application_.peer().poolNamed(poolName_);
  if (!pool || pool->phase() == PoolPhase::Inactive || pool->phase() == PoolPhase::Leaving) {
    finish(refusal("The folder was left before the sync had ended."));
  }
}

void SyncWait::finishWhenDone() {
  if (!endsToCome_.empty()) return;
  const auto pool = application_.peer().poolNamed(poolName_);
  if (pool) outcome_.missing = pool->snapshot()->missing->size();
  finish(outcome_);
}

void SyncWait::finish(Result<SyncOutcome> outcome) {
  if (std::exchange(isFinished_, true)) return;
  callbacks_.done(std::move(outcome));
  callbacks_.finished();
}

}  // namespace zolvar
