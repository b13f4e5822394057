#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/RunLoop.h"

namespace zolvar {

/// Minutes until a pool with missing files asks its participants again, by how often it did so in
/// vain: 1, 2, 4, 8, then always 15. Pure.
double retryMinutes(unsigned attempt);

/// Asks again, ever less often, for what pools still miss: whoever gets a file from a third party
/// may not announce anything new when it arrives there. Owned by the application. Main thread.
class TodoRetries {
 public:
  /// `retry` is told the pool's name when its participants are to be queued again.
  TodoRetries(RunLoop& runLoop, std::function<void(const std::string& poolName)> retry);
  ~TodoRetries();

  /// The pool's to-do list was seen: starts, keeps or ends its waiting.
  void note(const std::string& poolName, bool hasMissingFiles);
  /// Something of the pool arrived: the waiting starts over at its shortest.
  void noteProgress(const std::string& poolName);
  void forget(const std::string& poolName);

 private:
  struct Waiting {
    unsigned attempt = 0;
    RunLoop::Id timer = 0;
  };
  void schedule(const std::string& poolName, Waiting& waiting);

  RunLoop& runLoop_;
  std::function<void(const std::string&)> retry_;
  std::map<std::string, Waiting> waiting_;
};

}  // namespace zolvar
