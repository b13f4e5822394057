#include "support/SimulatedLanes.h"

#include <optional>
#include <utility>

#include "util/InconsistencyError.h"

namespace zolvar {

class SimulatedLanes::SimulatedLane : public Lane {
  struct Jobs {
    std::deque<Job> waiting;
    bool isBusy = false;
  };

 public:
  SimulatedLane(SimulatedLanes& lanes, std::string name) : lanes_(lanes), name_(std::move(name)) {}

  void post(Job job) override {
    jobs_->waiting.push_back(std::move(job));
    if (lanes_.mode_ == Mode::Inline) {
      if (!jobs_->isBusy) drain(*jobs_, nullptr);
      return;
    }
    // The jobs outlive the lane, as they do on a real one.
    lanes_.loop_.post([jobs = jobs_, loop = &lanes_.loop_] {
      if (!jobs->waiting.empty()) runFirst(*jobs, loop);
    });
  }

  void run(const Job& job) override {
    SimulatedRunLoop* const loop = lanes_.mode_ == Mode::Inline ? nullptr : &lanes_.loop_;
    if (jobs_->isBusy) throw InconsistencyError("The lane '" + name_ + "' waits for itself.");
    if (loop != nullptr && loop->isInTurn()) {
      throw InconsistencyError("The main thread waits for the lane '" + name_ + "'.");
    }
    drain(*jobs_, loop);
    jobs_->waiting.push_back(job);
    drain(*jobs_, loop);
  }

 private:
  static void runFirst(Jobs& jobs, SimulatedRunLoop* loop) {
    const Job job = std::move(jobs.waiting.front());
    jobs.waiting.pop_front();
    std::optional<SimulatedRunLoop::LaneScope> scope;
    if (loop != nullptr) scope.emplace(*loop);
    struct Busy {
      bool& flag;
      ~Busy() { flag = false; }
    } busy{jobs.isBusy};
    jobs.isBusy = true;
    job();
  }
  static void drain(Jobs& jobs, SimulatedRunLoop* loop) {
    while (!jobs.waiting.empty()) runFirst(jobs, loop);
  }

  SimulatedLanes& lanes_;
  std::string name_;
  std::shared_ptr<Jobs> jobs_ = std::make_shared<Jobs>();
};

std::shared_ptr<Lane> SimulatedLanes::start(const std::string& name) {
  return std::make_shared<SimulatedLane>(*this, name);
}

}  // namespace zolvar
