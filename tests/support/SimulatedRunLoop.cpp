#include "support/SimulatedRunLoop.h"

#include <stdexcept>
#include <utility>

#include "support/LaneThread.h"

namespace zolvar {

struct SimulatedRunLoop::Queue {
  struct Item {
    const SimulatedRunLoop* owner;
    Id id;
    double interval;  ///< 0: once
    Task task;
  };
  using Key = std::pair<double, Id>;  ///< due time, then order of asking

  explicit Queue(SimulatedClock& theClock) : clock(theClock) {}
  SimulatedClock& clock;
  std::map<Key, Item> items;
  std::map<Id, const SimulatedRunLoop*> watches;
  Id nextId = 1;
  Id cancelledWhileRunning = 0;
  Id running = 0;
  int turnDepth = 0;
};

namespace {
/// More turns than this at one moment are an endless loop of the code under test.
constexpr std::size_t MostTurnsAtOnce = 2'000'000;
}  // namespace

SimulatedRunLoop::SimulatedRunLoop(SimulatedClock& clock)
    : queue_(std::make_shared<Queue>(clock)) {}
SimulatedRunLoop::SimulatedRunLoop(SimulatedRunLoop& shared) : queue_(shared.queue_) {}
SimulatedRunLoop::~SimulatedRunLoop() { dropAll(); }

RunLoop::Id SimulatedRunLoop::add(double seconds, double interval, Task task) {
  const Id id = queue_->nextId++;
  queue_->items.emplace(Queue::Key{queue_->clock.now() + std::max(0.0, seconds), id},
                        Queue::Item{this, id, interval, std::move(task)});
  return id;
}

RunLoop::Id SimulatedRunLoop::after(double seconds, Task task) {
  return add(seconds, 0, std::move(task));
}
RunLoop::Id SimulatedRunLoop::every(double seconds, Task task) {
  return add(seconds, std::max(seconds, 0.001), std::move(task));
}
void SimulatedRunLoop::post(Task task) { add(0, 0, std::move(task)); }

void SimulatedRunLoop::cancel(Id id) {
  if (queue_->running == id) queue_->cancelledWhileRunning = id;
  std::erase_if(queue_->items, [id](const auto& item) { return item.second.id == id; });
  queue_->watches.erase(id);
}

bool SimulatedRunLoop::isMainThread() const { return LaneThread::current() == nullptr; }
bool SimulatedRunLoop::isInTurn() const { return queue_->turnDepth > 0 && isMainThread(); }

RunLoop::Id SimulatedRunLoop::watch(int /*descriptor*/, Events /*events*/, Task /*ready*/) {
  const Id id = queue_->nextId++;
  queue_->watches.emplace(id, this);
  return id;
}

bool SimulatedRunLoop::runFirst(double until) {
  const auto queue = queue_;  // a task may destroy this front
  if (queue->items.empty() || queue->items.begin()->first.first > until) return false;
  auto node = queue->items.extract(queue->items.begin());
  queue->clock.advanceTo(node.key().first);
  struct Turn {
    Queue& queue;
    Id before;
    ~Turn() {
      --queue.turnDepth;
      queue.running = before;
    }
  } turn{*queue, std::exchange(queue->running, node.mapped().id)};
  ++queue->turnDepth;
  node.mapped().task();
  const bool isCancelled = queue->cancelledWhileRunning == node.mapped().id;
  if (node.mapped().interval > 0 && !isCancelled) {
    const double next = node.key().first + node.mapped().interval;
    const double now = queue->clock.now();  // missed periods are skipped, not caught up with
    node.key().first = next > now ? next : now + node.mapped().interval;
    queue->items.insert(std::move(node));
  }
  return true;
}

void SimulatedRunLoop::runUntilIdle() {
  for (std::size_t turns = 0; runFirst(queue_->clock.now()); ++turns) {
    if (turns > MostTurnsAtOnce) throw std::logic_error("The run loop never becomes idle.");
  }
}

void SimulatedRunLoop::advance(double seconds) {
  const double end = queue_->clock.now() + seconds;
  for (std::size_t turns = 0; runFirst(std::max(end, queue_->clock.now())); ++turns) {
    if (queue_->clock.now() > end) break;
    if (turns > MostTurnsAtOnce) throw std::logic_error("The run loop never becomes idle.");
  }
  queue_->clock.advanceTo(end);
}

bool SimulatedRunLoop::runUntil(const std::function<bool()>& done, double limit) {
  const double end = queue_->clock.now() + limit;
  while (!done()) {
    if (!runFirst(end)) {
      queue_->clock.advanceTo(end);
      return done();
    }
  }
  return true;
}

void SimulatedRunLoop::dropAll() {
  std::erase_if(queue_->items, [this](const auto& item) { return item.second.owner == this; });
  std::erase_if(queue_->watches, [this](const auto& watch) { return watch.second == this; });
  if (queue_->running != 0) queue_->cancelledWhileRunning = queue_->running;
}

std::optional<double> SimulatedRunLoop::nextDue() const {
  if (queue_->items.empty()) return std::nullopt;
  return queue_->items.begin()->first.first;
}

std::size_t SimulatedRunLoop::watchCount() const { return queue_->watches.size(); }
SimulatedClock& SimulatedRunLoop::clock() { return queue_->clock; }

}  // namespace zolvar
