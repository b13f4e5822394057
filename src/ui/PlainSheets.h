#pragma once

#include <QPointer>
#include <map>

#include "ui/Sheets.h"
#include "ui/WindowContext.h"

class QMessageBox;
class QWidget;

namespace zolvar {

/// Sheets made of the desktop's own message boxes and folder choosers, without anything to fill in:
/// what the window needs at the least. The window and the context outlive it. Main thread.
class PlainSheets : public Sheets {
 public:
  PlainSheets(QWidget& window, WindowContext& context) : window_(window), context_(context) {}
  ~PlainSheets() override;

  void shareFolder(const std::string& path) override;
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
  void preferences() override {}
  void about() override;
  void quickStart() override {}
  void releaseNotes() override {}
  void askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                        std::function<void(PasswordAnswer)> answered) override;
  void askAboutDeletion(const std::string& poolName, const Alert& alert,
                        std::function<void(int code)> answered) override;
  void withdrawDeletionAlert(const std::string& poolName) override;
  void showAlert(const Alert& alert, std::function<void(int code)> answered) override;

 private:
  /// Opens a box with these buttons; `chosen` is told the index, or -1 when it was closed.
  QMessageBox* ask(const QString& title, const QString& text, const QStringList& buttons,
                   std::function<void(int)> chosen);

  QWidget& window_;
  WindowContext& context_;
  std::map<std::string, QPointer<QMessageBox>> deletionAlerts_;
};

}  // namespace zolvar
