// What does a sync cost beyond the transfer tool? The whole of it, with real logs, state, disk
// record and versions, against the bare tool and one daemon on the loopback interface:
//
// - a sync with nothing new, in a folder of 10,000 files: the log load run alone, and the sync;
// - the first sync of 10,000 files of 4 KB, where every file costs the most of our own work,
// against
//   `rsync -a` of the same module into an empty folder;
// - the first sync of 1 GiB in 8 files, where the bytes count.
//
// Every round copies into fresh folders, and nothing is removed before the end: file systems are
// slow at making files where many were just removed. The first round only warms up; medians count.

#include <QCoreApplication>
#include <optional>
#include <thread>

#include "Fixtures.h"
#include "Measure.h"
#include "platform/Clock.h"
#include "platform/Lanes.h"
#include "platform/Platform.h"
#include "platform/qt/SystemPlatform.h"
#include "pool/KDPoolState.h"
#include "pool/KDPoolSync.h"
#include "pool/TransferRun.h"
#include "support/QuietListener.h"

namespace {

using namespace zolvar;
using namespace zolvar::bench;

constexpr unsigned Port = 49871;
constexpr int SmallFiles = 10'000;
constexpr std::size_t SmallSize = 4096;
constexpr int LargeFiles = 8;
constexpr std::size_t LargeSize = 128U << 20;
constexpr std::chrono::milliseconds BetweenScans{
    2100};  ///< sooner, a scan waits for the next second

class WarningListener final : public QuietListener {
 public:
  using QuietListener::QuietListener;
  void warn(const std::string& text) override { fmt::print(stderr, "{}\n", text); }
};

/// One member of the pool "Docs", without a network around it.
class Member {
 public:
  Member(Platform& platform, const std::string& base, const std::string& userId)
      : platform_(platform), folder_(base + "/Docs") {
    setenv("XDG_DATA_HOME", (base + "/data").c_str(), 1);
    fs::create_directories(folder_ + "/.Zolvar");
    lane_ = platform.lanes.start("state of " + userId);
    state_ = std::make_shared<KDPoolState>(KDPoolState::Settings{"Docs", folder_, userId, {}},
                                           platform, std::make_unique<WarningListener>(snapshot_));
    settings_.poolName = "Docs";
    settings_.ownUserId = userId;
    std::ofstream(folder_ + "/.Zolvar/" + userId + ".fplog", std::ios::app).flush();
  }
  void activate() {
    Result<> done;
    lane_->run([&] { done = state_->activate(); });
    if (!done) giveUp(done.error().message());
    sync_.emplace(platform_, lane_, state_, [](const std::optional<TransferProgress>&) {});
  }
  void syncWith(const ParticipantAddress& participant) {
    const SyncEnd end = sync_->performSyncWithParticipant(participant, settings_);
    if (end.status != 0) giveUp(fmt::format("status {} {}", end.status, end.exceptionText));
  }
  void leave() {
    lane_->run([this] {
      state_->leave();
      state_->detach();
    });
  }
  [[nodiscard]] const std::string& folder() const { return folder_; }

