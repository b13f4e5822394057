#include "net/KDPeer.h"

#include <algorithm>

#include "net/KDBonjour.h"
#include "net/KDParticipant.h"
#include "net/ServerControl.h"
#include "net/TransferDaemon.h"
#include "platform/FileSystem.h"
#include "platform/Lanes.h"
#include "platform/Log.h"
#include "platform/NetworkWatch.h"
#include "platform/Platform.h"
#include "platform/RunLoop.h"
#include "platform/UserDefaults.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {

namespace {

constexpr std::string_view AddressPoolExtension = ".zolvaraddresses";
constexpr unsigned LeastBandwidth = 10;            // KB/s
constexpr std::uint64_t LargestPicture = 1 << 20;  // bytes

unsigned bandwidthLimit(const Platform& platform, const char* key) {
  const unsigned long value = std::min(platform.defaults.number(key), 1000000UL);
  if (value == 0) return 0;
  return std::max(static_cast<unsigned>(value), LeastBandwidth);
}

}  // namespace

Result<std::unique_ptr<KDPeer>> KDPeer::make(Settings settings, Platform& platform,
                                             NotificationCenter& center, KDBonjour& bonjour) {
  auto support = platform.fileSystem.supportFolder();
  if (!support) return tl::unexpected(support.error());
  const auto made = platform.fileSystem.makeFolder(settings.basePath);
  if (!platform.fileSystem.isFolder(settings.basePath)) {
    return fail(FailureKind::Refused, "create the folder", settings.basePath,
                made ? "it is no folder" : made.error().reason);
  }
  return std::unique_ptr<KDPeer>(
      new KDPeer(std::move(settings), platform, center, bonjour, *support));
}

KDPeer::KDPeer(Settings settings, Platform& platform, NotificationCenter& center,
               KDBonjour& bonjour, const std::string& supportFolder)
    : settings_(std::move(settings)),
      platform_(platform),
      center_(center),
      bonjour_(bonjour),
      userId_(settings_.userId.empty() ? KDFilePool::localUserId(platform) : settings_.userId),
      daemon_(std::make_shared<TransferDaemon>(platform, supportFolder, settings_.basePath)),
      lane_(platform.lanes.start("peer")),
      alive_(std::make_shared<bool>(true)) {
  ServerControl::Hooks hooks;
  hooks.prepare = [this] { return prepareStart(); };
  hooks.changed = [this](bool running, const std::string& trouble) {
    serverDidChange(running, trouble);
  };
  server_ =
      std::make_unique<ServerControl>(platform, daemon_, lane_, settings_.port, std::move(hooks));
  observeAll();
}

KDPeer::~KDPeer() {
  platform_.network.observe({});
  alive_.reset();
}

bool KDPeer::isMe(const KDParticipant& participant) const {
  return participant.userId() == userId_;
}

std::string KDPeer::description() const { return "KDPeer with base path: " + basePath(); }

// Pools.

std::vector<std::shared_ptr<KDFilePool>> KDPeer::filePools() const {
  std::vector<std::shared_ptr<KDFilePool>> pools;
  for (const auto& [name, presence] : presences_) pools.push_back(presence->sharedPool());
  return pools;
}

std::shared_ptr<KDFilePool> KDPeer::poolNamed(const std::string& name) const {
  const auto found = presences_.find(name);
  return found == presences_.end() ? nullptr : found->second->sharedPool();
}

KDPoolPresence* KDPeer::presence(const std::string& poolName) const {
  const auto found = presences_.find(poolName);
  return found == presences_.end() ? nullptr : found->second.get();
}

KDPoolPresence* KDPeer::presence(const KDFilePool& pool) const {
  KDPoolPresence* found = presence(pool.name());
  return found != nullptr && &found->pool() == &pool ? found : nullptr;
}

void KDPeer::addPool(std::shared_ptr<KDFilePool> pool) {
  require(pool != nullptr, "aPool != nil");
  const std::string name = pool->name();
  presences_[name] = std::make_unique<KDPoolPresence>(std::move(pool), platform_, bonjour_);
}

