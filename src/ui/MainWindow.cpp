#include "ui/MainWindow.h"

namespace zolvar {

MainWindow::MainWindow(WindowContext& context) : context_(context) {}

MainWindow::~MainWindow() = default;

std::string MainWindow::selectedFolder() const { return {}; }

void MainWindow::selectFolder(const std::string& /*poolName*/) {}

void MainWindow::showConflict(const std::string& /*poolName*/, const std::string& /*path*/) {}

void MainWindow::comeToFront() {
  show();
  raise();
  activateWindow();
}

}  // namespace zolvar
