// Does a front end stay quick while a large folder is worked on? The main thread's longest step
// while 100,000 files are scanned for the first time, while their log is merged and they are copied
// from another machine, and while the whole folder is scanned again.
//
// A heart beats every two milliseconds on the run loop; a step is what lies between two beats. Its
// length is the processor time that the main thread used, so that other programs do not count; the
// longest wait on the clock is shown beside it.

#include <QCoreApplication>
#include <QTimer>
#include <ctime>
#include <functional>

#include "Fixtures.h"
#include "Measure.h"
#include "platform/qt/SystemPlatform.h"
#include "pool/KDFilePool.h"

namespace {

using namespace zolvar;
using namespace zolvar::bench;

constexpr unsigned Port = 49872;
constexpr int Files = 100'000;
constexpr std::size_t Size = 100;
constexpr double Limit = 50;  ///< milliseconds

double millisecondsOf(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) * 1000 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// The longest steps of the main thread since the last reset.
class Heart {
 public:
  Heart() {
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, [this] { beat(); });
    timer_.start(2);
  }
  void reset() {
    longestStep_ = longestWait_ = 0;
    lastUsed_ = millisecondsOf(CLOCK_THREAD_CPUTIME_ID);
    lastTime_ = millisecondsOf(CLOCK_MONOTONIC);
  }
  void print(const std::string& while_) {
    beat();
    printBudget("longest step of the main thread while 100,000 files are " + while_, longestStep_,
                Limit, " ms");
    fmt::print("(longest time between two beats {:.1f} ms)\n", longestWait_);
    reset();
  }

 private:
  void beat() {
    const double used = millisecondsOf(CLOCK_THREAD_CPUTIME_ID);
    const double time = millisecondsOf(CLOCK_MONOTONIC);
    longestStep_ = std::max(longestStep_, used - lastUsed_);
    longestWait_ = std::max(longestWait_, time - lastTime_);
    lastUsed_ = used;
    lastTime_ = time;
  }

  QTimer timer_;
  double longestStep_ = 0;  ///< milliseconds
  double longestWait_ = 0;
  double lastUsed_ = millisecondsOf(CLOCK_THREAD_CPUTIME_ID);
  double lastTime_ = millisecondsOf(CLOCK_MONOTONIC);
};

class NoDelegate : public KDFilePoolDelegate {
 public:
  void poolPathsNotAccessible(KDFilePool& pool) override {
    giveUp(pool.folderPath() + " is not accessible");
  }
  void shouldDeleteFiles(KDFilePool&, const DeleteQuestion&) override { giveUp("a question"); }
  bool isSyncing(const ParticipantAddress&) override { return true; }
  void poolDidMove(KDFilePool&) override {}
};

/// Runs the event loop until `isDone`.
void wait(const std::function<bool()>& isDone) {
  while (!isDone()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void activate(KDFilePool& pool) {
  bool isDone = false;
  pool.activate([&](const Result<>& outcome) {
    if (!outcome) giveUp(outcome.error().message());
    isDone = true;
  });
  wait([&] { return isDone; });
}

void measure(Platform& platform, Scratch& scratch) {
  NotificationCenter center;
  NoDelegate delegate;
  Heart heart;
  const auto member = [&](const std::string& base, const std::string& userId) {
    setenv("XDG_DATA_HOME", (base + "/data").c_str(), 1);
    fs::create_directories(base + "/Docs");
    KDFilePool::Options options;
    options.userId = userId;
    options.secretsAreRead = false;
    auto pool = KDFilePool::make(base + "/Docs", options, platform, center, &delegate);
    if (const auto started = pool->startLocalLog(); !started) giveUp(started.error().message());
    return pool;
  };

  const std::string server = scratch.fresh("server");
  const auto author = member(server, "bob@localhost");
  makeFiles(author->folderPath(), Files, Size);
  heart.reset();
  activate(*author);
  heart.print("scanned and logged for the first time");
  bool isScanned = false;
  author->checkFileSystemChanges([&] { isScanned = true; });
  wait([&] { return isScanned; });
  heart.print("scanned again");
  author->deactivate();

  const Daemon daemon(platform, server, author->folderPath(), Port);
  const auto reader = member(scratch.fresh("client"), "user@localhost");
  activate(*reader);
  std::optional<int> status;
  const auto watching = center.observe<KDSyncDidEndNotification>(
      [&](const KDSyncDidEndNotification& end) { status = end.KDTerminationStatus; });
  heart.reset();
  reader->syncWithParticipant({"bob", "localhost", Port, "Docs"});
  wait([&] { return status.has_value(); });
  heart.print("merged and copied");
  if (*status != 0) giveUp(fmt::format("the sync ended with {}", *status));
  const auto missing = reader->snapshot()->missing;
  if (!missing->empty()) giveUp(fmt::format("{} files are missing", missing->size()));
  reader->deactivate();
}

}  // namespace

int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  Scratch scratch;
  setenv("XDG_DATA_HOME", scratch.fresh("data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", scratch.fresh("config").c_str(), 1);
  SystemPlatform::Options options;
  options.programName = "zolvar-bench";
  auto made = SystemPlatform::make(options);
  if (!made) giveUp(made.error().message());
  measure((*made)->platform(), scratch);
  (*made)->finish(5);
  return 0;
}
