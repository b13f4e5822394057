#pragma once

#include <memory>
#include <string>

#include "platform/Log.h"
#include "platform/RunLoop.h"
#include "platform/ServiceDirectory.h"

namespace zolvar {

/// DNS Service Discovery for which the main thread never waits. Whatever is asked of avahi-daemon
/// is a call over the system bus that blocks while the daemon does not answer (25 s a call when it
/// is stopped), so an AvahiServiceDirectory with all that belongs to it lives on a thread of its
/// own, with a run loop of its own. What is asked for is posted there, what happens is posted here.
/// Main thread, but for hostNameFqdn(). Outlives what it handed out. Made after the
/// QCoreApplication. Its end waits up to 3 s for the services to be withdrawn.
class ThreadedServiceDirectory final : public ServiceDirectory {
 public:
  ThreadedServiceDirectory(RunLoop& runLoop, Log& log);
  ~ThreadedServiceDirectory() override;
  ThreadedServiceDirectory(const ThreadedServiceDirectory&) = delete;
  ThreadedServiceDirectory& operator=(const ThreadedServiceDirectory&) = delete;

  Result<std::unique_ptr<Publication>> publish(const std::string& name, const std::string& type,
                                               std::uint16_t port, const TxtRecord& txt,
                                               PublicationEvents events) override;
  std::unique_ptr<ServiceBrowser> browse(const std::string& type, ServiceEvents events) override;

  /// This machine's name as the daemon announces it ("alpha.local"), empty while the daemon does
  /// not run. Any thread.
  [[nodiscard]] std::string hostNameFqdn() const;

 private:
  class Worker;
  class PublicationFront;
  class BrowserFront;

  const std::shared_ptr<Worker> worker_;  ///< shared with its thread and with what is handed out
};

}  // namespace zolvar
