#pragma once

#include <QWidget>
#include <string>

#include "ui/ParticipantsModel.h"
#include "ui/WindowContext.h"

class QAction;
class QStackedWidget;
class QTableView;

namespace zolvar {

class EmptyState;
class WindowMemory;

/// Who takes part in the folder: to sync with, to ignore. The context outlives it. Main thread.
class UsersTab : public QWidget {
  Q_OBJECT

 public:
  UsersTab(WindowContext& context, WindowMemory& memory, QWidget* parent);

  void setFolder(const std::string& poolName);
  void refresh();
  void saveColumns(WindowMemory& memory) const;
  /// For the menu.
  [[nodiscard]] QList<QAction*> tabActions() const { return {sync_, ignore_}; }
  [[nodiscard]] QTableView& view() { return *view_; }
  [[nodiscard]] const ParticipantsModel& model() const { return model_; }

 private:
  void updateActions();
  void syncWithSelected();
  void ignoreSelected();
  [[nodiscard]] const ParticipantInfo* selected() const;

  WindowContext& context_;
  std::string poolName_;
  ParticipantsModel model_;
  QTableView* view_;
  EmptyState* nobody_;
  QStackedWidget* stack_;
  QAction* sync_;
  QAction* ignore_;
};

}  // namespace zolvar
