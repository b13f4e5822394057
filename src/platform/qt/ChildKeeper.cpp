#include "platform/qt/ChildKeeper.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <future>

namespace zolvar {

namespace {

double steadyNow() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (const auto& text : strings) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

/// Everything from here to execve runs in the child, which may share our memory: system calls only.
struct ChildStart {
  const char* program;
  char* const* arguments;
  char* const* environment;
  int descriptors[3];  ///< for standard input, output and error, all above 2
  int report;          ///< the writing end of a pipe that exec closes
  pid_t parent;

  [[noreturn]] void run() const {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);  // the parent was gone before the line above
    for (int number = 1; number < NSIG; ++number) ::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    bool isReady = true;
    for (int number = 0; number < 3; ++number) {
      isReady = isReady && dup2(descriptors[number], number) == number;
    }
    // Also what libraries opened without care, or what we inherited ourselves.
    syscall(SYS_close_range, 3U, ~0U, CLOSE_RANGE_CLOEXEC);
    if (isReady && chdir("/") == 0) {
      sigprocmask(SIG_SETMASK, &none, nullptr);
      execve(program, arguments, environment);
    }
    const int error = errno;
    (void)!write(report, &error, sizeof error);
    _exit(127);
  }
};

/// `descriptor`, or /dev/null when it is -1, as a new descriptor above 2 that exec closes.
Descriptor above2(int descriptor, int accessMode) {
  Descriptor null;
  if (descriptor < 0) {
    null.reset(open("/dev/null", accessMode | O_CLOEXEC));
    descriptor = null.get();
  }
  return Descriptor(fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
}

Result<std::shared_ptr<Child>> spawnHere(const ChildPlan& plan) {
  const auto failed = [&plan](int error) {
    return tl::unexpected(failureFromErrno(error, "start the program", plan.program));
  };
  const auto arguments = pointersTo(plan.arguments);
  const auto environment = pointersTo(plan.environment);
  const Descriptor input = above2(plan.input, O_RDONLY);
  const Descriptor output = above2(plan.output, O_WRONLY);
  const Descriptor errors = above2(plan.errors, O_WRONLY);
  int ends[2];
  if (!input || !output || !errors || pipe2(ends, O_CLOEXEC) != 0) return failed(errno);
  const Descriptor reportReader(ends[0]);
  Descriptor reportWriter(fcntl(ends[1], F_DUPFD_CLOEXEC, 3));  // above what the child overwrites
  ::close(ends[1]);
  if (!reportWriter) return failed(errno);
  const ChildStart start{plan.program.c_str(), arguments.data(),
                         environment.data(),   {input.get(), output.get(), errors.get()},
                         reportWriter.get(),   getpid()};
  // With vfork a large process starts a child without copying its page tables. No handler of ours
  // may run in the child meanwhile: signals stay blocked until it has put the defaults in place.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t pid = vfork();
  if (pid == 0) start.run();
  const int forkError = errno;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (pid < 0) return failed(forkError);
  reportWriter.reset();
  int error = 0;
  const bool isFailed = read(reportReader.get(), &error, sizeof error) == sizeof error;
  Descriptor descriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
  if (!isFailed && descriptor) return std::make_shared<Child>(pid, std::move(descriptor));
  if (!isFailed) {
    error = errno;
    kill(pid, SIGKILL);
  }
  waitpid(pid, nullptr, 0);
  return failed(error);
}

}  // namespace

bool Child::signalGroup(int signalNumber) {
  std::lock_guard lock(mutex_);
  return !isReaped_ && kill(-pid_, signalNumber) == 0;
}

bool Child::isReaped() const {
  std::lock_guard lock(mutex_);
  return isReaped_;
}

int Child::reap() {
  siginfo_t info = {};
  // Waits without reaping and without the lock, so that signals still get through meanwhile.
  while (waitid(P_PIDFD, static_cast<id_t>(descriptor_.get()), &info, WEXITED | WNOWAIT) != 0 &&
         errno == EINTR) {
  }
  std::lock_guard lock(mutex_);
  if (isReaped_) return status_;
  while (waitid(P_PIDFD, static_cast<id_t>(descriptor_.get()), &info, WEXITED) != 0 &&
         errno == EINTR) {
  }
  isReaped_ = true;
  status_ = info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
  return status_;
}

ChildKeeper::ChildKeeper(double patience)
    : patience_(patience), wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  thread_ = std::jthread([this] { loop(); });
}

ChildKeeper::~ChildKeeper() {
  {
    std::lock_guard lock(mutex_);
    isStopping_ = true;
  }
  perform({});
}

Result<std::shared_ptr<Child>> ChildKeeper::spawn(const ChildPlan& plan) {
  // Shared: the keeper's thread may still be leaving the promise when the result is there.
  const auto promise = std::make_shared<std::promise<Result<std::shared_ptr<Child>>>>();
  auto result = promise->get_future();
  perform([promise, &plan] { promise->set_value(spawnHere(plan)); });
  return result.get();
}

void ChildKeeper::terminate(const std::shared_ptr<Child>& child) {
  if (!child->signalGroup(SIGTERM)) return;
  perform([this, child] { wards_.push_back({child, steadyNow() + patience_, false}); });
}

void ChildKeeper::abandon(const std::shared_ptr<Child>& child) {
  if (child->isReaped()) return;
  child->signalGroup(SIGTERM);
  perform([this, child] { wards_.push_back({child, steadyNow() + patience_, true}); });
}

void ChildKeeper::perform(std::function<void()> task) {
  {
    std::lock_guard lock(mutex_);
    if (task) tasks_.push_back(std::move(task));
  }
  const std::uint64_t one = 1;
  (void)!write(wake_.get(), &one, sizeof one);
}

void ChildKeeper::loop() {
  pthread_setname_np(pthread_self(), "children");
  std::vector<pollfd> polled;
  for (;;) {
    const int timeout = lookAfterWards();
    polled.assign(1, {wake_.get(), POLLIN, 0});
    for (const auto& ward : wards_) {
      if (ward.isAbandoned) polled.push_back({ward.child->descriptor(), POLLIN, 0});
    }
    poll(polled.data(), polled.size(), timeout);
    std::uint64_t count = 0;
    (void)!read(wake_.get(), &count, sizeof count);
    runTasks();
    std::lock_guard lock(mutex_);
    if (isStopping_) return;
  }
}

void ChildKeeper::runTasks() {
  std::vector<std::function<void()>> tasks;
  {
    std::lock_guard lock(mutex_);
    tasks.swap(tasks_);
  }
  for (const auto& task : tasks) task();
}

/// Kills what had its time, reaps what ended, and says how many milliseconds until the next kill.
int ChildKeeper::lookAfterWards() {
  const double now = steadyNow();
  double next = -1;
  std::erase_if(wards_, [&](Ward& ward) {
    pollfd ended = {ward.child->descriptor(), POLLIN, 0};
    if (poll(&ended, 1, 0) > 0) {
      if (ward.isAbandoned) ward.child->reap();
      return true;
    }
    if (ward.killTime <= now) {
      ward.child->signalGroup(SIGKILL);
      ward.killTime = now + patience_;
    }
    next = next < 0 ? ward.killTime : std::min(next, ward.killTime);
    return false;
  });
  return next < 0 ? -1 : static_cast<int>(std::ceil((next - now) * 1000));
}

}  // namespace zolvar
