#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/ProcessLauncher.h"
#include "support/Faults.h"
#include "support/TransferTool.h"

namespace zolvar {

class SimulatedPlatform;

/// One host's processes: the transfer tool as client and as daemon, and nothing else. Differs from
/// the real tool: it understands exactly the argument lists that the engine passes (anything else
/// throws std::logic_error and so fails the test), moves whole files, and a run happens inside
/// wait, with the virtual time advanced as configured. A daemon outlives the process that started
/// it, as the real one does.
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

  struct Run {
    std::vector<std::string> arguments;
    std::string input;
    std::string password;
    int status = -1;  ///< -1 while it has not ended
    std::vector<std::string> transferred;
  };
  std::vector<Run> runs;  ///< every client run so far
  TransferTroubles troubles;
  mutable Faults faults;
  bool isToolInstalled = true;
  std::string toolVersion = "3.5.0";
  std::set<unsigned> takenPorts;               ///< by other programs
  std::map<std::string, int> heldConnections;  ///< module → connections that others hold
  bool ignoresTerminate = false;               ///< daemons go on at SIGTERM

  int startStranger(std::vector<std::string> commandLine);  ///< a process that is none of ours
  [[nodiscard]] bool isServing(unsigned port) const;
  void killAll();  ///< the power goes

  /// What a client that asks for the module gets: its folder, or an exit status with its text.
  struct Served {
    SimulatedFileSystem* files = nullptr;
    SimulatedTree::Node root;
    int status = 0;
    std::string error;
  };
  Served serve(unsigned port, const std::string& module, const std::string& user,
               const std::string& password);

 private:
  class ClientRun;
  class SimpleRun;
  struct Living {
    std::vector<std::string> commandLine;
    unsigned port = 0;  ///< 0: no daemon
    std::string configPath;
    std::string pidPath;
  };
  int launchDaemon(const std::vector<std::string>& arguments, std::string& error);

  SimulatedPlatform& host_;
  std::string name_;
  int nextPid_ = 1000;
  std::map<int, Living> living_;
};

}  // namespace zolvar
