// The announcing half of KDPeer: what is published when, and who else says to be us.

#include <fmt/format.h>

#include "net/KDBonjour.h"
#include "net/KDPeer.h"
#include "net/ServerControl.h"
#include "platform/Log.h"
#include "platform/NetworkWatch.h"
#include "platform/Platform.h"
#include "util/InconsistencyError.h"

namespace zolvar {

namespace {

constexpr double PublishAgain = 30;  // seconds after a publication failed
constexpr int TwinFailures = 2;      // publications refused in a row: the name is somebody else's
/// A service of ours from an earlier run takes a moment to vanish from the network.
constexpr double SuspectTime = 15;  // seconds

}  // namespace

void KDPeer::observeAll() {
  observations_.push_back(center_.observe<KDPoolDidChangeCriticalData>(
      [this](const auto& change) { criticalPoolDataDidChange(change.pool); }));
  observations_.push_back(
      center_.observe<KDPoolAnnouncementDue>([this](const KDPoolAnnouncementDue& due) {
        KDPoolPresence* found = due.pool == nullptr ? nullptr : presence(*due.pool);
        if (found == nullptr) return;
        found->setAnnouncementNeeded();
        found->updateAnnouncement();
      }));
  observations_.push_back(center_.observe<NetServiceDidAddNotification>(
      [this](const auto& added) { netServiceDidAdd(added.serviceName, added.txt); }));
  observations_.push_back(center_.observe<NetServicesDidUpdateTXTRecordDataNotification>(
      [this](const auto& update) { didSeeAnnouncement(update.serviceName, update.txt); }));
  observations_.push_back(center_.observe<NetServiceErrorNotification>(
      [this](const auto& error) { netServiceDidFail(error.serviceName, error.failure); }));
  platform_.network.observe([this] { criticalPoolDataDidChange(nullptr); });
}

void KDPeer::announcePool(const std::string& poolName) {
  if (!isServerRunning()) throw InconsistencyError("Server not running.");
  if (KDPoolPresence* found = presence(poolName)) {
    publish(*found);
  } else {
    platform_.log.warning(
        "Pool with name '{}' not announced because this pool was not added to the receiver (peer).",
        poolName);
  }
}

void KDPeer::deannouncePool(const std::string& poolName) {
  if (KDPoolPresence* found = presence(poolName)) {
    found->revokeAnnouncement();
    failedPublications_.erase(poolName);
  } else {
    platform_.log.warning(
        "Anncouncement for pool with name '{}' not revoked because this pool was not added to the "
        "receiver (peer).",
        poolName);
  }
}

void KDPeer::reannounceAllPools() {
  if (!isServerRunning()) throw InconsistencyError("Server not running.");
  for (const auto& [name, found] : presences_) {
    if (found->pool().isActive()) publish(*found);
  }
}

void KDPeer::criticalPoolDataDidChange(KDFilePool* pool) {
  if (pool != nullptr && presence(*pool) == nullptr) return;
  if (pool != nullptr && (!pool->isActive() || isPaused(*pool))) deannouncePool(pool->name());
  const std::string name = pool == nullptr ? "" : pool->name();
  server_->restart([this, name](const Result<>&) {
    KDPoolPresence* found = name.empty() ? nullptr : presence(name);
    if (found != nullptr && isServerRunning() && found->pool().isActive()) announcePool(name);
  });
}

void KDPeer::serverDidChange(bool running, const std::string& trouble) {
  for (const auto& [name, found] : presences_) {
    if (running) {
      const auto& service = found->service();
      const bool isCurrent = service && service->port() == server_->port();
      if (servedNames_.contains(name) && found->pool().isActive() && !isCurrent) publish(*found);
    } else if (!trouble.empty()) {
      found->revokeAnnouncement();  // nobody can fetch from here now
    }
  }
  center_.post(KDServerDidChangeNotification{running, trouble});
}

/// Announces the pool or refreshes its announcement; withdraws it when the pool cannot be served.
void KDPeer::publish(KDPoolPresence& presence) {
  const std::string name = presence.pool().name();
  if (isPaused(presence.pool())) {
    presence.revokeAnnouncement();
    return;
  }
  if (const auto problem = servingProblem(presence)) {
    presence.revokeAnnouncement();
    if (presence.pool().passwordState() != PasswordState::Unknown) warn(presence, *problem);
    return;
  }
  const auto announced = presence.announceWithPort(server_->port());
  if (announced) {
    lookForOwnIdElsewhere(presence);
    return;
  }
  warn(presence, announced.error().message());
  publishLater(name);
}

void KDPeer::publishLater(const std::string& poolName) {
  after(PublishAgain, [this, poolName] {
    KDPoolPresence* found = presence(poolName);
    if (found == nullptr || found->isAnnounced()) return;
    if (found->pool().isActive() && isServerRunning()) publish(*found);
  });
}

void KDPeer::netServiceDidAdd(const std::string& serviceName, const TxtRecord& record) {
  if (!bonjour_.isOwnService(serviceName)) return;
  failedPublications_.erase(fullServiceName(record));
  toldProblems_.erase(fullServiceName(record));
}

void KDPeer::netServiceDidFail(const std::string& serviceName, const Failure& failure) {
  for (const auto& [name, found] : presences_) {
    if (!found->isAnnounced() || found->service()->name() != serviceName) continue;
    found->revokeAnnouncement();
    if (failure.kind == FailureKind::Refused && ++failedPublications_[name] >= TwinFailures) {
      tellOwnIdElsewhere(*found, serviceName);
    } else {
      warn(*found, failure.message());
      publishLater(name);
    }
    return;
  }
}

void KDPeer::didSeeAnnouncement(const std::string& serviceName, const TxtRecord& record) {
  const auto parts = parseServiceName(serviceName);
  KDPoolPresence* found = presence(fullServiceName(record));
  if (!parts || found == nullptr) return;
  const bool needsPassword = decodedUnsignedIntValue(record, txt::Password) != 0;
  for (const auto& participant : found->participants()) {
    if (participant->userId() == parts->userId() && participant->port() == parts->port) {
      participant->setPasswordRequired(needsPassword);
    }
  }
  if (found->pool().isActive()) suspectIfOwnId(*found, serviceName);
}

/// Looks through what was announced before the pool was active.
void KDPeer::lookForOwnIdElsewhere(KDPoolPresence& presence) {
  for (const auto& [serviceName, record] : bonjour_.announcements()) {
    if (fullServiceName(record) == presence.pool().name()) suspectIfOwnId(presence, serviceName);
  }
}

/// Our own id from another machine must stay for a while before it is told.
void KDPeer::suspectIfOwnId(KDPoolPresence& presence, const std::string& serviceName) {
  const auto parts = parseServiceName(serviceName);
  if (!parts || parts->userId() != presence.pool().userId()) return;
  if (bonjour_.isOwnService(serviceName) || !suspects_.insert(serviceName).second) return;
  after(SuspectTime, [this, serviceName, poolName = presence.pool().name()] {
    suspects_.erase(serviceName);
    KDPoolPresence* found = this->presence(poolName);
    const bool isStillThere =
        bonjour_.announcementInfo(serviceName) != nullptr && !bonjour_.isOwnService(serviceName);
    if (found != nullptr && found->pool().isActive() && isStillThere) {
      tellOwnIdElsewhere(*found, serviceName);
    }
  });
}

void KDPeer::tellOwnIdElsewhere(KDPoolPresence& presence, const std::string& serviceName) {
  const auto pool = presence.sharedPool();
  const std::string text = fmt::format(
      "Another machine shares '{}' as {}, the name of this one. Two machines with one name would "
      "write one log, so the folder was stopped here. Give one of them another host name.",
      pool->name(), pool->userId());
  failedPublications_.erase(pool->name());
  warn(presence, text);
  center_.post(KDOwnIdElsewhere{pool.get(), serviceName, text});
}

/// Tells a sentence about the pool, unless it was the last one told.
void KDPeer::warn(KDPoolPresence& presence, const std::string& text) {
  const auto pool = presence.sharedPool();
  std::string& last = toldProblems_[pool->name()];
  if (last == text) return;
  last = text;
  platform_.log.warning("{}", text);
  center_.post(KDPoolWarning{pool.get(), text});
}

}  // namespace zolvar
