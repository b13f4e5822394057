#include "net/ServerControl.h"

#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/Platform.h"

namespace zolvar {

namespace {
constexpr double CheckInterval = 30;  // seconds
}

ServerControl::ServerControl(Platform& platform, std::shared_ptr<TransferDaemon> daemon,
                             std::shared_ptr<Lane> lane, unsigned port, Hooks hooks)
    : platform_(platform),
      daemon_(std::move(daemon)),
      lane_(std::move(lane)),
      port_(port),
      hooks_(std::move(hooks)),
      alive_(std::make_shared<bool>(true)) {
  timer_ = platform_.runLoop.every(CheckInterval, [this] { checkAlive(); });
}

ServerControl::~ServerControl() {
  platform_.runLoop.cancel(timer_);
  if (running_ || busy_) onLane([daemon = daemon_] { (void)daemon->stop(); });
}

void ServerControl::start(Done done) {
  wanted_ = true;
  request(Goal::Start, std::move(done));
}

void ServerControl::stop(Done done) {
  wanted_ = false;
  request(Goal::Stop, std::move(done));
}

void ServerControl::restart(Done done) { request(Goal::Restart, std::move(done)); }

ServerControl::Goal ServerControl::joined(Goal earlier, Goal later) {
  switch (later) {
    case Goal::None:
      return earlier;
    case Goal::Stop:
      return Goal::Stop;
    case Goal::Start:
      return earlier == Goal::Stop || earlier == Goal::Restart ? Goal::Restart : Goal::Start;
    case Goal::Restart:
      return earlier == Goal::None ? Goal::Restart : earlier;
  }
  return later;
}

void ServerControl::request(Goal goal, Done done) {
  if (busy_) {
    next_ = joined(next_, goal);
    nextWaiting_.push_back({goal, std::move(done)});
    return;
  }
  waiting_.push_back({goal, std::move(done)});
  begin(goal);
}

void ServerControl::begin(Goal goal) {
  const bool nothingToDo =
      (goal == Goal::Start && running_) || (goal == Goal::Restart && !running_ && !wanted_);
  busy_ = true;
  if (nothingToDo) {
    platform_.runLoop.post([this, weak = std::weak_ptr(alive_), running = running_, port = port_] {
      if (!weak.expired()) finish({{}, running, port, false});
    });
    return;
  }
  // A restart of a wanted daemon that is down is a start; so is the second half of stop and start.
  const bool stops = goal != Goal::Start;
  const bool starts = goal == Goal::Start || (goal == Goal::Restart && wanted_);
  DaemonStart wanted;
  if (starts) {
    wanted = hooks_.prepare();
    wanted.port = port_;
  }
  onLane([daemon = daemon_, &runLoop = platform_.runLoop, stops, starts, port = port_, this,
          weak = std::weak_ptr(alive_), wanted = std::move(wanted)] {
    Outcome outcome;
    outcome.port = port;
    if (stops) {
      outcome.result = daemon->stop();
      outcome.running = !outcome.result;
    }
    if (starts && outcome.result) {
      const auto started = daemon->start(wanted);
      outcome.running = started.has_value();
      if (started) {
        outcome.port = *started;
      } else {
        outcome.result = tl::unexpected(started.error());
      }
    }
    runLoop.post([this, weak, outcome] {
      if (!weak.expired()) finish(outcome);
    });
  });
}

void ServerControl::finish(const Outcome& outcome) {
  running_ = outcome.running;
  port_ = outcome.port;
  const std::vector<Waiter> told = std::exchange(waiting_, {});
  const std::weak_ptr<bool> weak = alive_;
  if (outcome.worked) {
    const bool troubled = !outcome.result && wanted_;
    hooks_.changed(running_, troubled ? outcome.result.error().message() : "");
    if (weak.expired()) return;
  }
  // What was asked for meanwhile begins before anybody is told, so that a request made in a
  // callback joins it.
  busy_ = false;
  waiting_ = std::exchange(nextWaiting_, {});
  const Goal next = std::exchange(next_, Goal::None);
  if (next != Goal::None) begin(next);
  for (const Waiter& waiter : told) {
    tell(waiter, outcome.result);
    if (weak.expired()) return;
  }
}

void ServerControl::tell(const Waiter& waiter, const Result<>& result) {
  if (!waiter.done) return;
  if (waiter.goal == Goal::Start && result && !running_) {
    waiter.done(fail(FailureKind::Cancelled, "start the transfer daemon", "", "it was stopped"));
  } else {
    waiter.done(result);
  }
}

void ServerControl::checkAlive() {
  if (busy_ || !wanted_) return;
  if (!running_) {
    request(Goal::Start, {});
    return;
  }
  onLane([daemon = daemon_, &runLoop = platform_.runLoop, this, weak = std::weak_ptr(alive_)] {
    if (daemon->runningPid() != 0) return daemon->boundLog();
    runLoop.post([this, weak] {
      if (weak.expired() || busy_ || !running_ || !wanted_) return;
      platform_.log.warning("The transfer daemon has ended by itself. Starting it again.");
      running_ = false;
      request(Goal::Start, {});
    });
  });
}

void ServerControl::onLane(std::function<void()> job) {
  if (platform_.isTestModeActive) {
    job();
  } else {
    lane_->post(std::move(job));
  }
}

}  // namespace zolvar
