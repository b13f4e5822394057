#pragma once

#include <QMainWindow>
#include <string>

#include "ui/WindowContext.h"

namespace zolvar {

class Sheets;

/// The main window: folders at the left, the selected one at the right. The context and the sheets
/// outlive it. Main thread.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(WindowContext& context);
  ~MainWindow() override;

  /// Dialogs are opened through these; before, and with null, nothing is.
  void setSheets(Sheets* sheets) { sheets_ = sheets; }

  /// Empty when nothing is selected.
  [[nodiscard]] std::string selectedFolder() const;
  /// Also a folder that is not in the list yet: it is selected when it comes.
  void selectFolder(const std::string& poolName);
  /// Selects the folder, its conflicts, and this file, and comes to the front.
  void showConflict(const std::string& poolName, const std::string& path);
  void comeToFront();

 private:
  WindowContext& context_;
  Sheets* sheets_ = nullptr;
};

}  // namespace zolvar
