#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "net/KDBonjour.h"
#include "net/KDParticipant.h"

namespace zolvar {

class KDFilePool;
struct Platform;

/// A pool's place on the network: who takes part in it, and its own announcement. Owned by KDPeer
/// beside the pool; the platform and the KDBonjour outlive it. Main thread.
class KDPoolPresence {
 public:
  KDPoolPresence(std::shared_ptr<KDFilePool> pool, Platform& platform, KDBonjour& bonjour);

  [[nodiscard]] KDFilePool& pool() const { return *pool_; }
  [[nodiscard]] const std::shared_ptr<KDFilePool>& sharedPool() const { return pool_; }

  // Participants; an active pool's own announcement is among them once it was seen.
  using Participants = std::vector<std::shared_ptr<KDParticipant>>;
  [[nodiscard]] const Participants& participants() const { return participants_; }
  bool addParticipant(const std::shared_ptr<KDParticipant>& participant);  ///< false: already there
  bool removeParticipant(const std::shared_ptr<KDParticipant>& participant);
  void clearParticipants() { participants_.clear(); }
  [[nodiscard]] bool hasParticipant(const std::shared_ptr<KDParticipant>& participant) const;
  [[nodiscard]] std::size_t countOfParticipants() const { return participants_.size(); }
  /// An active pool's single entry counts as the local participant.
  [[nodiscard]] bool hasRemoteParticipants() const;
  /// None instead of 0: an empty cell in a table.
  [[nodiscard]] std::optional<std::size_t> numberOfRemoteParticipants() const;
  /// Number of change logs seen at the last sync or scan.
  [[nodiscard]] std::size_t participantCountHistoric() const;
  [[nodiscard]] bool passwordRequiredByAnyParticipant() const;
  /// Of everybody but this machine.
  [[nodiscard]] std::vector<ParticipantAddress> remoteAddresses() const;

  // Announcement.
  [[nodiscard]] std::string serviceNameWithPort(std::uint32_t port) const;
  [[nodiscard]] TxtRecord announcementDictionary() const;
  [[nodiscard]] const std::shared_ptr<KDNetService>& service() const { return service_; }
  [[nodiscard]] bool isAnnounced() const { return service_ != nullptr; }
  /// Publishes, or publishes anew when the port or the name has changed.
  Result<> announceWithPort(std::uint32_t port);
  /// Refreshes the TXT record. Without a service, or when it is refused, isAnnouncementNeeded
  /// stays.
  void updateAnnouncement();
  void revokeAnnouncement() { service_.reset(); }
  [[nodiscard]] bool isAnnouncementNeeded() const { return isAnnouncementNeeded_; }
  void setAnnouncementNeeded() { isAnnouncementNeeded_ = true; }

  /// Whether a participant's announcement makes a sync worth while: the pool is active, both speak
  /// one protocol version and the log digests differ.
  [[nodiscard]] bool needsToSync(const TxtRecord& announcement,
                                 const KDParticipant& participant) const;

 private:
  std::shared_ptr<KDFilePool> pool_;
  Platform& platform_;
  KDBonjour& bonjour_;
  Participants participants_;
  std::shared_ptr<KDNetService> service_;
  bool isAnnouncementNeeded_ = false;
};

}  // namespace zolvar
