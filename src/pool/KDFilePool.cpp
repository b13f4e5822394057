#include "pool/KDFilePool.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Hosts.h"
#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/SecretStore.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "pool/KDFilePoolParts.h"
#include "pool/StateToMain.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"
#include "util/hexHash.h"

namespace zolvar {

namespace {

constexpr const char* SecretService = "Zolvar";
constexpr std::size_t LongestPassword = 500;  // bytes; the transfer tool's line limit is 1023

std::string hasPasswordKey(const std::string& name) { return "HasPassword-" + name; }

bool isInTrash(const std::string& path) {
  return path.find("/.Trash") != std::string::npos ||
         path.find("/Trash/files/") != std::string::npos ||
         path.find("/Zolvar/Trash/") != std::string::npos;
}

}  // namespace

// Making.

std::shared_ptr<KDFilePool> KDFilePool::make(const std::string& path, const Options& options,
                                             Platform& platform, NotificationCenter& center,
                                             KDFilePoolDelegate* delegate) {
  std::shared_ptr<KDFilePool> pool(new KDFilePool(path, options, platform, center, delegate));
  pool->readPassword(options);
  return pool;
}

KDFilePool::KDFilePool(const std::string& path, const Options& options, Platform& platform,
                       NotificationCenter& center, KDFilePoolDelegate* delegate)
    : folderPath_(path),
      userId_(options.userId.empty() ? localUserId(platform) : options.userId),
      pace_(options.pace),
      platform_(platform),
      center_(center),
      delegate_(delegate),
      parts_(std::make_unique<Parts>()) {
  require(!path.empty(), "aPath != nil");
  while (folderPath_.size() > 1 && folderPath_.back() == '/') folderPath_.pop_back();
  if (isInTrash(folderPath_)) folderPath_ = name();
  if (poolNameProblem(name())) {
    throw InconsistencyError(
        "Invalid parameter not satisfying: [[[self folderPath] lastPathComponent] rangeOfString: "
        "@\":\"].location == NSNotFound");
  }
  parts_->stateLane = platform_.lanes.start("state " + name());
  parts_->transferLane = platform_.lanes.start("transfer " + name());
  auto empty = std::make_shared<PoolSnapshot>();
  empty->missing = std::make_shared<const std::vector<std::string>>();
  empty->conflicts = std::make_shared<const std::vector<Conflict>>();
  empty->seen = std::make_shared<const SeenFiles>();
  parts_->snapshot = std::move(empty);
}

KDFilePool::~KDFilePool() {
  stopTimers();
  stopState();
}

std::string KDFilePool::localUserId(const Platform& platform) {
  const std::vector<std::string> names = platform.hosts.names();
  std::string host = "localhost";
  const auto local = std::find_if(names.begin(), names.end(), [](const std::string& name) {
    return name.ends_with(".local") || name.ends_with(".lan");
  });
  if (local != names.end()) {
    host = *local;
  } else if (!names.empty()) {
    host = names.back() == "localhost" ? names.front() : names.back();
  }
  return platform.hosts.userName() + "@" + host;
}

// Identity.

bool KDFilePool::hasFullFolderPath() const { return folderPath_.starts_with('/'); }
std::string KDFilePool::name() const { return std::string(lastPathComponent(folderPath_)); }
std::string KDFilePool::logsPath() const { return joinPath(folderPath_, MetadataFolderName); }
std::string KDFilePool::nameHash() const { return hexHash(name()); }
std::string KDFilePool::description() const {
  return fmt::format("{} at '{}'", name(), folderPath_);
}

void KDFilePool::setFolderPath(const std::string& path) {
  if (path == folderPath_) return;
  require(lastPathComponent(path) == name(),
          "theFolderPath == nil || [[newPath lastPathComponent] isEqualToString: [theFolderPath "
          "lastPathComponent]]");
  require(!isInTrash(path),
          "! [newPath hasPrefix: [[NSFileManager defaultManager] userTrashPath]]");
  folderPath_ = path;
  if (isActive()) center_.post(KDPoolDidChangeCriticalData{this});
}

void KDFilePool::folderMoved(const std::string& newPath) {
  if (newPath == folderPath_) return;
  platform_.log.warning("Found Shared Folder to be moved from '{}' to '{}'. Trying tracking...",
                        folderPath_, newPath);
  try {
    setFolderPath(newPath);
    if (isActive()) startWatch();
    if (delegate_) delegate_->poolDidMove(*this);
  } catch (const InconsistencyError&) {
    platform_.workspace.beep();
    platform_.log.warning(
        "Shared Folder '{}' seems to have been renamed to the illegal name '{}'. Unsubscribing.",
        name(), lastPathComponent(newPath));
    warn(fmt::format("The folder '{}' was moved to '{}' and is no longer kept in step.", name(),
                     newPath));
    deactivate();
  }
}

bool KDFilePool::hasLocalLog() const {
  return hasFullFolderPath() &&
         platform_.fileSystem
             .identity(joinPath(logsPath(), userId_ + std::string(LogFileExtension)))
             .has_value();
}

Result<> KDFilePool::startLocalLog() {
  if (!hasFullFolderPath()) {
    return fail(FailureKind::Refused, "make the folder of", name(),
                "it has no place on this disk yet");
  }
  if (const auto made = platform_.fileSystem.makeFolder(logsPath()); !made) {
    platform_.log.error("Unable to create logs path at '{}'", logsPath());
    return made;
  }
  const auto folder = platform_.fileSystem.open(folderPath_);
  if (!folder) return tl::unexpected(folder.error());
  // The log of this user, empty when it is new.
  return (*folder)->append(joinPath(MetadataFolderName, userId_ + std::string(LogFileExtension)),
                           "");
}

// Password.

void KDFilePool::readPasswordAgain() {
  if (passwordState_ != PasswordState::Unreadable) return;
  passwordState_ = PasswordState::Unknown;
  readPassword({});
}

void KDFilePool::readPassword(const Options& options) {
  if (!options.secretsAreRead) {
    passwordState_ = PasswordState::None;
    return;
  }
  const std::string account = name() + "-" + nameHash();
  const bool isExpected = platform_.defaults.boolean(hasPasswordKey(name()));
  parts_->stateLane->post([weak = weak_from_this(), &platform = platform_, account, isExpected] {
    const auto found = platform.secrets.find(SecretService, account);
    platform.runLoop.post([weak, found, isExpected] {
      if (const auto pool = weak.lock()) pool->tookPassword(found, isExpected);
    });
  });
}

void KDFilePool::tookPassword(const Result<std::optional<std::string>>& found, bool isExpected) {
  if (passwordState_ != PasswordState::Unknown) return;  // set by a person meanwhile
  if (found && *found && !(*found)->empty()) {
    password_ = **found;
    passwordState_ = PasswordState::Set;
  } else if (isExpected) {
    passwordState_ = PasswordState::Unreadable;
    warn(
        fmt::format("The password of '{}' cannot be read ({}). The folder is neither served nor "
                    "fetched until the keyring is unlocked or the password is set anew.",
                    name(), found ? "it is not in the keyring" : found.error().reason));
  } else {
    if (!found)
      platform_.log.debug("Error getting password from keychain ({})", found.error().message());
    passwordState_ = PasswordState::None;
  }
  if (isActive()) center_.post(KDPoolDidChangeCriticalData{this});
}

void KDFilePool::setPassword(const std::string& password, Done done) {
  if (password.size() > LongestPassword ||
      std::any_of(password.begin(), password.end(),
                  [](unsigned char character) { return character < 0x20 || character == 0x7F; })) {
    done(fail(FailureKind::Refused, "set the password of", name(),
              "a password has at most 500 bytes and no control characters"));
    return;
  }
  const bool isSame =
      password == password_ && (passwordState_ == PasswordState::Set) == !password.empty();
  if (isSame && passwordState_ != PasswordState::Unreadable &&
      passwordState_ != PasswordState::Unknown) {
    done({});
    return;
  }
  // Remembered first, so that a password is never taken for none after a crash.
  if (!password.empty()) platform_.defaults.setString(hasPasswordKey(name()), "1");
  const std::string account = name() + "-" + nameHash();
  parts_->stateLane->post(
      [weak = weak_from_this(), &platform = platform_, account, password, done] {
        const Result<> written = password.empty()
                                     ? platform.secrets.remove(SecretService, account)
                                     : platform.secrets.set(SecretService, account, password);
        platform.runLoop.post([weak, written, password, done] {
          const auto pool = weak.lock();
          if (!pool) return;
          if (written) {
            pool->password_ = password;
            pool->passwordState_ = password.empty() ? PasswordState::None : PasswordState::Set;
            if (password.empty()) pool->platform_.defaults.remove(hasPasswordKey(pool->name()));
            if (pool->isActive()) pool->center_.post(KDPoolDidChangeCriticalData{pool.get()});
          } else if (pool->passwordState_ == PasswordState::None) {
            pool->platform_.defaults.remove(hasPasswordKey(pool->name()));
          }
          done(written);
        });
      });
}

// Snapshots.

std::shared_ptr<const PoolSnapshot> KDFilePool::snapshot() const {
  const std::lock_guard lock(parts_->shownMutex);
  return parts_->snapshot;
}

std::optional<TransferProgress> KDFilePool::progress() const {
  const std::lock_guard lock(parts_->shownMutex);
  return parts_->progress;
}

void KDFilePool::took(std::shared_ptr<const PoolSnapshot> snapshot) {
  auto shown = std::make_shared<PoolSnapshot>(*snapshot);
  shown->phase = phase_;
  {
    const std::lock_guard lock(parts_->shownMutex);
    parts_->snapshot = std::move(shown);
  }
  center_.post(KDPoolDidChangeNotification{this});
}

void KDFilePool::setPhase(PoolPhase phase) {
  phase_ = phase;
  took(snapshot());
}

void KDFilePool::warn(const std::string& text) {
  platform_.log.warning("{}", text);
  center_.post(KDPoolWarning{this, text});
}

// Lifecycle.

void KDFilePool::startState() {
  ++parts_->generation;
  parts_->changed = std::make_shared<ChangedFolders>();
  parts_->state = std::make_shared<KDPoolState>(
      KDPoolState::Settings{name(), folderPath_, userId_, pace_, parts_->changed}, platform_,
      std::make_unique<StateToMain>(weak_from_this(), platform_.runLoop, parts_->generation));
  auto shownProgress = [weak = weak_from_this(),
                        &runLoop = platform_.runLoop](std::optional<TransferProgress> progress) {
    const auto pool = weak.lock();
    if (!pool) return;
    {
      const std::lock_guard lock(pool->parts_->shownMutex);
      pool->parts_->progress = std::move(progress);
    }
    runLoop.post([weak] {
      if (const auto living = weak.lock())
        living->center_.post(KDPoolDidChangeNotification{living.get()});
    });
  };
  parts_->sync = std::make_shared<KDPoolSync>(platform_, parts_->stateLane, parts_->state,
                                              std::move(shownProgress));
}

void KDFilePool::stopState() {
  ++parts_->generation;
  if (parts_->sync) parts_->sync->terminateTask();
  if (parts_->state) {
    // Whatever runs still ends on its own; after this job it changes nothing more.
    parts_->stateLane->post([state = parts_->state] {
      state->leave();
      state->detach();
    });
  }
  parts_->sync.reset();
  parts_->state.reset();
  parts_->isSyncing = parts_->isScanQueued = false;
}

Result<> KDFilePool::recover() {
  if (phase_ != PoolPhase::Inactive) return {};
  if (const auto made = platform_.fileSystem.makeFolder(logsPath()); !made) {
    platform_.log.error("Unable to create logs path at '{}'", logsPath());
    return made;
  }
  startState();
  parts_->stateLane->post([state = parts_->state] { (void)state->startRecovering(); });
  setPhase(PoolPhase::Recovering);
  return {};
}

void KDFilePool::activate(Done done) {
  if (phase_ != PoolPhase::Inactive && phase_ != PoolPhase::Recovering) {
    done({});
    return;
  }
  if (!platform_.fileSystem.isFolder(folderPath_) || !hasLocalLog()) {
    if (delegate_) delegate_->poolPathsNotAccessible(*this);
    done(fail(FailureKind::Absent, "activate the synced folder", folderPath_,
              "the folder or our own change log in it is not there"));
    return;
  }
  if (phase_ == PoolPhase::Inactive) startState();
  setPhase(PoolPhase::Activating);
  const std::uint64_t generation = parts_->generation;
  parts_->stateLane->post([weak = weak_from_this(), state = parts_->state,
                           &runLoop = platform_.runLoop, generation, done = std::move(done)] {
    Result<> outcome;
    try {
      outcome = state->activate();
    } catch (const std::exception& error) {
      outcome = fail(FailureKind::Damaged, "activate the synced folder", {}, error.what());
    }
    runLoop.post([weak, generation, outcome, done] {
      if (const auto pool = weak.lock()) pool->activationEnded(generation, outcome, done);
    });
  });
}

void KDFilePool::activationEnded(std::uint64_t generation, const Result<>& outcome,
                                 const Done& done) {
  if (parts_->generation != generation) {
    done(fail(FailureKind::Cancelled, "activate the synced folder", folderPath_,
              "it was deactivated"));
    return;
  }
  if (!outcome) {
    stopState();
    setPhase(PoolPhase::Inactive);
    warn(outcome.error().message());
    if (delegate_) delegate_->poolPathsNotAccessible(*this);
    done(outcome);
    return;
  }
  setPhase(PoolPhase::Active);
  startTimers();
  center_.post(KDPoolDidChangeCriticalData{this});
  didActivate();
  done({});
}

void KDFilePool::deactivate() {
  if (phase_ == PoolPhase::Inactive || phase_ == PoolPhase::Leaving) return;
  const bool wasActive = isActive();
  if (wasActive) willDeactivate();
  stopTimers();
  setPhase(PoolPhase::Leaving);
  stopState();
  setPhase(PoolPhase::Inactive);
  if (wasActive) center_.post(KDPoolDidChangeCriticalData{this});
}

// Timers.

void KDFilePool::startTimers() {
  if (platform_.isTestModeActive || !isPolled()) return;
  const auto guarded = [weak = weak_from_this()](void (KDFilePool::*task)(std::function<void()>)) {
    return [weak, task] {
      if (const auto pool = weak.lock()) (pool.get()->*task)({});
    };
  };
  parts_->scanTimer =
      platform_.runLoop.every(pace_.scanInterval, guarded(&KDFilePool::checkFileSystemChanges));
  startWatch();
}

void KDFilePool::startWatch() {
  if (platform_.isTestModeActive || !parts_->changed || !isPolled()) return;
  parts_->watch.reset();
  parts_->watch = std::make_unique<FolderWatch>(platform_.fileSystem, center_, platform_.log,
                                                folderPath_, parts_->changed, [this] {
                                                  if (pace_.scanAfterClose > 0)
                                                    scanSoon(pace_.scanAfterClose);
                                                });
}

void KDFilePool::stopTimers() {
  parts_->watch.reset();
  for (RunLoop::Id* timer :
       {&parts_->scanTimer, &parts_->soonTimer, &parts_->announceTimer, &parts_->fullSyncTimer}) {
    if (*timer != 0) platform_.runLoop.cancel(*timer);
    *timer = 0;
  }
}

void KDFilePool::scanSoon(double seconds) {
  if (!isActive() || parts_->soonTimer != 0) return;
  parts_->soonTimer = platform_.runLoop.after(seconds, [weak = weak_from_this()] {
    const auto pool = weak.lock();
    if (!pool) return;
    pool->parts_->soonTimer = 0;
    pool->checkFileSystemChanges();
  });
}

void KDFilePool::checkFileSystemChanges(std::function<void()> done) {
  if (!isActive() || hasRunningTask() || parts_->isScanQueued) {
    platform_.log.debug("Skipping fs-check in pool {}.", description());
    if (done) done();
    return;
  }
  parts_->isScanQueued = true;
  if (parts_->watch) parts_->watch->refresh(platform_.clock.now());
  parts_->stateLane->post([weak = weak_from_this(), state = parts_->state,
                           &runLoop = platform_.runLoop, &log = platform_.log,
                           done = std::move(done)] {
    try {
      state->checkFileSystemChanges();
    } catch (const std::exception& error) {
      log.error("A scan ended early: {}", error.what());
    }
    runLoop.post([weak, done] {
      if (const auto pool = weak.lock()) pool->parts_->isScanQueued = false;
      if (done) done();
    });
  });
}

void KDFilePool::noteAnnouncementNeeded() {
  platform_.runLoop.post([weak = weak_from_this()] {
    if (const auto pool = weak.lock()) pool->announcementNeededInMainThread();
  });
}

void KDFilePool::announcementNeededInMainThread() {
  if (parts_->announceTimer != 0) platform_.runLoop.cancel(parts_->announceTimer);
  parts_->announceTimer = platform_.runLoop.after(pace_.debounce, [weak = weak_from_this()] {
    const auto pool = weak.lock();
    if (!pool) return;
    pool->parts_->announceTimer = 0;
    pool->center_.post(KDPoolAnnouncementDue{pool.get()});
  });
}

void KDFilePool::noteFullSyncNeeded() {
  platform_.runLoop.post([weak = weak_from_this()] {
    if (const auto pool = weak.lock()) pool->fullSyncNeededInMainThread();
  });
}

void KDFilePool::fullSyncNeededInMainThread() {
  if (parts_->fullSyncTimer != 0) platform_.runLoop.cancel(parts_->fullSyncTimer);
  parts_->fullSyncTimer = platform_.runLoop.after(pace_.debounce, [weak = weak_from_this()] {
    const auto pool = weak.lock();
    if (!pool) return;
    pool->parts_->fullSyncTimer = 0;
    pool->center_.post(KDCompleteSyncNeeded{pool.get()});
  });
}

}  // namespace zolvar
