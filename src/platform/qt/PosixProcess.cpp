#include "platform/qt/PosixProcess.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>

#include "platform/qt/ProcessGroupActivity.h"

namespace zolvar {

namespace {

double steadyNow() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

/// Judges, tick by tick, whether the process group has stood still for too long.
class PosixProcess::SilenceWatch {
 public:
  SilenceWatch(const SilenceLimits& limits, pid_t pid, double tick)
      : limits_(limits), activity_(pid), tick_(tick) {}

  [[nodiscard]] bool isNeeded() const { return limits_.connecting > 0 || limits_.silent > 0; }

  void sawPipeTraffic() {
    hasStarted_ = true;
    lastMovement_ = steadyNow();
  }

  /// True when the limit that applies now is passed.
  bool isPassed() {
    const double silence = steadyNow() - lastMovement_;
    if (silence < tick_) return false;  // the pipes were busy: no need to look further
    const auto bytes = activity_.bytes();
    // Where the kernel keeps no counters, nothing is known, and no healthy transfer is ended.
    if (!bytes || bytes != lastBytes_) {
      hasStarted_ = hasStarted_ || (bytes && bytes->written > 0);
      lastBytes_ = bytes;
      lastMovement_ = steadyNow();
      return false;
    }
    if (limits_.silent > 0 && silence >= limits_.silent) return true;
    // Resolving a name moves bytes before the connection is tried, hence the look at the sockets.
    return limits_.connecting > 0 && silence >= limits_.connecting &&
           (!hasStarted_ || activity_.isConnecting());
  }

 private:
  const SilenceLimits limits_;
  const ProcessGroupActivity activity_;
  const double tick_;
  bool hasStarted_ = false;
  double lastMovement_ = steadyNow();
  std::optional<ProcessGroupActivity::Bytes> lastBytes_;
};

PosixProcess::PosixProcess(std::shared_ptr<ChildKeeper> keeper, std::shared_ptr<Child> child,
                           Pipes pipes, std::string input, const ProcessPace& pace)
    : keeper_(std::move(keeper)),
      child_(std::move(child)),
      pipes_(std::move(pipes)),
      input_(std::move(input)),
      tick_(pace.tick) {}

PosixProcess::~PosixProcess() { keeper_->abandon(child_); }

void PosixProcess::terminate() { keeper_->terminate(child_); }

ProcessEnd PosixProcess::wait(const SilenceLimits& limits, const ProcessSinks& sinks) {
  SilenceWatch silence(limits, child_->pid(), tick_);
  const bool needsTicks = sinks.tick || silence.isNeeded();
  double nextTick = steadyNow() + tick_;
  ProcessEnd end;
  for (bool hasEnded = false; !hasEnded;) {
    const double remaining = std::max(0.0, nextTick - steadyNow());
    const int timeout = needsTicks ? static_cast<int>(std::ceil(remaining * 1000)) : -1;
    if (pollOnce(timeout, sinks, hasEnded)) silence.sawPipeTraffic();
    if (hasEnded || !needsTicks || steadyNow() < nextTick) continue;
    nextTick = steadyNow() + tick_;
    if (sinks.tick) sinks.tick();
    if (silence.isNeeded() && !end.silenced && silence.isPassed()) {
      end.silenced = true;
      terminate();
    }
  }
  end.status = child_->reap();
  return end;
}

/// Waits for something to happen and carries bytes; true when any moved. Sees the end of the child
/// before the last drain, so that nothing it wrote is lost; a grandchild that keeps a pipe open is
/// not waited for.
bool PosixProcess::pollOnce(int timeout, const ProcessSinks& sinks, bool& hasEnded) {
  std::array<pollfd, 4> polled = {{{child_->descriptor(), POLLIN, 0},
                                   {pipes_.input.get(), POLLOUT, 0},
                                   {pipes_.output.get(), POLLIN, 0},
                                   {pipes_.errors.get(), POLLIN, 0}}};
  if (poll(polled.data(), polled.size(), timeout) <= 0) return false;
  hasEnded = polled[0].revents != 0;
  bool hasMoved = false;
  if (polled[1].revents != 0) hasMoved = feed();
  if (hasEnded || polled[2].revents != 0) hasMoved |= drain(pipes_.output, sinks.output);
  if (hasEnded || polled[3].revents != 0) hasMoved |= drain(pipes_.errors, sinks.errors);
  return hasMoved;
}

bool PosixProcess::feed() {
  const ssize_t count = write(pipes_.input.get(), input_.data() + fed_, input_.size() - fed_);
  if (count > 0) fed_ += static_cast<std::size_t>(count);
  const bool isBusy = count < 0 && (errno == EAGAIN || errno == EINTR);
  if (fed_ == input_.size() || (count < 0 && !isBusy)) pipes_.input.reset();
  return count > 0;
}

bool PosixProcess::drain(Descriptor& pipe, const std::function<void(std::string_view)>& sink) {
  if (!pipe) return false;
  std::array<char, 65536> buffer;
  constexpr int MostReads = 64;  // bounds the time between ticks; a pipe holds one such buffer
  bool hasMoved = false;
  for (int reads = 0; reads < MostReads; ++reads) {
    const ssize_t count = read(pipe.get(), buffer.data(), buffer.size());
    if (count > 0) {
      hasMoved = true;
      if (sink) sink({buffer.data(), static_cast<std::size_t>(count)});
    } else if (count < 0 && errno == EINTR) {
      continue;
    } else {
      if (count == 0 || errno != EAGAIN) pipe.reset();
      break;
    }
  }
  return hasMoved;
}

}  // namespace zolvar
