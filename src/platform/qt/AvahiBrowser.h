#pragma once

#include <avahi-client/lookup.h>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "platform/ServiceDirectory.h"
#include "platform/qt/AvahiTxtWatch.h"

namespace zolvar {

class AvahiServiceDirectory;

/// Browses one service type. The daemon reports a service once for each interface and protocol it
/// is seen on; here it is one service from the first sighting to the end of the last. Main thread.
/// The directory outlives it.
class AvahiBrowser final : public ServiceBrowser {
 public:
  AvahiBrowser(AvahiServiceDirectory& directory, RunLoop& runLoop, Log& log, std::string type,
               ServiceEvents events);
  ~AvahiBrowser() override;
  AvahiBrowser(const AvahiBrowser&) = delete;
  AvahiBrowser& operator=(const AvahiBrowser&) = delete;

  /// Browses through a client that runs.
  void attach(AvahiClient* client);
  /// The client is unusable and takes its browsers with it: every known service is lost.
  void forget();

 private:
  struct Service {
    std::set<std::pair<AvahiIfIndex, AvahiProtocol>> sightings;
    std::unique_ptr<AvahiTxtWatch> txt;
    bool wasReported = false;
    int age = 0;  ///< turns of the refresh timer since the network was asked
  };

  static void serviceChanged(AvahiServiceBrowser* browser, AvahiIfIndex interface,
                             AvahiProtocol protocol, AvahiBrowserEvent event, const char* name,
                             const char* type, const char* domain, AvahiLookupResultFlags flags,
                             void* self);
  void start();
  void scheduleRetry();
  void found(const std::string& name, const char* domain, AvahiIfIndex interface,
             AvahiProtocol protocol);
  void gone(const std::string& name, AvahiIfIndex interface, AvahiProtocol protocol);
  void reportTxt(const std::string& name, const TxtRecord& txt);
  void reportLost(const std::string& name);
  /// Asks the network again about the services that were not asked about for long, a few a turn.
  void refresh();

  AvahiServiceDirectory& directory_;
  RunLoop& runLoop_;
  Log& log_;
  const std::string type_;
  /// Shared with the calls under way, which the end of this object cancels.
  std::shared_ptr<ServiceEvents> events_;
  AvahiClient* client_ = nullptr;
  AvahiServiceBrowser* browser_ = nullptr;
  std::map<std::string, Service> services_;
  RunLoop::Id refreshTimer_ = 0;
  RunLoop::Id retryTimer_ = 0;
};

}  // namespace zolvar
