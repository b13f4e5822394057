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
  int failures = 0;    ///< in a row
  bool differsInPassword = false;
  double lastExchange = 0;  ///< seconds since 1970 of the last log exchange; 0: none since seen
};

/// What came of the last contact with each participant, as long as it is announced; whoever comes
/// back starts as merely seen. Owned by the application, and the first of its observers. Main
/// thread.
class Contacts : public ApplicationObserver {
 public:
  explicit Contacts(Application& application) : application_(application) {}

  [[nodiscard]] Contact of(const KDParticipant& participant) const;

  void syncDidEnd(const SyncReport& report) override;
  /// Forgets who is not announced any more.
  void poolDidChange(KDFilePool& pool) override;

 private:
  Application& application_;
  std::map<std::string, std::map<std::string, Contact>> contacts_;  ///< pool → participant
};

}  // namespace zolvar
