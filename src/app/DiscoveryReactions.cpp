#include "app/DiscoveryReactions.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "app/ObserverList.h"
#include "app/SyncScheduler.h"
#include "net/KDParticipants.h"
#include "net/KDPeer.h"
#include "net/TxtCodec.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/KDFilePool.h"

namespace zolvar {

DiscoveryReactions::DiscoveryReactions(Platform& platform, NotificationCenter& center,
                                       const Pace& pace, KDPeer& peer, KDParticipants& participants,
                                       SyncScheduler& scheduler, ObserverList& observers)
    : platform_(platform),
      pace_(pace),
      peer_(peer),
      participants_(participants),
      scheduler_(scheduler),
      observers_(observers) {
  observations_.push_back(center.observe<NetServiceDidAddNotification>(
      [this](const auto& notification) { netServiceDidAdd(notification); }));
  observations_.push_back(center.observe<NetServiceDidRemoveNotification>(
      [this](const auto& notification) { netServiceDidRemove(notification); }));
  observations_.push_back(center.observe<NetServicesDidUpdateTXTRecordDataNotification>(
      [this](const auto& notification) { netServicesDidUpdateTXTRecordData(notification); }));
}

void DiscoveryReactions::netServiceDidAdd(const NetServiceDidAddNotification& added) {
  const std::string poolName = fullServiceName(added.txt);
  if (poolName.empty()) return;
  const auto participant = participants_.fromService(added.serviceName, added.txt);
  if (!participant) return;
  if (peer_.presence(poolName) == nullptr) {
    KDFilePool::Options options;
    options.userId = peer_.userId();
    options.pace = pace_;
    if (const auto pool = peer_.addPoolWithPath(poolName, options); !pool) {
      platform_.log.warning("Announced folder '{}' ignored. {}", poolName, pool.error().message());
      return;
    }
    observers_.tell([](auto& observer) { observer.poolListDidChange(); });
  }
  KDPoolPresence& presence = *peer_.presence(poolName);
  if (presence.addParticipant(participant)) {
    observers_.tell([&](auto& observer) { observer.poolDidChange(presence.pool()); });
  }
}

void DiscoveryReactions::netServiceDidRemove(const NetServiceDidRemoveNotification& removed) {
  const auto participant = participants_.fromService(removed.serviceName, removed.txt);
  if (!participant) return;
  auto* presence = peer_.presence(participant->poolName());
  if (presence == nullptr) return;
  presence->removeParticipant(participant);
  // A transfer from somebody else goes on; only the one that left cannot deliver any more.
  if (scheduler_.syncingParticipant() == participant && presence->pool().hasRunningTask()) {
    platform_.log.warning(
        "Currently sync'ing with peer {} while it was deannounced. Stopping client.",
        participant->description());
    presence->pool().terminateTask();
  }
  observers_.tell([&](auto& observer) { observer.poolDidChange(presence->pool()); });
}

void DiscoveryReactions::netServicesDidUpdateTXTRecordData(
    const NetServicesDidUpdateTXTRecordDataNotification& updated) {
  const auto participant = participants_.fromService(updated.serviceName, updated.txt);
  if (!participant || participant->isLocalParticipant()) return;
  platform_.log.debug("Checking announcement from remote participant: {}",
                      participant->description());
  auto* presence = peer_.presence(participant->poolName());
  if (presence == nullptr || !presence->hasParticipant(participant)) {
    std::vector<std::string> known;
    if (presence != nullptr) {
      for (const auto& other : presence->participants()) known.push_back(other->description());
    }
    platform_.log.warning(
        "Warning - netServicesDidUpdateTXTRecordData was unable to find particiant {} in pool "
        "participants {}. Ignoring TXT record.",
        participant->description(), known);
    return;
  }
  // A pool that waits for its own log takes it from whoever shows up.
  const bool isWanted = presence->pool().phase() == PoolPhase::Recovering ||
                        !presence->pool().snapshot()->missing->empty() ||
                        presence->needsToSync(updated.txt, *participant);
  if (isWanted) scheduler_.syncWithParticipant(participant);
  observers_.tell([&](auto& observer) { observer.poolDidChange(presence->pool()); });
}

}  // namespace zolvar
