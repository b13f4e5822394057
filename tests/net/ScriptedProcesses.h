#pragma once

#include <csignal>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/ProcessLauncher.h"
#include "support/SimulatedPlatform.h"

namespace zolvar {

/// The transfer tool as a daemon, for tests of starting and stopping. Differs from the real one: it
/// serves nothing; its pid file appears at once unless told otherwise, and a process ends as soon
/// as it is signalled, unless it is stubborn.
class ScriptedProcesses : public ProcessLauncher {
 public:
  explicit ScriptedProcesses(SimulatedFileSystem& files) : files_(files) {}

  std::map<int, std::vector<std::string>> running;  ///< pid → command line
  std::vector<std::vector<std::string>> launches;   ///< arguments of every start
  std::vector<std::pair<int, int>> signals;         ///< pid, signal
  std::set<unsigned> takenPorts;
  std::set<int> stubborn;  ///< ended by SIGKILL only
  int exitStatus = 0;      ///< of the launching process
  bool writesPidFile = true;
  bool hasTool = true;
  std::function<void()> duringLaunch;

  /// The configuration that a launch read.
  std::vector<std::string> configurations;

  Result<std::shared_ptr<Process>> start(const ProcessRequest& request) override {
    launches.push_back(request.arguments);
    return std::make_shared<Launcher>(*this, request.arguments);
  }
  [[nodiscard]] Result<std::string> clientToolPath() const override {
    if (!hasTool) return fail(FailureKind::Absent, "find", "zolvar");
    return std::string("/usr/libexec/zolvar/zolvar");
  }
  [[nodiscard]] std::vector<std::string> commandLine(int pid) const override {
    const auto found = running.find(pid);
    return found == running.end() ? std::vector<std::string>() : found->second;
  }
  bool signal(int pid, int number) override {
    signals.emplace_back(pid, number);
    if (!running.contains(pid)) return false;
    if (number == SIGKILL || !stubborn.contains(pid)) running.erase(pid);
    return true;
  }
  bool waitGone(int pid, double) override { return !running.contains(pid); }
  [[nodiscard]] bool canBind(unsigned port) const override { return !takenPorts.contains(port); }

 private:
  class Launcher : public Process {
   public:
    Launcher(ScriptedProcesses& owner, std::vector<std::string> arguments)
        : owner_(owner), arguments_(std::move(arguments)) {}
    [[nodiscard]] int pid() const override { return 1; }
    void terminate() override {}
    ProcessEnd wait(const SilenceLimits&, const ProcessSinks&) override {
      if (owner_.duringLaunch) owner_.duringLaunch();
      if (owner_.exitStatus == 0) owner_.daemonise(arguments_);
      return {owner_.exitStatus, false};
    }

   private:
    ScriptedProcesses& owner_;
    std::vector<std::string> arguments_;
  };

  void daemonise(std::vector<std::string> arguments) {
    const std::string option = "--config=";
    const std::string config = arguments.back().substr(option.size());
    const std::string content = files_.readAll(config).value_or("");
    configurations.push_back(content);
    arguments.insert(arguments.begin(), "zolvar");
    running[nextPid_] = arguments;
    const std::string key = "\npid file = ";
    const auto start = content.find(key) + key.size();
    const std::string pidFile = content.substr(start, content.find('\n', start) - start);
    if (writesPidFile) files_.write(pidFile, std::to_string(nextPid_) + "\n");
    ++nextPid_;
  }

  SimulatedFileSystem& files_;
  int nextPid_ = 4711;
};

/// A simulated host whose processes are scripted.
struct ScriptedHost : SimulatedPlatform {
  using SimulatedPlatform::SimulatedPlatform;
  ScriptedProcesses processes{files};
  Platform platform{clock, random,  loop,     lanes,     files,        processes, services,
                    hosts, secrets, defaults, workspace, networkWatch, firewall,  log};
};

}  // namespace zolvar
