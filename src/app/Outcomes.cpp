#include "app/Outcomes.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "app/Application.h"
#include "app/Operations.h"
#include "net/KDParticipant.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "util/InconsistencyError.h"
#include "util/PathRules.h"

namespace zolvar {
namespace {

constexpr int ProtocolNotStarted = 5;
constexpr int AuthenticationFailed = 37;
constexpr std::size_t MostConflictNotices = 5;  // a pool; further ones share one place
constexpr const char* SilencedPrefix = "DontUseGrowl-";

bool isLeft(const KDFilePool& pool) {
  return pool.phase() == PoolPhase::Inactive || pool.phase() == PoolPhase::Leaving;
}

std::string conflictKey(const std::string& poolName, const std::string& path) {
  return "conflict/" + poolName + "/" + path;
}

}  // namespace

Outcomes::Outcomes(Application& application)
    : application_(application),
      logging_(std::make_unique<LoggingFrontEnd>(application.platform().log)),
      frontEnd_(logging_.get()) {}

Outcomes::~Outcomes() = default;

void Outcomes::setFrontEnd(FrontEnd* frontEnd) {
  frontEnd_ = frontEnd != nullptr ? frontEnd : logging_.get();
  isPasswordFailurePanelShowing_ = false;
  if (frontEnd == nullptr) return;
  for (const auto& pool : application_.peer().filePools()) {
    if (const auto question = openQuestion(*pool)) askAboutDeletion(*pool, *question);
  }
}

bool Outcomes::usesNotices(const std::string& poolName) const {
  return !application_.platform().defaults.boolean(SilencedPrefix + poolName);
}

void Outcomes::setUsesNotices(const std::string& poolName, bool uses) {
  auto& defaults = application_.platform().defaults;
  if (uses) {
    defaults.remove(SilencedPrefix + poolName);
  } else {
    defaults.setString(SilencedPrefix + poolName, "1");
  }
}

PoolText Outcomes::textOf(const KDFilePool& pool) {
  return {pool.name(), pool.displayName(), isAddressPoolName(pool.name()),
          [&pool](const std::string& path) { return pool.descriptionForFile(path); }};
}

// Notices.

void Outcomes::post(const OutcomeNotice& notice, const std::string& key) {
  Notice shown;
  shown.key = key;
  shown.title = notice.title;
  shown.text = notice.description;
  shown.isSticky = notice.isSticky;
  shown.urgency = notice.isSticky ? Notice::Urgency::Critical : Notice::Urgency::Normal;
  std::function<void()> onClick;
  if (notice.click) {
    onClick = [this, alive = std::weak_ptr<bool>(alive_), context = *notice.click] {
      // The pool may have gone since.
      if (alive.expired() || !application_.peer().poolNamed(context.poolName)) return;
      noticeWasClicked(context);
    };
  }
  application_.platform().workspace.showNotice(shown, std::move(onClick));
  application_.tell([&](auto& observer) { observer.noticeWasPosted(notice); });
}

void Outcomes::noticeWasClicked(const ClickContext& context) {
  if (context.type != ConflictNotice) return;
  if (!application_.peer().poolNamed(context.poolName)) {
    throw InconsistencyError(fmt::format("Pool {} cannot be found.", context.poolName));
  }
  frontEnd_->showConflict(context.poolName, context.fileName);
}

void Outcomes::syncDidEnd(const SyncReport& report) {
  const std::string name = report.pool.name();
  const std::string errorKey = "error/" + name + "/" + report.participant.userId();
  const PoolText text = textOf(report.pool);
  if (report.isSuccess()) {
    if (errors_.erase(errorKey) > 0) application_.platform().workspace.withdrawNotice(errorKey);
    const OutcomeNotice notice = successNotice(text, report.loadedFiles);
    if (!report.loadedFiles.empty() && usesNotices(name)) post(notice, "success/" + name);
    application_.platform().log.debug("Sync Success (with {}): {}",
                                      report.participant.description(), notice.description);
    return;
  }
  if (report.status == ProtocolNotStarted || report.status == AuthenticationFailed) return;
  // The scheduler has logged it. The same trouble is not shown again every half minute.
  if (!usesNotices(name) || errors_[errorKey] == report.errorMessage) return;
  errors_[errorKey] = report.errorMessage;
  post(errorNotice(text, report.errorMessage), errorKey);
}

void Outcomes::filesWereDeleted(KDFilePool& pool, const std::set<std::string>& paths) {
  const OutcomeNotice notice = deletionNotice(textOf(pool), paths);
  if (!paths.empty() && usesNotices(pool.name())) post(notice, "deletion/" + pool.name());
  std::string line = notice.description;
  std::replace(line.begin(), line.end(), '\n', ' ');
  application_.platform().log.warning("Deletion: {}", line);
}

void Outcomes::conflictDidOccur(KDFilePool& pool, const std::string& path) {
  conflicts_[pool.name()].waiting[path] = pool.snapshot()->serial;
  updateConflicts(pool);
}

void Outcomes::updateConflicts(KDFilePool& pool) {
  const auto found = conflicts_.find(pool.name());
  if (found == conflicts_.end()) return;
  ConflictState& state = found->second;
  const auto snapshot = pool.snapshot();
  // A folder that was left keeps its last snapshot, and nothing in it waits for anybody.
  const bool isOver = isLeft(pool) || snapshot->conflicts->empty();
  const auto conflictAt = [&](const std::string& path) -> const Conflict* {
    if (isOver) return nullptr;
    const auto at = std::lower_bound(
        snapshot->conflicts->begin(), snapshot->conflicts->end(), path,
        [](const Conflict& conflict, const std::string& sought) { return conflict.path < sought; });
    return at != snapshot->conflicts->end() && at->path == path ? &*at : nullptr;
  };
  std::erase_if(state.waiting, [&](const auto& waiting) {
    if (snapshot->serial <= waiting.second && !isLeft(pool)) return false;
    if (const Conflict* conflict = conflictAt(waiting.first)) postConflict(pool, *conflict);
    return true;
  });
  std::erase_if(state.shown, [&](const std::string& path) {
    if (conflictAt(path) != nullptr) return false;
    application_.platform().workspace.withdrawNotice(conflictKey(pool.name(), path));
    return true;
  });
  if (isOver) {
    application_.platform().workspace.withdrawNotice(conflictKey(pool.name(), ""));
  }
  if (state.shown.empty() && state.waiting.empty() && isOver) conflicts_.erase(found);
}

void Outcomes::postConflict(KDFilePool& pool, const Conflict& conflict) {
  auto& shown = conflicts_[pool.name()].shown;
  const OutcomeNotice notice =
      conflictNotice(textOf(pool), conflict.path, conflict.versions.size());
  const bool hasPlace = shown.contains(conflict.path) || shown.size() < MostConflictNotices;
  if (hasPlace) shown.insert(conflict.path);
  application_.platform().log.warning("{} {} See: zolvar conflicts '{}'", notice.title,
                                      notice.description, pool.name());
  post(notice, conflictKey(pool.name(), hasPlace ? conflict.path : ""));
}

// Passwords and places.

void Outcomes::passwordDidFail(KDFilePool& pool, KDParticipant& participant) {
  if (participant.isIgnored() || isPasswordFailurePanelShowing_) return;  // the log has it
  isPasswordFailurePanelShowing_ = true;
  const std::string name = pool.name();
  frontEnd_->askAboutPassword(
      name, passwordFailureText(name, participant.userId()),
      [this, alive = std::weak_ptr<bool>(alive_), name,
       asked = participant.shared_from_this()](PasswordAnswer answer) {
        if (alive.expired()) return;
        isPasswordFailurePanelShowing_ = false;
        const auto known = application_.peer().poolNamed(name);
        if (!known) return;
        if (answer == PasswordAnswer::ChangePassword) frontEnd_->showPoolSettings(name);
        if (answer == PasswordAnswer::DeactivateFolder) application_.setFilePool(*known, false);
        if (answer == PasswordAnswer::IgnoreSubscriber) asked->setIsIgnored(true);
        application_.tell([&](auto& observer) { observer.poolDidChange(*known); });
      });
}

void Outcomes::poolPathsNotAccessible(KDFilePool& pool) {
  frontEnd_->showAlert(pathsNotAccessibleAlert(pool.name(), pool.folderPath()),
                       [&workspace = application_.platform().workspace,
                        parent = std::string(parentPath(pool.folderPath()))](int code) {
                         if (code != FirstButton) workspace.open(parent);
                       });
}

// Questions.

void Outcomes::questionDidArise(KDFilePool& pool, const DeleteQuestion& question) {
  givenUp_.erase(pool.name());
  askAboutDeletion(pool, question);
}

void Outcomes::askToDeleteQueuedFiles(KDFilePool& pool, std::vector<std::string> paths) {
  require(!paths.empty(), "[deleteSet count] > 0");
  const auto question =
      std::make_shared<const DeleteQuestion>(DeleteQuestion{++lastGivenUp_, std::move(paths)});
  givenUp_[pool.name()] = question;
  askAboutDeletion(pool, *question);
  application_.tell([&](auto& observer) { observer.poolDidChange(pool); });
}

std::shared_ptr<const DeleteQuestion> Outcomes::openQuestion(const KDFilePool& pool) const {
  if (isLeft(pool)) return nullptr;
  if (const auto found = givenUp_.find(pool.name()); found != givenUp_.end()) return found->second;
  return pool.snapshot()->question;
}

void Outcomes::askAboutDeletion(KDFilePool& pool, const DeleteQuestion& question) {
  const std::string name = pool.name();
  const std::uint64_t serial = pool.snapshot()->serial;
  asked_[name] = {question.id, serial};
  frontEnd_->askAboutDeletion(
      name, deletionAlert(name, question.paths),
      [this, alive = std::weak_ptr<bool>(alive_), name, id = question.id, serial](int code) {
        if (alive.expired()) return;
        const auto asked = asked_.find(name);
        const auto known = application_.peer().poolNamed(name);
        const bool isCurrent =
            asked != asked_.end() && asked->second.question == id && asked->second.serial == serial;
        if (!isCurrent || !known) return;  // another question has taken its place
        answer(*known, code, [](const Result<>&) {});
      });
}

void Outcomes::answer(KDFilePool& pool, int code, std::function<void(Result<>)> done) {
  const std::string name = pool.name();
  if (const auto found = givenUp_.find(name); found != givenUp_.end()) {
    const auto& given = found->second->paths;
    const std::set<std::string> paths(given.begin(), given.end());
    givenUp_.erase(found);
    if (asked_.erase(name) > 0) frontEnd_->withdrawDeletionAlert(name);
    if (const auto question = openQuestion(pool)) askAboutDeletion(pool, *question);
    application_.tell([&](auto& observer) { observer.poolDidChange(pool); });
    if (code <= FirstButton) return done({});  // they stay on the list
    return pool.deleteMissing(paths, std::move(done));
  }
  const auto snapshot = pool.snapshot();
  if (!snapshot->question) {
    return done(refusal(fmt::format("There is no open question about '{}'.", name)));
  }
  pool.answerQuestion(snapshot->question->id, code, std::move(done));
}

void Outcomes::poolDidChange(KDFilePool& pool) {
  updateConflicts(pool);
  narrowGivenUp(pool);
  withdrawSettledQuestion(pool);
}

/// What has come meanwhile is no longer in question.
void Outcomes::narrowGivenUp(KDFilePool& pool) {
  const auto found = givenUp_.find(pool.name());
  if (found == givenUp_.end()) return;
  if (isLeft(pool)) {
    givenUp_.erase(found);
    return;
  }
  const auto missing = pool.snapshot()->missing;
  const auto& paths = found->second->paths;
  if (std::includes(missing->begin(), missing->end(), paths.begin(), paths.end())) return;
  DeleteQuestion left{found->second->id, {}};
  std::set_intersection(paths.begin(), paths.end(), missing->begin(), missing->end(),
                        std::back_inserter(left.paths));
  const bool isAnyLeft = !left.paths.empty();
  found->second = std::make_shared<const DeleteQuestion>(std::move(left));
  if (isAnyLeft) return;  // whoever asks need not ask again for fewer
  givenUp_.erase(found);
  if (asked_.erase(pool.name()) > 0) frontEnd_->withdrawDeletionAlert(pool.name());
  if (const auto question = openQuestion(pool)) askAboutDeletion(pool, *question);
}

void Outcomes::withdrawSettledQuestion(const KDFilePool& pool) {
  const auto asked = asked_.find(pool.name());
  if (asked == asked_.end() || givenUp_.contains(pool.name())) return;
  const auto snapshot = pool.snapshot();
  const bool isOpen = snapshot->serial <= asked->second.serial || snapshot->question;
  if (isOpen && !isLeft(pool)) return;
  asked_.erase(asked);
  frontEnd_->withdrawDeletionAlert(pool.name());
}

}  // namespace zolvar
