#include "pool/KDPoolSync.h"

#include <fmt/format.h>

#include <atomic>
#include <exception>

#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "pool/SyncContext.h"
#include "pool/SyncRun.h"
#include "pool/VersionFetch.h"

namespace zolvar {

namespace {

constexpr double PruneInterval = 60 * 60;  ///< seconds

/// Marks that a sync or a fetch is under way.
class Busy {
 public:
  explicit Busy(std::atomic<bool>& flag) : flag_(flag) { flag_ = true; }
  ~Busy() { flag_ = false; }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

 private:
  std::atomic<bool>& flag_;
};

}  // namespace

std::string statusText(int status) {
  constexpr int FirstSignal = 128;  // of a tool that was ended by one
  switch (status) {
    case TransferStatus::Done:
      return "ok";
    case TransferStatus::NotServed:
      return "Error starting client-server protocol. Too many clients?";
    case TransferStatus::NoConnection:
      return "socket connection failed.";
    case TransferStatus::BadStream:
      return "error in rsync protocol data stream";
    case TransferStatus::Partial:
      return "some files could not be transferred";
    case TransferStatus::NoAuthentication:
      return "authentication failed";
    case 2:
      return "the transfer tools of the two computers do not understand each other";
    case 3:
      return "a folder or file could not be opened";
    case TransferStatus::FileTrouble:
      return "a file could not be read or written; perhaps a disk is full, or its drive gone";
    case TransferStatus::Ended:
      return "the transfer was ended";
    case 22:
      return "there was not enough memory";
    case TransferStatus::Vanished:
      return "some files vanished over there before they could be fetched";
    case TransferStatus::Silent:
      return "nothing came for too long";
    case 35:
      return "the other computer did not answer in time";
    default:
      break;
  }
  if (status > FirstSignal) {
    return fmt::format("the transfer tool was ended by signal {}", status - FirstSignal);
  }
  return fmt::format("the transfer tool ended with status {}", status);
}

struct KDPoolSync::Work {
  SyncContext context;
  std::atomic<bool> isBusy{false};
  double lastPrune = 0;  ///< seconds since 1970

  void prune(const VersionLimits& limits) {
    const double now = context.platform.clock.now();
    if (now - lastPrune < PruneInterval) return;
    lastPrune = now;
    if (const auto pruned = context.versions.prune(limits); !pruned) {
      context.platform.log.warning("{}", pruned.error().message());
    }
  }
};

KDPoolSync::KDPoolSync(Platform& platform, std::shared_ptr<Lane> stateLane,
                       std::shared_ptr<PoolSyncSteps> steps, ProgressSink progress)
    : work_(new Work{{platform, std::move(stateLane), std::move(steps), std::move(progress),
                      TransferRun(platform), VersionStore(platform)}}) {}

KDPoolSync::~KDPoolSync() = default;

SyncEnd KDPoolSync::performSyncWithParticipant(const ParticipantAddress& participant,
                                               const Settings& settings) {
  SyncContext& context = work_->context;
  const Busy busy(work_->isBusy);
  context.run.allow();
  SyncEnd end;
  try {
    end = SyncRun(context, participant, settings).perform();
    work_->prune(settings.keepsVersions ? settings.versionLimits : VersionLimits{0, 0});
  } catch (const std::exception& exception) {
    context.platform.log.error("The sync of {} with {} ended with an exception: {}",
                               settings.poolName, participant.description(), exception.what());
    end = {TransferStatus::Exception, {}, exception.what()};
  }
  context.platform.log.debug("The sync with {} ended: {}", participant.description(),
                             statusText(end.status));
  if (context.progress) context.progress(std::nullopt);
  return end;
}

void KDPoolSync::bringToDisk() {
  SyncContext& context = work_->context;
  const auto place = context.onState([](PoolSyncSteps& steps) -> Result<std::string> {
    if (steps.isDetached() || !steps.awaitsDisk()) return std::string();
    return steps.accessibleFolderPath();
  });
  if (!place || place->empty()) return;
  const auto folder = context.platform.fileSystem.open(*place);
  const auto flushed = folder ? (*folder)->flush() : tl::unexpected(folder.error());
  if (!flushed) {  // the next sync tries again
    context.platform.log.warning("{}", flushed.error().message());
    return;
  }
  context.onState([](PoolSyncSteps& steps) { steps.filesAreOnDisk(); });
}

Result<> KDPoolSync::fetchVersion(const std::string& path, double modTime, const std::string& to,
                                  const std::vector<ParticipantAddress>& participants,
                                  const Settings& settings) {
  SyncContext& context = work_->context;
  const Busy busy(work_->isBusy);
  context.run.allow();
  try {
    return VersionFetch(context, settings, path, modTime, to).fetchFrom(participants);
  } catch (const std::exception& exception) {
    return fail(FailureKind::Transient, "fetch a version of", path, exception.what());
  }
}

bool KDPoolSync::hasRunningTask() const { return work_->isBusy; }

void KDPoolSync::terminateTask() { work_->context.run.terminate(); }

}  // namespace zolvar
