#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "app/ApplicationObserver.h"
#include "app/FrontEnd.h"
#include "util/Failure.h"

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
  /// Posts a notice as any outcome's is posted; one of the same key takes the place of the other.
  void post(const OutcomeNotice& notice, const std::string& key);

  // Questions about files: vanished ones, which the pool has found, or missing ones that a person
  // wants to give up. One a pool is open; the newer takes the other's place.
  /// Asks whether missing files are to be deleted on the network. Requires: paths, sorted.
  void askToDeleteQueuedFiles(KDFilePool& pool, std::vector<std::string> paths);
  /// Null: none. The same one as long as it is about the same files.
  [[nodiscard]] std::shared_ptr<const DeleteQuestion> openQuestion(const KDFilePool& pool) const;
  /// Codes 1000 (fetch again) and 1001 (delete everywhere). Fails (Refused): no question is open.
  void answer(KDFilePool& pool, int code, std::function<void(Result<>)> done);

  void syncDidEnd(const SyncReport& report) override;
  void filesWereDeleted(KDFilePool& pool, const std::set<std::string>& paths) override;
  void conflictDidOccur(KDFilePool& pool, const std::string& path) override;
  void questionDidArise(KDFilePool& pool, const DeleteQuestion& question) override;
  void passwordDidFail(KDFilePool& pool, KDParticipant& participant) override;
  void poolPathsNotAccessible(KDFilePool& pool) override;
  void poolDidChange(KDFilePool& pool) override;

 private:
  /// A conflict's notice waits for the snapshot that counts its versions.
  struct ConflictState {
    std::set<std::string> shown;
    std::map<std::string, std::uint64_t> waiting;  ///< path → serial of the snapshot when it came
  };
  struct Asked {
    std::uint64_t question = 0;
    std::uint64_t serial = 0;  ///< of the snapshot when it was asked
  };

  void askAboutDeletion(KDFilePool& pool, const DeleteQuestion& question);
  void narrowGivenUp(KDFilePool& pool);
  void withdrawSettledQuestion(const KDFilePool& pool);
  void updateConflicts(KDFilePool& pool);
  void postConflict(KDFilePool& pool, const Conflict& conflict);
  [[nodiscard]] static PoolText textOf(const KDFilePool& pool);

  Application& application_;
  std::unique_ptr<FrontEnd> logging_;
  FrontEnd* frontEnd_;
  bool isPasswordFailurePanelShowing_ = false;
  std::map<std::string, Asked> asked_;                                    ///< by pool name
  std::map<std::string, std::shared_ptr<const DeleteQuestion>> givenUp_;  ///< by pool name
  std::map<std::string, ConflictState> conflicts_;                        ///< by pool name
  std::map<std::string, std::string> errors_;  ///< text on the screen, by key
  std::uint64_t lastGivenUp_ = 0;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< answers look at it
};

}  // namespace zolvar
