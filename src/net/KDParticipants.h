#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <tuple>

#include "net/KDParticipant.h"
#include "platform/ServiceDirectory.h"

namespace zolvar {

class Log;

/// The table that makes participants unique: whoever asks for one identity gets the one object, as
/// long as anybody holds it. Holds the ignored ones itself. Owned by the application, outlives all
/// participants. Main thread.
class KDParticipants {
 public:
  KDParticipants(std::string localUserId, Log& log);

  /// The participant with this identity, made when there is none.
  /// Requires: user, host and pool name ("Invalid parameter not satisfying: ...").
  std::shared_ptr<KDParticipant> participant(const ParticipantAddress& address);

  /// The participant that a discovered service stands for; null, with a warning, when the name is
  /// malformed or announcementProblem refuses it. `passwordRequired` is set from the announcement
  /// on a new object only; a known one keeps its flag, and that is intended: a changed announcement
  /// reaches it through KDPeer.
  std::shared_ptr<KDParticipant> fromService(const std::string& serviceName,
                                             const TxtRecord& record);

  [[nodiscard]] const std::set<std::shared_ptr<KDParticipant>>& ignoredParticipants() const {
    return ignored_;
  }
  [[nodiscard]] const std::string& localUserId() const { return localUserId_; }

  [[nodiscard]] bool isIgnored(const KDParticipant& participant) const;
  void setIgnored(KDParticipant& participant, bool ignored);

 private:
  using Key = std::tuple<std::string, std::string, std::uint32_t, std::string>;

  std::string localUserId_;
  Log& log_;
  std::map<Key, std::weak_ptr<KDParticipant>> known_;  ///< dead ones go when another is made
  std::set<std::shared_ptr<KDParticipant>> ignored_;
};

}  // namespace zolvar
