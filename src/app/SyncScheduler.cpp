#include "app/SyncScheduler.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "app/ObserverList.h"
#include "net/KDParticipant.h"
#include "net/KDPoolPresence.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Random.h"
#include "pool/KDFilePool.h"
#include "pool/KDPoolSync.h"
#include "util/InconsistencyError.h"

namespace zolvar {
namespace {

// The transfer tool's exit codes that are treated apart, and our own for a refused password.
constexpr int Success = 0;
constexpr int ProtocolNotStarted = 5;  // too many connections over there
constexpr int StreamError = 12;
constexpr int PartialTransfer = 23;
constexpr int AuthenticationFailed = 37;

std::vector<std::string> descriptions(const KDPoolPresence::Participants& participants) {
  std::vector<std::string> texts;
  for (const auto& participant : participants) texts.push_back(participant->description());
  return texts;
}

}  // namespace

SyncScheduler::SyncScheduler(Platform& platform, NotificationCenter& center, const Pace& pace,
                             Owner& owner, ObserverList& observers)
    : platform_(platform), pace_(pace), owner_(owner), observers_(observers) {
  observations_.push_back(center.observe<KDSyncDidEndNotification>(
      [this](const auto& notification) { fileSyncDidEnd(notification); }));
  observations_.push_back(center.observe<KDCompleteSyncNeeded>([this](const auto& notification) {
    auto* presence = owner_.presence(notification.pool->name());
    if (presence != nullptr && &presence->pool() == notification.pool) {
      syncWithAllParticipantsInPool(*presence);
    }
  }));
}

SyncScheduler::~SyncScheduler() { stop(); }

void SyncScheduler::start() {
  timer_ =
      platform_.runLoop.every(pace_.queueTimer, [this] { checkParticipantQueueAndSyncIfNeeded(); });
}

void SyncScheduler::stop() {
  isStopped_ = true;
  platform_.runLoop.cancel(timer_);
  platform_.runLoop.cancel(check_);
}

void SyncScheduler::enqueue(const Participant& participant) {
  if (!participant->speaksOurProtocol()) {
    platform_.log.warning("Warning: Sync with {} skipped due to different protocol versions.",
                          participant->description());
    return;
  }
  participant->resetLastSyncDate();
  queue_.append(participant);
}

void SyncScheduler::syncWithParticipant(const Participant& participant) {
  if (!participant) throw InconsistencyError("participant != nil");
  enqueue(participant);
  checkParticipantQueueAndSyncIfNeeded();
}

void SyncScheduler::syncWithAllParticipantsInPool(const KDPoolPresence& presence) {
  platform_.log.debug("Queueing sync with all participants {} in pool {}",
                      descriptions(presence.participants()), presence.pool().description());
  for (const auto& participant : presence.participants()) enqueue(participant);
  checkParticipantQueueAndSyncIfNeeded();
}

bool SyncScheduler::isReady(const KDParticipant& participant) {
  auto* presence = owner_.presence(participant.poolName());
  if (presence == nullptr || owner_.isPaused(participant.poolName())) return false;
  const PoolPhase phase = presence->pool().phase();
  const PasswordState password = presence->pool().passwordState();
  return (phase == PoolPhase::Active || phase == PoolPhase::Recovering) &&
         (password == PasswordState::None || password == PasswordState::Set);
}

bool SyncScheduler::checkParticipantQueueAndSyncIfNeeded() {
  if (syncing_ || isStopped_) return false;
  const double pause = pace_.thresholdLeast + pace_.thresholdSpread * platform_.random.uniform();
  for (;;) {
    const Participant next = queue_.takeNext(
        platform_.clock.now(), pause, [this](const auto& waiting) { return isReady(waiting); },
        [this](const auto& waiting) {
          platform_.log.debug("Sync with {} postponed.", waiting.description());
        });
    if (!next) return false;
    KDPoolPresence& presence = *owner_.presence(next->poolName());  // it was ready just now
    if (refusesUnprotected(next, presence)) continue;
    startSync(next, presence);
    return true;
  }
}

bool SyncScheduler::refusesUnprotected(const Participant& participant, KDPoolPresence& presence) {
  if (presence.pool().passwordState() != PasswordState::Set || participant->passwordRequired()) {
    return false;
  }
  participant->setLastSyncDate(platform_.clock.now());
  reactToPasswordFailure(presence.pool(), participant);
  observers_.tell([&](auto& observer) {
    observer.syncDidEnd({presence.pool(),
                         participant->address(),
                         AuthenticationFailed,
                         statusText(AuthenticationFailed),
                         {}});
    observer.poolDidChange(presence.pool());
  });
  return true;
}

void SyncScheduler::startSync(const Participant& participant, KDPoolPresence& presence) {
  syncing_ = participant;
  platform_.log.debug("Syncing with with {}...", participant->description());
  participant->setLastSyncDate(platform_.clock.now());
  KDFilePool& pool = presence.pool();
  pool.setBandwidthLimit(owner_.clientBandwidthLimit());
  observers_.tell([&](auto& observer) { observer.syncDidStart(pool, *participant); });
  pool.syncWithParticipant(participant->address());
}

void SyncScheduler::retryPool(const std::string& poolName) {
  std::erase_if(passwordFailures_,
                [&](const auto& failed) { return failed->poolName() == poolName; });
  if (const auto* presence = owner_.presence(poolName)) {
    for (const auto& participant : presence->participants()) participant->resetLastSyncDate();
  }
  checkParticipantQueueAndSyncIfNeeded();
}

void SyncScheduler::forgetPool(const std::string& poolName) {
  queue_.removePool(poolName);
  std::erase_if(passwordFailures_,
                [&](const auto& failed) { return failed->poolName() == poolName; });
  if (syncing_ && syncing_->poolName() == poolName) {
    platform_.log.warning("Warning: Deactivation of pool {} resets syncingParticipant", poolName);
    syncing_.reset();
    checkLater();
  }
}

void SyncScheduler::giveUpSync(const std::string& poolName) {
  if (!syncing_ || syncing_->poolName() != poolName) return;
  platform_.log.debug("The sync with {} is given up.", syncing_->description());
  const Participant given = std::move(syncing_);
  syncing_.reset();
  if (auto* presence = owner_.presence(poolName)) presence->pool().terminateTask();
  enqueue(given);
  checkLater();
}

bool SyncScheduler::isSyncing(const ParticipantAddress& participant) const {
  return syncing_ && syncing_->address() == participant;
}

void SyncScheduler::fileSyncDidEnd(const KDSyncDidEndNotification& end) {
  if (!isSyncing(end.KDParticipant)) {
    platform_.log.warning("SyncingParticipant not set in notification userInfo: {}",
                          end.KDParticipant.description());
    checkLater();
    return;
  }
  const Participant participant = std::move(syncing_);
  syncing_.reset();
  react(end, participant);
  observers_.tell([&](auto& observer) {
    observer.syncDidEnd({*end.pool, end.KDParticipant, end.KDTerminationStatus, end.KDErrorMessage,
                         end.KDLoadedFiles});
  });
  checkLater();
}

void SyncScheduler::react(const KDSyncDidEndNotification& end, const Participant& participant) {
  const int status = end.KDTerminationStatus;
  if (status == Success || status == PartialTransfer) {
    reactToSuccess(end, participant);
    return;
  }
  if (status == AuthenticationFailed) {
    reactToPasswordFailure(*end.pool, participant);
  } else if (status == ProtocolNotStarted) {
    platform_.log.warning("Protocol error detected. Ignored - probably max connections exceeded.");
  } else {
    platform_.log.warning("Sync Error: {}", end.KDErrorMessage);
    if (status == StreamError) platform_.log.warning("Socket error detected. Ignored.");
  }
  // Who has left is not tried again for ever; coming back queues it anew.
  auto* presence = owner_.presence(participant->poolName());
  if (presence == nullptr || !presence->hasParticipant(participant)) queue_.removeAll(participant);
}

void SyncScheduler::reactToSuccess(const KDSyncDidEndNotification& end,
                                   const Participant& participant) {
  // A pool that waits for its own log needs every log that was listed, so a part is not enough.
  if (end.pool->phase() == PoolPhase::Recovering) {
    if (end.KDTerminationStatus != Success) return;
    owner_.completeActivation(*end.pool);
  }
  if (participant->isIgnored()) participant->setIsIgnored(false);
  passwordFailures_.erase(participant);
  queue_.removeFirst(participant);
}

void SyncScheduler::reactToPasswordFailure(KDFilePool& pool, const Participant& participant) {
  platform_.log.warning("Auth failed syncing {} with {}", pool.description(),
                        participant->description());
  if (participant->isIgnored() || !passwordFailures_.insert(participant).second) return;
  observers_.tell([&](auto& observer) { observer.passwordDidFail(pool, *participant); });
}

void SyncScheduler::checkLater() {
  platform_.runLoop.cancel(check_);
  if (isStopped_) return;
  check_ =
      platform_.runLoop.after(pace_.afterSync, [this] { checkParticipantQueueAndSyncIfNeeded(); });
}

}  // namespace zolvar
