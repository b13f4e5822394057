#include "ui/FolderListModel.h"

#include <algorithm>

#include "app/Application.h"
#include "ui/Icons.h"
#include "ui/RowChanges.h"
#include "ui/StateTexts.h"
#include "ui/Texts.h"

namespace zolvar {
namespace {

constexpr std::size_t MostChanges = 1000;
constexpr quintptr SectionId = 0;  // a folder's id is its section's number + 1

FolderListModel::Section sectionOf(const PoolInfo& info) {
  return info.state.kind == FolderStateKind::NotSubscribed ? FolderListModel::Network
                                                           : FolderListModel::Mine;
}

}  // namespace

FolderListModel::FolderListModel(Application& application, Operations& operations)
    : application_(application), operations_(operations) {
  update();
}

std::optional<TransferProgress> FolderListModel::progressOf(const std::string& name) const {
  const auto pool = application_.peer().poolNamed(name);
  return pool ? pool->progress() : std::nullopt;
}

std::vector<FolderListModel::Row> FolderListModel::read(Section section,
                                                        const std::vector<PoolInfo>& infos) const {
  std::vector<Row> rows;
  for (const auto& info : infos) {
    if (sectionOf(info) == section) rows.push_back({info, progressOf(info.name)});
  }
  std::sort(rows.begin(), rows.end(),
            [](const Row& left, const Row& right) { return left.info.name < right.info.name; });
  return rows;
}

void FolderListModel::update() {
  const auto infos = operations_.list();
  Q_EMIT updating();
  take(Mine, read(Mine, infos));
  take(Network, read(Network, infos));
  Q_EMIT updated();
}

void FolderListModel::update(const std::set<std::string>& names) {
  for (const auto& name : names) {
    const auto* presence = application_.peer().presence(name);
    const QModelIndex index = indexOf(name);
    if (presence == nullptr || !index.isValid()) return update();
    const PoolInfo info = operations_.info(*presence);
    const auto section = static_cast<Section>(index.internalId() - 1);
    if (sectionOf(info) != section) return update();
    rows_[section][static_cast<std::size_t>(index.row())] = {info, progressOf(name)};
    Q_EMIT dataChanged(index, index);
  }
}

void FolderListModel::take(Section section, std::vector<Row> rows) {
  auto& mine = rows_[section];
  const QModelIndex parent = index(section, 0);
  const auto changes = rowChanges(
      mine, rows,
      [](const Row& left, const Row& right) { return left.info.name.compare(right.info.name); },
      MostChanges);
  for (const auto& change : changes) {
    const int first = static_cast<int>(change.row);
    const int last = first + static_cast<int>(change.count) - 1;
    const auto at = mine.begin() + first;
    if (change.kind == RowChange::Kind::Removed) {
      beginRemoveRows(parent, first, last);
      mine.erase(at, at + static_cast<int>(change.count));
      endRemoveRows();
    } else {
      const auto source = rows.begin() + static_cast<int>(change.source);
      beginInsertRows(parent, first, last);
      mine.insert(at, source, source + static_cast<int>(change.count));
      endInsertRows();
    }
  }
  mine = std::move(rows);
  if (mine.empty()) return;
  Q_EMIT dataChanged(index(0, 0, parent), index(static_cast<int>(mine.size()) - 1, 0, parent));
}

const FolderListModel::Row* FolderListModel::row(const QModelIndex& index) const {
  if (!index.isValid() || index.internalId() == SectionId) return nullptr;
  return &rows_[index.internalId() - 1][static_cast<std::size_t>(index.row())];
}

const FolderListModel::Row* FolderListModel::row(const std::string& name) const {
  return row(indexOf(name));
}

QModelIndex FolderListModel::indexOf(const std::string& name) const {
  for (const Section section : {Mine, Network}) {
    const auto& rows = rows_[section];
    const auto at = std::lower_bound(
        rows.begin(), rows.end(), name,
        [](const Row& row, const std::string& sought) { return row.info.name < sought; });
    if (at != rows.end() && at->info.name == name) {
      return index(static_cast<int>(at - rows.begin()), 0, index(section, 0));
    }
  }
  return {};
}

QModelIndex FolderListModel::index(int row, int column, const QModelIndex& parent) const {
  if (column != 0 || row < 0 || row >= rowCount(parent)) return {};
  return createIndex(row, 0,
                     parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : SectionId);
}

QModelIndex FolderListModel::parent(const QModelIndex& child) const {
  if (!child.isValid() || child.internalId() == SectionId) return {};
  return createIndex(static_cast<int>(child.internalId()) - 1, 0, SectionId);
}

int FolderListModel::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return SectionCount;
  if (parent.internalId() != SectionId) return 0;
  return static_cast<int>(rows_[static_cast<std::size_t>(parent.row())].size());
}

int FolderListModel::columnCount(const QModelIndex& /*parent*/) const { return 1; }

QVariant FolderListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Row* folder = row(index);
  if (folder == nullptr) {
    if (role != Qt::DisplayRole) return {};
    return index.row() == Mine ? Zolvar::tr("My Folders") : Zolvar::tr("On the Network");
  }
  switch (role) {
    case Qt::DisplayRole:
      return toQt(folder->info.displayName);
    case NameRole:
      return toQt(folder->info.name);
    case Qt::DecorationRole:
      return stateIcon(shownKind(folder->info));
    case SummaryRole:
      return summaryText(folder->info, folder->progress);
    case StateKindRole:
      return static_cast<int>(folder->info.state.kind);
    case Qt::ToolTipRole:
      return folder->info.folder.empty() ? QVariant() : toQt(folder->info.folder);
    case Qt::AccessibleTextRole:
      return Zolvar::tr("%1, %2").arg(toQt(folder->info.displayName),
                                      summaryText(folder->info, folder->progress));
    default:
      return {};
  }
}

Qt::ItemFlags FolderListModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return row(index) != nullptr ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren
                               : Qt::ItemIsEnabled;
}

}  // namespace zolvar