Result<std::shared_ptr<KDFilePool>> KDPeer::addPoolWithPathUsingPoolClass(
    const std::string& path, const PoolClass& poolClass, const KDFilePool::Options& options) {
  // The whole path is the key here, so this only catches a pool that is added by its name.
  if (presences_.contains(path)) {
    return fail(FailureKind::Refused, "create the Sync Folder", path,
                "There is already a Sync Folder with the same name present");
  }
  if (auto problem = poolNameProblem(lastPathComponent(path))) {
    return fail(FailureKind::Refused, "create the Sync Folder", path, *problem);
  }
  auto pool = poolClass(path, options);
  addPool(pool);
  return pool;
}

Result<std::shared_ptr<KDFilePool>> KDPeer::addPoolWithPath(const std::string& path,
                                                            const KDFilePool::Options& options) {
  PoolClass poolClass = [this](const std::string& folder, const KDFilePool::Options& given) {
    return KDFilePool::make(folder, given, platform_, center_, settings_.delegate);
  };
  if (path.ends_with(AddressPoolExtension) && settings_.addressPoolClass) {
    poolClass = settings_.addressPoolClass;
  }
  auto pool = addPoolWithPathUsingPoolClass(path, poolClass, options);
  if (!pool) return tl::unexpected(Failure{pool.error().kind, "", "", ""});
  return pool;
}

void KDPeer::removePool(KDFilePool& pool, Done done) {
  if (pool.isActive()) throw InconsistencyError("Pool may not be active during removal.");
  auto finish = [this, done = std::move(done)](const Result<>& trashed) {
    if (trashed) removeOrphanedPools();
    if (done) done(trashed);
  };
  if (!pool.hasFullFolderPath()) {
    finish({});
    return;
  }
  onLane([&fileSystem = platform_.fileSystem, &runLoop = platform_.runLoop,
          path = pool.folderPath(), weak = std::weak_ptr(alive_), finish = std::move(finish)] {
    const auto trashed = fileSystem.trashFolder(path);
    runLoop.post([weak, finish, trashed] {
      if (!weak.expired()) finish(trashed);
    });
  });
}

void KDPeer::forgetPool(const KDFilePool& pool) {
  if (pool.isActive()) throw InconsistencyError("Pool may not be active during removal.");
  presences_.erase(pool.name());
}

void KDPeer::removeOrphanedPools() {
  std::erase_if(presences_, [this](const auto& entry) {
    const KDFilePool& pool = entry.second->pool();
    // The folder of a pool in use may be away for a while (a disk that is not mounted).
    if (pool.phase() != PoolPhase::Inactive || entry.second->countOfParticipants() != 0) {
      return false;
    }
    return !pool.hasFullFolderPath() || !platform_.fileSystem.isFolder(pool.folderPath());
  });
}

// Daemon.

void KDPeer::startServer(Done done) { server_->start(std::move(done)); }

void KDPeer::stopServer(Done done) { server_->stop(std::move(done)); }

bool KDPeer::isServerRunning() const { return server_->isRunning(); }

unsigned KDPeer::serverPort() const {
  if (!isServerRunning()) {
    throw InconsistencyError("Requested port number before server was started.");
  }
  return server_->port();
}

unsigned KDPeer::serverBandwidthLimit() const { return bandwidthLimit(platform_, "BWLimitOut"); }

unsigned KDPeer::clientBandwidthLimit() const { return bandwidthLimit(platform_, "BWLimitIn"); }

std::string KDPeer::configFilePath() const { return daemon_->configFilePath(); }
std::string KDPeer::pidFilePath() const { return daemon_->pidFilePath(); }
std::string KDPeer::lockFilePath() const { return daemon_->lockFilePath(); }
std::string KDPeer::logFilePath() const { return daemon_->logFilePath(); }
std::string KDPeer::passwordFilePath() const { return daemon_->passwordFilePath(); }