 private:
  Platform& platform_;
  std::string folder_;
  std::shared_ptr<const PoolSnapshot> snapshot_;
  std::shared_ptr<Lane> lane_;
  std::shared_ptr<KDPoolState> state_;
  std::optional<KDPoolSync> sync_;
  KDPoolSync::Settings settings_;
};

void runTool(Platform& platform, const std::vector<std::string>& arguments) {
  TransferRun run(platform);
  const int status = run.run({arguments, "", "", {}, {}});
  if (status != 0) giveUp(fmt::format("the tool ended with {}", status));
}

const ParticipantAddress Server{"bob", "localhost", Port, "Docs"};

/// Seconds of a first sync, our own work for a fresh folder left out, and of the bare tool. They
/// take turns in going first, since memory and disk blocks that were just freed are quicker to get.
/// Large targets are removed at once; many small ones stay, as removing them slows down the next
/// run.
std::pair<double, double> firstSyncs(Platform& platform, Scratch& scratch, int rounds) {
  std::vector<double> syncs;
  std::vector<double> bare;
  const auto tidy = [](const std::string& target) {
    if (std::distance(fs::recursive_directory_iterator(target), {}) < 1000) fs::remove_all(target);
  };
  const auto runBare = [&] {
    const std::string target = scratch.fresh("bare");
    bare.push_back(bench::secondsOf([&] {
      runTool(platform, {"-a", transferUrl(Server, "Docs", false) + "/", target});
    }));
    tidy(target);
  };
  const auto runSync = [&] {
    const std::string base = scratch.fresh("client");
    Member member(platform, base, "user@localhost");
    member.activate();
    std::this_thread::sleep_for(BetweenScans);
    syncs.push_back(bench::secondsOf([&] { member.syncWith(Server); }));
    member.leave();
    tidy(base);
  };
  for (int round = 0; round <= rounds; ++round) {
    if (round % 2 == 0) {
      runBare();
      runSync();
    } else {
      runSync();
      runBare();
    }
    fmt::print("(sync {:.2f} s, bare {:.2f} s)\n", syncs.back(), bare.back());
    if (round == 0) {  // the warm-up
      syncs.clear();
      bare.clear();
    }
  }
  return {bench::median(syncs), bench::median(bare)};
}

double overheadOfNothingNew(Platform& platform, Scratch& scratch) {
  const std::string base = scratch.fresh("idle");
  Member member(platform, base, "user@localhost");
  member.activate();
  member.syncWith(Server);
  const auto arguments = logLoadArguments(member.folder() + "/.Zolvar/user@localhost.fplog",
                                          transferUrl(Server, "Docs", true), member.folder());
  std::vector<double> differences;
  for (int round = 0; round < 9; ++round) {
    std::this_thread::sleep_for(BetweenScans);
    const double tool = bench::secondsOf([&] { runTool(platform, arguments); });
    const double sync = bench::secondsOf([&] { member.syncWith(Server); });
    differences.push_back(sync - tool);
    if (round == 0)
      fmt::print("(nothing new: sync {:.3f} s, the log load alone {:.3f} s)\n", sync, tool);
  }
  member.leave();
  return bench::median(differences);
}

}  // namespace

int main(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  Scratch scratch;
  setenv("XDG_DATA_HOME", scratch.fresh("data").c_str(), 1);
  setenv("XDG_CONFIG_HOME", scratch.fresh("config").c_str(), 1);
  SystemPlatform::Options options;
  options.programName = "zolvar-bench";
  options.isDebug = std::getenv("ZOLVAR_BENCH_DEBUG") != nullptr;
  auto made = SystemPlatform::make(options);
  if (!made) giveUp(made.error().message());
  Platform& platform = (*made)->platform();

  const auto serve = [&](int files, std::size_t size, const auto& measure) {
    const std::string base = scratch.fresh("server");
    Member server(platform, base, "bob@localhost");
    makeFiles(server.folder(), files, size);
    server.activate();
    {
      const Daemon daemon(platform, base, server.folder(), Port);
      measure();
    }
    server.leave();
  };
  serve(SmallFiles, SmallSize, [&] {
    bench::printBudget("a sync with nothing new, beyond the tool's own run",
                       overheadOfNothingNew(platform, scratch) * 1000, 50, " ms");
    const auto [sync, bare] = firstSyncs(platform, scratch, 5);
    bench::printBudget("first sync of 10,000 files of 4 KB against the bare tool", sync / bare, 1.3,
                       " x");
  });
  serve(LargeFiles, LargeSize, [&] {
    const auto [sync, bare] = firstSyncs(platform, scratch, 5);
    bench::printBudget("first sync of 1 GiB against the bare tool", sync / bare, 1.1, " x");
  });
  (*made)->finish(5);
  return 0;
}
