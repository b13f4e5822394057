#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zolvar {

class Process;
struct Platform;

/// Compares this machine's clock with that of a time server. The question is asked in a child
/// process, `OWN_PROGRAM --time-query=HOST`, since the query ends its process when a server sends
/// too little, and blocks as long as the network pleases. Owned by the job that runs it and by
/// whoever may cancel it. The platform outlives it.
class ClockCheck {
 public:
  /// `ownProgram` is the absolute path of this program, which answers "--time-query".
  ClockCheck(Platform& platform, std::string ownProgram);

  /// Network time minus local time in seconds, by the first server that answers; none when none
  /// does. Blocks, at most about 15 s a server: for lanes.
  std::optional<double> badSeconds(const std::vector<std::string>& servers);
  /// Ends a question under way, and every later one at once. Any thread.
  void cancel();

 private:
  std::optional<double> ask(const std::string& server);

  Platform& platform_;
  const std::string ownProgram_;
  std::mutex mutex_;
  bool isCancelled_ = false;          ///< guarded by mutex_
  std::shared_ptr<Process> process_;  ///< under way; guarded by mutex_
};

}  // namespace zolvar
