#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "net/TransferDaemon.h"
#include "platform/RunLoop.h"

namespace zolvar {

class Lane;

/// Decides when the transfer daemon is started and stopped, and remembers how that went. At most
/// one job is on the lane; requests made meanwhile are joined to one that follows it: a stop beats
/// what came before it, a start after a stop is a restart, restarts become one. While the daemon is
/// wanted, a start that failed is tried again every 30 s, and a daemon that died is started anew.
/// Owned by KDPeer; the platform outlives it. Main thread.
class ServerControl {
 public:
  using Done = std::function<void(Result<>)>;
  struct Hooks {
    std::function<DaemonStart()> prepare;  ///< what a start needs, asked when it begins
    /// The daemon runs from now on, or does not; `trouble` is a sentence while it should and does
    /// not. Called before the requests' `done`.
    std::function<void(bool running, const std::string& trouble)> changed;
  };

  ServerControl(Platform& platform, std::shared_ptr<TransferDaemon> daemon,
                std::shared_ptr<Lane> lane, unsigned port, Hooks hooks);
  /// Stops a running daemon on the lane, waiting for nothing.
  ~ServerControl();
  ServerControl(const ServerControl&) = delete;
  ServerControl& operator=(const ServerControl&) = delete;

  /// Nothing when it runs. `done` fails with Cancelled when a stop overtook the start.
  void start(Done done);
  /// Ends our daemon, one that an earlier run left included.
  void stop(Done done);
  /// Nothing unless the daemon runs or should run.
  void restart(Done done);

  [[nodiscard]] bool isRunning() const { return running_; }
  [[nodiscard]] unsigned port() const { return port_; }  ///< only ever raised

 private:
  enum class Goal { None, Start, Stop, Restart };
  struct Waiter {
    Goal goal;
    Done done;
  };
  struct Outcome {
    Result<> result;
    bool running = false;
    unsigned port = 0;
    bool worked = true;  ///< false: there was nothing to do
  };
  static Goal joined(Goal earlier, Goal later);

  void request(Goal goal, Done done);
  void begin(Goal goal);
  void finish(const Outcome& outcome);
  void checkAlive();
  void tell(const Waiter& waiter, const Result<>& result);
  void onLane(std::function<void()> job);

  Platform& platform_;
  std::shared_ptr<TransferDaemon> daemon_;
  std::shared_ptr<Lane> lane_;
  unsigned port_;
  Hooks hooks_;
  bool running_ = false;
  bool wanted_ = false;  ///< started and not stopped since
  bool busy_ = false;
  Goal next_ = Goal::None;
  std::vector<Waiter> waiting_;  ///< for the job on the lane
  std::vector<Waiter> nextWaiting_;
  RunLoop::Id timer_ = 0;
  std::shared_ptr<bool> alive_;  ///< jobs that outlive this hold it weakly
};

}  // namespace zolvar
