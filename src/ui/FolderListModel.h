#pragma once

#include <QAbstractItemModel>
#include <array>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/Operations.h"

namespace zolvar {

class Application;

/// The folders as a source list: two sections, "My Folders" and "On the Network", with the folders
/// below them, by name. Reads the application when told that something changed, and tells views
/// what that changed, so that selections last. Application and operations outlive it. Main thread.
class FolderListModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  enum Role {
    NameRole = Qt::UserRole + 1,  ///< of a folder; invalid for sections
    SummaryRole,
    StateKindRole,  ///< FolderStateKind as int
  };
  enum Section { Mine, Network, SectionCount };

  struct Row {
    PoolInfo info;
    std::optional<TransferProgress> progress;
  };

  FolderListModel(Application& application, Operations& operations);

  /// Reads everything anew.
  void update();
  /// Reads these folders anew.
  void update(const std::set<std::string>& names);

  /// Null for sections and for an invalid index. Valid until the next update.
  [[nodiscard]] const Row* row(const QModelIndex& index) const;
  [[nodiscard]] const Row* row(const std::string& name) const;
  /// Invalid when there is no such folder.
  [[nodiscard]] QModelIndex indexOf(const std::string& name) const;
  [[nodiscard]] const std::vector<Row>& rows(Section section) const { return rows_[section]; }

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 Q_SIGNALS:
  /// Around the reading of everything: a folder may leave one section and come to the other.
  void updating();
  void updated();

 private:
  [[nodiscard]] std::vector<Row> read(Section section, const std::vector<PoolInfo>& infos) const;
  void take(Section section, std::vector<Row> rows);
  [[nodiscard]] std::optional<TransferProgress> progressOf(const std::string& name) const;

  Application& application_;
  Operations& operations_;
  std::array<std::vector<Row>, SectionCount> rows_;  ///< by name
};

}  // namespace zolvar
