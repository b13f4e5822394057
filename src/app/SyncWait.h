#pragma once

#include <functional>
#include <map>
#include <string>

#include "app/ApplicationObserver.h"
#include "app/Operations.h"

namespace zolvar {

class Application;
class KDPoolPresence;

/// Follows one pool's syncs until each of its participants was tried once more. Whoever leaves the
/// network is no longer waited for; whoever has too many connections is. Observes the application,
/// which outlives it. Main thread.
class SyncWait : public ApplicationObserver {
 public:
  struct Callbacks {
    std::function<void(const TransferProgress&)> progressed;
    std::function<void(Result<SyncOutcome>)> done;
    std::function<void()> finished;  ///< destroy the object, on a later turn of the loop
  };

  SyncWait(Application& application, std::string poolName, Callbacks callbacks);
  ~SyncWait() override;

  /// Queues everybody; ends at once when there is nobody.
  void start();

 private:
  void syncDidEnd(const SyncReport& report) override;
  void poolDidChange(KDFilePool& pool) override;
  void poolListDidChange() override;
  void finishWhenDone();
  void finish(Result<SyncOutcome> outcome);

  Application& application_;
  const std::string poolName_;
  Callbacks callbacks_;
  std::map<std::string, int> endsToCome_;  ///< by participant's description
  SyncOutcome outcome_;
  bool isFinished_ = false;
};

}  // namespace zolvar
