#include "app/Operations.h"

#include <fmt/format.h>

#include "app/Application.h"
#include "app/FolderRules.h"
#include "app/PoolPlaces.h"
#include "app/SettingRules.h"
#include "app/SyncWait.h"
#include "net/KDParticipant.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr int ReGet = 1000;
constexpr int DeleteEverywhere = 1001;

bool isLeft(const KDFilePool& pool) {
  return pool.phase() == PoolPhase::Inactive || pool.phase() == PoolPhase::Leaving;
}

std::vector<ParticipantAddress> remoteAddresses(const KDPoolPresence& presence) {
  std::vector<ParticipantAddress> addresses;
  for (const auto& participant : presence.participants()) {
    if (!participant->isLocalParticipant()) addresses.push_back(participant->address());
  }
  return addresses;
}

}  // namespace

tl::unexpected<Failure> refusal(std::string sentence) {
  return fail(FailureKind::Refused, {}, {}, std::move(sentence));
}

std::string refusalText(const Failure& failure) {
  if (!failure.attempt.empty()) return failure.message();
  return failure.reason.empty() ? "It was refused without a reason." : failure.reason;
}

Operations::Operations(Application& application) : application_(application) {}

Operations::~Operations() = default;

Result<KDPoolPresence*> Operations::known(const std::string& name) const {
  if (auto* presence = application_.peer().presence(name)) return presence;
  return refusal(fmt::format("There is no folder named '{}'.", name));
}

Result<KDFilePool*> Operations::subscribed(const std::string& name) const {
  const auto presence = known(name);
  if (!presence) return tl::unexpected(presence.error());
  KDFilePool& pool = (*presence)->pool();
  if (isLeft(pool)) return refusal(fmt::format("You are not subscribed to '{}'.", name));
  return &pool;
}

// Folders.

void Operations::share(const std::string& folder, const std::optional<std::string>& password,
                       Done done) {
  FileSystem& fileSystem = application_.platform().fileSystem;
  const std::string path = tidyPath(folder);
  const std::string name(lastPathComponent(path));
  if (const auto problem =
          folderProblem(path, name, application_.peer(), fileSystem, application_.blacklist())) {
    return done(refusal(problem->oneLine()));
  }
  if (!fileSystem.isFolder(path)) {
    return done(refusal(fmt::format("There is no folder at '{}'.", path)));
  }
  auto pool = application_.peer().poolNamed(name);
  if (pool) {
    const auto* presence = application_.peer().presence(name);
    if (!isLeft(*pool)) {
      return done(refusal("There is already a Sync Folder with the same name present."));
    }
    if (!remoteAddresses(*presence).empty()) {
      return done(refusal(fmt::format(
          "Others share a folder named '{}' already. Subscribe to it, or choose another name.",
          name)));
    }
  } else {
    KDFilePool::Options options;
    options.userId = application_.peer().userId();
    options.pace = application_.pace();
    const auto added = application_.peer().addPoolWithPath(path, options);
    if (!added) {
      return done(refusal("There is already a Sync Folder with the same name present."));
    }
    pool = *added;
  }
  try {
    pool->setFolderPath(path);
  } catch (const InconsistencyError&) {
    return done(refusal(fmt::format("The folder '{}' cannot be shared.", path)));
  }
  application_.places().setPath(name, path);
  if (auto started = pool->startLocalLog(); !started) return done(std::move(started));
  application_.noteListChanged();
  place(*pool, password, std::move(done));
}

void Operations::subscribe(const std::string& name, const std::string& folder,
                           const std::optional<std::string>& password, Done done) {
  const auto presence = known(name);
  if (!presence) return done(tl::unexpected(presence.error()));
  KDFilePool& pool = (*presence)->pool();
  if (!isLeft(pool)) {
    return done(refusal(fmt::format("You are subscribed to '{}' already.", name)));
  }
  std::string path = tidyPath(folder);
  if (path.empty()) {
    path = pool.hasFullFolderPath() ? pool.folderPath()
                                    : application_.places().trackedPathForPoolName(name);
  }
  if (lastPathComponent(path) != name) path = joinPath(path, name);
  FileSystem& fileSystem = application_.platform().fileSystem;
  if (const auto problem =
          folderProblem(path, name, application_.peer(), fileSystem, application_.blacklist())) {
    return done(refusal(problem->oneLine()));
  }
  if (auto made = fileSystem.makeFolder(path); !made) return done(std::move(made));
  try {
    pool.setFolderPath(path);
  } catch (const InconsistencyError&) {
    return done(refusal(fmt::format("The folder '{}' cannot be used.", path)));
  }
  application_.places().setPath(name, path);
  place(pool, password, std::move(done));
}

