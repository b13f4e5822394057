#pragma once

#include <memory>

#include "ui/Sheets.h"
#include "ui/WindowContext.h"
#include "ui/sheets/Greeting.h"
#include "ui/sheets/QuestionSheet.h"

namespace zolvar {

class MainWindow;

/// Opens the sheets on the main window. There is one of each kind (and folder) at a time: asked for
/// again, it comes to the front. The window and the context outlive it; what is open is closed with
/// it, without an answer. Main thread.
class WindowSheets : public Sheets {
 public:
  WindowSheets(MainWindow& window, WindowContext& context);
  ~WindowSheets() override;
  WindowSheets(const WindowSheets&) = delete;
  WindowSheets& operator=(const WindowSheets&) = delete;

  void shareFolder(const std::string& path) override;
  void shareContacts() override;
  void subscribe(const std::string& poolName) override;
  void unsubscribe(const std::string& poolName) override;
  void remove(const std::string& poolName) override;
  void settings(const std::string& poolName) override;
  void openFolder(const std::string& poolName) override;
  void confirmSwitch(const std::string& path, const std::string& userId, const std::string& date,
                     std::function<void()> proceed) override;
  void confirm(const QString& title, const QString& text, const QString& button,
               std::function<void()> proceed) override;
  void showProblem(const QString& title, const QString& sentence) override;
  void preferences() override;
  void about() override;
  void quickStart() override;
  void releaseNotes() override;
  void askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                        std::function<void(PasswordAnswer)> answered) override;
  void askAboutDeletion(const std::string& poolName, const Alert& alert,
                        std::function<void(int code)> answered) override;
  void withdrawDeletionAlert(const std::string& poolName) override;
  void showAlert(const Alert& alert, std::function<void(int code)> answered) override;

 private:
  /// The open sheet of that kind and key; null when there is none.
  template <class S>
  S* shown(const QString& key) const;
  /// Brings the open one to the front, or makes one from the arguments and the window.
  template <class S, class... Arguments>
  S* open(const QString& key, Arguments&&... arguments);
  void present(Sheet& sheet, const QString& key);
  QuestionSheet* ask(const QuestionSheet::Words& words, QuestionSheet::Answered answered);
  /// Says so when the folder is not there to be worked on.
  bool isThere(const std::string& poolName);

  MainWindow& window_;
  WindowContext& context_;
  Greeting greeting_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< later answers hold it weakly
};

}  // namespace zolvar
