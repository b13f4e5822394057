#include "app/Application.h"

#include <algorithm>
#include <cmath>

#include "app/Contacts.h"
#include "app/DiscoveryReactions.h"
#include "app/EnvironmentChecks.h"
#include "app/Operations.h"
#include "app/OtherInstance.h"
#include "app/Outcomes.h"
#include "app/Pauses.h"
#include "app/PoolRestorer.h"
#include "app/TodoRetries.h"
#include "app/TransferToolCheck.h"
#include "app/UserPicture.h"
#include "net/KDBonjour.h"
#include "net/KDParticipants.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr const char* SyncFolderDirectory = "Public/Zolvar";
constexpr const char* LockFileName = "zolvar.lock";
constexpr double HousekeepingSeconds = 60;
constexpr double PruningSeconds = 24 * 60 * 60;
constexpr double GoneSeconds = 24 * 60 * 60;
// What the question about vanished files is answered with.
constexpr int ReGet = 1000;
constexpr int DeleteEverywhere = 1001;

Pace paceFromDefaults(const UserDefaults& defaults) {
  return defaults.string("Pace").value_or("") == "quick" ? Pace::quick() : Pace::normal();
}

}  // namespace

Result<std::unique_ptr<Application>> Application::make(Settings settings, Platform& platform) {
  std::unique_ptr<Application> application(new Application(std::move(settings), platform));
  if (auto prepared = application->prepare(); !prepared) {
    return tl::unexpected(prepared.error());
  }
  return application;
}

Application::Application(Settings settings, Platform& platform)
    : settings_(std::move(settings)),
      platform_(platform),
      pace_(settings_.pace ? *settings_.pace : paceFromDefaults(platform.defaults)) {}

Application::~Application() {
  *alive_ = false;
  platform_.runLoop.cancel(housekeeping_);
  environment_.reset();
  discovery_.reset();
  restorer_.reset();
  pauses_.reset();
  peer_.reset();  // its pools may still ask the scheduler while they go
}

Result<> Application::takeLock() {
  const auto support = platform_.fileSystem.supportFolder();
  if (!support) return tl::unexpected(support.error());
  const std::string path = joinPath(*support, LockFileName);
  const auto isHeld = [](const auto& lock) {
    return !lock && lock.error().kind == FailureKind::Refused;
  };
  auto lock = platform_.fileSystem.lock(path);
  if (isHeld(lock) && killOtherInstances(platform_, path)) lock = platform_.fileSystem.lock(path);
  if (isHeld(lock)) return refusal("Zolvar is running already for this user.");
  if (!lock) return tl::unexpected(lock.error());
  lock_ = std::move(*lock);
  return {};
}

