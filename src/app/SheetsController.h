#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/FolderRules.h"
#include "app/Operations.h"
#include "app/OutcomeTexts.h"

namespace zolvar {

class Application;
class KDFilePool;

/// The rules behind the sheets that add, subscribe to, configure and remove folders: what path was
/// chosen, what is wrong with it, which buttons are enabled, and what the buttons do. One sheet at
/// a time. It draws nothing: `changed` says that "errorText" and "poolPathForDisplay" are to be
/// read anew. Owned by the front end; application and operations outlive it. Main thread.
class SheetsController {
 public:
  enum class Sheet { None, Add, Subscribe, Remove, Settings };
  using Done = Operations::Done;

  SheetsController(Application& application, Operations& operations,
                   std::function<void()> changed = {});

  // Opening.
  void addPool();
  void subscribeToPool(const std::string& poolName);
  /// The text of the sheet to show; none when "SuppressPoolDeletionWarning" is set: then call
  /// doRemovePool at once.
  std::optional<std::string> removePool(const std::string& poolName);
  /// Requires: a pool ("No Pool selected.").
  void showPoolSettings(const std::string& poolName) {
    showPoolSettingsAndActivate(poolName, false);
  }
  void showPoolSettingsAndActivate(const std::string& poolName, bool activates);
  void cancel() { sheet_ = Sheet::None; }
  [[nodiscard]] Sheet sheet() const { return sheet_; }

  // The chosen path.
  void setPoolPath(const std::string& path);
  /// The folder in which the panel to choose one starts.
  [[nodiscard]] std::string startOfChoosing() const;
  /// What the panel returned.
  void chooseAddPath(const std::string& chosen);
  [[nodiscard]] const std::string& poolPath() const { return poolPath_; }
  [[nodiscard]] const std::string& requiredFilename() const { return requiredFilename_; }
  [[nodiscard]] bool subscribeOnly() const { return subscribeOnly_; }
  [[nodiscard]] std::string poolPathForDisplay() const;
  /// The path, with the pool's name added where it is missing.
  [[nodiscard]] std::string completedPoolPath() const;
  [[nodiscard]] bool isValidNewFilePoolName() const;
  /// Shown live under the path; "" when there is nothing to say.
  [[nodiscard]] std::string errorText() const;
  /// Something to know about a path that is accepted all the same; "" for nothing.
  [[nodiscard]] std::string warningText() const;
  /// Of the share button and the subscribe button.
  [[nodiscard]] bool isAcceptable() const;

  // What the buttons do; each ends the sheet.
  void doAddPool(const std::string& password, Done done);
  void doSubscribe(const std::optional<std::string>& password, Done done);
  void doRemovePool(Done done);
  struct Settings {
    std::optional<std::string> password;  ///< none: unchanged; empty removes it
    std::optional<bool> usesNotices;
  };
  /// Requires: a pool ("No Pool selected.").
  void savePoolSettingsSheet(const Settings& settings, Done done);

  // Beside the sheets.
  /// Opens the folder in the file browser when the pool is active. None: opened. An empty alert:
  /// show the subscribe sheet. Else a question; hand the code to answerOpening.
  std::optional<Alert> openPoolInFinder(const std::string& poolName);
  /// True: show the subscribe sheet now. Codes count the alert's buttons from 1000.
  bool answerOpening(const std::string& poolName, const Alert& alert, int code);
  /// The warning to show first; none when "SuppressSwitchBranchWarning" is set.
  [[nodiscard]] std::optional<std::string> warningBeforeSwitching(const std::string& path,
                                                                  const std::string& userId,
                                                                  const std::string& date) const;
  /// Whether to show a warning before a pool is deactivated.
  [[nodiscard]] bool warnsBeforeDeactivating() const;
  // The person does not want to be warned again.
  void silenceSwitchWarning();
  void silenceDeactivationWarning();
  void toggleHideUnsubscribed();
  [[nodiscard]] bool showsOnlyActivePools() const;

 private:
  [[nodiscard]] std::optional<FolderProblem> problem() const;
  KDFilePool& selectedPool() const;

  Application& application_;
  Operations& operations_;
  std::function<void()> changed_;
  Sheet sheet_ = Sheet::None;
  std::string poolName_;  ///< of the selected pool; empty in the add sheet
  std::string poolPath_;
  std::string requiredFilename_;
  bool subscribeOnly_ = false;
  bool activatesAfterSettings_ = false;
};

}  // namespace zolvar
