#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/Operations.h"
#include "ui/WindowContext.h"

class QAction;
class QSplitter;
class QTabWidget;

namespace zolvar {

class ConflictsTab;
class DetailsPane;
class FolderHeader;
class MessageBar;
class MissingTab;
class UsersTab;
class WindowMemory;

/// The right side of the window: one folder's header, the tabs with its users, missing files and
/// conflicts, and below them the details of the selected file. Only the tab that is seen is kept up
/// to date. The context and the memory outlive it. Main thread.
class FolderView : public QWidget {
  Q_OBJECT

 public:
  enum Tab { Users, Missing, Conflicts };

  /// The actions stand in the header.
  FolderView(WindowContext& context, WindowMemory& memory, const QList<QAction*>& actions,
             QWidget* parent);

  /// Shows the folder as it is now, also when it is shown already.
  void show(const PoolInfo& info, const std::optional<TransferProgress>& progress);
  void showTab(Tab tab);
  /// As a person who asks for it: the keyboard goes there as well.
  void openTab(Tab tab);
  [[nodiscard]] Tab tab() const;
  /// Opens the conflicts and selects the file there.
  void showConflict(const std::string& path);
  /// Something to know about the folder; stays until it is closed or another folder is shown.
  void warn(const QString& sentence);
  void saveTo(WindowMemory& memory) const;

  [[nodiscard]] UsersTab& users() { return *users_; }
  [[nodiscard]] MissingTab& missing() { return *missing_; }
  [[nodiscard]] ConflictsTab& conflicts() { return *conflicts_; }
  [[nodiscard]] DetailsPane& details() { return *details_; }
  /// Shows and hides the details.
  [[nodiscard]] QAction& detailsAction() { return *showDetails_; }

 Q_SIGNALS:
  /// The open question about vanished files is to be asked again.
  void questionWanted(const std::string& poolName);
  void tabChanged();

 private:
  void refreshTab();
  void titleTabs();
  void showFileOfTab();
  void showDetails();
  void showQuestion();

  WindowContext& context_;
  PoolInfo info_;
  FolderHeader* header_;
  MessageBar* question_;
  MessageBar* trouble_;
  MessageBar* warning_;
  QSplitter* splitter_;
  QTabWidget* tabs_;
  UsersTab* users_;
  MissingTab* missing_;
  ConflictsTab* conflicts_;
  DetailsPane* details_;
  QAction* showDetails_;
};

}  // namespace zolvar
