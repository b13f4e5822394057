#pragma once

#include <QObject>
#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/RunLoop.h"

class QSocketNotifier;

namespace zolvar {

class Log;

/// The run loop of QCoreApplication's thread. Created on the main thread after the
/// QCoreApplication, and outlives everything that posts to it. A std::exception that leaves a task
/// is logged as an error and costs only that task. Posted tasks run in slices of a few milliseconds
/// so that timers and descriptors get their turn in between.
class QtRunLoop : public RunLoop, private QObject {
 public:
  explicit QtRunLoop(Log& log);
  ~QtRunLoop() override;

  Id after(double seconds, Task task) override;
  Id every(double seconds, Task task) override;
  void cancel(Id id) override;
  void post(Task task) override;
  [[nodiscard]] bool isMainThread() const override;
  Id watch(int descriptor, Events events, Task ready) override;

 private:
  struct Timer {
    int number = 0;  ///< Qt's id
    bool repeats = false;
    std::shared_ptr<Task> task;
  };
  struct Watch {
    QSocketNotifier* notifier = nullptr;
    std::shared_ptr<Task> task;
  };

  bool event(QEvent* event) override;
  void timerEvent(QTimerEvent* event) override;
  Id startTimer(double seconds, bool repeats, Task task);
  void runPosted();
  void runGuarded(const Task& task);
  void wake();

  Log& log_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  Id lastId_ = 0;
  std::unordered_map<Id, Timer> timers_;
  std::unordered_map<int, Id> timerIds_;  ///< Qt's id → ours
  std::unordered_map<Id, Watch> watches_;

  std::mutex mutex_;  ///< guards posted_ and isWoken_
  std::vector<Task> posted_;
  bool isWoken_ = false;
  std::vector<Task> running_;  ///< taken from posted_; main thread
  std::size_t next_ = 0;       ///< index in running_
};

}  // namespace zolvar
