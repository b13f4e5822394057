#pragma once

#include <functional>
#include <map>
#include <string>

#include "app/ApplicationObserver.h"

namespace zolvar {

class Application;

/// How the contact with a participant that is announced stands.
struct Contact {
  enum class Standing {
    Seen,         ///< announced, not contacted yet
    Reachable,    ///< the last contact worked
    Unreachable,  ///< it did not; `reason` says why
  };
  Standing standing = Standing::Seen;
  std::string reason;  ///< one sentence
  bool differsInPassword = false;
  double lastExchange = 0;  ///< seconds since 1970 of the last log exchange; 0: none since seen
};

/// What came of the last contact with each participant, as long as it is announced; whoever comes
/// back starts as merely seen. Owned by the application, which hands it every sync's end before all
/// other observers. Main thread.
class Contacts {
 public:
  explicit Contacts(const Application& application) : application_(application) {}

  void note(const SyncReport& report);
  /// Forgets who is not announced any more.
  void noteParticipants(const KDFilePool& pool);
  [[nodiscard]] Contact of(const ParticipantAddress& participant) const;

 private:
  const Application& application_;
  std::map<std::string, std::map<std::string, Contact>> contacts_;  ///< pool → participant
};

}  // namespace zolvar
