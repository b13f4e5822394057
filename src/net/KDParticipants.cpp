#include "net/KDParticipants.h"

#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "platform/Log.h"
#include "util/InconsistencyError.h"

namespace zolvar {

KDParticipants::KDParticipants(std::string localUserId, Log& log)
    : localUserId_(std::move(localUserId)), log_(log) {}

std::shared_ptr<KDParticipant> KDParticipants::participant(const ParticipantAddress& address) {
  require(!address.user.empty(), "aUser != nil");
  require(!address.hostName.empty(), "aHostName != nil");
  if (address.poolName.empty()) log_.error("Grrrr.");
  require(!address.poolName.empty(), "aPoolName != nil");

  const Key key(address.user, address.hostName, address.port, address.poolName);
  const auto found = known_.find(key);
  if (found != known_.end()) {
    if (auto participant = found->second.lock()) return participant;
  }
  std::erase_if(known_, [](const auto& entry) { return entry.second.expired(); });
  auto participant = std::make_shared<KDParticipant>(address, *this);
  known_[key] = participant;
  return participant;
}

std::shared_ptr<KDParticipant> KDParticipants::fromService(const std::string& serviceName,
                                                           const TxtRecord& record) {
  const auto parts = parseServiceName(serviceName);
  if (!parts) {
    log_.warning("Warning - malformed service name '{}' encountered. Ignored.", serviceName);
    return nullptr;
  }
  if (const auto problem = announcementProblem(serviceName, record)) {
    log_.warning("Warning - announcement of '{}' refused: {}", serviceName, *problem);
    return nullptr;
  }
  const ParticipantAddress address{parts->user, parts->hostName, parts->port,
                                   fullServiceName(record)};
  const Key key(address.user, address.hostName, address.port, address.poolName);
  const auto known = known_.find(key);
  const bool isNew = known == known_.end() || known->second.expired();
  auto made = participant(address);
  if (isNew) made->setPasswordRequired(decodedUnsignedIntValue(record, txt::Password) != 0);
  made->setSpeaksOurProtocol(decodedUnsignedIntValue(record, txt::Version) == ProtocolVersion);
  return made;
}

bool KDParticipants::isIgnored(const KDParticipant& participant) const {
  for (const auto& ignored : ignored_) {
    if (ignored.get() == &participant) return true;
  }
  return false;
}

void KDParticipants::setIgnored(KDParticipant& participant, bool ignored) {
  if (ignored) {
    ignored_.insert(participant.shared_from_this());
    if (!isIgnored(participant)) throw InconsistencyError("should be ignored");
  } else {
    ignored_.erase(participant.shared_from_this());
    if (isIgnored(participant)) throw InconsistencyError("shouldn't be ignored");
  }
}

}  // namespace zolvar