Result<> Application::prepare() {
  if (auto locked = takeLock(); !locked) return locked;
  if (!settings_.resourceFolder.empty()) {
    auto blacklist = FolderBlacklist::load(settings_.resourceFolder, platform_.fileSystem);
    if (blacklist) {
      blacklist_ = std::move(*blacklist);
    } else {
      platform_.log.warning("{}", blacklist.error().message());
    }
  }

  const std::string directory = joinPath(platform_.fileSystem.homeFolder(), SyncFolderDirectory);
  if (settings_.userId.empty()) settings_.userId = KDFilePool::localUserId(platform_);
  places_ = std::make_unique<PoolPlaces>(platform_.defaults, platform_.fileSystem, directory);
  pauses_ = std::make_unique<Pauses>(
      platform_, [this](const std::string& poolName) { pausesChanged(poolName); });
  contacts_ = std::make_unique<Contacts>(*this);
  outcomes_ = std::make_unique<Outcomes>(*this);
  observers_.add(*contacts_);
  observers_.add(*outcomes_);
  participants_ = std::make_unique<KDParticipants>(settings_.userId, platform_.log);
  bonjour_ = std::make_unique<KDBonjour>(platform_, center_);

  KDPeer::Settings peerSettings;
  peerSettings.port = settings_.port;
  peerSettings.basePath = directory;
  peerSettings.userId = settings_.userId;
  peerSettings.delegate = this;
  if (settings_.addressBook) {
    addresses_ = std::make_unique<AddressFolders>(*this, settings_.addressBook);
    peerSettings.addressPoolClass = addresses_->poolClass(this);
  }
  peerSettings.isPaused = [this](const std::string& name) { return isPaused(name); };
  auto peer = KDPeer::make(std::move(peerSettings), platform_, center_, *bonjour_);
  if (!peer) return tl::unexpected(peer.error());
  peer_ = std::move(*peer);

  scheduler_ = std::make_unique<SyncScheduler>(platform_, center_, pace_, *this, observers_);
  retries_ = std::make_unique<TodoRetries>(platform_.runLoop, [this](const std::string& name) {
    if (auto* waiting = presence(name)) scheduler_->syncWithAllParticipantsInPool(*waiting);
  });
  restorer_ = std::make_unique<PoolRestorer>(
      platform_, *places_, *peer_, pace_,
      [this](KDFilePool& pool, bool hasLog) { restoredPool(pool, hasLog); });
  discovery_ = std::make_unique<DiscoveryReactions>(platform_, center_, pace_, *peer_,
                                                    *participants_, *scheduler_, observers_);
  checks_ = platform_.lanes.start("checks");
  picture_ =
      std::make_unique<UserPicture>(platform_, checks_, addresses_ ? &addresses_->book() : nullptr);
  environment_ = std::make_unique<EnvironmentChecks>(*this);
  observeNotifications();
  return {};
}

void Application::observeNotifications() {
  const auto keep = [this](NotificationCenter::Observation observation) {
    observations_.push_back(std::move(observation));
  };
  keep(center_.observe<KDSyncDidDeleteFilesNotification>([this](const auto& deleted) {
    observers_.tell(
        [&](auto& observer) { observer.filesWereDeleted(*deleted.pool, deleted.KDDeletedFiles); });
  }));
  keep(center_.observe<KDConflictDidOccurNotification>([this](const auto& conflict) {
    observers_.tell([&](auto& observer) {
      observer.conflictDidOccur(*conflict.pool, conflict.ConflictingFile);
    });
  }));
  keep(center_.observe<KDPoolDidChangeNotification>([this](const auto& changed) {
    noteMissingFiles(*changed.pool);
    observers_.tell([&](auto& observer) { observer.poolDidChange(*changed.pool); });
  }));
  keep(center_.observe<KDSyncDidEndNotification>([this](const auto& ended) {
    if (!ended.KDLoadedFiles.empty()) retries_->noteProgress(ended.pool->name());
    // Who can be reached has changed, and with it the folder's state.
    observers_.tell([&](auto& observer) { observer.poolDidChange(*ended.pool); });
  }));
  keep(center_.observe<KDPoolWarning>([this](const auto& warning) {
    const std::string name = warning.pool != nullptr ? warning.pool->name() : std::string();
    observers_.tell([&](auto& observer) { observer.warning(name, warning.text); });
  }));
  keep(center_.observe<KDOwnIdElsewhere>([this](const auto& elsewhere) {
    // The subscription stays: once the other machine has its own name, a start takes it up again.
    if (elsewhere.pool != nullptr) leave(*elsewhere.pool);
  }));
  keep(center_.observe<AddressBookDidChange>([this](const auto&) {
    for (const auto& pool : peer_->filePools()) {
      if (pool->isActive()) picture_->writeUserPicture(*pool);
    }
  }));
  keep(center_.observe<KDServerDidChangeNotification>([this](const auto& changed) {
    observers_.tell(
        [&](auto& observer) { observer.serverDidChange(changed.running, changed.trouble); });
  }));
}

