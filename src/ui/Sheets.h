#pragma once

#include <QString>
#include <functional>
#include <string>

#include "app/FrontEnd.h"
#include "app/OutcomeTexts.h"

namespace zolvar {

/// The dialogs that the main window opens: sheets on it and panels beside it. Nothing here waits:
/// each call opens something and returns; answers come by callback on a later turn, or never when
/// the person closes it. Owned by the program, goes before the window. Main thread.
class Sheets {
 public:
  virtual ~Sheets() = default;

  // Folders. `path` is proposed, for example a folder dropped on the window; empty: none.
  virtual void shareFolder(const std::string& path) = 0;
  virtual void shareContacts() = 0;
  virtual void subscribe(const std::string& poolName) = 0;
  virtual void unsubscribe(const std::string& poolName) = 0;
  virtual void remove(const std::string& poolName) = 0;
  virtual void settings(const std::string& poolName) = 0;
  /// Opens the folder in the file browser; asks first when it is not subscribed to.
  virtual void openFolder(const std::string& poolName) = 0;

  /// Warns that another version takes a file's place, unless that was switched off; `proceed` is
  /// called when the person agrees. `date`: already formatted.
  virtual void confirmSwitch(const std::string& path, const std::string& userId,
                             const std::string& date, std::function<void()> proceed) = 0;
  /// A question with the answer named on its button, and "Cancel".
  virtual void confirm(const QString& title, const QString& text, const QString& button,
                       std::function<void()> proceed) = 0;
  /// Something was refused; `sentence` says why.
  virtual void showProblem(const QString& title, const QString& sentence) = 0;

  // Panels.
  virtual void preferences() = 0;
  virtual void about() = 0;
  virtual void quickStart() = 0;
  /// What is new, once after the version changed.
  virtual void releaseNotes() = 0;

  // What the engine asks; see FrontEnd.
  virtual void askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                                std::function<void(PasswordAnswer)> answered) = 0;
  virtual void askAboutDeletion(const std::string& poolName, const Alert& alert,
                                std::function<void(int code)> answered) = 0;
  virtual void withdrawDeletionAlert(const std::string& poolName) = 0;
  virtual void showAlert(const Alert& alert, std::function<void(int code)> answered) = 0;
};

}  // namespace zolvar
