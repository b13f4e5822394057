#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "pool/ParticipantAddress.h"

namespace zolvar {

class Process;
struct Platform;

/// The transfer tool's exit statuses that we tell apart, and those that we give ourselves.
namespace TransferStatus {
constexpr int Done = 0;
constexpr int NotServed = 5;  ///< refused by the daemon: too many clients, no such module
constexpr int NoConnection = 10;
constexpr int FileTrouble = 11;  ///< our folder cannot be reached or written
constexpr int BadStream = 12;
constexpr int Ended = 20;     ///< given up by us
constexpr int Partial = 23;   ///< some files were not transferred, the others were
constexpr int Vanished = 24;  ///< some files went away meanwhile, the others were transferred
constexpr int Silent = 30;    ///< moved no byte for too long
constexpr int NoAuthentication = 37;
constexpr int Exception = -1;
}  // namespace TransferStatus

/// "rsync://HASH@HOST:PORT/MODULE": the daemon of the participant; the module path is the pool's
/// name, for its logs followed by "/.Zolvar".
std::string transferUrl(const ParticipantAddress& participant, const std::string& poolName,
                        bool logsOnly);

/// Brings the participant's logs into `folder`/.Zolvar. The pattern that excludes our own log is an
/// absolute path, so it matches nothing in the transfer: our own log is loaded too when the other
/// copy is newer. Kept exactly so; LogGuard sees to it that nothing is lost by it, and a pool that
/// waits for its own log depends on it.
std::vector<std::string> logLoadArguments(const std::string& ownLogPath, const std::string& url,
                                          const std::string& folder);
std::vector<std::string> listingArguments(const std::string& url);

struct CopyOptions {
  unsigned bandwidthLimit = 0;  ///< KB/s; 0: none
  std::string backupFolder;     ///< absolute; what the run replaces is saved there; "": nowhere
  bool updatesOnly = true;      ///< leaves files alone that are newer here
};
/// Copies the paths given on standard input, one a line.
std::vector<std::string> copyArguments(const CopyOptions& options, const std::string& url,
                                       const std::string& folder);

/// Runs the transfer tool, one run at a time, and turns the way it ended into a status that never
/// says success by default. What the tool writes on standard error goes to our log, bounded, since
/// the other side can have a say in it. Runs block: the transfer lane; terminate and isTerminated
/// are for any thread. The platform outlives it.
class TransferRun {
 public:
  struct Request {
    std::vector<std::string> arguments;
    std::string password;  ///< "": the pool has none
    std::string input;
    std::function<void(std::string_view line)> line;  ///< each line of output; empty: not wanted
    std::function<void()> tick;                       ///< about twice a second; may be empty
  };
  static constexpr double ConnectingLimit = 10;          ///< seconds
  static constexpr double SilenceLimit = 60;             ///< seconds
  static constexpr std::size_t LongestLine = 64U << 10;  ///< bytes; longer ones are cut

  explicit TransferRun(Platform& platform) : platform_(platform) {}

  /// Whether the participant's host is found; says so in the log when not.
  bool canFind(const ParticipantAddress& participant);

  /// The status of the run. Throws InconsistencyError when the tool is not installed ("Could not
  /// find included zolvar tool.").
  int run(const Request& request);

  void allow();      ///< runs may start again
  void terminate();  ///< ends the run in progress; later ones end at once until allow()
  [[nodiscard]] bool isTerminated() const;

 private:
  Platform& platform_;
  mutable std::mutex mutex_;
  std::shared_ptr<Process> process_;  ///< guarded by mutex_; the run in progress
  bool isTerminated_ = false;         ///< guarded by mutex_
};

}  // namespace zolvar
