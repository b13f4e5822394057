#include "net/KDPoolPresence.h"

#include <algorithm>

#include "net/ServiceName.h"
#include "net/TxtCodec.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "pool/KDFilePool.h"
#include "util/QMDigest.h"

namespace zolvar {

namespace {

/// The log digest of the pool; that of no log at all before the first reading.
std::string logFilesHash(const KDFilePool& pool) {
  const std::string hash = pool.snapshot()->logFilesHash;
  return hash.empty() ? QMDigest(QMDigest::Algorithm::MD5).finish() : hash;
}

}  // namespace

KDPoolPresence::KDPoolPresence(std::shared_ptr<KDFilePool> pool, Platform& platform,
                               KDBonjour& bonjour)
    : pool_(std::move(pool)), platform_(platform), bonjour_(bonjour) {}

bool KDPoolPresence::addParticipant(const std::shared_ptr<KDParticipant>& participant) {
  if (hasParticipant(participant)) return false;
  participants_.push_back(participant);
  return true;
}

bool KDPoolPresence::removeParticipant(const std::shared_ptr<KDParticipant>& participant) {
  return std::erase(participants_, participant) != 0;
}

bool KDPoolPresence::hasParticipant(const std::shared_ptr<KDParticipant>& participant) const {
  return std::find(participants_.begin(), participants_.end(), participant) != participants_.end();
}

bool KDPoolPresence::hasRemoteParticipants() const {
  return participants_.size() > (pool_->isActive() ? 1 : 0);
}

std::optional<std::size_t> KDPoolPresence::numberOfRemoteParticipants() const {
  if (!hasRemoteParticipants()) return std::nullopt;
  return participants_.size() - (pool_->isActive() ? 1 : 0);
}

std::size_t KDPoolPresence::participantCountHistoric() const {
  return pool_->snapshot()->logSizes.size();
}

bool KDPoolPresence::passwordRequiredByAnyParticipant() const {
  return std::any_of(participants_.begin(), participants_.end(),
                     [](const auto& participant) { return participant->passwordRequired(); });
}

std::vector<ParticipantAddress> KDPoolPresence::remoteAddresses() const {
  std::vector<ParticipantAddress> addresses;
  for (const auto& participant : participants_) {
    if (!participant->isLocalParticipant()) addresses.push_back(participant->address());
  }
  return addresses;
}

std::string KDPoolPresence::serviceNameWithPort(std::uint32_t port) const {
  return makeServiceName(pool_->userId(), port, pool_->nameHash());
}

TxtRecord KDPoolPresence::announcementDictionary() const {
  TxtRecord record;
  encodeUnsignedIntValue(record, txt::Version, ProtocolVersion);
  encodeStringValue(record, txt::FullName, pool_->name(), platform_.log);
  if (!pool_->password().empty()) encodeUnsignedIntValue(record, txt::Password, ProtocolVersion);
  record[txt::LogDigest] = logFilesHash(*pool_);
  return record;
}

Result<> KDPoolPresence::announceWithPort(std::uint32_t port) {
  const std::string name = serviceNameWithPort(port);
  if (service_ && service_->name() == name) {
    updateAnnouncement();
    return {};
  }
  service_.reset();
  TxtRecord record = announcementDictionary();
  if (const auto problem = announcementProblem(name, record)) {
    platform_.log.warning("Warning: other machines will refuse the announcement '{}'. {}", name,
                          *problem);
  }
  auto service = bonjour_.startNetService(name, port, std::move(record));
  if (!service) return tl::unexpected(service.error());
  service_ = std::move(*service);
  return {};
}

void KDPoolPresence::updateAnnouncement() {
  if (!pool_->isActive()) return;
  if (!service_) {
    platform_.log.debug("Bonjour Net Service not (yet?) in place, announcement not updated!");
    return;
  }
  service_->setAnnouncementInfo(announcementDictionary());
  if (service_->announceInfo()) {
    platform_.log.debug("Own announcement updated!");
    isAnnouncementNeeded_ = false;
  } else {
    platform_.log.error("ERROR: Announcement Update failed for pool {}.", pool_->description());
    platform_.workspace.beep();
  }
}

bool KDPoolPresence::needsToSync(const TxtRecord& announcement,
                                 const KDParticipant& participant) const {
  if (!pool_->isActive()) return false;
  if (decodedUnsignedIntValue(announcement, txt::Version) != ProtocolVersion) {
    platform_.log.warning("Warning: Sync with {} skipped due to different protocol versions.",
                          participant.description());
    return false;
  }
  const auto digest = announcement.find(txt::LogDigest);
  return digest == announcement.end() || digest->second != logFilesHash(*pool_);
}

}  // namespace zolvar
