// The pool's doors to its lanes: syncs, and what a person decides.

#include <fmt/format.h>

#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/RunLoop.h"
#include "pool/FileChange.h"
#include "pool/KDFilePoolParts.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr int AuthenticationFailed = 37;

}  // namespace

// Syncs.

bool KDFilePool::hasRunningTask() const { return parts_->isSyncing; }

void KDFilePool::terminateTask() {
  if (parts_->sync) parts_->sync->terminateTask();
}

void KDFilePool::syncWithParticipant(const ParticipantAddress& participant) {
  const bool isUnreadable = passwordState_ == PasswordState::Unreadable;
  if (!parts_->sync || isUnreadable || phase_ == PoolPhase::Activating) {
    SyncEnd end;
    end.status = isUnreadable ? AuthenticationFailed : -1;
    end.exceptionText = isUnreadable ? "" : "the folder is not active";
    platform_.runLoop.post([weak = weak_from_this(), participant, end] {
      if (const auto pool = weak.lock()) pool->syncEnded(participant, end);
    });
    return;
  }
  parts_->isSyncing = true;
  const VersionLimits limits = VersionLimits::fromDefaults(platform_.defaults);
  const KDPoolSync::Settings settings{name(),          userId_,           password_,
                                      bandwidthLimit_, limits.keepsAny(), limits};
  const std::uint64_t generation = parts_->generation;
  parts_->transferLane->post([weak = weak_from_this(), sync = parts_->sync, participant, settings,
                              generation, &runLoop = platform_.runLoop] {
    const SyncEnd end = sync->performSyncWithParticipant(participant, settings);
    runLoop.post([weak, participant, end, generation] {
      const auto pool = weak.lock();
      if (!pool) return;
      if (pool->parts_->generation == generation) pool->parts_->isSyncing = false;
      pool->noteTaskDidEnd(end.loadedFiles,
                           [pool, participant, end] { pool->syncEnded(participant, end); });
    });
    sync->bringToDisk();
  });
}

void KDFilePool::syncEnded(const ParticipantAddress& participant, const SyncEnd& end) {
  if (delegate_ && !delegate_->isSyncing(participant)) {
    platform_.log.warning("Participant {} no longer syncing. skipping notification.",
                          participant.description());
    return;
  }
  KDSyncDidEndNotification notification;
  notification.pool = this;
  notification.KDTerminationStatus = end.status;
  notification.KDTaskActivity = "loading changes";
  notification.KDFilePoolName = name();
  notification.KDParticipant = participant;
  notification.KDLoadedFiles = end.loadedFiles;
  if (end.status != 0) {
    notification.KDErrorMessage =
        fmt::format("Error syncing folder '{}' with {} while {}: {}", name(),
                    withoutLocalSuffix(participant.userId()), notification.KDTaskActivity,
                    end.status == -1 ? end.exceptionText : statusText(end.status));
  }
  center_.post(notification);
}

// What a person decides.

template <class Value>
void KDFilePool::onStateLane(std::function<Result<Value>(KDPoolState&)> job,
                             std::function<void(Result<Value>)> done) {
  if (!parts_->state || !isActive()) {
    done(fail(FailureKind::Refused, "change the synced folder", name(),
              "it is not ready yet; try again when it has been looked through"));
    return;
  }
  parts_->stateLane->post([state = parts_->state, job = std::move(job), done = std::move(done),
                           &runLoop = platform_.runLoop] {
    Result<Value> outcome =
        fail(FailureKind::Cancelled, "change the synced folder", {}, "it was left");
    try {
      if (!state->isDetached()) outcome = job(*state);
    } catch (const std::exception& error) {  // whatever it was, somebody waits for the answer
      outcome = fail(FailureKind::Refused, "change the synced folder", {}, error.what());
    }
    runLoop.post([outcome = std::move(outcome), done] { done(outcome); });
  });
}

