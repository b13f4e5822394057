#include "platform/qt/InlineLanes.h"

#include <deque>

namespace zolvar {

namespace {

class InlineLane : public Lane {
 public:
  void post(Job job) override {
    jobs_.push_back(std::move(job));
    if (!isBusy_) drain();
  }
  void run(const Job& job) override { job(); }

 private:
  struct Busy {
    explicit Busy(bool& flag) : flag_(flag) { flag_ = true; }
    ~Busy() { flag_ = false; }
    bool& flag_;
  };

  void drain() {
    const Busy busy(isBusy_);
    while (!jobs_.empty()) {
      const Job job = std::move(jobs_.front());
      jobs_.pop_front();
      job();
    }
  }

  std::deque<Job> jobs_;
  bool isBusy_ = false;
};

}  // namespace

std::shared_ptr<Lane> InlineLanes::start(const std::string&) {
  return std::make_shared<InlineLane>();
}

}  // namespace zolvar
