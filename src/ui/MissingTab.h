#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "ui/MissingModel.h"
#include "ui/WindowContext.h"

class QAction;
class QStackedWidget;
class QTableView;

namespace zolvar {

class EmptyState;
class WindowMemory;

/// The files that the folder lacks: to fetch again, or to give up for everybody. The context
/// outlives it. Main thread.
class MissingTab : public QWidget {
  Q_OBJECT

 public:
  MissingTab(WindowContext& context, WindowMemory& memory, QWidget* parent);

  /// Null: nothing is known of the folder.
  void show(const std::string& poolName, std::shared_ptr<const PoolSnapshot> snapshot);
  void saveColumns(WindowMemory& memory) const;
  /// Says anew which file is selected.
  void tellFile();
  [[nodiscard]] QList<QAction*> tabActions() const { return {get_, delete_}; }
  [[nodiscard]] QTableView& view() { return *view_; }
  [[nodiscard]] const MissingModel& model() const { return model_; }

 Q_SIGNALS:
  /// Empty: none.
  void fileSelected(const std::string& path);

 private:
  void updateActions();
  void getAgain();
  void deleteEverywhere();

  WindowContext& context_;
  std::string poolName_;
  MissingModel model_;
  QTableView* view_;
  EmptyState* nothing_;
  QStackedWidget* stack_;
  QAction* get_;
  QAction* delete_;
  std::vector<std::string> kept_;  ///< selected paths, over a reset of the model
};

}  // namespace zolvar
