#pragma once

#include <QWidget>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/ConflictDecisions.h"
#include "pool/FileHistory.h"
#include "ui/ConflictsModel.h"
#include "ui/WindowContext.h"

class QAction;
class QMenu;
class QStackedWidget;
class QTreeView;

namespace zolvar {

class EmptyState;
class MessageBar;
class VersionComparison;
class WindowMemory;

/// Files that two people changed at once, with their versions, and what can be done about them: one
/// version at a time, or many files alike with one confirmation. What a decision took away here can
/// be brought back. The context outlives it. Main thread.
class ConflictsTab : public QWidget {
  Q_OBJECT

 public:
  ConflictsTab(WindowContext& context, WindowMemory& memory, QWidget* parent);
  ~ConflictsTab() override;

  /// `folder`: where it lies. Null snapshot: nothing is known of the folder.
  void show(const std::string& poolName, const std::string& folder,
            std::shared_ptr<const PoolSnapshot> snapshot);
  /// Selects the file, unfolded, and scrolls to it. False when it is in no conflict.
  bool selectFile(const std::string& path);
  /// Selects one of its versions; false when it is none that can be chosen.
  bool selectVersion(const std::string& path, const VersionId& version);
  void noteHistory(const FileHistory& history);
  /// Says anew which file is selected.
  void tellFile();
  void saveColumns(WindowMemory& memory) const;
  [[nodiscard]] QList<QAction*> tabActions() const;
  [[nodiscard]] QAction& undoAction() { return *undo_; }
  [[nodiscard]] QTreeView& view() { return *view_; }
  [[nodiscard]] const ConflictsModel& model() const { return model_; }

 Q_SIGNALS:
  /// Empty: none, or several.
  void fileSelected(const std::string& path, const std::optional<VersionId>& version);

 private:
  void updateActions();
  void fillPeople();
  /// The files of which a row is selected; never the same twice.
  [[nodiscard]] std::vector<Conflict> selectedConflicts() const;
  /// When one row is selected: its file; and its version where it is one's row.
  [[nodiscard]] const Conflict* singleConflict() const;
  [[nodiscard]] const ConflictVersion* singleVersion() const;
  void settle(const ConflictChoice& choice);
  void useVersion();
  void dropVersion();
  void compareVersions();
  void undo();
  /// Says how a decision ended, and remembers how to undo it.
  [[nodiscard]] ConflictDecisions::Done reporting(const QString& words);
  void report(const QString& words, const ConflictDecisions::Report& report);
  void problem(const QString& title, const ConflictDecisions::Report& report);

  WindowContext& context_;
  std::string poolName_;
  std::string folder_;
  ConflictsModel model_;
  std::unique_ptr<VersionComparison> comparison_;
  QTreeView* view_;
  EmptyState* none_;
  QStackedWidget* stack_;
  MessageBar* bar_;
  QMenu* people_;
  QAction* keepMine_;
  QAction* useTheirs_;
  QAction* useFrom_;
  QAction* compare_;
  QAction* use_;
  QAction* drop_;
  QAction* undo_;
};

}  // namespace zolvar
