#include "ui/WindowFrontEnd.h"

#include <utility>

#include "ui/MainWindow.h"
#include "ui/Sheets.h"

namespace zolvar {

void WindowFrontEnd::showConflict(const std::string& poolName, const std::string& path) {
  window_.showConflict(poolName, path);
}

void WindowFrontEnd::showPoolSettings(const std::string& poolName) {
  window_.comeToFront();
  sheets_.settings(poolName);
}

void WindowFrontEnd::askAboutPassword(const std::string& poolName, const PasswordFailureText& text,
                                      std::function<void(PasswordAnswer)> answered) {
  sheets_.askAboutPassword(poolName, text, std::move(answered));
}

void WindowFrontEnd::askAboutDeletion(const std::string& poolName, const Alert& alert,
                                      std::function<void(int)> answered) {
  sheets_.askAboutDeletion(poolName, alert, std::move(answered));
}

void WindowFrontEnd::withdrawDeletionAlert(const std::string& poolName) {
  sheets_.withdrawDeletionAlert(poolName);
}

void WindowFrontEnd::showAlert(const Alert& alert, std::function<void(int)> answered) {
  sheets_.showAlert(alert, std::move(answered));
}

}  // namespace zolvar
