#pragma once

#include <QMainWindow>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "ui/WindowContext.h"
#include "ui/WindowMemory.h"

class QMimeData;
class QSplitter;
class QStackedWidget;

namespace zolvar {

class EmptyState;
class FolderList;
class FolderListModel;
class FolderView;
class MainWindowActions;
class MessageBar;
class Sheets;
struct PoolInfo;

/// The main window: the source list of folders at the left, the selected one at the right, and the
/// menus. What needs a dialog goes through the sheets. The context outlives it. Main thread.
class MainWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainWindow(WindowContext& context);
  ~MainWindow() override;

  /// Dialogs are opened through these; before, and with null, nothing is.
  void setSheets(Sheets* sheets);
  /// With a tray, closing the window hides it; without, it ends the program.
  void setHasTray(bool has) { hasTray_ = has; }

  /// Empty when nothing is selected.
  [[nodiscard]] std::string selectedFolder() const;
  /// Also a folder that is not in the list yet: it is selected when it comes.
  void selectFolder(const std::string& poolName);
  /// Selects the folder, its conflicts, and this file, and comes to the front.
  void showConflict(const std::string& poolName, const std::string& path);
  void comeToFront();

  [[nodiscard]] FolderListModel& folders() { return *model_; }
  [[nodiscard]] FolderList& folderList() { return *list_; }
  [[nodiscard]] FolderView& folderView() { return *view_; }

 Q_SIGNALS:
  void quitWanted();

 protected:
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void connectActions();
  void makeMenus();
  void changed(const std::set<std::string>& names, bool isList);
  void showSelected();
  void showServerTrouble();
  void updateActions(const PoolInfo* info);
  void syncNow();
  void pause(std::optional<double> seconds);
  void resume();
  void answerQuestion(const std::string& poolName);
  void toggleUnsubscribed();
  void remember();
  void sayItStays();
  [[nodiscard]] std::string droppedFolder(const QMimeData& data) const;

  WindowContext& context_;
  WindowMemory memory_;
  bool hasTray_ = false;
  std::unique_ptr<MainWindowActions> actions_;
  FolderListModel* model_;
  FolderList* list_;
  FolderView* view_;
  MessageBar* serverTrouble_;
  MessageBar* warning_;  ///< about the program
  EmptyState* nothing_;
  QStackedWidget* stack_;
  QSplitter* splitter_;
};

}  // namespace zolvar