void Operations::place(KDFilePool& pool, const std::optional<std::string>& password, Done done) {
  if (!password) return application_.setFilePool(pool, true, std::move(done));
  // The password first: a folder that should have one is never served without it.
  pool.setPassword(*password, [this, shared = pool.shared_from_this(),
                               done = std::move(done)](Result<> set) mutable {
    if (!set) return done(std::move(set));
    application_.setFilePool(*shared, true, std::move(done));
  });
}

Result<> Operations::unsubscribe(const std::string& name) {
  const auto pool = subscribed(name);
  if (!pool) return tl::unexpected(pool.error());
  application_.setFilePool(**pool, false);
  return {};
}

void Operations::remove(const std::string& name, Done done) {
  const auto presence = known(name);
  if (!presence) return done(tl::unexpected(presence.error()));
  KDFilePool& pool = (*presence)->pool();
  const auto& fileSystem = application_.platform().fileSystem;
  if (!pool.hasFullFolderPath() || !fileSystem.isFolder(pool.folderPath())) {
    return done(refusal(fmt::format("'{}' has no folder on this computer.", name)));
  }
  application_.removePool(pool, std::move(done));
}

void Operations::setPassword(const std::string& name, const std::string& password, Done done) {
  const auto presence = known(name);
  if (!presence) return done(tl::unexpected(presence.error()));
  (*presence)->pool().setPassword(password, [this, name, done = std::move(done)](Result<> set) {
    if (set) application_.scheduler().retryPool(name);
    done(std::move(set));
  });
}

// What is there.

std::vector<PoolInfo> Operations::list() const {
  std::vector<PoolInfo> pools;
  for (const auto& [name, presence] : application_.peer().filePoolsByName()) {
    pools.push_back(info(*presence));
  }
  return pools;
}

PoolInfo Operations::info(const KDPoolPresence& presence) const {
  const KDFilePool& pool = presence.pool();
  const auto snapshot = pool.snapshot();
  const auto& syncing = application_.scheduler().syncingParticipant();
  PoolInfo info;
  info.name = pool.name();
  if (pool.hasFullFolderPath()) info.folder = pool.folderPath();
  info.phase = pool.phase();
  info.participants = remoteAddresses(presence).size();
  info.isAnnounced = presence.isAnnounced() || info.participants > 0;
  info.missing = snapshot->missing->size();
  info.conflicts = snapshot->conflicts->size();
  info.passwordRequired = pool.passwordState() == PasswordState::Set ||
                          pool.passwordState() == PasswordState::Unreadable ||
                          presence.passwordRequiredByAnyParticipant();
  info.isSyncing = syncing && syncing->poolName() == info.name;
  info.trouble = snapshot->trouble;
  return info;
}

Result<std::vector<ParticipantInfo>> Operations::participants(const std::string& name) const {
  const auto presence = known(name);
  if (!presence) return tl::unexpected(presence.error());
  std::vector<ParticipantInfo> result;
  for (const auto& participant : (*presence)->participants()) {
    result.push_back({participant->address(), participant->isLocalParticipant(),
                      participant->isIgnored(), participant->lastSyncDate(),
                      participant->passwordRequired()});
  }
  return result;
}

Result<std::vector<MissingFile>> Operations::missing(const std::string& name) const {
  const auto presence = known(name);
  if (!presence) return tl::unexpected(presence.error());
  const auto snapshot = (*presence)->pool().snapshot();
  std::vector<MissingFile> files;
  for (const auto& path : *snapshot->missing) {
    MissingFile file{path, {}};
    if (const auto held = snapshot->holders->find(path); held != snapshot->holders->end()) {
      file.holders.assign(held->second.begin(), held->second.end());
    }
    files.push_back(std::move(file));
  }
  return files;
}

Result<std::vector<Conflict>> Operations::conflicts(const std::string& name) const {
  const auto presence = known(name);
  if (!presence) return tl::unexpected(presence.error());
  return *(*presence)->pool().snapshot()->conflicts;
}

void Operations::tree(const std::string& name, const std::string& path,
                      std::function<void(Result<std::string>)> done) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  if (!isSafeRelativePath(path)) {
    return done(refusal(fmt::format("'{}' is no path of a file in '{}'.", path, name)));
  }
  (*pool)->treeDescription(path, std::move(done));
}

std::vector<OpenQuestion> Operations::questions() const {
  std::vector<OpenQuestion> questions;
  for (const auto& [name, presence] : application_.peer().filePoolsByName()) {
    const auto snapshot = presence->pool().snapshot();
    if (snapshot->question) questions.push_back({name, *snapshot->question});
  }
  return questions;
}

