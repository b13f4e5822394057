#include "platform/qt/ThreadLanes.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <future>
#include <mutex>
#include <semaphore>
#include <thread>

#include "platform/Log.h"
#include "util/InconsistencyError.h"

namespace zolvar {

/// What all lanes together still have to do. Shared by the lanes' threads.
struct ThreadLanes::Census {
  std::mutex mutex;  ///< guards the counters
  std::condition_variable changed;
  long jobs = 0;    ///< posted and not done
  long ending = 0;  ///< threads of lanes that nobody refers to

  void add(long jobsMore, long endingMore) {
    {
      std::lock_guard lock(mutex);
      jobs += jobsMore;
      ending += endingMore;
    }
    changed.notify_all();
  }
};

/// The queue and the loop of one lane's thread; lives as long as the thread or the lane.
class ThreadLanes::Worker {
 public:
  Worker(Log& log, std::shared_ptr<Census> census, std::string name)
      : log_(log), census_(std::move(census)), name_(std::move(name)) {}

  void post(Lane::Job job) {
    census_->add(1, 0);
    {
      std::lock_guard lock(mutex_);
      jobs_.push_back(std::move(job));
    }
    wake_.notify_one();
  }

  void close() {
    census_->add(0, 1);
    {
      std::lock_guard lock(mutex_);
      isClosed_ = true;
    }
    wake_.notify_one();
  }

  void loop() {
    pthread_setname_np(pthread_self(), name_.substr(0, 15).c_str());  // the kernel's limit
    for (;;) {
      Lane::Job job;
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return isClosed_ || !jobs_.empty(); });
        if (jobs_.empty()) break;
        job = std::move(jobs_.front());
        jobs_.pop_front();
      }
      runGuarded(job);
      job = nullptr;  // what it captured goes before the job counts as done
      census_->add(-1, 0);
    }
    census_->add(0, -1);
  }

 private:
  void runGuarded(const Lane::Job& job) {
    try {
      job();
    } catch (const std::exception& error) {
      log_.error("A job of the lane {} failed: {}", name_, error.what());
    }
  }

  Log& log_;
  const std::shared_ptr<Census> census_;
  const std::string name_;
  std::mutex mutex_;  ///< guards jobs_ and isClosed_
  std::condition_variable wake_;
  std::deque<Lane::Job> jobs_;
  bool isClosed_ = false;
};

class ThreadLanes::ThreadLane : public Lane {
 public:
  explicit ThreadLane(std::shared_ptr<Worker> worker)
      : worker_(std::move(worker)), thread_([worker = worker_] { worker->loop(); }) {}

  ~ThreadLane() override {
    worker_->close();
    thread_.detach();
  }

  void post(Job job) override { worker_->post(std::move(job)); }

  void run(const Job& job) override {
    require(std::this_thread::get_id() != thread_.get_id(), "a lane does not wait for itself");
    // The worker lets go of the task, and of an exception in it, before it tells that it is done.
    auto task = std::make_shared<std::packaged_task<void()>>(job);
    auto result = task->get_future();
    const auto done = std::make_shared<std::binary_semaphore>(0);
    worker_->post([task = std::move(task), done]() mutable {
      (*task)();
      task.reset();
      done->release();
    });
    done->acquire();
    result.get();
  }

 private:
  const std::shared_ptr<Worker> worker_;
  std::jthread thread_;
};

ThreadLanes::ThreadLanes(Log& log) : log_(log), census_(std::make_shared<Census>()) {}

ThreadLanes::~ThreadLanes() = default;

std::shared_ptr<Lane> ThreadLanes::start(const std::string& name) {
  return std::make_shared<ThreadLane>(std::make_shared<Worker>(log_, census_, name));
}

bool ThreadLanes::finishAll(double seconds) {
  std::unique_lock lock(census_->mutex);
  return census_->changed.wait_for(lock, std::chrono::duration<double>(seconds),
                                   [this] { return census_->jobs == 0 && census_->ending == 0; });
}

}  // namespace zolvar
