#pragma once

#include <QAbstractTableModel>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "pool/PoolSnapshot.h"

namespace zolvar {

/// The files that a folder lacks, and who has them, as the last snapshot tells: there may be a
/// hundred thousand. Rows point into the snapshot; a newer one is taken over as the rows that came
/// and went, or, where these are too many, as a whole (the view then keeps its selection by path).
/// Main thread.
class MissingModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { Path, Holders, Size, ColumnCount };
  static constexpr std::size_t MostChanges = 100;

  using QAbstractTableModel::QAbstractTableModel;

  /// Files as people know them; their paths unless set.
  void setDescription(std::function<std::string(const std::string& path)> describe) {
    describe_ = std::move(describe);
  }
  /// Null shows nothing.
  void setSnapshot(std::shared_ptr<const PoolSnapshot> snapshot);
  [[nodiscard]] const std::string& path(int row) const {
    return *rows_[static_cast<std::size_t>(row)];
  }
  /// -1 when it is not missing.
  [[nodiscard]] int rowOf(const std::string& path) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  [[nodiscard]] QString holders(const std::string& path) const;
  [[nodiscard]] QString size(const std::string& path) const;
  void pointIntoSnapshot();

  [[nodiscard]] QString described(const std::string& path) const;

  std::function<std::string(const std::string&)> describe_;
  std::shared_ptr<const PoolSnapshot> snapshot_;
  std::vector<const std::string*> rows_;
};

}  // namespace zolvar
