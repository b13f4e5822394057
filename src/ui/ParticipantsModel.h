#pragma once

#include <QAbstractTableModel>
#include <QImage>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/Operations.h"

namespace zolvar {

class Application;
class PersonColors;

/// The others who take part in a folder: picture, name, computer, last sync, how the contact
/// stands. Reads the application when told to; pictures are read in the background and decoded
/// once. What it is made with outlives it. Main thread.
class ParticipantsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { Person, Computer, LastSync, Standing, ColumnCount };
  static constexpr int PictureSide = 28;  ///< device-independent pixels

  ParticipantsModel(Application& application, Operations& operations, PersonColors& colors);

  /// Shows this folder's; empty: nobody.
  void setFolder(const std::string& poolName);
  void update();
  /// Null for an invalid index. Valid until the next update.
  [[nodiscard]] const ParticipantInfo* info(const QModelIndex& index) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  [[nodiscard]] static double lastSync(const ParticipantInfo& info);
  [[nodiscard]] QVariant text(const ParticipantInfo& info, Column column) const;
  void loadPictures();

  Application& application_;
  Operations& operations_;
  PersonColors& colors_;
  std::string poolName_;
  std::vector<ParticipantInfo> rows_;       ///< by user id
  std::map<std::string, QImage> pictures_;  ///< by user id; null: looked for, none
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  ///< pictures on the way look at it
};

}  // namespace zolvar
