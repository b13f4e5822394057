#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/qt/Descriptor.h"
#include "util/Failure.h"

namespace zolvar {

/// One child of ours: its pid, which also names its process group, and a descriptor of it. Signals
/// reach the group only while the child is not reaped, so that they never reach a stranger who got
/// the number later. Any thread.
class Child {
 public:
  Child(pid_t pid, Descriptor descriptor) : pid_(pid), descriptor_(std::move(descriptor)) {}

  [[nodiscard]] pid_t pid() const { return pid_; }
  /// Readable once the child has ended.
  [[nodiscard]] int descriptor() const { return descriptor_.get(); }
  /// False when the child is reaped already.
  bool signalGroup(int signalNumber);
  [[nodiscard]] bool isReaped() const;
  /// Blocks until the child has ended; its exit code, or 128 + the signal that ended it.
  int reap();

 private:
  const pid_t pid_;
  const Descriptor descriptor_;
  mutable std::mutex mutex_;  ///< guards isReaped_ and status_
  bool isReaped_ = false;
  int status_ = 0;
};

/// What a child starts with. All strings are prepared by the caller, since nothing may be allocated
/// between fork and exec.
struct ChildPlan {
  std::string program;
  std::vector<std::string> arguments;    ///< with the program's name in front
  std::vector<std::string> environment;  ///< "NAME=value", complete
  int input = -1;                        ///< becomes standard input; -1: /dev/null
  int output = -1;                       ///< becomes standard output; -1: /dev/null
  int errors = -1;                       ///< becomes standard error; -1: /dev/null
};

/// Starts children and looks after those that nobody waits for, on one thread of its own that lives
/// as long as it does: the kernel ends a child when the thread that forked it ends, so that no
/// child survives us, whatever ends us. Owned by the launcher; destroying it ends all children. Any
/// thread.
class ChildKeeper {
 public:
  /// `patience`: seconds from asking a child to end to killing it.
  explicit ChildKeeper(double patience);
  ~ChildKeeper();

  /// Starts a child in its own process group, in the folder "/", with no other descriptor and
  /// ordinary signal handling. Fails: Absent, Refused, Transient, as exec tells.
  Result<std::shared_ptr<Child>> spawn(const ChildPlan& plan);
  /// Asks the child's group to end now, and kills it when it is still there after the patience.
  void terminate(const std::shared_ptr<Child>& child);
  /// Ends the child as terminate does, and reaps it.
  void abandon(const std::shared_ptr<Child>& child);

 private:
  struct Ward {
    std::shared_ptr<Child> child;
    double killTime = 0;       ///< on the steady clock
    bool isAbandoned = false;  ///< reaped here; else someone waits for it
  };

  void loop();
  void runTasks();
  int lookAfterWards();
  void perform(std::function<void()> task);

  const double patience_;
  std::mutex mutex_;  ///< guards tasks_ and isStopping_
  std::vector<std::function<void()>> tasks_;
  bool isStopping_ = false;
  Descriptor wake_;          ///< an eventfd
  std::vector<Ward> wards_;  ///< the keeper's thread only
  std::jthread thread_;
};

}  // namespace zolvar
