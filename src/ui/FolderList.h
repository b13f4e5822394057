#pragma once

#include <QSortFilterProxyModel>
#include <QWidget>
#include <string>

class QAction;
class QLineEdit;
class QTreeView;

namespace zolvar {

class FolderListModel;

/// Leaves out what does not contain the words, folders that are not subscribed to when these are
/// hidden, and sections without folders. Main thread.
class FolderFilter : public QSortFilterProxyModel {
 public:
  using QSortFilterProxyModel::QSortFilterProxyModel;
  void setWords(const QString& words);
  void setShowsOnlyMine(bool only);
  /// Sections are shown while they hold something: to be called when rows came or went.
  void reconsider();

 protected:
  [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

 private:
  QString words_;
  bool showsOnlyMine_ = false;
};

/// The left side of the window: filter field, source list and footer buttons. The selected folder
/// stays selected while the list changes; when it goes, its neighbour is. The model outlives it.
/// Main thread.
class FolderList : public QWidget {
  Q_OBJECT

 public:
  FolderList(FolderListModel& model, QWidget* parent);

  [[nodiscard]] std::string selected() const;
  /// Also one that is not there yet: it is selected when it comes.
  void select(const std::string& poolName);
  /// Puts the actions below the list; null separates left from right.
  void setFooter(const QList<QAction*>& actions);
  void setShowsOnlyMine(bool only);
  /// Sections are shown while they hold something: to be called when rows came or went.
  void reconsider();
  void focusFilter();
  [[nodiscard]] QTreeView& view() { return *view_; }

 Q_SIGNALS:
  void selectionChanged(const std::string& poolName);
  void activated(const std::string& poolName);
  void menuWanted(const QPoint& globalPosition);

 private:
  void rowsCame();
  void listUpdated();
  void currentBecame(const QModelIndex& current);
  [[nodiscard]] QModelIndex shown(const std::string& poolName) const;

  FolderListModel& model_;
  FolderFilter* filter_;
  QLineEdit* field_;
  QTreeView* view_;
  QWidget* footer_;
  std::string wanted_;    ///< to be selected when it comes
  std::string selected_;  ///< told last
  bool isUpdating_ = false;
};

}  // namespace zolvar
