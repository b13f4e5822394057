#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "app/SyncQueue.h"
#include "platform/RunLoop.h"
#include "pool/Pace.h"
#include "pool/PoolNotifications.h"
#include "util/NotificationCenter.h"

namespace zolvar {

class KDPoolPresence;
class ObserverList;
struct Platform;

/// Decides who is synced when: one queue, and at most one sync at any moment over all pools. Looks
/// at the queue when something is queued, by a timer, and a moment after each sync's end. Owned by
/// the application; everything handed in outlives it. Main thread.
class SyncScheduler {
 public:
  /// What the scheduler asks of its owner.
  class Owner {
   public:
    virtual ~Owner() = default;
    /// Null when there is no such pool.
    virtual KDPoolPresence* presence(const std::string& poolName) = 0;
    virtual unsigned clientBandwidthLimit() = 0;
    /// A sync of the pool ended with everything that was wanted of the logs.
    virtual void completeActivation(KDFilePool& pool) = 0;
    /// Nothing of the pool is synced meanwhile.
    [[nodiscard]] virtual bool isPaused(const std::string& /*poolName*/) const { return false; }
  };
  using Participant = SyncQueue::Participant;

  SyncScheduler(Platform& platform, NotificationCenter& center, const Pace& pace, Owner& owner,
                ObserverList& observers);
  ~SyncScheduler();

  /// Starts the queue's timer.
  void start();
  /// Ends the timer; no further sync is started.
  void stop();

  /// Queues one participant, due at once. Requires: not null ("participant != nil").
  void syncWithParticipant(const Participant& participant);
  void syncWithAllParticipantsInPool(const KDPoolPresence& presence);
  /// Starts the next sync when idle and somebody is due; true when one was started.
  bool checkParticipantQueueAndSyncIfNeeded();
  /// Tries the pool's waiting participants at once; a refused password is told anew.
  void retryPool(const std::string& poolName);
  /// Takes a pool that is being left out of the queue; its running sync is given up.
  void forgetPool(const std::string& poolName);
  /// Gives up the pool's running sync; what is queued stays so.
  void giveUpSync(const std::string& poolName);
  void removeFromQueue(const Participant& participant) { queue_.removeAll(participant); }

  [[nodiscard]] const Participant& syncingParticipant() const { return syncing_; }
  [[nodiscard]] bool isSyncing(const ParticipantAddress& participant) const;
  [[nodiscard]] const SyncQueue& queue() const { return queue_; }

 private:
  void enqueue(const Participant& participant);
  [[nodiscard]] bool isReady(const KDParticipant& participant);
  void startSync(const Participant& participant, KDPoolPresence& presence);
  /// True when the participant announces no password and we have one: nothing is run then.
  bool refusesUnprotected(const Participant& participant, KDPoolPresence& presence);
  void fileSyncDidEnd(const KDSyncDidEndNotification& end);
  void react(const KDSyncDidEndNotification& end, const Participant& participant);
  void reactToSuccess(const KDSyncDidEndNotification& end, const Participant& participant);
  void reactToPasswordFailure(KDFilePool& pool, const Participant& participant);
  void checkLater();

  Platform& platform_;
  const Pace pace_;
  Owner& owner_;
  ObserverList& observers_;
  SyncQueue queue_;
  Participant syncing_;
  std::set<Participant> passwordFailures_;  ///< told about, not yet synced with since
  std::vector<NotificationCenter::Observation> observations_;
  RunLoop::Id timer_ = 0;
  RunLoop::Id check_ = 0;
  bool isStopped_ = false;
};

}  // namespace zolvar
