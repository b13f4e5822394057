#include "support/SimulatedLanes.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "support/LaneThread.h"
#include "util/InconsistencyError.h"

namespace zolvar {

namespace {
constexpr double LongestWait = 24 * 3600;  ///< virtual seconds, outside of a turn
}  // namespace

/// What a lane has to do; lives as long as the lane or its jobs, as on a real one.
struct SimulatedLanes::Jobs : LaneThread, std::enable_shared_from_this<Jobs> {
  explicit Jobs(SimulatedRunLoop& theLoop) : loop(theLoop) {}
  ~Jobs() {
    waiting.clear();
    abandon();
  }
  Jobs(const Jobs&) = delete;
  Jobs& operator=(const Jobs&) = delete;

  /// Whose job runs; none on the main thread.
  static Jobs* current() { return static_cast<Jobs*>(LaneThread::current()); }
  void post(Lane::Job job) {
    waiting.push_back(std::move(job));
    askForTurn();
  }
  void askForTurn() {
    const auto self = weak_from_this().lock();  // none while these are taken down
    if (self) loop.post([self] { self->takeTurn(); });
  }
  void takeTurn() {
    if (isWorking() || waiting.empty()) return;
    Lane::Job next = std::move(waiting.front());
    waiting.pop_front();
    LaneThread::start([this, job = std::move(next)] {
      struct Next {
        Jobs& jobs;
        ~Next() {
          if (!jobs.waiting.empty()) jobs.askForTurn();
        }
      } const next{*this};
      job();
    });
  }
  /// Goes on with the paused job at a later turn, which keeps the jobs until then.
  void resumeAfter(double seconds) {
    loop.after(seconds, [jobs = shared_from_this()] { jobs->resume(); });
  }

  SimulatedRunLoop& loop;
  std::deque<Lane::Job> waiting;
  bool isWaitingForLane = false;
};

class SimulatedLanes::SimulatedLane : public Lane {
 public:
  SimulatedLane(std::shared_ptr<Jobs> jobs, std::string name)
      : jobs_(std::move(jobs)), name_(std::move(name)) {}

  void post(Job job) override { jobs_->post(std::move(job)); }

  void run(const Job& job) override {
    Jobs* const caller = Jobs::current();
    if (caller == jobs_.get()) {
      throw InconsistencyError("The lane '" + name_ + "' waits for itself.");
    }
    if (jobs_->loop.isInTurn()) {
      throw InconsistencyError("The main thread waits for the lane '" + name_ + "'.");
    }
    bool isDone = false;
    std::exception_ptr thrown;
    post([&, waiting = caller != nullptr ? caller->shared_from_this() : nullptr] {
      try {
        job();
      } catch (const std::exception&) {
        thrown = std::current_exception();
      }
      isDone = true;
      if (waiting) waiting->resumeAfter(0);
    });
    if (caller != nullptr) {
      caller->isWaitingForLane = true;
      caller->pause();
      caller->isWaitingForLane = false;
    } else if (!jobs_->loop.runUntil([&] { return isDone; }, LongestWait)) {
      throw InconsistencyError("The lane '" + name_ + "' never gets done.");
    }
    if (thrown) std::rethrow_exception(thrown);
  }

 private:
  std::shared_ptr<Jobs> jobs_;
  std::string name_;
};

std::shared_ptr<Lane> SimulatedLanes::start(const std::string& name) {
  const auto jobs = std::make_shared<Jobs>(loop_);
  std::erase_if(all_, [](const auto& one) { return one.expired(); });
  all_.push_back(jobs);
  return std::make_shared<SimulatedLane>(jobs, name);
}

void SimulatedLanes::pause(double seconds) {
  Jobs* const jobs = Jobs::current();
  if (jobs == nullptr) {
    loop_.clock().advance(seconds);
    return;
  }
  jobs->resumeAfter(seconds);
  jobs->pause();
}

bool SimulatedLanes::areIdle() const {
  return std::all_of(all_.begin(), all_.end(), [](const auto& one) {
    const auto jobs = one.lock();
    return !jobs || (!jobs->isWorking() && jobs->waiting.empty());
  });
}

void SimulatedLanes::abandonAll() {
  std::vector<std::shared_ptr<Jobs>> all;
  for (const auto& one : std::exchange(all_, {})) {
    if (const auto jobs = one.lock()) all.push_back(jobs);
  }
  for (const auto& jobs : all) jobs->waiting.clear();
  // Who waits for a job has lent it what lies on the own stack.
  std::stable_partition(all.begin(), all.end(), [](auto& jobs) { return !jobs->isWaitingForLane; });
  for (const auto& jobs : all) jobs->abandon();
}

}  // namespace zolvar
