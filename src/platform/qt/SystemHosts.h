#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "platform/Hosts.h"
#include "platform/Log.h"

namespace zolvar {

class ThreadedServiceDirectory;

/// Names of machines from Avahi and the system's resolver. Any thread. The constructor asks the
/// service daemon for this machine's name and waits up to 2 s for it, since at that moment the
/// directory's own connection is usually still being made; a name once heard is kept while the
/// daemon is away, so that a restart of the daemon does not make us someone else.
class SystemHosts final : public Hosts {
 public:
  SystemHosts(const ThreadedServiceDirectory& services, Log& log);

  [[nodiscard]] std::vector<std::string> names() const override;
  [[nodiscard]] std::string userName() const override;
  Result<std::string> lookUp(const std::string& host) override;

 private:
  /// What the questions at start brought; shared with the thread that asks them, which may be
  /// slower than we are willing to wait.
  struct Answers {
    std::mutex mutex;
    std::string serviceName;    ///< guarded by mutex
    std::string canonicalName;  ///< guarded by mutex
  };

  const ThreadedServiceDirectory& services_;
  std::shared_ptr<Answers> answers_;
};

}  // namespace zolvar
