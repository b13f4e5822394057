#pragma once

#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/ProcessLauncher.h"
#include "support/Faults.h"

namespace zolvar {

class SimulatedFileSystem;
class SimulatedNetwork;
class SimulatedClock;
class RecordingLog;
class SimulatedPlatform;

/// One host's processes: the transfer tool as client and as daemon, and nothing else. Differs from
/// the real tool: it understands exactly the argument lists that the engine passes (anything else
/// throws std::logic_error and so fails the test), moves whole files, and a run is over when wait
/// returns, with the virtual time advanced as configured. See TransferTool.cpp for its semantics.
class SimulatedProcesses : public ProcessLauncher {
 public:
  SimulatedProcesses(SimulatedPlatform& host, std::string name);
  ~SimulatedProcesses() override;

  Result<std::shared_ptr<Process>> start(const ProcessRequest& request) override;
  [[nodiscard]] Result<std::string> clientToolPath() const override;
  [[nodiscard]] std::vector<std::string> commandLine(int pid) const override;
  bool signal(int pid, int signalNumber) override;
  bool waitGone(int pid, double seconds) override;
  [[nodiscard]] bool canBind(unsigned port) const override;

 private:
  SimulatedPlatform& host_;
  std::string name_;
};

}  // namespace zolvar
