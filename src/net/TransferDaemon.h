#pragma once

#include <string>
#include <vector>

#include "net/DaemonConfiguration.h"
#include "util/Failure.h"

namespace zolvar {

class Folder;
struct Platform;

/// What a start needs, put together on the main thread.
struct DaemonStart {
  unsigned port = 0;            ///< the search begins here
  unsigned bandwidthLimit = 0;  ///< KB/s, 0: none
  DaemonConfiguration configuration;
  std::string passwordFileContent;  ///< "" when no served folder has a password
};

/// Starts and stops the transfer daemon, which runs in the background on its own and is known by
/// its pid file alone. Every operation blocks (no longer than 10 s for each wait) and belongs on
/// the peer's lane. The files lie in the support folder and are named after the base path, so a
/// later run finds what an earlier one left. The platform outlives it.
class TransferDaemon {
 public:
  TransferDaemon(Platform& platform, const std::string& supportFolder, const std::string& basePath);

  [[nodiscard]] std::string configFilePath() const { return path("fpcfg"); }
  [[nodiscard]] std::string pidFilePath() const { return path("fppid"); }
  [[nodiscard]] std::string lockFilePath() const { return path("fplck"); }
  [[nodiscard]] std::string logFilePath() const { return path("fplog"); }
  [[nodiscard]] std::string passwordFilePath() const { return path("passwd"); }

  /// Starts the daemon on the first port from the wanted one on that can be bound, and returns that
  /// port. A daemon that an earlier run left is ended first. Fails: Refused (the configuration does
  /// not read back as meant), Transient (no port, files, the tool did not start or did not write
  /// its pid within 10 s).
  Result<unsigned> start(const DaemonStart& wanted);
  /// Ends the daemon and removes its files, the log excepted. A pid that is not our daemon's is
  /// never signalled. Fails: Transient when it is still there after 10 s and a kill.
  Result<> stop();
  /// The pid of the running daemon, 0 when there is none: the pid file's number, when that process
  /// names our configuration file.
  [[nodiscard]] int runningPid();
  /// Keeps the daemon's log, which has a line for each file that anybody fetches, from growing for
  /// ever: beyond 8 MB its end is put aside under the extension "fplog.old" and it begins anew.
  void boundLog();

 private:
  [[nodiscard]] std::string fileName(const char* extension) const;
  [[nodiscard]] std::string path(const char* extension) const;
  [[nodiscard]] int serverPid();
  [[nodiscard]] bool isOurs(int pid) const;
  Result<> writeFiles(const DaemonStart& wanted);
  Result<> launch(unsigned port, unsigned bandwidthLimit);
  Result<> endProcess(int pid);
  void removeFiles();

  Platform& platform_;
  std::string supportFolder_;
  std::string stem_;  ///< "instance-" and the hash of the base path
};

}  // namespace zolvar
