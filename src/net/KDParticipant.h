#pragma once

#include <memory>
#include <optional>
#include <string>

#include "pool/ParticipantAddress.h"

namespace zolvar {

class KDParticipants;

/// One member of one pool as seen from here: who it is, and the little the application remembers of
/// it while something holds it. One object an identity (user, host, port and pool), so identity is
/// pointer comparison. Made by KDParticipants, which must outlive it. Main thread.
class KDParticipant : public std::enable_shared_from_this<KDParticipant> {
 public:
  KDParticipant(ParticipantAddress address, KDParticipants& table);
  ~KDParticipant();
  KDParticipant(const KDParticipant&) = delete;
  KDParticipant& operator=(const KDParticipant&) = delete;

  [[nodiscard]] const ParticipantAddress& address() const { return address_; }
  [[nodiscard]] const std::string& user() const { return address_.user; }
  [[nodiscard]] const std::string& hostName() const { return address_.hostName; }
  [[nodiscard]] const std::string& poolName() const { return address_.poolName; }
  [[nodiscard]] std::uint32_t port() const { return address_.port; }
  [[nodiscard]] std::string userId() const { return address_.userId(); }
  /// The user id without ".local" or ".lan", followed by " (ignored)" when ignored.
  [[nodiscard]] std::string userIdForDisplay() const;
  /// The pool's name without the extension ".zolvaraddresses".
  [[nodiscard]] std::string displayPoolName() const;
  [[nodiscard]] std::string description() const;  ///< "user@host (in pool)"
  /// This machine's own announcement.
  [[nodiscard]] bool isLocalParticipant() const;

  /// Seconds since 1970 of the last sync; 0 when never synced.
  [[nodiscard]] double lastSyncDate() const { return lastSyncDate_; }
  void setLastSyncDate(double now) { lastSyncDate_ = now; }
  void resetLastSyncDate() { lastSyncDate_ = 0; }

  [[nodiscard]] bool passwordRequired() const { return passwordRequired_; }
  void setPasswordRequired(bool required) { passwordRequired_ = required; }

  /// What its announcement last said; with another protocol than ours there is no sync.
  [[nodiscard]] bool speaksOurProtocol() const { return speaksOurProtocol_; }
  void setSpeaksOurProtocol(bool speaks) { speaksOurProtocol_ = speaks; }

  /// Ignoring lasts until the program ends, also while nobody else holds the participant.
  [[nodiscard]] bool isIgnored() const;
  void setIsIgnored(bool ignored);

  /// The user's picture (undecoded bytes from a peer), none before KDPeer::loadPicture found one.
  [[nodiscard]] const std::optional<std::string>& pictureData() const { return pictureData_; }
  void setPictureData(std::string bytes) { pictureData_ = std::move(bytes); }

 private:
  ParticipantAddress address_;
  KDParticipants& table_;
  double lastSyncDate_ = 0;
  bool passwordRequired_ = false;
  bool speaksOurProtocol_ = true;
  std::optional<std::string> pictureData_;
};

}  // namespace zolvar
