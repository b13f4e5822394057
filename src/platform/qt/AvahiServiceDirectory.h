#pragma once

#include <avahi-client/client.h>

#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "platform/ServiceDirectory.h"
#include "platform/qt/AvahiPollAdapter.h"

namespace zolvar {

class AvahiPublication;
class AvahiBrowser;

/// DNS Service Discovery through avahi-daemon. Keeps one connection to the daemon, waits for a
/// daemon or a system bus that is not there, and after a restart gives every publication and
/// browser the new connection. Its calls block while the daemon does not answer, so it has a thread
/// and a run loop of its own (ThreadedServiceDirectory), which are what is called the main thread
/// here and in what it hands out and outlives. hostNameFqdn() may be called from any thread.
class AvahiServiceDirectory final : public ServiceDirectory {
 public:
  AvahiServiceDirectory(RunLoop& runLoop, Log& log);
  ~AvahiServiceDirectory() override;
  AvahiServiceDirectory(const AvahiServiceDirectory&) = delete;
  AvahiServiceDirectory& operator=(const AvahiServiceDirectory&) = delete;

  /// Whether such a service can be announced. Fails: Refused.
  static Result<> check(const std::string& name, const std::string& type, const TxtRecord& txt);

  Result<std::unique_ptr<Publication>> publish(const std::string& name, const std::string& type,
                                               std::uint16_t port, const TxtRecord& txt,
                                               PublicationEvents events) override;
  std::unique_ptr<ServiceBrowser> browse(const std::string& type, ServiceEvents events) override;

  /// This machine's name as the daemon announces it ("alpha.local"), empty while the daemon does
  /// not run. Any thread.
  [[nodiscard]] std::string hostNameFqdn() const;

  // For publications and browsers.
  void add(AvahiPublication& publication);
  void remove(AvahiPublication& publication);
  void add(AvahiBrowser& browser);
  void remove(AvahiBrowser& browser);

 private:
  static void clientChanged(AvahiClient* client, AvahiClientState state, void* self);
  void connect();
  void scheduleConnect(double seconds);
  /// Brings publications and browsers in line with the client's state. On a turn of its own, since
  /// Avahi reports states from inside its own calls.
  void applyState();
  void scheduleApplyState();
  void dropConnection();
  void readHostName();

  RunLoop& runLoop_;
  Log& log_;
  AvahiPollAdapter poll_;
  AvahiClient* client_ = nullptr;
  AvahiClientState state_ = AVAHI_CLIENT_CONNECTING;
  bool isRunning_ = false;       ///< publications and browsers have the connection
  bool groupsAreStale_ = false;  ///< the host's own records were registered anew meanwhile
  bool saidMissing_ = false;     ///< one warning until the daemon is back
  RunLoop::Id connectTimer_ = 0;
  RunLoop::Id applyTimer_ = 0;
  std::set<AvahiPublication*> publications_;
  std::set<AvahiBrowser*> browsers_;
  mutable std::mutex hostNameMutex_;
  std::string hostName_;  ///< guarded by hostNameMutex_
};

}  // namespace zolvar
