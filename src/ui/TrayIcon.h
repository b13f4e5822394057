#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <memory>
#include <optional>
#include <vector>

#include "app/FolderState.h"
#include "ui/WindowContext.h"

class QAction;
class QMenu;

namespace zolvar {

class FolderListModel;
class MainWindow;

/// The one state of all folders: what needs a person first, then what is under way. Pure.
FolderStateKind overallState(const std::vector<FolderState>& states);

/// The icon in the desktop's tray: shows the state, and has a short menu of what is most wanted
/// without the window. The context and the window outlive it. Main thread.
class TrayIcon : public QObject {
  Q_OBJECT

 public:
  TrayIcon(WindowContext& context, MainWindow& window);
  ~TrayIcon() override;

  void update();
  [[nodiscard]] QMenu& menu() { return *menu_; }

 private:
  void fillMenu();
  void addFolders();
  void addPauses();

  WindowContext& context_;
  MainWindow& window_;
  QSystemTrayIcon icon_;
  std::unique_ptr<QMenu> menu_;
  std::optional<FolderStateKind> shown_;
};

}  // namespace zolvar
