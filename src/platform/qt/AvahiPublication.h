#pragma once

#include <avahi-client/publish.h>

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "platform/ServiceDirectory.h"

namespace zolvar {

class AvahiServiceDirectory;

/// One service of ours in an entry group of its own. The name is who we are on the network, so a
/// name that is taken is never changed into an alternative: the service is withdrawn, and tried
/// again every 30 s and whenever the host's name has changed. Main thread. The directory outlives
/// it.
class AvahiPublication final : public Publication {
 public:
  struct Service {
    std::string name;
    std::string type;
    std::uint16_t port = 0;
    TxtRecord txt;  ///< one that can be encoded
  };

  AvahiPublication(AvahiServiceDirectory& directory, RunLoop& runLoop, Log& log, Service service,
                   PublicationEvents events);
  ~AvahiPublication() override;
  AvahiPublication(const AvahiPublication&) = delete;
  AvahiPublication& operator=(const AvahiPublication&) = delete;

  Result<> updateTxt(const TxtRecord& txt) override;

  /// Publishes through a client that runs, anew when it was published before.
  void attach(AvahiClient* client);
  /// The client is unusable and takes the group with it.
  void forget();
  /// Takes the service off the network until the next attach.
  void withdraw();

 private:
  static void groupChanged(AvahiEntryGroup* group, AvahiEntryGroupState state, void* self);
  void publish();
  void applyGroupState(AvahiEntryGroupState state);
  void failed(int avahiError);
  void scheduleRetry();
  void cancelTimer();

  AvahiServiceDirectory& directory_;
  RunLoop& runLoop_;
  Log& log_;
  Service service_;
  /// Shared with the calls under way, which the end of this object cancels.
  std::shared_ptr<PublicationEvents> events_;
  AvahiClient* client_ = nullptr;
  AvahiEntryGroup* group_ = nullptr;
  RunLoop::Id timer_ = 0;    ///< the next retry, or a group state to apply
  bool saidFailed_ = false;  ///< once until established
};

}  // namespace zolvar
