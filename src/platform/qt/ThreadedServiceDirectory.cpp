#include "platform/qt/ThreadedServiceDirectory.h"

#include <QEventLoop>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/qt/AvahiServiceDirectory.h"
#include "platform/qt/AvahiTxt.h"
#include "platform/qt/QtRunLoop.h"

namespace zolvar {

namespace {

constexpr std::chrono::seconds LongestEnd{3};

}  // namespace

/// The thread's side. What stands in Inside is the thread's alone.
class ThreadedServiceDirectory::Worker : public std::enable_shared_from_this<Worker> {
 public:
  using Id = std::uint64_t;

  struct Inside {
    Inside(RunLoop& runLoop, Log& log) : directory(runLoop, log) {}
    AvahiServiceDirectory directory;
    std::map<Id, std::unique_ptr<Publication>> publications;
    std::map<Id, std::unique_ptr<ServiceBrowser>> browsers;
  };
  using Task = std::function<void(Inside&)>;

  Worker(RunLoop& mainLoop, Log& log) : mainLoop_(&mainLoop), log_(log) {}

  /// Returns when tasks can be posted.
  void start() {
    thread_ = std::thread([self = shared_from_this()] { self->run(); });
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return loop_ != nullptr; });
  }

  /// Runs the task on the thread, in order of posting; not at all once it has ended.
  void post(Task task) {
    const std::lock_guard lock(mutex_);
    if (loop_ == nullptr) return;
    loop_->post([this, task = std::move(task)] { task(*inside_); });
  }

  /// Runs the task on the main thread; not at all once end() was called. Any thread.
  void tellMain(RunLoop::Task task) {
    const std::lock_guard lock(mutex_);
    if (mainLoop_ != nullptr) mainLoop_->post(std::move(task));
  }

  /// A thread that hangs in a call is left to itself; nothing is told any more either way.
  void end() {
    std::unique_lock lock(mutex_);
    mainLoop_ = nullptr;
    if (loop_ != nullptr) loop_->post([this] { events_->quit(); });
    if (changed_.wait_for(lock, LongestEnd, [this] { return hasEnded_; })) {
      lock.unlock();
      thread_.join();
    } else {
      thread_.detach();
    }
  }

  [[nodiscard]] Id newId() { return ++lastId_; }

  /// Any thread, until end().
  [[nodiscard]] std::string hostName() const { return inside_->directory.hostNameFqdn(); }

 private:
  void run() {
    QEventLoop events;
    QtRunLoop loop(log_);
    auto inside = std::make_unique<Inside>(loop, log_);
    {
      const std::lock_guard lock(mutex_);
      events_ = &events;
      inside_ = inside.get();
      loop_ = &loop;
    }
    changed_.notify_all();
    events.exec();
    {
      const std::lock_guard lock(mutex_);
      loop_ = nullptr;
    }
    inside->publications.clear();
    inside->browsers.clear();
    inside.reset();
    {
      const std::lock_guard lock(mutex_);
      hasEnded_ = true;
    }
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  RunLoop* mainLoop_;             ///< guarded by mutex_
  RunLoop* loop_ = nullptr;       ///< the thread's, while it takes tasks; guarded by mutex_
  bool hasEnded_ = false;         ///< guarded by mutex_
  QEventLoop* events_ = nullptr;  ///< set once before loop_, as is inside_
  Inside* inside_ = nullptr;
  Log& log_;
  Id lastId_ = 0;  ///< main thread
  std::thread thread_;
};

/// A publication as the main thread holds it.
class ThreadedServiceDirectory::PublicationFront final : public Publication {
 public:
  PublicationFront(std::shared_ptr<Worker> worker, std::string name, std::string type,
                   std::uint16_t port, const TxtRecord& txt, PublicationEvents events)
      : worker_(std::move(worker)),
        id_(worker_->newId()),
        events_(std::make_shared<PublicationEvents>(std::move(events))),
        latest_(std::make_shared<Latest>()) {
    // The thread outlives what it runs, so its tasks need no share in it.
    PublicationEvents inner;
    inner.established = [worker = worker_.get(), events = std::weak_ptr(events_)] {
      worker->tellMain([events] {
        if (const auto alive = events.lock(); alive && alive->established) alive->established();
      });
    };
    inner.failed = [worker = worker_.get(), events = std::weak_ptr(events_)](const Failure& why) {
      worker->tellMain([events, why] {
        if (const auto alive = events.lock(); alive && alive->failed) alive->failed(why);
      });
    };
    worker_->post([id = id_, name = std::move(name), type = std::move(type), port, txt,
                   inner = std::move(inner)](Worker::Inside& inside) {
      auto made = inside.directory.publish(name, type, port, txt, inner);
      if (made) {
        inside.publications[id] = std::move(*made);
      } else {
        inner.failed(made.error());
      }
    });
  }
  ~PublicationFront() override {
    worker_->post([id = id_](Worker::Inside& inside) { inside.publications.erase(id); });
  }

