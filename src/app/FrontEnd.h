#pragma once

#include <functional>
#include <string>

#include "app/OutcomeTexts.h"

namespace zolvar {

class Log;

enum class PasswordAnswer {
  Cancelled = -1,
  ChangePassword = 0,
  DeactivateFolder = 1,
  IgnoreSubscriber = 2,
};

/// What the program asks of whoever shows it to a person: the window, or the log where there is
/// none. Nothing here waits; answers come by `answered`, at most once, on a later turn of the loop
/// or never. Handed to Outcomes, which outlives no front end (setFrontEnd). Main thread.
class FrontEnd {
 public:
  virtual ~FrontEnd() = default;

  /// A conflict's notice was clicked: select the pool, show its conflicts with this file selected
  /// and scrolled into view, and come to the front.
  virtual void showConflict(const std::string& poolName, const std::string& path) = 0;
  /// The settings sheet of the pool, to change its password.
  virtual void showPoolSettings(const std::string& poolName) = 0;
  /// The panel about different passwords; not called again before `answered` was.
  virtual void askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                                std::function<void(PasswordAnswer)> answered) = 0;
  /// Vanished (or given up) files of the pool: code 1000 or 1001. Takes the place of an earlier
  /// alert about the same pool, whose `answered` is then void.
  virtual void askAboutDeletion(const std::string& poolName, const Alert& alert,
                                std::function<void(int code)> answered) = 0;
  /// The question was answered elsewhere or settled itself.
  virtual void withdrawDeletionAlert(const std::string& poolName) = 0;
  /// Any other alert, for example about the clock, the firewall or a folder that cannot be reached.
  virtual void showAlert(const Alert& alert, std::function<void(int code)> answered) = 0;
};

/// Writes what would be asked into the log, with the command that answers it, and answers nothing.
/// The log outlives it.
class LoggingFrontEnd : public FrontEnd {
 public:
  explicit LoggingFrontEnd(Log& log) : log_(log) {}

  void showConflict(const std::string& poolName, const std::string& path) override;
  void showPoolSettings(const std::string& poolName) override;
  void askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                        std::function<void(PasswordAnswer)> answered) override;
  void askAboutDeletion(const std::string& poolName, const Alert& alert,
                        std::function<void(int)> answered) override;
  void withdrawDeletionAlert(const std::string& poolName) override;
  void showAlert(const Alert& alert, std::function<void(int)> answered) override;

 private:
  Log& log_;
};

}  // namespace zolvar
