#include "platform/qt/QtRunLoop.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <QTimerEvent>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <limits>

#include "platform/Log.h"
#include "util/InconsistencyError.h"

namespace zolvar {

namespace {

constexpr auto LongestSlice = std::chrono::milliseconds(10);

QEvent::Type postedEventType() {
  static const int type = QEvent::registerEventType();
  return static_cast<QEvent::Type>(type);
}

}  // namespace

QtRunLoop::QtRunLoop(Log& log) : log_(log) { postedEventType(); }

QtRunLoop::~QtRunLoop() {
  for (auto& [id, watch] : watches_) delete watch.notifier;
}

RunLoop::Id QtRunLoop::after(double seconds, Task task) {
  return startTimer(seconds, false, std::move(task));
}

RunLoop::Id QtRunLoop::every(double seconds, Task task) {
  return startTimer(seconds, true, std::move(task));
}

RunLoop::Id QtRunLoop::startTimer(double seconds, bool repeats, Task task) {
  require(isMainThread(), "isMainThread()");
  // Qt counts in whole milliseconds: round up, so that no timer comes before its time.
  const double milliseconds = std::clamp(std::ceil(seconds * 1000), 0.0,
                                         static_cast<double>(std::numeric_limits<int>::max()));
  const auto type = milliseconds < 1000 ? Qt::PreciseTimer : Qt::CoarseTimer;
  const int number = QObject::startTimer(static_cast<int>(milliseconds), type);
  const Id id = ++lastId_;
  timers_[id] = {number, repeats, std::make_shared<Task>(std::move(task))};
  timerIds_[number] = id;
  return id;
}

void QtRunLoop::cancel(Id id) {
  if (const auto timer = timers_.find(id); timer != timers_.end()) {
    killTimer(timer->second.number);
    timerIds_.erase(timer->second.number);
    timers_.erase(timer);
  } else if (const auto watch = watches_.find(id); watch != watches_.end()) {
    watch->second.notifier->setEnabled(false);
    watch->second.notifier->deleteLater();  // it may be the one that is calling us
    watches_.erase(watch);
  }
}

void QtRunLoop::timerEvent(QTimerEvent* event) {
  const auto id = timerIds_.find(event->timerId());
  if (id == timerIds_.end()) return;
  const auto timer = timers_.find(id->second);
  const auto task = timer->second.task;  // survives a cancel from inside
  if (!timer->second.repeats) cancel(id->second);
  runGuarded(*task);
}

void QtRunLoop::post(Task task) {
  {
    std::lock_guard lock(mutex_);
    posted_.push_back(std::move(task));
    if (isWoken_) return;
    isWoken_ = true;
  }
  wake();
}

void QtRunLoop::wake() { QCoreApplication::postEvent(this, new QEvent(postedEventType())); }

bool QtRunLoop::isMainThread() const { return std::this_thread::get_id() == mainThread_; }

RunLoop::Id QtRunLoop::watch(int descriptor, Events events, Task ready) {
  require(isMainThread(), "isMainThread()");
  const Id id = ++lastId_;
  auto* notifier = new QSocketNotifier(
      descriptor, events == Events::Readable ? QSocketNotifier::Read : QSocketNotifier::Write);
  auto task = std::make_shared<Task>(std::move(ready));
  connect(notifier, &QSocketNotifier::activated, this, [this, id] {
    const auto found = watches_.find(id);
    if (found == watches_.end()) return;
    const auto running = found->second.task;
    runGuarded(*running);
  });
  watches_[id] = {notifier, std::move(task)};
  return id;
}

bool QtRunLoop::event(QEvent* event) {
  if (event->type() != postedEventType()) return QObject::event(event);
  runPosted();
  return true;
}

/// isWoken_ tells whether an event of ours is on its way; running_ comes before posted_. A task may
/// run an event loop of its own (a dialog does), so the next event is sent before the tasks run.
void QtRunLoop::runPosted() {
  bool hasMore = false;
  {
    std::lock_guard lock(mutex_);
    if (next_ == running_.size()) {
      running_.clear();
      next_ = 0;
      running_.swap(posted_);
    }
    hasMore = running_.size() - next_ > 1;
    isWoken_ = hasMore;
  }
  if (hasMore) wake();
  const auto end = std::chrono::steady_clock::now() + LongestSlice;
  while (next_ < running_.size()) {
    const Task task = std::move(running_[next_++]);
    runGuarded(task);
    if (std::chrono::steady_clock::now() >= end) break;
  }
  {
    std::lock_guard lock(mutex_);
    if (isWoken_ || (next_ == running_.size() && posted_.empty())) return;
    isWoken_ = true;
  }
  wake();
}

void QtRunLoop::runGuarded(const Task& task) {
  try {
    task();
  } catch (const std::exception& error) {
    log_.error("A task of the main thread failed: {}", error.what());
  }
}

}  // namespace zolvar