std::optional<std::string> KDPeer::servingProblem(const KDPoolPresence& presence) const {
  const KDFilePool& pool = presence.pool();
  const std::string start = "The folder '" + pool.name() + "' is not shared: ";
  if (!pool.hasFullFolderPath()) return start + "It has no place on this machine.";
  if (auto problem = poolNameProblem(pool.name())) return start + *problem;
  if (auto problem = poolPathProblem(pool.folderPath())) return start + *problem;
  if (pool.passwordState() == PasswordState::Unreadable) {
    return start + "Its password cannot be read; unlock the keyring and share it again.";
  }
  if (pool.passwordState() == PasswordState::Unknown) return start + "Its password is being read.";
  for (const auto& [name, other] : presences_) {
    if (other.get() == &presence || !other->pool().isActive()) continue;
    if (!isSameModule(name, pool.name())) continue;
    const bool otherComesFirst =
        other->isAnnounced() != presence.isAnnounced() ? other->isAnnounced() : name < pool.name();
    if (otherComesFirst) {
      return start + "Its name differs from '" + name +
             "' in case or blanks only, and both cannot be served.";
    }
  }
  return std::nullopt;
}

DaemonConfiguration KDPeer::configuration() const {
  DaemonConfiguration configuration{pidFilePath(),      logFilePath(),   lockFilePath(),
                                    passwordFilePath(), settings_.owner, {}};
  for (const auto& [name, presence] : presences_) {
    const KDFilePool& pool = presence->pool();
    if (!pool.isActive() || isPaused(pool) || servingProblem(*presence)) continue;
    configuration.modules.push_back(
        {name, pool.folderPath(), pool.nameHash(), !pool.password().empty()});
  }
  return configuration;
}

std::string KDPeer::configFileContent() const { return zolvar::configFileContent(configuration()); }

std::string KDPeer::passwordFileContent() const {
  std::vector<std::pair<std::string, std::string>> passwords;
  for (const auto& [name, presence] : presences_) {
    const KDFilePool& pool = presence->pool();
    if (!pool.password().empty()) passwords.emplace_back(pool.nameHash(), pool.password());
  }
  return zolvar::passwordFileContent(passwords);
}

DaemonStart KDPeer::prepareStart() {
  DaemonStart start;
  start.bandwidthLimit = serverBandwidthLimit();
  start.configuration = configuration();
  servedNames_.clear();
  bool anyPassword = false;
  for (const DaemonModule& module : start.configuration.modules) {
    servedNames_.insert(module.name);
    anyPassword = anyPassword || module.hasPassword;
  }
  if (anyPassword) start.passwordFileContent = passwordFileContent();
  return start;
}

void KDPeer::loadPicture(const std::shared_ptr<KDParticipant>& participant,
                         std::function<void(bool)> done) {
  const auto pool = poolNamed(participant->poolName());
  if (!pool || !pool->hasFullFolderPath()) {
    if (done) done(false);
    return;
  }
  onLane([&fileSystem = platform_.fileSystem, &runLoop = platform_.runLoop,
          folder = pool->folderPath(), participant, done = std::move(done),
          weak = std::weak_ptr(alive_)] {
    std::string bytes;
    if (const auto opened = fileSystem.open(folder)) {
      const std::string file = joinPath(MetadataFolderName, participant->userId() + ".tiff");
      bytes = (*opened)->read(file, 0, LargestPicture).value_or("");
    }
    runLoop.post([participant, done, weak, bytes = std::move(bytes)]() mutable {
      if (weak.expired()) return;
      const bool found = !bytes.empty();
      if (found) participant->setPictureData(std::move(bytes));
      if (done) done(found);
    });
  });
}

void KDPeer::release() {
  stopServer([this](const Result<>&) {
    for (const auto& pool : filePools()) {
      pool->deactivate();
      deannouncePool(pool->name());
      removePool(*pool);
    }
  });
}

void KDPeer::after(double seconds, std::function<void()> task) {
  platform_.runLoop.after(seconds, [weak = std::weak_ptr(alive_), task = std::move(task)] {
    if (!weak.expired()) task();
  });
}

void KDPeer::onLane(std::function<void()> job) {
  if (platform_.isTestModeActive) {
    job();
  } else {
    lane_->post(std::move(job));
  }
}

}  // namespace zolvar
