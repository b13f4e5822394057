#include "app/Operations.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "app/AddressFolders.h"
#include "app/Application.h"
#include "app/FolderRules.h"
#include "app/Outcomes.h"
#include "app/Pauses.h"
#include "app/PoolListOrder.h"
#include "app/PoolPlaces.h"
#include "app/SyncWait.h"
#include "net/KDParticipant.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

bool isLeft(const KDFilePool& pool) {
  return pool.phase() == PoolPhase::Inactive || pool.phase() == PoolPhase::Leaving;
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

Result<> Operations::wanted(const std::string& name) const {
  if (application_.isWaitingForDrive(name)) return {};
  if (const auto pool = subscribed(name); !pool) return tl::unexpected(pool.error());
  return {};
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
  const bool isNew = pool == nullptr;
  if (pool) {
    const auto* presence = application_.peer().presence(name);
    if (!isLeft(*pool)) {
      return done(refusal("There is already a Sync Folder with the same name present."));
    }
    if (!presence->remoteAddresses().empty()) {
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
    if (isNew) application_.peer().forgetPool(*pool);
    return done(refusal(fmt::format("The folder '{}' cannot be shared.", path)));
  }
  if (auto started = pool->startLocalLog(); !started) {
    if (isNew) application_.peer().forgetPool(*pool);
    return done(std::move(started));
  }
  application_.places().setPath(name, path);
  if (const auto warning = warningAbout(path)) application_.warn(name, *warning);
  application_.noteListChanged();
  place(*pool, password, std::move(done));
}

Result<std::vector<std::string>> Operations::addressGroups() const {
  AddressFolders* const addresses = application_.addresses();
  if (addresses == nullptr) return refusal("There is no address book.");
  return addresses->groups();
}

void Operations::shareAddresses(const std::string& group,
                                const std::optional<std::string>& password, Done done) {
  const auto groups = addressGroups();
  if (!groups) return done(tl::unexpected(groups.error()));
  if (std::find(groups->begin(), groups->end(), group) == groups->end()) {
    return done(refusal(
        groups->empty()
            ? fmt::format("There is no group named '{}' in the address book.", group)
            : fmt::format("There is no group named '{}' in the address book. There are: {}.", group,
                          fmt::join(*groups, ", "))));
  }
  if (const auto problem = poolNameProblem(group)) return done(refusal(*problem));
  const std::string folder = application_.addresses()->folderOf(group);
  if (auto made = application_.platform().fileSystem.makeFolder(folder); !made) {
    return done(std::move(made));
  }
  share(folder, password, std::move(done));
}

std::optional<std::string> Operations::warningAbout(const std::string& folder) const {
  return folderWarning(tidyPath(folder), application_.platform().fileSystem,
                       application_.blacklist());
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
  path = completedPath(path, name);
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
  pool.setPassword(*password,
                   [this, alive = std::weak_ptr<bool>(alive_), shared = pool.shared_from_this(),
                    done = std::move(done)](Result<> set) mutable {
                     if (alive.expired()) return;
                     if (!set) return done(std::move(set));
                     application_.setFilePool(*shared, true, std::move(done));
                   });
}

Result<> Operations::unsubscribe(const std::string& name) {
  if (application_.isWaitingForDrive(name)) {
    application_.giveUpMissing(name);
    return {};
  }
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
  (*presence)->pool().setPassword(password, [this, alive = std::weak_ptr<bool>(alive_), name,
                                             done = std::move(done)](Result<> set) {
    if (alive.expired()) return;
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
  for (const auto& place : application_.missingPlaces()) {
    if (application_.peer().presence(place.name) != nullptr) continue;
    PoolInfo info;
    info.name = info.displayName = place.name;
    info.isAddressFolder = isAddressPoolName(info.name);
    info.folder = place.path;
    FolderFacts facts;
    facts.isSubscribed = true;
    facts.isAccessible = false;
    facts.isPaused = application_.pauses().isPaused(place.name);
    info.state = folderState(facts);
    info.pausedUntil = application_.pauses().pausedUntil(place.name);
    pools.push_back(std::move(info));
  }
  sortPools(pools);
  return pools;
}

std::string Operations::troubleOf(const KDPoolPresence& presence, const FolderState& state) const {
  using enum FolderStateKind;
  if (state.kind != Fetching && state.kind != Missing && state.kind != Checking) return {};
  constexpr int Lasting = 2;  // failures in a row: one alone may be a cable that was pulled
  std::string reason;
  for (const auto& participant : presence.participants()) {
    if (participant->isLocalParticipant()) continue;
    const Contact contact = application_.contacts().of(*participant);
    if (contact.standing == Contact::Standing::Reachable) return {};
    if (contact.failures >= Lasting) reason = contact.reason;
  }
  return reason;
}

PoolInfo Operations::info(const KDPoolPresence& presence) const {
  const KDFilePool& pool = presence.pool();
  const auto snapshot = pool.snapshot();
  const auto& syncing = application_.scheduler().syncingParticipant();
  PoolInfo info;
  info.name = pool.name();
  info.displayName = pool.displayName();
  info.isAddressFolder = isAddressPoolName(info.name);
  if (pool.hasFullFolderPath()) info.folder = pool.folderPath();
  info.phase = pool.phase();
  info.participants = presence.remoteAddresses().size();
  info.isAnnounced = presence.isAnnounced() || info.participants > 0;
  info.passwordRequired = pool.passwordState() == PasswordState::Set ||
                          pool.passwordState() == PasswordState::Unreadable ||
                          presence.passwordRequiredByAnyParticipant();
  info.isSyncing = syncing && syncing->poolName() == info.name;
  info.state = folderState(folderFacts(application_, presence));
  if (info.state.kind == FolderStateKind::NotSubscribed) return info;
  info.missing = snapshot->missing->size();
  info.conflicts = snapshot->conflicts->size();
  info.trouble = snapshot->trouble.empty() ? troubleOf(presence, info.state) : snapshot->trouble;
  info.pausedUntil = application_.pauses().pausedUntil(info.name);
  return info;
}

Result<std::vector<ParticipantInfo>> Operations::participants(const std::string& name) const {
  const auto presence = known(name);
  if (!presence) return tl::unexpected(presence.error());
  std::vector<ParticipantInfo> result;
  for (const auto& participant : (*presence)->participants()) {
    result.push_back({participant->address(), participant->isLocalParticipant(),
                      participant->isIgnored(), participant->lastSyncDate(),
                      participant->passwordRequired(), application_.contacts().of(*participant)});
  }
  return result;
}

Result<std::vector<MissingFile>> Operations::missing(const std::string& name) const {
  const auto presence = known(name);
  if (!presence) return tl::unexpected(presence.error());
  const auto snapshot = (*presence)->pool().snapshot();
  std::vector<MissingFile> files;
  for (const auto& path : *snapshot->missing) {
    MissingFile file{path, (*presence)->pool().descriptionForFile(path), {}, {}};
    if (const auto found = snapshot->seen->find(path); found != snapshot->seen->end()) {
      const SeenFile& seen = found->second;
      file.holders.assign(seen.holders.begin(), seen.holders.end());
      file.size = seen.size;
    }
    files.push_back(std::move(file));
  }
  return files;
}

std::string Operations::describe(const std::string& name, const std::string& path) const {
  const auto pool = application_.peer().poolNamed(name);
  return pool ? pool->descriptionForFile(path) : path;
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

void Operations::history(const std::string& name, const std::string& path,
                         std::function<void(Result<FileHistory>)> done) {
  const auto pool = subscribed(name);
  if (!pool) return done(tl::unexpected(pool.error()));
  if (!isSafeRelativePath(path)) {
    return done(refusal(fmt::format("'{}' is no path of a file in '{}'.", path, name)));
  }
  (*pool)->history(path, std::move(done));
}

std::vector<OpenQuestion> Operations::questions() const {
  std::vector<OpenQuestion> questions;
  for (const auto& [name, presence] : application_.peer().filePoolsByName()) {
    if (const auto question = application_.outcomes().openQuestion(presence->pool())) {
      questions.push_back({name, *question});
    }
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
  for (const auto& pool : list()) {
    if (pool.state.kind == FolderStateKind::NotSubscribed) continue;
    status.folders.emplace_back(pool.name, pool.state);
  }
  status.pausedUntil = application_.pauses().pausedUntil("");
  return status;
}

// Syncs.

Result<> Operations::sync(const std::optional<std::string>& name) {
  if (name) {
    const auto pool = subscribed(*name);
    if (!pool) return tl::unexpected(pool.error());
    if (const auto paused = pauseProblem(*name)) return tl::unexpected(*paused);
    (*pool)->readPasswordAgain();  // the keyring may be open by now
    application_.scheduler().syncWithAllParticipantsInPool(*application_.peer().presence(*name));
    return {};
  }
  if (application_.pauses().isEverythingPaused()) return tl::unexpected(everythingIsPaused());
  for (const auto& [each, presence] : application_.peer().filePoolsByName()) {
    if (!isLeft(presence->pool())) {
      presence->pool().readPasswordAgain();
      application_.scheduler().syncWithAllParticipantsInPool(*presence);
    }
  }
  return {};
}

Result<> Operations::syncWith(const std::string& name, const std::string& userId) {
  const auto pool = subscribed(name);
  if (!pool) return tl::unexpected(pool.error());
  if (const auto paused = pauseProblem(name)) return tl::unexpected(*paused);
  for (const auto& participant : application_.peer().presence(name)->participants()) {
    if (participant->userId() != userId || participant->isLocalParticipant()) continue;
    application_.scheduler().syncWithParticipant(participant);
    return {};
  }
  return refusal(fmt::format("'{}' does not take part in '{}' now.", userId, name));
}

Result<> Operations::syncAndWait(const std::string& name,
                                 std::function<void(const TransferProgress&)> progressed,
                                 std::function<void(Result<SyncOutcome>)> done) {
  const auto pool = subscribed(name);
  if (!pool) return tl::unexpected(pool.error());
  if (const auto paused = pauseProblem(name)) return tl::unexpected(*paused);
  if ((*pool)->passwordState() == PasswordState::Unreadable) {
    (*pool)->readPasswordAgain();
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

}  // namespace zolvar
