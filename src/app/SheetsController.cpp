#include "app/SheetsController.h"

#include <fmt/format.h>

#include "app/Application.h"
#include "app/Outcomes.h"
#include "app/VisibleFiles.h"
#include "net/KDParticipant.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr const char* ShowOnlyActivePools = "ShowOnlyActivePools";
constexpr const char* SuppressSwitchBranchWarning = "SuppressSwitchBranchWarning";
constexpr const char* SuppressPoolDeactivationWarning = "SuppressPoolDeactivationWarning";

}  // namespace

SheetsController::SheetsController(Application& application, Operations& operations,
                                   std::function<void()> changed)
    : application_(application), operations_(operations), changed_(std::move(changed)) {}

KDFilePool& SheetsController::selectedPool() const {
  const auto pool = application_.peer().poolNamed(poolName_);
  if (!pool) throw InconsistencyError("No Pool selected.");
  return *pool;
}

// Opening.

void SheetsController::addPool() {
  sheet_ = Sheet::Add;
  poolName_.clear();
  requiredFilename_.clear();
  subscribeOnly_ = false;
  setPoolPath({});
}

void SheetsController::subscribeToPool(const std::string& poolName) {
  poolName_ = poolName;
  const KDFilePool& pool = selectedPool();
  sheet_ = Sheet::Subscribe;
  requiredFilename_ = poolName;
  subscribeOnly_ = true;
  setPoolPath(pool.hasFullFolderPath() ? pool.folderPath() : application_.peer().basePath());
}

std::optional<std::string> SheetsController::removePool(const std::string& poolName) {
  poolName_ = poolName;
  selectedPool();
  sheet_ = Sheet::Remove;
  if (application_.platform().defaults.boolean("SuppressPoolDeletionWarning")) return std::nullopt;
  return removePoolWarning(poolName);
}

void SheetsController::showPoolSettingsAndActivate(const std::string& poolName, bool activates) {
  poolName_ = poolName;
  selectedPool();
  sheet_ = Sheet::Settings;
  activatesAfterSettings_ = activates;
}

// The chosen path.

void SheetsController::setPoolPath(const std::string& path) {
  poolPath_ = tidyPath(path);
  if (changed_) changed_();
}

std::string SheetsController::startOfChoosing() const {
  return poolPath_.empty() ? application_.peer().basePath() : std::string(parentPath(poolPath_));
}

void SheetsController::chooseAddPath(const std::string& chosen) {
  setPoolPath(chosen);
  const std::string completed = completedPoolPath();
  if (!requiredFilename_.empty() && application_.platform().fileSystem.isFolder(completed)) {
    setPoolPath(completed);
  }
}

std::string SheetsController::poolPathForDisplay() const {
  return zolvar::pathForDisplay(poolPath_);
}

std::string SheetsController::completedPoolPath() const {
  return completedPath(poolPath_, requiredFilename_);
}

bool SheetsController::isValidNewFilePoolName() const {
  const std::string name(lastPathComponent(poolPath_));
  if (name.empty()) return true;
  if (name.find_first_of(":/") != std::string::npos) return false;
  return application_.platform().fileSystem.identity(poolPath_).has_value();
}

std::optional<FolderProblem> SheetsController::problem() const {
  const std::string path = completedPoolPath();
  const std::string name =
      requiredFilename_.empty() ? std::string(lastPathComponent(path)) : requiredFilename_;
  return folderProblem(path, name, application_.peer(), application_.platform().fileSystem,
                       application_.blacklist());
}

std::string SheetsController::errorText() const {
  if (poolPath_.empty()) return {};
  // A place that cannot be used is told before what would be made in it.
  if (const auto found = problem()) return found->text;
  if (subscribeOnly_ && !application_.platform().fileSystem.isFolder(completedPoolPath())) {
    return fmt::format("Zolvar will try to create a folder named '{}' in the folder above.",
                       poolName_);
  }
  return {};
}

std::string SheetsController::warningText() const {
  if (poolPath_.empty()) return {};
  return operations_.warningAbout(completedPoolPath()).value_or("");
}