void Application::observeDefaults() {
  const auto observe = [this](const char* key, std::function<void()> changed) {
    defaultsObservations_.push_back(platform_.defaults.observe(key, std::move(changed)));
  };
  // Settings that nobody reads at the moment of their use.
  observe("BWLimitOut", [this] { center_.post(KDPoolDidChangeCriticalData{nullptr}); });
  observe("ShowOnlyActivePools", [this] { noteListChanged(); });
  observe("TimeServer1", [this] { environment_->checkClockAnew(); });
  observe("TimeServer2", [this] { environment_->checkClockAnew(); });
  observe("VersionsDays", [this] { pruneVersions(); });
  observe("VersionsMegabytes", [this] { pruneVersions(); });
}

bool Application::autoSyncingEnabled() const {
  return platform_.defaults.boolean("AutosyncingEnabled");
}

// Start-up and shut-down.

void Application::start() {
  scheduler_->start();
  housekeeping_ = platform_.runLoop.every(HousekeepingSeconds, [this] { lookAfterThings(); });
  bonjour_->startNetServiceBrowser();
  isRestoring_ = true;
  peer_->stopServer([this, alive = alive_](Result<> stopped) {
    if (!*alive || isShuttingDown_) return;
    if (!stopped)
      platform_.log.error("Server still running at startup. {}", stopped.error().message());
    restorePools();
  });
  checkTransferTool();
  environment_->start();
  observeDefaults();
  platform_.defaults.setString("KnownVersion", settings_.version);
  platform_.defaults.setString("NSShowNonLocalizedStrings", platform_.log.isDebug() ? "1" : "0");
}

void Application::restorePools() {
  poolsToGo_ = 1;  // the restoring itself
  restorer_->restore([this] {
    observers_.tell([](auto& observer) { observer.poolListDidChange(); });
    poolIsThrough();
  });
}

void Application::restoredPool(KDFilePool& pool, bool hasLog) {
  if (isShuttingDown_) return;
  if (isRestoring_) ++poolsToGo_;
  const auto through = [this, alive = alive_, counts = isRestoring_,
                        name = pool.name()](const Result<>& activated) {
    if (!*alive) return;
    if (!activated) warn(name, refusalText(activated.error()));
    if (counts) poolIsThrough();
  };
  if (hasLog) {
    activate(pool, through);
  } else {
    recover(pool, through);
  }
}

void Application::poolIsThrough() {
  if (--poolsToGo_ > 0) return;
  isRestoring_ = false;
  if (!isShuttingDown_) startServer();
}

void Application::startServer() {
  peer_->startServer([this, alive = alive_](const Result<>& started) {
    if (!*alive) return;
    isStarted_ = true;
    if (started && peer_->isServerRunning()) peer_->reannounceAllPools();
  });
}

void Application::checkTransferTool() {
  checks_->post([this, alive = alive_, &platform = platform_] {
    const auto problem = transferToolProblem(platform);
    if (!problem) return;
    platform.runLoop.post([this, alive, problem = *problem] {
      if (!*alive) return;
      warn("", problem);
    });
  });
}

void Application::warn(const std::string& poolName, const std::string& sentence) {
  if (poolName.empty()) {
    platform_.log.warning("{}", sentence);
  } else {
    platform_.log.warning("'{}': {}", poolName, sentence);
  }
  observers_.tell([&](auto& observer) { observer.warning(poolName, sentence); });
}

void Application::lookAfterThings() {
  if (isRestoring_ || isShuttingDown_) return;
  restorer_->retryMissing();
  forgetGonePools();
  if (platform_.clock.now() - lastPruning_ >= PruningSeconds) pruneVersions();
}

/// Folders of others who are gone do not stay in the list for ever; but who was here a while ago
/// can still be subscribed to.
void Application::forgetGonePools() {
  const double now = platform_.clock.now();
  bool isAnyGone = false;
  std::map<std::string, double> stillGone;
  for (const auto& pool : peer_->filePools()) {
    const auto* known = peer_->presence(*pool);
    if (pool->phase() != PoolPhase::Inactive || known->countOfParticipants() > 0) continue;
    if (places_->isStored(pool->name())) continue;
    const auto since = goneSince_.try_emplace(pool->name(), now).first->second;
    if (now - since < GoneSeconds) {
      stillGone[pool->name()] = since;
    } else {
      peer_->forgetPool(*pool);
      isAnyGone = true;
    }
  }
  goneSince_ = std::move(stillGone);
  if (isAnyGone) noteListChanged();
}

