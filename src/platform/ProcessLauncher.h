#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "util/Failure.h"

namespace zolvar {

struct ProcessRequest {
  std::string program;  ///< absolute path
  std::vector<std::string> arguments;
  std::map<std::string, std::string> environment;  ///< added to, or replacing parts of, our own
  std::string input;         ///< written to standard input, which is then closed
  bool wantsOutput = false;  ///< standard output goes to ProcessSinks::output, else to /dev/null
};

/// Callbacks of Process::wait, on the waiting thread.
struct ProcessSinks {
  std::function<void(std::string_view)> output;
  std::function<void(std::string_view)> errors;
  std::function<void()> tick;  ///< about twice a second while the process runs
};

/// Ends a process that moves no byte (its pipes and the I/O counters of its process group stand
/// still): SIGTERM, and SIGKILL 5 s later.
struct SilenceLimits {
  double connecting = 0;  ///< seconds until the first byte; 0 waits for ever
  double silent = 0;      ///< seconds without any byte afterwards; 0 waits for ever
};

struct ProcessEnd {
  int status = 0;         ///< exit code; 128 + signal when a signal ended it
  bool silenced = false;  ///< ended by the silence limits
};

/// One child process in a process group of its own. It dies with us. Destroying the object ends
/// the process.
class Process {
 public:
  virtual ~Process() = default;
  [[nodiscard]] virtual int pid() const = 0;
  /// SIGTERM now, SIGKILL 5 s later when still there. Any thread; returns at once.
  virtual void terminate() = 0;
  /// Feeds the input, drains the pipes and blocks until the process has ended. Called once, off the
  /// main thread.
  virtual ProcessEnd wait(const SilenceLimits& limits, const ProcessSinks& sinks) = 0;
};

/// Starts programs and looks at processes. Any thread.
class ProcessLauncher {
 public:
  virtual ~ProcessLauncher() = default;
  virtual Result<std::shared_ptr<Process>> start(const ProcessRequest& request) = 0;
  /// Path of the transfer tool (`<libexec>/zolvar/zolvar`); Absent when it is not installed.
  [[nodiscard]] virtual Result<std::string> clientToolPath() const = 0;

  /// The command line of a running process, empty when there is none with that pid.
  [[nodiscard]] virtual std::vector<std::string> commandLine(int pid) const = 0;
  /// Sends a signal; false when that failed.
  virtual bool signal(int pid, int signalNumber) = 0;
  /// Blocks until the process is gone or `seconds` have passed; true when it is gone.
  virtual bool waitGone(int pid, double seconds) = 0;
  /// Whether a TCP port can be bound on all IPv4 addresses (reuse-address set).
  [[nodiscard]] virtual bool canBind(unsigned port) const = 0;
};

}  // namespace zolvar