ProgramStatus Operations::status() const {
  ProgramStatus status;
  const KDPeer& peer = application_.peer();
  status.userId = peer.userId();
  status.version = application_.settings().version;
  status.isStarted = application_.isStarted();
  if (peer.isServerRunning()) status.port = peer.serverPort();
  if (const auto& syncing = application_.scheduler().syncingParticipant()) {
    const auto pool = peer.poolNamed(syncing->poolName());
    status.sync = SyncInProgress{syncing->poolName(), syncing->userId(),
                                 pool ? pool->progress() : std::nullopt};
  }
  return status;
}

// Versions.

void Operations::onVersion(const std::string& name, const std::string& path, const std::string& id,
                           const Done& done,
                           const std::function<void(KDFilePool&, const VersionId&)>& act) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  if (!isSafeRelativePath(path)) {
    return done(refusal(fmt::format("'{}' is no path of a file in '{}'.", path, name)));
  }
  const auto version = VersionId::parse(id);
  if (!version) return done(refusal(fmt::format("'{}' is no id of a version.", id)));
  act(**pool, *version);
}

void Operations::useVersion(const std::string& name, const std::string& path, const std::string& id,
                            Done done) {
  onVersion(name, path, id, done,
            [&](auto& pool, const auto& version) { pool.selectBranch(path, version, done); });
}

void Operations::dropVersion(const std::string& name, const std::string& path,
                             const std::string& id, Done done) {
  onVersion(name, path, id, done,
            [&](auto& pool, const auto& version) { pool.deleteBranch(path, version, done); });
}

void Operations::fetchVersion(const std::string& name, const std::string& path,
                              const std::string& id, const std::string& to, Done done) {
  if (!to.starts_with('/')) {
    return done(refusal("The path to fetch to must be a full one, beginning with '/'."));
  }
  onVersion(name, path, id, done, [&](auto& pool, const auto& version) {
    pool.fetchVersion(path, version, to, remoteAddresses(*application_.peer().presence(name)),
                      done);
  });
}

void Operations::answer(const std::string& name, bool deletes, Done done) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  const auto snapshot = (*pool)->snapshot();
  if (!snapshot->question) {
    return done(refusal(fmt::format("There is no open question about '{}'.", name)));
  }
  (*pool)->answerQuestion(snapshot->question->id, deletes ? DeleteEverywhere : ReGet,
                          std::move(done));
}

// Syncs.

Result<> Operations::sync(const std::optional<std::string>& name) {
  if (name) {
    const auto pool = subscribed(*name);
    if (!pool) return tl::unexpected(pool.error());
    application_.scheduler().syncWithAllParticipantsInPool(*application_.peer().presence(*name));
    return {};
  }
  for (const auto& [each, presence] : application_.peer().filePoolsByName()) {
    if (!isLeft(presence->pool())) {
      application_.scheduler().syncWithAllParticipantsInPool(*presence);
    }
  }
  return {};
}

Result<> Operations::syncAndWait(const std::string& name,
                                 std::function<void(const TransferProgress&)> progressed,
                                 std::function<void(Result<SyncOutcome>)> done) {
  const auto pool = subscribed(name);
  if (!pool) return tl::unexpected(pool.error());
  if ((*pool)->passwordState() == PasswordState::Unreadable) {
    return refusal(fmt::format("The password of '{}' cannot be read; nothing is synced.", name));
  }
  SyncWait::Callbacks callbacks{std::move(progressed), std::move(done), {}};
  auto slot = std::make_shared<SyncWait*>(nullptr);
  callbacks.finished = [this, slot, alive = std::weak_ptr<bool>(alive_)] {
    application_.platform().runLoop.after(0, [this, slot, alive] {
      if (alive.expired()) return;
      std::erase_if(waits_, [&](const auto& wait) { return wait.get() == *slot; });
    });
  };
  auto wait = std::make_unique<SyncWait>(application_, name, std::move(callbacks));
  *slot = wait.get();
  (*waits_.insert(std::move(wait)).first)->start();
  return {};
}

// Settings.

std::optional<std::string> Operations::setting(const std::string& key) const {
  return application_.platform().defaults.string(key);
}

Result<> Operations::set(const std::string& key, const std::string& value) {
  if (const auto problem = settingProblem(key, value)) return refusal(*problem);
  auto& defaults = application_.platform().defaults;
  if (value.empty()) {
    defaults.remove(key);
  } else {
    defaults.setString(key, value);
  }
  return {};
}

}  // namespace zolvar
