#pragma once

#include <vector>

#include "net/NetNotifications.h"
#include "util/NotificationCenter.h"

namespace zolvar {

class KDParticipants;
class KDPeer;
class KDPoolPresence;
class ObserverList;
class SyncScheduler;
struct Pace;
struct Platform;

/// Turns what is announced on the network into pools, participants and queued syncs. A pool that
/// others announce and we do not have is made by its name alone: nothing else of it comes from the
/// network. Owned by the application; everything handed in outlives it. Main thread.
class DiscoveryReactions {
 public:
  DiscoveryReactions(Platform& platform, NotificationCenter& center, const Pace& pace, KDPeer& peer,
                     KDParticipants& participants, SyncScheduler& scheduler,
                     ObserverList& observers);

 private:
  void netServiceDidAdd(const NetServiceDidAddNotification& added);
  void netServiceDidRemove(const NetServiceDidRemoveNotification& removed);
  void netServicesDidUpdateTXTRecordData(
      const NetServicesDidUpdateTXTRecordDataNotification& updated);

  Platform& platform_;
  const Pace& pace_;
  KDPeer& peer_;
  KDParticipants& participants_;
  SyncScheduler& scheduler_;
  ObserverList& observers_;
  std::vector<NotificationCenter::Observation> observations_;
};

}  // namespace zolvar