void Application::pruneVersions() {
  lastPruning_ = platform_.clock.now();
  checks_->post([&platform = platform_, limits = VersionLimits::fromDefaults(platform_.defaults)] {
    if (const auto pruned = VersionStore(platform).prune(limits); !pruned) {
      platform.log.warning("{}", pruned.error().message());
    }
  });
}

void Application::shutDown(std::function<void()> done) {
  isShuttingDown_ = true;
  environment_->stop();
  scheduler_->stop();
  platform_.runLoop.cancel(housekeeping_);
  if (const auto& syncing = scheduler_->syncingParticipant()) {
    if (auto* running = presence(syncing->poolName())) running->pool().terminateTask();
  }
  peer_->stopServer([done = std::move(done)](const Result<>&) { done(); });
}

// Activation.

void Application::setFilePool(KDFilePool& pool, bool active, Done done) {
  if (!done) done = [](const Result<>&) {};
  const PoolPhase phase = pool.phase();
  if (!active) {
    if (phase != PoolPhase::Inactive && phase != PoolPhase::Leaving) leave(pool);
    places_->setSubscribed(pool.name(), false);
    restorer_->forget(pool.name());
    pauses_->resume(pool.name());
    done({});
    return;
  }
  if (phase == PoolPhase::Active || phase == PoolPhase::Activating) return done({});
  if (!pool.hasFullFolderPath()) {
    pool.setFolderPath(places_->trackedPathForPoolName(pool.name()));
  }
  restorer_->forget(pool.name());
  if (pool.hasLocalLog()) {
    activate(pool, std::move(done));
  } else {
    recover(pool, done);
  }
}

void Application::activate(KDFilePool& pool, Done done) {
  pool.activate([this, alive = alive_, done = std::move(done),
                 name = pool.name()](const Result<>& activated) {
    if (!*alive) return;
    const auto activePool = peer_->poolNamed(name);
    if (activated && activePool && activePool->isActive()) {
      places_->setPath(name, activePool->folderPath());
      places_->setSubscribed(name, true);
      picture_->writeUserPicture(*activePool);
      queueAllParticipants(*activePool);
    }
    noteListChanged();
    done(activated);
  });
}

void Application::recover(KDFilePool& pool, const Done& done) {
  platform_.log.warning(
      "Warning: Local log file not present! Trying to recover local log file from network.");
  auto* known = peer_->presence(pool);
  if (known == nullptr || known->countOfParticipants() == 0) {
    platform_.log.warning(
        "Unable to activate pool. Needs at least one participant to recover local log from "
        "network.");
  }
  const auto recovering = pool.phase() == PoolPhase::Recovering ? Result<>() : pool.recover();
  if (recovering) queueAllParticipants(pool);
  noteListChanged();
  done(recovering);
}

void Application::completeActivation(KDFilePool& pool) {
  // Everything that others know of this machine has arrived; without any of it, the log starts
  // here.
  if (const auto started = pool.startLocalLog(); !started) {
    warn(pool.name(), refusalText(started.error()));
    return;
  }
  activate(pool, [this, alive = alive_, name = pool.name()](const Result<>& activated) {
    if (*alive && !activated) warn(name, refusalText(activated.error()));
  });
}

void Application::leave(KDFilePool& pool) {
  scheduler_->forgetPool(pool.name());
  retries_->forget(pool.name());
  pool.deactivate();
  noteListChanged();
}

