#pragma once

#include <QAbstractItemModel>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "pool/PoolSnapshot.h"

namespace zolvar {

class PersonColors;

/// The files in conflict, each with its versions below it, as the last snapshot tells: there may be
/// thousands. Rows point into the snapshot; a newer one is taken over as the rows that came and
/// went, so selections and what is unfolded last. Main thread.
class ConflictsModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  enum Column { Name, Changed, Size, ChosenBy, ColumnCount };

  /// The colours outlive it.
  ConflictsModel(std::string localUserId, PersonColors& colors);
  ~ConflictsModel() override;

  /// Files as people know them; their paths unless set.
  void setDescription(std::function<std::string(const std::string& path)> describe) {
    describe_ = std::move(describe);
  }
  /// Null shows nothing.
  void setSnapshot(std::shared_ptr<const PoolSnapshot> snapshot);
  /// The size of a version has become known.
  void noteSize(const std::string& path, const VersionId& version, std::uint64_t bytes);

  /// Of a file's row or one of its versions' rows; null for an invalid index. Valid until the next
  /// snapshot.
  [[nodiscard]] const Conflict* conflict(const QModelIndex& index) const;
  /// Null for a file's row.
  [[nodiscard]] const ConflictVersion* version(const QModelIndex& index) const;
  [[nodiscard]] QModelIndex indexOf(const std::string& path) const;
  [[nodiscard]] QModelIndex indexOf(const std::string& path, const VersionId& version) const;
  [[nodiscard]] std::optional<std::uint64_t> size(const std::string& path,
                                                  const VersionId& version) const;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  struct File;  ///< a file's row; its address is the id of its versions' rows

  [[nodiscard]] static File* fileOf(const QModelIndex& index);
  void takeFiles(const std::vector<Conflict>& conflicts);
  void takeVersions(File& file, const Conflict& conflict);
  void renumber();
  void reset(std::shared_ptr<const PoolSnapshot> snapshot);
  [[nodiscard]] QVariant fileText(const Conflict& conflict, Column column) const;
  [[nodiscard]] QVariant versionText(const File& file, const ConflictVersion& version,
                                     Column column) const;

  std::string localUserId_;
  PersonColors& colors_;
  [[nodiscard]] QString described(const std::string& path) const;

  std::function<std::string(const std::string&)> describe_;
  std::shared_ptr<const PoolSnapshot> snapshot_;
  std::vector<std::unique_ptr<File>> files_;  ///< by path
  std::map<std::string, std::map<VersionId, std::uint64_t>> sizes_;
};

}  // namespace zolvar