  /// While the thread hangs, updates become one.
  Result<> updateTxt(const TxtRecord& txt) override {
    if (const auto list = encodeTxt(txt); !list) return tl::unexpected(list.error());
    {
      const std::lock_guard lock(latest_->mutex);
      latest_->txt = txt;
      if (std::exchange(latest_->isPosted, true)) return {};
    }
    worker_->post([id = id_, latest = latest_](Worker::Inside& inside) {
      TxtRecord current;
      {
        const std::lock_guard lock(latest->mutex);
        latest->isPosted = false;
        current = latest->txt;
      }
      const auto found = inside.publications.find(id);
      if (found != inside.publications.end()) (void)found->second->updateTxt(current);
    });
    return {};
  }

 private:
  struct Latest {
    std::mutex mutex;
    TxtRecord txt;          ///< guarded by mutex
    bool isPosted = false;  ///< guarded by mutex
  };

  const std::shared_ptr<Worker> worker_;
  const Worker::Id id_;
  std::shared_ptr<PublicationEvents> events_;  ///< its end cancels what is on its way to us
  std::shared_ptr<Latest> latest_;
};

/// A browser as the main thread holds it.
class ThreadedServiceDirectory::BrowserFront final : public ServiceBrowser {
 public:
  BrowserFront(std::shared_ptr<Worker> worker, std::string type, ServiceEvents events)
      : worker_(std::move(worker)),
        id_(worker_->newId()),
        events_(std::make_shared<ServiceEvents>(std::move(events))) {
    ServiceEvents inner;
    inner.txt = [worker = worker_.get(), events = std::weak_ptr(events_)](const std::string& name,
                                                                          const TxtRecord& txt) {
      worker->tellMain([events, name, txt] {
        if (const auto alive = events.lock(); alive && alive->txt) alive->txt(name, txt);
      });
    };
    inner.lost = [worker = worker_.get(), events = std::weak_ptr(events_)](const auto& name) {
      worker->tellMain([events, name] {
        if (const auto alive = events.lock(); alive && alive->lost) alive->lost(name);
      });
    };
    worker_->post([id = id_, type = std::move(type), inner](Worker::Inside& inside) {
      inside.browsers[id] = inside.directory.browse(type, inner);
    });
  }
  ~BrowserFront() override {
    worker_->post([id = id_](Worker::Inside& inside) { inside.browsers.erase(id); });
  }

 private:
  const std::shared_ptr<Worker> worker_;
  const Worker::Id id_;
  std::shared_ptr<ServiceEvents> events_;  ///< its end cancels what is on its way to us
};

ThreadedServiceDirectory::ThreadedServiceDirectory(RunLoop& runLoop, Log& log)
    : worker_(std::make_shared<Worker>(runLoop, log)) {
  worker_->start();
}

ThreadedServiceDirectory::~ThreadedServiceDirectory() { worker_->end(); }

Result<std::unique_ptr<Publication>> ThreadedServiceDirectory::publish(const std::string& name,
                                                                       const std::string& type,
                                                                       std::uint16_t port,
                                                                       const TxtRecord& txt,
                                                                       PublicationEvents events) {
  if (auto allowed = AvahiServiceDirectory::check(name, type, txt); !allowed) {
    return tl::unexpected(allowed.error());
  }
  return std::make_unique<PublicationFront>(worker_, name, type, port, txt, std::move(events));
}

std::unique_ptr<ServiceBrowser> ThreadedServiceDirectory::browse(const std::string& type,
                                                                 ServiceEvents events) {
  return std::make_unique<BrowserFront>(worker_, type, std::move(events));
}

std::string ThreadedServiceDirectory::hostNameFqdn() const { return worker_->hostName(); }

}  // namespace zolvar
