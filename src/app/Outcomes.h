#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "app/ApplicationObserver.h"
#include "app/FrontEnd.h"

namespace zolvar {

class Application;

/// Turns the outcomes of syncs into notices on the desktop, and what needs a decision into calls of
/// the front end. A notice takes the place of the earlier one of its kind and pool (a conflict's:
/// of its file), is told to all observers, and is written to the log. The default
/// "DontUseGrowl-POOL" silences a pool, except for conflicts. Owned by the application, observes
/// it, answers through it. Main thread.
class Outcomes : public ApplicationObserver {
 public:
  explicit Outcomes(Application& application);
  ~Outcomes() override;

  /// The window, while there is one; until then, and again with null, the log is the front end. An
  /// open question is put to the new one.
  void setFrontEnd(FrontEnd* frontEnd);
  [[nodiscard]] FrontEnd& frontEnd() { return *frontEnd_; }

  [[nodiscard]] bool usesNotices(const std::string& poolName) const;
  void setUsesNotices(const std::string& poolName, bool uses);

  /// What a click on a notice leads to; other contexts than a conflict's lead nowhere.
  /// Requires: the pool ("Pool %@ cannot be found.").
  void noticeWasClicked(const ClickContext& context);
  /// Posts a notice as any outcome's is posted.
  void post(const OutcomeNotice& notice);

  void syncDidEnd(const SyncReport& report) override;
  void filesWereDeleted(KDFilePool& pool, const std::set<std::string>& paths) override;
  void conflictDidOccur(KDFilePool& pool, const std::string& path) override;
  void questionDidArise(KDFilePool& pool, const DeleteQuestion& question) override;
  void passwordDidFail(KDFilePool& pool, KDParticipant& participant) override;
  void poolPathsNotAccessible(KDFilePool& pool) override;
  void poolDidChange(KDFilePool& pool) override;

 private:
  void askAboutDeletion(KDFilePool& pool, const DeleteQuestion& question);
  void withdrawConflicts(KDFilePool& pool);

  Application& application_;
  std::unique_ptr<FrontEnd> logging_;
  FrontEnd* frontEnd_;
  bool isPasswordFailurePanelShowing_ = false;
  std::map<std::string, std::uint64_t> asked_;                    ///< pool → id of its question
  std::map<std::string, std::set<std::string>> conflictNotices_;  ///< pool → paths with a notice
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);    ///< answers look at it
};

}  // namespace zolvar
