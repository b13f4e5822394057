#pragma once

#include <functional>
#include <string>

#include "app/FrontEnd.h"

namespace zolvar {

class MainWindow;
class Sheets;

/// The window as the engine sees it: brings what is asked to the sheets, and conflicts to the main
/// window. Both outlive it. Main thread.
class WindowFrontEnd : public FrontEnd {
 public:
  WindowFrontEnd(MainWindow& window, Sheets& sheets) : window_(window), sheets_(sheets) {}

  void showConflict(const std::string& poolName, const std::string& path) override;
  void showPoolSettings(const std::string& poolName) override;
  void askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                        std::function<void(PasswordAnswer)> answered) override;
  void askAboutDeletion(const std::string& poolName, const Alert& alert,
                        std::function<void(int code)> answered) override;
  void withdrawDeletionAlert(const std::string& poolName) override;
  void showAlert(const Alert& alert, std::function<void(int code)> answered) override;

 private:
  MainWindow& window_;
  Sheets& sheets_;
};

}  // namespace zolvar