bool SheetsController::isAcceptable() const { return !poolPath_.empty() && !problem(); }

// What the buttons do.

void SheetsController::doAddPool(const std::string& password, Done done) {
  sheet_ = Sheet::None;
  operations_.share(poolPath_, password.empty() ? std::nullopt : std::optional(password),
                    std::move(done));
}

void SheetsController::doSubscribe(const std::optional<std::string>& password, Done done) {
  sheet_ = Sheet::None;
  operations_.subscribe(poolName_, completedPoolPath(), password, std::move(done));
}

void SheetsController::doRemovePool(Done done) {
  sheet_ = Sheet::None;
  operations_.remove(poolName_, std::move(done));
}

void SheetsController::savePoolSettingsSheet(const Settings& settings, Done done) {
  KDFilePool& pool = selectedPool();
  sheet_ = Sheet::None;
  if (settings.usesNotices) {
    application_.outcomes().setUsesNotices(poolName_, *settings.usesNotices);
  }
  auto finish = [&application = application_, name = poolName_, activates = activatesAfterSettings_,
                 done = std::move(done)](Result<> saved) {
    const auto known = application.peer().poolNamed(name);
    if (!saved || !known) return done(std::move(saved));
    if (activates) application.setFilePool(*known, true);
    application.scheduler().retryPool(name);
    done({});
  };
  if (!settings.password) return finish({});
  pool.setPassword(*settings.password, std::move(finish));
}

// Beside the sheets.

std::optional<Alert> SheetsController::openPoolInFinder(const std::string& poolName) {
  poolName_ = poolName;
  const KDFilePool& pool = selectedPool();
  const bool exists =
      pool.hasFullFolderPath() && application_.platform().fileSystem.isFolder(pool.folderPath());
  if (!pool.hasFullFolderPath()) return Alert{};
  if (pool.isActive()) {
    application_.platform().workspace.open(pool.folderPath());
    return std::nullopt;
  }
  Alert alert{"Not Subscribed to Folder",
              fmt::format("Warning: You are not subscribed to the Synced Folder '{}'. The Finder "
                          "will therefore not necessarily show the current state.",
                          poolName),
              {"Subscribe", "Cancel"}};
  if (exists) alert.buttons.insert(alert.buttons.begin(), "Reveal in Finder");
  return alert;
}

bool SheetsController::answerOpening(const std::string& poolName, const Alert& alert, int code) {
  // Without the first button the answers are shifted by one.
  const int answer = alert.buttons.size() == 2 ? code + 1 : code;
  const auto pool = application_.peer().poolNamed(poolName);
  if (!pool) return false;
  if (answer == FirstButton) application_.platform().workspace.open(pool->folderPath());
  return answer == SecondButton;
}

std::optional<std::string> SheetsController::warningBeforeSwitching(const std::string& path,
                                                                    const std::string& userId,
                                                                    const std::string& date) const {
  if (application_.platform().defaults.boolean(SuppressSwitchBranchWarning)) return std::nullopt;
  return switchBranchWarning(path, userId, date);
}

bool SheetsController::warnsBeforeDeactivating() const {
  return !application_.platform().defaults.boolean(SuppressPoolDeactivationWarning);
}

void SheetsController::silenceSwitchWarning() {
  application_.platform().defaults.setString(SuppressSwitchBranchWarning, "1");
}

void SheetsController::silenceDeactivationWarning() {
  application_.platform().defaults.setString(SuppressPoolDeactivationWarning, "1");
}

void SheetsController::toggleHideUnsubscribed() {
  auto& defaults = application_.platform().defaults;
  if (showsOnlyActivePools()) {
    defaults.remove(ShowOnlyActivePools);
  } else {
    defaults.setString(ShowOnlyActivePools, "1");
  }
}

bool SheetsController::showsOnlyActivePools() const {
  return application_.platform().defaults.boolean(ShowOnlyActivePools);
}

}  // namespace zolvar