void KDFilePool::changeFiles(std::vector<FileChange> changes,
                             std::function<void(Result<bool>)> done) {
  onStateLane<bool>(
      [changes = std::move(changes)](KDPoolState& state) { return state.changeFiles(changes); },
      std::move(done));
}

void KDFilePool::onFilesLane(std::function<void()> job) { parts_->stateLane->post(std::move(job)); }

void KDFilePool::selectBranch(const std::string& path, const VersionId& version, Done done) {
  onStateLane<void>([=](KDPoolState& state) { return state.selectBranch(path, version); },
                    std::move(done));
}

void KDFilePool::deleteBranch(const std::string& path, const VersionId& version, Done done) {
  onStateLane<void>([=](KDPoolState& state) { return state.deleteBranch(path, version); },
                    std::move(done));
}

void KDFilePool::answerQuestion(std::uint64_t questionId, int code, Done done) {
  onStateLane<void>([=](KDPoolState& state) { return state.answerQuestion(questionId, code); },
                    std::move(done));
}

void KDFilePool::deleteMissing(const std::set<std::string>& paths, Done done) {
  onStateLane<void>([=](KDPoolState& state) { return state.deleteMissing(paths); },
                    std::move(done));
}

void KDFilePool::treeDescription(const std::string& path,
                                 std::function<void(Result<std::string>)> done) {
  onStateLane<std::string>([=](KDPoolState& state) { return state.treeDescription(path); },
                           std::move(done));
}

void KDFilePool::history(const std::string& path, std::function<void(Result<FileHistory>)> done) {
  onStateLane<FileHistory>([=](KDPoolState& state) { return state.history(path); },
                           std::move(done));
}

void KDFilePool::keepVersion(const std::string& path,
                             std::function<void(Result<std::string>)> done) {
  onStateLane<std::string>(
      [path, hash = nameHash(), root = folderPath_,
       &platform = platform_](KDPoolState&) -> Result<std::string> {
        const auto folder = platform.fileSystem.open(root);
        if (!folder) return tl::unexpected(folder.error());
        return VersionStore(platform).keep(hash, path, **folder);
      },
      std::move(done));
}

void KDFilePool::keptVersions(const std::string& path,
                              std::function<void(Result<std::vector<StoredVersion>>)> done) {
  onStateLane<std::vector<StoredVersion>>(
      [path, hash = nameHash(), &platform = platform_](KDPoolState&) {
        return VersionStore(platform).versionsOf(hash, path);
      },
      std::move(done));
}

void KDFilePool::restoreVersion(const std::string& path, const std::string& id, Done done) {
  onStateLane<void>([=](KDPoolState& state) { return state.restoreVersion(path, id); },
                    std::move(done));
}

void KDFilePool::fetchVersion(const std::string& path, const VersionId& version,
                              const std::string& to,
                              const std::vector<ParticipantAddress>& participants, Done done) {
  const KDPoolSync::Settings settings{name(), userId_, password_, bandwidthLimit_, false, {}};
  const auto from = std::make_shared<std::vector<ParticipantAddress>>(participants);
  onStateLane<double>(
      [=](KDPoolState& state) {
        // Only its author surely has it then.
        if (state.sharesSecond(path, version)) {
          std::erase_if(*from, [&](const ParticipantAddress& participant) {
            return participant.userId() != version.userId;
          });
        }
        return state.modTimeOf(path, version);
      },
      [=, weak = weak_from_this()](const Result<double>& modTime) {
        const auto pool = weak.lock();
        if (!pool || !pool->parts_->sync) return;
        if (!modTime) {
          done(tl::unexpected(modTime.error()));
          return;
        }
        pool->parts_->transferLane->post(
            [=, sync = pool->parts_->sync, &runLoop = pool->platform_.runLoop] {
              const Result<> fetched = sync->fetchVersion(path, *modTime, to, *from, settings);
              runLoop.post([=] { done(fetched); });
            });
      });
}

}  // namespace zolvar