void Application::removePool(KDFilePool& pool, Done done) {
  const std::string name = pool.name();
  setFilePool(pool, false);
  peer_->removePool(pool,
                    [this, alive = alive_, name, done = std::move(done)](const Result<>& removed) {
                      if (!*alive) return;
                      if (removed) places_->forget(name);
                      noteListChanged();
                      done(removed);
                    });
}

void Application::noteListChanged() {
  observers_.tell([](auto& observer) { observer.poolListDidChange(); });
}

void Application::queueAllParticipants(KDFilePool& pool) {
  if (auto* known = peer_->presence(pool)) scheduler_->syncWithAllParticipantsInPool(*known);
}

void Application::noteMissingFiles(KDFilePool& pool) {
  retries_->note(pool.name(), pool.isActive() && !pool.snapshot()->missing->empty());
}

// What pools ask.

void Application::poolPathsNotAccessible(KDFilePool& pool) {
  observers_.tell([&](auto& observer) { observer.poolPathsNotAccessible(pool); });
}

void Application::shouldDeleteFiles(KDFilePool& pool, const DeleteQuestion& question) {
  if (!settings_.asksPeople) {
    const std::string answer = platform_.defaults.string("HeadlessDeleteAnswer").value_or("ask");
    if (answer == "reget" || answer == "delete") {
      platform_.log.warning("{} vanished files in '{}' are answered with \"{}\".",
                            question.paths.size(), pool.name(), answer);
      pool.answerQuestion(question.id, answer == "reget" ? ReGet : DeleteEverywhere,
                          [](const Result<>&) {});
      return;
    }
  }
  observers_.tell([&](auto& observer) { observer.questionDidArise(pool, question); });
}

bool Application::isSyncing(const ParticipantAddress& participant) {
  return scheduler_->isSyncing(participant);
}

void Application::poolDidMove(KDFilePool& pool) {
  places_->setPath(pool.name(), pool.folderPath());
  observers_.tell([&](auto& observer) { observer.poolDidChange(pool); });
}

bool Application::isPaused(const std::string& poolName) const {
  return pauses_ != nullptr && pauses_->isPaused(poolName);
}

void Application::pausesChanged(const std::string& poolName) {
  for (const auto& pool : peer_->filePools()) {
    if (!poolName.empty() && pool->name() != poolName) continue;
    if (isPaused(pool->name())) {
      scheduler_->giveUpSync(pool->name());
      peer_->deannouncePool(pool->name());
    } else if (pool->isActive() || pool->phase() == PoolPhase::Recovering) {
      queueAllParticipants(*pool);
    }
    observers_.tell([&](auto& observer) { observer.poolDidChange(*pool); });
  }
  if (!isStarted_) return;
  const auto single = poolName.empty() ? nullptr : peer_->poolNamed(poolName);
  if (poolName.empty() || single) center_.post(KDPoolDidChangeCriticalData{single.get()});
}

void Application::noteClock(double badSeconds) {
  isClockOff_ = std::abs(badSeconds) > MostBadSeconds;
  for (const auto& pool : peer_->filePools()) {
    observers_.tell([&](auto& observer) { observer.poolDidChange(*pool); });
  }
}

const std::vector<StoredPlace>& Application::missingPlaces() const { return restorer_->missing(); }

bool Application::isWaitingForDrive(const std::string& poolName) const {
  const auto& missing = missingPlaces();
  return std::any_of(missing.begin(), missing.end(),
                     [&](const StoredPlace& place) { return place.name == poolName; });
}

void Application::giveUpMissing(const std::string& poolName) {
  restorer_->forget(poolName);
  places_->setSubscribed(poolName, false);
  pauses_->resume(poolName);
  noteListChanged();
}

const TxtRecord* Application::announcement(const std::string& serviceName) const {
  return bonjour_->announcementInfo(serviceName);
}

KDPoolPresence* Application::presence(const std::string& poolName) {
  return peer_->presence(poolName);
}

unsigned Application::clientBandwidthLimit() { return peer_->clientBandwidthLimit(); }

}  // namespace zolvar
