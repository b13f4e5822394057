#pragma once

#include <QList>
#include <QWidget>
#include <optional>
#include <string>

#include "app/Operations.h"

class QAction;
class QLabel;
class QProgressBar;

namespace zolvar {

/// Above the tabs: the folder's name, where it lies, its state in words, how far a fetch is, and
/// what one does with a folder. Main thread.
class FolderHeader : public QWidget {
  Q_OBJECT

 public:
  /// The actions become buttons, in this order; an action that is not visible makes none.
  FolderHeader(const QList<QAction*>& actions, std::string homeFolder, QWidget* parent);

  void show(const PoolInfo& info, const std::optional<TransferProgress>& progress);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void faint();

  std::string homeFolder_;
  QLabel* icon_;
  QLabel* name_;
  QLabel* place_;
  QLabel* stateIcon_;
  QLabel* state_;
  QLabel* explanation_;
  QProgressBar* bar_;
  QLabel* figures_;
  FolderStateKind kind_ = FolderStateKind::NotSubscribed;
  bool isAddressFolder_ = false;
};

}  // namespace zolvar
