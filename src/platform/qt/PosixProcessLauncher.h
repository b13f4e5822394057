#pragma once

#include <memory>

#include "platform/ProcessLauncher.h"
#include "platform/qt/PosixProcess.h"

namespace zolvar {

/// Starts programs through one keeper thread. Any thread. While it lives, writing to a pipe that
/// nobody reads fails instead of ending us (SIGPIPE is ignored for the whole program). When it
/// and the processes it gave out are destroyed, every child has been ended.
class PosixProcessLauncher : public ProcessLauncher {
 public:
  explicit PosixProcessLauncher(const ProcessPace& pace = {});
  ~PosixProcessLauncher() override;

  Result<std::shared_ptr<Process>> start(const ProcessRequest& request) override;
  /// Looks beside the running program first, so that a build tree and a moved installation find
  /// their own, then where the installation put it.
  [[nodiscard]] Result<std::string> clientToolPath() const override;
  [[nodiscard]] std::vector<std::string> commandLine(int pid) const override;
  bool signal(int pid, int signalNumber) override;
  bool waitGone(int pid, double seconds) override;
  [[nodiscard]] bool canBind(unsigned port) const override;

 private:
  const ProcessPace pace_;
  const std::shared_ptr<ChildKeeper> keeper_;
};

}  // namespace zolvar
